#pragma once
// The bootstrap block (0x0000-0x0FFF) of one device as a register image.
// Unassigned words read as zero, as on real devices; only the registers a
// client may change accept writes.

#include "byte_order.h"
#include "device_model.h"
#include "gvcp.h"
#include "stream_actions.h"

#include <array>
#include <cstdint>
#include <string>

namespace quorvex::sim {

class BootstrapRegisters final {
public:
    // Only what the device does: user-defined name and serial number
    // registers, the link speed register, several registers in one READREG
    // or WRITEREG (concatenation), WRITEMEM and packet resend. No events,
    // pending acks, actions, heartbeat disable or test data.
    static constexpr std::uint32_t kGvcpCapabilities = 0x80000000 | 0x40000000 | 0x10000000 | 0x4 | 0x2 | 0x1;
    static constexpr std::uint32_t kTickFrequency = StreamTarget::kTickFrequency; // timestamps in nanoseconds

    BootstrapRegisters(const DeviceIdentity& identity, std::uint32_t ipAddress, const std::string& xmlUrl);

    static bool covers(std::uint32_t address, std::size_t size)
    {
        return address < gvcp::reg::kBootstrapEnd && size <= gvcp::reg::kBootstrapEnd - address;
    }

    std::uint32_t value(std::uint32_t address) const { return readBig32(&m_image[address]); }
    void setValue(std::uint32_t address, std::uint32_t newValue) { writeBig32(&m_image[address], newValue); }

    void read(std::uint32_t address, MutableByteView out) const;
    // Checks that [address, address+size) only touches registers clients may write.
    static gvcp::Status checkWritable(std::uint32_t address, std::size_t size);
    void write(std::uint32_t address, ByteView data);

    // The 248-byte discovery answer is the start of the image.
    ByteView discoveryData() const { return {m_image.data(), gvcp::reg::kDiscoveryDataSize}; }

private:
    void setString(std::uint32_t address, std::size_t fieldSize, const std::string& text, bool terminated = true);

    std::array<std::uint8_t, gvcp::reg::kBootstrapEnd> m_image{};
};

} // namespace quorvex::sim
