#pragma once
// Command-line options of quorvex-simulator.

#include "core/link_pacer.h"

#include "hostile/hostile_fault.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::sim {

struct ProgramOptions final {
    unsigned demoDevices = 2; // 0 when only the store is served
    unsigned firstDemoIndex = 0; // identity index of the first demo device
    std::uint32_t baseAddress = 0x7F000002; // 127.0.0.2
    std::uint16_t gvcpPort = 3956;
    bool answerBroadcasts = true;
    LinkSpeed link; // each device's emulated link
    LinkLoss loss;  // stream packets each link loses
    bool verbose = false;
    bool showHelp = false;
    bool showVersion = false;
    bool printXml = false;
    bool serveStore = false;
    std::string storeDirectory; // empty: the suite's default store
    std::vector<HostileFault> hostileDevices; // served after the demo readers
};

// Parses argv; on failure returns false with a message in error.
bool parseOptions(const std::vector<std::string>& arguments, ProgramOptions& options, std::string& error);
std::string usageText(const std::string& programName);

} // namespace quorvex::sim
