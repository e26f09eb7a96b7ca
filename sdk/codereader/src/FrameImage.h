// An 8-bit image ready for JPEG encoding and code decoding, made from a
// streamed frame. Formats the pipeline knows: Mono8/10/12/16, Bayer 8 (taken
// as grey), RGB8 and BGR8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace xq {

enum class PixelLayout { Grey, Rgb, Bgr };

struct FrameImage {
    const std::uint8_t* pixels = nullptr; // row-major, no padding
    int width = 0;
    int height = 0;
    PixelLayout layout = PixelLayout::Grey;
    int channels() const { return layout == PixelLayout::Grey ? 1 : 3; }
};

// Makes an 8-bit view of a frame. Frames already 8 bits deep are used in
// place; others are converted into scratch. Returns false for an unknown
// format or a frame shorter than its size says.
bool toFrameImage(std::uint32_t pixelFormat, int width, int height, const void* data, std::size_t size,
                  std::vector<std::uint8_t>& scratch, FrameImage& image);

} // namespace xq
