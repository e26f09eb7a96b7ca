// Saves a PNG of the whole X screen, optionally waiting until a top-level
// window whose title contains a text is mapped. Used by the run script and
// by look tests under Xvfb.
//   quorvex-screenshot OUTPUT.png [--wait-title TEXT] [--timeout SECONDS]

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <QThread>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cstdio>
#include <cstring>

namespace {

bool titleContains(Display* display, Window window, const char* text)
{
    XTextProperty property;
    if (!XGetWMName(display, window, &property) || !property.value)
        return false;
    const bool found = std::strstr(reinterpret_cast<const char*>(property.value), text) != nullptr;
    XFree(property.value);
    return found;
}

bool windowMapped(Display* display, Window window, const char* text, int depth = 0)
{
    XWindowAttributes attributes;
    if (depth > 0 && XGetWindowAttributes(display, window, &attributes)
        && attributes.map_state == IsViewable && titleContains(display, window, text))
        return true;
    if (depth > 2)
        return false;
    Window root = 0, parent = 0;
    Window* children = nullptr;
    unsigned int count = 0;
    if (!XQueryTree(display, window, &root, &parent, &children, &count))
        return false;
    bool found = false;
    for (unsigned int i = 0; i < count && !found; ++i)
        found = windowMapped(display, children[i], text, depth + 1);
    if (children)
        XFree(children);
    return found;
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "xcb");
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 2 || args.at(1).startsWith("-")) {
        std::fprintf(stderr, "usage: quorvex-screenshot OUTPUT.png [--wait-title TEXT] [--timeout SECONDS]\n");
        return 2;
    }
    const QString output = args.at(1);
    const int waitIndex = args.indexOf("--wait-title");
    const int timeoutIndex = args.indexOf("--timeout");
    const int timeoutMs = timeoutIndex > 0 ? args.value(timeoutIndex + 1).toInt() * 1000 : 20000;

    if (waitIndex > 0) {
        const QByteArray title = args.value(waitIndex + 1).toUtf8();
        Display* display = XOpenDisplay(nullptr);
        if (!display) {
            std::fprintf(stderr, "quorvex-screenshot: cannot open the X display\n");
            return 1;
        }
        QElapsedTimer clock;
        clock.start();
        bool found = false;
        while (!(found = windowMapped(display, DefaultRootWindow(display), title.constData()))
               && clock.elapsed() < timeoutMs)
            QThread::msleep(100);
        XCloseDisplay(display);
        if (!found) {
            std::fprintf(stderr, "quorvex-screenshot: no window titled '%s' appeared\n", title.constData());
            return 1;
        }
        QThread::msleep(800);  // let the first paint finish
    }
    QDir().mkpath(QFileInfo(output).absolutePath());
    const QPixmap shot = QGuiApplication::primaryScreen()->grabWindow(0);
    if (shot.isNull() || !shot.save(output)) {
        std::fprintf(stderr, "quorvex-screenshot: cannot write %s\n", qPrintable(output));
        return 1;
    }
    return 0;
}
