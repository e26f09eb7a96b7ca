// The real tool on a private X server: a later start hands the focus to the
// running window and exits 0 and switches its language when asked (what an
// ended copy leaves behind is tst_shell_single_instance's to show).
// Screenshots of the window in both languages land in <build>/screenshots.

#include "QtPrinters.h"

#include <QtTest>

#include <gtest/gtest.h>

#include <memory>

// Last: Xlib's macros clash with the headers above.
#include <X11/Xlib.h>

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

// Runs on the test's own X server (run-test --xvfb starts it) and asks it
// which top-level windows exist, what they are called, which has the focus.
class DesktopTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QFile::exists(kProgram)) << qPrintable(kProgram + " is not built");
        m_display = XOpenDisplay(nullptr);
        ASSERT_TRUE(m_display) << "cannot open the display \"" << qgetenv("DISPLAY").constData()
                               << "\"; the test runs on run-test's private X server";
    }
    void TearDown() override // also takes away the decoy window
    {
        if (m_display)
            XCloseDisplay(m_display);
    }

    Tool startTool(const QStringList& arguments = {})
    {
        Tool tool(new QProcess);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "xcb");
        tool->setProcessEnvironment(environment);
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
    void waitAndScreenshot(const QString& name)
    {
        QTest::qWait(1500); // let it paint before the picture
        const QString folder = QUORVEX_BINARY_DIR "/screenshots";
        QDir().mkpath(folder);
        QProcess shooter;
        shooter.start(QUORVEX_SCREENSHOT, {folder + '/' + name});
        ASSERT_TRUE(shooter.waitForFinished(30000));
        ASSERT_EQ(shooter.exitCode(), 0) << shooter.readAllStandardError().constData();
        qInfo("screenshot: %s/%s", qPrintable(folder), qPrintable(name));
    }

    QString title(Window window) const
    {
        const Atom netWmName = XInternAtom(m_display, "_NET_WM_NAME", False);
        Atom type = 0;
        int format = 0;
        unsigned long items = 0;
        unsigned long remaining = 0;
        unsigned char* data = nullptr;
        QString text;
        if (XGetWindowProperty(m_display, window, netWmName, 0, 1024, False, XInternAtom(m_display, "UTF8_STRING", False),
                               &type, &format, &items, &remaining, &data) == Success && data) {
            text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(items));
            XFree(data);
        }
        char* name = nullptr;
        if (text.isEmpty() && XFetchName(m_display, window, &name) && name) {
            text = QString::fromLocal8Bit(name);
            XFree(name);
        }
        return text;
    }
    // The mapped top-level windows whose titles contain the text.
    QList<Window> windowsTitled(const QString& titlePart) const
    {
        QList<Window> windows;
        Window root = 0;
        Window parent = 0;
        Window* children = nullptr;
        unsigned int count = 0;
        if (!XQueryTree(m_display, DefaultRootWindow(m_display), &root, &parent, &children, &count))
            return windows;
        for (unsigned int i = 0; i < count; ++i) {
            XWindowAttributes attributes;
            if (XGetWindowAttributes(m_display, children[i], &attributes) && attributes.map_state == IsViewable
                && title(children[i]).contains(titlePart))
                windows << children[i];
        }
        if (children)
            XFree(children);
        return windows;
    }
    Window waitForWindow(const QString& titlePart) const
    {
        Window window = 0;
        (void)QTest::qWaitFor([&] { return (window = windowsTitled(titlePart).value(0)) != 0; }, 30000);
        return window;
    }
    // The top-level window that holds the keyboard focus, 0 when none.
    Window focusedTopLevel() const
    {
        Window focus = 0;
        int revert = 0;
        XGetInputFocus(m_display, &focus, &revert);
        const Window rootWindow = DefaultRootWindow(m_display);
        if (focus == None || focus == PointerRoot || focus == rootWindow)
            return 0;
        for (;;) { // up to the child of the root
            Window root = 0;
            Window parent = 0;
            Window* children = nullptr;
            unsigned int count = 0;
            if (!XQueryTree(m_display, focus, &root, &parent, &children, &count))
                return 0;
            if (children)
                XFree(children);
            if (parent == rootWindow || parent == 0)
                return focus;
            focus = parent;
        }
    }
    // Maps a plain window of our own and gives it the focus.
    Window showDecoyWithFocus() const
    {
        const Window decoy =
            XCreateSimpleWindow(m_display, DefaultRootWindow(m_display), 600, 400, 300, 200, 0, 0, 0xffffff);
        XStoreName(m_display, decoy, "decoy");
        XMapRaised(m_display, decoy);
        XSync(m_display, False);
        XWindowAttributes attributes;
        for (int i = 0; i < 100; ++i) {
            if (XGetWindowAttributes(m_display, decoy, &attributes) && attributes.map_state == IsViewable)
                break;
            QThread::msleep(20);
        }
        XSetInputFocus(m_display, decoy, RevertToParent, CurrentTime);
        XSync(m_display, False);
        return decoy;
    }

    Display* m_display = nullptr;
};

} // namespace

TEST_F(DesktopTest, laterStart_exitsZero_andTheFirstWindowTakesTheFocus)
{
    const Tool first = startTool({"ENG"});
    const Window window = waitForWindow("Quorvex");
    ASSERT_TRUE(window) << "the first copy shows no window";
    const Window decoy = showDecoyWithFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return focusedTopLevel() == decoy; }));

    ASSERT_EQ(runLaterStart(), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return focusedTopLevel() == window; }, 10000));
    ASSERT_EQ(windowsTitled("Quorvex").size(), 1);
    ASSERT_EQ(first->state(), QProcess::Running);
}

TEST_F(DesktopTest, laterStartWithENG_switchesAChineseCopy)
{
    const Tool first = startTool({"CH"});
    const Window window = waitForWindow(kChineseTitle);
    ASSERT_TRUE(window) << "the first copy shows no Chinese window";
    waitAndScreenshot("shell-window-zh.png");

    ASSERT_EQ(runLaterStart({"ENG"}), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return title(window) == "Quorvex"; }, 10000));
    waitAndScreenshot("shell-window-en.png");

    ASSERT_EQ(runLaterStart({"CH"}), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return title(window) == kChineseTitle; }, 10000));
    ASSERT_EQ(windowsTitled("").size(), 1);
}
