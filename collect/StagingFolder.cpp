#include "StagingFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace collect {

namespace {

constexpr int kCreateAttempts = 64;
constexpr int kCommitAttempts = 8;

std::atomic<unsigned int> g_nextJobNumber{0};

QString ErrnoText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

const QRegularExpression& StagingNamePattern()
{
    // Greedy: the model is everything up to the last ".collecting-".
    static const QRegularExpression pattern(QStringLiteral("^\\.(.*)\\.collecting-(\\d+)-(\\d+)$"));
    return pattern;
}

QString NewStagingName(const QString& modelName)
{
    // Concatenated, not arg(): the model name may hold "%1".
    return QLatin1Char('.') + modelName + QStringLiteral(".collecting-") + QString::number(::getpid())
        + QLatin1Char('-') + QString::number(++g_nextJobNumber);
}

// The same folder is still at path (no sweep removed it meanwhile).
bool SameFolder(int fd, const QByteArray& path)
{
    struct stat opened {};
    struct stat named {};
    return ::fstat(fd, &opened) == 0 && ::lstat(path.constData(), &named) == 0 && opened.st_dev == named.st_dev
        && opened.st_ino == named.st_ino;
}

// Opens and locks a folder without waiting; -1 when it is not a folder, has
// gone, or its lock is taken.
int LockFolder(const QByteArray& path, int* lockError)
{
    const int fd = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0) {
        *lockError = errno;
        return -1;
    }
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        *lockError = errno;
        ::close(fd);
        return -1;
    }
    if (!SameFolder(fd, path)) {
        *lockError = ENOENT;
        ::close(fd);
        return -1;
    }
    return fd;
}

void RemoveTree(const QString& path)
{
    std::error_code ignored;
    std::filesystem::remove_all(QFile::encodeName(path).toStdString(), ignored);
}

void SyncFolderEntry(const QString& folder)
{
    const int fd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
}

} // namespace

StagingFolder::StagingFolder(QString path, QString collectionFolder, int fd)
    : m_path(std::move(path))
    , m_collectionFolder(std::move(collectionFolder))
    , m_fd(fd)
{
}

std::unique_ptr<StagingFolder> StagingFolder::create(const QString& root, const QString& modelName, QString* error)
{
    for (int attempt = 0; attempt < kCreateAttempts; ++attempt) {
        const QString path = root + QLatin1Char('/') + NewStagingName(modelName);
        const QByteArray bytes = QFile::encodeName(path);
        if (::mkdir(bytes.constData(), 0755) != 0) {
            if (errno == EEXIST)
                continue; // a killed job of a process with our pid left it
            *error = QStringLiteral("cannot make ") + path + QStringLiteral(": ") + ErrnoText(errno);
            return nullptr;
        }
        int lockError = 0;
        const int fd = LockFolder(bytes, &lockError);
        if (fd >= 0)
            return std::unique_ptr<StagingFolder>(
                new StagingFolder(path, root + QLatin1Char('/') + modelName, fd));
        // A sweep took the fresh folder between mkdir and flock; it removes
        // it. Anything else means the file system cannot lock.
        if (lockError != EWOULDBLOCK && lockError != ENOENT && lockError != EAGAIN) {
            ::rmdir(bytes.constData());
            *error = QStringLiteral("cannot lock ") + path + QStringLiteral(": ") + ErrnoText(lockError);
            return nullptr;
        }
    }
    *error = QStringLiteral("no free staging folder name below ") + root;
    return nullptr;
}

StagingFolder::~StagingFolder()
{
    // Still holding the lock, so no sweep races the removal.
    if (!m_committed)
        RemoveTree(m_path);
    ::close(m_fd);
}

bool StagingFolder::commit(QString* error)
{
    // Everything written must be on disk before the rename makes it the
    // collection; a full or failing disk shows here at the latest.
    if (::syncfs(m_fd) != 0) {
        *error = QStringLiteral("cannot flush ") + m_path + QStringLiteral(": ") + ErrnoText(errno);
        return false;
    }
    const QByteArray staging = QFile::encodeName(m_path);
    const QByteArray target = QFile::encodeName(m_collectionFolder);
    for (int attempt = 0; attempt < kCommitAttempts; ++attempt) {
        if (::renameat2(AT_FDCWD, staging.constData(), AT_FDCWD, target.constData(), RENAME_EXCHANGE) == 0) {
            // The old collection now has the staging name; ours is in place.
            m_committed = true;
            RemoveTree(m_path);
            SyncFolderEntry(QFileInfo(m_collectionFolder).path());
            return true;
        }
        if (errno == ENOENT) {
            // No collection yet. Another job may make one meanwhile, then
            // exchange with that one.
            if (::renameat2(AT_FDCWD, staging.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) == 0) {
                m_committed = true;
                SyncFolderEntry(QFileInfo(m_collectionFolder).path());
                return true;
            }
            if (errno == EEXIST)
                continue;
        }
        if (errno == EINVAL || errno == ENOSYS)
            return commitWithoutExchange(error);
        break;
    }
    *error = QStringLiteral("cannot rename ") + m_path + QStringLiteral(" to ") + m_collectionFolder
        + QStringLiteral(": ") + ErrnoText(errno);
    return false;
}

// For file systems without RENAME_EXCHANGE: the old collection steps aside
// under a staging name (swept if the process dies before it is removed).
bool StagingFolder::commitWithoutExchange(QString* error)
{
    const QByteArray staging = QFile::encodeName(m_path);
    const QByteArray target = QFile::encodeName(m_collectionFolder);
    const QString modelName = QFileInfo(m_collectionFolder).fileName();
    const QString retired = QFileInfo(m_collectionFolder).path() + QLatin1Char('/') + NewStagingName(modelName);
    const QByteArray retiredBytes = QFile::encodeName(retired);
    const bool hadCollection = ::rename(target.constData(), retiredBytes.constData()) == 0;
    if (!hadCollection && errno != ENOENT) {
        *error = QStringLiteral("cannot move ") + m_collectionFolder + QStringLiteral(" aside: ") + ErrnoText(errno);
        return false;
    }
    if (::rename(staging.constData(), target.constData()) != 0) {
        *error = QStringLiteral("cannot rename ") + m_path + QStringLiteral(" to ") + m_collectionFolder
            + QStringLiteral(": ") + ErrnoText(errno);
        if (hadCollection)
            ::rename(retiredBytes.constData(), target.constData());
        return false;
    }
    m_committed = true;
    if (hadCollection)
        RemoveTree(retired);
    SyncFolderEntry(QFileInfo(m_collectionFolder).path());
    return true;
}

bool isStagingFolderName(const QString& name)
{
    return StagingNamePattern().match(name).hasMatch();
}

QStringList sweepAbandonedStagingFolders(const QString& root, const QString& modelName)
{
    QStringList removed;
    const QStringList names = QDir(root).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks);
    for (const QString& name : names) {
        const QRegularExpressionMatch match = StagingNamePattern().match(name);
        if (!match.hasMatch() || (!modelName.isNull() && match.captured(1) != modelName))
            continue;
        const QString path = root + QLatin1Char('/') + name;
        int lockError = 0;
        const int fd = LockFolder(QFile::encodeName(path), &lockError);
        if (fd < 0)
            continue; // a running job's, or gone
        RemoveTree(path);
        ::close(fd);
        removed << path;
    }
    return removed;
}

} // namespace collect
