// The collect workflow: starting jobs, their progress and end, closing.

#include "QVirtualCamMainWidget.h"

#include "AppFolders.h"
#include "CollectedFiles.h"
#include "CustomComboBox.h"
#include "CustomMessageBox.h"
#include "CustomPushButton.h"
#include "CustomTableWidget.h"
#include "DeviceListing.h"
#include "QCollectInfoThread.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDeadlineTimer>
#include <QDebug>

#include <new>

namespace {

// How long quitting waits for the jobs to end; a job still running then is
// left to end with the process, its folder to the next start's sweep.
constexpr int kStopWaitMs = 3000;

QString modelNameOf(const _XQ_CODEREADER_DEVICE_INFO_& record)
{
    return collect::DeviceText(record.stGigE.chModelName);
}

} // namespace

QVirtualCamMainWidget::~QVirtualCamMainWidget()
{
    StopAllCollect();
}

void QVirtualCamMainWidget::OnCollectBtn()
{
    QVector<_XQ_CODEREADER_DEVICE_INFO_> vecDevices;
    GetCheckCamera(vecDevices);
    for (const _XQ_CODEREADER_DEVICE_INFO_& record : vecDevices) {
        auto* pThread = new (std::nothrow) QCollectInfoThread(this);
        if (!pThread)
            return;
        pThread->SetDeviceInfo(record);
        connect(pThread, SIGNAL(SigDeviceCollectProgress(QString, int)), this,
                SLOT(UpDateCollectProgress(QString, int)));
        connect(pThread, SIGNAL(SigDeviceCollectStatus(QString, QString)), this,
                SLOT(OnCollectStatus(QString, QString)));
        connect(pThread, SIGNAL(SigDeviceCollectFinish(QString, QString)), this,
                SLOT(OnCollectFinish(QString, QString)));
        pThread->start(QThread::InheritPriority);
        const QString strSerial = collect::DeviceText(record.stGigE.chSerialNumber);
        m_mapCollectThread[strSerial] = pThread;
    }
    m_pCollectBtn->setEnabled(false);
}

void QVirtualCamMainWidget::UpDateCollectProgress(QString strSerialNumber, int nPercent)
{
    if (!m_pDeviceTable)
        return;
    const int row = FindDeviceRow(strSerialNumber);
    if (QTableWidgetItem* pItem = m_pDeviceTable->item(row, 4))
        pItem->setText(QString());
    m_pDeviceTable->setProgressBarVisible(row, 4, true, 0, 100);
    m_pDeviceTable->updateProgressBarValue(row, 4, nPercent);
    if (nPercent == 100)
        m_pDeviceTable->setProgressBarVisible(row, 4, false, 0, 100);
}

void QVirtualCamMainWidget::OnCollectStatus(QString strSerialNumber, QString nInfo)
{
    if (!m_pDeviceTable)
        return;
    const int row = FindDeviceRow(strSerialNumber);
    m_pDeviceTable->setProgressBarVisible(row, 4, false, 0, 100);
    if (QTableWidgetItem* pItem = m_pDeviceTable->item(row, 4)) {
        pItem->setText(nInfo);
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
    m_pDeviceTable->setProgressBarVisible(row, 4, false, 0, 100);
    QTableWidgetItem* pItem = m_pDeviceTable->item(row, 4);
    if (!pItem)
        return;
    pItem->setText(tr("Collect Finished"));
    _XQ_CODEREADER_DEVICE_INFO_ record{};
    FindDeviceInfo(strSerialNumber, record);
    const QString strModel = modelNameOf(record);
    if (m_pVirtualComboBox->findText(strModel, Qt::MatchExactly | Qt::MatchCaseSensitive) < 0)
        m_pVirtualComboBox->addItem(strModel);
    RemoveCollectThread(strSerialNumber);
}

void QVirtualCamMainWidget::RemoveCollectThread(QString serial)
{
    const auto it = m_mapCollectThread.find(serial);
    if (it != m_mapCollectThread.end()) {
        QCollectInfoThread* pThread = it.value();
        pThread->requestStop();
        pThread->ReleaseDevices();
        delete pThread;  // waits until the job's run() has returned
        m_mapCollectThread.erase(it);
    }
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
    for (const QString& strFolder : collect::DeleteCollectedFilesOf(GetVirtualCameraRoot(), modelNameOf(record)))
        qInfo().noquote() << "removed the folder of an ended job:" << strFolder;
}

bool QVirtualCamMainWidget::DeleteFileOrFolder(QString path)
{
    return collect::DeleteFileOrFolderAt(path);
}

void QVirtualCamMainWidget::StopAllCollect()
{
    if (m_mapCollectThread.isEmpty())
        return;
    // All jobs are asked at once and share one bounded wait. Files are
    // removed only after a job has ended, so none is cut from under a job.
    for (QCollectInfoThread* pThread : qAsConst(m_mapCollectThread))
        pThread->requestStop();
    for (QCollectInfoThread* pThread : qAsConst(m_mapCollectThread))
        pThread->ReleaseDevices();
    const QDeadlineTimer deadline(kStopWaitMs);
    for (auto it = m_mapCollectThread.begin(); it != m_mapCollectThread.end(); ++it) {
        QCollectInfoThread* const pThread = it.value();
        if (pThread->wait(deadline)) {
            delete pThread;
            DeleteCollectedFiles(it.key());
        } else {
            // Deleting it would wait for it; it ends with the process.
            qInfo().noquote() << "collection job still running at quit:" << it.key();
            pThread->setParent(nullptr);
        }
        it.value() = nullptr;
    }
    m_mapCollectThread = QMap<QString, QCollectInfoThread*>();
}

void QVirtualCamMainWidget::closeEvent(QCloseEvent* event)
{
    if (m_mapCollectThread.isEmpty())
        return;
    const int nAnswer = CustomMessageBox::ask(this, tr("Camera in collecting. Are you sure you want to quit?"),
                                              tr("Prompt"), 3, QString(), false);
    if (nAnswer == 1) {
        close();
        event->accept();
    } else {
        event->ignore();
    }
}
