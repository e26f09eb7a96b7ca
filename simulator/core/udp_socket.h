#pragma once
// A UDP socket that closes itself, with binding errors that say what failed.

#include "peer.h"

#include <cstdint>
#include <stdexcept>
#include <string>

namespace quorvex::sim {

// Failures of the simulator's set-up (addresses, ports, options).
class SimulatorError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class UdpSocket final {
public:
    UdpSocket() = default;
    ~UdpSocket();
    UdpSocket(UdpSocket&& other) noexcept;
    UdpSocket& operator=(UdpSocket&& other) noexcept;
    UdpSocket(const UdpSocket&) = delete;
    UdpSocket& operator=(const UdpSocket&) = delete;

    // Binds to address:port (port 0 picks one). shared allows other sockets
    // on the same address and port, as the broadcast listeners need.
    // Throws SimulatorError with the address in the message.
    static UdpSocket bind(std::uint32_t address, std::uint16_t port, bool shared = false);

    int fd() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }
    std::uint16_t localPort() const;
    void setSendBuffer(int bytes);

    // Returns false when nothing could be sent; never throws.
    bool sendTo(const Peer& peer, const std::uint8_t* data, std::size_t size) const;
    // Non-blocking receive; returns the size or -1 when nothing is waiting.
    long receiveFrom(Peer& peer, std::uint8_t* buffer, std::size_t capacity) const;

private:
    explicit UdpSocket(int fd) : m_fd(fd) {}
    int m_fd = -1;
};

} // namespace quorvex::sim
