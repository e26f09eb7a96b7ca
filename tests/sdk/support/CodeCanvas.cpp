#include "CodeCanvas.h"

#include <ZXing/BitMatrix.h>
#include <ZXing/MultiFormatWriter.h>

namespace xqtest {

CodeCanvas::CodeCanvas(int width, int height)
    : m_width(width), m_height(height), m_pixels(static_cast<std::size_t>(width) * height, 255)
{
}

bool CodeCanvas::draw(const PlacedCode& code)
{
    try {
        const ZXing::BitMatrix matrix =
            ZXing::MultiFormatWriter(code.format).setMargin(0).encode(code.text, code.width, code.height);
        for (int y = 0; y < matrix.height(); ++y) {
            for (int x = 0; x < matrix.width(); ++x) {
                const int px = code.left + x;
                const int py = code.top + y;
                if (px < 0 || py < 0 || px >= m_width || py >= m_height)
                    continue;
                m_pixels[static_cast<std::size_t>(py) * m_width + px] = matrix.get(x, y) ? 0 : 255;
            }
        }
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace xqtest
