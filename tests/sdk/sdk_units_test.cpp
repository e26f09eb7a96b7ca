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

#include <cmath>
#include <filesystem>
#include <map>
#include <memory>
#include <sstream>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct Dummy {
    int value = 0;
};

TEST(HandleRegistry, staleDoubleAndForeignHandlesAreNotFound)
{
    xq::HandleRegistry<Dummy> cameras(0x0001);
    xq::HandleRegistry<Dummy> readers(0x0002);
    XQ_HANDLE first = cameras.add(std::make_shared<Dummy>());
    XQ_HANDLE second = cameras.add(std::make_shared<Dummy>());
    EXPECT_NE(first, second);
    EXPECT_NE(first, nullptr);
    EXPECT_NE(cameras.find(first), nullptr);
    EXPECT_EQ(readers.find(first), nullptr) << "a handle of one registry must be foreign to the other";
    EXPECT_NE(cameras.remove(first), nullptr);
    EXPECT_EQ(cameras.remove(first), nullptr);
    EXPECT_EQ(cameras.find(first), nullptr);
    EXPECT_EQ(cameras.find(nullptr), nullptr);
    EXPECT_EQ(cameras.find(reinterpret_cast<XQ_HANDLE>(std::uintptr_t{0xDEADBEEF})), nullptr);
    // Serials are never reused, so a stale copy never names a new session.
    XQ_HANDLE third = cameras.add(std::make_shared<Dummy>());
    EXPECT_NE(third, first);
    EXPECT_NE(third, second);
}

TEST(HandleRegistry, sessionOutlivesRemovalWhileInUse)
{
    xq::HandleRegistry<Dummy> registry(0x0003);
    XQ_HANDLE handle = registry.add(std::make_shared<Dummy>());
    std::shared_ptr<Dummy> inUse = registry.find(handle);
    registry.remove(handle);
    ASSERT_NE(inUse, nullptr);
    inUse->value = 7; // still valid memory for the call in progress
    EXPECT_EQ(inUse.use_count(), 1);
}

TEST(TextFields, longTextIsCutAtCharacterBoundaryAndTerminated)
{
    unsigned char field[8];
    xq::copyText(field, "abcdefghij");
    EXPECT_EQ(xq::fieldText(field), "abcdefg");
    EXPECT_EQ(field[7], 0);
    // "abcde" + "é" (2 bytes) + "z": the cut must not split the é.
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

TEST(DeviceRecords, bothSdksGetTheSameGigEFieldsAndListsStopAtTheLimit)
{
    xq::DiscoveredDevice device;
    device.vendor = "Vendor";
    device.model = std::string(100, 'M');
    device.serial = "S1";
    device.ip = 0x7F000002;
    device.subnetMask = 0xFF000000;
    device.macHigh = 0x1234;
    device.macLow = 0x56789ABC;
    device.majorVersion = 2;

    XQ_CC_DEVICE_INFO camera{};
    xq::fillGigEIdentity(camera, device);
    xq::fillGigEInfo(camera.stGigE, device);
    XQ_CODEREADER_DEVICE_INFO reader{};
    xq::fillGigEIdentity(reader, device);
    xq::fillGigEInfo(reader.stGigE, device);
    EXPECT_EQ(camera.nMacAddrLow, 0x56789ABCu);
    EXPECT_EQ(reader.nMajorVer, 2u);
    EXPECT_EQ(camera.stGigE.nCurrentIp, reader.stGigE.nCurrentIp);
    // Each record cuts the model name to its own field size.
    EXPECT_EQ(xq::fieldText(camera.stGigE.chModelName), std::string(sizeof camera.stGigE.chModelName - 1, 'M'));
    EXPECT_EQ(xq::fieldText(reader.stGigE.chModelName), std::string(sizeof reader.stGigE.chModelName - 1, 'M'));
    EXPECT_EQ(xq::fieldText(reader.stGigE.chSerialNumber), "S1");

    EXPECT_FALSE(xq::isKnownTransportMask(0));
    EXPECT_FALSE(xq::isKnownTransportMask(0x80000000u | XQ_TLAYER_GIGE));
    EXPECT_TRUE(xq::isKnownTransportMask(XQ_TLAYER_GIGE | XQ_TLAYER_USB));

    // More devices than a list holds, all alike: the list is full and every
    // entry is the one shared record.
    const std::vector<xq::DiscoveredDevice> devices(XQ_MAX_DEVICE_NUM + 3, device);
    xq::RecordStore<XQ_CODEREADER_DEVICE_INFO> store;
    auto list = std::make_unique<XQ_CODEREADER_DEVICE_INFO_LIST>();
    xq::fillDeviceList(*list, devices, store, [](const xq::DiscoveredDevice& found) {
        XQ_CODEREADER_DEVICE_INFO record{};
        xq::fillGigEInfo(record.stGigE, found);
        return record;
    });
    ASSERT_EQ(list->nDeviceNum, static_cast<unsigned int>(XQ_MAX_DEVICE_NUM));
    EXPECT_EQ(list->pDeviceInfo[0], list->pDeviceInfo[XQ_MAX_DEVICE_NUM - 1]);
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
    EXPECT_EQ(recording.events[0].kind, xq::RegisterEvent::Kind::Read);
    EXPECT_EQ(recording.events[0].epoch, 0u);
    EXPECT_EQ(recording.events[1].kind, xq::RegisterEvent::Kind::Write);
    EXPECT_EQ(recording.events[1].epoch, 1u);
    EXPECT_EQ(recording.events[2].epoch, 1u);
    EXPECT_EQ(recording.events[2].bytes, be32(640));
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

// A reader of the dump format, as small as a replaying tool's would be.
struct ParsedDump {
    std::string content;
    std::string model;
    std::vector<std::string> events;
    std::map<std::uint64_t, std::string> last;
    bool complete = false;
};

ParsedDump parseDump(const std::string& text)
{
    ParsedDump dump;
    std::istringstream in(text);
    std::string line;
    std::getline(in, line);
    if (line != "QUORVEX-REGDUMP 1")
        return dump;
    std::size_t events = 0;
    std::size_t lasts = 0;
    while (std::getline(in, line)) {
        std::istringstream words(line);
        std::string tag;
        words >> tag;
        if (tag == "content")
            words >> dump.content;
        else if (tag == "model")
            words >> dump.model;
        else if (tag == "events")
            words >> events;
        else if (tag == "last")
            words >> lasts;
        else if (tag == "R" || tag == "W")
            dump.events.push_back(line);
        else if (tag == "L") {
            std::string address;
            unsigned length = 0;
            std::string hex;
            words >> address >> length >> hex;
            if (hex.size() != 2u * length)
                return dump;
            dump.last[std::stoull(address, nullptr, 16)] = hex;
        } else if (tag == "end")
            dump.complete = events == dump.events.size() && lasts == dump.last.size();
    }
    return dump;
}

TEST(RegisterDump, formatIsVersionedAndReadableBack)
{
    xq::RegisterRecorder recorder;
    recorder.recordRead(0x100, be32(512).data(), 4);
    recorder.recordWrite(0x100, be32(640).data(), 4);
    recorder.recordRead(0x100, be32(640).data(), 4);
    recorder.markStringRange(0x48, 8);
    const std::uint8_t vendor[8] = {'A', 'r', 'a', 'v', 'i', 's', 0, 0};
    recorder.recordRead(0x48, vendor, 8);
    const auto recording = recorder.snapshot();

    const ParsedDump numbers = parseDump(xq::formatRegisterDump(recording, false, "ID 5000", "dev"));
    EXPECT_TRUE(numbers.complete);
    EXPECT_EQ(numbers.content, "numeric");
    EXPECT_EQ(numbers.model, "ID%205000") << "blanks in device texts are escaped";
    ASSERT_EQ(numbers.events.size(), 3u);
    EXPECT_EQ(numbers.events[0], "R 0 0x00000100 4 00000200");
    EXPECT_EQ(numbers.events[1], "W 1 0x00000100 4 00000280");
    EXPECT_EQ(numbers.events[2], "R 1 0x00000100 4 00000280");
    EXPECT_EQ(numbers.last.at(0x100), "00000280");
    EXPECT_EQ(numbers.last.count(0x48), 0u);

    const ParsedDump strings = parseDump(xq::formatRegisterDump(recording, true, "ID 5000", "dev"));
    EXPECT_TRUE(strings.complete);
    EXPECT_EQ(strings.content, "string");
    EXPECT_EQ(strings.last.at(0x48), "4172617669730000");
}

TEST(RegisterDump, filesAreNamedAfterTheModelAndHostileNamesWriteNothing)
{
    const xqtest::TemporaryFolder folder;
    ASSERT_FALSE(folder.path().empty());
    xq::RegisterRecorder recorder;
    recorder.recordRead(0x100, be32(1).data(), 4);
    const auto recording = recorder.snapshot();

    EXPECT_EQ(xq::writeRegisterDumps(recording, folder.path(), "ID2000", "dev"), XQ_OK);
    EXPECT_TRUE(fs::exists(folder.path() + "/ID2000_regfile.dat"));
    EXPECT_TRUE(fs::exists(folder.path() + "/ID2000_strRegFile.dat"));
    EXPECT_EQ(xq::writeRegisterDumps(recording, folder.path(), "", "dev"), XQ_OK);
    EXPECT_TRUE(fs::exists(folder.path() + "/_regfile.dat")) << "an empty model name still writes the dumps";

    for (const std::string hostile : {"../escape", "a/b", "back\\slash", "tab\tname"}) {
        EXPECT_EQ(xq::writeRegisterDumps(recording, folder.path(), hostile, "dev"), XQ_ERR_INVALID_PARAMETER)
            << hostile;
    }
    EXPECT_FALSE(fs::exists(fs::path(folder.path()).parent_path() / "escape_regfile.dat"));
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(folder.path()))
        ++files;
    EXPECT_EQ(files, 4u) << "only the two pairs of dumps, no temporary leftovers";

    EXPECT_EQ(xq::writeRegisterDumps(recording, folder.path() + "/missing-folder", "ID2000", "dev"),
              XQ_ERR_RESOURCE);
}

TEST(FrameImage, convertsDeepGreyAndRejectsShortOrUnknownFrames)
{
    std::vector<std::uint8_t> scratch;
    xq::FrameImage image;
    const std::uint16_t mono16[4] = {0x0000, 0x00FF, 0x8000, 0xFFFF};
    ASSERT_TRUE(xq::toFrameImage(ARV_PIXEL_FORMAT_MONO_16, 2, 2, mono16, sizeof mono16, scratch, image));
    EXPECT_EQ(image.layout, xq::PixelLayout::Grey);
    EXPECT_EQ(image.pixels[0], 0);
    EXPECT_EQ(image.pixels[1], 0);
    EXPECT_EQ(image.pixels[2], 0x80);
    EXPECT_EQ(image.pixels[3], 0xFF);

    const std::uint8_t rgb[12] = {};
    EXPECT_TRUE(xq::toFrameImage(ARV_PIXEL_FORMAT_RGB_8_PACKED, 2, 2, rgb, sizeof rgb, scratch, image));
    EXPECT_EQ(image.channels(), 3);
    EXPECT_FALSE(xq::toFrameImage(ARV_PIXEL_FORMAT_RGB_8_PACKED, 2, 2, rgb, sizeof rgb - 1, scratch, image));
    EXPECT_FALSE(xq::toFrameImage(ARV_PIXEL_FORMAT_MONO_8, 4, 4, rgb, sizeof rgb, scratch, image));
    EXPECT_FALSE(xq::toFrameImage(0x12345678, 2, 2, rgb, sizeof rgb, scratch, image));
    EXPECT_FALSE(xq::toFrameImage(ARV_PIXEL_FORMAT_MONO_8, 0, 2, rgb, sizeof rgb, scratch, image));
    EXPECT_FALSE(xq::toFrameImage(ARV_PIXEL_FORMAT_MONO_8, 2, 2, nullptr, 4, scratch, image));
}

TEST(JpegEncoder, greyFrameSurvivesEncodingCloseToTheOriginal)
{
    std::vector<std::uint8_t> frame(320 * 240);
    for (int y = 0; y < 240; ++y)
        for (int x = 0; x < 320; ++x)
            frame[static_cast<std::size_t>(y) * 320 + x] = static_cast<std::uint8_t>((x + y) & 0xFF);
    const xq::FrameImage image{frame.data(), 320, 240, xq::PixelLayout::Grey};
    xq::JpegEncoder encoder;
    ASSERT_TRUE(encoder.encode(image, 90));
    ASSERT_GT(encoder.size(), 0u);
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> decoded;
    ASSERT_TRUE(xqtest::jpegSize(encoder.data(), encoder.size(), width, height, &decoded));
    ASSERT_EQ(width, 320);
    ASSERT_EQ(height, 240);
    ASSERT_EQ(decoded.size(), frame.size());
    double error = 0;
    for (std::size_t i = 0; i < frame.size(); ++i)
        error += std::abs(int{decoded[i]} - int{frame[i]});
    EXPECT_LT(error / frame.size(), 2.0);
    EXPECT_FALSE(encoder.encode(image, 0));
    EXPECT_FALSE(encoder.encode(image, 101));
}

xqtest::CodeCanvas canvasWithFourCodes()
{
    xqtest::CodeCanvas canvas(1280, 1024);
    EXPECT_TRUE(canvas.draw({ZXing::BarcodeFormat::QRCode, "QR-TEXT-1", 100, 100, 200, 200}));
    // Without the try-harder passes linear codes are looked for in the middle
    // band of rows, so they sit there.
    EXPECT_TRUE(canvas.draw({ZXing::BarcodeFormat::Code128, "C128-42", 800, 400, 400, 100}));
    EXPECT_TRUE(canvas.draw({ZXing::BarcodeFormat::EAN13, "400638133393", 100, 560, 380, 140}));
    // Data Matrix is looked for around the centre.
    EXPECT_TRUE(canvas.draw({ZXing::BarcodeFormat::DataMatrix, "DM-TEXT-9", 560, 432, 160, 160}));
    return canvas;
}

const xq::DecodedCode* findCode(const std::vector<xq::DecodedCode>& codes, int symbology)
{
    for (const auto& code : codes)
        if (code.symbology == symbology)
            return &code;
    return nullptr;
}

TEST(CodeDecoder, findsEachSymbologyWithToolNumbersAndCorners)
{
    const auto canvas = canvasWithFourCodes();
    const xq::FrameImage image{canvas.pixels().data(), canvas.width(), canvas.height(), xq::PixelLayout::Grey};
    const auto codes = xq::decodeCodes(image, xq::DecodeSettings{});

    const auto* qr = findCode(codes, XQ_SYMBOLOGY_QR);
    ASSERT_NE(qr, nullptr);
    EXPECT_EQ(qr->text, "QR-TEXT-1");
    // Top-left, top-right, bottom-right, bottom-left of the 200x200 box.
    EXPECT_NEAR(qr->corners[0].nX, 100, 12);
    EXPECT_NEAR(qr->corners[0].nY, 100, 12);
    EXPECT_NEAR(qr->corners[1].nX, 300, 12);
    EXPECT_NEAR(qr->corners[1].nY, 100, 12);
    EXPECT_NEAR(qr->corners[2].nX, 300, 12);
    EXPECT_NEAR(qr->corners[2].nY, 300, 12);
    EXPECT_NEAR(qr->corners[3].nX, 100, 12);
    EXPECT_NEAR(qr->corners[3].nY, 300, 12);

    const auto* code128 = findCode(codes, XQ_SYMBOLOGY_CODE128);
    ASSERT_NE(code128, nullptr);
    EXPECT_EQ(code128->text, "C128-42");
    EXPECT_GE(code128->corners[0].nX, 795);
    EXPECT_LE(code128->corners[1].nX, 1205);

    const auto* ean = findCode(codes, XQ_SYMBOLOGY_EAN13);
    ASSERT_NE(ean, nullptr);
    EXPECT_EQ(ean->text, "4006381333931");

    const auto* dm = findCode(codes, XQ_SYMBOLOGY_DM);
    ASSERT_NE(dm, nullptr);
    EXPECT_EQ(dm->text, "DM-TEXT-9");
    EXPECT_NEAR(dm->corners[0].nX, 560, 12);
    EXPECT_NEAR(dm->corners[2].nY, 592, 12);
}

TEST(CodeDecoder, formatMaskAndCodeLimitAreHonoured)
{
    const auto canvas = canvasWithFourCodes();
    const xq::FrameImage image{canvas.pixels().data(), canvas.width(), canvas.height(), xq::PixelLayout::Grey};
    xq::DecodeSettings qrOnly;
    qrOnly.formats = XQ_FORMAT_QR;
    const auto codes = xq::decodeCodes(image, qrOnly);
    ASSERT_EQ(codes.size(), 1u);
    EXPECT_EQ(codes[0].symbology, XQ_SYMBOLOGY_QR);

    xq::DecodeSettings one;
    one.maxCodes = 1;
    EXPECT_EQ(xq::decodeCodes(image, one).size(), 1u);

    xq::DecodeSettings none;
    none.formats = 0;
    EXPECT_TRUE(xq::decodeCodes(image, none).empty());

    const std::vector<std::uint8_t> blank(64 * 64, 255);
    EXPECT_TRUE(xq::decodeCodes({blank.data(), 64, 64, xq::PixelLayout::Grey}, {}).empty());
}

// ZXing 1.4 aborts on two equal linear codes in one picture when left to
// merge them itself; the decoder must survive and report both.
TEST(CodeDecoder, identicalCodesAnywhereInTheFrameAreAllReported)
{
    xqtest::CodeCanvas canvas(1280, 1024);
    ASSERT_TRUE(canvas.draw({ZXing::BarcodeFormat::Code128, "SAME-1", 100, 20, 400, 80}));
    ASSERT_TRUE(canvas.draw({ZXing::BarcodeFormat::Code128, "SAME-1", 700, 20, 400, 80}));
    ASSERT_TRUE(canvas.draw({ZXing::BarcodeFormat::Code128, "SAME-1", 100, 900, 400, 80}));
    ASSERT_TRUE(canvas.draw({ZXing::BarcodeFormat::EAN13, "400638133393", 700, 860, 380, 140}));
    ASSERT_TRUE(canvas.draw({ZXing::BarcodeFormat::QRCode, "TWIN", 100, 300, 200, 200}));
    ASSERT_TRUE(canvas.draw({ZXing::BarcodeFormat::QRCode, "TWIN", 700, 300, 200, 200}));
    const xq::FrameImage image{canvas.pixels().data(), canvas.width(), canvas.height(), xq::PixelLayout::Grey};

    for (const bool tryHarder : {false, true}) {
        xq::DecodeSettings settings;
        settings.tryHarder = tryHarder;
        const auto codes = xq::decodeCodes(image, settings);
        int same = 0;
        int ean = 0;
        for (const auto& code : codes) {
            if (code.text == "SAME-1") {
                ++same;
                EXPECT_EQ(code.symbology, XQ_SYMBOLOGY_CODE128);
                EXPECT_LT(code.corners[0].nX, code.corners[1].nX);
                EXPECT_LT(code.corners[1].nY, code.corners[2].nY);
            }
            ean += code.symbology == XQ_SYMBOLOGY_EAN13 ? 1 : 0;
        }
        EXPECT_EQ(same, 3) << "try harder: " << tryHarder;
        EXPECT_EQ(ean, 1) << "try harder: " << tryHarder;
    }
}

} // namespace
