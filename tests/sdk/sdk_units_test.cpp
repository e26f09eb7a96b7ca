// Pieces of the SDKs that need no device: handle registry, device records,
// text fields, register recording and its dump format, frame conversion,
// JPEG encoding and code decoding.
#include "CodeCanvas.h"
#include "CodeDecoder.h"
#include "DeviceRecords.h"
#include "FrameImage.h"
#include "HandleRegistry.h"
#include "JpegEncoder.h"
#include "RegisterDumpWriter.h"
#include "RegisterRecorder.h"
#include "SdkTestHelpers.h"
#include "TextFields.h"
#include "XQCameraControl.h"
#include "XqCodeReaderCtrl.h"

#include <arv.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <cmath>
#include <filesystem>
#include <memory>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct Dummy {
    int value = 0;
};

TEST(HandleRegistry, staleDoubleAndForeignHandlesAreNotFound_sessionOutlivesRemoval)
{
    xq::HandleRegistry<Dummy> cameras(0x0001);
    xq::HandleRegistry<Dummy> readers(0x0002);
    XQ_HANDLE first = cameras.add(std::make_shared<Dummy>());
    std::shared_ptr<Dummy> inUse = cameras.find(first);
    ASSERT_NE(inUse, nullptr);
    EXPECT_EQ(readers.find(first), nullptr) << "a handle of one registry must be foreign to the other";
    EXPECT_NE(cameras.remove(first), nullptr);
    EXPECT_EQ(cameras.remove(first), nullptr);
    EXPECT_EQ(cameras.find(first), nullptr);
    EXPECT_EQ(cameras.find(reinterpret_cast<XQ_HANDLE>(std::uintptr_t{0xDEADBEEF})), nullptr);
    inUse->value = 7; // still valid memory for the call in progress
    EXPECT_EQ(inUse.use_count(), 1);
    // Serials are never reused, so a stale copy never names a new session.
    EXPECT_NE(cameras.add(std::make_shared<Dummy>()), first);
}

TEST(TextFields, longTextIsCutAtCharacterBoundaryAndTerminated)
{
    unsigned char field[8];
    xq::copyText(field, "abcdefghij");
    EXPECT_EQ(xq::fieldText(field), "abcdefg");
    // "abcdef" + "é" (2 bytes) + "z": the cut must not split the é.
    xq::copyText(field, "abcdef\xC3\xA9z");
    EXPECT_EQ(xq::fieldText(field), "abcdef");
    const char unterminated[4] = {'w', 'x', 'y', 'z'};
    EXPECT_EQ(xq::boundedText(unterminated, sizeof unterminated), "wxyz");
}

std::vector<std::uint8_t> be32(std::uint32_t value)
{
    return {static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
            static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
}

TEST(DeviceRecords, unknownTransportsAreRefusedAndListsStopAtTheLimit)
{
    EXPECT_FALSE(xq::isKnownTransportMask(0));
    EXPECT_FALSE(xq::isKnownTransportMask(0x80000000u | XQ_TLAYER_GIGE));
    EXPECT_TRUE(xq::isKnownTransportMask(XQ_TLAYER_GIGE | XQ_TLAYER_USB));

    xq::DiscoveredDevice device;
    device.model = std::string(31, 'M') + "\xC3"; // fills the bootstrap field, ends mid-character
    const std::vector<xq::DiscoveredDevice> devices(XQ_MAX_DEVICE_NUM + 3, device);
    xq::RecordStore<XQ_CODEREADER_DEVICE_INFO> store;
    auto list = std::make_unique<XQ_CODEREADER_DEVICE_INFO_LIST>();
    xq::fillDeviceList(*list, devices, store, [](const xq::DiscoveredDevice& found) {
        XQ_CODEREADER_DEVICE_INFO record{};
        xq::fillGigEInfo(record.stGigE, found);
        return record;
    });
    ASSERT_EQ(list->nDeviceNum, static_cast<unsigned int>(XQ_MAX_DEVICE_NUM));
    EXPECT_EQ(list->pDeviceInfo[0], list->pDeviceInfo[XQ_MAX_DEVICE_NUM - 1]) << "alike devices share one record";
    // Model bytes are kept as they are, alike in both SDKs' records.
    EXPECT_EQ(xq::fieldText(list->pDeviceInfo[0]->stGigE.chModelName), device.model);
    XQ_CC_DEVICE_INFO camera{};
    xq::fillGigEInfo(camera.stGigE, device);
    EXPECT_EQ(xq::fieldText(camera.stGigE.chModelName), device.model) << "32 bytes, no terminator";
    EXPECT_FALSE(xq::isRecordAccessible<XQ_CODEREADER_DEVICE_INFO>(nullptr, XQ_ACCESS_EXCLUSIVE));
}

TEST(RegisterRecorder, keepsChangedReadsInOrderWithTheirEpoch)
{
    xq::RegisterRecorder recorder;
    recorder.recordRead(0x100, be32(512).data(), 4);
    recorder.recordRead(0x100, be32(512).data(), 4); // same answer: nothing new
    recorder.recordWrite(0x104, be32(1).data(), 4);
    recorder.recordRead(0x100, be32(640).data(), 4); // answer changed after the write
    const xq::RegisterRecording recording = recorder.snapshot();
    ASSERT_EQ(recording.events.size(), 3u);
    EXPECT_EQ(recording.events[1].kind, xq::RegisterEvent::Kind::Write);
    EXPECT_EQ(recording.events[2].epoch, 1u);
    EXPECT_EQ(recording.lastRead.at({0x100, 4}), be32(640));
}

TEST(RegisterRecorder, stringAccessesAreSeparatedFromNumberRegisters)
{
    xq::RegisterRecorder recorder;
    recorder.markStringRange(0x48, 32);
    recorder.setStringContext(true);
    const std::vector<std::uint8_t> text(64, 'a');
    recorder.recordRead(0x1000, text.data(), 64);      // long read during a string call
    recorder.recordRead(0x2000, be32(1).data(), 4);    // availability register read on the way
    recorder.setStringContext(false);
    recorder.recordRead(0x50, be32(2).data(), 4);      // inside the marked range
    const auto recording = recorder.snapshot();
    EXPECT_TRUE(xq::isStringAccess(recording, {0x1000, 64}));
    EXPECT_FALSE(xq::isStringAccess(recording, {0x2000, 4}));
    EXPECT_TRUE(xq::isStringAccess(recording, {0x50, 4}));
    EXPECT_FALSE(xq::isStringAccess(recording, {0x68, 4}));
}

// The dump format byte for byte, as a replaying tool reads it.
TEST(RegisterDump, formatIsVersionedAndSplitIntoNumbersAndStrings)
{
    xq::RegisterRecorder recorder;
    recorder.recordRead(0x100, be32(512).data(), 4);
    recorder.recordWrite(0x100, be32(640).data(), 4);
    recorder.recordRead(0x100, be32(640).data(), 4);
    recorder.markStringRange(0x48, 8);
    const std::uint8_t vendor[8] = {'A', 'r', 'a', 'v', 'i', 's', 0, 0};
    recorder.recordRead(0x48, vendor, 8);
    const auto recording = recorder.snapshot();

    EXPECT_EQ(xq::formatRegisterDump(recording, false, "ID 5000", "dev"),
              "QUORVEX-REGDUMP 1\ncontent numeric\nmodel ID%205000\ndevice dev\nevents 3\n"
              "R 0 0x00000100 4 00000200\nW 1 0x00000100 4 00000280\nR 1 0x00000100 4 00000280\n"
              "last 1\nL 0x00000100 4 00000280\nend\n");
    EXPECT_EQ(xq::formatRegisterDump(recording, true, "ID 5000", "dev"),
              "QUORVEX-REGDUMP 1\ncontent string\nmodel ID%205000\ndevice dev\nevents 1\n"
              "R 1 0x00000048 8 4172617669730000\nlast 1\nL 0x00000048 8 4172617669730000\nend\n");
}

TEST(RegisterDump, filesAreNamedAfterTheModelAndHostileNamesWriteNothing)
{
    // The dumps go one level down, so that an escape lands in our own
    // temporary folder and goes with it, never in the shared /tmp.
    const xqtest::TemporaryFolder outer;
    ASSERT_FALSE(outer.path().empty());
    const std::string folder = outer.path() + "/dumps";
    ASSERT_TRUE(fs::create_directory(folder));
    xq::RegisterRecorder recorder;
    recorder.recordRead(0x100, be32(1).data(), 4);
    const auto recording = recorder.snapshot();

    EXPECT_EQ(xq::writeRegisterDumps(recording, folder, "ID2000", "dev"), XQ_OK);
    EXPECT_TRUE(fs::exists(folder + "/ID2000_regfile.dat"));
    EXPECT_TRUE(fs::exists(folder + "/ID2000_strRegFile.dat"));
    for (const std::string hostile : {"../escape", "back\\slash", "tab\tname"}) {
        EXPECT_EQ(xq::writeRegisterDumps(recording, folder, hostile, "dev"), XQ_ERR_INVALID_PARAMETER)
            << hostile;
    }
    EXPECT_FALSE(fs::exists(outer.path() + "/escape_regfile.dat"));
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(folder))
        ++files;
    EXPECT_EQ(files, 2u) << "only the pair of dumps, no temporary leftovers";
    EXPECT_EQ(xq::writeRegisterDumps(recording, folder + "/missing-folder", "ID2000", "dev"),
              XQ_ERR_RESOURCE);
}

TEST(RegisterDump, aWriteThatFailsMidwayReportsResourceAndKeepsTheOlderPair)
{
    const xqtest::TemporaryFolder folder;
    xq::RegisterRecorder recorder;
    recorder.recordRead(0x100, be32(1).data(), 4);
    ASSERT_EQ(xq::writeRegisterDumps(recorder.snapshot(), folder.path(), "ID2000", "old"), XQ_OK);
    const std::string before = xqtest::readFile(folder.path() + "/ID2000_regfile.dat");

    // A file size limit fails a write halfway, as a full disk does.
    rlimit saved{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &saved), 0);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit tight = saved;
    tight.rlim_cur = 64;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tight), 0);
    const int written = xq::writeRegisterDumps(recorder.snapshot(), folder.path(), "ID2000", "new");
    ::setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previousHandler);

    EXPECT_EQ(written, XQ_ERR_RESOURCE);
    EXPECT_EQ(xqtest::readFile(folder.path() + "/ID2000_regfile.dat"), before);
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(folder.path()))
        ++files;
    EXPECT_EQ(files, 2u) << "no temporary leftovers";
}

TEST(FrameImage, convertsDeepGreyAndRejectsShortOrUnknownFrames)
{
    std::vector<std::uint8_t> scratch;
    xq::FrameImage image;
    const std::uint16_t mono16[4] = {0x0000, 0x00FF, 0x8000, 0xFFFF};
    ASSERT_TRUE(xq::toFrameImage(ARV_PIXEL_FORMAT_MONO_16, 2, 2, mono16, sizeof mono16, scratch, image));
    EXPECT_EQ(std::vector<std::uint8_t>(image.pixels, image.pixels + 4), (std::vector<std::uint8_t>{0, 0, 0x80, 0xFF}));

    const std::uint8_t rgb[12] = {};
    EXPECT_TRUE(xq::toFrameImage(ARV_PIXEL_FORMAT_RGB_8_PACKED, 2, 2, rgb, sizeof rgb, scratch, image));
    EXPECT_EQ(image.channels(), 3);
    EXPECT_FALSE(xq::toFrameImage(ARV_PIXEL_FORMAT_RGB_8_PACKED, 2, 2, rgb, sizeof rgb - 1, scratch, image));
    EXPECT_FALSE(xq::toFrameImage(0x12345678, 2, 2, rgb, sizeof rgb, scratch, image));
    EXPECT_FALSE(xq::toFrameImage(ARV_PIXEL_FORMAT_MONO_8, 0, 2, rgb, sizeof rgb, scratch, image));
}

TEST(JpegEncoder, greyFrameSurvivesEncodingCloseToTheOriginal)
{
    std::vector<std::uint8_t> frame(320 * 240);
    for (std::size_t i = 0; i < frame.size(); ++i)
        frame[i] = static_cast<std::uint8_t>((i % 320 + i / 320) & 0xFF);
    const xq::FrameImage image{frame.data(), 320, 240, xq::PixelLayout::Grey};
    xq::JpegEncoder encoder;
    ASSERT_TRUE(encoder.encode(image, 90));
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> decoded;
    ASSERT_TRUE(xqtest::jpegSize(encoder.data(), encoder.size(), width, height, &decoded));
    ASSERT_EQ(decoded.size(), frame.size());
    EXPECT_EQ(width, 320);
    double error = 0;
    for (std::size_t i = 0; i < frame.size(); ++i)
        error += std::abs(int{decoded[i]} - int{frame[i]});
    EXPECT_LT(error / frame.size(), 2.0);
    EXPECT_FALSE(encoder.encode(image, 101));
}

class CodeDecoderTest : public ::testing::Test {
protected:
    CodeDecoderTest() : m_canvas(1280, 1024) {}
    xq::FrameImage image() const
    {
        return {m_canvas.pixels().data(), m_canvas.width(), m_canvas.height(), xq::PixelLayout::Grey};
    }
    void drawFourCodes()
    {
        EXPECT_TRUE(m_canvas.draw({ZXing::BarcodeFormat::QRCode, "QR-TEXT-1", 100, 100, 200, 200}));
        // Without the try-harder passes linear codes are looked for in the
        // middle band of rows, so they sit there.
        EXPECT_TRUE(m_canvas.draw({ZXing::BarcodeFormat::Code128, "C128-42", 800, 400, 400, 100}));
        EXPECT_TRUE(m_canvas.draw({ZXing::BarcodeFormat::EAN13, "400638133393", 100, 560, 380, 140}));
        // Data Matrix is looked for around the centre.
        EXPECT_TRUE(m_canvas.draw({ZXing::BarcodeFormat::DataMatrix, "DM-TEXT-9", 560, 432, 160, 160}));
    }
    xqtest::CodeCanvas m_canvas;
};

TEST_F(CodeDecoderTest, findsEachSymbologyWithToolNumbersAndClockwiseCorners)
{
    drawFourCodes();
    const auto codes = xq::decodeCodes(image(), xq::DecodeSettings{});
    struct Expected {
        int symbology;
        const char* text;
        int left, top, right, bottom;
    };
    for (const Expected& want : {Expected{XQ_SYMBOLOGY_QR, "QR-TEXT-1", 100, 100, 300, 300},
                                 Expected{XQ_SYMBOLOGY_CODE128, "C128-42", 800, 400, 1200, 500},
                                 Expected{XQ_SYMBOLOGY_EAN13, "4006381333931", 100, 560, 480, 700},
                                 Expected{XQ_SYMBOLOGY_DM, "DM-TEXT-9", 560, 432, 720, 592}}) {
        const auto found = std::find_if(codes.begin(), codes.end(),
                                        [&](const xq::DecodedCode& code) { return code.symbology == want.symbology; });
        ASSERT_NE(found, codes.end()) << want.text;
        EXPECT_EQ(found->text, want.text);
        // Top-left, top-right, bottom-right, bottom-left; linear codes' bars
        // may be found anywhere inside their box.
        const int slack = want.symbology == XQ_SYMBOLOGY_QR || want.symbology == XQ_SYMBOLOGY_DM ? 12 : 200;
        EXPECT_NEAR(found->corners[0].nX, want.left, slack) << want.text;
        EXPECT_NEAR(found->corners[1].nX, want.right, slack) << want.text;
        EXPECT_LT(found->corners[1].nY, found->corners[2].nY) << want.text;
        if (slack == 12) {
            EXPECT_NEAR(found->corners[0].nY, want.top, slack) << want.text;
            EXPECT_NEAR(found->corners[2].nY, want.bottom, slack) << want.text;
        }
    }

    xq::DecodeSettings qrOnly;
    qrOnly.formats = XQ_FORMAT_QR;
    const auto qr = xq::decodeCodes(image(), qrOnly);
    ASSERT_EQ(qr.size(), 1u);
    EXPECT_EQ(qr[0].symbology, XQ_SYMBOLOGY_QR);
    xq::DecodeSettings one;
    one.maxCodes = 1;
    EXPECT_EQ(xq::decodeCodes(image(), one).size(), 1u);
}

// ZXing 1.4 aborts on two equal linear codes in one picture when left to
// merge them itself; the decoder must survive and report both.
TEST_F(CodeDecoderTest, identicalCodesAnywhereInTheFrameAreAllReported)
{
    ASSERT_TRUE(m_canvas.draw({ZXing::BarcodeFormat::Code128, "SAME-1", 100, 20, 400, 80}));
    ASSERT_TRUE(m_canvas.draw({ZXing::BarcodeFormat::Code128, "SAME-1", 700, 20, 400, 80}));
    ASSERT_TRUE(m_canvas.draw({ZXing::BarcodeFormat::Code128, "SAME-1", 100, 900, 400, 80}));
    ASSERT_TRUE(m_canvas.draw({ZXing::BarcodeFormat::EAN13, "400638133393", 700, 860, 380, 140}));
    ASSERT_TRUE(m_canvas.draw({ZXing::BarcodeFormat::QRCode, "TWIN", 100, 300, 200, 200}));
    ASSERT_TRUE(m_canvas.draw({ZXing::BarcodeFormat::QRCode, "TWIN", 700, 300, 200, 200}));
    for (const bool tryHarder : {false, true}) {
        xq::DecodeSettings settings;
        settings.tryHarder = tryHarder;
        int same = 0;
        int ean = 0;
        for (const auto& code : xq::decodeCodes(image(), settings)) {
            same += code.text == "SAME-1" ? 1 : 0;
            ean += code.symbology == XQ_SYMBOLOGY_EAN13 ? 1 : 0;
        }
        EXPECT_EQ(same, 3) << "try harder: " << tryHarder;
        EXPECT_EQ(ean, 1) << "try harder: " << tryHarder;
    }
}

} // namespace
