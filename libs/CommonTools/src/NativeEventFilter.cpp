#include "XQInterface.h"

XQNativeEventFilter::XQNativeEventFilter(QWidget* mainWindow)
    : m_pMainWindow(mainWindow)
{
}

bool XQNativeEventFilter::nativeEventFilter(const QByteArray& eventType, void* message, long* result)
{
    // X11 and Wayland deliver no application-range window messages; the
    // language switch reaches the window through the single-instance channel.
    Q_UNUSED(eventType);
    Q_UNUSED(message);
    Q_UNUSED(result);
    return false;
}
