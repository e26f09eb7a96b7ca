#pragma once
// Aravis as the simulator's tests use it: GObject ownership, the test
// fixture (one per process, as Aravis's interfaces are process-wide) and
// feature set-up that fails the test with Aravis's message.

#include "simulator_fixture.h"

#include <arv.h>
#include <gtest/gtest.h>

#include <string>

namespace quorvex::sim::test {

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

inline std::string takeError(GError*& error)
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

    // Serves `devices` demo readers and opens the one at address.
    ArvDevice* openDemo(unsigned devices = 1, const char* address = "127.0.0.2")
    {
        m_server = startDemoServer(devices);
        m_device.reset();
        m_device.object = open(address);
        return m_device.get();
    }

    std::unique_ptr<SimulatorServer> m_server;
    GObjectPtr<ArvDevice> m_device;
};

inline void setFeature(ArvDevice* device, const char* name, const char* value)
{
    GError* error = nullptr;
    arv_device_set_string_feature_value(device, name, value, &error);
    EXPECT_EQ(error, nullptr) << name << " = " << value << ": " << takeError(error);
}

inline void execute(ArvDevice* device, const char* command)
{
    GError* error = nullptr;
    arv_device_execute_command(device, command, &error);
    EXPECT_EQ(error, nullptr) << command << ": " << takeError(error);
}

} // namespace quorvex::sim::test
