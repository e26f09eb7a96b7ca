#include "Accessibility.h"

#include "GvcpProbe.h"
#include "XQSdkDefs.h"

namespace xq {
namespace {

constexpr std::uint32_t kCcpRegister = 0x0A00;
constexpr std::uint32_t kCcpExclusive = 0x1;
constexpr std::uint32_t kCcpControl = 0x2;

} // namespace

bool isDeviceAccessible(std::uint32_t deviceIp, unsigned int accessMode)
{
    if (deviceIp == 0)
        return false;
    if (accessMode != XQ_ACCESS_EXCLUSIVE && accessMode != XQ_ACCESS_CONTROL && accessMode != XQ_ACCESS_MONITOR)
        return false;
    GvcpProbe probe(deviceIp);
    const auto privilege = probe.readRegister(kCcpRegister);
    if (!privilege)
        return false;
    if (accessMode == XQ_ACCESS_MONITOR)
        return (*privilege & kCcpExclusive) == 0;
    return (*privilege & (kCcpExclusive | kCcpControl)) == 0;
}

} // namespace xq
