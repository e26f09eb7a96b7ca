#pragma once
// "Held open": while a client controls a virtual camera, the program that
// serves it keeps a shared lock on the camera's register file. The tool
// refuses to delete a camera whose register file is locked.
//
// The lock is an open-file-description read lock over the whole file
// (fcntl F_OFD_SETLK), so it belongs to the open file, not to the process:
// threads and several holders coexist, and a test in the same process sees
// it. Testing never takes a lock (F_OFD_GETLK), so a test cannot disturb a
// holder or another test. The lock ends when the holder releases it, closes
// the file or exits, crash included.

#include <string>

namespace quorvex::store {

class CameraHold final {
public:
    CameraHold() = default;
    ~CameraHold();
    CameraHold(CameraHold&& other) noexcept;
    CameraHold& operator=(CameraHold&& other) noexcept;
    CameraHold(const CameraHold&) = delete;
    CameraHold& operator=(const CameraHold&) = delete;

    // Takes the lock on registerFile, releasing any earlier one. False with
    // a message when the file cannot be opened or locked.
    bool acquire(const std::string& registerFile, std::string& error);
    void release();
    bool isHeld() const { return m_fd >= 0; }
    const std::string& path() const { return m_path; }

private:
    int m_fd = -1;
    std::string m_path;
};

enum class HoldState {
    NotHeld,
    Held,
    NoFile,  // nothing at that path: no client can hold it
    Unknown, // the file exists but could not be tested
};

HoldState probeHold(const std::string& registerFile);

// The tool's question: may this camera be deleted? Held and Unknown say no.
bool isHeldOpen(const std::string& registerFile);

} // namespace quorvex::store
