#pragma once
// Frames of a replayed device: its collected JPEG images, in order and
// looping (frame n shows image (n - 1) mod count), decoded to the format the
// device's registers ask for. An image of another size than the frame is
// placed at the top-left corner, cut where it is larger and padded with
// black where it is smaller, so codes keep the pixel positions the
// collection recorded. An image that cannot be read gives a black frame.

#include "core/device_model.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quorvex::sim {

// Larger files are not read.
inline constexpr std::uintmax_t kMaxJpegFileBytes = 64u * 1024u * 1024u;

struct JpegSize final {
    int width = 0;
    int height = 0;
};

// The size of a JPEG file, if it is one.
bool readJpegSize(const std::string& path, JpegSize& size, std::string& error);

// Decodes a JPEG file into frame (resized to format.imageSize()) as
// described above. False with a message when the file cannot be used; the
// frame is black then.
bool decodeJpegInto(const std::string& path, const FrameFormat& format, std::vector<std::uint8_t>& frame,
                    std::string& error);

class JpegFrameSource final : public FrameSource {
public:
    explicit JpegFrameSource(std::vector<std::string> images);

    void render(std::uint64_t frameNumber, const FrameFormat& format, std::vector<std::uint8_t>& image) override;

private:
    std::vector<std::string> m_images;
};

} // namespace quorvex::sim
