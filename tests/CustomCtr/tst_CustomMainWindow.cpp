// The frameless window and its title bar: controls, extra buttons, dragging,
// central widget, and the texts that translation catalogues replace.
#include "QtPrinters.h"
#include "CustomMainWindow.h"
#include "CustomPushButton.h"
#include "CustomTitleBar.h"

#include <QCloseEvent>
#include <QLabel>
#include <QMenu>
#include <QtTest>

#include <gtest/gtest.h>

namespace {

// Refuses the first close request, as a window that asks "quit while busy?" does.
class GuardedWindow final : public CustomMainWindow
{
public:
    int closeRequests = 0;

protected:
    void closeEvent(QCloseEvent* event) override
    {
        if (++closeRequests == 1)
            event->ignore();
        else
            CustomMainWindow::closeEvent(event);
    }
};

class CustomMainWindowTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        window.resize(640, 400);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
    CustomPushButton* control(const char* name) const
    {
        return bar->findChild<CustomPushButton*>(QLatin1String(name));
    }

    GuardedWindow window;
    CustomTitleBar* const bar = window.cTitleBar();
};

} // namespace

TEST_F(CustomMainWindowTest, controls_maximizeRestoreDoubleClickHideAndMinimize)
{
    CustomPushButton* const maximize = control("MaximizeBtn");
    QTest::mouseClick(maximize, Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.isMaximized(); }));
    EXPECT_EQ(maximize->toolTip(), QStringLiteral("Restore"));
    QTest::mouseClick(maximize, Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window.isMaximized(); }));
    EXPECT_EQ(maximize->toolTip(), QStringLiteral("Maximize"));
    // A state change made elsewhere updates the button too.
    window.showMaximized();
    ASSERT_TRUE(QTest::qWaitFor([&] { return maximize->toolTip() == QStringLiteral("Restore"); }));
    window.showNormal();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window.isMaximized(); }));

    const QPoint free(bar->width() / 2, bar->height() / 2);
    ASSERT_EQ(bar->childAt(free), nullptr);
    QTest::mouseDClick(bar, Qt::LeftButton, Qt::NoModifier, free);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.isMaximized(); }));
    QTest::mouseDClick(bar, Qt::LeftButton, Qt::NoModifier, free);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window.isMaximized(); }));

    // Only the chosen controls show; without maximize a double click does nothing.
    bar->cSetTitleControls(CustomTitleBar::CloseControl);
    EXPECT_FALSE(control("MinimizeBtn")->isVisible());
    EXPECT_FALSE(maximize->isVisible());
    EXPECT_TRUE(control("CloseBtn")->isVisible());
    QTest::mouseDClick(bar, Qt::LeftButton, Qt::NoModifier, free);
    QTest::qWait(20);
    EXPECT_FALSE(window.isMaximized());

    bar->cSetTitleControls(CustomTitleBar::MinimizeControl | CustomTitleBar::MaximizeControl);
    EXPECT_TRUE(control("MinimizeBtn")->isVisible());
    EXPECT_FALSE(control("CloseBtn")->isVisible());
    QTest::mouseClick(control("MinimizeBtn"), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.isMinimized(); }));
}

TEST_F(CustomMainWindowTest, closeButton_goesThroughCloseEvent)
{
    QTest::mouseClick(control("CloseBtn"), Qt::LeftButton);
    ASSERT_EQ(window.closeRequests, 1);
    ASSERT_TRUE(window.isVisible());
    QTest::keyClick(&window, Qt::Key_Escape); // Escape does not close the window
    ASSERT_EQ(window.closeRequests, 1);

    QTest::mouseClick(control("CloseBtn"), Qt::LeftButton);
    ASSERT_EQ(window.closeRequests, 2);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window.isVisible(); }));
}

TEST_F(CustomMainWindowTest, dragOnTitleBar_movesTheWindow)
{
    window.move(100, 100);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.pos() == QPoint(100, 100); }));
    const QPoint start(60, bar->height() / 2);
    const auto send = [&](QEvent::Type type, QPoint offset, Qt::MouseButton button, Qt::MouseButtons buttons) {
        QMouseEvent event(type, start + offset, bar->mapToGlobal(start + offset), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(bar, &event);
    };
    send(QEvent::MouseButtonPress, {}, Qt::LeftButton, Qt::LeftButton);
    send(QEvent::MouseMove, {30, 20}, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, {30, 20}, Qt::LeftButton, Qt::NoButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.pos() == QPoint(130, 120); }));

    // Moving without a pressed button does not drag.
    send(QEvent::MouseMove, {90, 40}, Qt::NoButton, Qt::NoButton);
    QTest::qWait(20);
    ASSERT_EQ(window.pos(), QPoint(130, 120));
}

TEST_F(CustomMainWindowTest, addMenu_placesButtonsBeforeTheControlsAndPopsItsMenu)
{
    CustomPushButton* const help = bar->cAddMenu(QString(), nullptr);
    QMenu menu;
    menu.addAction(QStringLiteral("Item"));
    CustomPushButton* const more = bar->cAddMenu(QStringLiteral("More"), &menu);
    ASSERT_TRUE(help && more);
    ASSERT_EQ(bar->cMenuButtons(), (QList<CustomPushButton*>{help, more}));
    ASSERT_TRUE(QTest::qWaitFor([&] { return help->isVisible() && more->isVisible(); }));

    EXPECT_LT(help->geometry().right(), more->geometry().left());
    EXPECT_LT(more->geometry().right(), control("MinimizeBtn")->geometry().left());
    EXPECT_EQ(help->width(), help->height()); // caption-less: square

    QSignalSpy clicked(help, &QPushButton::clicked);
    QTest::mouseClick(help, Qt::LeftButton);
    ASSERT_EQ(clicked.count(), 1);
    ASSERT_TRUE(window.isVisible());
    QTest::mouseClick(more, Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return menu.isVisible(); }));
    menu.hide();
}

TEST_F(CustomMainWindowTest, titleTextIsPlain_iconHidesWhenItCannotLoad)
{
    EXPECT_EQ(bar->findChild<QLabel*>(QStringLiteral("TitleText"))->textFormat(), Qt::PlainText);

    auto* const icon = bar->findChild<QLabel*>(QStringLiteral("TitleIcon"));
    bar->cSetTitleIcon(QStringLiteral(":/no/such/icon.png"));
    ASSERT_TRUE(icon->isHidden());

    QTemporaryDir dir;
    QImage image(16, 16, QImage::Format_ARGB32);
    image.fill(Qt::red);
    const QString path = dir.filePath(QStringLiteral("icon.png"));
    ASSERT_TRUE(image.save(path));
    bar->cSetTitleIcon(path);
    ASSERT_FALSE(icon->isHidden());
}

TEST_F(CustomMainWindowTest, centralWidget_sitsBelowTitleAndIsReplaced)
{
    ASSERT_EQ(window.cCentralWidget(), nullptr);
    QPointer<QWidget> first = new QWidget;
    window.cSetCentralWidget(first);
    ASSERT_EQ(window.cCentralWidget(), first.data());
    ASSERT_EQ(first->parentWidget(), &window);
    ASSERT_TRUE(QTest::qWaitFor([&] { return first->isVisible(); }));
    EXPECT_GE(first->geometry().top(), bar->geometry().bottom());
    EXPECT_GT(first->height(), window.height() / 2);

    // The new widget may come from inside the old one.
    QPointer<QWidget> second = new QWidget(first);
    window.cSetCentralWidget(second);
    ASSERT_TRUE(QTest::qWaitFor([&] { return first.isNull(); }));
    ASSERT_FALSE(second.isNull());
    ASSERT_EQ(window.cCentralWidget(), second.data());

    window.cSetCentralWidget(nullptr);
    ASSERT_TRUE(QTest::qWaitFor([&] { return second.isNull(); }));
    ASSERT_EQ(window.cCentralWidget(), nullptr);
}

TEST_F(CustomMainWindowTest, controlTips_followTheInstalledCatalogue)
{
    QTranslator translator;
    ASSERT_TRUE(translator.load(QStringLiteral("customctr_test_zh_CN"), QStringLiteral(CUSTOMCTR_TEST_QM_DIR)))
        << "test catalogue missing: lrelease did not run";
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));
    ASSERT_TRUE(QTest::qWaitFor([&] { return control("CloseBtn")->toolTip() == QString::fromUtf8("关闭"); }));
    EXPECT_EQ(control("MinimizeBtn")->toolTip(), QString::fromUtf8("最小化"));
    EXPECT_EQ(control("MaximizeBtn")->toolTip(), QString::fromUtf8("最大化"));

    ASSERT_TRUE(QCoreApplication::removeTranslator(&translator));
    ASSERT_TRUE(QTest::qWaitFor([&] { return control("CloseBtn")->toolTip() == QStringLiteral("Close"); }));
}
