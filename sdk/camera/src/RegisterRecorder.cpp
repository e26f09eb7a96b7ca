#include "RegisterRecorder.h"

#include <algorithm>

namespace xq {
namespace {

// Integer, float and boolean registers are at most 8 bytes long.
constexpr std::uint32_t kLongestNumberRegister = 8;

} // namespace

void RegisterRecorder::recordRead(std::uint64_t address, const void* data, std::uint32_t length)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    const RegisterAccess access{address, length};
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_stringContext && length > kLongestNumberRegister)
        m_recording.stringRanges.emplace(address, address + length);
    auto& last = m_recording.lastRead[access];
    const bool unchanged = !last.empty() && std::equal(last.begin(), last.end(), bytes, bytes + length);
    if (unchanged)
        return;
    last.assign(bytes, bytes + length);
    m_recording.events.push_back({RegisterEvent::Kind::Read, m_writes, access, last});
}

void RegisterRecorder::recordWrite(std::uint64_t address, const void* data, std::uint32_t length)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_stringContext && length > kLongestNumberRegister)
        m_recording.stringRanges.emplace(address, address + length);
    ++m_writes;
    m_recording.events.push_back(
        {RegisterEvent::Kind::Write, m_writes, {address, length}, std::vector<std::uint8_t>(bytes, bytes + length)});
}

void RegisterRecorder::markStringRange(std::uint64_t address, std::uint64_t length)
{
    if (length == 0)
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_recording.stringRanges.emplace(address, address + length);
}

void RegisterRecorder::setStringContext(bool active)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stringContext = active;
}

RegisterRecording RegisterRecorder::snapshot() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_recording;
}

void RegisterRecorder::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_recording = RegisterRecording{};
    m_writes = 0;
    m_stringContext = false;
}

bool isStringAccess(const RegisterRecording& recording, const RegisterAccess& access)
{
    const std::uint64_t begin = access.address;
    const std::uint64_t end = access.address + access.length;
    return std::any_of(recording.stringRanges.begin(), recording.stringRanges.end(),
                       [&](const auto& range) { return begin < range.second && range.first < end; });
}

} // namespace xq
