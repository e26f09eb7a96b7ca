#include "code_frame_source.h"

#include <ZXing/BarcodeFormat.h>
#include <ZXing/BitMatrix.h>
#include <ZXing/MultiFormatWriter.h>

#include <algorithm>
#include <cstring>

namespace quorvex::sim {

namespace {

constexpr std::size_t kBackgroundRows = 61; // prime, so rows repeat in no short pattern
constexpr std::uint32_t kMaxRowWidth = 4096;
constexpr std::uint8_t kInk = 28;
constexpr int kMaxMatrixModule = 8;
constexpr int kMaxBarModule = 4;

// A small fast generator; quality is irrelevant, repeatability is not.
class SplitMix final {
public:
    explicit SplitMix(std::uint64_t seed) : m_state(seed) {}
    std::uint64_t next()
    {
        std::uint64_t z = (m_state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }

private:
    std::uint64_t m_state;
};

struct Placement final {
    int x;
    int y;
    int width;
    int height;
};

// Draws matrix with each module as a module x module block (1-D codes are
// stretched to a third of their width) straight onto the label background:
// a lighter patch under a code would make binarizers see its border as ink.
// Skips codes that do not fit.
bool drawCode(std::vector<std::uint8_t>& mono, int imageWidth, int imageHeight, const ZXing::BitMatrix& matrix,
              Placement area, bool linear, bool centred = false)
{
    const int quiet = linear ? 10 : 4;
    const int columns = matrix.width() + 2 * quiet;
    const int rows = linear ? 0 : matrix.height() + 2 * quiet;
    // Capped like a real reader's view: modules of a few pixels, not giant blocks.
    const int module = std::min(linear ? area.width / columns : std::min(area.width / columns, area.height / rows),
                                linear ? kMaxBarModule : kMaxMatrixModule);
    if (module < 1)
        return false;
    const int drawnWidth = columns * module;
    const int drawnHeight = linear ? std::min(area.height, drawnWidth / 3) : rows * module;
    if (centred) {
        area.x += (area.width - drawnWidth) / 2;
        area.y += (area.height - drawnHeight) / 2;
    }
    if (drawnHeight < 8 || area.x < 0 || area.y < 0 || area.x + drawnWidth > imageWidth ||
        area.y + drawnHeight > imageHeight)
        return false;

    for (int y = 0; y < drawnHeight; ++y) {
        std::uint8_t* row = mono.data() + std::size_t(area.y + y) * imageWidth + area.x;
        const int my = linear ? 0 : y / module - quiet;
        if (!linear && (my < 0 || my >= matrix.height()))
            continue;
        if (linear && (y < quiet * module / 2 || y >= drawnHeight - quiet * module / 2))
            continue;
        for (int mx = 0; mx < matrix.width(); ++mx)
            if (matrix.get(mx, my))
                std::memset(row + (mx + quiet) * module, kInk, module);
    }
    return true;
}

ZXing::BitMatrix encode(ZXing::BarcodeFormat format, const std::string& text)
{
    ZXing::MultiFormatWriter writer(format);
    writer.setMargin(0);
    return writer.encode(text, 0, 0);
}

} // namespace

CodeFrameSource::CodeFrameSource(std::string serialNumber, std::uint32_t seed) : m_serialNumber(std::move(serialNumber))
{
    SplitMix random(seed);
    m_backgroundRows.resize(kBackgroundRows);
    for (std::vector<std::uint8_t>& row : m_backgroundRows) {
        row.resize(kMaxRowWidth);
        for (std::uint8_t& pixel : row)
            pixel = static_cast<std::uint8_t>(204 + (random.next() & 15)); // label grey with a little noise
    }
}

FrameCodes CodeFrameSource::codesFor(const std::string& serialNumber, std::uint64_t frameNumber)
{
    FrameCodes codes;
    const std::string number = std::to_string(frameNumber);
    codes.qrCode = "QVX " + serialNumber + " FRAME " + number;
    codes.code128 = serialNumber + "-" + number;
    if (frameNumber % 3 == 0)
        codes.dataMatrix = "DM-" + serialNumber + "-" + number;
    if (frameNumber % 4 == 0) {
        std::string digits = std::to_string(400000000000ull + (frameNumber * 7919) % 100000000000ull);
        codes.ean13 = digits.substr(digits.size() - 12);
    }
    return codes;
}

void CodeFrameSource::fillBackground(std::vector<std::uint8_t>& mono, std::uint64_t frameNumber, std::uint32_t width,
                                     std::uint32_t height) const
{
    for (std::uint32_t y = 0; y < height; ++y) {
        const std::vector<std::uint8_t>& source = m_backgroundRows[(y * 7 + frameNumber * 13) % kBackgroundRows];
        std::uint8_t* row = mono.data() + std::size_t{y} * width;
        // Rows wider than the bank repeat it; the offset varies the pattern per frame.
        const std::size_t offset = (frameNumber * 31 + y) % 64;
        for (std::size_t x = 0; x < width;) {
            const std::size_t start = (offset + x) % kMaxRowWidth;
            const std::size_t chunk = std::min<std::size_t>(width - x, kMaxRowWidth - start);
            std::memcpy(row + x, source.data() + start, chunk);
            x += chunk;
        }
    }
}

void CodeFrameSource::render(std::uint64_t frameNumber, const FrameFormat& format, std::vector<std::uint8_t>& image)
{
    const int width = static_cast<int>(format.width);
    const int height = static_cast<int>(format.height);
    // Grey frames are drawn in place; colour ones are expanded from a grey draft.
    const bool colour = format.pixelFormat == gvsp::kPixelRgb8;
    std::vector<std::uint8_t>& mono = colour ? m_mono : image;
    mono.resize(std::size_t{format.width} * format.height);
    fillBackground(mono, frameNumber, format.width, format.height);

    const FrameCodes codes = codesFor(m_serialNumber, frameNumber);
    const int margin = std::max(2, std::min(width, height) / 32);
    const int halfWidth = width / 2 - 2 * margin;
    try {
        // The Data Matrix sits in the middle, where ZXing's Data Matrix
        // detector looks; the other codes fill the corners around it.
        const int side = std::min(width, height) / 4;
        const int cornerHeight = height / 2 - side / 2 - 2 * margin;
        if (!codes.dataMatrix.empty())
            drawCode(mono, width, height, encode(ZXing::BarcodeFormat::DataMatrix, codes.dataMatrix),
                     {width / 2 - side / 2, height / 2 - side / 2, side, side}, false, true);
        drawCode(mono, width, height, encode(ZXing::BarcodeFormat::QRCode, codes.qrCode),
                 {margin, margin, halfWidth, cornerHeight}, false);
        drawCode(mono, width, height, encode(ZXing::BarcodeFormat::Code128, codes.code128),
                 {width / 2 + margin, margin, halfWidth, cornerHeight}, true);
        if (!codes.ean13.empty())
            drawCode(mono, width, height, encode(ZXing::BarcodeFormat::EAN13, codes.ean13),
                     {margin, height / 2 + side / 2 + margin, halfWidth, cornerHeight}, true);
    } catch (const std::exception&) {
        // A text the writer refuses leaves that code out; the frame still goes.
    }

    if (colour) {
        image.resize(m_mono.size() * 3);
        for (std::size_t i = 0, o = 0; i < m_mono.size(); ++i, o += 3) {
            const std::uint8_t grey = m_mono[i];
            image[o] = grey;
            image[o + 1] = grey;
            // A faint warm cast, so colour frames are visibly colour.
            image[o + 2] = static_cast<std::uint8_t>(grey - grey / 16);
        }
    }
}

} // namespace quorvex::sim
