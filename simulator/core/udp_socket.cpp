#include "udp_socket.h"

#include "byte_order.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace quorvex::sim {

namespace {

sockaddr_in toSockaddr(const Peer& peer)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(peer.address);
    address.sin_port = htons(peer.port);
    return address;
}

} // namespace

std::string formatIpv4(std::uint32_t address)
{
    return std::to_string(address >> 24) + '.' + std::to_string((address >> 16) & 0xFF) + '.' +
           std::to_string((address >> 8) & 0xFF) + '.' + std::to_string(address & 0xFF);
}

bool parseIpv4(const std::string& text, std::uint32_t& address)
{
    in_addr parsed{};
    // inet_pton accepts exactly four decimal octets, nothing shorter.
    if (inet_pton(AF_INET, text.c_str(), &parsed) != 1)
        return false;
    address = ntohl(parsed.s_addr);
    return true;
}

UdpSocket::~UdpSocket()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

UdpSocket::UdpSocket(UdpSocket&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}

UdpSocket& UdpSocket::operator=(UdpSocket&& other) noexcept
{
    if (this != &other) {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = std::exchange(other.m_fd, -1);
    }
    return *this;
}

UdpSocket UdpSocket::bind(std::uint32_t address, std::uint16_t port, bool shared)
{
    const std::string where = formatIpv4(address) + ":" + std::to_string(port);
    UdpSocket socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!socket.isOpen())
        throw SimulatorError("cannot create a UDP socket for " + where + ": " + std::strerror(errno));
    const int on = 1;
    if (shared)
        ::setsockopt(socket.m_fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    ::setsockopt(socket.m_fd, SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
    const sockaddr_in local = toSockaddr({address, port});
    if (::bind(socket.m_fd, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0) {
        const int error = errno;
        if (error == EADDRINUSE)
            throw SimulatorError("UDP " + where + " is already in use (is another simulator or camera running?)");
        if (error == EADDRNOTAVAIL)
            throw SimulatorError("address " + formatIpv4(address) + " is not configured on this machine");
        if (error == EACCES)
            throw SimulatorError("not allowed to bind UDP " + where + ": " + std::strerror(error));
        throw SimulatorError("cannot bind UDP " + where + ": " + std::strerror(error));
    }
    return socket;
}

std::uint16_t UdpSocket::localPort() const
{
    sockaddr_in local{};
    socklen_t length = sizeof local;
    if (::getsockname(m_fd, reinterpret_cast<sockaddr*>(&local), &length) != 0)
        return 0;
    return ntohs(local.sin_port);
}

void UdpSocket::setSendBuffer(int bytes)
{
    ::setsockopt(m_fd, SOL_SOCKET, SO_SNDBUF, &bytes, sizeof bytes);
}

bool UdpSocket::sendTo(const Peer& peer, const std::uint8_t* data, std::size_t size) const
{
    const sockaddr_in target = toSockaddr(peer);
    for (;;) {
        const ssize_t sent =
            ::sendto(m_fd, data, size, MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&target), sizeof target);
        if (sent >= 0)
            return true;
        if (errno != EINTR)
            return false;
    }
}

long UdpSocket::receiveFrom(Peer& peer, std::uint8_t* buffer, std::size_t capacity) const
{
    sockaddr_in source{};
    socklen_t length = sizeof source;
    const ssize_t received =
        ::recvfrom(m_fd, buffer, capacity, MSG_DONTWAIT, reinterpret_cast<sockaddr*>(&source), &length);
    if (received < 0 || source.sin_family != AF_INET)
        return -1;
    peer.address = ntohl(source.sin_addr.s_addr);
    peer.port = ntohs(source.sin_port);
    return received;
}

} // namespace quorvex::sim
