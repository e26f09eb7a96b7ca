// A grey test picture with codes drawn by ZXing-cpp's writers at known
// places, for decoding checks without a device.
#pragma once

#include <ZXing/BarcodeFormat.h>

#include <cstdint>
#include <string>
#include <vector>

namespace xqtest {

struct PlacedCode {
    ZXing::BarcodeFormat format;
    std::string text;
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};

class CodeCanvas final {
public:
    CodeCanvas(int width, int height);
    // Draws the code scaled into its box; returns false if it cannot be encoded.
    bool draw(const PlacedCode& code);
    const std::vector<std::uint8_t>& pixels() const { return m_pixels; }
    int width() const { return m_width; }
    int height() const { return m_height; }

private:
    int m_width;
    int m_height;
    std::vector<std::uint8_t> m_pixels;
};

} // namespace xqtest
