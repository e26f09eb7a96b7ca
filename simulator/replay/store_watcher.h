#pragma once
// Notices changes to a virtual camera store with inotify. The tool's
// settings class replaces VirtualCameraConfig.ini by renaming a new file
// over it, and "Add" copies a camera's files after writing its group, so
// the store folder, its Cameras folder and every camera folder (with its
// Jpg folder) are watched for names that appear, vanish or finish being
// written. While the store does not exist, its nearest existing parent is
// watched instead, so that its creation is noticed.

#include <string>

namespace quorvex::sim {

class StoreWatcher final {
public:
    explicit StoreWatcher(std::string storeDirectory);
    ~StoreWatcher();
    StoreWatcher(const StoreWatcher&) = delete;
    StoreWatcher& operator=(const StoreWatcher&) = delete;

    // Sets the watches up again for the store as it is now. Call before
    // reading the store, so that no change after the read goes unnoticed.
    // False with a message when inotify is unavailable.
    bool rearm(std::string& error);
    // The descriptor to poll for input; -1 when not armed.
    int fd() const { return m_fd; }
    // Reads all pending events; true if there was any.
    bool drain();

private:
    void close();

    std::string m_storeDirectory;
    int m_fd = -1;
};

} // namespace quorvex::sim
