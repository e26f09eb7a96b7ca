// Live check whether a GigE Vision device could be opened now.
#pragma once

#include <cstdint>

namespace xq {

// Asks the device for its control channel privilege without taking it.
// False for a device that does not answer, refuses the read, or is held in a
// way that excludes accessMode (XQ_ACCESS_*).
bool isDeviceAccessible(std::uint32_t deviceIp, unsigned int accessMode);

} // namespace xq
