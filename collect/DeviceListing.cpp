#include "DeviceListing.h"

#include "XqFileNames.h"

#include "XQInterface.h"

#include <algorithm>
#include <cstring>

namespace collect {

QString deviceText(const unsigned char* field)
{
    return XQInterface::uchar2QString(field, 64, "UTF-8");
}

QString ipAddressText(unsigned int address)
{
    return QString("%1.%2.%3.%4")
        .arg((address >> 24) & 0xFF)
        .arg((address >> 16) & 0xFF)
        .arg((address >> 8) & 0xFF)
        .arg(address & 0xFF);
}

bool isVirtualCameraSerial(const QString& serial)
{
    return serial.contains(QLatin1String(xq::names::kVirtualCameraPrefix));
}

bool isListedCodeReader(const XQ_CODEREADER_DEVICE_INFO& record)
{
    return !isVirtualCameraSerial(deviceText(record.stGigE.chSerialNumber))
        && deviceText(record.stGigE.chModelName).contains(QLatin1String("ID"));
}

bool isFreeToCollect(const XQ_CODEREADER_DEVICE_INFO& record)
{
    return XQ_CODEREADER_IsDeviceAccessible(&record, XQ_ACCESS_EXCLUSIVE);
}

int enumerateDevices(XQ_CODEREADER_DEVICE_INFO_LIST& list)
{
    std::memset(&list, 0, sizeof list);
    return XQ_CODEREADER_EnumDevices(&list, XQ_TLAYER_GIGE);
}

QVector<XQ_CODEREADER_DEVICE_INFO> recordsOf(const XQ_CODEREADER_DEVICE_INFO_LIST& list)
{
    QVector<XQ_CODEREADER_DEVICE_INFO> records;
    const unsigned int count = std::min<unsigned int>(list.nDeviceNum, XQ_MAX_DEVICE_NUM);
    for (unsigned int i = 0; i < count && list.pDeviceInfo[i] != nullptr; ++i)
        records.append(*list.pDeviceInfo[i]);
    return records;
}

DeviceEntry describeDevice(const XQ_CODEREADER_DEVICE_INFO& record)
{
    DeviceEntry entry;
    entry.serial = deviceText(record.stGigE.chSerialNumber);
    entry.model = deviceText(record.stGigE.chModelName);
    entry.address = ipAddressText(record.stGigE.nCurrentIp);
    entry.version = deviceText(record.stGigE.chDeviceVersion);
    entry.userName = deviceText(record.stGigE.chUserDefinedName);
    if (isListedCodeReader(record))
        entry.kind = DeviceKind::CodeReader;
    else if (isVirtualCameraSerial(entry.serial))
        entry.kind = DeviceKind::VirtualCamera;
    entry.accessible = isFreeToCollect(record);
    return entry;
}

} // namespace collect
