#include "X11Focus.h"

#include <QGuiApplication>

// Xlib last: its macros clash with Qt's names.
#include <X11/Xlib.h>

void focusX11Window(unsigned long windowId)
{
    if (QGuiApplication::platformName() != QLatin1String("xcb") || windowId == 0)
        return;
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return;
    XRaiseWindow(display, windowId);
    XSetInputFocus(display, windowId, RevertToParent, CurrentTime);
    XFlush(display);
    XCloseDisplay(display);
}
