#pragma once
// Finding devices: the records the code-reader SDK enumerates, described the
// way the window's device table shows them.

#include "DeviceListing.h"
#include "XqCodeReaderCtrl.h"

#include <QString>
#include <QVector>

namespace cli {

class Console;
struct Request;

using collect::DeviceEntry;
using collect::DeviceKind;

// Copies of the records of one enumeration (about a second). sdkError is
// the SDK's code when it failed, 0 otherwise.
QVector<XQ_CODEREADER_DEVICE_INFO> enumerateDevices(int& sdkError);

// Aligned columns, a header first; kind only when asked.
QString deviceTable(const QVector<DeviceEntry>& entries, bool withKind);

int runDevices(const Request& request, const Console& console);

} // namespace cli
