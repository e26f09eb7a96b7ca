// Reads a GigE device's description location and the description itself
// over our own GVCP client, bounded in size and time and cancellable, and
// checks it (DescriptionCheck.h) before Aravis is allowed to open the device.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace xq {

// The whole check, both URL registers and the download, ends within this.
constexpr std::chrono::seconds kDescriptionTimeLimit{10};

// XQ_OK if the device's description may be handed to Aravis. Otherwise:
// XQ_ERR_DESCRIPTION_REFUSED (URL, size, zip or time limit; reason says
// which), XQ_ERR_CANCELLED once stop() returns true, XQ_ERR_NOT_FOUND if
// the device does not answer, XQ_ERR_ACCESS_DENIED if another client holds
// it exclusively, XQ_ERR_DEVICE_IO if it answers with other errors.
int checkDeviceDescription(std::uint32_t deviceIp, const std::function<bool()>& stop, std::string& reason);

} // namespace xq
