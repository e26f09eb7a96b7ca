#pragma once
// The emulated Ethernet link of one device: when each stream packet may
// leave so that the stream never runs faster than the link would carry it.
// Every device has a pacer of its own, kept by its stream thread.

#include "peer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace quorvex::sim {

// Link speed in bits per second; 0 sends as fast as loopback takes packets.
struct LinkSpeed final {
    std::uint64_t bitsPerSecond = 1'000'000'000;

    bool unlimited() const { return bitsPerSecond == 0; }
    // Megabits per second as the link speed register reports it.
    std::uint32_t megabits() const;
    std::string text() const;
    // "100M", "1G", "2.5G", "10G", "1000000000" or "unlimited".
    static std::optional<LinkSpeed> parse(const std::string& text);
};

// Stream packets the emulated link loses, to prove a client's packet
// resend: this fraction of first-sent payload packets, chosen by a seeded
// generator so a test sees the same losses each run.
struct LinkLoss final {
    double fraction = 0.0;
    std::uint64_t seed = 1;
};

// Bytes a datagram of ipBytes occupies on an Ethernet wire: preamble and
// start delimiter, MAC header, frame check sequence, padding to the minimum
// frame and the inter-frame gap.
std::uint64_t wireBytes(std::uint64_t ipBytes);
// How long bytes of wire take at speed (zero when unlimited).
Clock::duration wireTime(std::uint64_t wireBytes, const LinkSpeed& speed);

// How long a frame of imageBytes takes on the link in GVSP packets of
// packetSize (IP datagram) bytes, leader and trailer included, with gap
// after each packet.
Clock::duration frameWireTime(std::size_t imageBytes, std::uint32_t packetSize, Clock::duration gap,
                              const LinkSpeed& speed);

class LinkPacer final {
public:
    explicit LinkPacer(LinkSpeed speed);

    const LinkSpeed& speed() const { return m_speed; }
    // How far behind its packets a sender may wake: the link's time for a
    // burst of packets that fills a fraction of a default receive buffer,
    // so each wake-up (a timer, a system call, the receiver woken) carries
    // many packets, yet no burst swamps a receiver.
    Clock::duration wakeLag() const { return m_wakeLag; }
    // Starts a run of packets: an idle link is free from now on.
    void begin(Clock::time_point now) { m_free = std::max(m_free, now); }
    // When the next packet may leave, given the time now. A sender that was
    // held up for long (preempted) may catch up only a short stretch at
    // full speed (twice the wake lag), so a receiver never sees a burst much
    // longer than that.
    Clock::time_point nextDeparture(Clock::time_point now);
    // Books a packet of ipBytes plus a gap after it on the link.
    void book(std::uint64_t ipBytes, Clock::duration gapAfter);

private:
    LinkSpeed m_speed;
    Clock::duration m_wakeLag;
    Clock::time_point m_free{};
};

} // namespace quorvex::sim
