#include "store_watcher.h"

#include "XqFileNames.h"

#include "store_reader.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/inotify.h>
#include <unistd.h>

namespace quorvex::sim {

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t kFolderEvents = IN_CREATE | IN_DELETE | IN_MOVED_TO | IN_MOVED_FROM | IN_CLOSE_WRITE |
                                        IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
// A hand-made store could hold thousands of folders; watches are a limited resource.
constexpr int kMaxWatches = 4096;

bool isFolder(const fs::path& path)
{
    std::error_code error;
    return fs::is_directory(fs::symlink_status(path, error)) && !error;
}

} // namespace

StoreWatcher::StoreWatcher(std::string storeDirectory) : m_storeDirectory(std::move(storeDirectory)) {}

StoreWatcher::~StoreWatcher()
{
    close();
}

void StoreWatcher::close()
{
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
}

bool StoreWatcher::rearm(std::string& error)
{
    // A fresh descriptor drops watches on folders that are gone or moved.
    close();
    m_fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_fd < 0) {
        error = std::string("cannot watch the store: ") + std::strerror(errno);
        return false;
    }
    const fs::path store(m_storeDirectory);
    if (!isFolder(store)) {
        fs::path parent = store.parent_path();
        while (!parent.empty() && parent != parent.root_path() && !isFolder(parent))
            parent = parent.parent_path();
        if (!parent.empty())
            ::inotify_add_watch(m_fd, parent.c_str(), kFolderEvents);
        return true;
    }
    int watches = 0;
    const auto watch = [&](const fs::path& folder) {
        if (watches < kMaxWatches && ::inotify_add_watch(m_fd, folder.c_str(), kFolderEvents) >= 0)
            ++watches;
    };
    watch(store);
    const fs::path cameras = store / store::kCamerasFolderName;
    if (!isFolder(cameras))
        return true;
    watch(cameras);
    std::error_code status;
    for (fs::directory_iterator it(cameras, status), end; !status && it != end; it.increment(status)) {
        if (!isFolder(it->path()))
            continue;
        watch(it->path());
        if (isFolder(it->path() / xq::names::kImageFolder))
            watch(it->path() / xq::names::kImageFolder);
    }
    return true;
}

bool StoreWatcher::drain()
{
    if (m_fd < 0)
        return false;
    bool any = false;
    alignas(inotify_event) char buffer[8192];
    for (;;) {
        const ssize_t size = ::read(m_fd, buffer, sizeof buffer);
        if (size <= 0)
            break;
        any = true;
    }
    return any;
}

} // namespace quorvex::sim
