// Slots kept for the window's interface that nothing connects.

#include "QVirtualCamMainWidget.h"

void QVirtualCamMainWidget::OnCloseBtnClicked()
{
}

void QVirtualCamMainWidget::OnOkBtnClicked()
{
}

void QVirtualCamMainWidget::OnButtonClicked(int nIndex)
{
    Q_UNUSED(nIndex);
}

void QVirtualCamMainWidget::OnUpdateCollectProgress(int precent)
{
    Q_UNUSED(precent);
}
