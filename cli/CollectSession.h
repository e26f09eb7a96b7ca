#pragma once
// Collection jobs run side by side, one QCollectInfoThread per device, with
// the window's bookkeeping: a job is released and deleted when its finish
// or its first status arrives, and a failed job's staging files and
// collection folder are removed. Devices of one model share one collection
// folder and one set of staging names, so their jobs run one after the
// other; jobs of different models run at once.

#include "XqCodeReaderCtrl.h"

#include <QObject>
#include <QString>
#include <QVector>

#include <map>
#include <memory>

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
    CollectSession(QString applicationDir, QString collectionRoot, QObject* parent = nullptr);
    // Stops whatever still runs, as closing the window does.
    ~CollectSession() override;

    // Takes one job per record; records must have distinct serial numbers.
    void Start(const QVector<XQ_CODEREADER_DEVICE_INFO>& records);
    // Releases every running job's devices, waits for it and removes what
    // it wrote. Its outcome, and that of every waiting job, becomes Stopped.
    void StopAll();

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

    QString m_strApplicationDir;
    QString m_strCollectionRoot;
    QVector<JobState> m_vecJobs;
    QVector<XQ_CODEREADER_DEVICE_INFO> m_vecRecords; // by job index
    std::map<QString, std::unique_ptr<QCollectInfoThread>> m_mapThreads;
};

} // namespace cli
