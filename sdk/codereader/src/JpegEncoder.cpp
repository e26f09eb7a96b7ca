#include "JpegEncoder.h"

#include <turbojpeg.h>

namespace xq {

JpegEncoder::JpegEncoder() : m_compressor(tjInitCompress()) {}

JpegEncoder::~JpegEncoder()
{
    if (m_compressor)
        tjDestroy(m_compressor);
}

bool JpegEncoder::encode(const FrameImage& image, int quality)
{
    m_size = 0;
    if (!m_compressor || !image.pixels || quality < 1 || quality > 100)
        return false;
    const bool grey = image.layout == PixelLayout::Grey;
    const int subsampling = grey ? TJSAMP_GRAY : TJSAMP_420;
    const int format = grey ? TJPF_GRAY : image.layout == PixelLayout::Rgb ? TJPF_RGB : TJPF_BGR;
    const unsigned long bound = tjBufSize(image.width, image.height, subsampling);
    if (bound == static_cast<unsigned long>(-1))
        return false;
    if (m_output.size() < bound)
        m_output.resize(bound);
    unsigned char* output = m_output.data();
    unsigned long written = 0;
    // The buffer is sized for the worst case, so turbojpeg never reallocates it.
    const int result = tjCompress2(m_compressor, image.pixels, image.width, 0, image.height, format, &output, &written,
                                   subsampling, quality, TJFLAG_NOREALLOC | TJFLAG_FASTDCT);
    if (result != 0 || output != m_output.data())
        return false;
    m_size = written;
    return true;
}

} // namespace xq
