// JPEG encoding of frames with libjpeg-turbo, into a buffer reused from
// frame to frame.
#pragma once

#include "FrameImage.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace xq {

class JpegEncoder final {
public:
    JpegEncoder();
    ~JpegEncoder();
    JpegEncoder(const JpegEncoder&) = delete;
    JpegEncoder& operator=(const JpegEncoder&) = delete;

    // Encodes image; on success data()/size() hold the JPEG bytes until the
    // next call.
    bool encode(const FrameImage& image, int quality);
    std::uint8_t* data() { return m_output.data(); }
    std::size_t size() const { return m_size; }

private:
    void* m_compressor = nullptr;
    std::vector<std::uint8_t> m_output;
    std::size_t m_size = 0;
};

} // namespace xq
