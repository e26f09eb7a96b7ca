#pragma once
// Control channel privilege of one device: who controls it, in which mode,
// and when that control lapses for want of a heartbeat.

#include "gvcp.h"
#include "peer.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace quorvex::sim {

class ControlPrivilege final {
public:
    static constexpr std::uint32_t kDefaultHeartbeatTimeoutMs = 3000;
    // Shorter time-outs would drop clients whose heartbeat runs once a second.
    static constexpr std::uint32_t kMinimumHeartbeatTimeoutMs = 500;

    // CCP register value as the device reports it.
    std::uint32_t registerValue() const { return m_value; }
    bool isHeld() const { return m_controller.has_value(); }
    bool isController(const Peer& peer) const { return m_controller && *m_controller == peer; }
    bool isExclusive() const { return isHeld() && (m_value & gvcp::ccp::kExclusive) != 0; }

    // Someone other than the controller while exclusive access is held.
    bool deniesReadsFrom(const Peer& peer) const { return isExclusive() && !isController(peer); }
    // Writes need control; the CCP register itself is handled by writeRegister.
    bool deniesWritesFrom(const Peer& peer) const { return !isController(peer); }

    // A write of the CCP register; returns the ack status. Zero releases.
    gvcp::Status writeRegister(const Peer& sender, std::uint32_t value, Clock::time_point now);

    // Any command from the controller keeps its control alive.
    void noteActivity(const Peer& sender, Clock::time_point now);

    std::uint32_t heartbeatTimeoutMs() const { return m_heartbeatTimeoutMs; }
    void setHeartbeatTimeoutMs(std::uint32_t milliseconds);

    // Drops control when the heartbeat has lapsed; true if it did.
    bool expire(Clock::time_point now);
    std::optional<Clock::time_point> deadline() const;

private:
    void release();

    std::optional<Peer> m_controller;
    std::uint32_t m_value = 0;
    std::uint32_t m_heartbeatTimeoutMs = kDefaultHeartbeatTimeoutMs;
    Clock::time_point m_lastHeartbeat{};
};

} // namespace quorvex::sim
