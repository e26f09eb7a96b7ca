#pragma once

#include <chrono>
#include <cstdint>

namespace quorvex::sim {

using Clock = std::chrono::steady_clock;

// A UDP endpoint; the address is host order, first octet in the high byte.
struct Peer final {
    std::uint32_t address = 0;
    std::uint16_t port = 0;

    bool operator==(const Peer& other) const { return address == other.address && port == other.port; }
    bool operator!=(const Peer& other) const { return !(*this == other); }
};

} // namespace quorvex::sim
