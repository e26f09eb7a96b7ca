#pragma once
// A device program that lives for one test suite, with a private folder the
// camera SDK writes its register dumps into.

#include "DeviceProcess.h"
#include "SdkTestHelpers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace xqtest {

struct SuiteDevice {
    DeviceProcess process;
    TemporaryFolder dumps;
    bool started = false;
    std::string error;
};

// Starts the device with `start(process, error)` and points the SDK's
// dumps at the suite's folder.
template <class Start>
std::unique_ptr<SuiteDevice> startSuiteDevice(Start start)
{
    auto device = std::make_unique<SuiteDevice>();
    device->started = start(device->process, device->error);
    ::setenv("QUORVEX_SDK_DUMP_DIR", device->dumps.path().c_str(), 1);
    return device;
}

// Tests that share one device program for the whole suite; Start::start
// (process, error) starts it.
template <class Start>
class DeviceSuite : public ::testing::Test {
protected:
    static void SetUpTestSuite() { s_device = startSuiteDevice(Start::start); }
    static void TearDownTestSuite() { s_device.reset(); }
    void SetUp() override { ASSERT_TRUE(s_device->started) << s_device->error; }

    // A camera-SDK handle on record, opened exclusively.
    static XQ_HANDLE openCamera(const XQ_CC_DEVICE_INFO* record)
    {
        XQ_HANDLE handle = nullptr;
        EXPECT_EQ(XQ_CC_CreateHandle(&handle, record), XQ_OK);
        EXPECT_EQ(XQ_CC_OpenDevice(handle, XQ_ACCESS_EXCLUSIVE, 0), XQ_OK);
        return handle;
    }

    static inline std::unique_ptr<SuiteDevice> s_device;
};

} // namespace xqtest
