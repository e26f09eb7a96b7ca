// Check boxes, the header's select-all box and progress bars of
// CustomTableWidget, driven the way a user drives them: clicks and keys.
#include "QtPrinters.h"
#include "CustomCheckHeaderView.h"
#include "CustomTableWidget.h"

#include <QSignalSpy>
#include <QtTest>

#include <gtest/gtest.h>

#include <memory>

namespace {

constexpr int kRows = 4;
constexpr int kColumns = 3;

struct Fixture
{
    std::unique_ptr<CustomTableWidget> table;
    CustomCheckHeaderView* header = nullptr;
};

// A shown table with a header box on column 0 and a check box in column 0 of
// every row, like a device list.
Fixture makeTable()
{
    Fixture f;
    f.table = std::make_unique<CustomTableWidget>(kRows, kColumns);
    f.header = new CustomCheckHeaderView(Qt::Horizontal, f.table.get());
    f.table->setHorizontalHeader(f.header);
    f.header->setCheckBoxVisible(0, true);
    f.header->connetSectionResized(true);
    f.table->setColumnWidth(0, 120);
    f.table->setColumnWidth(1, 150);
    for (int row = 0; row < kRows; ++row) {
        f.table->setRowHeight(row, 38);
        for (int column = 0; column < kColumns; ++column)
            f.table->setItem(row, column, new QTableWidgetItem);
        f.table->setCheckBoxVisible(row, 0, true);
    }
    f.table->resize(480, 260);
    f.table->show();
    if (!QTest::qWaitForWindowExposed(f.table.get()))
        qWarning("table not exposed");
    return f;
}

void clickAt(QWidget* widget, const QPoint& pos)
{
    QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, pos);
}

void clickBox(CustomTableWidget* table, int row, int column)
{
    const QRect box = table->checkBoxRect(row, column);
    ASSERT_TRUE(!box.isEmpty()) << "cell shows no check box";
    clickAt(table->viewport(), box.center());
}

void clickHeaderBox(CustomCheckHeaderView* header, int section)
{
    const QRect box = header->checkBoxRect(section);
    ASSERT_TRUE(!box.isEmpty()) << "header section shows no check box";
    clickAt(header->viewport(), box.center());
}

int countPixels(const QImage& image, const QRect& area, const QColor& color)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (image.pixelColor(x, y).rgb() == color.rgb())
                ++count;
    return count;
}

} // namespace

TEST(TestCustomTableWidget, checkBoxVisibility_followsCallsAndCreatesItemsOnlyWhenShown)
{
    CustomTableWidget table(2, 2);
    ASSERT_TRUE(!table.IsHaveCheckBox(0, 0));
    ASSERT_TRUE(!table.item(0, 0));

    table.setCheckBoxVisible(0, 0, false);
    ASSERT_TRUE(!table.item(0, 0)) << "hiding a box must not create an item";

    table.setCheckBoxVisible(0, 0, true);
    ASSERT_TRUE(table.IsHaveCheckBox(0, 0));
    ASSERT_TRUE(table.item(0, 0));
    ASSERT_TRUE(table.isCheckBoxEnabled(0, 0));
    ASSERT_EQ(table.cellCheckState(0, 0), Qt::Unchecked);

    table.setCellCheckState(0, 0, Qt::Checked, true);
    ASSERT_EQ(table.cellCheckState(0, 0), Qt::Checked);
    table.setCheckBoxVisible(0, 0, false);
    ASSERT_TRUE(!table.IsHaveCheckBox(0, 0));
    ASSERT_EQ(table.cellCheckState(0, 0), Qt::Unchecked);

    // The box belongs to the item: it moves with its row.
    table.setCheckBoxVisible(1, 1, true);
    table.insertRow(0);
    ASSERT_TRUE(table.IsHaveCheckBox(2, 1));
    ASSERT_TRUE(!table.IsHaveCheckBox(1, 1));
}

TEST(TestCustomTableWidget, outOfRangeCells_areIgnored)
{
    CustomTableWidget table(1, 1);
    QSignalSpy spy(&table, &CustomTableWidget::SigCellCheckStateChanged);
    for (const QPoint cell : {QPoint(-1, 0), QPoint(0, -1), QPoint(1, 0), QPoint(0, 1)}) {
        table.setCheckBoxVisible(cell.x(), cell.y(), true);
        table.setCheckBoxEnable(cell.x(), cell.y(), false);
        table.setCellCheckState(cell.x(), cell.y(), Qt::Checked, true);
        table.setProgressBarVisible(cell.x(), cell.y(), true, 0, 100);
        table.updateProgressBarValue(cell.x(), cell.y(), 50);
        ASSERT_TRUE(!table.IsHaveCheckBox(cell.x(), cell.y()));
        ASSERT_EQ(table.cellCheckState(cell.x(), cell.y()), Qt::Unchecked);
        ASSERT_EQ(table.progressBarValue(cell.x(), cell.y()), -1);
        ASSERT_TRUE(table.checkBoxRect(cell.x(), cell.y()).isEmpty());
    }
    ASSERT_EQ(table.rowCount(), 1);
    ASSERT_EQ(table.columnCount(), 1);
    ASSERT_EQ(spy.count(), 0);
}

TEST(TestCustomTableWidget, userClickOnBox_togglesAndEmits)
{
    Fixture f = makeTable();
    QSignalSpy spy(f.table.get(), &CustomTableWidget::SigCellCheckStateChanged);
    // Callers keep their own data under Qt::UserRole + n in the same items.
    for (int offset = 0; offset < 8; ++offset)
        f.table->item(2, 0)->setData(Qt::UserRole + offset, QStringLiteral("SN%1").arg(offset));
    // A click beside the box, or on a cell without one, changes nothing.
    const QRect cell = f.table->visualRect(f.table->model()->index(0, 0));
    ASSERT_TRUE(cell.width() > f.table->checkBoxRect(0, 0).width() + 40);
    clickAt(f.table->viewport(), QPoint(cell.right() - 5, cell.center().y()));
    clickAt(f.table->viewport(), f.table->visualRect(f.table->model()->index(0, 1)).center());
    ASSERT_EQ(spy.count(), 0);

    clickBox(f.table.get(), 2, 0);
    ASSERT_EQ(f.table->cellCheckState(2, 0), Qt::Checked);
    ASSERT_EQ(f.table->item(2, 0)->data(Qt::UserRole + 1).toString(), QStringLiteral("SN1"));
    ASSERT_EQ(spy.count(), 1);
    ASSERT_EQ(spy.at(0).at(0).toInt(), 2);
    ASSERT_EQ(spy.at(0).at(1).toInt(), 0);

    clickBox(f.table.get(), 2, 0);
    ASSERT_EQ(f.table->cellCheckState(2, 0), Qt::Unchecked);
    ASSERT_EQ(spy.count(), 2);

    // A partially checked box becomes checked on a click.
    f.table->setCellCheckState(1, 0, Qt::PartiallyChecked, true);
    spy.clear();
    clickBox(f.table.get(), 1, 0);
    ASSERT_EQ(f.table->cellCheckState(1, 0), Qt::Checked);
    ASSERT_EQ(spy.count(), 1);
}

TEST(TestCustomTableWidget, spaceKey_togglesEnabledBoxes_programTicksDisabledOnes)
{
    Fixture f = makeTable();
    QSignalSpy spy(f.table.get(), &CustomTableWidget::SigCellCheckStateChanged);
    f.table->setFocus();
    f.table->setCurrentCell(3, 0);
    QTest::keyClick(f.table.get(), Qt::Key_Space);
    ASSERT_EQ(f.table->cellCheckState(3, 0), Qt::Checked);
    ASSERT_EQ(spy.count(), 1);

    spy.clear();
    f.table->setCheckBoxEnable(1, 0, false);
    ASSERT_TRUE(f.table->IsHaveCheckBox(1, 0));
    clickBox(f.table.get(), 1, 0);
    f.table->setCurrentCell(1, 0);
    QTest::keyClick(f.table.get(), Qt::Key_Space);
    ASSERT_EQ(f.table->cellCheckState(1, 0), Qt::Unchecked);
    ASSERT_EQ(spy.count(), 0);

    f.table->setCellCheckState(1, 0, Qt::Checked, true);
    ASSERT_EQ(f.table->cellCheckState(1, 0), Qt::Checked);
    ASSERT_EQ(spy.count(), 1);
}

TEST(TestCustomTableWidget, programmaticChange_notifiesNowOrOnceLater)
{
    Fixture f = makeTable();
    QSignalSpy spy(f.table.get(), &CustomTableWidget::SigCellCheckStateChanged);

    f.table->setCellCheckState(0, 0, Qt::Checked, true);
    ASSERT_EQ(spy.count(), 1);
    f.table->setCellCheckState(0, 0, Qt::Checked, true);
    ASSERT_EQ(spy.count(), 1); // no change, no signal

    spy.clear();
    for (int row = 1; row < kRows; ++row)
        f.table->setCellCheckState(row, 0, Qt::Checked, false);
    ASSERT_EQ(spy.count(), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return (spy.count()) == (1); })) << "waited for spy.count() == 1";
    ASSERT_EQ(spy.at(0).at(0).toInt(), kRows - 1);
    ASSERT_EQ(spy.at(0).at(1).toInt(), 0);
    QTest::qWait(20);
    ASSERT_EQ(spy.count(), 1);

    // A cell without a box cannot be checked.
    f.table->setCellCheckState(0, 1, Qt::Checked, true);
    ASSERT_EQ(f.table->cellCheckState(0, 1), Qt::Unchecked);
    ASSERT_EQ(spy.count(), 1);
}

TEST(TestCustomTableWidget, header_followsEnabledCellsOfVisibleRows)
{
    Fixture f = makeTable();
    ASSERT_EQ(f.header->checkState(0), Qt::Unchecked);

    clickBox(f.table.get(), 0, 0);
    ASSERT_EQ(f.header->checkState(0), Qt::PartiallyChecked);

    for (int row = 1; row < kRows; ++row)
        f.table->setCellCheckState(row, 0, Qt::Checked, false);
    ASSERT_EQ(f.header->checkState(0), Qt::Checked);

    // A box the user cannot change does not hold the header back.
    f.table->setCellCheckState(3, 0, Qt::Unchecked, true);
    ASSERT_EQ(f.header->checkState(0), Qt::PartiallyChecked);
    f.table->setCheckBoxEnable(3, 0, false);
    ASSERT_EQ(f.header->checkState(0), Qt::Checked);

    // Removing or adding rows re-evaluates the column.
    f.table->insertRow(0);
    f.table->setCheckBoxVisible(0, 0, true);
    ASSERT_EQ(f.header->checkState(0), Qt::PartiallyChecked);
    f.table->removeRow(0);
    ASSERT_EQ(f.header->checkState(0), Qt::Checked);

    for (int row = 0; row < kRows; ++row)
        f.table->setCellCheckState(row, 0, Qt::Unchecked, true);
    ASSERT_EQ(f.header->checkState(0), Qt::Unchecked);

    // Columns without a header box keep no header state.
    f.table->setCheckBoxVisible(0, 1, true);
    f.table->setCellCheckState(0, 1, Qt::Checked, true);
    ASSERT_EQ(f.header->checkState(1), Qt::Unchecked);
}

TEST(TestCustomTableWidget, headerClick_togglesAndEmits_partialStaysPartial)
{
    Fixture f = makeTable();
    QSignalSpy spy(f.header, &CustomCheckHeaderView::SigCheckStateChange);
    Qt::CheckState stateSeenBySlot = Qt::PartiallyChecked;
    QObject::connect(f.header, &CustomCheckHeaderView::SigCheckStateChange, f.table.get(),
            [&](int section) { stateSeenBySlot = f.header->checkState(section); });

    clickHeaderBox(f.header, 0);
    ASSERT_EQ(spy.count(), 1);
    ASSERT_EQ(spy.at(0).at(0).toInt(), 0);
    ASSERT_EQ(f.header->checkState(0), Qt::Checked);
    ASSERT_EQ(stateSeenBySlot, Qt::Checked);

    clickHeaderBox(f.header, 0);
    ASSERT_EQ(spy.count(), 2);
    ASSERT_EQ(f.header->checkState(0), Qt::Unchecked);

    clickBox(f.table.get(), 1, 0);
    ASSERT_EQ(f.header->checkState(0), Qt::PartiallyChecked);
    clickHeaderBox(f.header, 0);
    ASSERT_EQ(spy.count(), 3);
    ASSERT_EQ(f.header->checkState(0), Qt::PartiallyChecked);
    ASSERT_EQ(stateSeenBySlot, Qt::PartiallyChecked);

    // A disabled header box, a click beside it and setCheckState are silent.
    f.header->setCheckBoxEnable(0, false);
    clickHeaderBox(f.header, 0);
    f.header->setCheckBoxEnable(0, true);
    clickAt(f.header->viewport(), QPoint(f.header->sectionViewportPosition(1) + 20, f.header->height() / 2));
    f.header->setCheckState(0, Qt::Checked);
    ASSERT_EQ(spy.count(), 3);
}

TEST(TestCustomTableWidget, headerClick_doesNotChangeCellsByItself)
{
    // Ticking the cells is the receiver's job; the header only reports.
    Fixture f = makeTable();
    QSignalSpy cellSpy(f.table.get(), &CustomTableWidget::SigCellCheckStateChanged);
    clickHeaderBox(f.header, 0);
    ASSERT_EQ(f.table->cellCheckState(0, 0), Qt::Unchecked);
    f.header->setCheckState(0, Qt::Unchecked);

    // The usual receiver: tick every enabled row without per-cell signals,
    // then one deferred notification arrives.
    QObject::connect(f.header, &CustomCheckHeaderView::SigCheckStateChange, f.table.get(), [&](int column) {
        const Qt::CheckState state = f.header->checkState(column);
        if (state == Qt::PartiallyChecked)
            return;
        for (int row = 0; row < f.table->rowCount(); ++row)
            f.table->setCellCheckState(row, column, state, false);
    });
    clickHeaderBox(f.header, 0);
    for (int row = 0; row < kRows; ++row)
        ASSERT_EQ(f.table->cellCheckState(row, 0), Qt::Checked);
    ASSERT_EQ(f.header->checkState(0), Qt::Checked);
    ASSERT_TRUE(QTest::qWaitFor([&] { return (cellSpy.count()) == (1); })) << "waited for cellSpy.count() == 1";
}

TEST(TestCustomTableWidget, progressBar_rangeValueAndHiding)
{
    CustomTableWidget table(2, 5);
    table.setItem(0, 4, new QTableWidgetItem);
    table.updateProgressBarValue(0, 4, 30); // no bar yet: ignored
    ASSERT_EQ(table.progressBarValue(0, 4), -1);

    table.setProgressBarVisible(0, 4, true, 0, 100);
    table.updateProgressBarValue(0, 4, 55);
    ASSERT_EQ(table.progressBarValue(0, 4), 55);
    // Showing it again with the same range keeps the value, as a caller
    // that shows the bar before every update expects.
    table.setProgressBarVisible(0, 4, true, 0, 100);
    ASSERT_EQ(table.progressBarValue(0, 4), 55);

    table.updateProgressBarValue(0, 4, 250);
    ASSERT_EQ(table.progressBarValue(0, 4), 100);
    table.updateProgressBarValue(0, 4, -3);
    ASSERT_EQ(table.progressBarValue(0, 4), 0);

    table.setProgressBarVisible(0, 4, false, 0, 100);
    table.updateProgressBarValue(0, 4, 40);
    ASSERT_EQ(table.progressBarValue(0, 4), -1);

    // A reversed range is taken the right way round.
    table.setProgressBarVisible(0, 4, true, 10, 0);
    table.updateProgressBarValue(0, 4, 7);
    ASSERT_EQ(table.progressBarValue(0, 4), 7);
    table.updateProgressBarValue(0, 4, 11);
    ASSERT_EQ(table.progressBarValue(0, 4), 10);

    // Hiding on an empty cell creates nothing; showing creates the item.
    table.setProgressBarVisible(1, 4, false, 0, 100);
    ASSERT_TRUE(!table.item(1, 4));
    table.setProgressBarVisible(1, 4, true, 0, 100);
    ASSERT_TRUE(table.item(1, 4));
}

TEST(TestCustomTableWidget, progressBar_isPaintedInTheCell)
{
    Fixture f = makeTable();
    const QColor accent(0x12, 0x9a, 0x34);
    f.table->setProgressColor(accent);
    const QRect cell = f.table->visualRect(f.table->model()->index(1, 1));

    const auto accentPixels = [&] {
        const QImage image = f.table->viewport()->grab().toImage();
        return countPixels(image, cell.adjusted(2, 2, -2, -2), accent);
    };
    ASSERT_EQ(accentPixels(), 0);

    f.table->setProgressBarVisible(1, 1, true, 0, 100);
    f.table->updateProgressBarValue(1, 1, 0);
    ASSERT_EQ(accentPixels(), 0);

    f.table->updateProgressBarValue(1, 1, 50);
    const int half = accentPixels();
    ASSERT_TRUE(half > 50) << qPrintable(QStringLiteral("half bar shows %1 accent pixels").arg(half));

    f.table->updateProgressBarValue(1, 1, 100);
    const int full = accentPixels();
    ASSERT_TRUE(full > half * 3 / 2) << qPrintable(QStringLiteral("full %1 vs half %2").arg(full).arg(half));

    f.table->setProgressBarVisible(1, 1, false, 0, 100);
    ASSERT_EQ(accentPixels(), 0);
}

