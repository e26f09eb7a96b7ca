#pragma once
// The collection jobs of one front end, one QCollectInfoThread per device,
// keyed by serial number: starting them, their progress and outcome, letting
// go of their threads, removing what failed jobs left, and stopping them
// all. A job writes into a folder of its own and replaces its model's
// collection folder only when it succeeds; a failed job leaves the previous
// collection as it was.
//
// The jobs' reports are passed on as they arrive, on the thread that owns
// this object, also those of a job that has already ended.

#include "XqCodeReaderCtrl.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>
#include <vector>

class QCollectInfoThread;

namespace collect {

enum class JobOutcome { Waiting, Running, Collected, Failed, Stopped };

struct JobState final {
    QString serial;
    QString model;
    QString folder;  // the collection folder the job fills
    int percent = 0; // last progress value, 0 to 100
    JobOutcome outcome = JobOutcome::Running;
    QString message; // the job's status text when it failed
};

// Whether readers of one model are collected together, or one after the
// other so that each gets its turn on the model's collection folder.
enum class ModelTurns { AllAtOnce, OneAfterAnother };

// Who lets go of a job's thread: the front end (releaseJob and
// removeLeftoversOf), or this object on the job's first status or finish
// report, or when it ends without one.
enum class JobRelease { ByFrontEnd, OnFirstReport };

struct CollectRules final {
    ModelTurns turns = ModelTurns::AllAtOnce;
    JobRelease release = JobRelease::ByFrontEnd;
    // How long stopping waits for all jobs together; a job still running
    // then is abandoned to end with the process, its folder left to the
    // next start's sweep.
    int stopWaitMs = 3000;
};

class CollectJobs final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY(CollectJobs)

public:
    explicit CollectJobs(CollectRules rules, QObject* parent = nullptr);
    // Stops whatever still runs, as stopAll does.
    ~CollectJobs() override;

    // Takes one job per record, in order, and starts those whose turn it
    // is; with no job running, the jobs of the previous run are forgotten.
    // False when a job could not be made: it fails and the records after it
    // are not taken.
    bool start(const QVector<XQ_CODEREADER_DEVICE_INFO>& records);

    // Asks the job of this serial number to stop, releases its devices and
    // waits until its run() has returned; then the next reader of its model
    // gets its turn. False if no job of that serial number is held.
    bool releaseJob(const QString& serial);

    // Removes the folders that ended jobs of the model left (a running
    // job's, of this process or another, stays; the collection folder is
    // never touched). Logs and returns the folders removed.
    QStringList removeLeftoversOf(const QString& model) const;

    // Stops every job: waiting ones never start, running ones are asked to
    // stop, their devices released, and waited for together at most
    // CollectRules::stopWaitMs. Their outcome becomes Stopped.
    void stopAll();

    // No job is held: none runs or waits for the front end to let it go.
    bool isEmpty() const;
    // Jobs still running after stopAll's wait: the process must end
    // without waiting for them.
    bool hasAbandonedJobs() const;

    const QVector<JobState>& jobs() const { return m_jobs; }

signals:
    void progressReported(QString serial, int percent);
    void statusReported(QString serial, QString message);
    void finishReported(QString serial, QString message);
    // A job's state in jobs() changed.
    void jobChanged(int index);
    // No job is held any more.
    void allEnded();

private:
    struct JobRun final {
        XQ_CODEREADER_DEVICE_INFO record{};
        std::unique_ptr<QCollectInfoThread> thread;
    };

    bool startJob(int index);
    void takeTurns();
    bool modelBusy(const QString& model) const;
    // The job of this serial number that has not reported its outcome yet,
    // or -1.
    int runningJobOf(const QString& serial) const;
    // The last job of this serial number whose thread is held, or -1.
    int heldJobOf(const QString& serial) const;
    void releaseThreadOf(int index);
    // After a job's outcome is known: lets go of it if this object does so.
    void settle(int index);
    void onProgress(const QString& serial, int percent);
    void onStatus(const QString& serial, const QString& message);
    void onFinish(const QString& serial, const QString& message);
    void onEndedSilently(const QString& serial);

    const CollectRules m_rules;
    QVector<JobState> m_jobs;
    std::vector<JobRun> m_runs; // by job index
    std::vector<std::unique_ptr<QCollectInfoThread>> m_abandoned;
};

} // namespace collect
