#pragma once
// A device program that lives for one test suite, with a private folder the
// camera SDK writes its register dumps into.

#include "DeviceProcess.h"
#include "SdkTestHelpers.h"

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

} // namespace xqtest
