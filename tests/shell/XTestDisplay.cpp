#include "XTestDisplay.h"

#include <QThread>

#include <X11/Xlib.h>
#include <X11/Xatom.h>
#include <X11/Xutil.h>

XTestDisplay::~XTestDisplay()
{
    if (m_pDisplay)
        XCloseDisplay(m_pDisplay);
}

bool XTestDisplay::open()
{
    m_strName = qEnvironmentVariable("DISPLAY");
    m_pDisplay = m_strName.isEmpty() ? nullptr : XOpenDisplay(m_strName.toLatin1().constData());
    if (!m_pDisplay)
        m_error = "cannot open the display \"" + m_strName + "\"; the test runs on run-test's private X server";
    return m_pDisplay != nullptr;
}

QList<Window> XTestDisplay::windowsTitled(const QString& titlePart) const
{
    QList<Window> windows;
    Window root = 0;
    Window parent = 0;
    Window* children = nullptr;
    unsigned int count = 0;
    if (!XQueryTree(m_pDisplay, DefaultRootWindow(m_pDisplay), &root, &parent, &children, &count))
        return windows;
    for (unsigned int i = 0; i < count; ++i) {
        XWindowAttributes attributes;
        if (XGetWindowAttributes(m_pDisplay, children[i], &attributes) && attributes.map_state == IsViewable
            && title(children[i]).contains(titlePart))
            windows << children[i];
    }
    if (children)
        XFree(children);
    return windows;
}

QString XTestDisplay::title(Window window) const
{
    const Atom netWmName = XInternAtom(m_pDisplay, "_NET_WM_NAME", False);
    const Atom utf8 = XInternAtom(m_pDisplay, "UTF8_STRING", False);
    Atom type = 0;
    int format = 0;
    unsigned long items = 0;
    unsigned long remaining = 0;
    unsigned char* data = nullptr;
    QString text;
    if (XGetWindowProperty(m_pDisplay, window, netWmName, 0, 1024, False, utf8, &type, &format, &items, &remaining,
                           &data) == Success && data) {
        text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(items));
        XFree(data);
    }
    if (text.isEmpty()) {
        char* name = nullptr;
        if (XFetchName(m_pDisplay, window, &name) && name) {
            text = QString::fromLocal8Bit(name);
            XFree(name);
        }
    }
    return text;
}

Window XTestDisplay::focusedTopLevel() const
{
    Window focus = 0;
    int revert = 0;
    XGetInputFocus(m_pDisplay, &focus, &revert);
    const Window rootWindow = DefaultRootWindow(m_pDisplay);
    if (focus == None || focus == PointerRoot || focus == rootWindow)
        return 0;
    // Walk up to the child of the root.
    for (;;) {
        Window root = 0;
        Window parent = 0;
        Window* children = nullptr;
        unsigned int count = 0;
        if (!XQueryTree(m_pDisplay, focus, &root, &parent, &children, &count))
            return 0;
        if (children)
            XFree(children);
        if (parent == rootWindow || parent == 0)
            return focus;
        focus = parent;
    }
}

Window XTestDisplay::showDecoyWithFocus()
{
    const Window rootWindow = DefaultRootWindow(m_pDisplay);
    const Window decoy = XCreateSimpleWindow(m_pDisplay, rootWindow, 600, 400, 300, 200, 0, 0, 0xffffff);
    XStoreName(m_pDisplay, decoy, "decoy");
    XMapRaised(m_pDisplay, decoy);
    XSync(m_pDisplay, False);
    for (int i = 0; i < 100; ++i) {
        XWindowAttributes attributes;
        if (XGetWindowAttributes(m_pDisplay, decoy, &attributes) && attributes.map_state == IsViewable)
            break;
        QThread::msleep(20);
    }
    XSetInputFocus(m_pDisplay, decoy, RevertToParent, CurrentTime);
    XSync(m_pDisplay, False);
    return decoy;
}

void XTestDisplay::destroyWindow(XWindowId window) const
{
    XDestroyWindow(m_pDisplay, window);
    XSync(m_pDisplay, False);
}
