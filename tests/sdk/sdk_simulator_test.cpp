// Both SDKs against the project's own simulator and its demo code readers,
// on loopback inside the test's private network namespace.
#include "DeviceProcess.h"
#include "SuiteDevice.h"
#include "SdkTestHelpers.h"
#include "SharedCameraChecks.h"

#define ZX_USE_UTF8
#include <ZXing/ReadBarcode.h>
#include <arv.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <future>
#include <mutex>
#include <set>
#include <sstream>
#include <thread>

namespace {

using namespace std::chrono_literals;
using xqtest::AravisClient;
using xqtest::text;

// Identity of demo reader 0 as the simulator serves it.
constexpr char kIp[] = "127.0.0.2";
constexpr char kSerial[] = "QD24A10000";
constexpr char kModel[] = "QVX-ID2040M";
constexpr unsigned kDemoCount = 3;

struct StartDemoReaders {
    static bool start(xqtest::DeviceProcess& process, std::string& error)
    {
        return xqtest::startSimulator(process, kDemoCount, error);
    }
};

class Simulator : public xqtest::DeviceSuite<StartDemoReaders> {
protected:
    void SetUp() override
    {
        DeviceSuite::SetUp();
        ASSERT_EQ(XQ_CODEREADER_EnumDevices(&m_readers, XQ_TLAYER_GIGE), XQ_OK);
        m_reader = xqtest::findDevice(m_readers, kSerial);
        ASSERT_NE(m_reader, nullptr) << "demo reader 0 was not enumerated";
        ASSERT_EQ(XQ_CC_EnumDevices(&m_cameras, XQ_TLAYER_GIGE | XQ_TLAYER_USB), XQ_OK);
        m_camera = xqtest::findDevice(m_cameras, kSerial);
        ASSERT_NE(m_camera, nullptr);
    }
    XQ_HANDLE openCamera() const { return DeviceSuite::openCamera(m_camera); }

    // The collection's set-up: running mode 2, trigger on, software source.
    XQ_HANDLE openGrabbingReader(const XQ_CODEREADER_DEVICE_INFO* record)
    {
        XQ_HANDLE reader = nullptr;
        EXPECT_EQ(XQ_CODEREADER_CreateHandle(&reader, record), XQ_OK);
        EXPECT_EQ(XQ_CODEREADER_OpenDevice(reader), XQ_OK);
        EXPECT_EQ(XQ_CODEREADER_GIGE_SetGvcpTimeout(reader, 5000), XQ_OK);
        EXPECT_EQ(XQ_CODEREADER_SetEnumValue(reader, "RunningMode", 2), XQ_OK);
        EXPECT_EQ(XQ_CODEREADER_SetEnumValue(reader, "TriggerMode", 1), XQ_OK);
        EXPECT_EQ(XQ_CODEREADER_SetEnumValue(reader, "TriggerSource", 7), XQ_OK);
        EXPECT_EQ(XQ_CODEREADER_StartGrabbing(reader), XQ_OK);
        return reader;
    }

    XQ_CODEREADER_DEVICE_INFO_LIST m_readers{};
    XQ_CC_DEVICE_INFO_LIST m_cameras{};
    const XQ_CODEREADER_DEVICE_INFO* m_reader = nullptr;
    const XQ_CC_DEVICE_INFO* m_camera = nullptr;
};

TEST_F(Simulator, enumerationFindsEveryDemoReaderOnItsAddressThroughBothSdks)
{
    EXPECT_EQ(m_readers.nDeviceNum, kDemoCount);
    EXPECT_EQ(text(m_reader->stGigE.chModelName), kModel);
    EXPECT_EQ(m_reader->stGigE.nCurrentIp, 0x7F000002u);
    EXPECT_EQ(m_camera->stGigE.nCurrentIp, 0x7F000002u);
    const XQ_CODEREADER_DEVICE_INFO* second = xqtest::findDevice(m_readers, "QD24A10101");
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->stGigE.nCurrentIp, 0x7F000003u);
}

// The description's types, access modes and visibilities as the SDK reports
// them; that the SDK reads a description byte for byte and walks all of its
// tree is proven on the fake camera, the description served on the wire in
// the simulator's own tests.
TEST_F(Simulator, nodesReportTheDescriptionsTypeAccessAndVisibility)
{
    XQ_HANDLE camera = openCamera();
    const xqtest::ScopeExit releaseCamera([camera] { XQ_CC_DestroyHandle(camera); });
    const auto nodes = xqtest::walkTree(camera);
    const auto check = [&](const char* name, unsigned int type, unsigned int access, unsigned int visibility) {
        const auto it = nodes.find(name);
        ASSERT_NE(it, nodes.end()) << name;
        EXPECT_EQ(it->second.type, type) << name;
        EXPECT_EQ(it->second.access, access) << name;
        EXPECT_EQ(it->second.visibility, visibility) << name;
        unsigned int byName = 0;
        EXPECT_EQ(XQ_XML_GetNodeInterfaceType(camera, name, &byName), XQ_OK) << name;
        EXPECT_EQ(byName, type) << name;
    };
    check("Width", XQ_IFT_IINTEGER, XQ_AM_RW, XQ_VISIBILITY_BEGINNER);
    check("SensorHeight", XQ_IFT_IINTEGER, XQ_AM_RO, XQ_VISIBILITY_EXPERT);
    check("TestPattern", XQ_IFT_IENUMERATION, XQ_AM_RW, XQ_VISIBILITY_GURU);
    check("AcquisitionFrameRateEnable", XQ_IFT_IBOOLEAN, XQ_AM_RW, XQ_VISIBILITY_BEGINNER);
    check("ExposureTime", XQ_IFT_IFLOAT, XQ_AM_RW, XQ_VISIBILITY_BEGINNER);
    check("TriggerSoftware", XQ_IFT_ICOMMAND, XQ_AM_WO, XQ_VISIBILITY_BEGINNER);
    check("AcquisitionControl", XQ_IFT_ICATEGORY, XQ_AM_RO, XQ_VISIBILITY_BEGINNER);
    // Available only with the TCP start trigger selected.
    check("TcpStartTriggerStr", XQ_IFT_ISTRING, XQ_AM_NA, XQ_VISIBILITY_BEGINNER);
}

// Getters and setters of every kind with their refusals, and rules the SDK
// evaluates itself: a text behind an availability rule, its length, a range.
TEST_F(Simulator, gettersAndSettersOfEveryKindFollowTheRules)
{
    XQ_HANDLE camera = openCamera();
    const xqtest::ScopeExit releaseCamera([camera] { XQ_CC_DestroyHandle(camera); });
    std::int64_t integer = 0;
    ASSERT_EQ(XQ_CC_SetIntValue(camera, "Width", 640), XQ_OK);
    ASSERT_EQ(XQ_CC_GetIntValue(camera, "Width", &integer), XQ_OK);
    EXPECT_EQ(integer, 640);
    EXPECT_EQ(XQ_CC_SetIntValue(camera, "Width", 1 << 30), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CC_SetIntValue(camera, "SensorHeight", 100), XQ_ERR_ACCESS_DENIED);
    ASSERT_EQ(XQ_CC_SetIntValue(camera, "Width", 1280), XQ_OK);
    bool flag = true;
    ASSERT_EQ(XQ_CC_GetBoolValue(camera, "ReverseX", &flag), XQ_OK);
    ASSERT_EQ(XQ_CC_SetBoolValue(camera, "ReverseX", !flag), XQ_OK);
    bool flipped = flag;
    ASSERT_EQ(XQ_CC_GetBoolValue(camera, "ReverseX", &flipped), XQ_OK);
    EXPECT_EQ(flipped, !flag);
    double number = 0;
    ASSERT_EQ(XQ_CC_SetFloatValue(camera, "ExposureTime", 2000.0), XQ_OK);
    ASSERT_EQ(XQ_CC_GetFloatValue(camera, "ExposureTime", &number), XQ_OK);
    EXPECT_DOUBLE_EQ(number, 2000.0);
    EXPECT_EQ(XQ_CC_SetFloatValue(camera, "ExposureTime", 1e9), XQ_ERR_INVALID_PARAMETER);

    XQ_ENUMVALUE enumeration{};
    char symbol[32];
    ASSERT_EQ(XQ_CC_SetEnumValueByString(camera, "TriggerMode", "On"), XQ_OK);
    ASSERT_EQ(XQ_CC_GetEnumValue(camera, "TriggerMode", &enumeration), XQ_OK);
    ASSERT_EQ(XQ_CC_GetEnumEntrySymbolic(camera, "TriggerMode", enumeration.nCurrentValue, symbol, sizeof symbol),
              XQ_OK);
    EXPECT_STREQ(symbol, "On");
    EXPECT_EQ(XQ_CC_GetEnumEntrySymbolic(camera, "TriggerMode", enumeration.nCurrentValue, symbol, 1),
              XQ_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(XQ_CC_SetEnumValueByString(camera, "TriggerMode", "Sideways"), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CC_SetEnumValue(camera, "TriggerMode", 12345), XQ_ERR_INVALID_PARAMETER);

    XQ_CC_STRINGVALUE string{};
    EXPECT_EQ(XQ_CC_GetStringValue(camera, "TcpStartTriggerStr", &string), XQ_ERR_ACCESS_DENIED);
    ASSERT_EQ(XQ_CC_SetEnumValueByString(camera, "TriggerSource", "TcpStart"), XQ_OK);
    ASSERT_EQ(XQ_CC_SetStringValue(camera, "TcpStartTriggerStr", "GO"), XQ_OK);
    ASSERT_EQ(XQ_CC_GetStringValue(camera, "TcpStartTriggerStr", &string), XQ_OK);
    EXPECT_STREQ(string.chValue, "GO");
    EXPECT_EQ(XQ_CC_SetStringValue(camera, "TcpStartTriggerStr", std::string(40, 'x').c_str()),
              XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CC_SetStringValue(camera, "DeviceModelName", "x"), XQ_ERR_ACCESS_DENIED);
    EXPECT_EQ(XQ_CC_SetCommandValue(camera, "UserSetLoad"), XQ_OK);

    // Wrong types, unknown and empty names.
    EXPECT_EQ(XQ_CC_GetBoolValue(camera, "Width", &flag), XQ_ERR_GENICAM);
    EXPECT_EQ(XQ_CC_GetIntValue(camera, "PixelFormat", &integer), XQ_ERR_GENICAM) << "enumerations are not integers";
    EXPECT_EQ(XQ_CC_GetIntValue(camera, "TriggerSoftware", &integer), XQ_ERR_GENICAM);
    EXPECT_EQ(XQ_CC_GetIntValue(camera, "NoSuchFeature", &integer), XQ_ERR_GENICAM);
    EXPECT_EQ(XQ_CC_GetIntValue(camera, "", &integer), XQ_ERR_INVALID_PARAMETER);
}

TEST_F(Simulator, valueReadsAgreeWithAnIndependentAravisClient)
{
    EXPECT_GE(xqtest::expectValueReadsAgreeWithAravis([this] { return openCamera(); }, kIp), 100u);
    // Again away from the defaults, with the rules that depend on them in
    // their other state and selectors on entries other than the first, whose
    // features sit at other addresses.
    {
        XQ_HANDLE camera = openCamera();
        const xqtest::ScopeExit releaseCamera([camera] { XQ_CC_DestroyHandle(camera); });
        ASSERT_EQ(XQ_CC_SetEnumValueByString(camera, "RunningMode", "Normal"), XQ_OK);
        ASSERT_EQ(XQ_CC_SetEnumValueByString(camera, "TriggerMode", "On"), XQ_OK);
        ASSERT_EQ(XQ_CC_SetBoolValue(camera, "ReverseX", true), XQ_OK);
        ASSERT_EQ(XQ_CC_SetEnumValueByString(camera, "IlluminationSelector", "External"), XQ_OK);
        ASSERT_EQ(XQ_CC_SetBoolValue(camera, "IlluminationEnable", false), XQ_OK);
        ASSERT_EQ(XQ_CC_SetEnumValueByString(camera, "LineSelector", "Line2"), XQ_OK);
        ASSERT_EQ(XQ_CC_SetBoolValue(camera, "LineInverter", true), XQ_OK);
    }
    EXPECT_GE(xqtest::expectValueReadsAgreeWithAravis([this] { return openCamera(); }, kIp), 100u);
}

TEST_F(Simulator, accessibilityIsFalseWhileAnotherClientHoldsTheDevice)
{
    EXPECT_TRUE(XQ_CODEREADER_IsDeviceAccessible(m_reader, XQ_ACCESS_EXCLUSIVE));
    {
        AravisClient other(kIp);
        ASSERT_NE(other.device, nullptr);
        EXPECT_FALSE(XQ_CODEREADER_IsDeviceAccessible(m_reader, XQ_ACCESS_EXCLUSIVE));
        XQ_HANDLE reader = nullptr;
        ASSERT_EQ(XQ_CODEREADER_CreateHandle(&reader, m_reader), XQ_OK);
        EXPECT_EQ(XQ_CODEREADER_OpenDevice(reader), XQ_ERR_ACCESS_DENIED);
        EXPECT_EQ(XQ_CODEREADER_DestroyHandle(reader), XQ_OK);
    }
    EXPECT_TRUE(XQ_CODEREADER_IsDeviceAccessible(m_reader, XQ_ACCESS_EXCLUSIVE));
}

std::vector<std::string> zxingTexts(const std::vector<std::uint8_t>& grey, int width, int height)
{
    // Matrix codes only and no downscaling: ZXing 1.4's merging of linear
    // results can abort the process.
    ZXing::DecodeHints hints;
    hints.setFormats(ZXing::BarcodeFormat::MatrixCodes).setTryDownscale(false);
    std::vector<std::string> texts;
    const ZXing::ImageView view(grey.data(), width, height, ZXing::ImageFormat::Lum);
    for (const auto& result : ZXing::ReadBarcodes(view, hints))
        if (result.isValid())
            texts.push_back(result.text());
    return texts;
}

// Triggers by software and waits for the frame, triggering again when one
// was lost on loopback, as the collection does; returns the last result.
int triggerAndGrab(XQ_HANDLE reader, unsigned char** data, XQ_CODEREADER_FRAME_INFO* info)
{
    int result = XQ_ERR_NO_DATA;
    for (int attempt = 0; attempt < 3 && result == XQ_ERR_NO_DATA; ++attempt) {
        if (const int triggered = XQ_CODEREADER_SetCommandValue(reader, "TriggerSoftware"); triggered != XQ_OK)
            return triggered;
        result = XQ_CODEREADER_GetOneFrameTimeout(reader, data, info, 2000);
    }
    return result;
}

TEST_F(Simulator, softwareTriggeredFramesCarryTheRenderedCodes)
{
    XQ_HANDLE reader = openGrabbingReader(m_reader);
    const xqtest::ScopeExit releaseReader([reader] { XQ_CODEREADER_DestroyHandle(reader); });
    XQ_ENUMVALUE source{};
    ASSERT_EQ(XQ_CODEREADER_GetEnumValue(reader, "TriggerSource", &source), XQ_OK);
    EXPECT_EQ(source.nCurrentValue, 7u);
    EXPECT_GT(source.nSupportedCount, 1u);
    auto info = std::make_unique<XQ_CODEREADER_FRAME_INFO>();
    std::set<int> symbologies;
    // Every frame shows a QR code and a Code 128; every third a Data Matrix,
    // every fourth an EAN-13.
    for (int attempt = 0; attempt < 12; ++attempt) {
        unsigned char* data = nullptr;
        ASSERT_EQ(triggerAndGrab(reader, &data, info.get()), XQ_OK);
        int width = 0;
        int height = 0;
        std::vector<std::uint8_t> grey;
        ASSERT_TRUE(xqtest::jpegSize(data, info->nFrameLen, width, height, &grey));
        EXPECT_EQ(width, 1280);
        EXPECT_EQ(height, 1024);
        ASSERT_GE(info->nCodeNum, 2u);

        std::set<std::string> sdkTexts;
        for (unsigned int i = 0; i < info->nCodeNum; ++i) {
            sdkTexts.insert(info->stCodeInfo[i].chCode);
            symbologies.insert(info->stCodeInfo[i].nSymbology);
        }
        // The JPEG shows the frame the codes were read from.
        for (const auto& found : zxingTexts(grey, width, height))
            EXPECT_EQ(sdkTexts.count(found), 1u) << found;
    }
    EXPECT_EQ(symbologies, (std::set<int>{XQ_SYMBOLOGY_QR, XQ_SYMBOLOGY_CODE128, XQ_SYMBOLOGY_EAN13, XQ_SYMBOLOGY_DM}));
    // No trigger, no frame, and the wait ends on time; state errors on the way.
    EXPECT_EQ(XQ_CODEREADER_StartGrabbing(reader), XQ_ERR_WRONG_STATE);
    unsigned char* none = nullptr;
    const auto started = std::chrono::steady_clock::now();
    EXPECT_EQ(XQ_CODEREADER_GetOneFrameTimeout(reader, &none, info.get(), 300), XQ_ERR_NO_DATA);
    EXPECT_LT(std::chrono::steady_clock::now() - started, 2s);
    EXPECT_EQ(XQ_CODEREADER_StopGrabbing(reader), XQ_OK);
    EXPECT_EQ(XQ_CODEREADER_StopGrabbing(reader), XQ_ERR_WRONG_STATE);

    // Colour frames go through the same pipeline.
    ASSERT_EQ(XQ_CODEREADER_SetEnumValueByString(reader, "PixelFormat", "RGB8Packed"), XQ_OK);
    ASSERT_EQ(XQ_CODEREADER_StartGrabbing(reader), XQ_OK);
    unsigned char* data = nullptr;
    ASSERT_EQ(triggerAndGrab(reader, &data, info.get()), XQ_OK);
    EXPECT_GE(info->nCodeNum, 2u);
    ASSERT_EQ(XQ_CODEREADER_StopGrabbing(reader), XQ_OK);
    ASSERT_EQ(XQ_CODEREADER_SetEnumValueByString(reader, "PixelFormat", "Mono8"), XQ_OK);
    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(reader), XQ_OK);
}

std::set<std::string> lastReadAddresses(const std::string& dump)
{
    std::set<std::string> addresses;
    std::istringstream lines(dump);
    std::string line;
    while (std::getline(lines, line))
        if (line.rfind("L ", 0) == 0)
            addresses.insert(line.substr(2, line.find(' ', 2) - 2));
    return addresses;
}

std::string hexAddress(guint64 address)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%08llx", static_cast<unsigned long long>(address));
    return text;
}

TEST_F(Simulator, registerDumpsListTheRegistersTheWalkRead)
{
    // Addresses from Aravis's own reading of the description.
    std::map<std::string, std::string> addressOf;
    {
        AravisClient client(kIp);
        ASSERT_NE(client.device, nullptr);
        ArvGc* genicam = arv_device_get_genicam(client.device);
        for (const char* name : {"Width", "Height", "SensorHeight", "DeviceModelName", "DeviceSerialNumber"}) {
            // Number features keep their value in a register node "<name>Reg".
            ArvGcNode* node = arv_gc_get_node(genicam, name);
            if (node && !ARV_IS_GC_REGISTER(node))
                node = arv_gc_get_node(genicam, (std::string(name) + "Reg").c_str());
            if (node && ARV_IS_GC_REGISTER(node))
                addressOf[name] = hexAddress(arv_gc_register_get_address(ARV_GC_REGISTER(node), nullptr));
        }
    }
    ASSERT_EQ(addressOf.count("Width"), 1u);

    XQ_HANDLE camera = openCamera();
    const xqtest::ScopeExit releaseCamera([camera] { XQ_CC_DestroyHandle(camera); });
    const xqtest::TemporaryFolder dumps; // the handle's folder, not the suite's default
    ASSERT_EQ(XQ_CC_SetRegisterDumpFolder(camera, dumps.path().c_str()), XQ_OK);
    std::int64_t integer = 0;
    XQ_CC_STRINGVALUE string{};
    for (const auto& [name, node] : xqtest::walkTree(camera)) {
        if (node.access != XQ_AM_RO && node.access != XQ_AM_RW)
            continue;
        if (node.type == XQ_IFT_IINTEGER)
            XQ_CC_GetIntValue(camera, name.c_str(), &integer);
        else if (node.type == XQ_IFT_ISTRING)
            XQ_CC_GetStringValue(camera, name.c_str(), &string);
    }
    ASSERT_EQ(XQ_CC_CloseDevice(camera), XQ_OK);
    EXPECT_EQ(XQ_CC_DestroyHandle(camera), XQ_OK);

    const std::string base = dumps.path() + "/" + kModel;
    const auto numbers = lastReadAddresses(xqtest::readFile(base + "_regfile.dat"));
    const auto strings = lastReadAddresses(xqtest::readFile(base + "_strRegFile.dat"));
    for (const char* name : {"Width", "Height", "SensorHeight"})
        EXPECT_EQ(numbers.count(addressOf[name]), 1u) << name;
    for (const char* name : {"DeviceModelName", "DeviceSerialNumber"}) {
        if (addressOf.count(name)) {
            EXPECT_EQ(strings.count(addressOf[name]), 1u) << name;
        }
    }
}

struct LossWitness {
    std::mutex mutex;
    std::condition_variable arrived;
    unsigned int message = 0;
    int releaseResult = -1;
    XQ_HANDLE reader = nullptr;
};

void releaseOnLoss(unsigned int message, void* user)
{
    auto* witness = static_cast<LossWitness*>(user);
    const int released = XQ_CODEREADER_DestroyHandle(witness->reader);
    const std::lock_guard<std::mutex> lock(witness->mutex);
    witness->message = message;
    witness->releaseResult = released;
    witness->arrived.notify_all();
}

TEST(SimulatorLoss, killingTheSimulatorMidSessionCallsBackWithDeviceLost)
{
    xqtest::DeviceProcess process;
    std::string error;
    ASSERT_TRUE(xqtest::startSimulator(process, 1, error)) << error;
    XQ_CODEREADER_DEVICE_INFO_LIST readers{};
    ASSERT_EQ(XQ_CODEREADER_EnumDevices(&readers, XQ_TLAYER_GIGE), XQ_OK);
    const XQ_CODEREADER_DEVICE_INFO* record = xqtest::findDevice(readers, kSerial);
    ASSERT_NE(record, nullptr);

    LossWitness witness;
    ASSERT_EQ(XQ_CODEREADER_CreateHandle(&witness.reader, record), XQ_OK);
    ASSERT_EQ(XQ_CODEREADER_OpenDevice(witness.reader), XQ_OK);
    ASSERT_EQ(XQ_CODEREADER_RegisterExceptionCallBack(witness.reader, releaseOnLoss, &witness), XQ_OK);
    ASSERT_EQ(XQ_CODEREADER_StartGrabbing(witness.reader), XQ_OK);
    process.stop(true);

    std::unique_lock<std::mutex> lock(witness.mutex);
    ASSERT_TRUE(witness.arrived.wait_for(lock, 20s, [&] { return witness.message != 0; }))
        << "no exception callback within 20 s";
    EXPECT_EQ(witness.message, static_cast<unsigned int>(XQ_EXCEPTION_DEVICE_LOST));
    EXPECT_EQ(witness.releaseResult, XQ_OK);
}

TEST_F(Simulator, aFrameWaitEndsWhenAnotherThreadStopsOrReleasesTheHandle)
{
    // Triggered by software and never triggered: only a stop or a release
    // ends the 20 s waits (3 s here would be a hang).
    for (const bool release : {false, true}) {
        XQ_HANDLE reader = openGrabbingReader(m_reader);
        auto waiting = std::async(std::launch::async, [reader] {
            unsigned char* data = nullptr;
            XQ_CODEREADER_FRAME_INFO info{};
            return XQ_CODEREADER_GetOneFrameTimeout(reader, &data, &info, 20000);
        });
        std::this_thread::sleep_for(200ms);
        EXPECT_EQ(release ? XQ_CODEREADER_DestroyHandle(reader) : XQ_CODEREADER_StopGrabbing(reader), XQ_OK);
        ASSERT_EQ(waiting.wait_for(3s), std::future_status::ready) << (release ? "release" : "stop");
        EXPECT_EQ(waiting.get(), XQ_ERR_CANCELLED);
        if (!release) {
            EXPECT_EQ(XQ_CODEREADER_DestroyHandle(reader), XQ_OK);
        }
    }
}

TEST_F(Simulator, severalReadersGrabOnSeveralThreadsAtOnce)
{
    std::atomic<int> failures{0};
    std::atomic<int> frames{0};
    std::vector<std::thread> jobs;
    for (unsigned i = 0; i < kDemoCount; ++i) {
        const XQ_CODEREADER_DEVICE_INFO* record = m_readers.pDeviceInfo[i];
        ASSERT_NE(record, nullptr);
        jobs.emplace_back([this, record, &failures, &frames] {
            XQ_HANDLE reader = openGrabbingReader(record);
            const xqtest::ScopeExit releaseReader([reader] { XQ_CODEREADER_DestroyHandle(reader); });
            auto info = std::make_unique<XQ_CODEREADER_FRAME_INFO>();
            // Three streams at once on loopback may lose a frame now and
            // then; like the collection, trigger again rather than wait.
            int received = 0;
            for (int attempt = 0; attempt < 8 && received < 3; ++attempt) {
                XQ_CODEREADER_SetCommandValue(reader, "TriggerSoftware");
                unsigned char* data = nullptr;
                const int code = XQ_CODEREADER_GetOneFrameTimeout(reader, &data, info.get(), 2000);
                if (code == XQ_OK) {
                    ++received;
                    if (info->nCodeNum == 0)
                        ++failures;
                } else if (code != XQ_ERR_NO_DATA) {
                    ++failures;
                }
            }
            frames += received;
            // The collection's release path, twice, as its destructor repeats it.
            for (int twice = 0; twice < 2; ++twice) {
                XQ_CODEREADER_DestroyHandle(reader);
                XQ_CODEREADER_StopGrabbing(reader);
            }
        });
    }
    for (auto& job : jobs)
        job.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(frames.load(), static_cast<int>(kDemoCount) * 3);
}

} // namespace
