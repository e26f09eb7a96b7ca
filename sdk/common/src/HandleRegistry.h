// Maps opaque handles to reference-counted sessions.
//
// A handle is a tagged serial number, never a pointer, and serials are never
// reused, so a stale, doubly destroyed or foreign handle simply is not found.
#pragma once

#include "XQSdkDefs.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace xq {

template <class Session>
class HandleRegistry final {
public:
    // kindTag keeps the handles of the two libraries apart.
    explicit HandleRegistry(std::uint16_t kindTag) : m_tag(std::uint64_t{kindTag} << 40) {}
    HandleRegistry(const HandleRegistry&) = delete;
    HandleRegistry& operator=(const HandleRegistry&) = delete;

    XQ_HANDLE add(std::shared_ptr<Session> session)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const std::uint64_t key = m_tag | (m_nextSerial++ & kSerialMask);
        m_sessions.emplace(key, std::move(session));
        return reinterpret_cast<XQ_HANDLE>(static_cast<std::uintptr_t>(key));
    }

    std::shared_ptr<Session> find(XQ_HANDLE handle) const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto it = m_sessions.find(keyOf(handle));
        return it == m_sessions.end() ? nullptr : it->second;
    }

    // Takes the session out; later lookups of the handle fail.
    std::shared_ptr<Session> remove(XQ_HANDLE handle)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto it = m_sessions.find(keyOf(handle));
        if (it == m_sessions.end())
            return nullptr;
        auto session = std::move(it->second);
        m_sessions.erase(it);
        return session;
    }

    std::vector<std::shared_ptr<Session>> all() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<std::shared_ptr<Session>> sessions;
        sessions.reserve(m_sessions.size());
        for (const auto& entry : m_sessions)
            sessions.push_back(entry.second);
        return sessions;
    }

    // Low 32 bits of a handle's serial, used to stamp records a session hands out.
    static std::uint32_t stampOf(XQ_HANDLE handle)
    {
        return static_cast<std::uint32_t>(keyOf(handle) & 0xFFFFFFFFu);
    }

private:
    static constexpr std::uint64_t kSerialMask = (std::uint64_t{1} << 40) - 1;

    static std::uint64_t keyOf(XQ_HANDLE handle)
    {
        return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(handle));
    }

    const std::uint64_t m_tag;
    mutable std::mutex m_mutex;
    std::uint64_t m_nextSerial = 1;
    std::unordered_map<std::uint64_t, std::shared_ptr<Session>> m_sessions;
};

} // namespace xq
