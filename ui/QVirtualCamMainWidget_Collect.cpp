// The collect workflow: starting jobs, showing their progress and end,
// closing. The jobs themselves are collect::CollectJobs'.

#include "QVirtualCamMainWidget.h"

#include "CustomComboBox.h"
#include "CustomMessageBox.h"
#include "CustomPushButton.h"
#include "CustomTableWidget.h"
#include "DeviceListing.h"

#include <QCloseEvent>

QVirtualCamMainWidget::~QVirtualCamMainWidget()
{
    StopAllCollect();
}

void QVirtualCamMainWidget::OnCollectBtn()
{
    QVector<_XQ_CODEREADER_DEVICE_INFO_> devices;
    GetCheckCamera(devices);
    // Each job's reports reach its device's row, in the order it sent them.
    connect(&m_mapCollectThread, &collect::CollectJobs::progressReported, this,
            &QVirtualCamMainWidget::UpDateCollectProgress, Qt::UniqueConnection);
    connect(&m_mapCollectThread, &collect::CollectJobs::statusReported, this, &QVirtualCamMainWidget::OnCollectStatus,
            Qt::UniqueConnection);
    connect(&m_mapCollectThread, &collect::CollectJobs::finishReported, this, &QVirtualCamMainWidget::OnCollectFinish,
            Qt::UniqueConnection);
    if (!m_mapCollectThread.start(devices))
        return;
    m_pCollectBtn->setEnabled(false);
}

void QVirtualCamMainWidget::UpDateCollectProgress(QString strSerialNumber, int nPercent)
{
    if (!m_pDeviceTable)
        return;
    const int row = FindDeviceRow(strSerialNumber);
    if (QTableWidgetItem* item = m_pDeviceTable->item(row, kStatusColumn))
        item->setText(QString());
    m_pDeviceTable->setProgressBarVisible(row, kStatusColumn, true, 0, 100);
    m_pDeviceTable->updateProgressBarValue(row, kStatusColumn, nPercent);
    if (nPercent == 100)
        m_pDeviceTable->setProgressBarVisible(row, kStatusColumn, false, 0, 100);
}

void QVirtualCamMainWidget::OnCollectStatus(QString strSerialNumber, QString nInfo)
{
    if (!m_pDeviceTable)
        return;
    const int row = FindDeviceRow(strSerialNumber);
    m_pDeviceTable->setProgressBarVisible(row, kStatusColumn, false, 0, 100);
    if (QTableWidgetItem* item = m_pDeviceTable->item(row, kStatusColumn)) {
        item->setText(nInfo);
        RemoveCollectThread(strSerialNumber);
        DeleteCollectedFiles(strSerialNumber);
    }
}

void QVirtualCamMainWidget::OnCollectFinish(QString strSerialNumber, QString nInfo)
{
    Q_UNUSED(nInfo);
    if (!m_pDeviceTable)
        return;
    const int row = FindDeviceRow(strSerialNumber);
    m_pDeviceTable->setProgressBarVisible(row, kStatusColumn, false, 0, 100);
    QTableWidgetItem* item = m_pDeviceTable->item(row, kStatusColumn);
    if (!item)
        return;
    item->setText(tr("Collect Finished"));
    _XQ_CODEREADER_DEVICE_INFO_ record{};
    FindDeviceInfo(strSerialNumber, record);
    const QString model = collect::deviceText(record.stGigE.chModelName);
    if (m_pVirtualComboBox->findText(model, Qt::MatchExactly | Qt::MatchCaseSensitive) < 0)
        m_pVirtualComboBox->addItem(model);
    RemoveCollectThread(strSerialNumber);
}

void QVirtualCamMainWidget::RemoveCollectThread(QString serial)
{
    m_mapCollectThread.releaseJob(serial); // waits until the job's run() has returned
    if (m_mapCollectThread.isEmpty())
        m_pCollectBtn->setEnabled(true);
}

// The job has removed its own folder when it ended; this removes what an
// ended job of the model could not. The collection folder, the last good
// collection, is never touched.
void QVirtualCamMainWidget::DeleteCollectedFiles(QString serial)
{
    _XQ_CODEREADER_DEVICE_INFO_ record{};
    FindDeviceInfo(serial, record);
    m_mapCollectThread.removeLeftoversOf(collect::deviceText(record.stGigE.chModelName));
}

void QVirtualCamMainWidget::StopAllCollect()
{
    // Files are removed only after a job has ended, so none is cut from
    // under a job.
    m_mapCollectThread.stopAll();
}

void QVirtualCamMainWidget::closeEvent(QCloseEvent* event)
{
    if (m_mapCollectThread.isEmpty())
        return;
    const int answer = CustomMessageBox::ask(this, tr("Camera in collecting. Are you sure you want to quit?"),
                                             tr("Prompt"), CustomMessageBox::ConfirmCancelButtons, QString(), false);
    if (answer == CustomMessageBox::ConfirmButton) {
        close();
        event->accept();
    } else {
        event->ignore();
    }
}
