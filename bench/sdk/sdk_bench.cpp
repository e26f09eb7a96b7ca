// Prints, for one simulated code reader: register reads per second through
// XQ_CC_GetIntValue and through raw arv_device_read_register, the time of
// one full walk of the feature tree, and the grab+JPEG+decode cycle of the
// code-reader SDK beside its parts measured one by one.
//
// Run it inside a private network namespace, for example
//   tests/netns-run build/bin/sdk_bench
// It starts the simulator itself ($QUORVEX_SIMULATOR or the built one).
#include "CodeDecoder.h"
#include "DeviceProcess.h"
#include "FrameImage.h"
#include "JpegEncoder.h"
#include "XQCameraControl.h"
#include "XqCodeReaderCtrl.h"

#include <arv.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

// CPU time of this process, which scheduling noise on a shared machine
// does not inflate the way it does wall time.
double processCpuMicroseconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return now.tv_sec * 1e6 + now.tv_nsec / 1e3;
}

double g_rawCpuPerRead = 0;
double g_sdkCpuPerRead = 0;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

constexpr char kIp[] = "127.0.0.2";
constexpr int kReadsPerRound = 2000;
constexpr int kRounds = 9;
constexpr int kCycles = 20;
constexpr int kCycleRounds = 5;

const XQ_CC_DEVICE_INFO* findCamera(XQ_CC_DEVICE_INFO_LIST& list)
{
    if (XQ_CC_EnumDevices(&list, XQ_TLAYER_GIGE) != XQ_OK)
        return nullptr;
    for (unsigned int i = 0; i < list.nDeviceNum; ++i)
        if (list.pDeviceInfo[i] && list.pDeviceInfo[i]->stGigE.nCurrentIp == 0x7F000002u)
            return list.pDeviceInfo[i];
    return nullptr;
}

const XQ_CODEREADER_DEVICE_INFO* findReader(XQ_CODEREADER_DEVICE_INFO_LIST& list)
{
    if (XQ_CODEREADER_EnumDevices(&list, XQ_TLAYER_GIGE) != XQ_OK)
        return nullptr;
    for (unsigned int i = 0; i < list.nDeviceNum; ++i)
        if (list.pDeviceInfo[i] && list.pDeviceInfo[i]->stGigE.nCurrentIp == 0x7F000002u)
            return list.pDeviceInfo[i];
    return nullptr;
}

// Raw Aravis: the register behind Width, read with READREG.
double rawReadsPerSecond()
{
    ArvDevice* device = arv_open_device(kIp, nullptr);
    if (!device)
        return 0;
    ArvGc* genicam = arv_device_get_genicam(device);
    ArvGcNode* node = arv_gc_get_node(genicam, "WidthReg");
    if (!node || !ARV_IS_GC_REGISTER(node)) {
        g_object_unref(device);
        return 0;
    }
    const guint64 address = arv_gc_register_get_address(ARV_GC_REGISTER(node), nullptr);
    guint32 value = 0;
    const double cpu = processCpuMicroseconds();
    const auto start = Clock::now();
    for (int i = 0; i < kReadsPerRound; ++i)
        arv_device_read_register(device, address, &value, nullptr);
    const double seconds = millisecondsSince(start) / 1000.0;
    g_rawCpuPerRead += (processCpuMicroseconds() - cpu) / kReadsPerRound / kRounds;
    g_object_unref(device);
    return kReadsPerRound / seconds;
}

double sdkReadsPerSecond(const XQ_CC_DEVICE_INFO* record)
{
    XQ_HANDLE camera = nullptr;
    if (XQ_CC_CreateHandle(&camera, record) != XQ_OK || XQ_CC_OpenDevice(camera, XQ_ACCESS_EXCLUSIVE, 0) != XQ_OK) {
        XQ_CC_DestroyHandle(camera);
        return 0;
    }
    std::int64_t value = 0;
    const double cpu = processCpuMicroseconds();
    const auto start = Clock::now();
    for (int i = 0; i < kReadsPerRound; ++i)
        XQ_CC_GetIntValue(camera, "Width", &value);
    const double seconds = millisecondsSince(start) / 1000.0;
    g_sdkCpuPerRead += (processCpuMicroseconds() - cpu) / kReadsPerRound / kRounds;
    XQ_CC_DestroyHandle(camera);
    return kReadsPerRound / seconds;
}

// The collection's walk: every node, its access mode, and a read of every
// readable number, boolean, string and enumeration.
int walk(XQ_HANDLE camera, const XQ_XML_NODE_FEATURE& node)
{
    int reads = 0;
    unsigned int mode = 0;
    XQ_XML_GetNodeAccessMode(camera, node.chName, &mode);
    if ((mode == XQ_AM_RO || mode == XQ_AM_RW || mode == XQ_AM_WO) && node.nVisibility <= XQ_VISIBILITY_GURU) {
        std::int64_t integer = 0;
        double number = 0;
        bool flag = false;
        XQ_CC_STRINGVALUE text{};
        XQ_ENUMVALUE enumeration{};
        switch (node.nInterfaceType) {
        case XQ_IFT_IINTEGER: reads += XQ_CC_GetIntValue(camera, node.chName, &integer) == XQ_OK; break;
        case XQ_IFT_IFLOAT: reads += XQ_CC_GetFloatValue(camera, node.chName, &number) == XQ_OK; break;
        case XQ_IFT_IBOOLEAN: reads += XQ_CC_GetBoolValue(camera, node.chName, &flag) == XQ_OK; break;
        case XQ_IFT_ISTRING: reads += XQ_CC_GetStringValue(camera, node.chName, &text) == XQ_OK; break;
        case XQ_IFT_IENUMERATION: reads += XQ_CC_GetEnumValue(camera, node.chName, &enumeration) == XQ_OK; break;
        default: break;
        }
    }
    const auto children = std::make_unique<XQ_XML_NODES_LIST>();
    if (XQ_XML_GetChildren(camera, &node, children.get()) == XQ_OK)
        for (unsigned int i = 0; i < children->nNodeNum; ++i)
            reads += walk(camera, children->stNodes[i]);
    return reads;
}

void benchWalk(const XQ_CC_DEVICE_INFO* record)
{
    XQ_HANDLE camera = nullptr;
    if (XQ_CC_CreateHandle(&camera, record) != XQ_OK || XQ_CC_OpenDevice(camera, XQ_ACCESS_EXCLUSIVE, 0) != XQ_OK) {
        std::printf("walk: cannot open the device\n");
        return;
    }
    XQ_XML_NODE_FEATURE root{};
    XQ_XML_GetRootNode(camera, &root);
    double best = 1e9;
    double total = 0;
    int reads = 0;
    for (int round = 0; round < kRounds; ++round) {
        const auto start = Clock::now();
        reads = walk(camera, root);
        const double ms = millisecondsSince(start);
        best = std::min(best, ms);
        total += ms;
    }
    std::printf("full walk of the demo tree: %.1f ms mean, %.1f ms best (%d feature reads per walk)\n",
                total / kRounds, best, reads);
    XQ_CC_DestroyHandle(camera);
}

// Grab alone with raw Aravis, keeping every frame for the other parts.
double rawGrabMilliseconds(std::vector<std::vector<std::uint8_t>>& frames, int& width, int& height)
{
    ArvDevice* device = arv_open_device(kIp, nullptr);
    if (!device)
        return 0;
    arv_gv_device_set_stream_options(ARV_GV_DEVICE(device), ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
    arv_gv_device_set_packet_size_adjustment(ARV_GV_DEVICE(device), ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
    arv_device_set_string_feature_value(device, "TriggerMode", "On", nullptr);
    arv_device_set_string_feature_value(device, "TriggerSource", "Software", nullptr);
    const gint64 payload = arv_device_get_integer_feature_value(device, "PayloadSize", nullptr);
    ArvStream* stream = arv_device_create_stream(device, nullptr, nullptr, nullptr);
    double total = 0;
    int grabbed = 0;
    if (stream) {
        g_object_set(stream, "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_AUTO, nullptr);
        for (int i = 0; i < 4; ++i)
            arv_stream_push_buffer(stream, arv_buffer_new_allocate(static_cast<size_t>(payload)));
        arv_device_execute_command(device, "AcquisitionStart", nullptr);
        for (int i = 0; i < kCycles + 1; ++i) {
            const auto start = Clock::now();
            arv_device_execute_command(device, "TriggerSoftware", nullptr);
            ArvBuffer* buffer = arv_stream_timeout_pop_buffer(stream, 2000000);
            const double ms = millisecondsSince(start);
            if (!buffer)
                continue;
            if (arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS) {
                if (i > 0) { // the first frame also sets the socket buffer up
                    total += ms;
                    ++grabbed;
                }
                size_t size = 0;
                const auto* data = static_cast<const std::uint8_t*>(arv_buffer_get_image_data(buffer, &size));
                frames.emplace_back(data, data + size);
                width = arv_buffer_get_image_width(buffer);
                height = arv_buffer_get_image_height(buffer);
            }
            arv_stream_push_buffer(stream, buffer);
        }
        arv_device_execute_command(device, "AcquisitionStop", nullptr);
        g_object_unref(stream);
    }
    g_object_unref(device);
    return grabbed ? total / grabbed : 0;
}

double sdkCycleMilliseconds(const XQ_CODEREADER_DEVICE_INFO* record, unsigned int& codes)
{
    XQ_HANDLE reader = nullptr;
    if (XQ_CODEREADER_CreateHandle(&reader, record) != XQ_OK || XQ_CODEREADER_OpenDevice(reader) != XQ_OK) {
        XQ_CODEREADER_DestroyHandle(reader);
        return 0;
    }
    XQ_CODEREADER_SetEnumValue(reader, "TriggerMode", 1);
    XQ_CODEREADER_SetEnumValue(reader, "TriggerSource", 7);
    XQ_CODEREADER_StartGrabbing(reader);
    auto info = std::make_unique<XQ_CODEREADER_FRAME_INFO>();
    double total = 0;
    int cycles = 0;
    codes = 0;
    for (int i = 0; i < kCycles + 1; ++i) {
        const auto start = Clock::now();
        XQ_CODEREADER_SetCommandValue(reader, "TriggerSoftware");
        unsigned char* data = nullptr;
        const int result = XQ_CODEREADER_GetOneFrameTimeout(reader, &data, info.get(), 2000);
        const double ms = millisecondsSince(start);
        if (result == XQ_OK && i > 0) {
            total += ms;
            ++cycles;
            codes += info->nCodeNum;
        }
    }
    XQ_CODEREADER_DestroyHandle(reader);
    return cycles ? total / cycles : 0;
}

// Mean time of work(image) over every frame once: like the cycle, each
// frame is new to the caches and shows its own codes.
template <class Work>
double meanOverFrames(const std::vector<xq::FrameImage>& images, Work&& work)
{
    const auto start = Clock::now();
    for (const xq::FrameImage& image : images)
        work(image);
    return millisecondsSince(start) / images.size();
}

struct CycleRound {
    double grab = 0;
    double jpeg = 0;
    double decode = 0;
    double decodeHarder = 0;
    double cycle = 0;
    double codesPerFrame = 0;
    double cycleCodesPerFrame = 0;
    std::size_t jpegBytes = 0;
    int width = 0;
    int height = 0;
    double parts() const { return grab + jpeg + decode; }
    double ratio() const { return cycle / parts(); }
};

// One round: raw grabs, then the SDK's cycles, then JPEG and decoding of
// each grabbed frame once.
std::optional<CycleRound> measureCycleRound(const XQ_CODEREADER_DEVICE_INFO* reader)
{
    CycleRound round;
    std::vector<std::vector<std::uint8_t>> frames;
    round.grab = rawGrabMilliseconds(frames, round.width, round.height);
    unsigned int codes = 0;
    round.cycle = sdkCycleMilliseconds(reader, codes);
    round.cycleCodesPerFrame = static_cast<double>(codes) / kCycles;
    if (frames.empty() || round.width <= 0 || round.height <= 0 || round.cycle <= 0)
        return std::nullopt;
    std::vector<std::vector<std::uint8_t>> scratch(frames.size());
    std::vector<xq::FrameImage> images(frames.size());
    for (std::size_t i = 0; i < frames.size(); ++i)
        xq::toFrameImage(ARV_PIXEL_FORMAT_MONO_8, round.width, round.height, frames[i].data(), frames[i].size(),
                         scratch[i], images[i]);
    xq::JpegEncoder encoder;
    round.jpeg = meanOverFrames(images, [&](const xq::FrameImage& image) { encoder.encode(image, 90); });
    round.jpegBytes = encoder.size();
    std::size_t found = 0;
    round.decode = meanOverFrames(images, [&](const xq::FrameImage& image) {
        found += xq::decodeCodes(image, xq::DecodeSettings{}).size();
    });
    round.codesPerFrame = static_cast<double>(found) / images.size();
    xq::DecodeSettings harder;
    harder.tryHarder = true;
    round.decodeHarder = meanOverFrames(images, [&](const xq::FrameImage& image) { xq::decodeCodes(image, harder); });
    return round;
}

} // namespace

int main()
{
    const char* program = std::getenv("QUORVEX_SIMULATOR");
#ifdef QUORVEX_SIMULATOR_PATH
    if (!program || !*program)
        program = QUORVEX_SIMULATOR_PATH;
#endif
    if (!program || !*program) {
        std::fprintf(stderr, "sdk_bench: quorvex-simulator not found; set QUORVEX_SIMULATOR\n");
        return 2;
    }
    ::setenv("QUORVEX_SIMULATOR", program, 1);
    ::setenv("QUORVEX_SDK_DUMP_DIR", "/tmp", 0);
    xqtest::DeviceProcess simulator;
    std::string error;
    if (!xqtest::startSimulator(simulator, 1, error)) {
        std::fprintf(stderr, "sdk_bench: %s (run inside a private network namespace: tests/netns-run)\n", error.c_str());
        return 2;
    }
    XQ_CC_DEVICE_INFO_LIST cameras{};
    XQ_CODEREADER_DEVICE_INFO_LIST readers{};
    const XQ_CC_DEVICE_INFO* camera = findCamera(cameras);
    const XQ_CODEREADER_DEVICE_INFO* reader = findReader(readers);
    if (!camera || !reader) {
        std::fprintf(stderr, "sdk_bench: the simulated device was not found\n");
        return 2;
    }
    std::printf("device: %s at %s\n", reinterpret_cast<const char*>(camera->stGigE.chModelName), kIp);

    // Rounds alternate so that both paths see the same machine load.
    // The machine is shared, so the figure is the median of paired rounds.
    std::vector<double> raws;
    std::vector<double> sdks;
    std::vector<double> ratios;
    for (int round = 0; round < kRounds; ++round) {
        raws.push_back(rawReadsPerSecond());
        sdks.push_back(sdkReadsPerSecond(camera));
        ratios.push_back(raws.back() > 0 ? sdks.back() / raws.back() : 0.0);
    }
    const auto median = [](std::vector<double> values) {
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    };
    std::printf("register reads/s (median of %d rounds of %d): XQ_CC_GetIntValue %.0f, arv_device_read_register %.0f, "
                "ratio %.3f\n",
                kRounds, kReadsPerRound, median(sdks), median(raws), median(ratios));
    std::printf("  client CPU per read: XQ_CC_GetIntValue %.1f us, arv_device_read_register %.1f us\n",
                g_sdkCpuPerRead, g_rawCpuPerRead);

    benchWalk(camera);

    // The grab and the cycle use the device in turn, so their rounds
    // alternate; the round with the median ratio is reported.
    std::vector<CycleRound> rounds;
    for (int round = 0; round < kCycleRounds; ++round) {
        const std::optional<CycleRound> measured = measureCycleRound(reader);
        if (!measured) {
            std::printf("grab: no frame\n");
            return 1;
        }
        rounds.push_back(*measured);
    }
    std::vector<CycleRound> byRatio = rounds;
    std::sort(byRatio.begin(), byRatio.end(),
              [](const CycleRound& a, const CycleRound& b) { return a.ratio() < b.ratio(); });
    const CycleRound& middle = byRatio[byRatio.size() / 2];

    std::printf("frames %dx%d Mono8, %d per part in each of %d rounds; ratio of each round:", middle.width,
                middle.height, kCycles, kCycleRounds);
    for (const CycleRound& round : rounds)
        std::printf(" %.2f", round.ratio());
    std::printf("\nthe median round:\n");
    std::printf("  grab alone (trigger + frame, raw Aravis): %.1f ms\n", middle.grab);
    std::printf("  JPEG alone (quality 90):                 %.1f ms (%zu bytes)\n", middle.jpeg, middle.jpegBytes);
    std::printf("  decode alone (%.1f codes per frame):     %.1f ms (try harder: %.1f ms)\n", middle.codesPerFrame,
                middle.decode, middle.decodeHarder);
    std::printf("  sum of parts:                            %.1f ms\n", middle.parts());
    std::printf("  XQ_CODEREADER trigger+GetOneFrameTimeout: %.1f ms per cycle (%.1f codes per frame), ratio %.2f\n",
                middle.cycle, middle.cycleCodesPerFrame, middle.ratio());
    return 0;
}
