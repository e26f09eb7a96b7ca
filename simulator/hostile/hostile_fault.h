#pragma once
// The faults a hostile device can be told to have, as named on the
// command line ("--hostile KIND[=VALUE]").

#include <cstdint>
#include <optional>
#include <string>

namespace quorvex::sim {

enum class HostileKind {
    MalformedZip,        // zipped description whose directory points outside the file
    ZipBomb,             // a small zip that inflates to 1 GiB
    OversizedXml,        // URL declares a 256 MiB description
    SlowXml,             // every description read answered only on the third try
    FileUrl,             // "File:" URL naming a local file (default /dev/zero)
    UnterminatedName,    // 32-byte model name with no terminating NUL
    NonUtf8Name,         // model name in Latin-1, not UTF-8
    FormatName,          // model name with format directives (%1 %2 %s %n)
    Vanish,              // stops answering after N read commands or on SIGUSR1
};

struct HostileFault final {
    HostileKind kind = HostileKind::MalformedZip;
    std::string filePath = "/dev/zero";   // FileUrl
    std::uint32_t vanishAfterReads = 3000; // Vanish
};

// Parses "KIND" or "KIND=VALUE"; nullopt with a message in error otherwise.
std::optional<HostileFault> parseHostileFault(const std::string& text, std::string& error);
// The name a fault is given on the command line.
std::string hostileKindName(HostileKind kind);
// One help line per kind, for --help.
std::string hostileKindsHelp();

} // namespace quorvex::sim
