#include "CodeDecoder.h"

// Texts as UTF-8 std::string rather than the older wide strings.
#define ZX_USE_UTF8
#include <ZXing/ReadBarcode.h>

#include <algorithm>
#include <utility>

namespace xq {
namespace {

struct FormatMapping {
    unsigned int mask;
    ZXing::BarcodeFormat format;
    int symbology;
};

constexpr FormatMapping kFormats[] = {
    {XQ_FORMAT_DM, ZXing::BarcodeFormat::DataMatrix, XQ_SYMBOLOGY_DM},
    {XQ_FORMAT_QR, ZXing::BarcodeFormat::QRCode, XQ_SYMBOLOGY_QR},
    {XQ_FORMAT_MICROQR, ZXing::BarcodeFormat::MicroQRCode, XQ_SYMBOLOGY_MICROQR},
    {XQ_FORMAT_PDF417, ZXing::BarcodeFormat::PDF417, XQ_SYMBOLOGY_PDF417},
    {XQ_FORMAT_MAXICODE, ZXing::BarcodeFormat::MaxiCode, XQ_SYMBOLOGY_MAXICODE},
    {XQ_FORMAT_AZTEC, ZXing::BarcodeFormat::Aztec, XQ_SYMBOLOGY_AZTEC},
    {XQ_FORMAT_EAN8, ZXing::BarcodeFormat::EAN8, XQ_SYMBOLOGY_EAN8},
    {XQ_FORMAT_EAN13, ZXing::BarcodeFormat::EAN13, XQ_SYMBOLOGY_EAN13},
    {XQ_FORMAT_UPCA, ZXing::BarcodeFormat::UPCA, XQ_SYMBOLOGY_UPCA},
    {XQ_FORMAT_UPCE, ZXing::BarcodeFormat::UPCE, XQ_SYMBOLOGY_UPCE},
    {XQ_FORMAT_CODE128, ZXing::BarcodeFormat::Code128, XQ_SYMBOLOGY_CODE128},
    {XQ_FORMAT_CODE39, ZXing::BarcodeFormat::Code39, XQ_SYMBOLOGY_CODE39},
    {XQ_FORMAT_CODE93, ZXing::BarcodeFormat::Code93, XQ_SYMBOLOGY_CODE93},
    {XQ_FORMAT_CODEBAR, ZXing::BarcodeFormat::Codabar, XQ_SYMBOLOGY_CODEBAR},
    {XQ_FORMAT_ITF25, ZXing::BarcodeFormat::ITF, XQ_SYMBOLOGY_ITF25},
    {XQ_FORMAT_DATABAR, ZXing::BarcodeFormat::DataBar, XQ_SYMBOLOGY_DATABAR},
    {XQ_FORMAT_DATABAR_EXPANDED, ZXing::BarcodeFormat::DataBarExpanded, XQ_SYMBOLOGY_DATABAR_EXPANDED},
};

// Rows between two scanned lines when looking for linear codes.
constexpr int kRowStep = 8;
constexpr int kRowStepTryHarder = 2;
// A linear code must be read on this many scanned lines to count.
constexpr int kMinimumLines = 2;
constexpr int kMostCodesPerLine = 16;

int symbologyOf(ZXing::BarcodeFormat format)
{
    for (const auto& mapping : kFormats) {
        if (mapping.format == format)
            return mapping.symbology;
    }
    return XQ_SYMBOLOGY_UNKNOWN;
}

ZXing::ImageFormat zxingFormatOf(PixelLayout layout)
{
    switch (layout) {
    case PixelLayout::Rgb:
        return ZXing::ImageFormat::RGB;
    case PixelLayout::Bgr:
        return ZXing::ImageFormat::BGR;
    case PixelLayout::Grey:
        break;
    }
    return ZXing::ImageFormat::Lum;
}

// One linear code as seen on consecutive scanned lines.
struct LinearTrack {
    ZXing::BarcodeFormat format;
    std::string text;
    int left;
    int right;
    int top;
    int bottom;
    int lastRow;
    int lines;
};

bool overlaps(const LinearTrack& track, int left, int right) { return left <= track.right && track.left <= right; }

// Linear codes, line by line. ZXing 1.4 aborts (a failed assertion) when it
// compares two equal linear results that were merged over several lines,
// which happens for two identical barcodes in one picture or with its
// downscaling passes. A single-line image only ever yields single-line
// results, so here each scanned line is its own image and the lines are
// joined into codes afterwards.
std::vector<LinearTrack> scanLinearCodes(const ZXing::ImageView& view, ZXing::BarcodeFormats formats, int rowStep)
{
    ZXing::DecodeHints hints;
    hints.setFormats(formats).setTryHarder(false).setTryRotate(false).setTryDownscale(false).setMinLineCount(1)
        .setMaxNumberOfSymbols(1);
    std::vector<LinearTrack> finished;
    std::vector<LinearTrack> open;
    for (int row = rowStep / 2; row < view.height(); row += rowStep) {
        int from = 0;
        for (int found = 0; found < kMostCodesPerLine && from < view.width() - 1; ++found) {
            const auto line = view.cropped(from, row, view.width() - from, 1);
            const ZXing::Results results = ZXing::ReadBarcodes(line, hints);
            if (results.empty() || !results.front().isValid())
                break;
            const ZXing::Result& result = results.front();
            const auto& position = result.position();
            const int left = from + std::min(position.topLeft().x, position.bottomLeft().x);
            const int right = from + std::max(position.topRight().x, position.bottomRight().x);
            if (right < left)
                break;
            const std::string text = result.text();
            auto track = std::find_if(open.begin(), open.end(), [&](const LinearTrack& candidate) {
                return candidate.format == result.format() && candidate.text == text
                    && row - candidate.lastRow <= 2 * rowStep && overlaps(candidate, left, right);
            });
            if (track == open.end()) {
                open.push_back({result.format(), text, left, right, row, row, row, 1});
            } else {
                track->left = std::min(track->left, left);
                track->right = std::max(track->right, right);
                track->bottom = row;
                track->lastRow = row;
                ++track->lines;
            }
            from = right + 1;
        }
        // Tracks not continued for two steps are complete.
        for (auto it = open.begin(); it != open.end();) {
            if (row - it->lastRow > 2 * rowStep) {
                finished.push_back(*it);
                it = open.erase(it);
            } else {
                ++it;
            }
        }
    }
    finished.insert(finished.end(), open.begin(), open.end());
    finished.erase(std::remove_if(finished.begin(), finished.end(),
                                  [](const LinearTrack& track) { return track.lines < kMinimumLines; }),
                   finished.end());
    std::sort(finished.begin(), finished.end(), [](const LinearTrack& a, const LinearTrack& b) {
        return a.top != b.top ? a.top < b.top : a.left < b.left;
    });
    return finished;
}

} // namespace

std::vector<DecodedCode> decodeCodes(const FrameImage& image, const DecodeSettings& settings)
{
    std::vector<DecodedCode> codes;
    if (!image.pixels || image.width <= 0 || image.height <= 0)
        return codes;

    ZXing::BarcodeFormats matrix;
    ZXing::BarcodeFormats linear;
    for (const auto& mapping : kFormats) {
        if ((settings.formats & mapping.mask) == 0)
            continue;
        if (ZXing::BarcodeFormats(ZXing::BarcodeFormat::LinearCodes).testFlag(mapping.format))
            linear |= mapping.format;
        else
            matrix |= mapping.format;
    }
    const std::size_t wanted = settings.maxCodes == 0 || settings.maxCodes > XQ_CODEREADER_MAX_CODE_NUM
        ? XQ_CODEREADER_MAX_CODE_NUM
        : settings.maxCodes;
    const ZXing::ImageView view(image.pixels, image.width, image.height, zxingFormatOf(image.layout));

    if (!matrix.empty()) {
        // Matrix codes only: their comparison in ZXing is by position and safe.
        ZXing::DecodeHints hints;
        hints.setFormats(matrix)
            .setTryHarder(settings.tryHarder)
            .setTryRotate(settings.tryHarder)
            .setTryDownscale(false)
            .setMaxNumberOfSymbols(static_cast<std::uint8_t>(wanted));
        for (const auto& result : ZXing::ReadBarcodes(view, hints)) {
            if (!result.isValid() || codes.size() == wanted)
                continue;
            DecodedCode code;
            code.text = result.text();
            code.symbology = symbologyOf(result.format());
            const auto& position = result.position();
            const ZXing::PointI corners[4] = {position.topLeft(), position.topRight(), position.bottomRight(),
                                              position.bottomLeft()};
            for (int i = 0; i < 4; ++i)
                code.corners[i] = XQ_CODEREADER_POINT{corners[i].x, corners[i].y};
            codes.push_back(std::move(code));
        }
    }

    if (!linear.empty() && codes.size() < wanted) {
        const int step = settings.tryHarder ? kRowStepTryHarder : kRowStep;
        for (const auto& track : scanLinearCodes(view, linear, step)) {
            if (codes.size() == wanted)
                break;
            DecodedCode code;
            code.text = track.text;
            code.symbology = symbologyOf(track.format);
            code.corners[0] = {track.left, track.top};
            code.corners[1] = {track.right, track.top};
            code.corners[2] = {track.right, track.bottom};
            code.corners[3] = {track.left, track.bottom};
            codes.push_back(std::move(code));
        }
    }
    return codes;
}

} // namespace xq
