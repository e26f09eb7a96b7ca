#include "DeviceListing.h"

#include "XQInterface.h"

namespace collect {

QString DeviceText(const unsigned char* field)
{
    return XQInterface::uchar2QString(field, 64, "UTF-8");
}

QString IpAddressText(unsigned int address)
{
    return QString("%1.%2.%3.%4")
        .arg((address >> 24) & 0xFF)
        .arg((address >> 16) & 0xFF)
        .arg((address >> 8) & 0xFF)
        .arg(address & 0xFF);
}

bool IsListedCodeReader(const XQ_CODEREADER_DEVICE_INFO& record)
{
    return !DeviceText(record.stGigE.chSerialNumber).contains(QLatin1String("Vir"))
        && DeviceText(record.stGigE.chModelName).contains(QLatin1String("ID"));
}

} // namespace collect
