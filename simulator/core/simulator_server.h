#pragma once
// Serves simulated GigE Vision devices on loopback: one control socket per
// device on its own address, a shared listener for broadcast discovery,
// one control thread for all of them and a stream thread per device.

#include "device_control.h"
#include "device_model.h"
#include "stream_channel.h"
#include "udp_socket.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quorvex::sim {

struct ServerOptions final {
    std::uint16_t gvcpPort = gvcp::kPort;
    // Listen on 255.255.255.255 for discovery broadcasts.
    bool answerBroadcasts = true;
    // The emulated link of every device (each has its own).
    LinkSpeed link;
    LinkLoss loss;
};

class SimulatorServer final {
public:
    explicit SimulatorServer(ServerOptions options = {});
    ~SimulatorServer();
    SimulatorServer(const SimulatorServer&) = delete;
    SimulatorServer& operator=(const SimulatorServer&) = delete;

    // Binds the device's control and stream sockets on address, which must
    // be a loopback address. Throws SimulatorError. Also while serving: the
    // device answers from the next request on.
    void addDevice(std::unique_ptr<DeviceModel> model, std::uint32_t address);
    // Stops serving the device at address (its stream ends, its model is
    // destroyed); false if there is none.
    bool removeDevice(std::uint32_t address);

    // Starts serving; throws SimulatorError when the discovery listener
    // cannot be bound.
    void start();
    // Stops the threads and closes every socket; safe to call twice.
    void stop();

    std::size_t deviceCount() const;
    std::uint32_t deviceAddress(std::size_t index) const;
    StreamStatistics streamStatistics(std::size_t index) const;
    bool hasDevice(std::uint32_t address) const;
    std::uint64_t malformedPackets() const { return m_malformedPackets.load(); }

private:
    struct ServedDevice final {
        ServedDevice(std::unique_ptr<DeviceModel> model, std::uint32_t address, const ServerOptions& options);
        mutable std::mutex mutex;
        DeviceControl control;
        UdpSocket controlSocket;
        std::unique_ptr<StreamChannel> stream;
    };

    void run();
    void wake();
    void serveDevice(ServedDevice& device);
    void serveBroadcasts();
    void expireHeartbeats();
    int pollTimeoutMs() const;

    ServerOptions m_options;
    // Held by the control thread while it handles requests, and by whoever
    // adds or removes a device; the generation tells the control thread
    // that its poll set is stale.
    mutable std::mutex m_devicesMutex;
    std::vector<std::unique_ptr<ServedDevice>> m_devices;
    std::uint64_t m_generation = 0;
    UdpSocket m_broadcastSocket;
    int m_wakeFd = -1;
    std::atomic<bool> m_running{false};
    std::atomic<std::uint64_t> m_malformedPackets{0};
    std::thread m_thread;
};

} // namespace quorvex::sim
