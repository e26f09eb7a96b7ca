// The real tool on a private X server: a later start hands the focus to the
// running window and exits 0 and switches its language when asked (what an
// ended copy leaves behind is tst_shell_single_instance's to show).
// Screenshots of the window in both languages land in <build>/screenshots.

#include "XTestDisplay.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

const QString kProgram = QStringLiteral(QUORVEX_SUITE_DIR "/apps/Quorvex/Quorvex");
const QString kChineseTitle = QStringLiteral("奎沃思");

} // namespace

class DesktopTest : public QObject
{
    Q_OBJECT

private:
    XTestDisplay m_x;

    QProcessEnvironment toolEnvironment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", m_x.name());
        environment.insert("QT_QPA_PLATFORM", "xcb");
        return environment;
    }

    std::unique_ptr<QProcess> startTool(const QStringList& arguments = {})
    {
        auto tool = std::make_unique<QProcess>();
        tool->setProcessEnvironment(toolEnvironment());
        tool->setWorkingDirectory(QFileInfo(kProgram).absolutePath());
        tool->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        tool->start(kProgram, arguments);
        tool->waitForStarted(10000);
        return tool;
    }

    // A later start, run to its end: its exit code, -1 if it crashed or hung.
    int runLaterStart(const QStringList& arguments = {})
    {
        const std::unique_ptr<QProcess> tool = startTool(arguments);
        if (!tool->waitForFinished(30000)) {
            tool->kill();
            tool->waitForFinished();
            return -1;
        }
        return tool->exitStatus() == QProcess::NormalExit ? tool->exitCode() : -1;
    }

    XWindowId waitForWindow(const QString& titlePart, int timeoutMs = 30000)
    {
        XWindowId window = 0;
        (void)QTest::qWaitFor([&] { return (window = m_x.findWindow(titlePart)) != 0; }, timeoutMs);
        return window;
    }

    static void endTool(QProcess& tool)
    {
        if (tool.state() == QProcess::NotRunning)
            return;
        tool.kill();
        tool.waitForFinished(10000);
    }

    void screenshot(const QString& name)
    {
        const QString folder = QStringLiteral(QUORVEX_BINARY_DIR "/screenshots");
        QDir().mkpath(folder);
        QProcess shooter;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", m_x.name());
        shooter.setProcessEnvironment(environment);
        shooter.start(QStringLiteral(QUORVEX_SCREENSHOT), {folder + '/' + name});
        QVERIFY(shooter.waitForFinished(30000));
        QVERIFY2(shooter.exitCode() == 0, shooter.readAllStandardError().constData());
        qInfo("screenshot: %s/%s", qPrintable(folder), qPrintable(name));
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(kProgram), qPrintable(kProgram + " is not built"));
        QVERIFY2(m_x.open(), qPrintable(m_x.errorText()));
    }

    void laterStart_exitsZero_andTheFirstWindowTakesTheFocus()
    {
        const std::unique_ptr<QProcess> first = startTool({"ENG"});
        const XWindowId window = waitForWindow("Quorvex");
        QVERIFY2(window, "the first copy shows no window");

        const XWindowId decoy = m_x.showDecoyWithFocus();
        QTRY_COMPARE(m_x.focusedTopLevel(), decoy);

        QCOMPARE(runLaterStart(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(m_x.focusedTopLevel(), window, 10000);
        QCOMPARE(m_x.countWindows("Quorvex"), 1);
        QCOMPARE(first->state(), QProcess::Running);

        m_x.destroyWindow(decoy);
        endTool(*first);
    }

    void laterStartWithENG_switchesAChineseCopy()
    {
        const std::unique_ptr<QProcess> first = startTool({"CH"});
        const XWindowId window = waitForWindow(kChineseTitle);
        QVERIFY2(window, "the first copy shows no Chinese window");
        QTest::qWait(1500); // let it paint before the picture
        screenshot("shell-window-zh.png");

        QCOMPARE(runLaterStart({"ENG"}), 0);
        QTRY_COMPARE_WITH_TIMEOUT(m_x.title(window), QString("Quorvex"), 10000);
        QTest::qWait(1500);
        screenshot("shell-window-en.png");

        QCOMPARE(runLaterStart({"CH"}), 0);
        QTRY_COMPARE_WITH_TIMEOUT(m_x.title(window), kChineseTitle, 10000);
        QCOMPARE(m_x.countWindows(""), 1);
        endTool(*first);
    }

};

QTEST_GUILESS_MAIN(DesktopTest)
#include "tst_shell_desktop.moc"
