#include "JobRecorder.h"

#include "CodeReaders.h"

#include <QMutexLocker>

JobRecorder::JobRecorder(const XQ_CODEREADER_DEVICE_INFO& record)
    : m_job(std::make_unique<QCollectInfoThread>())
    , m_serial(SerialOf(record))
{
    m_job->SetDeviceInfo(record);
    // Direct connections: recorded on the job's thread, in emission order.
    QObject::connect(m_job.get(), &QCollectInfoThread::SigDeviceCollectProgress, m_job.get(),
                     [this](const QString& serial, int percent) {
                         QMutexLocker lock(&m_mutex);
                         note(serial);
                         m_progress.append(percent);
                     }, Qt::DirectConnection);
    QObject::connect(m_job.get(), &QCollectInfoThread::SigDeviceCollectStatus, m_job.get(),
                     [this](const QString& serial, const QString& info) {
                         QMutexLocker lock(&m_mutex);
                         note(serial);
                         m_statuses.append(info);
                     }, Qt::DirectConnection);
    QObject::connect(m_job.get(), &QCollectInfoThread::SigDeviceCollectFinish, m_job.get(),
                     [this](const QString& serial, const QString& info) {
                         QMutexLocker lock(&m_mutex);
                         note(serial);
                         m_finishes.append(info);
                     }, Qt::DirectConnection);
}

JobRecorder::~JobRecorder()
{
    // A job that hangs must not hang the test too: it has already failed, so
    // the thread is left to the end of the process.
    if (m_job->isRunning() && !m_job->wait(1000)) {
        QObject::disconnect(m_job.get(), nullptr, nullptr, nullptr);
        m_job.release();
    }
}

void JobRecorder::note(const QString& serial)
{
    if (serial != m_serial)
        ++m_foreign;
}

void JobRecorder::start()
{
    m_job->start();
}

bool JobRecorder::wait(unsigned long timeoutMs)
{
    return m_job->wait(timeoutMs);
}

QVector<int> JobRecorder::progress() const
{
    QMutexLocker lock(&m_mutex);
    return m_progress;
}

QStringList JobRecorder::statuses() const
{
    QMutexLocker lock(&m_mutex);
    return m_statuses;
}

QStringList JobRecorder::finishes() const
{
    QMutexLocker lock(&m_mutex);
    return m_finishes;
}

int JobRecorder::foreignReports() const
{
    QMutexLocker lock(&m_mutex);
    return m_foreign;
}
