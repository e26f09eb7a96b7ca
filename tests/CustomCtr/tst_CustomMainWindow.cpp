// The frameless window and its title bar: controls, extra buttons, dragging,
// central widget, and the texts that translation catalogues replace.
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

class TestCustomMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void titleControls_hideTheButtonsNotChosen();
    void controls_minimizeMaximizeAndDoubleClickOnTitle();
    void closeButton_goesThroughCloseEvent();
    void dragOnTitleBar_movesTheWindow();
    void addMenu_placesButtonsBeforeTheControlsAndPopsItsMenu();
    void titleTextAndIcon();
    void centralWidget_sitsBelowTitleAndIsReplaced();
    void controlTips_followTheInstalledCatalogue();
};

void TestCustomMainWindow::titleControls_hideTheButtonsNotChosen()
{
    auto window = shownWindow();
    CustomTitleBar* const bar = window->cTitleBar();
    bar->cSetTitleControls(CustomTitleBar::CloseControl);
    QVERIFY(!control(window.get(), "MinimizeBtn")->isVisible());
    QVERIFY(!control(window.get(), "MaximizeBtn")->isVisible());
    QVERIFY(control(window.get(), "CloseBtn")->isVisible());

    bar->cSetTitleControls(CustomTitleBar::MinimizeControl | CustomTitleBar::MaximizeControl);
    QVERIFY(control(window.get(), "MinimizeBtn")->isVisible());
    QVERIFY(!control(window.get(), "CloseBtn")->isVisible());
}

void TestCustomMainWindow::controls_minimizeMaximizeAndDoubleClickOnTitle()
{
    auto window = shownWindow();
    CustomTitleBar* const bar = window->cTitleBar();
    CustomPushButton* const maximize = control(window.get(), "MaximizeBtn");
    QTest::mouseClick(maximize, Qt::LeftButton);
    QTRY_VERIFY(window->isMaximized());
    QCOMPARE(maximize->toolTip(), QStringLiteral("Restore"));
    QTest::mouseClick(maximize, Qt::LeftButton);
    QTRY_VERIFY(!window->isMaximized());
    QCOMPARE(maximize->toolTip(), QStringLiteral("Maximize"));
    // A state change made elsewhere updates the button too.
    window->showMaximized();
    QTRY_COMPARE(maximize->toolTip(), QStringLiteral("Restore"));
    window->showNormal();
    QTRY_VERIFY(!window->isMaximized());

    const QPoint free(bar->width() / 2, bar->height() / 2);
    QVERIFY(bar->childAt(free) == nullptr);
    QTest::mouseDClick(bar, Qt::LeftButton, Qt::NoModifier, free);
    QTRY_VERIFY(window->isMaximized());
    QTest::mouseDClick(bar, Qt::LeftButton, Qt::NoModifier, free);
    QTRY_VERIFY(!window->isMaximized());
    // Without the maximize control a double click does nothing.
    bar->cSetTitleControls(CustomTitleBar::CloseControl | CustomTitleBar::MinimizeControl);
    QTest::mouseDClick(bar, Qt::LeftButton, Qt::NoModifier, free);
    QTest::qWait(20);
    QVERIFY(!window->isMaximized());

    QTest::mouseClick(control(window.get(), "MinimizeBtn"), Qt::LeftButton);
    QTRY_VERIFY(window->isMinimized());
}

void TestCustomMainWindow::closeButton_goesThroughCloseEvent()
{
    GuardedWindow window;
    window.resize(400, 300);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    CustomPushButton* const close = control(&window, "CloseBtn");

    QTest::mouseClick(close, Qt::LeftButton);
    QCOMPARE(window.closeRequests, 1);
    QVERIFY(window.isVisible());
    QTest::keyClick(&window, Qt::Key_Escape); // Escape does not close the window
    QCOMPARE(window.closeRequests, 1);

    QTest::mouseClick(close, Qt::LeftButton);
    QCOMPARE(window.closeRequests, 2);
    QTRY_VERIFY(!window.isVisible());
}

void TestCustomMainWindow::dragOnTitleBar_movesTheWindow()
{
    auto window = shownWindow();
    window->move(100, 100);
    QTRY_COMPARE(window->pos(), QPoint(100, 100));
    CustomTitleBar* const bar = window->cTitleBar();
    const QPoint start(60, bar->height() / 2);

    sendMouse(bar, QEvent::MouseButtonPress, start, Qt::LeftButton, Qt::LeftButton);
    sendMouse(bar, QEvent::MouseMove, start + QPoint(30, 20), Qt::NoButton, Qt::LeftButton);
    sendMouse(bar, QEvent::MouseButtonRelease, start + QPoint(30, 20), Qt::LeftButton, Qt::NoButton);
    QTRY_COMPARE(window->pos(), QPoint(130, 120));

    // Moving without a pressed button does not drag.
    sendMouse(bar, QEvent::MouseMove, start + QPoint(90, 40), Qt::NoButton, Qt::NoButton);
    QTest::qWait(20);
    QCOMPARE(window->pos(), QPoint(130, 120));
}

void TestCustomMainWindow::addMenu_placesButtonsBeforeTheControlsAndPopsItsMenu()
{
    auto window = shownWindow();
    CustomTitleBar* const bar = window->cTitleBar();
    CustomPushButton* const help = bar->cAddMenu(QString(), nullptr);
    QMenu menu;
    menu.addAction(QStringLiteral("Item"));
    CustomPushButton* const more = bar->cAddMenu(QStringLiteral("More"), &menu);
    QVERIFY(help && more);
    QCOMPARE(bar->cMenuButtons(), (QList<CustomPushButton*>{help, more}));
    QTRY_VERIFY(help->isVisible() && more->isVisible());

    const int minimizeX = control(window.get(), "MinimizeBtn")->geometry().left();
    QVERIFY(help->geometry().right() < more->geometry().left());
    QVERIFY(more->geometry().right() < minimizeX);
    QCOMPARE(help->width(), help->height()); // caption-less: square

    QSignalSpy clicked(help, &QPushButton::clicked);
    QTest::mouseClick(help, Qt::LeftButton);
    QCOMPARE(clicked.count(), 1);
    QVERIFY(window->isVisible());
    QTest::mouseClick(more, Qt::LeftButton);
    QTRY_VERIFY(menu.isVisible());
    menu.hide();
}

void TestCustomMainWindow::titleTextAndIcon()
{
    CustomMainWindow window;
    CustomTitleBar* const bar = window.cTitleBar();
    auto* const text = bar->findChild<QLabel*>(QStringLiteral("TitleText"));
    QCOMPARE(text->textFormat(), Qt::PlainText); // device texts never become markup

    auto* const icon = bar->findChild<QLabel*>(QStringLiteral("TitleIcon"));
    bar->cSetTitleIcon(QStringLiteral(":/no/such/icon.png"));
    QVERIFY(icon->isHidden());

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QImage image(16, 16, QImage::Format_ARGB32);
    image.fill(Qt::red);
    const QString path = dir.filePath(QStringLiteral("icon.png"));
    QVERIFY(image.save(path));
    bar->cSetTitleIcon(path);
    QVERIFY(!icon->isHidden());
}

void TestCustomMainWindow::centralWidget_sitsBelowTitleAndIsReplaced()
{
    auto window = shownWindow();
    QCOMPARE(window->cCentralWidget(), nullptr);

    QPointer<QWidget> first = new QWidget;
    window->cSetCentralWidget(first);
    QCOMPARE(window->cCentralWidget(), first.data());
    QCOMPARE(first->parentWidget(), window.get());
    QTRY_VERIFY(first->isVisible());
    QVERIFY(first->geometry().top() >= window->cTitleBar()->geometry().bottom());
    QVERIFY(first->height() > window->height() / 2);

    // The new widget may come from inside the old one.
    QPointer<QWidget> second = new QWidget(first);
    window->cSetCentralWidget(second);
    QTRY_VERIFY(first.isNull());
    QVERIFY(!second.isNull());
    QCOMPARE(window->cCentralWidget(), second.data());

    window->cSetCentralWidget(nullptr);
    QTRY_VERIFY(second.isNull());
    QCOMPARE(window->cCentralWidget(), nullptr);
}

void TestCustomMainWindow::controlTips_followTheInstalledCatalogue()
{
    auto window = shownWindow();
    QTranslator translator;
    QVERIFY2(translator.load(QStringLiteral("customctr_test_zh_CN"), QStringLiteral(CUSTOMCTR_TEST_QM_DIR)),
             "test catalogue customctr_test_zh_CN.qm missing: lrelease did not run");
    QVERIFY(QCoreApplication::installTranslator(&translator));
    QTRY_COMPARE(control(window.get(), "CloseBtn")->toolTip(), QString::fromUtf8("关闭"));
    QCOMPARE(control(window.get(), "MinimizeBtn")->toolTip(), QString::fromUtf8("最小化"));
    QCOMPARE(control(window.get(), "MaximizeBtn")->toolTip(), QString::fromUtf8("最大化"));

    QVERIFY(QCoreApplication::removeTranslator(&translator));
    QTRY_COMPARE(control(window.get(), "CloseBtn")->toolTip(), QStringLiteral("Close"));
}

QTEST_MAIN(TestCustomMainWindow)
#include "tst_CustomMainWindow.moc"
