#include "CheckedFile.h"

#include <QFile>

#include <cerrno>
#include <cstring>

namespace collect {

CheckedFile::~CheckedFile()
{
    if (m_file != nullptr)
        std::fclose(m_file);
}

bool CheckedFile::fail(const char* what, int error)
{
    m_error = QString::fromLatin1(what) + QLatin1Char(' ') + m_path + QStringLiteral(": ")
        + QString::fromLocal8Bit(std::strerror(error));
    return false;
}

bool CheckedFile::open(const QString& path)
{
    m_path = path;
    m_file = std::fopen(QFile::encodeName(path).constData(), "wb+");
    return m_file != nullptr || fail("cannot open", errno);
}

bool CheckedFile::write(const void* data, std::size_t length)
{
    if (m_file == nullptr)
        return fail("not open:", EBADF);
    if (length == 0)
        return true;
    errno = 0;
    if (std::fwrite(data, 1, length, m_file) != length)
        return fail("cannot write", errno != 0 ? errno : EIO);
    return true;
}

bool CheckedFile::write(const char* text)
{
    return write(text, std::strlen(text));
}

bool CheckedFile::close()
{
    if (m_file == nullptr)
        return fail("not open:", EBADF);
    std::FILE* const file = m_file;
    m_file = nullptr;
    errno = 0;
    const bool flushed = std::fflush(file) == 0;
    const int flushError = errno;
    // Buffered bytes that did not fit show only here.
    if (std::fclose(file) != 0 || !flushed)
        return fail("cannot write", !flushed && flushError != 0 ? flushError : (errno != 0 ? errno : EIO));
    return true;
}

bool writeWholeFile(const QString& path, const void* data, std::size_t length, QString* error)
{
    CheckedFile file;
    if (file.open(path) && file.write(data, length) && file.close())
        return true;
    *error = file.error();
    return false;
}

} // namespace collect
