// A minimal GVCP client that reads bootstrap registers and memory of a
// device without opening it through Aravis, so nothing takes control: used
// for the live accessibility check and for the identity fields that Aravis's
// device list does not expose.
#pragma once

#include <netinet/in.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace xq {

struct GvcpResult {
    bool answered = false;     // any ack arrived
    std::uint16_t status = 0;  // GVCP status of the ack (0 = success)
    bool interrupted = false;  // stopped by the stop check or the deadline
};

class GvcpProbe final {
public:
    // deviceIp: IPv4, first octet in the most significant byte.
    explicit GvcpProbe(std::uint32_t deviceIp, int timeoutMs = 300, int attempts = 3);
    ~GvcpProbe();
    GvcpProbe(const GvcpProbe&) = delete;
    GvcpProbe& operator=(const GvcpProbe&) = delete;

    bool isOpen() const { return m_socket >= 0; }

    // Every wait ends early, within about 50 ms, once stop() returns true or
    // the deadline has passed.
    void setStopCheck(std::function<bool()> stop) { m_stop = std::move(stop); }
    void setDeadline(std::chrono::steady_clock::time_point deadline) { m_deadline = deadline; }

    std::optional<std::uint32_t> readRegister(std::uint32_t address, GvcpResult* result = nullptr);
    // size: multiple of 4, at most 512.
    std::optional<std::vector<std::uint8_t>> readMemory(std::uint32_t address, std::uint16_t size,
                                                        GvcpResult* result = nullptr);
    // Address of the local interface the device is reached through (0 if unknown).
    std::uint32_t localAddress() const;

private:
    std::optional<std::vector<std::uint8_t>> transact(std::uint16_t command, const std::vector<std::uint8_t>& payload,
                                                      std::uint16_t expectedAck, GvcpResult* result);

    sockaddr_in deviceAddress() const;

    std::uint32_t m_deviceIp = 0;
    int m_socket = -1;
    int m_timeoutMs;
    int m_attempts;
    std::uint16_t m_requestId = 1;
    std::function<bool()> m_stop;
    std::chrono::steady_clock::time_point m_deadline = std::chrono::steady_clock::time_point::max();
};

} // namespace xq
