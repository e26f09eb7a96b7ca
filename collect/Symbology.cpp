#include "Symbology.h"

#include <array>
#include <utility>

namespace collect {
namespace {

// Spellings are part of the file format, mixed case included.
constexpr std::array<std::pair<int, const char*>, 24> kSymbologyNames{{
    {1, "DM"},
    {2, "QR"},
    {8, "EAN8"},
    {9, "UPCE"},
    {12, "UPCA"},
    {13, "EAN13"},
    {14, "ISBN13"},
    {20, "CODEBAR"},
    {25, "ITF25"},
    {26, "MATRIX25"},
    {27, "ITF14"},
    {30, "MSI"},
    {31, "CODE11"},
    {32, "INDUSTRIAL25"},
    {33, "CHINAPOST"},
    {39, "CODE39"},
    {93, "CODE93"},
    {128, "CODE128"},
    {131, "PDF417"},
    {133, "ECC140"},
    {134, "MicroPDF417"},
    {140, "MicroQR"},
    {145, "HANXIN"},
    {150, "MAXICODE"},
}};

} // namespace

QString symbologyName(int symbology)
{
    for (const auto& [number, name] : kSymbologyNames) {
        if (number == symbology)
            return QString::fromLatin1(name);
    }
    return QStringLiteral("NONE");
}

} // namespace collect
