// The run-time language switch and the help manual.

#include "QVirtualCamMainWidget.h"

bool QVirtualCamMainWidget::nativeEvent(const QByteArray& eventType, void* message, long* result)
{
    Q_UNUSED(eventType);
    Q_UNUSED(message);
    Q_UNUSED(result);
    return false;
}

void QVirtualCamMainWidget::OnHelpDocClicked()
{
}
