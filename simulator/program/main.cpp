// quorvex-simulator: parses options, starts the server, waits for a signal.

#include "core/simulator_server.h"
#include "demo/demo_code_reader.h"
#include "options.h"

#include <csignal>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <memory>
#include <pthread.h>

using namespace quorvex::sim;

namespace {

void log(const std::string& message)
{
    const std::time_t now = std::time(nullptr);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%H:%M:%S", std::localtime(&now));
    std::fprintf(stderr, "%s quorvex-simulator: %s\n", stamp, message.c_str());
}

int serve(const ProgramOptions& options)
{
    // Block the stop signals before any thread starts, so only sigtimedwait sees them.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    ServerOptions serverOptions;
    serverOptions.gvcpPort = options.gvcpPort;
    serverOptions.answerBroadcasts = options.answerBroadcasts;
    SimulatorServer server(serverOptions);
    try {
        for (unsigned i = 0; i < options.demoDevices; ++i) {
            auto model = std::make_unique<DemoCodeReader>(DemoCodeReader::demoIdentity(options.firstDemoIndex + i));
            const DeviceIdentity identity = model->identity();
            const std::uint32_t address = options.baseAddress + i;
            server.addDevice(std::move(model), address);
            log("serving " + identity.modelName + " serial " + identity.serialNumber + " (\"" +
                identity.userDefinedName + "\") on " + formatIpv4(address) + ":" + std::to_string(options.gvcpPort));
        }
        server.start();
    } catch (const SimulatorError& error) {
        log(std::string("error: ") + error.what());
        return 1;
    }
    log("ready; stop with Ctrl+C or SIGTERM");

    for (;;) {
        const timespec period{5, 0};
        const int signal = sigtimedwait(&stopSignals, nullptr, &period);
        if (signal == SIGINT || signal == SIGTERM) {
            log(std::string("stopping on ") + (signal == SIGINT ? "SIGINT" : "SIGTERM"));
            break;
        }
        if (options.verbose) {
            for (std::size_t i = 0; i < server.deviceCount(); ++i) {
                const StreamStatistics stats = server.streamStatistics(i);
                log(formatIpv4(server.deviceAddress(i)) + ": " + std::to_string(stats.framesSent) + " frames, " +
                    std::to_string(stats.packetsSent) + " packets, " + std::to_string(stats.packetsResent) +
                    " resent, " + std::to_string(stats.sendFailures) + " failed sends");
            }
        }
    }
    server.stop();
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    ProgramOptions options;
    std::string error;
    if (!parseOptions(arguments, options, error)) {
        std::fprintf(stderr, "quorvex-simulator: %s\n", error.c_str());
        return 2;
    }
    if (options.showHelp) {
        std::cout << usageText("quorvex-simulator");
        return 0;
    }
    if (options.showVersion) {
        std::cout << "quorvex-simulator " << QUORVEX_VERSION << "\n";
        return 0;
    }
    if (options.printXml) {
        const DemoCodeReader reader(DemoCodeReader::demoIdentity(0));
        std::cout << reader.genicamXml();
        return 0;
    }
    try {
        return serve(options);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "quorvex-simulator: %s\n", failure.what());
        return 1;
    }
}
