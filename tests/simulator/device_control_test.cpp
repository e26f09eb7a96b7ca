// The control channel of one device, driven packet by packet without any
// socket: acks, error statuses, bad input, control privilege and the
// stream requests it hands to the stream channel; and the server's refusal
// of any address off loopback.

#include "core/device_control.h"
#include "core/simulator_server.h"
#include "demo/demo_code_reader.h"
#include "demo/feature_table.h"
#include "gvcp_packets.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace quorvex::sim;
using namespace quorvex::sim::test;
using namespace std::chrono_literals;

namespace {

constexpr std::uint32_t kDeviceIp = 0x7F000002;
const Peer kHost{0x7F000001, 50000};
const Peer kOtherHost{0x7F000001, 50001};

class DeviceControlTest : public ::testing::Test {
protected:
    DeviceControlTest()
        : m_control(std::make_unique<DemoCodeReader>(DemoCodeReader::demoIdentity(0)), kDeviceIp), m_now(Clock::now())
    {
        m_control.setStreamSourcePort(40000);
    }

    std::vector<std::uint8_t> send(const std::vector<std::uint8_t>& packet, const Peer& from = kHost)
    {
        m_actions = StreamActions();
        std::vector<std::uint8_t> reply;
        m_control.handle(ByteView(packet), from, m_now, reply, m_actions);
        return reply;
    }

    std::uint16_t statusOf(const std::vector<std::uint8_t>& packet, const Peer& from = kHost)
    {
        const auto reply = send(packet, from);
        return reply.size() >= 8 ? ackStatus(reply) : 0xFFFF;
    }

    void takeControl(std::uint32_t privilege = gvcp::ccp::kControl, const Peer& from = kHost)
    {
        ASSERT_EQ(statusOf(writeReg(gvcp::reg::kControlChannelPrivilege, privilege), from), gvcp::status::kSuccess);
    }

    std::uint32_t featureAddress(const std::string& name) const
    {
        const auto& model = static_cast<const DemoCodeReader&>(m_control.model());
        return model.features().find(name)->address;
    }

    DeviceControl m_control;
    Clock::time_point m_now;
    StreamActions m_actions;
};

TEST_F(DeviceControlTest, discovery_answersWithTheBootstrapIdentity_onUnicastAndBroadcast)
{
    const auto ack = send(command(gvcp::command::kDiscovery, 0xFFFF));
    ASSERT_EQ(ack.size(), 8u + 0xF8u);
    EXPECT_EQ(ackId(ack), 0xFFFF);
    EXPECT_EQ(readBig32(ack.data() + 8 + gvcp::reg::kCurrentIp), kDeviceIp);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(ack.data() + 8 + gvcp::reg::kSerialNumber)),
              DemoCodeReader::demoIdentity(0).serialNumber);
    std::vector<std::uint8_t> broadcastAck;
    EXPECT_TRUE(m_control.handleBroadcast(ByteView(command(gvcp::command::kDiscovery, 0xFFFF)), broadcastAck));
    EXPECT_EQ(broadcastAck, ack);
    EXPECT_FALSE(m_control.handleBroadcast(ByteView(readReg(0)), broadcastAck));
}

// The heartbeat time-out once read 0 until written; clients then dropped
// the device at once.
TEST_F(DeviceControlTest, bootstrapRegisters_haveTheValuesClientsRely)
{
    // Capabilities claim only what the device does: no events (no message
    // channel), no pending acks, heartbeat disable or test data.
    takeControl();
    ASSERT_EQ(statusOf(writeReg(gvcp::reg::kGvcpConfiguration, 0x3)), gvcp::status::kSuccess);
    const auto ack = send(command(gvcp::command::kReadReg, 7,
                                  words({gvcp::reg::kStreamChannelCount, gvcp::reg::kHeartbeatTimeout,
                                         gvcp::reg::kStreamSourcePort, gvcp::reg::kGvcpCapability,
                                         gvcp::reg::kMessageChannelCount, gvcp::reg::kGvcpConfiguration})));
    ASSERT_EQ(ackLength(ack), 24);
    EXPECT_EQ(ackWord(ack, 0), 1u);
    EXPECT_EQ(ackWord(ack, 1), 3000u);
    EXPECT_EQ(ackWord(ack, 2), 40000u);
    EXPECT_EQ(ackWord(ack, 3), 0xD0000007u);
    EXPECT_EQ(ackWord(ack, 4), 0u);
    EXPECT_EQ(ackWord(ack, 5), 0u);
}

TEST_F(DeviceControlTest, readCounter_countsEveryReadCommandOnce_bootstrapAndDescriptionIncluded)
{
    const std::uint32_t counter = featureAddress("StatRegisterReads");
    const auto counterNow = [&] {
        const auto ack = send(readReg(counter));
        return ack.size() >= 12 ? ackWord(ack, 0) : 0u;
    };
    const std::uint32_t before = counterNow();
    send(command(gvcp::command::kReadReg, 2, words({gvcp::reg::kVersion, gvcp::reg::kHeartbeatTimeout})));
    send(readMem(0xFF000000u, 64));
    send(writeReg(counter, 0)); // writes are not reads, and this one is refused
    // The two reads, and the counter's own read.
    EXPECT_EQ(counterNow() - before, 3u);
}

TEST_F(DeviceControlTest, firstUrl_pointsAtTheDescriptionInMemory)
{
    const auto urlAck = send(readMem(gvcp::reg::kFirstUrl, 512));
    ASSERT_EQ(ackStatus(urlAck), 0);
    ASSERT_EQ(urlAck.size(), 8u + 4u + 512u);
    const std::string url(reinterpret_cast<const char*>(urlAck.data() + 12));
    unsigned address = 0, length = 0;
    char name[64] = {};
    ASSERT_EQ(std::sscanf(url.c_str(), "Local:%63[^;];%x;%x", name, &address, &length), 3) << url;
    EXPECT_EQ(std::string(name).substr(std::strlen(name) - 4), ".xml");

    const std::string_view xml = m_control.model().genicamXml();
    ASSERT_EQ(length, xml.size());
    std::string read;
    for (unsigned offset = 0; offset < length; offset += 512) {
        // The last chunk is rounded up to whole words, as clients do.
        const unsigned chunk = std::min(512u, (length - offset + 3) & ~3u);
        const auto ack = send(readMem(address + offset, chunk));
        ASSERT_EQ(ackStatus(ack), 0) << "offset " << offset;
        read.append(reinterpret_cast<const char*>(ack.data() + 12), std::min(chunk, length - offset));
    }
    EXPECT_EQ(read, xml);
    EXPECT_EQ(ackStatus(send(readMem(address + ((length + 3) & ~3u), 4))), gvcp::status::kInvalidAddress);
}

TEST_F(DeviceControlTest, badRequests_getTheMatchingErrorStatus)
{
    takeControl();
    const std::vector<std::pair<std::vector<std::uint8_t>, std::uint16_t>> cases{
        {readReg(0x00000002), gvcp::status::kBadAlignment},
        {readReg(0xFFFFFFFC), gvcp::status::kInvalidAddress},
        {readMem(0xFFFFFFF0, 0x20), gvcp::status::kInvalidAddress},
        {readMem(0, 537), gvcp::status::kInvalidParameter},
        {command(gvcp::command::kReadReg, 1, {1, 2, 3}), gvcp::status::kInvalidParameter},
        {command(gvcp::command::kWriteReg, 1, words({0x0A00})), gvcp::status::kInvalidParameter},
        {command(gvcp::command::kWriteMem, 1, words({0x0A00})), gvcp::status::kInvalidParameter},
        {command(0x1234, 1), gvcp::status::kNotImplemented},
        // Read-only identity, the description and a hole in the feature area.
        {writeReg(gvcp::reg::kModelName, 0), gvcp::status::kWriteProtect},
        {writeReg(DeviceControl::kGenicamAddress, 0), gvcp::status::kWriteProtect},
        {writeReg(0x00000100, 0), gvcp::status::kInvalidAddress},
        {writeReg(featureAddress("PayloadSize"), 0), gvcp::status::kWriteProtect},
        // Values outside a feature's range, increment or enumeration.
        {writeReg(featureAddress("Width"), 1283), gvcp::status::kInvalidParameter},
        {writeReg(featureAddress("PixelFormat"), 0x01100007), gvcp::status::kInvalidParameter},
        {writeReg(gvcp::reg::kStreamPacketSize, 100), gvcp::status::kInvalidParameter},
        // Streams never leave loopback.
        {writeReg(gvcp::reg::kStreamDestination, 0xC0A80001), gvcp::status::kInvalidParameter},
        {writeReg(gvcp::reg::kStreamDestination, 0x7F000001), gvcp::status::kSuccess},
    };
    for (std::size_t i = 0; i < cases.size(); ++i)
        EXPECT_EQ(statusOf(cases[i].first), cases[i].second) << "case " << i;
}

TEST_F(DeviceControlTest, malformedPackets_areIgnoredOrRefusedWithoutHarm)
{
    EXPECT_TRUE(send({}).empty());
    EXPECT_TRUE(send({0x42}).empty());
    EXPECT_TRUE(send({0x41, 0x01, 0x00, 0x80, 0x00, 0x04, 0x00, 0x01, 0, 0, 0, 0}).empty()) << "wrong key";
    // A length field larger than the datagram.
    auto truncated = readReg(0);
    truncated.resize(10);
    EXPECT_EQ(statusOf(truncated), gvcp::status::kInvalidHeader);
    // Extra bytes beyond the declared length are ignored.
    auto padded = readReg(gvcp::reg::kStreamChannelCount);
    padded.resize(padded.size() + 600, 0xAB);
    const auto ack = send(padded);
    ASSERT_EQ(ackStatus(ack), 0);
    EXPECT_EQ(ackWord(ack, 0), 1u);
    // Without the acknowledge flag nothing is answered, even on error.
    EXPECT_TRUE(send(command(gvcp::command::kReadReg, 1, words({0}), 0)).empty());
    EXPECT_TRUE(send(command(0x7777, 1, {}, 0)).empty());
    // A packet resend when nothing streams is dropped quietly.
    EXPECT_TRUE(send(command(gvcp::command::kPacketResend, 1, words({1, 1, 5}), 0)).empty());
    EXPECT_TRUE(m_actions.empty());
}

TEST_F(DeviceControlTest, writes_needControl_andExclusiveAccessLocksOthersOut)
{
    const std::uint32_t gain = featureAddress("BlackLevel");
    EXPECT_EQ(statusOf(writeReg(gain, 20)), gvcp::status::kAccessDenied) << "nobody holds control";
    takeControl(gvcp::ccp::kControl);
    EXPECT_EQ(statusOf(writeReg(gain, 20)), gvcp::status::kSuccess);
    EXPECT_EQ(statusOf(writeReg(gain, 21), kOtherHost), gvcp::status::kAccessDenied);
    EXPECT_EQ(statusOf(writeReg(gvcp::reg::kControlChannelPrivilege, gvcp::ccp::kControl), kOtherHost),
              gvcp::status::kAccessDenied);
    EXPECT_EQ(statusOf(readReg(gain), kOtherHost), gvcp::status::kSuccess) << "control access lets others read";

    takeControl(gvcp::ccp::kExclusive);
    EXPECT_EQ(statusOf(readReg(gain), kOtherHost), gvcp::status::kAccessDenied);
    EXPECT_EQ(statusOf(readMem(gvcp::reg::kFirstUrl, 512), kOtherHost), gvcp::status::kAccessDenied);
    const auto ccp = send(readReg(gvcp::reg::kControlChannelPrivilege), kOtherHost);
    ASSERT_EQ(ackStatus(ccp), 0) << "others may still see who holds the device";
    EXPECT_EQ(ackWord(ccp, 0), gvcp::ccp::kExclusive);
    EXPECT_EQ(send(command(gvcp::command::kDiscovery, 0xFFFF), kOtherHost).size(), 8u + 0xF8u);

    ASSERT_EQ(statusOf(writeReg(gvcp::reg::kControlChannelPrivilege, 0)), gvcp::status::kSuccess);
    takeControl(gvcp::ccp::kControl, kOtherHost);
}

TEST_F(DeviceControlTest, heartbeat_keepsControl_andItsLapseFreesTheDevice)
{
    ASSERT_EQ(statusOf(writeReg(gvcp::reg::kHeartbeatTimeout, 1000)), gvcp::status::kAccessDenied);
    takeControl(gvcp::ccp::kExclusive);
    ASSERT_EQ(statusOf(writeReg(gvcp::reg::kHeartbeatTimeout, 1000)), gvcp::status::kSuccess);
    for (int beat = 0; beat < 5; ++beat) {
        m_now += 800ms;
        m_control.tick(m_now, m_actions);
        ASSERT_TRUE(m_control.privilege().isHeld()) << "beat " << beat;
        send(readReg(gvcp::reg::kControlChannelPrivilege));
    }
    // The other host's traffic does not keep the controller alive.
    m_now += 600ms;
    send(readReg(gvcp::reg::kControlChannelPrivilege), kOtherHost);
    m_now += 600ms;
    m_control.tick(m_now, m_actions);
    EXPECT_FALSE(m_control.privilege().isHeld());
    const auto ccp = send(readReg(gvcp::reg::kControlChannelPrivilege), kOtherHost);
    EXPECT_EQ(ackWord(ccp, 0), 0u);
    takeControl(gvcp::ccp::kControl, kOtherHost);

    // Time-outs below half a second would drop clients beating once a second.
    ASSERT_EQ(statusOf(writeReg(gvcp::reg::kHeartbeatTimeout, 1), kOtherHost), gvcp::status::kSuccess);
    EXPECT_EQ(ackWord(send(readReg(gvcp::reg::kHeartbeatTimeout)), 0), 500u);
}

TEST_F(DeviceControlTest, acquisition_startsStreamingOnlyWithControlAndAnOpenChannel)
{
    takeControl();
    ASSERT_EQ(statusOf(writeReg(featureAddress("AcquisitionStart"), 1)), gvcp::status::kSuccess);
    EXPECT_FALSE(m_actions.start) << "no stream port yet";
    ASSERT_EQ(statusOf(writeReg(gvcp::reg::kStreamDestination, 0x7F000001)), gvcp::status::kSuccess);
    ASSERT_EQ(statusOf(writeReg(gvcp::reg::kStreamPort, 45000)), gvcp::status::kSuccess);
    ASSERT_TRUE(m_actions.start);
    EXPECT_EQ(m_actions.start->target.destination, (Peer{0x7F000001, 45000}));
    EXPECT_EQ(m_actions.start->target.packetSize, gvcp::packetsize::kDefault);
    EXPECT_EQ(m_actions.start->setup.format.width, 1280u);
    EXPECT_TRUE(m_control.isStreaming());

    // Geometry is locked while streaming.
    EXPECT_EQ(statusOf(writeReg(featureAddress("Width"), 640)), gvcp::status::kBusy);
    EXPECT_EQ(statusOf(writeReg(gvcp::reg::kStreamPacketSize, 9000)), gvcp::status::kBusy);

    ASSERT_EQ(statusOf(writeReg(featureAddress("TriggerSoftware"), 1)), gvcp::status::kSuccess);
    EXPECT_EQ(m_actions.softwareTriggers, 1u);

    // Losing control stops the stream and closes the channel.
    m_now += 4s;
    m_actions = StreamActions();
    m_control.tick(m_now, m_actions);
    EXPECT_TRUE(m_actions.stop);
    EXPECT_FALSE(m_control.isStreaming());
    EXPECT_EQ(ackWord(send(readReg(gvcp::reg::kStreamPort)), 0), 0u);
}

TEST_F(DeviceControlTest, writeMemory_acceptsUnalignedStringsAndWholeNumbersOnly)
{
    takeControl();
    const std::uint32_t prefix = featureAddress("ResultPrefix");
    const std::vector<std::uint8_t> text{'a', 'b', 'c'};
    ASSERT_EQ(statusOf(writeMem(prefix + 1, text)), gvcp::status::kSuccess);
    const auto ack = send(readMem(prefix, 4));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(ack.data() + 12), 4), std::string("\0abc", 4));
    EXPECT_EQ(statusOf(writeMem(featureAddress("Width") + 2, {0, 8})), gvcp::status::kInvalidParameter);
    const std::vector<std::uint8_t> name{'L', 'i', 'n', 'e', '7', 0};
    ASSERT_EQ(statusOf(writeMem(gvcp::reg::kUserDefinedName, name)), gvcp::status::kSuccess);
    const auto discovery = send(command(gvcp::command::kDiscovery, 0xFFFF));
    EXPECT_STREQ(reinterpret_cast<const char*>(discovery.data() + 8 + gvcp::reg::kUserDefinedName), "Line7");
}

} // namespace

// What the stream controls promise: the link's speed, the rate it can
// carry, the packet size's own flags (the test packet fired once, not
// fragmenting kept) and the packet delay in timestamp ticks.
TEST_F(DeviceControlTest, streamControls_followTheEmulatedLink)
{
    const auto frameRate = [&] {
        const auto ack = send(readMem(featureAddress("ResultingFrameRate"), 8));
        std::uint64_t bits = 0;
        for (int i = 0; i < 8; ++i)
            bits = bits << 8 | ack.at(12 + i);
        double rate = 0;
        std::memcpy(&rate, &bits, sizeof rate);
        return rate;
    };
    EXPECT_EQ(ackWord(send(readReg(gvcp::reg::kLinkSpeed)), 0), 1000u);
    EXPECT_DOUBLE_EQ(frameRate(), 60.0); // 1280x1024 takes 10.8 ms at 1 Gb/s
    m_control.setLink(LinkSpeed{100'000'000});
    EXPECT_EQ(ackWord(send(readReg(gvcp::reg::kLinkSpeed)), 0), 100u);
    const double at100M = 1.0 / 0.1102; // 896 packets of 1538 bytes on the wire
    EXPECT_NEAR(frameRate(), at100M, 0.05);

    takeControl();
    ASSERT_EQ(statusOf(writeReg(gvcp::reg::kStreamDestination, 0x7F000001)), gvcp::status::kSuccess);
    ASSERT_EQ(statusOf(writeReg(gvcp::reg::kStreamPort, 45000)), gvcp::status::kSuccess);
    const std::uint32_t flags = gvcp::packetsize::kFireTestPacket | gvcp::packetsize::kDoNotFragment | 0x20000000;
    ASSERT_EQ(statusOf(writeReg(gvcp::reg::kStreamPacketSize, flags | 8000)), gvcp::status::kSuccess);
    ASSERT_TRUE(m_actions.testPacket);
    EXPECT_TRUE(m_actions.testPacket->doNotFragment);
    EXPECT_EQ(m_actions.testPacket->packetSize, 8000u);
    EXPECT_EQ(ackWord(send(readReg(gvcp::reg::kStreamPacketSize)), 0), gvcp::packetsize::kDoNotFragment | 8000u);
    // Fewer, larger packets: a little more of the link is left for pixels.
    EXPECT_GT(frameRate(), at100M + 0.3);

    ASSERT_EQ(statusOf(writeReg(gvcp::reg::kStreamPacketDelay, 250000)), gvcp::status::kSuccess);
    ASSERT_EQ(statusOf(writeReg(featureAddress("AcquisitionStart"), 1)), gvcp::status::kSuccess);
    ASSERT_TRUE(m_actions.start);
    EXPECT_EQ(m_actions.start->target.packetGap(), std::chrono::microseconds(250));
    EXPECT_LT(frameRate(), 7.0); // 166 packets, each 250 us apart
}

TEST(LinkSpeedTest, parsesTheSpeedsUsersWrite)
{
    const std::vector<std::pair<std::string, std::string>> speeds{
        {"100M", "100 Mb/s"}, {"1G", "1 Gb/s"}, {"2.5G", "2.5 Gb/s"}, {"10g", "10 Gb/s"},
        {"1000000000", "1 Gb/s"}, {"unlimited", "unlimited"}, {"", ""}, {"0.5M", ""}, {"1.G", ""}, {"1T", ""}};
    for (const auto& [text, shown] : speeds) {
        const std::optional<LinkSpeed> speed = LinkSpeed::parse(text);
        EXPECT_EQ(speed ? speed->text() : std::string(), shown) << text;
    }
}

TEST(SimulatorServerTest, refusesEveryAddressOffLoopbackBeforeOpeningASocket)
{
    SimulatorServer server;
    for (const std::uint32_t address : {0xC0A80001u, 0x0A000001u, 0x08080808u, 0x7F000000u, 0x7F0000FFu}) {
        std::string refusal;
        try {
            server.addDevice(std::make_unique<DemoCodeReader>(DemoCodeReader::demoIdentity(0)), address);
        } catch (const SimulatorError& error) {
            refusal = error.what();
        }
        EXPECT_NE(refusal.find("only loopback host addresses"), std::string::npos) << std::hex << address << refusal;
    }
}
