// quorvex-simulator: parses options, starts the server, follows the store,
// waits for a signal.

#include "core/simulator_server.h"
#include "demo/demo_code_reader.h"
#include "hostile/hostile_reader.h"
#include "options.h"
#include "replay/store_replay.h"
#include "replay/store_watcher.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <memory>
#include <poll.h>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

using namespace quorvex::sim;

namespace {

// Called from the control thread too. Names in messages come from files
// and devices: control characters are shown as "?" so they cannot steer a
// terminal.
void log(const std::string& message)
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%H:%M:%S", &local);
    std::string printable = message;
    std::replace_if(printable.begin(), printable.end(),
                    [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
    std::fprintf(stderr, "%s quorvex-simulator: %s\n", stamp, printable.c_str());
}

// How long the store must stay quiet before it is read again: "Add" writes
// the configuration file and then copies the camera's files.
constexpr auto kStoreSettleTime = std::chrono::milliseconds(300);
constexpr auto kStatisticsPeriod = std::chrono::seconds(5);
// Addresses a store may use after the demo readers.
constexpr std::uint32_t kStoreAddressCount = 1024;

int milliseconds(std::chrono::steady_clock::duration duration)
{
    const auto count = std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
    return static_cast<int>(std::clamp<long long>(count + 1, 0, 60000));
}

std::string microseconds(Clock::duration duration)
{
    return std::to_string(std::chrono::duration_cast<std::chrono::microseconds>(duration).count()) + " us";
}

void logStreamStatistics(const SimulatorServer& server)
{
    for (std::size_t i = 0; i < server.deviceCount(); ++i) {
        const StreamStatistics stats = server.streamStatistics(i);
        const Clock::duration meanOverrun =
            stats.framesSent ? stats.totalFrameOverrun / static_cast<long>(stats.framesSent) : Clock::duration{};
        log(formatIpv4(server.deviceAddress(i)) + ": " + std::to_string(stats.framesSent) + " frames, " +
            std::to_string(stats.packetsSent) + " packets, " + std::to_string(stats.packetsResent) + " resent, " +
            std::to_string(stats.packetsDropped) + " dropped, " + std::to_string(stats.sendFailures) +
            " failed sends; frames later than their wire time by " + microseconds(meanOverrun) + " on average, " +
            microseconds(stats.worstFrameOverrun) + " at worst");
    }
}

int serve(const ProgramOptions& options)
{
    // Block the signals before any thread starts, so only the signal descriptor sees them.
    sigset_t handled;
    sigemptyset(&handled);
    sigaddset(&handled, SIGINT);
    sigaddset(&handled, SIGTERM);
    sigaddset(&handled, SIGHUP);
    sigaddset(&handled, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &handled, nullptr);
    const int signals = ::signalfd(-1, &handled, SFD_CLOEXEC | SFD_NONBLOCK);
    if (signals < 0) {
        log("error: cannot receive signals");
        return 1;
    }

    ServerOptions serverOptions;
    serverOptions.gvcpPort = options.gvcpPort;
    serverOptions.answerBroadcasts = options.answerBroadcasts;
    serverOptions.link = options.link;
    serverOptions.loss = options.loss;
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
        for (std::size_t i = 0; i < options.hostileDevices.size(); ++i) {
            const HostileFault& fault = options.hostileDevices[i];
            auto model = std::make_unique<HostileReader>(fault, static_cast<unsigned>(i), options.firstDemoIndex);
            const DeviceIdentity identity = model->identity();
            const auto address = static_cast<std::uint32_t>(options.baseAddress + options.demoDevices + i);
            server.addDevice(std::move(model), address);
            log("serving hostile " + hostileKindName(fault.kind) + " serial " + identity.serialNumber + " (\"" +
                identity.userDefinedName + "\") on " + formatIpv4(address) + ":" + std::to_string(options.gvcpPort));
        }
        server.start();
        log("streams paced to " + options.link.text() + " links");
    } catch (const SimulatorError& error) {
        log(std::string("error: ") + error.what());
        ::close(signals);
        return 1;
    }

    std::unique_ptr<StoreReplay> storeReplay;
    std::unique_ptr<StoreWatcher> watcher;
    if (options.serveStore) {
        StoreReplayOptions storeOptions;
        storeOptions.storeDirectory =
            options.storeDirectory.empty() ? quorvex::store::defaultStoreDirectory() : options.storeDirectory;
        storeOptions.firstAddress =
            static_cast<std::uint32_t>(options.baseAddress + options.demoDevices + options.hostileDevices.size());
        storeOptions.lastAddress = static_cast<std::uint32_t>(
            std::min<std::uint64_t>(std::uint64_t{storeOptions.firstAddress} + kStoreAddressCount - 1, 0x7FFFFFFE));
        log("serving the virtual cameras of " + storeOptions.storeDirectory);
        storeReplay = std::make_unique<StoreReplay>(server, storeOptions, log);
        watcher = std::make_unique<StoreWatcher>(storeOptions.storeDirectory);
    }
    const auto synchroniseStore = [&] {
        std::string error;
        // Armed before reading, so a change during the read is noticed.
        if (!watcher->rearm(error))
            log(error + "; send SIGHUP after changing the store");
        storeReplay->synchronise();
    };
    if (storeReplay)
        synchroniseStore();
    log("ready; stop with Ctrl+C or SIGTERM");

    using Clock = std::chrono::steady_clock;
    // Set while the store has changed and is waiting to settle.
    bool storeChanged = false;
    Clock::time_point storeSettles{};
    Clock::time_point nextStatistics = Clock::now() + kStatisticsPeriod;
    for (;;) {
        pollfd fds[2] = {{signals, POLLIN, 0}, {watcher ? watcher->fd() : -1, POLLIN, 0}};
        Clock::time_point wakeAt = nextStatistics;
        if (storeChanged)
            wakeAt = std::min(wakeAt, storeSettles);
        ::poll(fds, 2, milliseconds(wakeAt - Clock::now()));

        signalfd_siginfo received{};
        bool stop = false;
        while (::read(signals, &received, sizeof received) == static_cast<ssize_t>(sizeof received)) {
            if (received.ssi_signo == SIGUSR1) {
                log("SIGUSR1: vanishing devices fall silent");
                HostileReader::vanishAll();
                continue;
            }
            if (received.ssi_signo == SIGHUP) {
                if (storeReplay) {
                    log("SIGHUP: reading the store again");
                    storeChanged = false;
                    synchroniseStore();
                }
                continue;
            }
            log(std::string("stopping on ") + (received.ssi_signo == SIGINT ? "SIGINT" : "SIGTERM"));
            stop = true;
        }
        if (stop)
            break;
        if (watcher && watcher->drain()) {
            storeChanged = true;
            storeSettles = Clock::now() + kStoreSettleTime;
        }
        if (storeChanged && Clock::now() >= storeSettles) {
            storeChanged = false;
            synchroniseStore();
        }
        if (Clock::now() >= nextStatistics) {
            nextStatistics = Clock::now() + kStatisticsPeriod;
            if (options.verbose)
                logStreamStatistics(server);
        }
    }
    if (options.verbose)
        logStreamStatistics(server); // the whole run's figures
    // Devices (and the holds of replayed cameras) end with the server.
    server.stop();
    storeReplay.reset();
    ::close(signals);
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
