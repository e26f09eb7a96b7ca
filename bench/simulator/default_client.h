#pragma once
// Measures what an untuned client gets from GigE Vision devices: Aravis
// with its default stream settings (plain socket as an ordinary user gets
// it, default socket buffer and packet size, resend on), free running at
// 10 frames per second.

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

struct DefaultClientFigures final {
    bool ok = false;
    std::uint64_t complete = 0;
    std::uint64_t frames = 0; // complete, failed and never seen
    std::uint64_t resent = 0;
    double wireSeconds = 0; // of one frame at the link's speed
    // Time from a frame's leader to its completion against its wire time:
    // (transfer - wire) / wire, median and 90th percentile.
    double pacingErrorMedian = 0;
    double pacingErrorP90 = 0;
};

// How long a frame of payload bytes takes on a link of bitsPerSecond in
// GVSP packets of packetSize (IP datagram) bytes, Ethernet framing included.
double frameWireSeconds(std::uint64_t payload, std::uint32_t packetSize, double bitsPerSecond);

// Streams from every address at once for the given time. width and height
// of 0 leave each device's own size. linkBitsPerSecond is the devices' link,
// for the pacing error.
std::vector<DefaultClientFigures> measureDefaultClients(const std::vector<std::string>& addresses, double seconds,
                                                         unsigned width, unsigned height, double linkBitsPerSecond);

} // namespace bench
