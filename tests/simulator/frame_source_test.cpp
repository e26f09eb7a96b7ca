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

TEST(CodeFrameSource, everyFrameShowsTheCodesOfItsNumber_inBothPixelFormats)
{
    struct Case {
        const char* serial;
        std::uint64_t frame;
        std::uint32_t width, height;
        bool rgb;
        std::size_t codes; // QR and Code 128 always, Data Matrix every 3rd, EAN-13 every 4th
    };
    for (const Case& c : {Case{"QD24A10000", 12, 1280, 1024, false, 4}, Case{"QD24A10101", 7, 640, 480, false, 2},
                          Case{"QD24A10000", 5, 800, 600, true, 2}}) {
        CodeFrameSource source(c.serial, 7);
        std::vector<std::uint8_t> image;
        source.render(c.frame, format(c.width, c.height, c.rgb ? gvsp::kPixelRgb8 : gvsp::kPixelMono8), image);
        ASSERT_EQ(image.size(), std::size_t{c.width} * c.height * (c.rgb ? 3 : 1));
        const FrameCodes expected = CodeFrameSource::codesFor(c.serial, c.frame);
        const auto found = test::decodeCodes(image.data(), int(c.width), int(c.height), c.rgb);
        EXPECT_EQ(found.size(), c.codes) << c.frame;
        EXPECT_EQ(found.at("QRCode"), expected.qrCode);
        EXPECT_EQ(found.at("Code128"), expected.code128);
        if (c.codes == 4) {
            EXPECT_EQ(found.at("DataMatrix"), expected.dataMatrix);
            EXPECT_EQ(found.at("EAN-13").substr(0, 12), expected.ean13);
        }
    }
}

TEST(CodeFrameSource, sameDeviceAndFrame_giveSameBytes_otherFramesDiffer_oddSizesDoNotOverrun)
{
    CodeFrameSource first("QD24A10000", 7);
    CodeFrameSource second("QD24A10000", 7);
    std::vector<std::uint8_t> a, b, c;
    first.render(42, format(320, 240), a);
    first.render(43, format(320, 240), c);
    second.render(42, format(320, 240), b);
    EXPECT_EQ(a, b);
    EXPECT_NE(a, c);
    for (const auto& [w, h] : {std::pair{64u, 64u}, {72u, 2048u}, {4104u, 100u}}) {
        first.render(1, format(w, h), a);
        EXPECT_EQ(a.size(), std::size_t{w} * h);
    }
}
