#include "DeviceProcess.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QStandardPaths>
#include <QThread>

#include <csignal>
#include <cstring>
#include <memory>
#include <sys/types.h>

DeviceProcess::~DeviceProcess()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.terminate();
        if (!m_process.waitForFinished(5000)) {
            m_process.kill();
            m_process.waitForFinished(5000);
        }
    }
}

bool DeviceProcess::start(const QString& program, const QStringList& arguments, QString* error)
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.start(program, arguments);
    if (!m_process.waitForStarted(10000)) {
        *error = QStringLiteral("cannot start %1: %2").arg(program, m_process.errorString());
        return false;
    }
    return true;
}

bool DeviceProcess::startSimulator(int demoCount, QString* error)
{
    return startSimulator({QStringLiteral("--demo"), QString::number(demoCount)}, error);
}

bool DeviceProcess::startSimulator(const QStringList& arguments, QString* error)
{
    const QString simulator = qEnvironmentVariable("QUORVEX_SIMULATOR");
    if (simulator.isEmpty() || !QFileInfo(simulator).isExecutable()) {
        *error = QStringLiteral("the simulator quorvex-simulator is needed: QUORVEX_SIMULATOR is unset or not "
                                "executable (\"%1\"); build the target quorvex-simulator")
                     .arg(simulator);
        return false;
    }
    return start(simulator, arguments, error);
}

bool DeviceProcess::startFakeCamera(QString* error)
{
    const QString fake = QStandardPaths::findExecutable(QStringLiteral("arv-fake-gv-camera-0.8"));
    if (fake.isEmpty()) {
        *error = QStringLiteral("arv-fake-gv-camera-0.8 (Debian package aravis-tools) is needed");
        return false;
    }
    return start(fake, {QStringLiteral("-i"), QStringLiteral("127.0.0.1")}, error);
}

void DeviceProcess::kill()
{
    const qint64 id = m_process.processId();
    if (id > 0)
        ::kill(static_cast<pid_t>(id), SIGKILL);
    m_process.waitForFinished(5000);
}

QVector<XQ_CODEREADER_DEVICE_INFO> DeviceProcess::startReaders(int count, QString* error)
{
    if (!startSimulator(count, error))
        return {};
    const QVector<XQ_CODEREADER_DEVICE_INFO> readers = WaitForCodeReaders(count, 30000);
    if (readers.size() >= count)
        return readers;
    *error = QStringLiteral("%1 of %2 readers found; the simulator said: %3").arg(readers.size()).arg(count).arg(output());
    return {};
}

QString DeviceProcess::output()
{
    m_process.waitForReadyRead(50);
    m_output += QString::fromLocal8Bit(m_process.readAll());
    return m_output;
}

QVector<XQ_CODEREADER_DEVICE_INFO> WaitForCodeReaders(int minimum, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    QVector<XQ_CODEREADER_DEVICE_INFO> records;
    do {
        auto list = std::make_unique<XQ_CODEREADER_DEVICE_INFO_LIST>();
        records.clear();
        if (XQ_CODEREADER_EnumDevices(list.get(), XQ_TLAYER_GIGE) == XQ_OK) {
            for (unsigned int i = 0; i < list->nDeviceNum && i < XQ_MAX_DEVICE_NUM; ++i) {
                if (list->pDeviceInfo[i] != nullptr)
                    records.append(*list->pDeviceInfo[i]);
            }
        }
        if (records.size() >= minimum)
            break;
        QThread::msleep(200);
    } while (clock.elapsed() < timeoutMs);
    return records;
}

namespace {
QString TextOf(const unsigned char* field, std::size_t size)
{
    const auto* text = reinterpret_cast<const char*>(field);
    return QString::fromUtf8(text, static_cast<int>(strnlen(text, size)));
}
} // namespace

QString ModelOf(const XQ_CODEREADER_DEVICE_INFO& record)
{
    return TextOf(record.stGigE.chModelName, sizeof record.stGigE.chModelName);
}

QString SerialOf(const XQ_CODEREADER_DEVICE_INFO& record)
{
    return TextOf(record.stGigE.chSerialNumber, sizeof record.stGigE.chSerialNumber);
}

QString AddressOf(const XQ_CODEREADER_DEVICE_INFO& record)
{
    const unsigned int ip = record.stGigE.nCurrentIp;
    return QStringLiteral("%1.%2.%3.%4").arg(ip >> 24).arg((ip >> 16) & 0xff).arg((ip >> 8) & 0xff).arg(ip & 0xff);
}
