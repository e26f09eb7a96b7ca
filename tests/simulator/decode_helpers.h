#pragma once
// Reads the codes in a simulator frame with ZXing, as a host-side decoder would.

// Texts as UTF-8 std::string rather than the older wide strings.
#ifndef ZX_USE_UTF8
#define ZX_USE_UTF8
#endif
#include <ZXing/ReadBarcode.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace quorvex::sim::test {

// Symbology name -> decoded text of every code ZXing finds in the picture.
inline std::map<std::string, std::string> decodeCodes(const std::uint8_t* pixels, int width, int height, bool rgb)
{
    ZXing::DecodeHints hints;
    hints.setTryHarder(true);
    // Debian's ZXing 1.4 keeps its asserts, and comparing a linear code found
    // again in a downscaled layer trips one (Result::operator==): scan full size only.
    hints.setTryDownscale(false);
    const ZXing::ImageView view(pixels, width, height, rgb ? ZXing::ImageFormat::RGB : ZXing::ImageFormat::Lum);
    std::map<std::string, std::string> found;
    for (const ZXing::Result& result : ZXing::ReadBarcodes(view, hints))
        if (result.isValid())
            found[ZXing::ToString(result.format())] = result.text();
    return found;
}

} // namespace quorvex::sim::test
