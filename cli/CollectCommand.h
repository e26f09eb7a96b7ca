#pragma once
// The collect command: which devices, the jobs, their progress and the
// summary.

#include "XqCodeReaderCtrl.h"

#include <QStringList>
#include <QVector>

namespace cli {

class Console;
struct Request;

struct DeviceSelection final {
    QVector<XQ_CODEREADER_DEVICE_INFO> records; // listed code readers, each once
    QStringList unknownSerials;                 // asked for, but not listed
};

// With all, every code reader the window would list; otherwise those with
// the given serial numbers, in the order given. Virtual cameras and other
// cameras are never selected.
DeviceSelection selectDevices(const QVector<XQ_CODEREADER_DEVICE_INFO>& found, const QStringList& serials, bool all);

int runCollect(const Request& request, const Console& console);

} // namespace cli
