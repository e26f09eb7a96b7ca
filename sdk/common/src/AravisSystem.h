// Process-wide state around Aravis's global device list.
#pragma once

#include <mutex>

namespace xq {

// Held around Aravis calls that touch its global state: discovery, opening a
// device and parsing GenICam XML (the parser is not reentrant).
std::mutex& aravisSystemMutex();

} // namespace xq
