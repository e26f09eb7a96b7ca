// The styling mix-in and the default theme, checked on rendered pixels as
// well as on the generated style sheet text.
#include "QtPrinters.h"
#include "Custom.h"
#include "CustomLabel.h"
#include "CustomMainWindow.h"
#include "CustomMenu.h"
#include "CustomPushButton.h"
#include "CustomTableWidget.h"
#include "CustomTitleBar.h"

#include <QHBoxLayout>
#include <QtTest>

#include <gtest/gtest.h>

namespace {

const QString kBundle = QStringLiteral(QUORVEX_SUITE_DIR "/common/resource/CustomCtr_Default.rcc");

QImage render(QWidget* widget)
{
    widget->ensurePolished();
    return widget->grab().toImage();
}

bool near(const QColor& actual, const QColor& expected, int tolerance = 8)
{
    return qAbs(actual.red() - expected.red()) <= tolerance && qAbs(actual.green() - expected.green()) <= tolerance
        && qAbs(actual.blue() - expected.blue()) <= tolerance;
}

QString describe(const QColor& color)
{
    return color.name(QColor::HexArgb);
}

} // namespace

TEST(TestCustomStyle, invalidArguments_changeNothing)
{
    CustomLabel label;
    ASSERT_TRUE(label.cSetFontColor(QStringLiteral("red"), 0));
    const QString before = label.styleSheet();

    ASSERT_TRUE(!label.cSetBorderColor(QStringLiteral("#f76900"), 7, 0));
    ASSERT_TRUE(!label.cSetBorderColor(QStringLiteral("#f76900"), 3, 3));
    ASSERT_TRUE(!label.cSetBorderColor(QStringLiteral("not-a-colour"), 3, 0));
    ASSERT_TRUE(!label.cSetFontColor(QStringLiteral("red; background: blue"), 0));
    ASSERT_TRUE(!label.cSetFontColor(QString(), -1));
    ASSERT_TRUE(!label.cSetFontSize(0, 0));
    ASSERT_TRUE(!label.cSetBackgroundImage(QStringLiteral("x.png\"); background: blue; border-image: url(\""), 0));
    ASSERT_TRUE(!label.cSetBackgroundImage(QStringLiteral("a\nb.png"), 0));
    ASSERT_EQ(label.styleSheet(), before);
}

TEST(TestCustomStyle, borderAndBackground_areRendered)
{
    CustomLabel label;
    label.resize(60, 40);
    ASSERT_TRUE(label.cSetBackgroundColor(QStringLiteral("#00ff00"), 0));
    ASSERT_TRUE(label.cSetBorderWidth(3, 0));
    ASSERT_TRUE(label.cSetBorderColor(QStringLiteral("#ff0000"), CustomObject::EdgeAll, 0));
    const QImage image = render(&label);
    for (const QPoint& onBorder : {QPoint(1, 20), QPoint(58, 20), QPoint(30, 1), QPoint(30, 38)})
        EXPECT_TRUE(near(image.pixelColor(onBorder), Qt::red)) << qPrintable(describe(image.pixelColor(onBorder)));
    EXPECT_TRUE(near(image.pixelColor(30, 20), Qt::green)) << qPrintable(describe(image.pixelColor(30, 20)));

    // One edge only draws only that side.
    ASSERT_TRUE(label.cSetBorderColor(QStringLiteral("#0000ff"), CustomObject::EdgeBottom, 0));
    const QImage edge = render(&label);
    ASSERT_TRUE(near(edge.pixelColor(30, 38), Qt::blue));
    ASSERT_TRUE(!near(edge.pixelColor(30, 1), Qt::blue)) << qPrintable(describe(edge.pixelColor(30, 1)));
    ASSERT_TRUE(!near(edge.pixelColor(1, 20), Qt::blue));
}

TEST(TestCustomStyle, backgroundImage_fillsTheButton)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(QColor(0x20, 0x40, 0xe0));
    // A folder name with a space and parentheses, as user folders have.
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("my icons (1)")));
    const QString path = dir.filePath(QStringLiteral("my icons (1)/help.png"));
    ASSERT_TRUE(image.save(path));

    CustomPushButton button(nullptr, CustomPushButton::StyleFlat);
    button.resize(32, 32);
    for (int state = 0; state < 3; ++state)
        ASSERT_TRUE(button.cSetBackgroundImage(path, state));
    const QImage shot = render(&button);
    ASSERT_TRUE(near(shot.pixelColor(16, 16), QColor(0x20, 0x40, 0xe0))) << qPrintable(describe(shot.pixelColor(16, 16)));
}

TEST(TestCustomStyle, withoutBundle_widgetsKeepThePlainLook)
{
    ASSERT_TRUE(!QFile::exists(Custom::defaultStyleSheetPath()));
    ASSERT_TRUE(Custom::defaultStyleSheet().isEmpty());
    CustomMainWindow window;
    ASSERT_TRUE(window.styleSheet().isEmpty());
    CustomMenu menu;
    ASSERT_TRUE(menu.styleSheet().isEmpty());
}

TEST(TestCustomStyle, withBundle_themeIsRendered_ownSettersWin_titleControlsKeepTheirSize)
{
    ASSERT_TRUE(QFile::exists(kBundle)) << qPrintable(QStringLiteral("theme bundle not built: %1").arg(kBundle));
    ASSERT_TRUE(QResource::registerResource(kBundle));
    const auto unregister = qScopeGuard([] { QResource::unregisterResource(kBundle); });
    CustomMainWindow window;
    ASSERT_TRUE(window.styleSheet().startsWith(Custom::defaultStyleSheet()));
    window.cTitleBar()->cSetTitleHeight(40);
    auto* const central = new QWidget;
    auto* const layout = new QHBoxLayout(central);
    auto* const primary = new CustomPushButton(QStringLiteral("Go"), central, CustomPushButton::StylePrimary);
    auto* const outline = new CustomPushButton(QStringLiteral("Record"), central, CustomPushButton::StyleOutline);
    ASSERT_TRUE(outline->cSetBorderColor(QStringLiteral("#0000ff"), CustomObject::EdgeAll, CustomObject::StateNormal));
    auto* const table = new CustomTableWidget(2, 2);
    for (int row = 0; row < 2; ++row) {
        table->setItem(row, 0, new QTableWidgetItem);
        table->setCheckBoxVisible(row, 0, true);
    }
    table->setCellCheckState(0, 0, Qt::Checked, true);
    for (QWidget* button : {static_cast<QWidget*>(primary), static_cast<QWidget*>(outline)}) {
        button->setFixedSize(86, 26);
        layout->addWidget(button);
    }
    layout->addWidget(table);
    window.cSetCentralWidget(central);
    window.resize(500, 300);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));

    const QImage go = render(primary);
    ASSERT_TRUE(near(go.pixelColor(6, 13), QColor(0xf7, 0x69, 0x00))) << qPrintable(describe(go.pixelColor(6, 13)));
    // An own setter beats the theme; the rest of the theme's look (white face) stays.
    const QImage record = render(outline);
    ASSERT_TRUE(near(record.pixelColor(0, 13), Qt::blue, 40)) << qPrintable(describe(record.pixelColor(0, 13)));
    ASSERT_TRUE(near(record.pixelColor(6, 5), Qt::white)) << qPrintable(describe(record.pixelColor(6, 5)));
    // A corner of the box interior, away from the tick.
    const QImage cells = render(table->viewport());
    const QPoint inChecked = table->checkBoxRect(0, 0).topLeft() + QPoint(3, 3);
    const QPoint inUnchecked = table->checkBoxRect(1, 0).topLeft() + QPoint(3, 3);
    ASSERT_TRUE(near(cells.pixelColor(inChecked), QColor(0xf7, 0x69, 0x00), 30)) << qPrintable(describe(cells.pixelColor(inChecked)));
    ASSERT_TRUE(near(cells.pixelColor(inUnchecked), Qt::white, 12)) << qPrintable(describe(cells.pixelColor(inUnchecked)));
    // The theme must not squeeze the title bar's controls.
    const QSize control = window.cTitleBar()->cControlButton(CustomTitleBar::CloseControl)->size();
    ASSERT_TRUE(control.height() == 40) << qPrintable(QStringLiteral("control %1x%2").arg(control.width()).arg(control.height()));
}

