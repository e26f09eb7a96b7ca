// The real window on a virtual X display: three readers listed, one being
// collected with its progress bar, one finished. The screenshot is kept in
// <build>/screenshots/ for people to look at.

#include "DeviceProcess.h"
#include "SuiteLayout.h"
#include "WindowProbe.h"

#include <QResource>
#include <QScreen>
#include <QtTest>

class WindowLookTest : public QObject
{
    Q_OBJECT

private slots:
    void collectingAndFinishedRows_areShownOnScreen();
};

namespace {

// How many pixels of a screen rectangle are close to the accent orange.
int accentPixels(const QImage& image, const QRect& rect)
{
    int count = 0;
    for (int y = rect.top(); y <= rect.bottom(); ++y)
        for (int x = rect.left(); x <= rect.right(); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (c.red() > 200 && c.green() > 70 && c.green() < 160 && c.blue() < 80)
                ++count;
        }
    return count;
}

} // namespace

void WindowLookTest::collectingAndFinishedRows_areShownOnScreen()
{
    QVERIFY2(QGuiApplication::platformName() == "xcb", "this test needs the real X platform (run under Xvfb)");
    QVERIFY(QDir().mkpath(SuiteRoot() + "/common"));
    DeviceProcess devices;
    QString error;
    QVERIFY2(devices.startSimulator(3, &error), qPrintable(error));
    QVERIFY(WaitForCodeReaders(3, 15000).size() >= 3);

    QVirtualCamMainWidget window;
    window.Init();
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    WindowProbe probe(window);

    probe.tick(0);
    probe.collect->click();
    QTRY_COMPARE_WITH_TIMEOUT(probe.cell(0, 4), QString("Collect Finished"), 240000);
    QTRY_VERIFY(probe.collect->isEnabled());

    probe.tick(0, false);
    probe.tick(1);
    probe.collect->click();
    QTRY_VERIFY_WITH_TIMEOUT(probe.table->isProgressBarVisible(1, 4) && probe.table->progressBarValue(1, 4) > 5,
                             60000);
    QTest::qWait(300);  // let the bar be painted

    const QImage shot = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
    QVERIFY(!shot.isNull());
    const QString path = QUORVEX_BINARY_DIR "/screenshots/window-collecting.png";
    QVERIFY(QDir().mkpath(QFileInfo(path).absolutePath()));
    QVERIFY(shot.save(path));
    qInfo().noquote() << "screenshot:" << path;

    // The collecting row's status cell shows the bar in the accent colour.
    const QModelIndex cell = probe.table->model()->index(1, 4);
    const QRect onScreen(probe.table->viewport()->mapToGlobal(probe.table->visualRect(cell).topLeft()),
                         probe.table->visualRect(cell).size());
    QVERIFY2(accentPixels(shot, onScreen) > 50, "no progress bar painted in the collecting row");
    QCOMPARE(probe.cell(0, 4), QString("Collect Finished"));

    // Let the second job end before the window goes.
    QTRY_VERIFY_WITH_TIMEOUT(!probe.cell(1, 4).isEmpty(), 240000);
}

int main(int argc, char** argv)
{
    RunFromOwnSuiteLayout(argv);
    QApplication app(argc, argv);
    // The look the tool has: its theme and icons, as start-up registers them.
    QResource::registerResource(QUORVEX_SUITE_DIR "/common/resource/Orbicle.rcc");
    QResource::registerResource(QUORVEX_SUITE_DIR "/common/resource/CustomCtr_Default.rcc");
    WindowLookTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_window_look.moc"
