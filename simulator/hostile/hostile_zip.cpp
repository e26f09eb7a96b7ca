#include "hostile_zip.h"

#include <zlib.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

namespace quorvex::sim {

namespace {

constexpr std::uint16_t kStored = 0;
constexpr std::uint16_t kDeflated = 8;
constexpr std::uint16_t kVersionNeeded = 20;

void appendLe16(std::string& out, std::uint32_t value)
{
    out += static_cast<char>(value & 0xFF);
    out += static_cast<char>((value >> 8) & 0xFF);
}

void appendLe32(std::string& out, std::uint32_t value)
{
    appendLe16(out, value & 0xFFFF);
    appendLe16(out, value >> 16);
}

// What the local header and the directory entry say about the member.
struct MemberRecord final {
    std::string name;
    std::uint16_t method = kStored;
    std::uint32_t crc = 0;
    std::uint32_t compressedSize = 0;
    std::uint32_t uncompressedSize = 0;
    std::uint32_t localHeaderOffset = 0;
};

void appendLocalHeader(std::string& out, const MemberRecord& member)
{
    appendLe32(out, 0x04034B50);
    appendLe16(out, kVersionNeeded);
    appendLe16(out, 0);             // flags
    appendLe16(out, member.method);
    appendLe16(out, 0);             // time
    appendLe16(out, 0x21);          // date: 1980-01-01
    appendLe32(out, member.crc);
    appendLe32(out, member.compressedSize);
    appendLe32(out, member.uncompressedSize);
    appendLe16(out, static_cast<std::uint32_t>(member.name.size()));
    appendLe16(out, 0);             // extra field
    out += member.name;
}

void appendDirectoryEntry(std::string& out, const MemberRecord& member)
{
    appendLe32(out, 0x02014B50);
    appendLe16(out, kVersionNeeded); // made by
    appendLe16(out, kVersionNeeded);
    appendLe16(out, 0);
    appendLe16(out, member.method);
    appendLe16(out, 0);
    appendLe16(out, 0x21);
    appendLe32(out, member.crc);
    appendLe32(out, member.compressedSize);
    appendLe32(out, member.uncompressedSize);
    appendLe16(out, static_cast<std::uint32_t>(member.name.size()));
    appendLe16(out, 0); // extra field
    appendLe16(out, 0); // comment
    appendLe16(out, 0); // disk
    appendLe16(out, 0); // internal attributes
    appendLe32(out, 0); // external attributes
    appendLe32(out, member.localHeaderOffset);
    out += member.name;
}

void appendEndRecord(std::string& out, std::uint32_t directorySize, std::uint32_t directoryOffset)
{
    appendLe32(out, 0x06054B50);
    appendLe16(out, 0);
    appendLe16(out, 0);
    appendLe16(out, 1); // entries on this disk
    appendLe16(out, 1); // entries in all
    appendLe32(out, directorySize);
    appendLe32(out, directoryOffset);
    appendLe16(out, 0); // comment
}

// Raw deflate of size zero bytes. One flushed chunk of zeros does not refer
// back past its own start, so repeating its bytes repeats its output.
std::string deflatedZeros(std::uint64_t size, std::uint32_t& crc)
{
    constexpr std::size_t kChunk = 1u << 20;
    if (size % kChunk != 0)
        throw std::logic_error("deflatedZeros: size must be whole MiB");
    z_stream stream{};
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::runtime_error("zlib cannot start a deflate stream");
    std::vector<unsigned char> zeros(kChunk, 0);
    std::vector<unsigned char> buffer(deflateBound(&stream, kChunk) + 64);
    const auto run = [&](unsigned char* input, std::size_t inputSize, int flush) {
        stream.next_in = input;
        stream.avail_in = static_cast<uInt>(inputSize);
        stream.next_out = buffer.data();
        stream.avail_out = static_cast<uInt>(buffer.size());
        deflate(&stream, flush);
        return std::string(reinterpret_cast<const char*>(buffer.data()), buffer.size() - stream.avail_out);
    };
    const std::string chunk = run(zeros.data(), zeros.size(), Z_FULL_FLUSH);
    const std::string finish = run(nullptr, 0, Z_FINISH);
    deflateEnd(&stream);

    const uLong chunkCrc = crc32(0, zeros.data(), static_cast<uInt>(kChunk));
    uLong total = crc32(0, nullptr, 0);
    std::string out;
    out.reserve(chunk.size() * (size / kChunk) + finish.size());
    for (std::uint64_t done = 0; done < size; done += kChunk) {
        out += chunk;
        total = crc32_combine(total, chunkCrc, kChunk);
    }
    out += finish;
    crc = static_cast<std::uint32_t>(total);
    return out;
}

} // namespace

std::string malformedZip(const std::string& memberName, const std::string& content)
{
    MemberRecord member;
    member.name = memberName;
    member.crc = static_cast<std::uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(content.data()), static_cast<uInt>(content.size())));
    member.compressedSize = member.uncompressedSize = static_cast<std::uint32_t>(content.size());
    std::string zip;
    appendLocalHeader(zip, member);
    zip += content;
    // The directory entry itself is sound apart from where it says the
    // member starts; the end record then lies about the directory.
    MemberRecord misplaced = member;
    misplaced.localHeaderOffset = 0xFFFFFF00;
    misplaced.compressedSize = 0x7FFFFFFF;
    std::string directory;
    appendDirectoryEntry(directory, misplaced);
    zip += directory;
    appendEndRecord(zip, 0x7FFFFFF0, 0xFFFFFF00);
    return zip;
}

std::string zipBomb(const std::string& memberName)
{
    constexpr std::uint64_t kInflatedSize = 1ull << 30;
    MemberRecord member;
    member.name = memberName;
    member.method = kDeflated;
    const std::string data = deflatedZeros(kInflatedSize, member.crc);
    member.compressedSize = static_cast<std::uint32_t>(data.size());
    member.uncompressedSize = static_cast<std::uint32_t>(kInflatedSize);
    std::string zip;
    appendLocalHeader(zip, member);
    zip += data;
    std::string directory;
    appendDirectoryEntry(directory, member);
    const auto directoryOffset = static_cast<std::uint32_t>(zip.size());
    zip += directory;
    appendEndRecord(zip, static_cast<std::uint32_t>(directory.size()), directoryOffset);
    return zip;
}

} // namespace quorvex::sim
