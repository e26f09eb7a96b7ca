#include "GvcpProbe.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>

namespace xq {
namespace {

constexpr std::uint16_t kGvcpPort = 3956;
constexpr std::uint8_t kKeyByte = 0x42;
constexpr std::uint8_t kFlagAckRequired = 0x01;
constexpr std::uint16_t kReadRegCmd = 0x0080;
constexpr std::uint16_t kReadRegAck = 0x0081;
constexpr std::uint16_t kReadMemCmd = 0x0084;
constexpr std::uint16_t kReadMemAck = 0x0085;
constexpr std::size_t kHeaderSize = 8;
constexpr long long kStopCheckMs = 50;

void putBe16(std::vector<std::uint8_t>& out, std::uint16_t value)
{
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

void putBe32(std::vector<std::uint8_t>& out, std::uint32_t value)
{
    putBe16(out, static_cast<std::uint16_t>(value >> 16));
    putBe16(out, static_cast<std::uint16_t>(value));
}

std::uint16_t be16(const std::uint8_t* p) { return static_cast<std::uint16_t>((p[0] << 8) | p[1]); }

std::uint32_t be32(const std::uint8_t* p)
{
    return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) | p[3];
}

} // namespace

GvcpProbe::GvcpProbe(std::uint32_t deviceIp, int timeoutMs, int attempts)
    : m_timeoutMs(timeoutMs), m_attempts(attempts)
{
    if (deviceIp == 0)
        return;
    m_socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (m_socket < 0)
        return;
    m_deviceIp = deviceIp;
}

GvcpProbe::~GvcpProbe()
{
    if (m_socket >= 0)
        ::close(m_socket);
}

std::uint32_t GvcpProbe::localAddress() const
{
    // Connecting a datagram socket only picks the route; it sends nothing.
    const int routeProbe = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (routeProbe < 0)
        return 0;
    const sockaddr_in device = deviceAddress();
    sockaddr_in local{};
    socklen_t length = sizeof local;
    std::uint32_t address = 0;
    if (::connect(routeProbe, reinterpret_cast<const sockaddr*>(&device), sizeof device) == 0
        && ::getsockname(routeProbe, reinterpret_cast<sockaddr*>(&local), &length) == 0)
        address = ntohl(local.sin_addr.s_addr);
    ::close(routeProbe);
    return address;
}

sockaddr_in GvcpProbe::deviceAddress() const
{
    sockaddr_in device{};
    device.sin_family = AF_INET;
    device.sin_port = htons(kGvcpPort);
    device.sin_addr.s_addr = htonl(m_deviceIp);
    return device;
}

std::optional<std::uint32_t> GvcpProbe::readRegister(std::uint32_t address, GvcpResult* result)
{
    std::vector<std::uint8_t> payload;
    putBe32(payload, address);
    const auto answer = transact(kReadRegCmd, payload, kReadRegAck, result);
    if (!answer || answer->size() < 4)
        return std::nullopt;
    return be32(answer->data());
}

std::optional<std::vector<std::uint8_t>> GvcpProbe::readMemory(std::uint32_t address, std::uint16_t size,
                                                               GvcpResult* result)
{
    if (size == 0 || size > 512 || size % 4 != 0)
        return std::nullopt;
    std::vector<std::uint8_t> payload;
    putBe32(payload, address);
    putBe16(payload, 0);
    putBe16(payload, size);
    auto answer = transact(kReadMemCmd, payload, kReadMemAck, result);
    // The ack echoes the address before the data.
    if (!answer || answer->size() < 4u + size || be32(answer->data()) != address)
        return std::nullopt;
    return std::vector<std::uint8_t>(answer->begin() + 4, answer->begin() + 4 + size);
}

std::optional<std::vector<std::uint8_t>> GvcpProbe::transact(std::uint16_t command,
                                                             const std::vector<std::uint8_t>& payload,
                                                             std::uint16_t expectedAck, GvcpResult* result)
{
    if (result)
        *result = GvcpResult{};
    if (m_socket < 0)
        return std::nullopt;

    // A resend keeps the request id, so that the device can tell it apart
    // from a new command.
    const std::uint16_t requestId = m_requestId++;
    if (m_requestId == 0)
        m_requestId = 1;
    for (int attempt = 0; attempt < m_attempts; ++attempt) {
        std::vector<std::uint8_t> packet{kKeyByte, kFlagAckRequired};
        putBe16(packet, command);
        putBe16(packet, static_cast<std::uint16_t>(payload.size()));
        putBe16(packet, requestId);
        packet.insert(packet.end(), payload.begin(), payload.end());
        const sockaddr_in device = deviceAddress();
        if (::sendto(m_socket, packet.data(), packet.size(), MSG_NOSIGNAL,
                     reinterpret_cast<const sockaddr*>(&device), sizeof device) < 0)
            return std::nullopt;

        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(m_timeoutMs);
        for (;;) {
            const auto now = std::chrono::steady_clock::now();
            if ((m_stop && m_stop()) || now >= m_deadline) {
                if (result)
                    result->interrupted = true;
                return std::nullopt;
            }
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - now).count();
            if (left <= 0)
                break;
            pollfd waiting{m_socket, POLLIN, 0};
            const int ready = ::poll(&waiting, 1, static_cast<int>(std::min<long long>(left, kStopCheckMs)));
            if (ready < 0)
                break;
            if (ready == 0)
                continue;
            std::uint8_t buffer[1024];
            sockaddr_in sender{};
            socklen_t senderLength = sizeof sender;
            const ssize_t received = ::recvfrom(m_socket, buffer, sizeof buffer, 0,
                                                reinterpret_cast<sockaddr*>(&sender), &senderLength);
            // Answers may come from any port of the device, never from elsewhere.
            if (received >= 0 && ntohl(sender.sin_addr.s_addr) != m_deviceIp)
                continue;
            if (received < static_cast<ssize_t>(kHeaderSize))
                continue; // refused port, truncated or empty datagram: keep waiting
            const std::uint16_t status = be16(buffer);
            const std::uint16_t ack = be16(buffer + 2);
            const std::uint16_t length = be16(buffer + 4);
            const std::uint16_t ackId = be16(buffer + 6);
            if (ack != expectedAck || ackId != requestId)
                continue;
            if (result) {
                result->answered = true;
                result->status = status;
            }
            if (status != 0)
                return std::nullopt;
            const std::size_t available = static_cast<std::size_t>(received) - kHeaderSize;
            const std::size_t size = length < available ? length : available;
            return std::vector<std::uint8_t>(buffer + kHeaderSize, buffer + kHeaderSize + size);
        }
    }
    return std::nullopt;
}

} // namespace xq
