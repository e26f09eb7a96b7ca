// Process-wide state around Aravis's global device list.
#pragma once

#include <mutex>

namespace xq {

// Held around Aravis calls that use its global interface list (discovery,
// opening by name), which other threads of this library may run at once.
std::mutex& aravisSystemMutex();

} // namespace xq
