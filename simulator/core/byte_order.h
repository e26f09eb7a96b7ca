#pragma once
// Big-endian field access for protocol buffers and register images.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::sim {

// A read-only view of bytes; the owner keeps them alive.
struct ByteView final {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;

    ByteView() = default;
    ByteView(const std::uint8_t* bytes, std::size_t length) : data(bytes), size(length) {}
    explicit ByteView(const std::vector<std::uint8_t>& bytes) : data(bytes.data()), size(bytes.size()) {}

    ByteView subview(std::size_t offset, std::size_t length) const
    {
        if (offset > size) return {};
        return {data + offset, length > size - offset ? size - offset : length};
    }
};

// A writable view of bytes that belong to the caller.
struct MutableByteView final {
    std::uint8_t* data = nullptr;
    std::size_t size = 0;
};

inline std::uint16_t readBig16(const std::uint8_t* p)
{
    return static_cast<std::uint16_t>((p[0] << 8) | p[1]);
}

inline std::uint32_t readBig32(const std::uint8_t* p)
{
    return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) | p[3];
}

inline void writeBig16(std::uint8_t* p, std::uint16_t value)
{
    p[0] = static_cast<std::uint8_t>(value >> 8);
    p[1] = static_cast<std::uint8_t>(value);
}

inline void writeBig32(std::uint8_t* p, std::uint32_t value)
{
    p[0] = static_cast<std::uint8_t>(value >> 24);
    p[1] = static_cast<std::uint8_t>(value >> 16);
    p[2] = static_cast<std::uint8_t>(value >> 8);
    p[3] = static_cast<std::uint8_t>(value);
}

inline void appendBig16(std::vector<std::uint8_t>& out, std::uint16_t value)
{
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

inline void appendBig32(std::vector<std::uint8_t>& out, std::uint32_t value)
{
    appendBig16(out, static_cast<std::uint16_t>(value >> 16));
    appendBig16(out, static_cast<std::uint16_t>(value));
}

// IPv4 addresses are kept as host-order integers, first octet in the high byte.
std::string formatIpv4(std::uint32_t address);
// Parses a dotted quad; false on anything else.
bool parseIpv4(const std::string& text, std::uint32_t& address);

inline bool isLoopback(std::uint32_t address) { return (address >> 24) == 127; }

} // namespace quorvex::sim
