#pragma once
// The stream channel of one device: a thread that renders frames and sends
// them as GVSP leader, payload and trailer packets, on software trigger
// (at once) or free running at the frame rate, paced to the device's
// emulated link. It also answers packet resend requests and fires test
// packets.

#include "device_model.h"
#include "link_pacer.h"
#include "stream_actions.h"
#include "udp_socket.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace quorvex::sim {

struct StreamStatistics final {
    std::uint64_t framesSent = 0;
    std::uint64_t packetsSent = 0;
    std::uint64_t sendFailures = 0;
    std::uint64_t packetsResent = 0;
    std::uint64_t packetsDropped = 0; // lost on purpose (LinkLoss)
    // How much later than its wire time after its first packet a frame's
    // last packet left: the pacing error.
    Clock::duration worstFrameOverrun{};
    Clock::duration totalFrameOverrun{};
};

class StreamChannel final {
public:
    // Frames kept for packet resend: enough for a client to ask for a
    // frame's lost packets while the next few leave back to back.
    static constexpr std::size_t kHeldFrames = 4;

    StreamChannel(UdpSocket socket, std::unique_ptr<FrameSource> source, LinkSpeed link = {}, LinkLoss loss = {});
    ~StreamChannel();
    StreamChannel(const StreamChannel&) = delete;
    StreamChannel& operator=(const StreamChannel&) = delete;

    std::uint16_t sourcePort() const { return m_sourcePort; }
    // Queues what the control side asked for; never blocks on sending.
    void apply(StreamActions actions);
    StreamStatistics statistics() const;
    // Whether an acquisition is under way (frames may be sent at any time).
    bool acquiring() const { return m_acquiring.load(std::memory_order_relaxed); }

private:
    struct SentFrame final {
        std::uint16_t blockId = 0;
        std::uint64_t timestamp = 0;
        FrameFormat format;
        std::uint32_t packetSize = 0;
        std::vector<std::uint8_t> image;
    };

    void run();
    // Renders the frame the next trigger or beat will send, while idle.
    bool prepareNextFrame(std::unique_lock<std::mutex>& lock);
    bool frameDue(Clock::time_point now, Clock::time_point& wakeAt);
    void sendFrame(std::uint64_t frameNumber, std::uint16_t blockId, const StreamTarget& target,
                   const FrameFormat& format);
    void sendResend(const ResendRequest& request, const StreamTarget& target);
    // Answers the resend requests waiting, also between a frame's packets.
    void serveResends();
    void sendTestPacket(const StreamTarget& target);
    // Sends the packets [first, last] of a frame when the link lets them
    // leave, batching those due together into one system call. Returns the
    // time they took on the link.
    Clock::duration sendPackets(const SentFrame& frame, const StreamTarget& target, std::uint32_t firstId, std::uint32_t lastId,
                     std::uint16_t status);
    void sleepUntil(Clock::time_point when) const;
    std::uint32_t packetCount(const SentFrame& frame) const;

    UdpSocket m_socket;
    std::uint16_t m_sourcePort = 0;
    std::unique_ptr<FrameSource> m_source;

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_quit = false;
    bool m_running = false;
    std::atomic<bool> m_acquiring{false}; // m_running, readable without the lock
    StreamStart m_start;
    unsigned m_pendingTriggers = 0;
    std::uint64_t m_framesThisAcquisition = 0;
    Clock::time_point m_nextFrameTime{};
    std::vector<ResendRequest> m_resends;
    std::atomic<bool> m_resendsWaiting{false}; // m_resends is not empty
    std::vector<StreamTarget> m_testPackets;
    StreamStatistics m_statistics;

    // Owned by the stream thread only.
    std::uint64_t m_frameNumber = 0;
    std::uint16_t m_blockId = 0;
    std::array<SentFrame, kHeldFrames> m_history;
    std::size_t m_newest = 0;
    SentFrame m_prepared; // blockId is unused; preparedNumber says which frame it is
    std::uint64_t m_preparedNumber = 0;
    LinkPacer m_pacer;
    double m_lossFraction = 0.0;
    std::mt19937_64 m_lossGenerator;
    std::vector<std::array<std::uint8_t, 44>> m_headers;

    std::thread m_thread;
};

} // namespace quorvex::sim
