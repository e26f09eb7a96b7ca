#pragma once
// Collection jobs run side by side, one QCollectInfoThread per device, with
// the window's bookkeeping: a job is released and deleted when its finish
// or its first status arrives. A job writes into a folder of its own and
// replaces its model's collection folder only when it succeeds; a failed
// job leaves the previous collection as it was. Readers of one model run one
// after the other, so each of them gets its turn on the device model's
// folder in order; jobs of different models run at once.

#include "XqCodeReaderCtrl.h"

#include <QObject>
#include <QString>
#include <QVector>

#include <map>
#include <memory>
#include <vector>

class QCollectInfoThread;

namespace cli {

enum class JobOutcome { Waiting, Running, Collected, Failed, Stopped };

struct JobState final {
    QString serial;
    QString model;
    QString folder;  // the collection folder the job fills
    int percent = 0; // last progress value, 0 to 100
    JobOutcome outcome = JobOutcome::Running;
    QString message; // the job's status text when it failed
};

class CollectSession final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY(CollectSession)

public:
    explicit CollectSession(QString collectionRoot, QObject* parent = nullptr);
    // Stops whatever still runs, as closing the window does.
    ~CollectSession() override;

    // Takes one job per record; records must have distinct serial numbers.
    void Start(const QVector<XQ_CODEREADER_DEVICE_INFO>& records);
    // Stops every running job, releases its devices and waits for all of
    // them together at most nWaitMs. Its outcome, and that of every waiting
    // job, becomes Stopped. A job that ends removes its own folder; one that
    // does not end in time is abandoned (HasAbandonedJobs) and its folder is
    // swept on the next start.
    void StopAll(int nWaitMs = kStopWaitMs);
    // Jobs that were still running after StopAll's wait: the process must
    // end without waiting for them.
    bool HasAbandonedJobs() const;

    // With the rest of a stop, well within a second.
    static constexpr int kStopWaitMs = 500;

    const QVector<JobState>& Jobs() const { return m_vecJobs; }
    bool IsRunning() const;

signals:
    void JobChanged(int nIndex);
    void AllEnded();

private:
    void OnProgress(const QString& strSerial, int nPercent);
    void OnStatus(const QString& strSerial, const QString& strInfo);
    void OnFinish(const QString& strSerial, const QString& strInfo);
    // Index of a job that is still running; -1 for one that has ended.
    int RunningJobOf(const QString& strSerial) const;
    void StartJob(int nIndex);
    // Starts the first waiting job of a model that no running job has.
    void StartWaitingJobs();
    void EndJob(int nIndex, JobOutcome outcome, const QString& strMessage);
    void RemoveFilesOf(const JobState& job) const;

    QString m_strCollectionRoot;
    QVector<JobState> m_vecJobs;
    QVector<XQ_CODEREADER_DEVICE_INFO> m_vecRecords; // by job index
    std::map<QString, std::unique_ptr<QCollectInfoThread>> m_mapThreads;
    std::vector<std::unique_ptr<QCollectInfoThread>> m_vecAbandoned;
};

} // namespace cli
