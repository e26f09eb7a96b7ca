// Lets close and release end the waits of calls in progress on the same
// handle from another thread: a call takes a stop check when it starts, and
// polls it while it waits (at least every 50 ms).
#pragma once

#include <atomic>
#include <functional>

namespace xq {

class CallCanceller final {
public:
    // True once cancelCalls() or releaseForever() happened after this call.
    // The check refers to this object: sessions outlive their calls.
    std::function<bool()> stopCheck() const
    {
        const unsigned int started = m_epoch.load();
        return [this, started] { return m_released.load() || m_epoch.load() != started; };
    }
    // Ends the waits of calls already running; later calls are unaffected.
    void cancelCalls() { m_epoch.fetch_add(1); }
    // Ends every wait, now and later: the handle is gone.
    void releaseForever()
    {
        m_released.store(true);
        m_epoch.fetch_add(1);
    }

private:
    std::atomic<unsigned int> m_epoch{0};
    std::atomic<bool> m_released{false};
};

} // namespace xq
