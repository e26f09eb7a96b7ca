// Both SDKs against a device we did not write: Aravis's fake GigE Vision
// camera, on loopback inside the test's private network namespace.
#include "DeviceProcess.h"
#include "SuiteDevice.h"
#include "SdkTestHelpers.h"
#include "SharedCameraChecks.h"

#include <arv.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <set>

namespace {

using namespace std::chrono_literals;
using xqtest::AravisClient;
using xqtest::text;

constexpr char kIp[] = "127.0.0.1";
constexpr char kSerial[] = "QVXFAKE1";

class FakeCamera : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_device = xqtest::startSuiteDevice(
            [](xqtest::DeviceProcess& process, std::string& error) { return xqtest::startFakeCamera(process, kIp, kSerial, error); });
    }
    static void TearDownTestSuite() { s_device.reset(); }

    void SetUp() override
    {
        ASSERT_TRUE(s_device->started) << s_device->error;
        ASSERT_EQ(XQ_CC_EnumDevices(&m_cameras, XQ_TLAYER_GIGE), XQ_OK);
        m_camera = xqtest::findCamera(m_cameras, kSerial);
        ASSERT_NE(m_camera, nullptr) << "the fake camera was not enumerated";
    }

    XQ_HANDLE openCamera(unsigned int mode = XQ_ACCESS_EXCLUSIVE)
    {
        XQ_HANDLE handle = nullptr;
        EXPECT_EQ(XQ_CC_CreateHandle(&handle, m_camera), XQ_OK);
        EXPECT_EQ(XQ_CC_OpenDevice(handle, mode, 0), XQ_OK);
        return handle;
    }

    static inline std::unique_ptr<xqtest::SuiteDevice> s_device;
    XQ_CC_DEVICE_INFO_LIST m_cameras{};
    const XQ_CC_DEVICE_INFO* m_camera = nullptr;
};

TEST_F(FakeCamera, xmlIsByteForByteWhatAravisReadsAndNeverOverrunsTheBuffer)
{
    std::string aravisXml;
    {
        AravisClient client(kIp);
        ASSERT_NE(client.device, nullptr);
        size_t size = 0;
        const char* xml = arv_device_get_genicam_xml(client.device, &size);
        ASSERT_NE(xml, nullptr);
        aravisXml.assign(xml, size);
    }
    XQ_HANDLE camera = openCamera();
    const xqtest::ScopeExit releaseCamera([camera] { XQ_CC_DestroyHandle(camera); });
    std::vector<unsigned char> buffer(0x500000);
    unsigned int length = 0;
    ASSERT_EQ(XQ_XML_GetGenICamXML(camera, buffer.data(), static_cast<unsigned int>(buffer.size()), &length), XQ_OK);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(buffer.data()), length), aravisXml);

    std::vector<unsigned char> small(100 + 16, 0xAB);
    unsigned int needed = 0;
    EXPECT_EQ(XQ_XML_GetGenICamXML(camera, small.data(), 100, &needed), XQ_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(needed, length);
    for (std::size_t i = 100; i < small.size(); ++i)
        EXPECT_EQ(small[i], 0xAB) << "byte " << i << " past the buffer was written";
    EXPECT_EQ(XQ_XML_GetGenICamXML(camera, nullptr, 0, &needed), XQ_ERR_BUFFER_TOO_SMALL);
    EXPECT_EQ(XQ_CC_DestroyHandle(camera), XQ_OK);
}

// The tree as Aravis's own GenICam document lists it, walked independently.
void aravisNames(ArvGc* genicam, const char* name, std::set<std::string>& names)
{
    names.insert(name);
    ArvGcNode* node = arv_gc_get_node(genicam, name);
    if (!ARV_IS_GC_CATEGORY(node))
        return;
    std::vector<std::string> children;
    for (const GSList* item = arv_gc_category_get_features(ARV_GC_CATEGORY(node)); item; item = item->next)
        children.emplace_back(static_cast<const char*>(item->data));
    for (const auto& child : children)
        if (arv_gc_get_node(genicam, child.c_str()))
            aravisNames(genicam, child.c_str(), names);
}

TEST_F(FakeCamera, nodeTreeMatchesTheDescriptionWithTypesAccessAndVisibility)
{
    std::set<std::string> expected;
    {
        AravisClient client(kIp);
        ASSERT_NE(client.device, nullptr);
        aravisNames(arv_device_get_genicam(client.device), "Root", expected);
    }
    XQ_HANDLE camera = openCamera();
    const xqtest::ScopeExit releaseCamera([camera] { XQ_CC_DestroyHandle(camera); });
    const auto nodes = xqtest::walkTree(camera);
    std::set<std::string> walked;
    for (const auto& entry : nodes)
        walked.insert(entry.first);
    EXPECT_EQ(walked, expected);

    const auto expect = [&](const char* name, unsigned int type, unsigned int access) {
        const auto it = nodes.find(name);
        ASSERT_NE(it, nodes.end()) << name;
        EXPECT_EQ(it->second.type, type) << name;
        EXPECT_EQ(it->second.access, access) << name;
        EXPECT_EQ(it->second.visibility, static_cast<unsigned int>(XQ_VISIBILITY_BEGINNER)) << name;
        EXPECT_EQ(it->second.childrenFailed, type != XQ_IFT_ICATEGORY) << name;
    };
    expect("Root", XQ_IFT_ICATEGORY, XQ_AM_RO);
    expect("ImageFormatControl", XQ_IFT_ICATEGORY, XQ_AM_RO);
    expect("Width", XQ_IFT_IINTEGER, XQ_AM_RW);
    expect("SensorWidth", XQ_IFT_IINTEGER, XQ_AM_RO);
    expect("PixelFormat", XQ_IFT_IENUMERATION, XQ_AM_RW);
    expect("ExposureTimeAbs", XQ_IFT_IFLOAT, XQ_AM_RW);
    expect("DeviceVendorName", XQ_IFT_ISTRING, XQ_AM_RO);
    expect("AcquisitionStart", XQ_IFT_ICOMMAND, XQ_AM_WO);

    XQ_XML_NODE_FEATURE width{};
    ASSERT_EQ(XQ_XML_GetNodeFeature(camera, "Width", &width), XQ_OK);
    auto list = std::make_unique<XQ_XML_NODES_LIST>();
    list->nNodeNum = 77;
    EXPECT_EQ(XQ_XML_GetChildren(camera, &width, list.get()), XQ_ERR_GENICAM);
    EXPECT_EQ(list->nNodeNum, 0u);
    unsigned int visibility = 0;
    EXPECT_EQ(XQ_XML_GetNodeVisibility(camera, "NoSuchNode", &visibility), XQ_ERR_GENICAM);
    EXPECT_EQ(XQ_CC_DestroyHandle(camera), XQ_OK);
}

TEST_F(FakeCamera, gettersAndSettersOfEveryKind)
{
    XQ_HANDLE camera = openCamera();
    const xqtest::ScopeExit releaseCamera([camera] { XQ_CC_DestroyHandle(camera); });
    std::int64_t integer = 0;
    ASSERT_EQ(XQ_CC_SetIntValue(camera, "Width", 640), XQ_OK);
    ASSERT_EQ(XQ_CC_GetIntValue(camera, "Width", &integer), XQ_OK);
    EXPECT_EQ(integer, 640);
    EXPECT_EQ(XQ_CC_SetIntValue(camera, "Width", 1 << 30), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CC_SetIntValue(camera, "SensorWidth", 100), XQ_ERR_ACCESS_DENIED);
    ASSERT_EQ(XQ_CC_SetIntValue(camera, "Width", 512), XQ_OK);

    double number = 0;
    ASSERT_EQ(XQ_CC_SetFloatValue(camera, "ExposureTimeAbs", 2000.0), XQ_OK);
    ASSERT_EQ(XQ_CC_GetFloatValue(camera, "ExposureTimeAbs", &number), XQ_OK);
    EXPECT_DOUBLE_EQ(number, 2000.0);

    XQ_ENUMVALUE enumeration{};
    ASSERT_EQ(XQ_CC_SetEnumValueByString(camera, "TriggerMode", "On"), XQ_OK);
    ASSERT_EQ(XQ_CC_GetEnumValue(camera, "TriggerMode", &enumeration), XQ_OK);
    char symbol[32];
    ASSERT_EQ(XQ_CC_GetEnumEntrySymbolic(camera, "TriggerMode", enumeration.nCurrentValue, symbol, sizeof symbol),
              XQ_OK);
    EXPECT_STREQ(symbol, "On");
    EXPECT_GE(enumeration.nSupportedCount, 2u);
    unsigned int off = enumeration.nSupportedValues[0] == enumeration.nCurrentValue ? enumeration.nSupportedValues[1]
                                                                                     : enumeration.nSupportedValues[0];
    ASSERT_EQ(XQ_CC_SetEnumValue(camera, "TriggerMode", off), XQ_OK);
    ASSERT_EQ(XQ_CC_GetEnumValue(camera, "TriggerMode", &enumeration), XQ_OK);
    EXPECT_EQ(enumeration.nCurrentValue, off);
    EXPECT_EQ(XQ_CC_SetEnumValueByString(camera, "TriggerMode", "Sideways"), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CC_SetEnumValue(camera, "TriggerMode", 12345), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CC_GetEnumEntrySymbolic(camera, "TriggerMode", off, symbol, 1), XQ_ERR_BUFFER_TOO_SMALL);

    XQ_CC_STRINGVALUE string{};
    ASSERT_EQ(XQ_CC_GetStringValue(camera, "DeviceVendorName", &string), XQ_OK);
    EXPECT_STREQ(string.chValue, "Aravis");
    EXPECT_EQ(string.nMaxLength, 32);
    EXPECT_EQ(XQ_CC_SetStringValue(camera, "DeviceVendorName", "x"), XQ_ERR_ACCESS_DENIED);

    EXPECT_EQ(XQ_CC_SetCommandValue(camera, "TriggerSoftware"), XQ_OK);

    bool flag = false;
    EXPECT_EQ(XQ_CC_GetBoolValue(camera, "Width", &flag), XQ_ERR_GENICAM) << "wrong type";
    EXPECT_EQ(XQ_CC_GetIntValue(camera, "PixelFormat", &integer), XQ_ERR_GENICAM) << "enumerations are not integers";
    EXPECT_EQ(XQ_CC_GetIntValue(camera, "AcquisitionStart", &integer), XQ_ERR_GENICAM);
    EXPECT_EQ(XQ_CC_GetIntValue(camera, "NoSuchFeature", &integer), XQ_ERR_GENICAM);
    EXPECT_EQ(XQ_CC_GetIntValue(camera, nullptr, &integer), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_CC_GetIntValue(camera, "", &integer), XQ_ERR_INVALID_PARAMETER);
    EXPECT_EQ(XQ_GIGE_SetGvcpTimeout(camera, 5000), XQ_OK);
    EXPECT_EQ(XQ_CC_DestroyHandle(camera), XQ_OK);
}

TEST_F(FakeCamera, valueReadsAgreeWithAnIndependentAravisClient)
{
    EXPECT_GE(xqtest::expectValueReadsAgreeWithAravis([this] { return openCamera(); }, kIp), 5u);
}

TEST_F(FakeCamera, softwareTriggeredGrabbingDeliversJpegFrames)
{
    XQ_CODEREADER_DEVICE_INFO_LIST readers{};
    ASSERT_EQ(XQ_CODEREADER_EnumDevices(&readers, XQ_TLAYER_GIGE), XQ_OK);
    const XQ_CODEREADER_DEVICE_INFO* record = xqtest::findCodeReader(readers, kSerial);
    ASSERT_NE(record, nullptr);
    XQ_HANDLE reader = nullptr;
    ASSERT_EQ(XQ_CODEREADER_CreateHandle(&reader, record), XQ_OK);
    ASSERT_EQ(XQ_CODEREADER_OpenDevice(reader), XQ_OK);
    ASSERT_EQ(XQ_CODEREADER_SetEnumValueByString(reader, "TriggerMode", "On"), XQ_OK);
    ASSERT_EQ(XQ_CODEREADER_SetEnumValueByString(reader, "TriggerSource", "Software"), XQ_OK);
    XQ_ENUMVALUE mode{};
    ASSERT_EQ(XQ_CODEREADER_GetEnumValue(reader, "TriggerMode", &mode), XQ_OK);
    ASSERT_EQ(XQ_CODEREADER_StartGrabbing(reader), XQ_OK);
    EXPECT_EQ(XQ_CODEREADER_StartGrabbing(reader), XQ_ERR_WRONG_STATE);

    auto info = std::make_unique<XQ_CODEREADER_FRAME_INFO>();
    for (int frame = 0; frame < 3; ++frame) {
        unsigned char* data = nullptr;
        ASSERT_EQ(xqtest::triggerAndGrab(reader, &data, info.get()), XQ_OK);
        ASSERT_NE(data, nullptr);
        int width = 0;
        int height = 0;
        ASSERT_TRUE(xqtest::jpegSize(data, info->nFrameLen, width, height));
        EXPECT_EQ(width, 512);
        EXPECT_EQ(height, 512);
        EXPECT_EQ(info->nWidth, 512u);
        EXPECT_EQ(info->nCodeNum, 0u) << "the fake camera shows no codes";
    }
    unsigned char* data = nullptr;
    const auto started = std::chrono::steady_clock::now();
    EXPECT_EQ(XQ_CODEREADER_GetOneFrameTimeout(reader, &data, info.get(), 300), XQ_ERR_NO_DATA);
    EXPECT_LT(std::chrono::steady_clock::now() - started, 2s);
    EXPECT_EQ(XQ_CODEREADER_StopGrabbing(reader), XQ_OK);
    EXPECT_EQ(XQ_CODEREADER_StopGrabbing(reader), XQ_ERR_WRONG_STATE);
    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(reader), XQ_OK);
    EXPECT_EQ(XQ_CODEREADER_DestroyHandle(reader), XQ_ERR_INVALID_HANDLE);
}

} // namespace
