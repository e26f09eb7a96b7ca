// The collected-device selector, creating virtual cameras and their list.

#include "QVirtualCamMainWidget.h"

void QVirtualCamMainWidget::InitComBoboxInfo()
{
}

void QVirtualCamMainWidget::InitVirtualCameraList()
{
}

void QVirtualCamMainWidget::OnAddVirtualBtn()
{
}

void QVirtualCamMainWidget::UpdateVirtualComBobox()
{
}

void QVirtualCamMainWidget::OnDeleteVirtualCamera()
{
}

void QVirtualCamMainWidget::UpdateVirtualCameraList(QString strDeviceModel, QString strSerialNumber)
{
    Q_UNUSED(strDeviceModel);
    Q_UNUSED(strSerialNumber);
}

void QVirtualCamMainWidget::OnCustomContextMenuRequested(const QPoint& pos)
{
    Q_UNUSED(pos);
}
