// The exception callback registered on one handle.
//
// Invocation and clearing share a lock, so once a handle is released its
// callback neither runs nor will run; the lock is recursive because a
// callback may release the very handle that called it.
#pragma once

#include "XQSdkDefs.h"

#include <mutex>

namespace xq {

class ExceptionSlot final {
public:
    void set(XQ_EXCEPTION_CALLBACK callback, void* user)
    {
        const std::lock_guard<std::recursive_mutex> lock(m_mutex);
        m_callback = callback;
        m_user = user;
    }

    void clear() { set(nullptr, nullptr); }

    void invoke(unsigned int message)
    {
        const std::lock_guard<std::recursive_mutex> lock(m_mutex);
        if (m_callback)
            m_callback(message, m_user);
    }

private:
    std::recursive_mutex m_mutex;
    XQ_EXCEPTION_CALLBACK m_callback = nullptr;
    void* m_user = nullptr;
};

} // namespace xq
