// Replay of a virtual camera without a network: the dump reader against
// damaged files, the replay rules of the register image, frames from JPEG
// files, and a replayed camera driven through its control channel,
// including the hold on its register file.

#include "replay_fixture.h"

#include "FilePermissions.h"

#include "camera_hold.h"
#include "core/device_control.h"
#include "gvcp_packets.h"
#include "jpeg_frame_source.h"
#include "register_dump.h"
#include "register_image.h"
#include "replayed_camera.h"
#include "store_reader.h"

#include <gtest/gtest.h>

using namespace quorvex::sim;
using namespace quorvex::sim::test;
namespace store = quorvex::store;

namespace {

store::StoreCamera listedCamera(const fs::path& store, const std::string& group)
{
    const store::StoreListing listing = store::readStore(store.string());
    for (const store::StoreCamera& camera : listing.cameras)
        if (camera.group == group)
            return camera;
    ADD_FAILURE() << "the store reader does not list " << group;
    return {};
}

std::uint32_t readWord(DeviceModel& model, std::uint32_t address)
{
    std::uint8_t bytes[4] = {};
    EXPECT_EQ(model.readMemory(address, {bytes, 4}), gvcp::status::kSuccess);
    return readBig32(bytes);
}

} // namespace

TEST(RegisterDump, readsHeaderEventsAndLastReads)
{
    const std::string text = "QUORVEX-REGDUMP 1\ncontent string\nmodel QVX%20ID\ndevice dev%25x\nevents 2\n"
                             "R 0 0x00010000 4 0000abcd\nW 1 0x10004 2 ffee\nlast 1\nL 0x00010000 4 0000abcd\nend\n";
    RegisterDump dump;
    std::string error;
    ASSERT_TRUE(parseRegisterDump(text, dump, error)) << error;
    EXPECT_EQ(dump.content, RegisterDump::Content::String);
    EXPECT_EQ(dump.model, "QVX ID");
    EXPECT_EQ(dump.device, "dev%x");
    ASSERT_EQ(dump.events.size(), 2u);
    EXPECT_EQ(dump.events[1].kind, RegisterAccessEvent::Kind::Write);
    EXPECT_EQ(dump.events[1].epoch, 1u);
    EXPECT_EQ(dump.events[1].address, 0x10004u);
    EXPECT_EQ(dump.events[1].bytes, (std::vector<std::uint8_t>{0xFF, 0xEE}));
    ASSERT_EQ(dump.lastRead.size(), 1u);
}

TEST(RegisterDump, damagedFiles_areRefusedWithTheLine)
{
    const std::string head = "QUORVEX-REGDUMP 1\ncontent numeric\nmodel M\ndevice D\n";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "line 1"},
        {"QUORVEX-REGDUMP 2\n", "not a register dump"},
        {"QUORVEX-REGDUMP 1\ncontent pictures\n", "line 2: content"},
        {head + "events 2\nR 0 0x10 4 00000000\n", "ends after 1 of 2 events"},
        {head + "events 1\nR 0 0x10 4 0000\n", "line 6: data is not 4 bytes"},
        {head + "events 1\nX 0 0x10 4 00000000\n", "R|W"},
        {head + "events 1\nR 0 16 4 00000000\n", "address"},
        {head + "events 1\nR 0 0x10 99999999 00\n", "length"},
        {head + "events 1\nR 0 0xfffffffe 4 00000000\n", "32-bit address space"},
        {head + "events 99999999999999999999\n", "event count"},
        {head + "events 0\nlast 0\n", "closing \"end\""},
    };
    for (const auto& [text, message] : cases) {
        RegisterDump dump;
        std::string error;
        EXPECT_FALSE(parseRegisterDump(text, dump, error)) << text;
        EXPECT_NE(error.find(message), std::string::npos) << "got: " << error;
    }
}

TEST(RegisterDump, missingFile_namesIt)
{
    RegisterDump dump;
    std::string error;
    EXPECT_FALSE(readRegisterDump("/nonexistent/M_regfile.dat", dump, error));
    EXPECT_NE(error.find("/nonexistent/M_regfile.dat"), std::string::npos);
}

TEST(RegisterImage, firstReadWins_writesAreKept_unknownBytesReadZero)
{
    RegisterDump numbers;
    RegisterDump strings;
    std::string error;
    // A later read (after a write) of the same bytes does not change the start
    // value; an earlier epoch in the other dump does.
    ASSERT_TRUE(parseRegisterDump(dumpText("numeric", {{'R', 0, 0x100, {1, 2, 3, 4}},
                                                        {'W', 1, 0x100, {9, 9, 9, 9}},
                                                        {'R', 1, 0x100, {9, 9, 9, 9}},
                                                        {'R', 2, 0x200, {7, 7}}}),
                                  numbers, error)) << error;
    ASSERT_TRUE(parseRegisterDump(dumpText("string", {{'R', 1, 0x1FE, {5, 5, 5, 5}}, {'R', 0, 0x300, {'a', 'b', 0, 0}}}),
                                  strings, error)) << error;
    RegisterImage image = RegisterImage::fromDumps({&numbers, &strings});

    std::uint8_t bytes[8] = {};
    image.read(0x100, bytes, 4);
    EXPECT_EQ(std::vector<std::uint8_t>(bytes, bytes + 4), (std::vector<std::uint8_t>{1, 2, 3, 4}));
    // 0x1FE-0x201 read at epoch 1 comes before 0x200 read at epoch 2.
    image.read(0x1FE, bytes, 4);
    EXPECT_EQ(std::vector<std::uint8_t>(bytes, bytes + 4), (std::vector<std::uint8_t>{5, 5, 5, 5}));
    image.read(0x400, bytes, 4);
    EXPECT_EQ(std::vector<std::uint8_t>(bytes, bytes + 4), (std::vector<std::uint8_t>{0, 0, 0, 0}));
    EXPECT_FALSE(image.knows(0x400, 1));
    EXPECT_EQ(image.text(0x300, 4), std::optional<std::string>("ab"));
    EXPECT_EQ(image.text(0x302, 4), std::nullopt);

    const std::uint8_t written[2] = {0xAA, 0xBB};
    image.write(0x101, written, 2);
    image.read(0x100, bytes, 4);
    EXPECT_EQ(std::vector<std::uint8_t>(bytes, bytes + 4), (std::vector<std::uint8_t>{1, 0xAA, 0xBB, 4}));
}

TEST(JpegFrames, decodedToTheFrameSize_cutOrPaddedAtTheTopLeft)
{
    const fs::path folder = temporaryStore("jpeg");
    writeFile(folder / "a.jpg", greyJpeg(32, 16, 0));
    writeFile(folder / "broken.jpg", "not a jpeg at all");

    std::vector<std::uint8_t> frame;
    std::string error;
    FrameFormat larger{40, 20, gvsp::kPixelMono8};
    ASSERT_TRUE(decodeJpegInto((folder / "a.jpg").string(), larger, frame, error)) << error;
    ASSERT_EQ(frame.size(), 800u);
    EXPECT_NEAR(frame[5 * 40 + 10], (10 + 3 * 5) % 256, 2); // inside the picture
    EXPECT_EQ(frame[5 * 40 + 35], 0);                      // padding right of it
    EXPECT_EQ(frame[18 * 40 + 3], 0);                      // padding below it

    FrameFormat smaller{8, 4, gvsp::kPixelRgb8};
    ASSERT_TRUE(decodeJpegInto((folder / "a.jpg").string(), smaller, frame, error)) << error;
    ASSERT_EQ(frame.size(), 96u);
    EXPECT_NEAR(frame[(3 * 8 + 7) * 3 + 1], 7 + 9, 2); // grey comes out as equal RGB
    EXPECT_NEAR(frame[(3 * 8 + 7) * 3], frame[(3 * 8 + 7) * 3 + 2], 1);

    EXPECT_FALSE(decodeJpegInto((folder / "broken.jpg").string(), smaller, frame, error));
    EXPECT_NE(error.find("broken.jpg"), std::string::npos);
    EXPECT_EQ(frame, std::vector<std::uint8_t>(96, 0));

    // Frames loop over the images in order.
    JpegFrameSource source({(folder / "a.jpg").string(), (folder / "broken.jpg").string()});
    source.render(3, larger, frame);
    EXPECT_NEAR(frame[5 * 40 + 10], 25, 2);
    source.render(4, larger, frame);
    EXPECT_EQ(frame, std::vector<std::uint8_t>(800, 0));
}

class ReplayedCameraTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_store = temporaryStore("camera");
        writeCamera(m_store, "Vir12345678");
        writeConfig(m_store, {configGroup("Vir12345678")});
    }

    std::unique_ptr<ReplayedCamera> load(std::string& error)
    {
        return ReplayedCamera::load(listedCamera(m_store, "Vir12345678"),
                                    [this](const std::string& line) { m_log.push_back(line); }, error);
    }

    fs::path m_store;
    std::vector<std::string> m_log;
};

TEST_F(ReplayedCameraTest, identityFromTheGroup_registersAsFirstRead_framesFromTheImages)
{
    std::string error;
    const auto camera = load(error);
    ASSERT_TRUE(camera) << error;
    const DeviceIdentity& identity = camera->identity();
    EXPECT_EQ(identity.serialNumber, "Vir12345678");
    EXPECT_EQ(identity.modelName, "QVX-ID2040M");
    EXPECT_EQ(identity.deviceVersion, "V3.2.1.R 240315");
    EXPECT_EQ(identity.mac, (std::array<std::uint8_t, 6>{0x00, 0x7C, 0x3F, 0xA1, 0x00, 0x7C}));
    // The device's own words where the collection read them, else the group's.
    EXPECT_EQ(identity.manufacturerName, "Quorvex Demo");
    EXPECT_EQ(identity.manufacturerInfo, "GEV");
    EXPECT_EQ(camera->genicamXml().substr(0, 5), "<?xml");

    EXPECT_EQ(readWord(*camera, demoAddress("Width")), 64u);
    EXPECT_EQ(readWord(*camera, demoAddress("Height")), 48u);
    EXPECT_EQ(readWord(*camera, demoAddress("DecodeTimeout")), 0u); // never read
    EXPECT_EQ(camera->images().size(), 3u);

    const AcquisitionSetup setup = camera->acquisitionSetup();
    EXPECT_EQ(setup.format.width, 64u);
    EXPECT_EQ(setup.format.height, 48u);
    EXPECT_EQ(setup.format.pixelFormat, gvsp::kPixelMono8);
    EXPECT_FALSE(setup.softwareTriggered);
    EXPECT_TRUE(m_log.empty()) << m_log.front();
}

TEST_F(ReplayedCameraTest, writesAreKept_andCommandsAreRecognisedByTheirRegisters)
{
    std::string error;
    const auto camera = load(error);
    ASSERT_TRUE(camera) << error;
    DeviceCommands commands;
    ASSERT_EQ(camera->writeMemory(demoAddress("TriggerMode"), ByteView(big32(1)), commands), gvcp::status::kSuccess);
    EXPECT_EQ(readWord(*camera, demoAddress("TriggerMode")), 1u);
    EXPECT_TRUE(camera->acquisitionSetup().softwareTriggered);

    camera->writeMemory(demoAddress("AcquisitionStart"), ByteView(big32(1)), commands);
    camera->writeMemory(demoAddress("TriggerSoftware"), ByteView(big32(1)), commands);
    camera->writeMemory(demoAddress("TriggerSoftware"), ByteView(big32(1)), commands);
    EXPECT_TRUE(commands.acquisitionStart);
    EXPECT_FALSE(commands.acquisitionStop);
    EXPECT_EQ(commands.softwareTriggers, 2u);
    camera->writeMemory(demoAddress("AcquisitionStop"), ByteView(big32(1)), commands);
    EXPECT_TRUE(commands.acquisitionStop);

    // A colour format asks for RGB frames; transport settings start as first read.
    camera->writeMemory(demoAddress("PixelFormat"), ByteView(big32(gvsp::kPixelRgb8)), commands);
    EXPECT_EQ(camera->acquisitionSetup().format.pixelFormat, gvsp::kPixelRgb8);
    const std::vector<BootstrapSetting> settings = camera->initialBootstrapSettings();
    ASSERT_EQ(settings.size(), 1u);
    EXPECT_EQ(settings[0].address, gvcp::reg::kStreamPacketSize);
    EXPECT_EQ(settings[0].value, 1400u);
}

// The collected rate holds until the link cannot carry it: then
// ResultingFrameRate says what it can, and the stream keeps to it.
TEST_F(ReplayedCameraTest, resultingFrameRate_isLimitedByTheLink)
{
    std::string error;
    const auto camera = load(error);
    ASSERT_TRUE(camera) << error;
    const auto resultingRate = [&] {
        std::array<std::uint8_t, 8> bytes{};
        camera->readMemory(demoAddress("ResultingFrameRate"), {bytes.data(), bytes.size()});
        const std::uint64_t bits = std::uint64_t{readBig32(bytes.data())} << 32 | readBig32(bytes.data() + 4);
        double rate = 0;
        std::memcpy(&rate, &bits, sizeof rate);
        return rate;
    };
    TransportSettings transport;
    transport.packetSize = 1400;
    camera->transportChanged(transport);
    EXPECT_DOUBLE_EQ(resultingRate(), 60.0);
    transport.link = LinkSpeed{1'000'000}; // 64x48 in three packets and the leader and trailer: 28 ms
    camera->transportChanged(transport);
    EXPECT_NEAR(resultingRate(), 35.8, 0.5);
    EXPECT_NEAR(camera->acquisitionSetup().framesPerSecond, 35.8, 0.5);
}

TEST_F(ReplayedCameraTest, controlHoldsTheRegisterFile_untilReleasedOrLapsed)
{
    std::string error;
    auto camera = load(error);
    ASSERT_TRUE(camera) << error;
    const std::string registerFile = camera->storeCamera().registerFile;
    DeviceControl control(std::move(camera), 0x7F000002);
    EXPECT_EQ(control.ipAddress(), 0x7F000002u);
    const Peer client{0x7F000001, 50000};
    const auto now = Clock::now();
    std::vector<std::uint8_t> reply;
    StreamActions actions;
    const auto send = [&](const std::vector<std::uint8_t>& packet, Clock::time_point at) {
        control.handle(ByteView(packet), client, at, reply, actions);
    };

    EXPECT_EQ(store::probeHold(registerFile), store::HoldState::NotHeld);
    send(writeReg(gvcp::reg::kControlChannelPrivilege, gvcp::ccp::kControl), now);
    ASSERT_EQ(ackStatus(reply), gvcp::status::kSuccess);
    EXPECT_EQ(store::probeHold(registerFile), store::HoldState::Held);
    send(writeReg(gvcp::reg::kControlChannelPrivilege, 0), now);
    EXPECT_EQ(store::probeHold(registerFile), store::HoldState::NotHeld);

    send(writeReg(gvcp::reg::kControlChannelPrivilege, gvcp::ccp::kExclusive), now);
    EXPECT_EQ(store::probeHold(registerFile), store::HoldState::Held);
    // No heartbeat for longer than the time-out: control and hold end.
    control.tick(now + std::chrono::seconds(10), actions);
    EXPECT_FALSE(control.privilege().isHeld());
    EXPECT_EQ(store::probeHold(registerFile), store::HoldState::NotHeld);

    // The end of the device ends a hold too.
    send(writeReg(gvcp::reg::kControlChannelPrivilege, gvcp::ccp::kControl), now + std::chrono::seconds(11));
    EXPECT_EQ(store::probeHold(registerFile), store::HoldState::Held);
}

TEST_F(ReplayedCameraTest, damagedFiles_refuseTheCameraWithTheReason)
{
    const fs::path folder = m_store / "Cameras" / "Vir12345678";
    std::string error;

    writeFile(folder / "QVX-ID2040M_strRegFile.dat", "QUORVEX-REGDUMP 1\ncontent string\n");
    EXPECT_FALSE(load(error));
    EXPECT_NE(error.find("QVX-ID2040M_strRegFile.dat line 3"), std::string::npos) << error;

    writeCamera(m_store, "Vir12345678");
    writeFile(folder / "QVX-ID2040M.xml", "<RegisterDescription><broken");
    EXPECT_FALSE(load(error));
    EXPECT_NE(error.find("QVX-ID2040M.xml"), std::string::npos) << error;

    writeCamera(m_store, "Vir12345678");
    for (int n = 1; n <= 3; ++n)
        writeFile(folder / "Jpg" / (std::to_string(n) + ".jpg"), "garbage");
    EXPECT_FALSE(load(error));
    EXPECT_NE(error.find("no readable JPEG"), std::string::npos) << error;
    EXPECT_EQ(m_log.size(), 3u) << "one line per image left out";

    // One bad and one unreadable image of three: served with the others, and said so.
    writeCamera(m_store, "Vir12345678");
    writeFile(folder / "Jpg" / "2.jpg", "garbage");
    fs::permissions(folder / "Jpg" / "3.jpg", fs::perms::none);
    const xqtest::FilePermissionsEnforced permissions;
    ASSERT_TRUE(permissions.isActive());
    m_log.clear();
    const auto camera = load(error);
    ASSERT_TRUE(camera) << error;
    EXPECT_EQ(camera->images().size(), 1u);
    ASSERT_EQ(m_log.size(), 2u);
    EXPECT_NE(m_log[0].find("2.jpg"), std::string::npos);
    EXPECT_NE(m_log[1].find("3.jpg: cannot be read"), std::string::npos) << m_log[1];
}

// A command whose register cannot be written is no command: a zero length.
TEST_F(ReplayedCameraTest, aCommandRegisterOfNoLength_isSaidToSendNoFrames)
{
    const fs::path description = m_store / "Cameras" / "Vir12345678" / "QVX-ID2040M.xml";
    std::string xml = readFile(description);
    const std::size_t node = xml.find("Name=\"AcquisitionStartReg\"");
    ASSERT_NE(node, std::string::npos);
    const std::size_t length = xml.find("<Length>4</Length>", node);
    ASSERT_NE(length, std::string::npos);
    writeFile(description, xml.replace(length, 18, "<Length>0</Length>"));
    std::string error;
    ASSERT_TRUE(load(error)) << error;
    ASSERT_EQ(m_log.size(), 1u);
    EXPECT_NE(m_log[0].find("no AcquisitionStart register"), std::string::npos) << m_log[0];
}

TEST_F(ReplayedCameraTest, imagesOfAnotherSize_areServedAndSaidSo)
{
    CameraFiles files;
    files.width = 80;
    writeCamera(m_store, "Vir12345678", files);
    // The register says 80, the images are 80 wide too: now shrink the register.
    const fs::path folder = m_store / "Cameras" / "Vir12345678";
    writeFile(folder / "QVX-ID2040M_regfile.dat",
              dumpText("numeric", {{'R', 0, demoAddress("Width"), big32(64)}, {'R', 0, demoAddress("Height"), big32(48)}}));
    std::string error;
    const auto camera = load(error);
    ASSERT_TRUE(camera) << error;
    ASSERT_EQ(m_log.size(), 1u);
    EXPECT_NE(m_log[0].find("images are 80x48, the registers ask for 64x48"), std::string::npos) << m_log[0];
    EXPECT_EQ(camera->acquisitionSetup().format.width, 64u);
}
