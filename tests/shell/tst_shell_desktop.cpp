// The real tool on a private X server: a later start hands the focus to the
// running window and exits 0 and switches its language when asked (what an
// ended copy leaves behind is tst_shell_single_instance's to show).
// Screenshots of the window in both languages land in <build>/screenshots.

#include "QtPrinters.h"
#include "XTestDisplay.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <gtest/gtest.h>

#include <memory>

namespace {

const QString kProgram = QStringLiteral(QUORVEX_SUITE_DIR "/apps/Quorvex/Quorvex");
const QString kChineseTitle = QStringLiteral("奎沃思");

} // namespace

class DesktopTest : public ::testing::Test {
protected:
    void SetUp() override;
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
        ASSERT_TRUE(shooter.waitForFinished(30000));
        ASSERT_TRUE(shooter.exitCode() == 0) << shooter.readAllStandardError().constData();
        qInfo("screenshot: %s/%s", qPrintable(folder), qPrintable(name));
    }
};

void DesktopTest::SetUp()
{
    ASSERT_TRUE(QFile::exists(kProgram)) << qPrintable(kProgram + " is not built");
    ASSERT_TRUE(m_x.open()) << qPrintable(m_x.errorText());
}

TEST_F(DesktopTest, laterStart_exitsZero_andTheFirstWindowTakesTheFocus)
{
    const std::unique_ptr<QProcess> first = startTool({"ENG"});
    const XWindowId window = waitForWindow("Quorvex");
    ASSERT_TRUE(window) << "the first copy shows no window";

    const XWindowId decoy = m_x.showDecoyWithFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return (m_x.focusedTopLevel()) == (decoy); })) << "waited for m_x.focusedTopLevel() == decoy";

    ASSERT_EQ(runLaterStart(), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return (m_x.focusedTopLevel()) == (window); }, 10000)) << "waited for m_x.focusedTopLevel() == window";
    ASSERT_EQ(m_x.countWindows("Quorvex"), 1);
    ASSERT_EQ(first->state(), QProcess::Running);

    m_x.destroyWindow(decoy);
    endTool(*first);
}

TEST_F(DesktopTest, laterStartWithENG_switchesAChineseCopy)
{
    const std::unique_ptr<QProcess> first = startTool({"CH"});
    const XWindowId window = waitForWindow(kChineseTitle);
    ASSERT_TRUE(window) << "the first copy shows no Chinese window";
    QTest::qWait(1500); // let it paint before the picture
    screenshot("shell-window-zh.png");

    ASSERT_EQ(runLaterStart({"ENG"}), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return (m_x.title(window)) == (QString("Quorvex")); }, 10000)) << "waited for m_x.title(window) == QString(\"Quorvex\")";
    QTest::qWait(1500);
    screenshot("shell-window-en.png");

    ASSERT_EQ(runLaterStart({"CH"}), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return (m_x.title(window)) == (kChineseTitle); }, 10000)) << "waited for m_x.title(window) == kChineseTitle";
    ASSERT_EQ(m_x.countWindows(""), 1);
    endTool(*first);
}

