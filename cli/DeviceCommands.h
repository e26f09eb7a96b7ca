#pragma once
// Finding devices: the records the code-reader SDK enumerates, described the
// way the window's device table shows them.

#include "XqCodeReaderCtrl.h"

#include <QString>
#include <QVector>

class QJsonObject;

namespace cli {

class Console;
struct Request;

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

// Copies of the records of one enumeration (about a second). sdkError is
// the SDK's code when it failed, 0 otherwise.
QVector<XQ_CODEREADER_DEVICE_INFO> EnumerateDevices(int& sdkError);

// The window's listing rule decides the kind; accessibility is asked of the
// device itself, in the access mode a collection opens it with.
DeviceEntry DescribeDevice(const XQ_CODEREADER_DEVICE_INFO& record);

QString KindName(DeviceKind kind);
QJsonObject DeviceJson(const DeviceEntry& entry);

// Aligned columns, a header first; kind only when asked.
QString DeviceTable(const QVector<DeviceEntry>& entries, bool withKind);

int RunDevices(const Request& request, const Console& console);

} // namespace cli
