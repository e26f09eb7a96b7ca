#pragma once
// Pictures of a code reader's field of view: real codes rendered with
// ZXing-cpp's writers on a slightly noisy background. The codes carry the
// frame number, so every frame reads differently, and the same device and
// frame number always give the same picture.

#include "core/device_model.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::sim {

// The texts shown in one frame, in drawing order; tests read them back.
struct FrameCodes final {
    std::string qrCode;
    std::string code128;
    std::string dataMatrix; // empty when the frame shows none
    std::string ean13;      // 12 digits; the writer adds the check digit
};

class CodeFrameSource final : public FrameSource {
public:
    CodeFrameSource(std::string serialNumber, std::uint32_t seed);

    static FrameCodes codesFor(const std::string& serialNumber, std::uint64_t frameNumber);

    void render(std::uint64_t frameNumber, const FrameFormat& format, std::vector<std::uint8_t>& image) override;

private:
    void fillBackground(std::vector<std::uint8_t>& mono, std::uint64_t frameNumber, std::uint32_t width,
                        std::uint32_t height) const;

    std::string m_serialNumber;
    std::vector<std::vector<std::uint8_t>> m_backgroundRows; // noisy rows to copy from
    std::vector<std::uint8_t> m_mono;                        // grey draft of colour frames
};

} // namespace quorvex::sim
