#include "jpeg_frame_source.h"

#include <turbojpeg.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace quorvex::sim {

namespace {

// Frames above this many pixels are refused, whatever the file claims.
constexpr std::uint64_t kMaxPixels = 64u * 1024u * 1024u;

struct TurboJpegDeleter final {
    void operator()(void* handle) const { tjDestroy(handle); }
};
using TurboJpegHandle = std::unique_ptr<void, TurboJpegDeleter>;

bool readFile(const std::string& path, std::vector<unsigned char>& bytes, std::string& error)
{
    std::error_code status;
    const std::uintmax_t size = std::filesystem::file_size(path, status);
    if (status) {
        error = path + ": " + status.message();
        return false;
    }
    if (size == 0 || size > kMaxJpegFileBytes) {
        error = path + ": size " + std::to_string(size) + " is not that of a usable JPEG";
        return false;
    }
    std::ifstream file(path, std::ios::binary);
    bytes.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    if (!file.good() && !file.eof()) {
        error = path + ": cannot be read";
        return false;
    }
    return true;
}

bool readHeader(tjhandle handle, const std::vector<unsigned char>& bytes, const std::string& path, JpegSize& size,
                std::string& error)
{
    int subsampling = 0;
    int colourspace = 0;
    if (tjDecompressHeader3(handle, bytes.data(), static_cast<unsigned long>(bytes.size()), &size.width, &size.height,
                            &subsampling, &colourspace) != 0) {
        error = path + ": not a JPEG image (" + tjGetErrorStr2(handle) + ")";
        return false;
    }
    if (size.width <= 0 || size.height <= 0 ||
        static_cast<std::uint64_t>(size.width) * static_cast<std::uint64_t>(size.height) > kMaxPixels) {
        error = path + ": image size " + std::to_string(size.width) + "x" + std::to_string(size.height) +
                " is out of range";
        return false;
    }
    return true;
}

} // namespace

bool readJpegSize(const std::string& path, JpegSize& size, std::string& error)
{
    std::vector<unsigned char> bytes;
    if (!readFile(path, bytes, error))
        return false;
    const TurboJpegHandle handle(tjInitDecompress());
    if (!handle) {
        error = "cannot start the JPEG decoder";
        return false;
    }
    return readHeader(handle.get(), bytes, path, size, error);
}

bool decodeJpegInto(const std::string& path, const FrameFormat& format, std::vector<std::uint8_t>& frame,
                    std::string& error)
{
    frame.assign(format.imageSize(), 0);
    std::vector<unsigned char> bytes;
    if (!readFile(path, bytes, error))
        return false;
    const TurboJpegHandle handle(tjInitDecompress());
    if (!handle) {
        error = "cannot start the JPEG decoder";
        return false;
    }
    JpegSize size;
    if (!readHeader(handle.get(), bytes, path, size, error))
        return false;

    const bool colour = format.pixelFormat == gvsp::kPixelRgb8;
    const int pixelBytes = colour ? 3 : 1;
    std::vector<unsigned char> decoded(static_cast<std::size_t>(size.width) * size.height * pixelBytes);
    if (tjDecompress2(handle.get(), bytes.data(), static_cast<unsigned long>(bytes.size()), decoded.data(), size.width,
                      size.width * pixelBytes, size.height, colour ? TJPF_RGB : TJPF_GRAY, TJFLAG_ACCURATEDCT) != 0) {
        // Warnings (a truncated scan, say) still leave a usable picture.
        if (tjGetErrorCode(handle.get()) != TJERR_WARNING) {
            error = path + ": cannot be decoded (" + tjGetErrorStr2(handle.get()) + ")";
            return false;
        }
    }
    const std::size_t rows = std::min<std::size_t>(format.height, static_cast<std::size_t>(size.height));
    const std::size_t rowBytes = std::min<std::size_t>(format.width, static_cast<std::size_t>(size.width)) * pixelBytes;
    for (std::size_t row = 0; row < rows; ++row)
        std::memcpy(frame.data() + row * format.width * pixelBytes,
                    decoded.data() + row * static_cast<std::size_t>(size.width) * pixelBytes, rowBytes);
    return true;
}

JpegFrameSource::JpegFrameSource(std::vector<std::string> images) : m_images(std::move(images)) {}

void JpegFrameSource::render(std::uint64_t frameNumber, const FrameFormat& format, std::vector<std::uint8_t>& image)
{
    if (m_images.empty()) {
        image.assign(format.imageSize(), 0);
        return;
    }
    const std::size_t index = static_cast<std::size_t>((frameNumber == 0 ? 0 : frameNumber - 1) % m_images.size());
    std::string error;
    decodeJpegInto(m_images[index], format, image, error);
}

} // namespace quorvex::sim
