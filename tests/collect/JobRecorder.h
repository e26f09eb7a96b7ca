#pragma once
// Runs one collection job and records what it reports, in order, from the
// job's own thread.

#include "QCollectInfoThread.h"

#include <QMutex>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

class JobRecorder final
{
public:
    explicit JobRecorder(const XQ_CODEREADER_DEVICE_INFO& record);
    ~JobRecorder();
    JobRecorder(const JobRecorder&) = delete;
    JobRecorder& operator=(const JobRecorder&) = delete;

    void start();
    // True when the job ended within timeoutMs.
    bool wait(unsigned long timeoutMs);

    QVector<int> progress() const;
    QStringList statuses() const;
    QStringList finishes() const;
    // Reports whose serial number was not the job's.
    int foreignReports() const;
    QString serialNumber() const { return m_serial; }

private:
    void note(const QString& serial);

    std::unique_ptr<QCollectInfoThread> m_job;
    QString m_serial;
    mutable QMutex m_mutex;
    QVector<int> m_progress;
    QStringList m_statuses;
    QStringList m_finishes;
    int m_foreign = 0;
};
