#pragma once
// A bare GVCP client on a loopback UDP socket, for tests that need to send
// exactly the bytes they choose.

#include "core/udp_socket.h"
#include "gvcp_packets.h"

#include <chrono>
#include <cstring>
#include <optional>
#include <poll.h>
#include <string>
#include <vector>

namespace quorvex::sim::test {

class GvcpClient final {
public:
    explicit GvcpClient(std::uint32_t localAddress = 0x7F000001) : m_socket(UdpSocket::bind(localAddress, 0)) {}

    void send(const Peer& device, const std::vector<std::uint8_t>& packet) const
    {
        m_socket.sendTo(device, packet.data(), packet.size());
    }

    // The next datagram within the timeout, if any.
    std::optional<std::vector<std::uint8_t>> receive(std::chrono::milliseconds timeout, Peer* from = nullptr) const
    {
        pollfd fd{m_socket.fd(), POLLIN, 0};
        if (::poll(&fd, 1, static_cast<int>(timeout.count())) <= 0)
            return std::nullopt;
        std::vector<std::uint8_t> buffer(65536);
        Peer sender;
        const long size = m_socket.receiveFrom(sender, buffer.data(), buffer.size());
        if (size < 0)
            return std::nullopt;
        buffer.resize(static_cast<std::size_t>(size));
        if (from)
            *from = sender;
        return buffer;
    }

    std::optional<std::vector<std::uint8_t>> request(const Peer& device, const std::vector<std::uint8_t>& packet,
                                                     std::chrono::milliseconds timeout = std::chrono::milliseconds(500))
    {
        send(device, packet);
        return receive(timeout);
    }

    const UdpSocket& socket() const { return m_socket; }

private:
    UdpSocket m_socket;
};

// The serial number the device at address announces, or "" when silent.
inline std::string serialAt(std::uint32_t address)
{
    GvcpClient client;
    const auto ack = client.request({address, gvcp::kPort}, command(gvcp::command::kDiscovery, 0xFFFF));
    if (!ack || ack->size() < 8 + gvcp::reg::kDiscoveryDataSize)
        return {};
    const char* serial = reinterpret_cast<const char*>(ack->data() + 8 + gvcp::reg::kSerialNumber);
    return std::string(serial, ::strnlen(serial, 16));
}

} // namespace quorvex::sim::test
