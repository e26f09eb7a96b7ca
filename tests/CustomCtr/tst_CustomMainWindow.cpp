// The frameless window and its title bar: controls, extra buttons, dragging,
// central widget, and the texts that translation catalogues replace.
#include "QtPrinters.h"
#include "CustomMainWindow.h"
#include "CustomPushButton.h"
#include "CustomTitleBar.h"

#include <QCloseEvent>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QTemporaryDir>
#include <QTranslator>
#include <QtTest>

#include <gtest/gtest.h>

#include <memory>

namespace {

// Records close requests and refuses the first one, as a window that asks
// "quit while busy?" does.
class GuardedWindow final : public CustomMainWindow
{
public:
    int closeRequests = 0;
    bool refuseNext = true;

protected:
    void closeEvent(QCloseEvent* event) override
    {
        ++closeRequests;
        if (refuseNext) {
            refuseNext = false;
            event->ignore();
            return;
        }
        CustomMainWindow::closeEvent(event);
    }
};

std::unique_ptr<CustomMainWindow> shownWindow()
{
    auto window = std::make_unique<CustomMainWindow>();
    window->resize(640, 400);
    window->show();
    if (!QTest::qWaitForWindowExposed(window.get()))
        qWarning("window not exposed");
    return window;
}

CustomPushButton* control(CustomMainWindow* window, const char* name)
{
    return window->cTitleBar()->findChild<CustomPushButton*>(QLatin1String(name));
}

void sendMouse(QWidget* widget, QEvent::Type type, const QPoint& local, Qt::MouseButton button,
               Qt::MouseButtons buttons)
{
    QMouseEvent event(type, local, widget->mapToGlobal(local), button, buttons, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

} // namespace

TEST(TestCustomMainWindow, titleControls_hideTheButtonsNotChosen)
{
    auto window = shownWindow();
    CustomTitleBar* const bar = window->cTitleBar();
    bar->cSetTitleControls(CustomTitleBar::CloseControl);
    ASSERT_TRUE(!control(window.get(), "MinimizeBtn")->isVisible());
    ASSERT_TRUE(!control(window.get(), "MaximizeBtn")->isVisible());
    ASSERT_TRUE(control(window.get(), "CloseBtn")->isVisible());

    bar->cSetTitleControls(CustomTitleBar::MinimizeControl | CustomTitleBar::MaximizeControl);
    ASSERT_TRUE(control(window.get(), "MinimizeBtn")->isVisible());
    ASSERT_TRUE(!control(window.get(), "CloseBtn")->isVisible());
}

TEST(TestCustomMainWindow, controls_minimizeMaximizeAndDoubleClickOnTitle)
{
    auto window = shownWindow();
    CustomTitleBar* const bar = window->cTitleBar();
    CustomPushButton* const maximize = control(window.get(), "MaximizeBtn");
    QTest::mouseClick(maximize, Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(window->isMaximized()); }));
    ASSERT_EQ(maximize->toolTip(), QStringLiteral("Restore"));
    QTest::mouseClick(maximize, Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(!window->isMaximized()); }));
    ASSERT_EQ(maximize->toolTip(), QStringLiteral("Maximize"));
    // A state change made elsewhere updates the button too.
    window->showMaximized();
    ASSERT_TRUE(QTest::qWaitFor([&] { return (maximize->toolTip()) == (QStringLiteral("Restore")); })) << "waited for maximize->toolTip() == QStringLiteral(\"Restore\")";
    window->showNormal();
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(!window->isMaximized()); }));

    const QPoint free(bar->width() / 2, bar->height() / 2);
    ASSERT_TRUE(bar->childAt(free) == nullptr);
    QTest::mouseDClick(bar, Qt::LeftButton, Qt::NoModifier, free);
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(window->isMaximized()); }));
    QTest::mouseDClick(bar, Qt::LeftButton, Qt::NoModifier, free);
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(!window->isMaximized()); }));
    // Without the maximize control a double click does nothing.
    bar->cSetTitleControls(CustomTitleBar::CloseControl | CustomTitleBar::MinimizeControl);
    QTest::mouseDClick(bar, Qt::LeftButton, Qt::NoModifier, free);
    QTest::qWait(20);
    ASSERT_TRUE(!window->isMaximized());

    QTest::mouseClick(control(window.get(), "MinimizeBtn"), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(window->isMinimized()); }));
}

TEST(TestCustomMainWindow, closeButton_goesThroughCloseEvent)
{
    GuardedWindow window;
    window.resize(400, 300);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    CustomPushButton* const close = control(&window, "CloseBtn");

    QTest::mouseClick(close, Qt::LeftButton);
    ASSERT_EQ(window.closeRequests, 1);
    ASSERT_TRUE(window.isVisible());
    QTest::keyClick(&window, Qt::Key_Escape); // Escape does not close the window
    ASSERT_EQ(window.closeRequests, 1);

    QTest::mouseClick(close, Qt::LeftButton);
    ASSERT_EQ(window.closeRequests, 2);
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(!window.isVisible()); }));
}

TEST(TestCustomMainWindow, dragOnTitleBar_movesTheWindow)
{
    auto window = shownWindow();
    window->move(100, 100);
    ASSERT_TRUE(QTest::qWaitFor([&] { return (window->pos()) == (QPoint(100, 100)); })) << "waited for window->pos() == QPoint(100, 100)";
    CustomTitleBar* const bar = window->cTitleBar();
    const QPoint start(60, bar->height() / 2);

    sendMouse(bar, QEvent::MouseButtonPress, start, Qt::LeftButton, Qt::LeftButton);
    sendMouse(bar, QEvent::MouseMove, start + QPoint(30, 20), Qt::NoButton, Qt::LeftButton);
    sendMouse(bar, QEvent::MouseButtonRelease, start + QPoint(30, 20), Qt::LeftButton, Qt::NoButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return (window->pos()) == (QPoint(130, 120)); })) << "waited for window->pos() == QPoint(130, 120)";

    // Moving without a pressed button does not drag.
    sendMouse(bar, QEvent::MouseMove, start + QPoint(90, 40), Qt::NoButton, Qt::NoButton);
    QTest::qWait(20);
    ASSERT_EQ(window->pos(), QPoint(130, 120));
}

TEST(TestCustomMainWindow, addMenu_placesButtonsBeforeTheControlsAndPopsItsMenu)
{
    auto window = shownWindow();
    CustomTitleBar* const bar = window->cTitleBar();
    CustomPushButton* const help = bar->cAddMenu(QString(), nullptr);
    QMenu menu;
    menu.addAction(QStringLiteral("Item"));
    CustomPushButton* const more = bar->cAddMenu(QStringLiteral("More"), &menu);
    ASSERT_TRUE(help && more);
    ASSERT_EQ(bar->cMenuButtons(), (QList<CustomPushButton*>{help, more}));
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(help->isVisible() && more->isVisible()); }));

    const int minimizeX = control(window.get(), "MinimizeBtn")->geometry().left();
    ASSERT_TRUE(help->geometry().right() < more->geometry().left());
    ASSERT_TRUE(more->geometry().right() < minimizeX);
    ASSERT_EQ(help->width(), help->height()); // caption-less: square

    QSignalSpy clicked(help, &QPushButton::clicked);
    QTest::mouseClick(help, Qt::LeftButton);
    ASSERT_EQ(clicked.count(), 1);
    ASSERT_TRUE(window->isVisible());
    QTest::mouseClick(more, Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(menu.isVisible()); }));
    menu.hide();
}

TEST(TestCustomMainWindow, titleTextAndIcon)
{
    CustomMainWindow window;
    CustomTitleBar* const bar = window.cTitleBar();
    auto* const text = bar->findChild<QLabel*>(QStringLiteral("TitleText"));
    ASSERT_EQ(text->textFormat(), Qt::PlainText); // device texts never become markup

    auto* const icon = bar->findChild<QLabel*>(QStringLiteral("TitleIcon"));
    bar->cSetTitleIcon(QStringLiteral(":/no/such/icon.png"));
    ASSERT_TRUE(icon->isHidden());

    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QImage image(16, 16, QImage::Format_ARGB32);
    image.fill(Qt::red);
    const QString path = dir.filePath(QStringLiteral("icon.png"));
    ASSERT_TRUE(image.save(path));
    bar->cSetTitleIcon(path);
    ASSERT_TRUE(!icon->isHidden());
}

TEST(TestCustomMainWindow, centralWidget_sitsBelowTitleAndIsReplaced)
{
    auto window = shownWindow();
    ASSERT_EQ(window->cCentralWidget(), nullptr);

    QPointer<QWidget> first = new QWidget;
    window->cSetCentralWidget(first);
    ASSERT_EQ(window->cCentralWidget(), first.data());
    ASSERT_EQ(first->parentWidget(), window.get());
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(first->isVisible()); }));
    ASSERT_TRUE(first->geometry().top() >= window->cTitleBar()->geometry().bottom());
    ASSERT_TRUE(first->height() > window->height() / 2);

    // The new widget may come from inside the old one.
    QPointer<QWidget> second = new QWidget(first);
    window->cSetCentralWidget(second);
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(first.isNull()); }));
    ASSERT_TRUE(!second.isNull());
    ASSERT_EQ(window->cCentralWidget(), second.data());

    window->cSetCentralWidget(nullptr);
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(second.isNull()); }));
    ASSERT_EQ(window->cCentralWidget(), nullptr);
}

TEST(TestCustomMainWindow, controlTips_followTheInstalledCatalogue)
{
    auto window = shownWindow();
    QTranslator translator;
    ASSERT_TRUE(translator.load(QStringLiteral("customctr_test_zh_CN"), QStringLiteral(CUSTOMCTR_TEST_QM_DIR))) << "test catalogue customctr_test_zh_CN.qm missing: lrelease did not run";
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));
    ASSERT_TRUE(QTest::qWaitFor([&] { return (control(window.get(), "CloseBtn")->toolTip()) == (QString::fromUtf8("关闭")); })) << "waited for control(window.get(), \"CloseBtn\")->toolTip() == QString::fromUtf8(\"关闭\")";
    ASSERT_EQ(control(window.get(), "MinimizeBtn")->toolTip(), QString::fromUtf8("最小化"));
    ASSERT_EQ(control(window.get(), "MaximizeBtn")->toolTip(), QString::fromUtf8("最大化"));

    ASSERT_TRUE(QCoreApplication::removeTranslator(&translator));
    ASSERT_TRUE(QTest::qWaitFor([&] { return (control(window.get(), "CloseBtn")->toolTip()) == (QStringLiteral("Close")); })) << "waited for control(window.get(), \"CloseBtn\")->toolTip() == QStringLiteral(\"Close\")";
}

