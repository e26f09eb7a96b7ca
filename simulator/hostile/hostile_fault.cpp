#include "hostile_fault.h"

#include <array>
#include <cstdlib>

namespace quorvex::sim {

namespace {

struct KindEntry final {
    HostileKind kind;
    const char* name;
    const char* help;
};

constexpr std::array<KindEntry, 9> kKinds{{
    {HostileKind::MalformedZip, "bad-zip", "zipped description, directory outside the file"},
    {HostileKind::ZipBomb, "zip-bomb", "zipped description inflating to 1 GiB"},
    {HostileKind::OversizedXml, "huge-xml", "description URL declaring 256 MiB"},
    {HostileKind::SlowXml, "slow-xml", "description reads answered on the third try only"},
    {HostileKind::FileUrl, "file-url[=PATH]", "File: URL of a local file (default /dev/zero)"},
    {HostileKind::UnterminatedName, "name-32", "model name of 32 bytes, no terminating NUL"},
    {HostileKind::NonUtf8Name, "name-latin1", "model name that is not UTF-8"},
    {HostileKind::FormatName, "name-format", "model name with %1 %2 %s %n"},
    {HostileKind::Vanish, "vanish[=N]", "silent after N reads (default 3000) or SIGUSR1"},
}};

std::string nameOf(const KindEntry& entry)
{
    const std::string name = entry.name;
    return name.substr(0, name.find('['));
}

} // namespace

std::optional<HostileFault> parseHostileFault(const std::string& text, std::string& error)
{
    const std::size_t equals = text.find('=');
    const std::string name = text.substr(0, equals);
    const bool hasValue = equals != std::string::npos;
    const std::string value = hasValue ? text.substr(equals + 1) : std::string();
    for (const KindEntry& entry : kKinds) {
        if (nameOf(entry) != name)
            continue;
        HostileFault fault;
        fault.kind = entry.kind;
        if (entry.kind == HostileKind::FileUrl && hasValue) {
            // The URL is "File:///PATH;0;SIZE": the path must be absolute and free of ';'.
            if (value.empty() || value[0] != '/' || value.find(';') != std::string::npos) {
                error = "--hostile file-url= needs an absolute path without ';', not '" + value + "'";
                return std::nullopt;
            }
            fault.filePath = value;
        } else if (entry.kind == HostileKind::Vanish && hasValue) {
            char* end = nullptr;
            const unsigned long reads = std::strtoul(value.c_str(), &end, 10);
            if (value.empty() || *end != '\0' || value.size() > 9 || value[0] == '-') {
                error = "--hostile vanish= needs a number of read commands, not '" + value + "'";
                return std::nullopt;
            }
            fault.vanishAfterReads = static_cast<std::uint32_t>(reads);
        } else if (hasValue) {
            error = "--hostile " + name + " takes no value";
            return std::nullopt;
        }
        return fault;
    }
    error = "unknown --hostile kind '" + name + "' (see --help)";
    return std::nullopt;
}

std::string hostileKindName(HostileKind kind)
{
    for (const KindEntry& entry : kKinds)
        if (entry.kind == kind)
            return nameOf(entry);
    return "?";
}

std::string hostileKindsHelp()
{
    std::string text;
    for (const KindEntry& entry : kKinds) {
        // Kinds indented under the option, their help in the options' column.
        std::string line(26, ' ');
        line.replace(8, std::string(entry.name).size(), entry.name);
        text += line + entry.help + "\n";
    }
    return text;
}

} // namespace quorvex::sim
