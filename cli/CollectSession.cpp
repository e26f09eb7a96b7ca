#include "CollectSession.h"

#include "CollectPaths.h"
#include "CollectedFiles.h"
#include "DeviceListing.h"
#include "QCollectInfoThread.h"

#include <QDeadlineTimer>
#include <QDir>

#include <algorithm>
#include <utility>

namespace cli {

CollectSession::CollectSession(QString collectionRoot, QObject* parent)
    : QObject(parent)
    , m_strCollectionRoot(std::move(collectionRoot))
{
}

CollectSession::~CollectSession()
{
    // Whoever listened may already be gone.
    blockSignals(true);
    StopAll();
    // Deleting a job that is still running would wait for it: it ends with
    // the process instead.
    for (std::unique_ptr<QCollectInfoThread>& thread : m_vecAbandoned)
        thread.release();
}

void CollectSession::Start(const QVector<XQ_CODEREADER_DEVICE_INFO>& records)
{
    for (const XQ_CODEREADER_DEVICE_INFO& record : records) {
        JobState job;
        job.serial = collect::DeviceText(record.stGigE.chSerialNumber);
        job.model = collect::DeviceText(record.stGigE.chModelName);
        job.folder = QDir::cleanPath(collect::CollectionFolderOf(m_strCollectionRoot, job.model));
        job.outcome = JobOutcome::Waiting;
        m_vecJobs.append(job);
        m_vecRecords.append(record);
    }
    StartWaitingJobs();
    if (!IsRunning())
        emit AllEnded();
}

bool CollectSession::IsRunning() const
{
    return !m_mapThreads.empty();
}

void CollectSession::StartWaitingJobs()
{
    for (int i = 0; i < m_vecJobs.size(); ++i) {
        if (m_vecJobs[i].outcome != JobOutcome::Waiting)
            continue;
        const bool modelBusy = std::any_of(m_vecJobs.cbegin(), m_vecJobs.cend(), [&](const JobState& other) {
            return other.outcome == JobOutcome::Running && other.model == m_vecJobs[i].model;
        });
        if (!modelBusy)
            StartJob(i);
    }
}

void CollectSession::StartJob(int nIndex)
{
    JobState& job = m_vecJobs[nIndex];
    job.outcome = JobOutcome::Running;
    auto thread = std::make_unique<QCollectInfoThread>();
    thread->SetDeviceInfo(m_vecRecords[nIndex]);
    // Queued: the jobs report from their own threads.
    connect(thread.get(), &QCollectInfoThread::SigDeviceCollectProgress, this, &CollectSession::OnProgress,
            Qt::QueuedConnection);
    connect(thread.get(), &QCollectInfoThread::SigDeviceCollectStatus, this, &CollectSession::OnStatus,
            Qt::QueuedConnection);
    connect(thread.get(), &QCollectInfoThread::SigDeviceCollectFinish, this, &CollectSession::OnFinish,
            Qt::QueuedConnection);
    // Some failures end a job without a word (no device listed by the
    // camera SDK); this arrives after anything the job reported.
    connect(thread.get(), &QThread::finished, this, [this, serial = job.serial] {
        const int index = RunningJobOf(serial);
        if (index >= 0)
            EndJob(index, JobOutcome::Failed, QStringLiteral("the job ended without a result"));
    }, Qt::QueuedConnection);
    thread->start(QThread::InheritPriority);
    m_mapThreads[job.serial] = std::move(thread);
    emit JobChanged(nIndex);
}

void CollectSession::StopAll(int nWaitMs)
{
    for (int i = 0; i < m_vecJobs.size(); ++i) {
        if (m_vecJobs[i].outcome == JobOutcome::Waiting) {
            m_vecJobs[i].outcome = JobOutcome::Stopped; // wrote nothing
            m_vecJobs[i].message = QStringLiteral("stopped");
            emit JobChanged(i);
        }
    }
    // Every job is asked at once, so that none starts another device call
    // that a release would wait for; then they share one bounded wait.
    for (const auto& entry : m_mapThreads)
        entry.second->requestStop();
    for (const auto& entry : m_mapThreads)
        entry.second->ReleaseDevices();
    const QDeadlineTimer deadline(nWaitMs);
    for (int i = 0; i < m_vecJobs.size(); ++i) {
        if (m_vecJobs[i].outcome != JobOutcome::Running)
            continue;
        const auto it = m_mapThreads.find(m_vecJobs[i].serial);
        if (it != m_mapThreads.end() && !it->second->wait(deadline)) {
            // Its folder stays locked until the process ends; the next
            // start sweeps it.
            m_vecAbandoned.push_back(std::move(it->second));
            m_mapThreads.erase(it);
        }
        EndJob(i, JobOutcome::Stopped, QStringLiteral("stopped"));
    }
}

bool CollectSession::HasAbandonedJobs() const
{
    return !m_vecAbandoned.empty();
}

int CollectSession::RunningJobOf(const QString& strSerial) const
{
    for (int i = 0; i < m_vecJobs.size(); ++i)
        if (m_vecJobs[i].serial == strSerial && m_vecJobs[i].outcome == JobOutcome::Running)
            return i;
    return -1;
}

void CollectSession::OnProgress(const QString& strSerial, int nPercent)
{
    const int index = RunningJobOf(strSerial);
    if (index < 0)
        return;
    m_vecJobs[index].percent = qBound(0, nPercent, 100);
    emit JobChanged(index);
}

void CollectSession::OnStatus(const QString& strSerial, const QString& strInfo)
{
    const int index = RunningJobOf(strSerial);
    if (index >= 0)
        EndJob(index, JobOutcome::Failed, strInfo);
}

void CollectSession::OnFinish(const QString& strSerial, const QString& strInfo)
{
    const int index = RunningJobOf(strSerial);
    if (index < 0)
        return;
    m_vecJobs[index].percent = 100;
    EndJob(index, JobOutcome::Collected, strInfo);
}

void CollectSession::EndJob(int nIndex, JobOutcome outcome, const QString& strMessage)
{
    JobState& job = m_vecJobs[nIndex];
    job.outcome = outcome;
    job.message = strMessage;
    const auto it = m_mapThreads.find(job.serial);
    if (it != m_mapThreads.end()) {
        std::unique_ptr<QCollectInfoThread> thread = std::move(it->second);
        m_mapThreads.erase(it);
        thread->ReleaseDevices();
        thread.reset(); // waits until the job's run() has returned
    }
    if (outcome != JobOutcome::Collected)
        RemoveFilesOf(job);
    emit JobChanged(nIndex);
    StartWaitingJobs();
    if (!IsRunning())
        emit AllEnded();
}

void CollectSession::RemoveFilesOf(const JobState& job) const
{
    // Only staging folders of ended jobs; the collection folder keeps the
    // last good collection.
    collect::DeleteCollectedFilesOf(m_strCollectionRoot, job.model);
}

} // namespace cli
