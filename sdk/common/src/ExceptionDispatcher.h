// Runs exception callbacks on an SDK thread of their own.
//
// Aravis reports a lost device on its heartbeat thread; a callback that
// releases the handle there would wait for that very thread. Callbacks are
// therefore queued and run here, where releasing anything is safe.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace xq {

class ExceptionDispatcher final {
public:
    static ExceptionDispatcher& instance();

    void post(std::function<void()> task);

    ExceptionDispatcher(const ExceptionDispatcher&) = delete;
    ExceptionDispatcher& operator=(const ExceptionDispatcher&) = delete;
    ~ExceptionDispatcher();

private:
    ExceptionDispatcher() = default;
    void run();

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<std::function<void()>> m_tasks;
    bool m_stopping = false;
    std::thread m_thread;
};

} // namespace xq
