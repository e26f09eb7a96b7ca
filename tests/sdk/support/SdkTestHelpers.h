// Shared helpers of the SDK integration tests.
#pragma once

#include "XQCameraControl.h"
#include "XqCodeReaderCtrl.h"

#include "Discovery.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace xqtest {

std::string text(const unsigned char* field, std::size_t size);
template <std::size_t N>
std::string text(const unsigned char (&field)[N])
{
    return text(field, N);
}

// The record with serial in a device list of either SDK, or null.
template <class List>
auto findDevice(const List& list, const std::string& serial) -> std::decay_t<decltype(list.pDeviceInfo[0])>
{
    for (unsigned int i = 0; i < list.nDeviceNum; ++i) {
        if (list.pDeviceInfo[i] && text(list.pDeviceInfo[i]->stGigE.chSerialNumber) == serial)
            return list.pDeviceInfo[i];
    }
    return nullptr;
}

// The record at a dotted IPv4 address in a device list of either SDK, or null.
template <class List>
auto findDeviceAt(const List& list, const char* ip) -> std::decay_t<decltype(list.pDeviceInfo[0])>
{
    const std::uint32_t address = xq::parseIpv4(ip);
    for (unsigned int i = 0; i < list.nDeviceNum; ++i) {
        if (list.pDeviceInfo[i] && list.pDeviceInfo[i]->stGigE.nCurrentIp == address)
            return list.pDeviceInfo[i];
    }
    return nullptr;
}

struct NodeSummary {
    unsigned int type = 0;
    unsigned int visibility = 0;
    unsigned int access = 0;
    bool childrenFailed = false;
};

// Walks the whole tree through the camera SDK, as the collection does.
std::map<std::string, NodeSummary> walkTree(XQ_HANDLE camera);

// A value as an independent Aravis client reads it: integers as they are,
// booleans as 0 or 1, enumerations as their value and available entries,
// floats as a number and strings as a text.
struct AravisValue {
    std::int64_t value = 0;
    std::vector<std::int64_t> entries;
    double number = 0;
    std::string text;
    bool operator==(const AravisValue& other) const
    {
        return value == other.value && entries == other.entries && number == other.number && text == other.text;
    }
};

// Values of the given integer, boolean, enumeration, float and string
// features as an independent Aravis client reads them; features whose value
// changes between two reads are left out.
std::map<std::string, AravisValue> stableAravisValues(const char* ip, const std::vector<std::string>& names);

// Access modes (XQ_AM_*) of the given nodes as an independent Aravis client
// evaluates them now: implemented, available, access and lock rules.
std::map<std::string, unsigned int> aravisAccessModes(const char* ip, const std::vector<std::string>& names);

// A private folder that is removed afterwards.
class TemporaryFolder final {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

std::string readFile(const std::filesystem::path& path);

// Runs a release at scope exit, so a failed assertion never leaves a device
// held for the next test; releasing twice is harmless by design.
template <class Release>
class ScopeExit final {
public:
    explicit ScopeExit(Release release) : m_release(std::move(release)) {}
    ~ScopeExit() { m_release(); }
    ScopeExit(const ScopeExit&) = delete;
    ScopeExit& operator=(const ScopeExit&) = delete;

private:
    Release m_release;
};

// Width and height of JPEG bytes, or false if they do not decode.
bool jpegSize(const unsigned char* data, std::size_t size, int& width, int& height,
              std::vector<std::uint8_t>* grey = nullptr);

} // namespace xqtest
