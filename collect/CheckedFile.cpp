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

bool CheckedFile::Fail(const char* what, int error)
{
    m_strError = QString::fromLatin1(what) + QLatin1Char(' ') + m_strPath + QStringLiteral(": ")
        + QString::fromLocal8Bit(std::strerror(error));
    return false;
}

bool CheckedFile::Open(const QString& path)
{
    m_strPath = path;
    m_pFile = std::fopen(QFile::encodeName(path).constData(), "wb+");
    return m_pFile != nullptr || Fail("cannot open", errno);
}

bool CheckedFile::Write(const void* data, std::size_t length)
{
    if (m_pFile == nullptr)
        return Fail("not open:", EBADF);
    if (length == 0)
        return true;
    errno = 0;
    if (std::fwrite(data, 1, length, m_pFile) != length)
        return Fail("cannot write", errno != 0 ? errno : EIO);
    return true;
}

bool CheckedFile::Write(const char* text)
{
    return Write(text, std::strlen(text));
}

bool CheckedFile::Close()
{
    if (m_pFile == nullptr)
        return Fail("not open:", EBADF);
    std::FILE* const file = m_pFile;
    m_pFile = nullptr;
    errno = 0;
    const bool flushed = std::fflush(file) == 0;
    const int flushError = errno;
    // Buffered bytes that did not fit show only here.
    if (std::fclose(file) != 0 || !flushed)
        return Fail("cannot write", !flushed && flushError != 0 ? flushError : (errno != 0 ? errno : EIO));
    return true;
}

bool WriteWholeFile(const QString& path, const void* data, std::size_t length, QString* error)
{
    CheckedFile file;
    if (file.Open(path) && file.Write(data, length) && file.Close())
        return true;
    *error = file.Error();
    return false;
}

} // namespace collect
