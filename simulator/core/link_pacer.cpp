#include "link_pacer.h"

#include "gvcp.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace quorvex::sim {

namespace {

// Preamble and start delimiter (8), MAC header (14), frame check (4), gap (12).
constexpr std::uint64_t kEthernetHeader = 14 + 4;
constexpr std::uint64_t kEthernetMinimumFrame = 64;
constexpr std::uint64_t kPreambleAndGap = 8 + 12;
// Bytes a sender lets become due before it wakes to send them: a sixth of
// a default 208 KiB receive buffer, counting the kernel's overhead on each
// packet. Twice that, the most a held-up sender catches up at once, still
// leaves the receiver two thirds of its buffer.
constexpr std::uint64_t kWakeBytes = 24 * 1024;
// Below this a sleep is mostly timer overhead.
constexpr auto kMinimumWakeLag = std::chrono::microseconds(100);

} // namespace

std::uint32_t LinkSpeed::megabits() const
{
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(bitsPerSecond / 1'000'000, 0xFFFFFFFF));
}

std::string LinkSpeed::text() const
{
    if (unlimited())
        return "unlimited";
    if (bitsPerSecond % 1'000'000'000 == 0)
        return std::to_string(bitsPerSecond / 1'000'000'000) + " Gb/s";
    if (bitsPerSecond % 100'000'000 == 0 && bitsPerSecond > 1'000'000'000)
        return std::to_string(bitsPerSecond / 1'000'000'000) + "." +
               std::to_string(bitsPerSecond / 100'000'000 % 10) + " Gb/s";
    if (bitsPerSecond % 1'000'000 == 0)
        return std::to_string(bitsPerSecond / 1'000'000) + " Mb/s";
    return std::to_string(bitsPerSecond) + " b/s";
}

std::optional<LinkSpeed> LinkSpeed::parse(const std::string& text)
{
    if (text == "unlimited")
        return LinkSpeed{0};
    if (text.empty() || text.size() > 16)
        return std::nullopt;
    double scale = 1.0;
    std::string digits = text;
    switch (digits.back()) {
    case 'k': case 'K': scale = 1e3; digits.pop_back(); break;
    case 'm': case 'M': scale = 1e6; digits.pop_back(); break;
    case 'g': case 'G': scale = 1e9; digits.pop_back(); break;
    default: break;
    }
    if (digits.empty() || digits.find_first_not_of("0123456789.") != std::string::npos ||
        std::count(digits.begin(), digits.end(), '.') > 1 || digits.front() == '.' || digits.back() == '.')
        return std::nullopt;
    const double bits = std::strtod(digits.c_str(), nullptr) * scale;
    // From a slow serial-like link to far beyond what loopback carries.
    if (!(bits >= 1e6 && bits <= 400e9))
        return std::nullopt;
    return LinkSpeed{static_cast<std::uint64_t>(std::llround(bits))};
}

std::uint64_t wireBytes(std::uint64_t ipBytes)
{
    return std::max(ipBytes + kEthernetHeader, kEthernetMinimumFrame) + kPreambleAndGap;
}

Clock::duration wireTime(std::uint64_t bytes, const LinkSpeed& speed)
{
    if (speed.unlimited())
        return Clock::duration::zero();
    const auto nanoseconds = static_cast<std::int64_t>(bytes * 8 * 1'000'000'000 / speed.bitsPerSecond);
    return std::chrono::duration_cast<Clock::duration>(std::chrono::nanoseconds(nanoseconds));
}

Clock::duration frameWireTime(std::size_t imageBytes, std::uint32_t packetSize, Clock::duration gap,
                              const LinkSpeed& speed)
{
    const std::size_t perPacket = packetSize - gvcp::packetsize::kOverhead;
    const std::size_t fullPackets = imageBytes / perPacket;
    const std::size_t rest = imageBytes % perPacket;
    const std::uint64_t headers = gvcp::packetsize::kIpUdpOverhead;
    Clock::duration total = wireTime(wireBytes(headers + gvsp::kLeaderPacketSize), speed) +
                            wireTime(wireBytes(headers + gvsp::kTrailerPacketSize), speed) +
                            static_cast<Clock::rep>(fullPackets) * wireTime(wireBytes(packetSize), speed);
    if (rest > 0)
        total += wireTime(wireBytes(gvcp::packetsize::kOverhead + rest), speed);
    const std::size_t packets = fullPackets + (rest > 0 ? 1 : 0) + 2;
    return total + static_cast<Clock::rep>(packets) * gap;
}

LinkPacer::LinkPacer(LinkSpeed speed)
    : m_speed(speed), m_wakeLag(std::max<Clock::duration>(kMinimumWakeLag, wireTime(kWakeBytes, speed)))
{
}

Clock::time_point LinkPacer::nextDeparture(Clock::time_point now)
{
    const Clock::duration maxCatchUp = 2 * m_wakeLag;
    if (m_free < now - maxCatchUp)
        m_free = now - maxCatchUp;
    return m_free;
}

void LinkPacer::book(std::uint64_t ipBytes, Clock::duration gapAfter)
{
    m_free += wireTime(wireBytes(ipBytes), m_speed) + gapAfter;
}

} // namespace quorvex::sim
