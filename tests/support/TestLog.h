#pragma once
// Captures the Qt message log while alive, from any thread.

#include <QMutex>
#include <QString>
#include <QStringList>
#include <QVector>

struct LogLine final {
    QString file;
    QString function;
    int line = 0;
    QString message;
};

class TestLog final
{
public:
    TestLog();
    ~TestLog();
    TestLog(const TestLog&) = delete;
    TestLog& operator=(const TestLog&) = delete;

    QVector<LogLine> lines() const;
    QStringList messages() const;
    // Messages that start with prefix.
    QStringList messagesStartingWith(const QString& prefix) const;
    bool contains(const QString& message) const;

private:
    static void handler(QtMsgType type, const QMessageLogContext& context, const QString& message);

    mutable QMutex m_mutex;
    QVector<LogLine> m_lines;
    QtMessageHandler m_previous = nullptr;
};
