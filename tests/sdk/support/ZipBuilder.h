#pragma once
// A one-member zip built as a device would serve its description, for the
// tests and the fuzz target of the SDKs' zip check, which then bend single
// fields of it with putLe.

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace xqtest {

using Bytes = std::vector<std::uint8_t>;

inline void putLe(Bytes& bytes, std::size_t at, std::uint32_t value, int size)
{
    for (int i = 0; i < size; ++i)
        bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

inline Bytes deflated(const std::string& content)
{
    z_stream stream{};
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    Bytes out(deflateBound(&stream, content.size()));
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = out.data();
    stream.avail_out = static_cast<uInt>(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

// A one-member zip laid out as Aravis's reader expects it:
// local header at 0, data at 35, directory entry, end record.
struct Zip {
    Bytes bytes;
    std::size_t directory = 0;
    std::size_t end = 0;
};

inline Zip makeZip(const std::string& content, bool deflate)
{
    const std::string name = "d.xml";
    const Bytes data = deflate ? deflated(content) : Bytes(content.begin(), content.end());
    const auto crc = static_cast<std::uint32_t>(crc32(0L, reinterpret_cast<const Bytef*>(content.data()),
                                                      static_cast<uInt>(content.size())));
    Zip zip;
    zip.directory = 30 + name.size() + data.size();
    zip.end = zip.directory + 46 + name.size();
    zip.bytes.assign(zip.end + 22, 0);
    auto header = [&](std::size_t at, std::size_t fields) { // fields: offset of method in this header
        putLe(zip.bytes, at + fields, deflate ? 8 : 0, 2);
        putLe(zip.bytes, at + fields + 6, crc, 4);
        putLe(zip.bytes, at + fields + 10, static_cast<std::uint32_t>(data.size()), 4);
        putLe(zip.bytes, at + fields + 14, static_cast<std::uint32_t>(content.size()), 4);
        putLe(zip.bytes, at + fields + 18, static_cast<std::uint32_t>(name.size()), 2);
    };
    putLe(zip.bytes, 0, 0x04034b50, 4);
    header(0, 8);
    std::copy(name.begin(), name.end(), zip.bytes.begin() + 30);
    std::copy(data.begin(), data.end(), zip.bytes.begin() + 30 + name.size());
    putLe(zip.bytes, zip.directory, 0x02014b50, 4);
    header(zip.directory, 10);
    std::copy(name.begin(), name.end(), zip.bytes.begin() + zip.directory + 46);
    putLe(zip.bytes, zip.end, 0x06054b50, 4);
    putLe(zip.bytes, zip.end + 8, 1, 2);
    putLe(zip.bytes, zip.end + 10, 1, 2);
    putLe(zip.bytes, zip.end + 12, static_cast<std::uint32_t>(zip.end - zip.directory), 4);
    putLe(zip.bytes, zip.end + 16, static_cast<std::uint32_t>(zip.directory), 4);
    return zip;
}

} // namespace xqtest
