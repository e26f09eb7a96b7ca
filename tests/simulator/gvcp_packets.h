#pragma once
// Builds GVCP commands and reads acks, for tests that speak the protocol directly.

#include "core/byte_order.h"
#include "core/gvcp.h"

#include <cstdint>
#include <vector>

namespace quorvex::sim::test {

inline std::vector<std::uint8_t> command(std::uint16_t code, std::uint16_t requestId,
                                         const std::vector<std::uint8_t>& payload = {},
                                         std::uint8_t flags = gvcp::flag::kAckRequired)
{
    std::vector<std::uint8_t> packet{gvcp::kCommandKey, flags};
    appendBig16(packet, code);
    appendBig16(packet, static_cast<std::uint16_t>(payload.size()));
    appendBig16(packet, requestId);
    packet.insert(packet.end(), payload.begin(), payload.end());
    return packet;
}

inline std::vector<std::uint8_t> words(std::initializer_list<std::uint32_t> values)
{
    std::vector<std::uint8_t> bytes;
    for (const std::uint32_t value : values)
        appendBig32(bytes, value);
    return bytes;
}

inline std::vector<std::uint8_t> readReg(std::uint32_t address, std::uint16_t id = 1)
{
    return command(gvcp::command::kReadReg, id, words({address}));
}

inline std::vector<std::uint8_t> writeReg(std::uint32_t address, std::uint32_t value, std::uint16_t id = 1)
{
    return command(gvcp::command::kWriteReg, id, words({address, value}));
}

inline std::vector<std::uint8_t> readMem(std::uint32_t address, std::uint32_t count, std::uint16_t id = 1)
{
    return command(gvcp::command::kReadMem, id, words({address, count}));
}

inline std::vector<std::uint8_t> writeMem(std::uint32_t address, const std::vector<std::uint8_t>& data,
                                          std::uint16_t id = 1)
{
    std::vector<std::uint8_t> payload = words({address});
    payload.insert(payload.end(), data.begin(), data.end());
    return command(gvcp::command::kWriteMem, id, payload);
}

inline std::uint16_t ackStatus(const std::vector<std::uint8_t>& ack) { return readBig16(ack.data()); }
inline std::uint16_t ackCode(const std::vector<std::uint8_t>& ack) { return readBig16(ack.data() + 2); }
inline std::uint16_t ackLength(const std::vector<std::uint8_t>& ack) { return readBig16(ack.data() + 4); }
inline std::uint16_t ackId(const std::vector<std::uint8_t>& ack) { return readBig16(ack.data() + 6); }
inline std::uint32_t ackWord(const std::vector<std::uint8_t>& ack, std::size_t index)
{
    return readBig32(ack.data() + 8 + 4 * index);
}

} // namespace quorvex::sim::test
