// Device discovery and the device table.

#include "QVirtualCamMainWidget.h"

void QVirtualCamMainWidget::InitDeviceTable()
{
}

void QVirtualCamMainWidget::onCellCheckStateChanged(int nRow, int nColumn)
{
    Q_UNUSED(nRow);
    Q_UNUSED(nColumn);
}

void QVirtualCamMainWidget::onHeaderCheckStateChanged(int nColumn)
{
    Q_UNUSED(nColumn);
}
