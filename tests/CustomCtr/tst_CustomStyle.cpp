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

// Whether the pixel at `at` is within `tolerance` of `expected` in each channel.
::testing::AssertionResult near(const QImage& image, QPoint at, const QColor& expected, int tolerance = 8)
{
    const QColor actual = image.pixelColor(at);
    if (qAbs(actual.red() - expected.red()) <= tolerance && qAbs(actual.green() - expected.green()) <= tolerance
        && qAbs(actual.blue() - expected.blue()) <= tolerance)
        return ::testing::AssertionSuccess() << actual.name().toStdString() << " is near " << expected.name().toStdString();
    return ::testing::AssertionFailure() << actual.name().toStdString() << " is not near " << expected.name().toStdString();
}

} // namespace

TEST(TestCustomStyle, invalidArguments_changeNothing)
{
    CustomLabel label;
    ASSERT_TRUE(label.cSetFontColor(QStringLiteral("red"), 0));
    const QString before = label.styleSheet();

    EXPECT_FALSE(label.cSetBorderColor(QStringLiteral("#f76900"), 7, 0));
    EXPECT_FALSE(label.cSetBorderColor(QStringLiteral("#f76900"), 3, 3));
    EXPECT_FALSE(label.cSetBorderColor(QStringLiteral("not-a-colour"), 3, 0));
    EXPECT_FALSE(label.cSetFontColor(QStringLiteral("red; background: blue"), 0));
    EXPECT_FALSE(label.cSetFontColor(QString(), -1));
    EXPECT_FALSE(label.cSetFontSize(0, 0));
    EXPECT_FALSE(label.cSetBackgroundImage(QStringLiteral("x.png\"); background: blue; border-image: url(\""), 0));
    EXPECT_FALSE(label.cSetBackgroundImage(QStringLiteral("a\nb.png"), 0));
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
        EXPECT_TRUE(near(image, onBorder, Qt::red));
    EXPECT_TRUE(near(image, {30, 20}, Qt::green));

    // One edge only draws only that side.
    ASSERT_TRUE(label.cSetBorderColor(QStringLiteral("#0000ff"), CustomObject::EdgeBottom, 0));
    const QImage edge = render(&label);
    EXPECT_TRUE(near(edge, {30, 38}, Qt::blue));
    EXPECT_FALSE(near(edge, {30, 1}, Qt::blue));
    EXPECT_FALSE(near(edge, {1, 20}, Qt::blue));
}

TEST(TestCustomStyle, backgroundImage_fillsTheButton)
{
    QTemporaryDir dir;
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
    EXPECT_TRUE(near(render(&button), {16, 16}, QColor(0x20, 0x40, 0xe0)));
}

TEST(TestCustomStyle, withoutBundle_widgetsKeepThePlainLook)
{
    EXPECT_FALSE(QFile::exists(Custom::defaultStyleSheetPath()));
    EXPECT_TRUE(Custom::defaultStyleSheet().isEmpty());
    EXPECT_TRUE(CustomMainWindow().styleSheet().isEmpty());
    EXPECT_TRUE(CustomMenu().styleSheet().isEmpty());
}

TEST(TestCustomStyle, withBundle_themeIsRendered_ownSettersWin_titleControlsKeepTheirSize)
{
    ASSERT_TRUE(QFile::exists(kBundle)) << qPrintable("theme bundle not built: " + kBundle);
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

    const QColor accent(0xf7, 0x69, 0x00);
    EXPECT_TRUE(near(render(primary), {6, 13}, accent));
    // An own setter beats the theme; the rest of the theme's look (white face) stays.
    const QImage record = render(outline);
    EXPECT_TRUE(near(record, {0, 13}, Qt::blue, 40));
    EXPECT_TRUE(near(record, {6, 5}, Qt::white));
    // A corner of the box interior, away from the tick.
    const QImage cells = render(table->viewport());
    EXPECT_TRUE(near(cells, table->checkBoxRect(0, 0).topLeft() + QPoint(3, 3), accent, 30));
    EXPECT_TRUE(near(cells, table->checkBoxRect(1, 0).topLeft() + QPoint(3, 3), Qt::white, 12));
    // The theme must not squeeze the title bar's controls.
    EXPECT_EQ(window.cTitleBar()->cControlButton(CustomTitleBar::CloseControl)->height(), 40);
}

