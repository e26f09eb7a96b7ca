// The real tool on a private X server: a later start hands the focus to the
// running window and exits 0 and switches its language when asked (what an
// ended copy leaves behind is tst_shell_single_instance's to show).
// Screenshots of the window in both languages land in <build>/screenshots.

#include "QtPrinters.h"
#include "XTestDisplay.h"

#include <QtTest>

#include <gtest/gtest.h>

#include <memory>

namespace {

const QString kProgram = QUORVEX_SUITE_DIR "/apps/Quorvex/Quorvex";
const QString kChineseTitle = QString::fromUtf8("奎沃思");

// A tool process that is ended, if still running, when it goes.
struct Ender
{
    void operator()(QProcess* tool) const
    {
        tool->kill();
        tool->waitForFinished(10000);
        delete tool;
    }
};
using Tool = std::unique_ptr<QProcess, Ender>;

class DesktopTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QFile::exists(kProgram)) << qPrintable(kProgram + " is not built");
        ASSERT_TRUE(m_x.open()) << qPrintable(m_x.errorText());
    }
    QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", m_x.name());
        environment.insert("QT_QPA_PLATFORM", "xcb");
        return environment;
    }
    Tool startTool(const QStringList& arguments = {})
    {
        Tool tool(new QProcess);
        tool->setProcessEnvironment(environment());
        tool->setWorkingDirectory(QFileInfo(kProgram).absolutePath());
        tool->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        tool->start(kProgram, arguments);
        tool->waitForStarted(10000);
        return tool;
    }
    // A later start, run to its end: its exit code, -1 if it crashed or hung.
    int runLaterStart(const QStringList& arguments = {})
    {
        const Tool tool = startTool(arguments);
        if (!tool->waitForFinished(30000))
            return -1;
        return tool->exitStatus() == QProcess::NormalExit ? tool->exitCode() : -1;
    }
    XWindowId waitForWindow(const QString& titlePart)
    {
        XWindowId window = 0;
        (void)QTest::qWaitFor([&] { return (window = m_x.windowsTitled(titlePart).value(0)) != 0; }, 30000);
        return window;
    }
    void waitAndScreenshot(const QString& name)
    {
        QTest::qWait(1500); // let it paint before the picture
        const QString folder = QUORVEX_BINARY_DIR "/screenshots";
        QDir().mkpath(folder);
        QProcess shooter;
        shooter.setProcessEnvironment(environment());
        shooter.start(QUORVEX_SCREENSHOT, {folder + '/' + name});
        ASSERT_TRUE(shooter.waitForFinished(30000));
        ASSERT_EQ(shooter.exitCode(), 0) << shooter.readAllStandardError().constData();
        qInfo("screenshot: %s/%s", qPrintable(folder), qPrintable(name));
    }

    XTestDisplay m_x;
};

} // namespace

TEST_F(DesktopTest, laterStart_exitsZero_andTheFirstWindowTakesTheFocus)
{
    const Tool first = startTool({"ENG"});
    const XWindowId window = waitForWindow("Quorvex");
    ASSERT_TRUE(window) << "the first copy shows no window";
    const XWindowId decoy = m_x.showDecoyWithFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_x.focusedTopLevel() == decoy; }));

    ASSERT_EQ(runLaterStart(), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_x.focusedTopLevel() == window; }, 10000));
    ASSERT_EQ(m_x.windowsTitled("Quorvex").size(), 1);
    ASSERT_EQ(first->state(), QProcess::Running);
    m_x.destroyWindow(decoy);
}

TEST_F(DesktopTest, laterStartWithENG_switchesAChineseCopy)
{
    const Tool first = startTool({"CH"});
    const XWindowId window = waitForWindow(kChineseTitle);
    ASSERT_TRUE(window) << "the first copy shows no Chinese window";
    waitAndScreenshot("shell-window-zh.png");

    ASSERT_EQ(runLaterStart({"ENG"}), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_x.title(window) == "Quorvex"; }, 10000));
    waitAndScreenshot("shell-window-en.png");

    ASSERT_EQ(runLaterStart({"CH"}), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_x.title(window) == kChineseTitle; }, 10000));
    ASSERT_EQ(m_x.windowsTitled("").size(), 1);
}
