#pragma once
// Requests from the control side of a device to its stream channel,
// collected while a packet is handled and carried out after it.

#include "device_model.h"
#include "peer.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quorvex::sim {

struct StreamTarget final {
    // Timestamp ticks per second: the packet delay is counted in them.
    static constexpr std::uint64_t kTickFrequency = 1'000'000'000;

    Peer destination;
    std::uint32_t packetSize = 0;       // IP datagram size, as in the packet-size register
    std::uint32_t packetDelayTicks = 0; // extra gap after each packet, in timestamp ticks
    bool doNotFragment = false;         // packets larger than the path are lost, not split

    Clock::duration packetGap() const
    {
        return std::chrono::duration_cast<Clock::duration>(
            std::chrono::nanoseconds(std::uint64_t{packetDelayTicks} * 1'000'000'000 / kTickFrequency));
    }
};

struct ResendRequest final {
    std::uint16_t blockId = 0;
    std::uint32_t firstPacketId = 0;
    std::uint32_t lastPacketId = 0;
};

struct StreamStart final {
    AcquisitionSetup setup;
    StreamTarget target;
};

struct StreamActions final {
    bool stop = false;                 // carried out before start
    std::optional<StreamStart> start;
    unsigned softwareTriggers = 0;
    std::optional<StreamTarget> testPacket;
    std::vector<ResendRequest> resends;

    bool empty() const { return !stop && !start && softwareTriggers == 0 && !testPacket && resends.empty(); }
};

} // namespace quorvex::sim
