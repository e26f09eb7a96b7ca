// Check boxes, the header's select-all box and progress bars of
// CustomTableWidget, driven the way a user drives them: clicks and keys.
#include "QtPrinters.h"
#include "CustomCheckHeaderView.h"
#include "CustomTableWidget.h"
#include "TableTests.h"

#include <QtTest>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

constexpr int kRows = 4;

// A shown table with a header box on column 0 and a check box in column 0 of
// every row, like a device list.
class TableTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        table.setHorizontalHeader(header);
        header->setCheckBoxVisible(0, true);
        header->connetSectionResized(true);
        table.setColumnWidth(0, 120);
        table.setColumnWidth(1, 150);
        for (int row = 0; row < kRows; ++row) {
            table.setRowHeight(row, 38);
            for (int column = 0; column < table.columnCount(); ++column)
                table.setItem(row, column, new QTableWidgetItem);
            table.setCheckBoxVisible(row, 0, true);
        }
        table.resize(480, 260);
        table.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&table));
        spy.clear();
    }
    static void clickAt(QWidget* widget, const QPoint& pos)
    {
        QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, pos);
    }
    void clickBox(int row, int column)
    {
        const QRect box = table.checkBoxRect(row, column);
        ASSERT_FALSE(box.isEmpty()) << "cell shows no check box";
        clickAt(table.viewport(), box.center());
    }
    void clickHeaderBox()
    {
        const QRect box = header->checkBoxRect(0);
        ASSERT_FALSE(box.isEmpty()) << "header section shows no check box";
        clickAt(header->viewport(), box.center());
    }

    void tickRows(int from, Qt::CheckState state, bool notifyNow)
    {
        for (int row = from; row < kRows; ++row)
            table.setCellCheckState(row, 0, state, notifyNow);
    }
    // Column 0 as "-~x" per row, then the header's box: "--x- header ~".
    QString columnState() const
    {
        QString text;
        for (int row = 0; row < table.rowCount(); ++row)
            text += "-~x"[table.cellCheckState(row, 0)];
        return text + " header " + "-~x"[header->checkState(0)];
    }
    struct Step
    {
        std::string rowName;
        std::function<void()> act;
        QString column;   // columnState() afterwards
        int emitted = -1; // counted signals since SetUp, -1: not looked at
    };
    void walk(const std::vector<Step>& steps)
    {
        forEachRow(steps, [&](const Step& step) {
            step.act();
            EXPECT_EQ(columnState(), step.column);
            if (step.emitted >= 0) {
                EXPECT_EQ(counted->count(), step.emitted);
            }
        });
    }

    CustomTableWidget table {kRows, 3};
    CustomCheckHeaderView* const header = new CustomCheckHeaderView(Qt::Horizontal, &table);
    QSignalSpy spy {&table, &CustomTableWidget::SigCellCheckStateChanged};
    QSignalSpy* counted = &spy; // the signals walk() counts
};

} // namespace

TEST(TestCustomTableWidget, checkBoxVisibility_followsCallsAndCreatesItemsOnlyWhenShown)
{
    CustomTableWidget table(2, 2);
    ASSERT_FALSE(table.IsHaveCheckBox(0, 0));
    table.setCheckBoxVisible(0, 0, false);
    ASSERT_FALSE(table.item(0, 0)) << "hiding a box must not create an item";

    table.setCheckBoxVisible(0, 0, true);
    ASSERT_TRUE(table.IsHaveCheckBox(0, 0));
    ASSERT_TRUE(table.item(0, 0));
    ASSERT_TRUE(table.isCheckBoxEnabled(0, 0));
    ASSERT_EQ(table.cellCheckState(0, 0), Qt::Unchecked);

    table.setCellCheckState(0, 0, Qt::Checked, true);
    ASSERT_EQ(table.cellCheckState(0, 0), Qt::Checked);
    table.setCheckBoxVisible(0, 0, false);
    ASSERT_FALSE(table.IsHaveCheckBox(0, 0));
    ASSERT_EQ(table.cellCheckState(0, 0), Qt::Unchecked);

    // The box belongs to the item: it moves with its row.
    table.setCheckBoxVisible(1, 1, true);
    table.insertRow(0);
    ASSERT_TRUE(table.IsHaveCheckBox(2, 1));
    ASSERT_FALSE(table.IsHaveCheckBox(1, 1));
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
        EXPECT_FALSE(table.IsHaveCheckBox(cell.x(), cell.y()));
        EXPECT_EQ(table.cellCheckState(cell.x(), cell.y()), Qt::Unchecked);
        EXPECT_EQ(table.progressBarValue(cell.x(), cell.y()), -1);
        EXPECT_TRUE(table.checkBoxRect(cell.x(), cell.y()).isEmpty());
    }
    ASSERT_EQ(table.rowCount(), 1);
    ASSERT_EQ(table.columnCount(), 1);
    ASSERT_EQ(spy.count(), 0);
}

TEST_F(TableTest, userClickOnBox_togglesAndEmits)
{
    // Callers keep their own data under Qt::UserRole + n in the same items.
    for (int offset = 0; offset < 8; ++offset)
        table.item(2, 0)->setData(Qt::UserRole + offset, QStringLiteral("SN%1").arg(offset));
    const QRect cell = table.visualRect(table.model()->index(0, 0));
    ASSERT_GT(cell.width(), table.checkBoxRect(0, 0).width() + 40);
    walk({
        {"beside the box, and on a cell without one",
         [&] {
             clickAt(table.viewport(), QPoint(cell.right() - 5, cell.center().y()));
             clickAt(table.viewport(), table.visualRect(table.model()->index(0, 1)).center());
         },
         "---- header -", 0},
        {"on the box", [&] { clickBox(2, 0); }, "--x- header ~", 1},
        {"on it again", [&] { clickBox(2, 0); }, "---- header -", 2},
    });
    EXPECT_EQ(table.item(2, 0)->data(Qt::UserRole + 1).toString(), QStringLiteral("SN1"));
    ASSERT_EQ(spy.value(0), (QVariantList {2, 0}));

    // A partially checked box becomes checked on a click.
    table.setCellCheckState(1, 0, Qt::PartiallyChecked, true);
    spy.clear();
    walk({{"on a partially checked box", [&] { clickBox(1, 0); }, "-x-- header ~", 1}});
}

TEST_F(TableTest, spaceKey_togglesEnabledBoxes_programTicksDisabledOnes)
{
    table.setFocus();
    const auto space = [&](int row) { table.setCurrentCell(row, 0); QTest::keyClick(&table, Qt::Key_Space); };
    walk({
        {"space on an enabled box", [&] { space(3); }, "---x header ~", 1},
        {"click and space on a disabled box", [&] { table.setCheckBoxEnable(1, 0, false); clickBox(1, 0); space(1); },
         "---x header ~", 1},
        {"the program ticks the disabled box", [&] { table.setCellCheckState(1, 0, Qt::Checked, true); },
         "-x-x header ~", 2},
    });
    EXPECT_TRUE(table.IsHaveCheckBox(1, 0));
}

TEST_F(TableTest, programmaticChange_notifiesNowOrOnceLater)
{
    walk({
        {"notified now", [&] { table.setCellCheckState(0, 0, Qt::Checked, true); }, "x--- header ~", 1},
        {"no change, no signal", [&] { table.setCellCheckState(0, 0, Qt::Checked, true); }, "x--- header ~", 1},
        {"notified later: not yet", [&] { tickRows(1, Qt::Checked, false); }, "xxxx header x", 1},
        {"notified later: once", [&] { (void)QTest::qWaitFor([&] { return spy.count() > 1; }); QTest::qWait(20); },
         "xxxx header x", 2},
        {"a cell without a box cannot be checked", [&] { table.setCellCheckState(0, 1, Qt::Checked, true); },
         "xxxx header x", 2},
    });
    EXPECT_EQ(table.cellCheckState(0, 1), Qt::Unchecked);
    ASSERT_EQ(spy.value(1), (QVariantList {kRows - 1, 0}));
}

TEST_F(TableTest, header_followsEnabledCellsOfVisibleRows)
{
    walk({
        {"one box clicked", [&] { clickBox(0, 0); }, "x--- header ~"},
        {"the others ticked silently", [&] { tickRows(1, Qt::Checked, false); }, "xxxx header x"},
        {"one unticked", [&] { table.setCellCheckState(3, 0, Qt::Unchecked, true); }, "xxx- header ~"},
        {"a box the user cannot change does not count", [&] { table.setCheckBoxEnable(3, 0, false); },
         "xxx- header x"},
        {"an added row counts", [&] { table.insertRow(0); table.setCheckBoxVisible(0, 0, true); }, "-xxx- header ~"},
        {"a removed one no longer", [&] { table.removeRow(0); }, "xxx- header x"},
        {"all unticked", [&] { tickRows(0, Qt::Unchecked, true); }, "---- header -"},
    });
    // Columns without a header box keep no header state.
    table.setCheckBoxVisible(0, 1, true);
    table.setCellCheckState(0, 1, Qt::Checked, true);
    ASSERT_EQ(header->checkState(1), Qt::Unchecked);
}

TEST_F(TableTest, headerClick_onlyReports_partialStaysPartial)
{
    QSignalSpy headerSpy(header, &CustomCheckHeaderView::SigCheckStateChange);
    counted = &headerSpy;
    QString seenBySlot; // the header state each receiver saw, as "-~x"
    QObject::connect(header, &CustomCheckHeaderView::SigCheckStateChange, &table,
                     [&](int section) { seenBySlot += "-~x"[header->checkState(section)]; });
    const QPoint beside(header->sectionViewportPosition(1) + 20, header->height() / 2);
    walk({
        {"header box clicked: the cells are the receiver's job", [&] { clickHeaderBox(); }, "---- header x", 1},
        {"clicked again", [&] { clickHeaderBox(); }, "---- header -", 2},
        {"one cell clicked", [&] { clickBox(1, 0); }, "-x-- header ~", 2},
        {"a partial header stays partial", [&] { clickHeaderBox(); }, "-x-- header ~", 3},
        {"disabled", [&] { header->setCheckBoxEnable(0, false); clickHeaderBox(); }, "-x-- header ~", 3},
        {"a click beside the box", [&] { header->setCheckBoxEnable(0, true); clickAt(header->viewport(), beside); },
         "-x-- header ~", 3},
        {"setCheckState is silent", [&] { header->setCheckState(0, Qt::Checked); }, "-x-- header x", 3},
    });
    EXPECT_EQ(headerSpy.value(0), QVariantList {0});
    EXPECT_EQ(seenBySlot, "x-~");
}

TEST_F(TableTest, headerClick_theUsualReceiverTicksEveryRowAndIsNotifiedOnce)
{
    QObject::connect(header, &CustomCheckHeaderView::SigCheckStateChange, &table, [&](int column) {
        if (header->checkState(column) != Qt::PartiallyChecked)
            tickRows(0, header->checkState(column), false);
    });
    clickHeaderBox();
    EXPECT_EQ(columnState(), "xxxx header x");
    ASSERT_TRUE(QTest::qWaitFor([&] { return spy.count() == 1; }));
}

TEST(TestCustomTableWidget, progressBar_rangeValueAndHiding)
{
    CustomTableWidget table(2, 5);
    table.setItem(0, 4, new QTableWidgetItem);
    const auto show = [&](bool visible, int low, int high) { table.setProgressBarVisible(0, 4, visible, low, high); };
    const auto update = [&](int value) { table.updateProgressBarValue(0, 4, value); };
    // The steps run in order on one cell.
    const struct { const char* name; std::function<void()> act; int value; } steps[] = {
        {"no bar yet: an update is ignored", [&] { update(30); }, -1},
        {"shown", [&] { show(true, 0, 100), update(55); }, 55},
        {"shown again with the same range keeps the value", [&] { show(true, 0, 100); }, 55},
        {"above the range", [&] { update(250); }, 100},
        {"below the range", [&] { update(-3); }, 0},
        {"hidden", [&] { show(false, 0, 100), update(40); }, -1},
        {"a reversed range is taken the right way round", [&] { show(true, 10, 0), update(7); }, 7},
        {"above the reversed range", [&] { update(11); }, 10},
    };
    for (const auto& step : steps) {
        step.act();
        EXPECT_EQ(table.progressBarValue(0, 4), step.value) << step.name;
    }

    // Hiding on an empty cell creates nothing; showing creates the item.
    table.setProgressBarVisible(1, 4, false, 0, 100);
    ASSERT_FALSE(table.item(1, 4));
    table.setProgressBarVisible(1, 4, true, 0, 100);
    ASSERT_TRUE(table.item(1, 4));
}

TEST_F(TableTest, progressBar_isPaintedInTheCell)
{
    const QColor accent(0x12, 0x9a, 0x34);
    table.setProgressColor(accent);
    const QRect area = table.visualRect(table.model()->index(1, 1)).adjusted(2, 2, -2, -2);
    const auto accentPixels = [&] {
        const QImage image = table.viewport()->grab().toImage();
        int count = 0;
        for (int y = area.top(); y <= area.bottom(); ++y)
            for (int x = area.left(); x <= area.right(); ++x)
                count += image.pixelColor(x, y).rgb() == accent.rgb() ? 1 : 0;
        return count;
    };
    ASSERT_EQ(accentPixels(), 0);

    table.setProgressBarVisible(1, 1, true, 0, 100);
    table.updateProgressBarValue(1, 1, 0);
    ASSERT_EQ(accentPixels(), 0);
    table.updateProgressBarValue(1, 1, 50);
    const int half = accentPixels();
    ASSERT_GT(half, 50);
    table.updateProgressBarValue(1, 1, 100);
    ASSERT_GT(accentPixels(), half * 3 / 2);

    table.setProgressBarVisible(1, 1, false, 0, 100);
    ASSERT_EQ(accentPixels(), 0);
}
