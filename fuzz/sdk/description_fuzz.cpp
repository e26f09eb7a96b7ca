// Fuzz target for the check the SDKs make before they read a device's
// GenICam description: the first URL register's text, the Local URL, the
// second URL and the zip a device may serve. Random bytes rarely pass a
// zip's CRC, so one mode wraps the input in a well-formed archive whose
// flags, CRC and sizes the fuzzer then bends by small amounts; that is how
// the inflation and its caps are reached.

#include "DescriptionCheck.h"
#include "ZipBuilder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

// Adds a small signed delta to a 32-bit field of both headers.
void bend(xqtest::Zip& zip, std::size_t localField, std::size_t directoryField, std::uint8_t delta)
{
    for (const std::size_t at : {localField, zip.directory + directoryField}) {
        const std::uint32_t value = zip.bytes[at] | zip.bytes[at + 1] << 8 | zip.bytes[at + 2] << 16
            | static_cast<std::uint32_t>(zip.bytes[at + 3]) << 24;
        xqtest::putLe(zip.bytes, at, value + static_cast<std::int8_t>(delta), 4);
    }
}

// An archive of content; control bends the method's flags, CRC and sizes.
xqtest::Bytes bentArchive(const std::uint8_t* control, const std::string& content)
{
    xqtest::Zip zip = xqtest::makeZip(content, control[0] & 1);
    if (control[0] & 0x08) { // says a data descriptor follows
        zip.bytes[6] |= 0x08;
        zip.bytes[zip.directory + 8] |= 0x08;
    }
    bend(zip, 14, 16, control[1] & 0x0F); // CRC
    bend(zip, 18, 20, control[2]);        // packed size
    bend(zip, 22, 24, control[3]);        // unpacked size
    return zip.bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 5)
        return 0;
    constexpr std::size_t kCap = 64 * 1024;
    std::string reason;
    const std::uint8_t* rest = data + 5;
    const std::size_t restSize = size - 5;
    switch (data[0] % 3) {
    case 0:
        xq::isSafeZippedDescription(rest, restSize, kCap, reason);
        break;
    case 1:
        xq::isSafeZippedDescription(bentArchive(data + 1, std::string(rest, rest + restSize)), kCap, reason);
        break;
    default: {
        const std::string_view text(reinterpret_cast<const char*>(rest), restSize);
        xq::parseLocalUrl(text, reason);
        xq::isHarmlessSecondUrl(text, "Local:QVX.zip;10000;200");
        xq::urlRegisterText(std::vector<std::uint8_t>(rest, rest + std::min<std::size_t>(restSize, 512)));
    }
    }
    return 0;
}
