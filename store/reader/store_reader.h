#pragma once
// Lists the virtual cameras of a store for programs that replay them: each
// camera group of VirtualCameraConfig.ini with its identity and the paths
// of its collected files. A group that is malformed, or whose files are
// missing, is left out with a problem saying why; the others are listed.
// docs/virtual-camera-store.md describes the layout and the rules.

#include <array>

#include "XqFileNames.h"
#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::store {

inline constexpr const char* kConfigFileName = xq::names::kStoreConfigFile;
inline constexpr const char* kCamerasFolderName = xq::names::kStoreCamerasFolder;
inline constexpr const char* kGlobalGroup = "Global";

struct StoreCamera final {
    // Identity. The serial number is the group name.
    std::string group;
    std::string modelName;
    std::string deviceVersion;
    std::string manufacturerName;
    std::string manufacturerSpecificInfo;
    std::string userDefinedName;
    std::uint32_t macHigh = 0; // as written: both keys carry the same 8 digits
    std::uint32_t macLow = 0;
    // Bytes 0-1 from the low 16 bits of macHigh, bytes 2-5 from macLow.
    std::array<std::uint8_t, 6> mac{};
    unsigned majorVersion = 0;
    unsigned minorVersion = 0;
    // The addresses the file states. Informational only: they name no
    // interface of this machine, so a server must not listen on or
    // advertise them.
    std::uint32_t configuredIp = 0;
    std::uint32_t configuredSubnetMask = 0;
    std::uint32_t configuredGateway = 0;

    // Files, all inside folder.
    std::string folder;             // <store>/Cameras/<group>
    std::string genicamXml;         // <model>.xml
    std::string registerFile;       // <model>_regfile.dat, the one a holder locks
    std::string stringRegisterFile; // <model>_strRegFile.dat
    std::string imageFolder;        // Jpg
    std::string importInformation;  // ImportInformation.csv, empty when absent
    std::vector<std::string> images; // Jpg/<n>.jpg by frame number, then other .jpg by name
};

struct StoreProblem final {
    std::string group; // empty for problems of the whole file
    std::string message;
    // One line for a log: "camera Vir1 skipped: ..." or "store: ...".
    std::string describe() const;
};

struct StoreListing final {
    std::string storeDirectory;
    std::string configFile;
    bool configFileFound = false;
    std::vector<StoreCamera> cameras; // by group name as text
    std::vector<StoreProblem> problems;
};

// The store the suite's tools share: $QUORVEX_SYSTEM_TEMP, else
// $XDG_CACHE_HOME/ZELTA, else ~/.cache/ZELTA; then "/VirtualCamera".
std::string defaultStoreDirectory();

StoreListing readStore(const std::string& storeDirectory);

// "a4034fe" -> 0x0A4034FE. Bare hexadecimal, 1 to 8 digits.
bool parseHexWord(const std::string& text, std::uint32_t& value);

} // namespace quorvex::store
