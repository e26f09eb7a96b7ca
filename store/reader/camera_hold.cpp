#include "camera_hold.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace quorvex::store {

namespace {

struct flock wholeFile(short type)
{
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = 0;
    lock.l_len = 0; // to the end, however the file grows
    return lock;
}

// Non-blocking, so a FIFO planted at the path cannot stall the caller.
int openForLock(const std::string& path)
{
    int fd = -1;
    do {
        fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    } while (fd < 0 && errno == EINTR);
    return fd;
}

} // namespace

CameraHold::~CameraHold()
{
    release();
}

CameraHold::CameraHold(CameraHold&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1))
    , m_path(std::move(other.m_path))
{
}

CameraHold& CameraHold::operator=(CameraHold&& other) noexcept
{
    if (this != &other) {
        release();
        m_fd = std::exchange(other.m_fd, -1);
        m_path = std::move(other.m_path);
    }
    return *this;
}

bool CameraHold::acquire(const std::string& registerFile, std::string& error)
{
    release();
    const int fd = openForLock(registerFile);
    if (fd < 0) {
        error = "cannot open " + registerFile + " to hold it: " + std::strerror(errno);
        return false;
    }
    struct flock lock = wholeFile(F_RDLCK);
    if (::fcntl(fd, F_OFD_SETLK, &lock) != 0) {
        error = "cannot lock " + registerFile + ": " + std::strerror(errno);
        ::close(fd);
        return false;
    }
    m_fd = fd;
    m_path = registerFile;
    return true;
}

void CameraHold::release()
{
    if (m_fd >= 0) {
        // Closing the only descriptor of this open file drops its lock.
        ::close(m_fd);
        m_fd = -1;
    }
    m_path.clear();
}

HoldState probeHold(const std::string& registerFile)
{
    const int fd = openForLock(registerFile);
    if (fd < 0)
        return errno == ENOENT || errno == ENOTDIR ? HoldState::NoFile : HoldState::Unknown;
    // Would a write lock conflict? Any holder's read lock makes it so.
    struct flock lock = wholeFile(F_WRLCK);
    const int result = ::fcntl(fd, F_OFD_GETLK, &lock);
    ::close(fd);
    if (result != 0)
        return HoldState::Unknown;
    return lock.l_type == F_UNLCK ? HoldState::NotHeld : HoldState::Held;
}

bool isHeldOpen(const std::string& registerFile)
{
    const HoldState state = probeHold(registerFile);
    return state == HoldState::Held || state == HoldState::Unknown;
}

} // namespace quorvex::store
