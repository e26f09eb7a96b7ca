// The camera SDK against a device we did not write, Aravis's fake GigE Vision
// camera, checked against an independent Aravis client: description, tree
// and values. Getters, setters and grabbing are proven on the simulator.
#include "DeviceProcess.h"
#include "SuiteDevice.h"
#include "SdkTestHelpers.h"
#include "SharedCameraChecks.h"

#include <arv.h>
#include <gtest/gtest.h>

#include <set>

namespace {

using xqtest::AravisClient;

constexpr char kIp[] = "127.0.0.1";
constexpr char kSerial[] = "QVXFAKE1";

struct StartFakeCamera {
    static bool start(xqtest::DeviceProcess& process, std::string& error)
    {
        return xqtest::startFakeCamera(process, kIp, kSerial, error);
    }
};

class FakeCamera : public xqtest::DeviceSuite<StartFakeCamera> {
protected:
    void SetUp() override
    {
        DeviceSuite::SetUp();
        ASSERT_EQ(XQ_CC_EnumDevices(&m_cameras, XQ_TLAYER_GIGE), XQ_OK);
        m_camera = xqtest::findDevice(m_cameras, kSerial);
        ASSERT_NE(m_camera, nullptr) << "the fake camera was not enumerated";
    }
    XQ_HANDLE openCamera() const { return DeviceSuite::openCamera(m_camera); }

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

TEST_F(FakeCamera, nodeTreeIsTheOneAravisListsAndOnlyCategoriesHaveChildren)
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
    for (const auto& [name, node] : nodes)
        EXPECT_EQ(node.childrenFailed, node.type != XQ_IFT_ICATEGORY) << name;
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

TEST_F(FakeCamera, valueReadsAgreeWithAnIndependentAravisClient)
{
    EXPECT_GE(xqtest::expectValueReadsAgreeWithAravis([this] { return openCamera(); }, kIp), 5u);
}

} // namespace
