#pragma once
// Which discovered devices the tool lists, and how their fields read: the
// one listing rule of the window's device table and of quorvex-cli.

#include "XqCodeReaderCtrl.h"

#include <QString>
#include <QVector>

namespace collect {

// A fixed-size text field of a device record: at most 64 bytes, UTF-8.
QString deviceText(const unsigned char* field);

// The address text of nCurrentIp, whose first octet is the most significant
// byte: 0x0A403402 reads "10.64.52.2".
QString ipAddressText(unsigned int address);

// Virtual cameras of the store answer discovery too; their serial numbers
// contain "Vir" (case-sensitive).
bool isVirtualCameraSerial(const QString& serial);

// Code readers are listed; virtual cameras and devices whose model name
// lacks "ID" (case-sensitive) are not.
bool isListedCodeReader(const XQ_CODEREADER_DEVICE_INFO& record);

// Whether a collection could open the device now, in the exclusive access
// it collects with: false while another client holds it.
bool isFreeToCollect(const XQ_CODEREADER_DEVICE_INFO& record);

// Zeroes the list and enumerates the network's devices into it; the
// records belong to the SDK. Returns the SDK's code.
int enumerateDevices(XQ_CODEREADER_DEVICE_INFO_LIST& list);

// Copies of the list's records in order, up to its first empty entry.
QVector<XQ_CODEREADER_DEVICE_INFO> recordsOf(const XQ_CODEREADER_DEVICE_INFO_LIST& list);

enum class DeviceKind { CodeReader, VirtualCamera, OtherCamera };

struct DeviceEntry final {
    QString serial;
    QString model;
    QString address;
    QString version;
    QString userName;
    DeviceKind kind = DeviceKind::OtherCamera;
    bool accessible = false;
};

// The record's fields as the tool shows them. The listing rule decides the
// kind; accessibility is asked of the device itself (isFreeToCollect).
DeviceEntry describeDevice(const XQ_CODEREADER_DEVICE_INFO& record);

} // namespace collect
