// Keeps every device record an enumeration handed out, for the life of the
// library, so that a record stays valid while other threads enumerate again.
// Equal records are shared, which bounds the store by the number of distinct
// device states seen.
#pragma once

#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <type_traits>

namespace xq {

template <class Record>
class RecordStore final {
    static_assert(std::is_trivially_copyable_v<Record>, "records are plain C structures");

public:
    Record* intern(const Record& record)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const auto& kept : m_records) {
            if (std::memcmp(kept.get(), &record, sizeof record) == 0)
                return kept.get();
        }
        m_records.push_back(std::make_unique<Record>(record));
        return m_records.back().get();
    }

private:
    std::mutex m_mutex;
    std::deque<std::unique_ptr<Record>> m_records;
};

} // namespace xq
