#include "FrameCodes.h"

#include <QFile>
#include <QStringList>

#define ZX_USE_UTF8 1
#include <ZXing/ReadBarcode.h>
#include <turbojpeg.h>


namespace {

QString TypeNameOf(ZXing::BarcodeFormat format)
{
    using F = ZXing::BarcodeFormat;
    switch (format) {
    case F::DataMatrix: return QStringLiteral("DM");
    case F::QRCode: return QStringLiteral("QR");
    case F::MicroQRCode: return QStringLiteral("MicroQR");
    case F::PDF417: return QStringLiteral("PDF417");
    case F::MaxiCode: return QStringLiteral("MAXICODE");
    case F::EAN8: return QStringLiteral("EAN8");
    case F::EAN13: return QStringLiteral("EAN13");
    case F::UPCA: return QStringLiteral("UPCA");
    case F::UPCE: return QStringLiteral("UPCE");
    case F::Code128: return QStringLiteral("CODE128");
    case F::Code39: return QStringLiteral("CODE39");
    case F::Code93: return QStringLiteral("CODE93");
    case F::Codabar: return QStringLiteral("CODEBAR");
    case F::ITF: return QStringLiteral("ITF25");
    default: return QStringLiteral("NONE");
    }
}

} // namespace

bool DecodeGreyJpeg(const QByteArray& jpeg, GreyImage* image)
{
    tjhandle decoder = tjInitDecompress();
    if (decoder == nullptr)
        return false;
    int subsampling = 0;
    int colorspace = 0;
    const auto* data = reinterpret_cast<const unsigned char*>(jpeg.constData());
    bool ok = tjDecompressHeader3(decoder, data, static_cast<unsigned long>(jpeg.size()), &image->width,
                                  &image->height, &subsampling, &colorspace) == 0
        && image->width > 0 && image->height > 0;
    if (ok) {
        image->pixels.resize(image->width * image->height);
        ok = tjDecompress2(decoder, data, static_cast<unsigned long>(jpeg.size()),
                           reinterpret_cast<unsigned char*>(image->pixels.data()), image->width, 0, image->height,
                           TJPF_GRAY, 0) == 0;
    }
    tjDestroy(decoder);
    return ok;
}

bool DecodeFrameCodes(const QString& path, QVector<FrameCode>* codes)
{
    QFile file(path);
    GreyImage image;
    if (!file.open(QIODevice::ReadOnly) || !DecodeGreyJpeg(file.readAll(), &image))
        return false;

    // The symbologies of the tool's table, read in one quick pass like a
    // reader does (the library's slow passes trip an assertion of its own on
    // some linear codes).
    using F = ZXing::BarcodeFormat;
    ZXing::DecodeHints hints;
    hints.setFormats(F::DataMatrix | F::QRCode | F::MicroQRCode | F::PDF417 | F::MaxiCode | F::EAN8 | F::EAN13
                     | F::UPCA | F::UPCE | F::Code128 | F::Code39 | F::Code93 | F::Codabar | F::ITF)
        .setTryHarder(false)
        .setTryRotate(false)
        .setTryDownscale(false);
    const ZXing::ImageView view(reinterpret_cast<const std::uint8_t*>(image.pixels.constData()), image.width,
                                image.height, ZXing::ImageFormat::Lum);
    codes->clear();
    for (const ZXing::Result& result : ZXing::ReadBarcodes(view, hints)) {
        if (!result.isValid())
            continue;
        FrameCode code;
        code.text = QString::fromStdString(result.text());
        code.typeName = TypeNameOf(result.format());
        const auto& position = result.position();
        const ZXing::PointI points[4] = {position.topLeft(), position.topRight(), position.bottomRight(),
                                         position.bottomLeft()};
        for (int p = 0; p < 4; ++p) {
            code.corners[2 * p] = points[p].x;
            code.corners[2 * p + 1] = points[p].y;
        }
        codes->append(code);
    }
    return true;
}

bool ParseCsvRow(const QString& row, CsvRow* parsed)
{
    const QStringList columns = row.split(QLatin1Char(','));
    if (columns.size() < 3 || (columns.size() - 3) % 3 != 0)
        return false;
    parsed->triggerIndex = columns[0];
    parsed->frameNumber = columns[1];
    parsed->picturePath = columns[2];
    parsed->codes.clear();
    for (int c = 3; c < columns.size(); c += 3) {
        FrameCode code;
        code.text = columns[c];
        code.typeName = columns[c + 1];
        const QStringList numbers = columns[c + 2].split(QLatin1Char('.'));
        if (numbers.size() != 8)
            return false;
        for (int i = 0; i < 8; ++i) {
            bool ok = false;
            code.corners[i] = numbers[i].toInt(&ok);
            if (!ok)
                return false;
        }
        parsed->codes.append(code);
    }
    return true;
}
