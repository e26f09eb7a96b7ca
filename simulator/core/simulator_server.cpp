#include "simulator_server.h"

#include <algorithm>
#include <array>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace quorvex::sim {

namespace {

// Larger than any valid command, so oversized ones are seen as such.
constexpr std::size_t kReceiveBuffer = 2048;
constexpr int kIdlePollMs = 200;
// How long the thread keeps looking for the next request without sleeping.
// A feature walk sends its next read some tens of microseconds after the last
// answer, after evaluating the feature on the client; a sleeping thread takes
// longer than that to wake on a virtual machine, which doubled the walk's
// time with a 50 us window. Idle devices still sleep, and so does the thread
// while any device streams: the stream thread and the client's receiver need
// the CPU then (on two cores a spinning thread made the receiver drop a
// whole frame), and a trigger is not followed by a quick next request.
constexpr auto kBusyPollWindow = std::chrono::microseconds(500);

} // namespace

SimulatorServer::ServedDevice::ServedDevice(std::unique_ptr<DeviceModel> model, std::uint32_t address,
                                            const ServerOptions& options)
    : control(std::move(model), address), controlSocket(UdpSocket::bind(address, options.gvcpPort))
{
    std::unique_ptr<FrameSource> source = control.model().createFrameSource();
    LinkLoss loss = options.loss;
    loss.seed ^= address; // each device loses other packets
    stream = std::make_unique<StreamChannel>(UdpSocket::bind(address, 0), std::move(source), options.link, loss);
    control.setStreamSourcePort(stream->sourcePort());
    control.setLink(options.link);
}

SimulatorServer::SimulatorServer(ServerOptions options) : m_options(options)
{
    m_wakeFd = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (m_wakeFd < 0)
        throw SimulatorError("cannot create the simulator's wake-up event");
}

SimulatorServer::~SimulatorServer()
{
    stop();
    m_devices.clear();
    ::close(m_wakeFd);
}

void SimulatorServer::addDevice(std::unique_ptr<DeviceModel> model, std::uint32_t address)
{
    if (!isLoopback(address) || (address & 0xFF) == 0 || (address & 0xFF) == 0xFF)
        throw SimulatorError("refusing to serve on " + formatIpv4(address) +
                             ": only loopback host addresses (127.x.y.1-254) are used");
    if (hasDevice(address))
        throw SimulatorError("two devices cannot share the address " + formatIpv4(address));
    // Binding happens outside the lock, so requests to others go on meanwhile.
    auto device = std::make_unique<ServedDevice>(std::move(model), address, m_options);
    {
        const std::lock_guard<std::mutex> lock(m_devicesMutex);
        m_devices.push_back(std::move(device));
        ++m_generation;
    }
    wake();
}

bool SimulatorServer::removeDevice(std::uint32_t address)
{
    std::unique_ptr<ServedDevice> removed;
    {
        const std::lock_guard<std::mutex> lock(m_devicesMutex);
        const auto found = std::find_if(m_devices.begin(), m_devices.end(),
                                        [&](const auto& device) { return device->control.ipAddress() == address; });
        if (found == m_devices.end())
            return false;
        removed = std::move(*found);
        m_devices.erase(found);
        ++m_generation;
    }
    wake();
    // Joins the stream thread and closes the sockets, outside the lock.
    removed.reset();
    return true;
}

bool SimulatorServer::hasDevice(std::uint32_t address) const
{
    const std::lock_guard<std::mutex> lock(m_devicesMutex);
    return std::any_of(m_devices.begin(), m_devices.end(),
                       [&](const auto& device) { return device->control.ipAddress() == address; });
}

std::size_t SimulatorServer::deviceCount() const
{
    const std::lock_guard<std::mutex> lock(m_devicesMutex);
    return m_devices.size();
}

void SimulatorServer::wake()
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t ignored = ::write(m_wakeFd, &one, sizeof one);
}

void SimulatorServer::start()
{
    if (m_running)
        return;
    if (m_options.answerBroadcasts)
        m_broadcastSocket = UdpSocket::bind(0xFFFFFFFF, m_options.gvcpPort, true);
    m_running = true;
    m_thread = std::thread([this] { run(); });
}

void SimulatorServer::stop()
{
    if (!m_running.exchange(false))
        return;
    wake();
    m_thread.join();
    const std::lock_guard<std::mutex> lock(m_devicesMutex);
    for (const auto& device : m_devices) {
        StreamActions actions;
        actions.stop = true;
        device->stream->apply(actions);
    }
    m_broadcastSocket = UdpSocket();
}

std::uint32_t SimulatorServer::deviceAddress(std::size_t index) const
{
    const std::lock_guard<std::mutex> lock(m_devicesMutex);
    return m_devices.at(index)->control.ipAddress();
}

StreamStatistics SimulatorServer::streamStatistics(std::size_t index) const
{
    const std::lock_guard<std::mutex> lock(m_devicesMutex);
    return m_devices.at(index)->stream->statistics();
}

int SimulatorServer::pollTimeoutMs() const
{
    const Clock::time_point now = Clock::now();
    int timeout = kIdlePollMs;
    for (const auto& device : m_devices) {
        std::optional<Clock::time_point> deadline;
        {
            const std::lock_guard<std::mutex> lock(device->mutex);
            deadline = device->control.nextDeadline();
        }
        if (!deadline)
            continue;
        const auto remaining = std::chrono::duration_cast<std::chrono::milliseconds>(*deadline - now).count() + 1;
        timeout = std::min<int>(timeout, static_cast<int>(std::max<long long>(remaining, 0)));
    }
    return timeout;
}

void SimulatorServer::run()
{
    std::vector<pollfd> fds;
    std::vector<ServedDevice*> polled;
    std::uint64_t generation = ~std::uint64_t{0};
    Clock::time_point lastRequest{};
    while (m_running) {
        int timeout = 0;
        bool busy = false;
        {
            const std::lock_guard<std::mutex> lock(m_devicesMutex);
            if (generation != m_generation) {
                generation = m_generation;
                fds.assign(1, {m_wakeFd, POLLIN, 0});
                polled.clear();
                for (const auto& device : m_devices) {
                    fds.push_back({device->controlSocket.fd(), POLLIN, 0});
                    polled.push_back(device.get());
                }
                if (m_broadcastSocket.isOpen())
                    fds.push_back({m_broadcastSocket.fd(), POLLIN, 0});
            }
            // Right after a request the next one usually follows within tens of
            // microseconds (register loops, description downloads): look again
            // without sleeping, which saves the thread a wake-up per request.
            busy = Clock::now() - lastRequest < kBusyPollWindow
                && std::none_of(m_devices.begin(), m_devices.end(),
                                [](const auto& device) { return device->stream->acquiring(); });
            timeout = busy ? 0 : pollTimeoutMs();
        }
        const int ready = ::poll(fds.data(), fds.size(), timeout);
        if (fds[0].revents & POLLIN) {
            std::uint64_t count = 0;
            [[maybe_unused]] const ssize_t ignored = ::read(m_wakeFd, &count, sizeof count);
        }
        const std::lock_guard<std::mutex> lock(m_devicesMutex);
        if (generation != m_generation)
            continue; // a device came or went: its descriptors may be gone
        if (ready > 0) {
            lastRequest = Clock::now();
            for (std::size_t i = 0; i < polled.size(); ++i)
                if (fds[i + 1].revents & POLLIN)
                    serveDevice(*polled[i]);
            if (m_broadcastSocket.isOpen() && (fds.back().revents & POLLIN))
                serveBroadcasts();
        }
        if (!busy || ready > 0)
            expireHeartbeats();
    }
}

void SimulatorServer::serveDevice(ServedDevice& device)
{
    std::array<std::uint8_t, kReceiveBuffer> buffer{};
    std::vector<std::uint8_t> reply;
    reply.reserve(gvcp::kHeaderSize + gvcp::kMaxPayload);
    Peer sender;
    long size = 0;
    // One datagram per wake-up: poll reports the socket again while more
    // wait, and a request-reply client never has more than one in flight,
    // so a second receive would only cost a system call.
    if ((size = device.controlSocket.receiveFrom(sender, buffer.data(), buffer.size())) >= 0) {
        if (!isLoopback(sender.address))
            return; // never answer anything that is not on this machine
        StreamActions actions;
        {
            const std::lock_guard<std::mutex> lock(device.mutex);
            device.control.handle({buffer.data(), static_cast<std::size_t>(size)}, sender, Clock::now(), reply,
                                  actions);
        }
        if (!reply.empty())
            device.controlSocket.sendTo(sender, reply.data(), reply.size());
        else if (size < static_cast<long>(gvcp::kHeaderSize) || buffer[0] != gvcp::kCommandKey)
            ++m_malformedPackets;
        device.stream->apply(std::move(actions));
    }
}

void SimulatorServer::serveBroadcasts()
{
    std::array<std::uint8_t, kReceiveBuffer> buffer{};
    std::vector<std::uint8_t> reply;
    Peer sender;
    long size = 0;
    for (int turn = 0; turn < 64 && (size = m_broadcastSocket.receiveFrom(sender, buffer.data(), buffer.size())) >= 0;
         ++turn) {
        if (!isLoopback(sender.address))
            continue;
        // Each device answers from its own socket, with its own address inside.
        for (const auto& device : m_devices) {
            bool answered = false;
            {
                const std::lock_guard<std::mutex> lock(device->mutex);
                answered = device->control.handleBroadcast({buffer.data(), static_cast<std::size_t>(size)}, reply);
            }
            if (!answered) {
                ++m_malformedPackets;
                break;
            }
            if (!reply.empty()) // a silent device
                device->controlSocket.sendTo(sender, reply.data(), reply.size());
        }
    }
}

void SimulatorServer::expireHeartbeats()
{
    const Clock::time_point now = Clock::now();
    for (const auto& device : m_devices) {
        StreamActions actions;
        {
            const std::lock_guard<std::mutex> lock(device->mutex);
            device->control.tick(now, actions);
        }
        device->stream->apply(std::move(actions));
    }
}

} // namespace quorvex::sim
