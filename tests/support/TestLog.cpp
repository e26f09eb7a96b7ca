#include "TestLog.h"

#include <QMutexLocker>

#include <atomic>

namespace {
std::atomic<TestLog*> g_active{nullptr};
}

TestLog::TestLog()
{
    g_active = this;
    m_previous = qInstallMessageHandler(&TestLog::handler);
}

TestLog::~TestLog()
{
    qInstallMessageHandler(m_previous);
    g_active = nullptr;
}

void TestLog::handler(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    TestLog* const log = g_active.load();
    if (log == nullptr)
        return;
    {
        QMutexLocker lock(&log->m_mutex);
        log->m_lines.append({QString::fromUtf8(context.file), QString::fromUtf8(context.function), context.line, message});
    }
    // Keep warnings and failures visible in the test's output.
    if (type != QtInfoMsg && log->m_previous != nullptr)
        log->m_previous(type, context, message);
}

QVector<LogLine> TestLog::lines() const
{
    QMutexLocker lock(&m_mutex);
    return m_lines;
}

QStringList TestLog::messages() const
{
    QStringList result;
    for (const LogLine& line : lines())
        result.append(line.message);
    return result;
}

QStringList TestLog::messagesStartingWith(const QString& prefix) const
{
    QStringList result;
    for (const LogLine& line : lines()) {
        if (line.message.startsWith(prefix))
            result.append(line.message);
    }
    return result;
}

bool TestLog::contains(const QString& message) const
{
    return messages().contains(message);
}
