#pragma once
// GigE Vision control and stream protocol constants used by the device side.

#include <cstddef>
#include <cstdint>

namespace quorvex::sim::gvcp {

constexpr std::uint16_t kPort = 3956;
constexpr std::uint8_t kCommandKey = 0x42;
constexpr std::size_t kHeaderSize = 8;
// Largest payload a command or ack may carry; also the READMEM/WRITEMEM limit.
constexpr std::size_t kMaxPayload = 540;
constexpr std::size_t kMaxMemoryAccess = 536;
constexpr std::uint16_t kDiscoveryRequestId = 0xFFFF;

namespace flag {
constexpr std::uint8_t kAckRequired = 0x01;
}

namespace command {
constexpr std::uint16_t kDiscovery = 0x0002;
constexpr std::uint16_t kForceIp = 0x0004;
constexpr std::uint16_t kPacketResend = 0x0040;
constexpr std::uint16_t kReadReg = 0x0080;
constexpr std::uint16_t kWriteReg = 0x0082;
constexpr std::uint16_t kReadMem = 0x0084;
constexpr std::uint16_t kWriteMem = 0x0086;
} // namespace command

using Status = std::uint16_t;
namespace status {
constexpr Status kSuccess = 0x0000;
constexpr Status kNotImplemented = 0x8001;
constexpr Status kInvalidParameter = 0x8002;
constexpr Status kInvalidAddress = 0x8003;
constexpr Status kWriteProtect = 0x8004;
constexpr Status kBadAlignment = 0x8005;
constexpr Status kAccessDenied = 0x8006;
constexpr Status kBusy = 0x8007;
constexpr Status kPacketUnavailable = 0x800C;
constexpr Status kInvalidHeader = 0x800E;
constexpr Status kGenericError = 0x8FFF;
} // namespace status

// Bootstrap register addresses.
namespace reg {
constexpr std::uint32_t kVersion = 0x0000;
constexpr std::uint32_t kDeviceMode = 0x0004;
constexpr std::uint32_t kMacHigh = 0x0008;
constexpr std::uint32_t kMacLow = 0x000C;
constexpr std::uint32_t kSupportedIpConfig = 0x0010;
constexpr std::uint32_t kCurrentIpConfig = 0x0014;
constexpr std::uint32_t kCurrentIp = 0x0024;
constexpr std::uint32_t kCurrentSubnetMask = 0x0034;
constexpr std::uint32_t kCurrentGateway = 0x0044;
constexpr std::uint32_t kManufacturerName = 0x0048;
constexpr std::uint32_t kModelName = 0x0068;
constexpr std::uint32_t kDeviceVersion = 0x0088;
constexpr std::uint32_t kManufacturerInfo = 0x00A8;
constexpr std::uint32_t kSerialNumber = 0x00D8;
constexpr std::uint32_t kUserDefinedName = 0x00E8;
constexpr std::uint32_t kDiscoveryDataSize = 0x00F8;
constexpr std::uint32_t kFirstUrl = 0x0200;
constexpr std::uint32_t kSecondUrl = 0x0400;
constexpr std::uint32_t kUrlSize = 512;
constexpr std::uint32_t kNetworkInterfaceCount = 0x0600;
constexpr std::uint32_t kPersistentIp = 0x064C;
constexpr std::uint32_t kPersistentSubnetMask = 0x065C;
constexpr std::uint32_t kPersistentGateway = 0x066C;
constexpr std::uint32_t kLinkSpeed = 0x0670;
constexpr std::uint32_t kMessageChannelCount = 0x0900;
constexpr std::uint32_t kStreamChannelCount = 0x0904;
constexpr std::uint32_t kStreamChannelCapability = 0x092C;
constexpr std::uint32_t kGvcpCapability = 0x0934;
constexpr std::uint32_t kHeartbeatTimeout = 0x0938;
constexpr std::uint32_t kTickFrequencyHigh = 0x093C;
constexpr std::uint32_t kTickFrequencyLow = 0x0940;
constexpr std::uint32_t kTimestampControl = 0x0944;
constexpr std::uint32_t kTimestampLatchedHigh = 0x0948;
constexpr std::uint32_t kTimestampLatchedLow = 0x094C;
constexpr std::uint32_t kGvcpConfiguration = 0x0954;
constexpr std::uint32_t kControlChannelPrivilege = 0x0A00;
constexpr std::uint32_t kStreamPort = 0x0D00;
constexpr std::uint32_t kStreamPacketSize = 0x0D04;
constexpr std::uint32_t kStreamPacketDelay = 0x0D08;
constexpr std::uint32_t kStreamDestination = 0x0D18;
constexpr std::uint32_t kStreamSourcePort = 0x0D1C;
// End of the bootstrap block: everything below belongs to the transport layer.
constexpr std::uint32_t kBootstrapEnd = 0x1000;
} // namespace reg

namespace ccp {
constexpr std::uint32_t kExclusive = 0x1;
constexpr std::uint32_t kControl = 0x2;
} // namespace ccp

namespace packetsize {
constexpr std::uint32_t kFireTestPacket = 0x80000000;
constexpr std::uint32_t kDoNotFragment = 0x40000000;
constexpr std::uint32_t kValueMask = 0x0000FFFF;
constexpr std::uint32_t kMinimum = 576;
constexpr std::uint32_t kMaximum = 16404;
constexpr std::uint32_t kDefault = 1500;
// IP (20) + UDP (8) + GVSP header (8) sit in front of the data of each packet.
constexpr std::uint32_t kOverhead = 36;
constexpr std::uint32_t kIpUdpOverhead = 28;
} // namespace packetsize

} // namespace quorvex::sim::gvcp

namespace quorvex::sim::gvsp {
constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kLeaderPacketSize = 44;
constexpr std::size_t kTrailerPacketSize = 16;
constexpr std::uint8_t kFormatLeader = 1;
constexpr std::uint8_t kFormatTrailer = 2;
constexpr std::uint8_t kFormatPayload = 3;
constexpr std::uint16_t kPayloadTypeImage = 0x0001;
constexpr std::uint16_t kStatusResent = 0x0100;

constexpr std::uint32_t kPixelMono8 = 0x01080001;
constexpr std::uint32_t kPixelRgb8 = 0x02180014;
} // namespace quorvex::sim::gvsp
