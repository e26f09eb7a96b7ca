#include "DescriptionCheck.h"

#include <zlib.h>

#include <algorithm>
#include <cctype>

namespace xq {
namespace {

constexpr std::uint32_t kEndOfDirectoryMagic = 0x06054b50;
constexpr std::uint32_t kDirectoryEntryMagic = 0x02014b50;
constexpr std::uint32_t kLocalHeaderMagic = 0x04034b50;
constexpr std::size_t kEndOfDirectorySize = 22;
constexpr std::size_t kDirectoryEntrySize = 46;
constexpr std::size_t kLocalHeaderSize = 30;
constexpr std::uint16_t kMethodStored = 0;
constexpr std::uint16_t kMethodDeflated = 8;
constexpr std::uint16_t kFlagEncrypted = 0x0001;
constexpr std::uint16_t kFlagDataDescriptor = 0x0008;

bool equalsIgnoringCase(std::string_view text, std::string_view lowercase)
{
    return text.size() == lowercase.size()
        && std::equal(text.begin(), text.end(), lowercase.begin(),
                      [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; });
}

// 1 to 8 hex digits after an optional "0x": addresses and sizes are 32-bit.
std::optional<std::uint32_t> parseHex(std::string_view text)
{
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
        text.remove_prefix(2);
    if (text.empty() || text.size() > 8)
        return std::nullopt;
    std::uint32_t value = 0;
    for (const char c : text) {
        if (!std::isxdigit(static_cast<unsigned char>(c)))
            return std::nullopt;
        value = value * 16 + static_cast<std::uint32_t>(std::isdigit(static_cast<unsigned char>(c))
                                                             ? c - '0'
                                                             : std::tolower(static_cast<unsigned char>(c)) - 'a' + 10);
    }
    return value;
}

std::string_view schemeOf(std::string_view url)
{
    const auto colon = url.find(':');
    return colon == std::string_view::npos ? std::string_view() : url.substr(0, colon);
}

std::uint16_t le16(const std::uint8_t* bytes, std::size_t at)
{
    return static_cast<std::uint16_t>(bytes[at] | (bytes[at + 1] << 8));
}

std::uint32_t le32(const std::uint8_t* bytes, std::size_t at)
{
    return std::uint32_t{le16(bytes, at)} | (std::uint32_t{le16(bytes, at + 2)} << 16);
}

bool refuse(std::string& reason, const char* why)
{
    reason = why;
    return false;
}

// Inflates raw deflate data into exactly expected bytes; more output, less,
// or a stream that does not end where it should is refused.
bool inflatesTo(const std::uint8_t* data, std::size_t size, std::size_t expected, std::uint32_t crc,
                std::string& reason)
{
    z_stream stream{};
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK)
        return refuse(reason, "zip: inflater unavailable");
    std::vector<std::uint8_t> output(expected + 1); // one spare byte catches overlong data
    stream.next_in = const_cast<Bytef*>(data);
    stream.avail_in = static_cast<uInt>(size);
    stream.next_out = output.data();
    stream.avail_out = static_cast<uInt>(output.size());
    const int result = inflate(&stream, Z_FINISH);
    const std::size_t produced = stream.total_out;
    inflateEnd(&stream);
    if (result != Z_STREAM_END)
        return refuse(reason, "zip: deflate data is corrupt, truncated or unpacks beyond its stated size");
    if (produced != expected)
        return refuse(reason, "zip: member unpacks to another size than stated");
    if (crc32(0L, output.data(), static_cast<uInt>(produced)) != crc)
        return refuse(reason, "zip: member CRC does not match");
    return true;
}

} // namespace

std::string urlRegisterText(const std::vector<std::uint8_t>& registerBytes)
{
    const auto end = std::find(registerBytes.begin(), registerBytes.end(), std::uint8_t{0});
    return std::string(registerBytes.begin(), end);
}

std::optional<LocalDescription> parseLocalUrl(std::string_view url, std::string& reason)
{
    const std::string_view scheme = schemeOf(url);
    if (!equalsIgnoringCase(scheme, "local")) {
        reason = "description URL scheme \"" + std::string(scheme) + "\" refused: only Local: (device memory) is read";
        return std::nullopt;
    }
    std::string_view rest = url.substr(scheme.size() + 1);
    rest = rest.substr(0, rest.find_first_of("?#")); // query and fragment carry no location
    const bool plain = std::all_of(rest.begin(), rest.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte > 0x20 && byte < 0x7F && c != '/' && c != '\\';
    });
    const auto first = rest.find(';');
    const auto second = first == std::string_view::npos ? first : rest.find(';', first + 1);
    if (!plain || second == std::string_view::npos || rest.find(';', second + 1) != std::string_view::npos
        || first == 0) {
        reason = "description URL is not of the form Local:name;address;size";
        return std::nullopt;
    }
    const auto address = parseHex(rest.substr(first + 1, second - first - 1));
    const auto size = parseHex(rest.substr(second + 1));
    if (!address || !size) {
        reason = "description URL address or size is not a 32-bit hex number";
        return std::nullopt;
    }
    if (*size == 0 || *size > kMaxDescriptionBytes || std::uint64_t{*address} + *size > 0x100000000ull) {
        reason = "description size " + std::to_string(*size) + " refused (1 to "
            + std::to_string(kMaxDescriptionBytes) + " bytes within the 32-bit address space)";
        return std::nullopt;
    }
    LocalDescription description;
    description.fileName = std::string(rest.substr(0, first));
    description.address = *address;
    description.size = *size;
    const std::string_view name = description.fileName;
    description.zipped = name.size() >= 4 && name.substr(name.size() - 4) == ".zip";
    return description;
}

bool isHarmlessSecondUrl(std::string_view second, std::string_view first)
{
    return second.empty() || second == first || equalsIgnoringCase(schemeOf(second), "http");
}

bool isSafeZippedDescription(const std::uint8_t* zip, std::size_t size, std::size_t maxUnpacked, std::string& reason)
{
    if (!zip)
        return refuse(reason, "zip: no data");
    if (size < kEndOfDirectorySize + kDirectoryEntrySize + kLocalHeaderSize)
        return refuse(reason, "zip: too short");
    // Aravis takes the last end-of-directory signature it finds scanning
    // backwards; it must be the record that ends the file, without comment.
    const std::size_t end = size - kEndOfDirectorySize;
    for (std::size_t at = size - 4; at > end; --at) {
        if (le32(zip, at) == kEndOfDirectoryMagic)
            return refuse(reason, "zip: stray end-of-directory signature");
    }
    if (le32(zip, end) != kEndOfDirectoryMagic || le16(zip, end + 20) != 0)
        return refuse(reason, "zip: no end-of-directory record at the end");
    if (le16(zip, end + 4) != 0 || le16(zip, end + 6) != 0 || le16(zip, end + 8) != 1 || le16(zip, end + 10) != 1)
        return refuse(reason, "zip: must hold exactly one member on one disk");
    const std::uint64_t directorySize = le32(zip, end + 12);
    const std::uint64_t directoryOffset = le32(zip, end + 16);
    if (directoryOffset + directorySize != end || directorySize < kDirectoryEntrySize)
        return refuse(reason, "zip: central directory offset or size out of range");

    const std::size_t entry = static_cast<std::size_t>(directoryOffset);
    if (le32(zip, entry) != kDirectoryEntryMagic)
        return refuse(reason, "zip: central directory entry missing");
    const std::uint16_t flags = le16(zip, entry + 8);
    const std::uint16_t method = le16(zip, entry + 10);
    const std::uint32_t crc = le32(zip, entry + 16);
    const std::uint32_t packedSize = le32(zip, entry + 20);
    const std::uint32_t unpackedSize = le32(zip, entry + 24);
    const std::uint64_t nameLength = le16(zip, entry + 28);
    const std::uint64_t entryLength = kDirectoryEntrySize + nameLength + le16(zip, entry + 30) + le16(zip, entry + 32);
    const std::uint64_t localOffset = le32(zip, entry + 42);
    if (entryLength != directorySize || nameLength == 0)
        return refuse(reason, "zip: central directory entry sizes out of range");
    if ((flags & kFlagEncrypted) != 0 || (method != kMethodStored && method != kMethodDeflated))
        return refuse(reason, "zip: member is encrypted or neither stored nor deflated");
    if (unpackedSize == 0 || unpackedSize > maxUnpacked)
        return refuse(reason, "zip: member's unpacked size is 0 or over the cap");

    if (localOffset + kLocalHeaderSize > directoryOffset || le32(zip, localOffset) != kLocalHeaderMagic)
        return refuse(reason, "zip: local header offset out of range");
    const std::size_t local = static_cast<std::size_t>(localOffset);
    const std::uint16_t localFlags = le16(zip, local + 6);
    if (le16(zip, local + 8) != method || (localFlags & kFlagEncrypted) != 0)
        return refuse(reason, "zip: local header disagrees with the directory");
    if ((localFlags & kFlagDataDescriptor) == 0
        && (le32(zip, local + 14) != crc || le32(zip, local + 18) != packedSize || le32(zip, local + 22) != unpackedSize))
        return refuse(reason, "zip: local header disagrees with the directory");
    const std::uint64_t dataOffset = localOffset + kLocalHeaderSize + le16(zip, local + 26) + le16(zip, local + 28);
    if (dataOffset + packedSize > directoryOffset)
        return refuse(reason, "zip: member data out of range");

    const std::uint8_t* data = zip + dataOffset;
    // Aravis inflates exactly when the packed size is the smaller one.
    if (method == kMethodStored) {
        if (packedSize != unpackedSize)
            return refuse(reason, "zip: stored member with two sizes");
        if (crc32(0L, data, packedSize) != crc)
            return refuse(reason, "zip: member CRC does not match");
        return true;
    }
    if (packedSize >= unpackedSize)
        return refuse(reason, "zip: deflated member not smaller than its content");
    return inflatesTo(data, packedSize, unpackedSize, crc, reason);
}

} // namespace xq
