#include "CodeDecoder.h"

// Texts as UTF-8 std::string rather than the older wide strings.
#define ZX_USE_UTF8
#include <ZXing/ReadBarcode.h>

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

} // namespace

std::vector<DecodedCode> decodeCodes(const FrameImage& image, const DecodeSettings& settings)
{
    std::vector<DecodedCode> codes;
    if (!image.pixels || image.width <= 0 || image.height <= 0)
        return codes;

    ZXing::BarcodeFormats formats;
    for (const auto& mapping : kFormats) {
        if (settings.formats & mapping.mask)
            formats |= mapping.format;
    }
    if (formats.empty())
        return codes;

    const unsigned int wanted = settings.maxCodes == 0 || settings.maxCodes > XQ_CODEREADER_MAX_CODE_NUM
        ? XQ_CODEREADER_MAX_CODE_NUM
        : settings.maxCodes;
    ZXing::DecodeHints hints;
    hints.setFormats(formats)
        .setTryHarder(settings.tryHarder)
        .setTryRotate(settings.tryHarder)
        .setTryDownscale(settings.tryHarder)
        .setMaxNumberOfSymbols(static_cast<std::uint8_t>(wanted));

    const ZXing::ImageView view(image.pixels, image.width, image.height, zxingFormatOf(image.layout));
    for (const auto& result : ZXing::ReadBarcodes(view, hints)) {
        if (!result.isValid())
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
        if (codes.size() == wanted)
            break;
    }
    return codes;
}

} // namespace xq
