#include "ExceptionDispatcher.h"

namespace xq {

ExceptionDispatcher& ExceptionDispatcher::instance()
{
    static ExceptionDispatcher dispatcher;
    return dispatcher;
}

void ExceptionDispatcher::post(std::function<void()> task)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_stopping)
        return;
    if (!m_thread.joinable())
        m_thread = std::thread([this] { run(); });
    m_tasks.push_back(std::move(task));
    m_wake.notify_one();
}

ExceptionDispatcher::~ExceptionDispatcher()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_one();
    if (m_thread.joinable())
        m_thread.join();
}

void ExceptionDispatcher::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_stopping || !m_tasks.empty(); });
        if (m_tasks.empty())
            return;
        auto task = std::move(m_tasks.front());
        m_tasks.pop_front();
        lock.unlock();
        task();
        lock.lock();
    }
}

} // namespace xq
