// Lets close and release end the waits of calls in progress on the same
// handle from another thread: a call takes a stop check when it starts, and
// polls it while it waits (at least every 50 ms).
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <thread>

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

// How long releasing a handle waits for a call in progress to let go of the
// session: pending opens and frame waits notice within 50 ms; a device
// command inside Aravis (up to 5 x 500 ms on a silent device) is not waited
// for, the session closes the device when that call ends.
constexpr std::chrono::milliseconds kReleaseWait{200};

// The session lock if it comes free within limit, else an empty lock.
inline std::unique_lock<std::mutex> lockWithin(std::mutex& mutex, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    std::unique_lock<std::mutex> lock(mutex, std::try_to_lock);
    while (!lock.owns_lock() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        lock.try_lock();
    }
    return lock;
}

} // namespace xq
