#include "CheckedFile.h"

#include <QFile>

#include <cerrno>
#include <cstring>

namespace collect {

CheckedFile::~CheckedFile()
{
    if (m_pFile != nullptr)
        std::fclose(m_pFile);
}

bool CheckedFile::fail(const char* what, int error)
{
    m_strError = QString::fromLatin1(what) + QLatin1Char(' ') + m_strPath + QStringLiteral(": ")
        + QString::fromLocal8Bit(std::strerror(error));
    return false;
}

bool CheckedFile::open(const QString& path)
{
    m_strPath = path;
    m_pFile = std::fopen(QFile::encodeName(path).constData(), "wb+");
    return m_pFile != nullptr || fail("cannot open", errno);
}

bool CheckedFile::write(const void* data, std::size_t length)
{
    if (m_pFile == nullptr)
        return fail("not open:", EBADF);
    if (length == 0)
        return true;
    errno = 0;
    if (std::fwrite(data, 1, length, m_pFile) != length)
        return fail("cannot write", errno != 0 ? errno : EIO);
    return true;
}

bool CheckedFile::write(const char* text)
{
    return write(text, std::strlen(text));
}

bool CheckedFile::close()
{
    if (m_pFile == nullptr)
        return fail("not open:", EBADF);
    std::FILE* const file = m_pFile;
    m_pFile = nullptr;
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
