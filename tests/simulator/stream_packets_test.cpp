// GVSP on the wire, read with a bare socket: leader, payload and trailer
// packets of the negotiated size, growing block ids, packet resend and the
// answer for frames no longer held.

#include "gvcp_client.h"
#include "simulator_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

using namespace quorvex::sim;
using namespace std::chrono_literals;

namespace {

const Peer kDevice{test::kFirstDeviceAddress, gvcp::kPort};

struct GvspPacket final {
    std::uint16_t status;
    std::uint16_t blockId;
    std::uint8_t format;
    std::uint32_t packetId;
    std::vector<std::uint8_t> bytes;
};

GvspPacket parse(const std::vector<std::uint8_t>& bytes)
{
    return {readBig16(bytes.data()), readBig16(bytes.data() + 2), static_cast<std::uint8_t>(bytes[4] & 0x7F),
            readBig32(bytes.data() + 4) & 0xFFFFFF, bytes};
}

class StreamPackets : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_server = test::startDemoServer(1);
        const DemoCodeReader reference(DemoCodeReader::demoIdentity(0));
        const auto address = [&](const char* name) { return reference.features().find(name)->address; };
        for (const auto& [reg, value] : std::vector<std::pair<std::uint32_t, std::uint32_t>>{
                 {gvcp::reg::kControlChannelPrivilege, gvcp::ccp::kControl},
                 {address("Width"), 320},
                 {address("Height"), 200},
                 {address("TriggerMode"), 1},
                 {address("TriggerSource"), 7},
                 {gvcp::reg::kStreamPacketSize, kPacketSize},
                 {gvcp::reg::kStreamDestination, 0x7F000001},
                 {gvcp::reg::kStreamPort, m_receiver.socket().localPort()},
                 {address("AcquisitionStart"), 1}}) {
            const auto ack = m_control.request(kDevice, test::writeReg(reg, value));
            ASSERT_TRUE(ack);
            ASSERT_EQ(test::ackStatus(*ack), 0) << std::hex << reg;
        }
        m_trigger = address("TriggerSoftware");
    }

    // All packets of one triggered frame, keyed by packet id.
    std::map<std::uint32_t, GvspPacket> triggerFrame()
    {
        const auto ack = m_control.request(kDevice, test::writeReg(m_trigger, 1));
        EXPECT_TRUE(ack && test::ackStatus(*ack) == 0);
        std::map<std::uint32_t, GvspPacket> packets;
        while (auto datagram = m_receiver.receive(300ms)) {
            const GvspPacket packet = parse(*datagram);
            packets.emplace(packet.packetId, packet);
            if (packet.format == gvsp::kFormatTrailer)
                break;
        }
        return packets;
    }

    static constexpr std::uint32_t kPacketSize = 1677;
    std::unique_ptr<SimulatorServer> m_server;
    test::GvcpClient m_control;
    test::GvcpClient m_receiver;
    std::uint32_t m_trigger = 0;
};

TEST_F(StreamPackets, frame_isLeaderPayloadTrailer_withTheNegotiatedSize)
{
    const auto frame = triggerFrame();
    // 320 x 200 bytes at 1641 a packet: 39 full packets and one of a single byte.
    const std::size_t imageSize = 320 * 200;
    const std::uint32_t payloadPackets = 40;
    ASSERT_EQ(frame.size(), payloadPackets + 2);

    const GvspPacket& leader = frame.at(0);
    EXPECT_EQ(leader.format, gvsp::kFormatLeader);
    ASSERT_EQ(leader.bytes.size(), 44u);
    EXPECT_EQ(readBig16(leader.bytes.data() + 10), gvsp::kPayloadTypeImage);
    EXPECT_EQ(readBig32(leader.bytes.data() + 20), gvsp::kPixelMono8);
    EXPECT_EQ(readBig32(leader.bytes.data() + 24), 320u);
    EXPECT_EQ(readBig32(leader.bytes.data() + 28), 200u);
    EXPECT_NE(leader.blockId, 0);

    std::size_t data = 0;
    for (std::uint32_t id = 1; id <= payloadPackets; ++id) {
        const GvspPacket& payload = frame.at(id);
        EXPECT_EQ(payload.format, gvsp::kFormatPayload);
        EXPECT_EQ(payload.blockId, leader.blockId);
        EXPECT_EQ(payload.bytes.size(), id < payloadPackets ? kPacketSize - 28 : 8 + 1) << "packet " << id;
        data += payload.bytes.size() - 8;
    }
    EXPECT_EQ(data, imageSize);
    const GvspPacket& trailer = frame.at(payloadPackets + 1);
    EXPECT_EQ(trailer.format, gvsp::kFormatTrailer);
    ASSERT_EQ(trailer.bytes.size(), 16u);
    EXPECT_EQ(readBig16(trailer.bytes.data() + 10), gvsp::kPayloadTypeImage);
    EXPECT_EQ(readBig32(trailer.bytes.data() + 12), 200u);

    const auto next = triggerFrame();
    ASSERT_FALSE(next.empty());
    EXPECT_EQ(next.begin()->second.blockId, leader.blockId + 1);
}

TEST_F(StreamPackets, packetResend_sendsHeldPacketsAgain_andRefusesForgottenFrames)
{
    const auto first = triggerFrame();
    ASSERT_FALSE(first.empty());
    const std::uint16_t block = first.begin()->second.blockId;

    // Requests come from the stream socket, without an ack.
    m_receiver.send(kDevice, test::command(gvcp::command::kPacketResend, 1, test::words({block, 3, 5}), 0));
    std::vector<std::uint32_t> resent;
    while (auto datagram = m_receiver.receive(300ms)) {
        const GvspPacket packet = parse(*datagram);
        EXPECT_EQ(packet.blockId, block);
        // Flagged as resent; otherwise the very same packet.
        EXPECT_EQ(packet.status, gvsp::kStatusResent);
        EXPECT_TRUE(std::equal(packet.bytes.begin() + 2, packet.bytes.end(), first.at(packet.packetId).bytes.begin() + 2));
        resent.push_back(packet.packetId);
    }
    EXPECT_EQ(resent, (std::vector<std::uint32_t>{3, 4, 5}));

    // Newer frames push the first one out of the device's memory.
    for (std::size_t frame = 0; frame < StreamChannel::kHeldFrames; ++frame)
        triggerFrame();
    m_receiver.send(kDevice, test::command(gvcp::command::kPacketResend, 2, test::words({block, 1, 1}), 0));
    const auto refusal = m_receiver.receive(300ms);
    ASSERT_TRUE(refusal);
    EXPECT_EQ(parse(*refusal).status, gvcp::status::kPacketUnavailable);
    EXPECT_EQ(parse(*refusal).blockId, block);
}

} // namespace
