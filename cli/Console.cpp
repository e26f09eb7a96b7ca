#include "Console.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

namespace cli {

namespace {

void WriteAll(int fd, const QByteArray& bytes)
{
    const char* data = bytes.constData();
    qsizetype left = bytes.size();
    while (left > 0) {
        const ssize_t written = ::write(fd, data, static_cast<size_t>(left));
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return; // a closed pipe: nobody is reading any more
        }
        data += written;
        left -= written;
    }
}

} // namespace

Console::Console(int outFd, int errFd)
    : m_outFd(outFd)
    , m_errFd(errFd)
    , m_outIsTerminal(::isatty(outFd) == 1)
{
}

void Console::out(const QString& text) const
{
    WriteAll(m_outFd, text.toUtf8());
}

void Console::err(const QString& text) const
{
    WriteAll(m_errFd, text.toUtf8());
}

void Console::json(const QJsonObject& document) const
{
    WriteAll(m_outFd, QJsonDocument(document).toJson(QJsonDocument::Compact) + '\n');
}

int Console::columns() const
{
    winsize size{};
    if (m_outIsTerminal && ::ioctl(m_outFd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    return 80;
}

int takeStandardOutput()
{
    const int results = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (results < 0)
        return STDOUT_FILENO;
    const int nullFd = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nullFd < 0) {
        ::close(results);
        return STDOUT_FILENO;
    }
    ::dup2(nullFd, STDOUT_FILENO);
    ::close(nullFd);
    return results;
}

QString printable(const QString& text)
{
    QString printable;
    printable.reserve(text.size());
    for (const QChar character : text) {
        const ushort code = character.unicode();
        if (code < 0x20 || code == 0x7F || (code >= 0x80 && code < 0xA0))
            printable += QStringLiteral("\\x%1").arg(code, 2, 16, QLatin1Char('0'));
        else
            printable += character;
    }
    return printable;
}

} // namespace cli
