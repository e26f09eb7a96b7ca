#include "bootstrap_registers.h"

#include "control_privilege.h"

#include <algorithm>
#include <cstring>

namespace quorvex::sim {

namespace {

struct WritableRange final {
    std::uint32_t address;
    std::uint32_t size;
};

// Registers a client may write; everything else is read-only or unassigned.
constexpr std::array<WritableRange, 14> kWritable{{
    {gvcp::reg::kCurrentIpConfig, 4},
    {gvcp::reg::kUserDefinedName, 16},
    {gvcp::reg::kPersistentIp, 4},
    {gvcp::reg::kPersistentSubnetMask, 4},
    {gvcp::reg::kPersistentGateway, 4},
    {gvcp::reg::kHeartbeatTimeout, 4},
    {gvcp::reg::kTimestampControl, 4},
    {gvcp::reg::kGvcpConfiguration, 4},
    {gvcp::reg::kControlChannelPrivilege, 4},
    {gvcp::reg::kStreamPort, 4},
    {gvcp::reg::kStreamPacketSize, 4},
    {gvcp::reg::kStreamPacketDelay, 4},
    {gvcp::reg::kStreamDestination, 4},
    {0x0D24, 4}, // stream channel configuration
}};

bool isAssigned(std::uint32_t address)
{
    using namespace gvcp::reg;
    if (address < kDiscoveryDataSize)
        return true;
    if (address >= kFirstUrl && address < kSecondUrl + kUrlSize)
        return true;
    switch (address & ~3u) {
    case kNetworkInterfaceCount: case kPersistentIp: case kPersistentSubnetMask: case kPersistentGateway:
    case kLinkSpeed: case kMessageChannelCount: case kStreamChannelCount: case kStreamChannelCapability:
    case kGvcpCapability: case kHeartbeatTimeout: case kTickFrequencyHigh: case kTickFrequencyLow:
    case kTimestampControl: case kTimestampLatchedHigh: case kTimestampLatchedLow: case kGvcpConfiguration:
    case kControlChannelPrivilege: case kStreamPort: case kStreamPacketSize: case kStreamPacketDelay:
    case kStreamDestination: case kStreamSourcePort: case 0x0D20: case 0x0D24:
        return true;
    default:
        return false;
    }
}

} // namespace

BootstrapRegisters::BootstrapRegisters(const DeviceIdentity& identity, std::uint32_t ipAddress, const std::string& xmlUrl)
{
    using namespace gvcp::reg;
    setValue(kVersion, 0x00020000);
    setValue(kDeviceMode, 0x80000001); // big-endian registers, UTF-8 texts
    setValue(kMacHigh, (std::uint32_t{identity.mac[0]} << 8) | identity.mac[1]);
    setValue(kMacLow, readBig32(&identity.mac[2]));
    setValue(kSupportedIpConfig, 0x7);
    setValue(kCurrentIpConfig, 0x6);
    setValue(kCurrentIp, ipAddress);
    setValue(kCurrentSubnetMask, 0xFF000000);
    setValue(kCurrentGateway, 0);
    const bool terminated = !identity.unterminatedTexts;
    setString(kManufacturerName, 32, identity.manufacturerName, terminated);
    setString(kModelName, 32, identity.modelName, terminated);
    setString(kDeviceVersion, 32, identity.deviceVersion, terminated);
    setString(kManufacturerInfo, 48, identity.manufacturerInfo, terminated);
    setString(kSerialNumber, 16, identity.serialNumber, terminated);
    setString(kUserDefinedName, 16, identity.userDefinedName, terminated);
    setString(kFirstUrl, kUrlSize, xmlUrl);
    setValue(kNetworkInterfaceCount, 1);
    setValue(kPersistentIp, ipAddress);
    setValue(kPersistentSubnetMask, 0xFF000000);
    setValue(kLinkSpeed, 1000);
    setValue(kMessageChannelCount, 0);
    setValue(kStreamChannelCount, 1);
    setValue(kStreamChannelCapability, 0x80000000);
    setValue(kGvcpCapability, kGvcpCapabilities);
    setValue(kHeartbeatTimeout, ControlPrivilege::kDefaultHeartbeatTimeoutMs);
    setValue(kTickFrequencyHigh, 0);
    setValue(kTickFrequencyLow, kTickFrequency);
    setValue(kStreamPacketSize, gvcp::packetsize::kDefault);
}

void BootstrapRegisters::setString(std::uint32_t address, std::size_t fieldSize, const std::string& text,
                                   bool terminated)
{
    // Leave room for a terminating NUL unless told otherwise.
    const std::size_t length = std::min(text.size(), terminated ? fieldSize - 1 : fieldSize);
    std::memset(&m_image[address], 0, fieldSize);
    std::memcpy(&m_image[address], text.data(), length);
}

void BootstrapRegisters::read(std::uint32_t address, MutableByteView out) const
{
    std::memcpy(out.data, &m_image[address], out.size);
}

gvcp::Status BootstrapRegisters::checkWritable(std::uint32_t address, std::size_t size)
{
    for (std::size_t offset = 0; offset < size;) {
        const std::uint32_t byte = address + static_cast<std::uint32_t>(offset);
        const auto range = std::find_if(kWritable.begin(), kWritable.end(), [byte](const WritableRange& r) {
            return byte >= r.address && byte < r.address + r.size;
        });
        if (range == kWritable.end())
            return isAssigned(byte) ? gvcp::status::kWriteProtect : gvcp::status::kInvalidAddress;
        offset += range->address + range->size - byte;
    }
    return gvcp::status::kSuccess;
}

void BootstrapRegisters::write(std::uint32_t address, ByteView data)
{
    std::memcpy(&m_image[address], data.data, data.size);
}

} // namespace quorvex::sim
