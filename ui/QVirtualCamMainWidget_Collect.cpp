// The collect workflow: starting jobs, their progress and end, closing.

#include "QVirtualCamMainWidget.h"

#include <QCloseEvent>

QVirtualCamMainWidget::~QVirtualCamMainWidget() = default;

void QVirtualCamMainWidget::closeEvent(QCloseEvent* event)
{
    CustomMainWindow::closeEvent(event);
}

void QVirtualCamMainWidget::OnCollectBtn()
{
}

void QVirtualCamMainWidget::UpDateCollectProgress(QString strSerialNumber, int nPercent)
{
    Q_UNUSED(strSerialNumber);
    Q_UNUSED(nPercent);
}

void QVirtualCamMainWidget::OnCollectStatus(QString strSerialNumber, QString nInfo)
{
    Q_UNUSED(strSerialNumber);
    Q_UNUSED(nInfo);
}

void QVirtualCamMainWidget::OnCollectFinish(QString strSerialNumber, QString nInfo)
{
    Q_UNUSED(strSerialNumber);
    Q_UNUSED(nInfo);
}
