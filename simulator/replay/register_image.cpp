#include "register_image.h"

#include <algorithm>
#include <cstring>
#include <tuple>

namespace quorvex::sim {

RegisterImage RegisterImage::fromDumps(const std::vector<const RegisterDump*>& dumps)
{
    struct OrderedRead final {
        std::uint64_t epoch;
        std::size_t dump;
        std::size_t index;
        const RegisterAccessEvent* event;
    };
    std::vector<OrderedRead> reads;
    for (std::size_t d = 0; d < dumps.size(); ++d) {
        const std::vector<RegisterAccessEvent>& events = dumps[d]->events;
        for (std::size_t i = 0; i < events.size(); ++i)
            if (events[i].kind == RegisterAccessEvent::Kind::Read)
                reads.push_back({events[i].epoch, d, i, &events[i]});
    }
    std::sort(reads.begin(), reads.end(), [](const OrderedRead& a, const OrderedRead& b) {
        return std::tie(a.epoch, a.dump, a.index) < std::tie(b.epoch, b.dump, b.index);
    });

    RegisterImage image;
    for (const OrderedRead& read : reads) {
        const RegisterAccessEvent& event = *read.event;
        // The dump reader keeps every access inside the 32-bit space.
        for (std::size_t i = 0; i < event.bytes.size(); ++i)
            image.m_bytes.try_emplace(static_cast<std::uint32_t>(event.address + i), event.bytes[i]);
    }
    return image;
}

void RegisterImage::read(std::uint32_t address, std::uint8_t* out, std::size_t size) const
{
    for (std::size_t i = 0; i < size; ++i) {
        const auto found = m_bytes.find(static_cast<std::uint32_t>(address + i));
        out[i] = found == m_bytes.end() ? 0 : found->second;
    }
}

void RegisterImage::write(std::uint32_t address, const std::uint8_t* data, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i)
        m_bytes[static_cast<std::uint32_t>(address + i)] = data[i];
}

bool RegisterImage::knows(std::uint32_t address, std::size_t size) const
{
    for (std::size_t i = 0; i < size; ++i)
        if (m_bytes.find(static_cast<std::uint32_t>(address + i)) == m_bytes.end())
            return false;
    return true;
}

std::optional<std::string> RegisterImage::text(std::uint32_t address, std::size_t size) const
{
    if (!knows(address, size))
        return std::nullopt;
    std::string field(size, '\0');
    read(address, reinterpret_cast<std::uint8_t*>(field.data()), size);
    field.resize(std::strlen(field.c_str()));
    return field;
}

} // namespace quorvex::sim
