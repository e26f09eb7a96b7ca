// The simulator seen through Aravis, the library the SDKs are built on:
// discovery, the GenICam description, every feature, control privilege and
// streaming with decodable codes.

#include "decode_helpers.h"
#include "simulator_fixture.h"

#include <arv.h>
#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <string>
#include <thread>

using namespace quorvex::sim;

namespace {

// Owns a GObject reference.
template <typename T>
struct GObjectPtr final {
    T* object = nullptr;
    explicit GObjectPtr(T* o = nullptr) : object(o) {}
    ~GObjectPtr() { if (object) g_object_unref(object); }
    GObjectPtr(const GObjectPtr&) = delete;
    GObjectPtr& operator=(const GObjectPtr&) = delete;
    T* get() const { return object; }
    void reset() { if (object) g_object_unref(object); object = nullptr; }
};

std::string takeError(GError*& error)
{
    std::string message = error ? error->message : "";
    g_clear_error(&error);
    return message;
}

class AravisClient : public ::testing::Test {
protected:
    static void SetUpTestSuite() { arv_disable_interface("USB3Vision"); }
    static void TearDownTestSuite() { arv_shutdown(); }

    ArvDevice* open(const char* address)
    {
        GError* error = nullptr;
        ArvDevice* device = arv_open_device(address, &error);
        EXPECT_NE(device, nullptr) << "opening " << address << ": " << takeError(error);
        return device;
    }
};

TEST_F(AravisClient, discovery_findsExactlyTheServedDevicesWithTheirIdentity)
{
    const auto server = test::startDemoServer(3);
    arv_update_device_list();
    ASSERT_EQ(arv_get_n_devices(), 3u);

    std::set<std::string> serials;
    for (unsigned i = 0; i < 3; ++i) {
        const DeviceIdentity expected = DemoCodeReader::demoIdentity(i);
        // Aravis sorts by id; find each by serial.
        bool found = false;
        for (unsigned j = 0; j < arv_get_n_devices(); ++j) {
            if (expected.serialNumber != arv_get_device_serial_nbr(j))
                continue;
            found = true;
            EXPECT_EQ(std::string(arv_get_device_model(j)), expected.modelName);
            EXPECT_NE(std::string(arv_get_device_model(j)).find("ID"), std::string::npos);
            EXPECT_EQ(std::string(arv_get_device_vendor(j)), expected.manufacturerName);
            EXPECT_EQ(std::string(arv_get_device_address(j)), formatIpv4(test::kFirstDeviceAddress + i));
            EXPECT_EQ(std::string(arv_get_device_physical_id(j)).size(), 17u);
        }
        EXPECT_TRUE(found) << expected.serialNumber;
        serials.insert(expected.serialNumber);
    }
    EXPECT_EQ(serials.size(), 3u);
}

TEST_F(AravisClient, open_readsTheDescriptionAndTakesControl)
{
    const auto server = test::startDemoServer(2);
    GObjectPtr<ArvDevice> device(open("127.0.0.3"));
    ASSERT_TRUE(device.get());
    EXPECT_TRUE(arv_gv_device_is_controller(ARV_GV_DEVICE(device.get())));

    std::size_t size = 0;
    const char* xml = arv_device_get_genicam_xml(device.get(), &size);
    ASSERT_NE(xml, nullptr);
    EXPECT_EQ(std::string(xml, size), std::string(server->deviceCount() ? DemoCodeReader(DemoCodeReader::demoIdentity(1)).genicamXml() : ""));

    GError* error = nullptr;
    EXPECT_EQ(std::string(arv_device_get_string_feature_value(device.get(), "DeviceModelName", &error)),
              DemoCodeReader::demoIdentity(1).modelName);
    EXPECT_EQ(std::string(arv_device_get_string_feature_value(device.get(), "DeviceSerialNumber", &error)),
              DemoCodeReader::demoIdentity(1).serialNumber);
    const std::string version = arv_device_get_string_feature_value(device.get(), "DeviceVersion", &error);
    EXPECT_EQ(version.rfind("V", 0), 0u);
    EXPECT_NE(version.find(".R "), std::string::npos);
    EXPECT_EQ(arv_device_get_integer_feature_value(device.get(), "GevCurrentIPAddress", &error), 0x7F000003);
    EXPECT_EQ(error, nullptr) << takeError(error);
}

// A stream on an opened device, with buffers for its payload.
class Stream final {
public:
    explicit Stream(ArvDevice* device, unsigned buffers = 4)
    {
        GError* error = nullptr;
        // Loopback needs the plain socket receiver and a large socket buffer.
        arv_gv_device_set_stream_options(ARV_GV_DEVICE(device), ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
        m_stream.object = arv_device_create_stream(device, nullptr, nullptr, &error);
        EXPECT_NE(m_stream.get(), nullptr) << takeError(error);
        if (!m_stream.get())
            return;
        g_object_set(m_stream.get(), "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_AUTO, nullptr);
        const gint64 payload = arv_device_get_integer_feature_value(device, "PayloadSize", &error);
        for (unsigned i = 0; i < buffers; ++i)
            arv_stream_push_buffer(m_stream.get(), arv_buffer_new_allocate(static_cast<std::size_t>(payload)));
    }
    ArvStream* get() const { return m_stream.get(); }
    // The next buffer, or null after timeout.
    ArvBuffer* pop(std::chrono::milliseconds timeout)
    {
        return arv_stream_timeout_pop_buffer(m_stream.get(), static_cast<guint64>(timeout.count()) * 1000);
    }
    void pushBack(ArvBuffer* buffer) { arv_stream_push_buffer(m_stream.get(), buffer); }

private:
    GObjectPtr<ArvStream> m_stream;
};

void setFeature(ArvDevice* device, const char* name, const char* value)
{
    GError* error = nullptr;
    arv_device_set_string_feature_value(device, name, value, &error);
    EXPECT_EQ(error, nullptr) << name << " = " << value << ": " << takeError(error);
}

void execute(ArvDevice* device, const char* command)
{
    GError* error = nullptr;
    arv_device_execute_command(device, command, &error);
    EXPECT_EQ(error, nullptr) << command << ": " << takeError(error);
}

} // namespace

TEST_F(AravisClient, softwareTrigger_givesOneDecodableFramePerTrigger)
{
    const auto server = test::startDemoServer(1);
    GObjectPtr<ArvDevice> device(open("127.0.0.2"));
    ASSERT_TRUE(device.get());
    setFeature(device.get(), "TriggerMode", "On");
    setFeature(device.get(), "TriggerSource", "Software");
    Stream stream(device.get());
    ASSERT_TRUE(stream.get());
    execute(device.get(), "AcquisitionStart");

    const std::string serial = DemoCodeReader::demoIdentity(0).serialNumber;
    guint64 previousId = 0;
    for (int trigger = 0; trigger < 6; ++trigger) {
        execute(device.get(), "TriggerSoftware");
        ArvBuffer* buffer = stream.pop(std::chrono::seconds(2));
        ASSERT_NE(buffer, nullptr) << "no frame for trigger " << trigger;
        EXPECT_EQ(arv_buffer_get_status(buffer), ARV_BUFFER_STATUS_SUCCESS);
        EXPECT_EQ(arv_buffer_get_image_width(buffer), 1280);
        EXPECT_EQ(arv_buffer_get_image_height(buffer), 1024);
        EXPECT_EQ(arv_buffer_get_image_pixel_format(buffer), ARV_PIXEL_FORMAT_MONO_8);
        const guint64 id = arv_buffer_get_frame_id(buffer);
        if (trigger > 0) {
            EXPECT_EQ(id, previousId + 1);
        }
        previousId = id;

        std::size_t size = 0;
        const auto* pixels = static_cast<const std::uint8_t*>(arv_buffer_get_image_data(buffer, &size));
        const auto codes = test::decodeCodes(pixels, 1280, 1024, false);
        ASSERT_EQ(codes.count("QRCode"), 1u);
        // The QR code names the frame; the Code 128 carries the same number.
        const std::string qr = codes.at("QRCode");
        const std::string number = qr.substr(qr.rfind(' ') + 1);
        EXPECT_EQ(qr, "QVX " + serial + " FRAME " + number);
        EXPECT_EQ(codes.at("Code128"), serial + "-" + number);
        stream.pushBack(buffer);
    }
    // No trigger, no frame.
    EXPECT_EQ(stream.pop(std::chrono::milliseconds(300)), nullptr);
    execute(device.get(), "AcquisitionStop");
}
