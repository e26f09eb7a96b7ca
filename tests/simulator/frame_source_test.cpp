// Frames of the demo code reader: real, decodable codes that follow the
// frame number, the same bytes for the same frame, both pixel formats.

#include "decode_helpers.h"
#include "demo/code_frame_source.h"

#include <gtest/gtest.h>

using namespace quorvex::sim;

namespace {

FrameFormat format(std::uint32_t width, std::uint32_t height, std::uint32_t pixelFormat = gvsp::kPixelMono8)
{
    FrameFormat f;
    f.width = width;
    f.height = height;
    f.pixelFormat = pixelFormat;
    return f;
}

} // namespace

TEST(CodeFrameSource, monoFrame_showsEveryCodeOfItsFrameNumber)
{
    CodeFrameSource source("QD24A10000", 7);
    std::vector<std::uint8_t> image;
    // Frame 12 is a multiple of 3 and 4: all four codes are drawn.
    source.render(12, format(1280, 1024), image);
    ASSERT_EQ(image.size(), 1280u * 1024u);

    const FrameCodes expected = CodeFrameSource::codesFor("QD24A10000", 12);
    const auto found = test::decodeCodes(image.data(), 1280, 1024, false);
    EXPECT_EQ(found.at("QRCode"), expected.qrCode);
    EXPECT_EQ(found.at("Code128"), expected.code128);
    EXPECT_EQ(found.at("DataMatrix"), expected.dataMatrix);
    ASSERT_EQ(found.count("EAN-13"), 1u);
    EXPECT_EQ(found.at("EAN-13").substr(0, 12), expected.ean13);
}

TEST(CodeFrameSource, framesWithoutExtraCodes_showOnlyQrAndCode128)
{
    CodeFrameSource source("QD24A10101", 9);
    std::vector<std::uint8_t> image;
    source.render(7, format(640, 480), image);
    const auto found = test::decodeCodes(image.data(), 640, 480, false);
    EXPECT_EQ(found.size(), 2u);
    EXPECT_EQ(found.at("Code128"), "QD24A10101-7");
}

TEST(CodeFrameSource, rgbFrame_isThreeBytesPerPixelAndDecodes)
{
    CodeFrameSource source("QD24A10000", 7);
    std::vector<std::uint8_t> image;
    source.render(5, format(800, 600, gvsp::kPixelRgb8), image);
    ASSERT_EQ(image.size(), 800u * 600u * 3u);
    const auto found = test::decodeCodes(image.data(), 800, 600, true);
    EXPECT_EQ(found.at("QRCode"), CodeFrameSource::codesFor("QD24A10000", 5).qrCode);
}

TEST(CodeFrameSource, sameDeviceAndFrame_giveSameBytes_otherFramesDiffer)
{
    CodeFrameSource first("QD24A10000", 7);
    CodeFrameSource second("QD24A10000", 7);
    std::vector<std::uint8_t> a, b, c;
    first.render(42, format(320, 240), a);
    first.render(43, format(320, 240), c);
    second.render(42, format(320, 240), b);
    EXPECT_EQ(a, b);
    EXPECT_NE(a, c);
}

TEST(CodeFrameSource, tinyAndOddSizes_renderWithoutOverrunning)
{
    CodeFrameSource source("QD24A10000", 7);
    std::vector<std::uint8_t> image;
    for (const auto& [w, h] : {std::pair{64u, 64u}, {72u, 2048u}, {2592u, 64u}, {4104u, 100u}}) {
        source.render(1, format(w, h), image);
        EXPECT_EQ(image.size(), std::size_t{w} * h);
    }
}
