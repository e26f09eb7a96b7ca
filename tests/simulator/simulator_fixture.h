#pragma once
// Starts an in-process simulator with demo code readers on 127.0.0.2 and up.
// Network tests run in a private namespace, so the standard port is free.

#include "core/simulator_server.h"
#include "demo/demo_code_reader.h"

#include <memory>

namespace quorvex::sim::test {

constexpr std::uint32_t kFirstDeviceAddress = 0x7F000002; // 127.0.0.2

inline std::unique_ptr<SimulatorServer> startDemoServer(unsigned devices, ServerOptions options = {})
{
    auto server = std::make_unique<SimulatorServer>(options);
    for (unsigned i = 0; i < devices; ++i)
        server->addDevice(std::make_unique<DemoCodeReader>(DemoCodeReader::demoIdentity(i)), kFirstDeviceAddress + i);
    server->start();
    return server;
}

} // namespace quorvex::sim::test
