#include "FrameImage.h"

#include <arv.h>

namespace xq {

bool toFrameImage(std::uint32_t pixelFormat, int width, int height, const void* data, std::size_t size,
                  std::vector<std::uint8_t>& scratch, FrameImage& image)
{
    constexpr int kLargestSide = 65535;
    if (!data || width <= 0 || height <= 0 || width > kLargestSide || height > kLargestSide)
        return false;
    const std::size_t pixelCount = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    image.width = width;
    image.height = height;

    switch (pixelFormat) {
    case ARV_PIXEL_FORMAT_MONO_8:
    case ARV_PIXEL_FORMAT_BAYER_GR_8:
    case ARV_PIXEL_FORMAT_BAYER_RG_8:
    case ARV_PIXEL_FORMAT_BAYER_GB_8:
    case ARV_PIXEL_FORMAT_BAYER_BG_8:
        if (size < pixelCount)
            return false;
        image.layout = PixelLayout::Grey;
        image.pixels = bytes;
        return true;
    case ARV_PIXEL_FORMAT_RGB_8_PACKED:
    case ARV_PIXEL_FORMAT_BGR_8_PACKED:
        if (size / 3 < pixelCount)
            return false;
        image.layout = pixelFormat == ARV_PIXEL_FORMAT_RGB_8_PACKED ? PixelLayout::Rgb : PixelLayout::Bgr;
        image.pixels = bytes;
        return true;
    case ARV_PIXEL_FORMAT_MONO_10:
    case ARV_PIXEL_FORMAT_MONO_12:
    case ARV_PIXEL_FORMAT_MONO_16: {
        if (size / 2 < pixelCount)
            return false;
        const int shift = pixelFormat == ARV_PIXEL_FORMAT_MONO_10 ? 2 : pixelFormat == ARV_PIXEL_FORMAT_MONO_12 ? 4 : 8;
        scratch.resize(pixelCount);
        // Samples are little-endian 16-bit words.
        for (std::size_t i = 0; i < pixelCount; ++i) {
            const unsigned sample = bytes[2 * i] | (unsigned{bytes[2 * i + 1]} << 8);
            const unsigned scaled = sample >> shift;
            scratch[i] = static_cast<std::uint8_t>(scaled > 255 ? 255 : scaled);
        }
        image.layout = PixelLayout::Grey;
        image.pixels = scratch.data();
        return true;
    }
    default:
        return false;
    }
}

} // namespace xq
