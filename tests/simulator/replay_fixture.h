#pragma once
// Virtual cameras written into a temporary store the way the tool and a
// collection leave them: a configuration group, the demo reader's GenICam
// description, register dumps with chosen first reads, and JPEG frames.

#include "demo/demo_code_reader.h"

#include <turbojpeg.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <unistd.h>
#include <vector>

namespace quorvex::sim::test {

namespace fs = std::filesystem;

inline void writeFile(const fs::path& path, const std::string& bytes)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

inline std::string readFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// A grey JPEG whose pixel (x, y) is (x + 3 * y + shade) mod 256.
inline std::string greyJpeg(int width, int height, int shade)
{
    std::vector<unsigned char> pixels(static_cast<std::size_t>(width) * height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            pixels[static_cast<std::size_t>(y) * width + x] = static_cast<unsigned char>((x + 3 * y + shade) % 256);
    tjhandle handle = tjInitCompress();
    unsigned char* jpeg = nullptr;
    unsigned long size = 0;
    tjCompress2(handle, pixels.data(), width, width, height, TJPF_GRAY, &jpeg, &size, TJSAMP_GRAY, 100, 0);
    std::string bytes(reinterpret_cast<const char*>(jpeg), size);
    tjFree(jpeg);
    tjDestroy(handle);
    return bytes;
}

inline std::string hex(const std::vector<std::uint8_t>& bytes)
{
    std::string text;
    char digits[3];
    for (const std::uint8_t byte : bytes) {
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

inline std::vector<std::uint8_t> big32(std::uint32_t value)
{
    return {static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
            static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
}

// A double as a big-endian float register holds it.
inline std::vector<std::uint8_t> big64(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    std::vector<std::uint8_t> bytes(8);
    for (int i = 7; i >= 0; --i, bits >>= 8)
        bytes[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(bits);
    return bytes;
}

// One recorded access of a dump.
struct DumpEvent final {
    char kind = 'R';
    std::uint64_t epoch = 0;
    std::uint32_t address = 0;
    std::vector<std::uint8_t> bytes;
};

inline std::string dumpText(const std::string& content, const std::vector<DumpEvent>& events)
{
    std::string text = "QUORVEX-REGDUMP 1\ncontent " + content + "\nmodel QVX-ID2040M\ndevice test\nevents " +
                       std::to_string(events.size()) + "\n";
    char address[16];
    for (const DumpEvent& event : events) {
        std::snprintf(address, sizeof address, "0x%08x", event.address);
        text += std::string(1, event.kind) + " " + std::to_string(event.epoch) + " " + address + " " +
                std::to_string(event.bytes.size()) + " " + hex(event.bytes) + "\n";
    }
    return text + "last 0\nend\n";
}

// The demo reader's register of a feature.
inline std::uint32_t demoAddress(const std::string& feature)
{
    static const DemoCodeReader reader(DemoCodeReader::demoIdentity(0));
    return reader.features().find(feature)->address;
}

struct CameraFiles final {
    std::string model = "QVX-ID2040M";
    std::uint32_t width = 64;
    std::uint32_t height = 48;
    bool colour = false;
    int images = 3;
    std::string manufacturer = "Quorvex Demo"; // as the device said it; empty: not recorded
};

// Writes Cameras/<group>/ with a description, dumps and images.
inline void writeCamera(const fs::path& store, const std::string& group, const CameraFiles& files = {})
{
    const fs::path folder = store / "Cameras" / group;
    static const DemoCodeReader reader(DemoCodeReader::demoIdentity(0));
    writeFile(folder / (files.model + ".xml"), std::string(reader.genicamXml()));
    // Width read twice: the first read is the one replayed; a later write
    // and read do not change the start value.
    std::vector<DumpEvent> numbers{
        {'R', 0, demoAddress("Width"), big32(files.width)},
        {'R', 0, demoAddress("Height"), big32(files.height)},
        {'R', 0, demoAddress("PixelFormat"), big32(files.colour ? gvsp::kPixelRgb8 : gvsp::kPixelMono8)},
        {'R', 0, demoAddress("PayloadSize"), big32(files.width * files.height * (files.colour ? 3 : 1))},
        {'R', 0, demoAddress("ResultingFrameRate"), big64(60.0)},
        {'R', 0, demoAddress("TriggerMode"), big32(0)},
        {'R', 0, demoAddress("TriggerSource"), big32(7)},
        {'R', 0, gvcp::reg::kStreamPacketSize, big32(1400)},
        {'W', 1, demoAddress("Width"), big32(files.width * 2)},
        {'R', 1, demoAddress("Width"), big32(files.width * 2)},
    };
    std::vector<DumpEvent> strings;
    if (!files.manufacturer.empty()) {
        std::vector<std::uint8_t> field(32, 0);
        std::copy(files.manufacturer.begin(), files.manufacturer.end(), field.begin());
        strings.push_back({'R', 0, gvcp::reg::kManufacturerName, field});
    }
    writeFile(folder / (files.model + "_regfile.dat"), dumpText("numeric", numbers));
    writeFile(folder / (files.model + "_strRegFile.dat"), dumpText("string", strings));
    for (int n = 1; n <= files.images; ++n)
        writeFile(folder / "Jpg" / (std::to_string(n) + ".jpg"),
                  greyJpeg(static_cast<int>(files.width), static_cast<int>(files.height), 40 * n));
    writeFile(folder / "ImportInformation.csv", "TriggerIndex,FrameNum,PicPath\n");
}

// The group the tool writes for a camera (keys as its settings class sorts them).
inline std::string configGroup(const std::string& group, const std::string& model = "QVX-ID2040M",
                               const std::string& mac = "3FA1007C")
{
    return "[" + group + "]\nbIsConnect=0\nchDeviceVersion=V3.2.1.R 240315\nchManufacturerName=GEV\n"
           "chManufacturerSpecificInfo=GEV\nchModelName=" + model + "\nchSerialNumber=" + group +
           "\nchUserDefinedName=\nnCurrentIp=a40347c\nnCurrentSubNetMask=ffffff00\nnDefultGateWay=a4034fe\n"
           "nIpCfgCurrent=80000005\nnIpCfgOption=80000007\nnMacAddrHigh=" + mac + "\nnMacAddrLow=" + mac +
           "\nnMajorVer=2\nnMinorVer=0\nnNetExport=a403418\nnTLayerType=1\n\n";
}

// Replaces the configuration file by renaming a new one over it, as Qt does.
inline void writeConfig(const fs::path& store, const std::vector<std::string>& groups)
{
    std::string text = "[Global]\nTriggerIntervalTime=2000\nVirtualMode=1\n\n";
    for (const std::string& group : groups)
        text += group;
    const fs::path temporary = store / "VirtualCameraConfig.ini.tmp";
    writeFile(temporary, text);
    fs::rename(temporary, store / "VirtualCameraConfig.ini");
}

// A fresh folder below the test's home.
inline fs::path temporaryStore(const std::string& name)
{
    const char* home = std::getenv("QUORVEX_TEST_HOME");
    const fs::path folder = fs::path(home ? home : "/tmp") / ("store-" + name + "-" + std::to_string(::getpid())) /
                            "VirtualCamera";
    fs::remove_all(folder.parent_path());
    fs::create_directories(folder);
    return folder;
}

} // namespace quorvex::sim::test
