#include "CollectJobs.h"

#include "AppFolders.h"
#include "CollectPaths.h"
#include "CollectedFiles.h"
#include "DeviceListing.h"
#include "QCollectInfoThread.h"

#include <QDebug>
#include <QDeadlineTimer>
#include <QDir>

#include <algorithm>
#include <new>
#include <utility>

namespace collect {

namespace {

const QString kStopped = QStringLiteral("stopped");
const QString kEndedSilently = QStringLiteral("the job ended without a result");
const QString kNoMemory = QStringLiteral("no memory for the job");

} // namespace

CollectJobs::CollectJobs(CollectRules rules, QObject* parent)
    : QObject(parent)
    , m_rules(rules)
{
}

CollectJobs::~CollectJobs()
{
    // Whoever listened may already be gone.
    blockSignals(true);
    stopAll();
    // Deleting a job that is still running would wait for it: it ends with
    // the process instead.
    for (std::unique_ptr<QCollectInfoThread>& thread : m_abandoned)
        thread.release();
}

bool CollectJobs::start(const QVector<XQ_CODEREADER_DEVICE_INFO>& records)
{
    if (isEmpty()) {
        m_jobs.clear();
        m_runs.clear();
    }
    const QString root = GetVirtualCameraRoot();
    for (const XQ_CODEREADER_DEVICE_INFO& record : records) {
        JobState job;
        job.serial = deviceText(record.stGigE.chSerialNumber);
        job.model = deviceText(record.stGigE.chModelName);
        job.folder = QDir::cleanPath(collectionFolderOf(root, job.model));
        job.outcome = JobOutcome::Waiting;
        m_jobs.append(job);
        m_runs.push_back(JobRun{record, nullptr});
        const int index = m_jobs.size() - 1;
        if (!modelBusy(job.model) && !startJob(index))
            return false;
    }
    takeTurns();
    return true;
}

bool CollectJobs::modelBusy(const QString& model) const
{
    if (m_rules.turns == ModelTurns::AllAtOnce)
        return false;
    for (std::size_t i = 0; i < m_runs.size(); ++i)
        if (m_runs[i].thread && m_jobs[static_cast<int>(i)].model == model)
            return true;
    return false;
}

bool CollectJobs::startJob(int index)
{
    JobState& job = m_jobs[index];
    std::unique_ptr<QCollectInfoThread> thread(new (std::nothrow) QCollectInfoThread());
    if (!thread) {
        job.outcome = JobOutcome::Failed;
        job.message = kNoMemory;
        emit jobChanged(index);
        return false;
    }
    job.outcome = JobOutcome::Running;
    thread->SetDeviceInfo(m_runs[index].record);
    // Queued: the jobs report from their own threads.
    connect(thread.get(), &QCollectInfoThread::SigDeviceCollectProgress, this, &CollectJobs::onProgress,
            Qt::QueuedConnection);
    connect(thread.get(), &QCollectInfoThread::SigDeviceCollectStatus, this, &CollectJobs::onStatus,
            Qt::QueuedConnection);
    connect(thread.get(), &QCollectInfoThread::SigDeviceCollectFinish, this, &CollectJobs::onFinish,
            Qt::QueuedConnection);
    // Some failures end a job without a word (no device listed by the camera
    // SDK); this arrives after anything the job reported.
    if (m_rules.release == JobRelease::OnFirstReport)
        connect(thread.get(), &QThread::finished, this, [this, serial = job.serial] { onEndedSilently(serial); },
                Qt::QueuedConnection);
    thread->start(QThread::InheritPriority);
    m_runs[index].thread = std::move(thread);
    emit jobChanged(index);
    return true;
}

void CollectJobs::takeTurns()
{
    for (int i = 0; i < m_jobs.size(); ++i)
        if (m_jobs[i].outcome == JobOutcome::Waiting && !modelBusy(m_jobs[i].model))
            startJob(i);
    if (isEmpty())
        emit allEnded();
}

bool CollectJobs::releaseJob(const QString& serial)
{
    const int index = heldJobOf(serial);
    if (index < 0)
        return false;
    releaseThreadOf(index);
    takeTurns();
    return true;
}

void CollectJobs::releaseThreadOf(int index)
{
    std::unique_ptr<QCollectInfoThread> thread = std::move(m_runs[index].thread);
    if (!thread)
        return;
    thread->requestStop();
    thread->ReleaseDevices();
    thread.reset(); // waits until the job's run() has returned
}

QStringList CollectJobs::removeLeftoversOf(const QString& model) const
{
    const QStringList removed = deleteCollectedFilesOf(GetVirtualCameraRoot(), model);
    for (const QString& folder : removed)
        qInfo().noquote() << "removed the folder of an ended job:" << folder;
    return removed;
}

void CollectJobs::stopAll()
{
    for (int i = 0; i < m_jobs.size(); ++i) {
        if (m_jobs[i].outcome == JobOutcome::Waiting) {
            m_jobs[i].outcome = JobOutcome::Stopped; // wrote nothing
            m_jobs[i].message = kStopped;
            emit jobChanged(i);
        }
    }
    // Every job is asked at once, so that none starts another device call
    // that a release would wait for; then they share one bounded wait.
    for (const JobRun& run : m_runs)
        if (run.thread)
            run.thread->requestStop();
    for (const JobRun& run : m_runs)
        if (run.thread)
            run.thread->ReleaseDevices();
    const QDeadlineTimer deadline(m_rules.stopWaitMs);
    bool stoppedAny = false;
    for (int i = 0; i < m_jobs.size(); ++i) {
        std::unique_ptr<QCollectInfoThread>& thread = m_runs[i].thread;
        if (!thread)
            continue;
        if (thread->wait(deadline)) {
            thread.reset();
        } else {
            // Deleting it would wait for it; its folder stays locked until
            // the process ends, and the next start sweeps it.
            qInfo().noquote() << "collection job still running at quit:" << m_jobs[i].serial;
            m_abandoned.push_back(std::move(thread));
        }
        JobState& job = m_jobs[i];
        if (job.outcome == JobOutcome::Running) {
            job.outcome = JobOutcome::Stopped;
            job.message = kStopped;
        }
        if (job.outcome != JobOutcome::Collected)
            removeLeftoversOf(job.model);
        emit jobChanged(i);
        stoppedAny = true;
    }
    if (stoppedAny)
        emit allEnded();
}

bool CollectJobs::isEmpty() const
{
    return std::none_of(m_runs.cbegin(), m_runs.cend(), [](const JobRun& run) { return run.thread != nullptr; });
}

bool CollectJobs::hasAbandonedJobs() const
{
    return !m_abandoned.empty();
}

int CollectJobs::runningJobOf(const QString& serial) const
{
    for (int i = 0; i < m_jobs.size(); ++i)
        if (m_jobs[i].serial == serial && m_jobs[i].outcome == JobOutcome::Running)
            return i;
    return -1;
}

int CollectJobs::heldJobOf(const QString& serial) const
{
    for (int i = m_jobs.size() - 1; i >= 0; --i)
        if (m_runs[i].thread && m_jobs[i].serial == serial)
            return i;
    return -1;
}

void CollectJobs::settle(int index)
{
    if (m_rules.release == JobRelease::OnFirstReport) {
        releaseThreadOf(index);
        if (m_jobs[index].outcome != JobOutcome::Collected)
            removeLeftoversOf(m_jobs[index].model);
    }
    emit jobChanged(index);
    takeTurns();
}

void CollectJobs::onProgress(const QString& serial, int percent)
{
    const int index = runningJobOf(serial);
    if (index >= 0)
        m_jobs[index].percent = std::clamp(percent, 0, 100);
    emit progressReported(serial, percent);
    if (index >= 0)
        emit jobChanged(index);
}

void CollectJobs::onStatus(const QString& serial, const QString& message)
{
    const int index = runningJobOf(serial);
    if (index >= 0) {
        m_jobs[index].outcome = JobOutcome::Failed;
        m_jobs[index].message = message;
    }
    emit statusReported(serial, message);
    if (index >= 0)
        settle(index);
}

void CollectJobs::onFinish(const QString& serial, const QString& message)
{
    const int index = runningJobOf(serial);
    if (index >= 0) {
        m_jobs[index].percent = 100;
        m_jobs[index].outcome = JobOutcome::Collected;
        m_jobs[index].message = message;
    }
    emit finishReported(serial, message);
    if (index >= 0)
        settle(index);
}

void CollectJobs::onEndedSilently(const QString& serial)
{
    const int index = runningJobOf(serial);
    if (index < 0)
        return;
    m_jobs[index].outcome = JobOutcome::Failed;
    m_jobs[index].message = kEndedSilently;
    settle(index);
}

} // namespace collect
