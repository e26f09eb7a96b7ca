#pragma once
// Reads the register dumps a collection leaves beside a device's GenICam
// description (<model>_regfile.dat and <model>_strRegFile.dat): a text
// header, the recorded reads and writes in order, and the last bytes read
// per access. The files come from disk and may be damaged or hostile, so
// every line is checked and sizes are bounded.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::sim {

struct RegisterAccessEvent final {
    enum class Kind { Read, Write };
    Kind kind = Kind::Read;
    std::uint64_t epoch = 0; // writes recorded before this event
    std::uint64_t address = 0;
    std::vector<std::uint8_t> bytes;
};

struct RegisterDump final {
    enum class Content { Numeric, String };
    Content content = Content::Numeric;
    std::string model;  // as written, %XX escapes undone
    std::string device;
    std::vector<RegisterAccessEvent> events;                          // in recorded order
    std::vector<std::pair<std::uint64_t, std::vector<std::uint8_t>>> lastRead; // address, bytes
};

// Longest single access a dump may hold; GVCP memory reads are far shorter.
inline constexpr std::size_t kMaxDumpAccessBytes = 65536;
// Larger files are refused rather than read into memory.
inline constexpr std::uintmax_t kMaxDumpFileBytes = 256u * 1024u * 1024u;

// Parses the text of one dump. False with "line N: ..." in error.
bool parseRegisterDump(std::string_view text, RegisterDump& dump, std::string& error);

// Reads and parses a file; the error names the file.
bool readRegisterDump(const std::string& path, RegisterDump& dump, std::string& error);

} // namespace quorvex::sim
