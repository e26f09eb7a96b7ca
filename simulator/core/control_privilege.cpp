#include "control_privilege.h"

#include <algorithm>

namespace quorvex::sim {

gvcp::Status ControlPrivilege::writeRegister(const Peer& sender, std::uint32_t value, Clock::time_point now)
{
    if (isHeld() && !isController(sender))
        return gvcp::status::kAccessDenied;

    // Switch-over is not offered: only the exclusive and control bits count.
    const std::uint32_t privilege = value & (gvcp::ccp::kExclusive | gvcp::ccp::kControl);
    if (privilege == 0) {
        release();
        return gvcp::status::kSuccess;
    }
    m_controller = sender;
    m_value = privilege;
    m_lastHeartbeat = now;
    return gvcp::status::kSuccess;
}

void ControlPrivilege::noteActivity(const Peer& sender, Clock::time_point now)
{
    if (isController(sender))
        m_lastHeartbeat = now;
}

void ControlPrivilege::setHeartbeatTimeoutMs(std::uint32_t milliseconds)
{
    m_heartbeatTimeoutMs = std::max(milliseconds, kMinimumHeartbeatTimeoutMs);
}

bool ControlPrivilege::expire(Clock::time_point now)
{
    const auto limit = deadline();
    if (!limit || now < *limit)
        return false;
    release();
    return true;
}

std::optional<Clock::time_point> ControlPrivilege::deadline() const
{
    if (!isHeld())
        return std::nullopt;
    return m_lastHeartbeat + std::chrono::milliseconds(m_heartbeatTimeoutMs);
}

void ControlPrivilege::release()
{
    m_controller.reset();
    m_value = 0;
}

} // namespace quorvex::sim
