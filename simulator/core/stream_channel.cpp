#include "stream_channel.h"

#include "byte_order.h"
#include "gvcp.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>

namespace quorvex::sim {

namespace {

constexpr std::size_t kBatch = 64;
constexpr std::uint32_t kPathMtu = 9000;
// A resend request may not keep the thread busy for more than a frame's worth.
constexpr std::uint32_t kMaxResendPackets = 4096;

std::uint64_t nowTicks()
{
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch()).count());
}

void writeGvspHeader(std::uint8_t* header, std::uint16_t status, std::uint16_t blockId, std::uint8_t format,
                     std::uint32_t packetId)
{
    writeBig16(header, status);
    writeBig16(header + 2, blockId);
    writeBig32(header + 4, (std::uint32_t{format} << 24) | (packetId & 0x00FFFFFF));
}

sockaddr_in toSockaddr(const Peer& peer)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(peer.address);
    address.sin_port = htons(peer.port);
    return address;
}

bool sameFormat(const FrameFormat& a, const FrameFormat& b)
{
    return a.width == b.width && a.height == b.height && a.pixelFormat == b.pixelFormat;
}

std::uint32_t dataPerPacket(std::uint32_t packetSize) { return packetSize - gvcp::packetsize::kOverhead; }

} // namespace

StreamChannel::StreamChannel(UdpSocket socket, std::unique_ptr<FrameSource> source, LinkSpeed link, LinkLoss loss)
    : m_socket(std::move(socket)),
      m_sourcePort(m_socket.localPort()),
      m_source(std::move(source)),
      m_pacer(link),
      m_lossFraction(loss.fraction),
      m_lossGenerator(loss.seed),
      m_headers(kBatch)
{
    // Room for a few whole frames, so bursts wait in the kernel rather than here.
    m_socket.setSendBuffer(4 * 1024 * 1024);
    m_thread = std::thread([this] { run(); });
}

StreamChannel::~StreamChannel()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_quit = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void StreamChannel::apply(StreamActions actions)
{
    if (actions.empty())
        return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (actions.stop) {
            m_running = false;
            m_pendingTriggers = 0;
        }
        if (actions.start) {
            m_running = true;
            m_start = *actions.start;
            m_pendingTriggers = 0;
            m_framesThisAcquisition = 0;
            m_nextFrameTime = Clock::now();
        }
        m_acquiring.store(m_running, std::memory_order_relaxed);
        if (m_running && m_start.setup.softwareTriggered)
            m_pendingTriggers += actions.softwareTriggers;
        if (actions.testPacket)
            m_testPackets.push_back(*actions.testPacket);
        for (const ResendRequest& request : actions.resends)
            if (m_resends.size() < 256)
                m_resends.push_back(request);
        m_resendsWaiting.store(!m_resends.empty(), std::memory_order_relaxed);
    }
    m_wake.notify_all();
}

StreamStatistics StreamChannel::statistics() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_statistics;
}

bool StreamChannel::frameDue(Clock::time_point now, Clock::time_point& wakeAt)
{
    wakeAt = Clock::time_point::max();
    if (!m_running)
        return false;
    const AcquisitionSetup& setup = m_start.setup;
    if (setup.mode == AcquisitionMode::SingleFrame && m_framesThisAcquisition >= 1)
        return false;
    if (setup.mode == AcquisitionMode::MultiFrame && m_framesThisAcquisition >= setup.frameCount)
        return false;
    if (setup.softwareTriggered) {
        if (m_pendingTriggers == 0)
            return false;
        --m_pendingTriggers;
        return true;
    }
    if (setup.externallyTriggered || setup.framesPerSecond <= 0.0)
        return false;
    if (now < m_nextFrameTime) {
        wakeAt = m_nextFrameTime;
        return false;
    }
    const auto period = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(1.0 / setup.framesPerSecond));
    m_nextFrameTime += period;
    // A sender that fell behind starts a new beat instead of bursting.
    if (m_nextFrameTime < now)
        m_nextFrameTime = now + period;
    return true;
}

bool StreamChannel::prepareNextFrame(std::unique_lock<std::mutex>& lock)
{
    // Rendering takes milliseconds; done ahead, a trigger's frame leaves at once.
    const FrameFormat format = m_start.setup.format;
    const std::uint64_t next = m_frameNumber + 1;
    const bool ready = m_preparedNumber == next && sameFormat(m_prepared.format, format);
    if (!m_running || ready || format.imageSize() == 0)
        return false;
    lock.unlock();
    m_source->render(next, format, m_prepared.image);
    m_prepared.format = format;
    m_preparedNumber = next;
    lock.lock();
    return true;
}

void StreamChannel::run()
{
    // Wake-ups for the next packets must be punctual: the default 50 us of
    // timer slack would double the pacing error.
    ::prctl(PR_SET_TIMERSLACK, 10000UL, 0, 0, 0);
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_quit) {
        if (!m_testPackets.empty()) {
            const StreamTarget target = m_testPackets.front();
            m_testPackets.erase(m_testPackets.begin());
            lock.unlock();
            sendTestPacket(target);
            lock.lock();
            continue;
        }
        if (!m_resends.empty()) {
            lock.unlock();
            serveResends();
            lock.lock();
            continue;
        }
        Clock::time_point wakeAt;
        if (!frameDue(Clock::now(), wakeAt)) {
            if (prepareNextFrame(lock))
                continue;
            if (wakeAt == Clock::time_point::max())
                m_wake.wait(lock);
            else
                m_wake.wait_until(lock, wakeAt);
            continue;
        }
        ++m_framesThisAcquisition;
        const StreamStart start = m_start;
        lock.unlock();
        m_blockId = static_cast<std::uint16_t>(m_blockId == 0xFFFF ? 1 : m_blockId + 1); // 0 is never a block id
        sendFrame(++m_frameNumber, m_blockId, start.target, start.setup.format);
        lock.lock();
    }
}

std::uint32_t StreamChannel::packetCount(const SentFrame& frame) const
{
    const std::uint32_t perPacket = dataPerPacket(frame.packetSize);
    return static_cast<std::uint32_t>((frame.image.size() + perPacket - 1) / perPacket);
}

void StreamChannel::sendFrame(std::uint64_t frameNumber, std::uint16_t blockId, const StreamTarget& target,
                              const FrameFormat& format)
{
    m_newest = (m_newest + 1) % m_history.size();
    SentFrame& frame = m_history[m_newest];
    frame.blockId = blockId;
    frame.format = format;
    frame.packetSize = target.packetSize;
    if (m_preparedNumber == frameNumber && sameFormat(m_prepared.format, format)) {
        frame.image.swap(m_prepared.image);
        m_preparedNumber = 0;
    } else {
        m_source->render(frameNumber, format, frame.image);
    }
    frame.timestamp = nowTicks();
    const Clock::time_point start = Clock::now();
    const Clock::time_point linkFree = m_pacer.nextDeparture(start);
    const Clock::time_point firstDeparture = std::max(start, linkFree);
    const Clock::duration wire = sendPackets(frame, target, 0, packetCount(frame) + 1, 0);
    // The pacing error: how much later the last packet left than the link
    // would have let it, counted from the first packet.
    const Clock::duration overrun = std::max(Clock::duration::zero(), Clock::now() - firstDeparture - wire);
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_statistics.framesSent;
    m_statistics.worstFrameOverrun = std::max(m_statistics.worstFrameOverrun, overrun);
    m_statistics.totalFrameOverrun += overrun;
}

void StreamChannel::sendResend(const ResendRequest& request, const StreamTarget& target)
{
    const auto held = std::find_if(m_history.begin(), m_history.end(), [&](const SentFrame& frame) {
        return frame.blockId == request.blockId && !frame.image.empty();
    });
    if (held == m_history.end() || held->packetSize != target.packetSize) {
        // Gone: tell the client so it stops asking for this frame.
        std::uint8_t header[gvsp::kHeaderSize];
        writeGvspHeader(header, gvcp::status::kPacketUnavailable, request.blockId, gvsp::kFormatPayload,
                        request.firstPacketId);
        m_socket.sendTo(target.destination, header, sizeof header);
        return;
    }
    const std::uint32_t last = std::min({request.lastPacketId, packetCount(*held) + 1,
                                         request.firstPacketId + kMaxResendPackets - 1});
    if (request.firstPacketId > last)
        return;
    sendPackets(*held, target, request.firstPacketId, last, gvsp::kStatusResent);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_statistics.packetsResent += last - request.firstPacketId + 1;
}

void StreamChannel::serveResends()
{
    std::vector<ResendRequest> resends;
    StreamTarget target;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        resends.swap(m_resends);
        m_resendsWaiting.store(false, std::memory_order_relaxed);
        target = m_start.target;
    }
    for (const ResendRequest& request : resends)
        sendResend(request, target);
}

void StreamChannel::sendTestPacket(const StreamTarget& target)
{
    // The emulated path carries jumbo frames; a larger test packet that may
    // not be fragmented never arrives, which is how a client finds the size.
    if (target.doNotFragment && target.packetSize > kPathMtu)
        return;
    // Only the size matters to the receiver; the content is ignored.
    const std::vector<std::uint8_t> packet(target.packetSize - gvcp::packetsize::kIpUdpOverhead, 0);
    m_socket.sendTo(target.destination, packet.data(), packet.size());
}

void StreamChannel::sleepUntil(Clock::time_point when) const
{
    const auto sinceEpoch = std::chrono::duration_cast<std::chrono::nanoseconds>(when.time_since_epoch()).count();
    timespec wake{};
    wake.tv_sec = static_cast<time_t>(sinceEpoch / 1'000'000'000);
    wake.tv_nsec = static_cast<long>(sinceEpoch % 1'000'000'000);
    // The steady clock is CLOCK_MONOTONIC; an interrupted sleep just ends early.
    ::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &wake, nullptr);
}

Clock::duration StreamChannel::sendPackets(const SentFrame& frame, const StreamTarget& target, std::uint32_t firstId,
                                           std::uint32_t lastId, std::uint16_t status)
{
    const std::uint32_t payloadPackets = packetCount(frame);
    const std::uint32_t trailerId = payloadPackets + 1;
    const std::uint32_t perPacket = dataPerPacket(frame.packetSize);
    const sockaddr_in destination = toSockaddr(target.destination);
    const Clock::duration gap = target.packetGap();

    std::array<mmsghdr, kBatch> messages{};
    std::array<std::array<iovec, 2>, kBatch> vectors{};
    std::uint64_t sent = 0;
    std::uint64_t failures = 0;
    std::uint64_t dropped = 0;
    Clock::duration booked{};
    std::bernoulli_distribution lose(status == 0 ? m_lossFraction : 0.0);

    m_pacer.begin(Clock::now());
    for (std::uint32_t id = firstId; id <= lastId;) {
        // A client asks for lost packets within a millisecond; they go out
        // between this frame's packets, as a device's would.
        if (status == 0 && m_resendsWaiting.load(std::memory_order_relaxed))
            serveResends();
        const Clock::time_point now = Clock::now();
        const Clock::time_point due = m_pacer.nextDeparture(now);
        if (due > now) {
            // Each wake-up costs the machine far more than a packet does
            // (timer, system call, context switches here and at the
            // receiver); waking late by the pacer's lag lets a burst leave at once.
            sleepUntil(due + m_pacer.wakeLag());
            continue;
        }
        // Every packet the link would have let go by now leaves in one call.
        std::size_t count = 0;
        for (; count < kBatch && id <= lastId && m_pacer.nextDeparture(now) <= now; ++id) {
            std::uint8_t* header = m_headers[count].data();
            std::size_t headerSize = gvsp::kHeaderSize;
            iovec& data = vectors[count][1];
            data = {};
            if (id == 0) {
                writeGvspHeader(header, status, frame.blockId, gvsp::kFormatLeader, 0);
                writeBig16(header + 8, 0);
                writeBig16(header + 10, gvsp::kPayloadTypeImage);
                writeBig32(header + 12, static_cast<std::uint32_t>(frame.timestamp >> 32));
                writeBig32(header + 16, static_cast<std::uint32_t>(frame.timestamp));
                writeBig32(header + 20, frame.format.pixelFormat);
                writeBig32(header + 24, frame.format.width);
                writeBig32(header + 28, frame.format.height);
                writeBig32(header + 32, 0);
                writeBig32(header + 36, 0);
                writeBig32(header + 40, 0); // x and y padding
                headerSize = gvsp::kLeaderPacketSize;
            } else if (id == trailerId) {
                writeGvspHeader(header, status, frame.blockId, gvsp::kFormatTrailer, id);
                writeBig16(header + 8, 0);
                writeBig16(header + 10, gvsp::kPayloadTypeImage);
                writeBig32(header + 12, frame.format.height);
                headerSize = gvsp::kTrailerPacketSize;
            } else {
                writeGvspHeader(header, status, frame.blockId, gvsp::kFormatPayload, id);
                const std::size_t offset = std::size_t{id - 1} * perPacket;
                data.iov_base = const_cast<std::uint8_t*>(frame.image.data() + offset);
                data.iov_len = std::min<std::size_t>(perPacket, frame.image.size() - offset);
            }
            vectors[count][0] = {header, headerSize};
            msghdr& message = messages[count].msg_hdr;
            message = {};
            message.msg_name = const_cast<sockaddr_in*>(&destination);
            message.msg_namelen = sizeof destination;
            message.msg_iov = vectors[count].data();
            message.msg_iovlen = data.iov_len > 0 ? 2 : 1;
            const std::uint64_t ipBytes = gvcp::packetsize::kIpUdpOverhead + headerSize + data.iov_len;
            m_pacer.book(ipBytes, gap);
            booked += wireTime(wireBytes(ipBytes), m_pacer.speed()) + gap;
            if (data.iov_len > 0 && lose(m_lossGenerator)) {
                // Lost on the wire: it took its time there, it never arrives.
                ++dropped;
                continue;
            }
            ++count;
        }
        std::size_t done = 0;
        while (done < count) {
            const int result = ::sendmmsg(m_socket.fd(), messages.data() + done, static_cast<unsigned>(count - done),
                                          MSG_NOSIGNAL);
            if (result < 0) {
                if (errno == EINTR)
                    continue;
                // The receiver is gone or unreachable; the rest of the batch is lost.
                failures += count - done;
                break;
            }
            done += static_cast<std::size_t>(result);
            sent += static_cast<std::uint64_t>(result);
        }
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_statistics.packetsSent += sent;
    m_statistics.sendFailures += failures;
    m_statistics.packetsDropped += dropped;
    return booked;
}

} // namespace quorvex::sim
