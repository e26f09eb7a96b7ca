#pragma once
// Records the messages Qt's logger is given while it lives, so that a test
// can check what the code under test logged.

#include <QMutex>
#include <QMutexLocker>
#include <QString>
#include <QStringList>
#include <QtGlobal>

class MessageLog final {
public:
    MessageLog() { s_current = this; m_previous = qInstallMessageHandler(&MessageLog::record); }
    ~MessageLog() { qInstallMessageHandler(m_previous); s_current = nullptr; }
    MessageLog(const MessageLog&) = delete;
    MessageLog& operator=(const MessageLog&) = delete;

    // How many recorded messages read exactly text.
    int count(const QString& text) const
    {
        QMutexLocker lock(&m_mutex);
        return static_cast<int>(m_messages.count(text));
    }

private:
    static void record(QtMsgType, const QMessageLogContext&, const QString& message)
    {
        if (MessageLog* log = s_current) {
            QMutexLocker lock(&log->m_mutex);
            log->m_messages << message;
        }
    }

    inline static MessageLog* s_current = nullptr;
    QtMessageHandler m_previous = nullptr;
    mutable QMutex m_mutex;
    QStringList m_messages;
};
