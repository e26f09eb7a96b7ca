#include "CodeReaders.h"

#include <QElapsedTimer>
#include <QThread>

#include <cstring>
#include <memory>

QVector<XQ_CODEREADER_DEVICE_INFO> startReaders(DeviceProcess& simulator, int count, QString* error)
{
    std::string why;
    if (!xqtest::startSimulator(simulator, static_cast<unsigned>(count), why)) {
        *error = QString::fromStdString(why);
        return {};
    }
    const QVector<XQ_CODEREADER_DEVICE_INFO> readers = WaitForCodeReaders(count, 30000);
    if (readers.size() >= count)
        return readers;
    *error = QStringLiteral("%1 of %2 readers found; the simulator said: %3")
                 .arg(readers.size())
                 .arg(count)
                 .arg(OutputOf(simulator));
    return {};
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

QString OutputOf(const DeviceProcess& process)
{
    return QString::fromLocal8Bit(process.output().c_str());
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
