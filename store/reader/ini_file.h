#pragma once
// Reads INI files in the dialect that Qt's settings class writes: "[group]"
// sections, %-encoded group and key names, "\" standing for "/" in names,
// quoted values with C-style escapes, comma lists and "@"-typed values.
// Plain C++17, so programs without Qt read the same files as the tool.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::store {

struct IniValue final {
    enum class Kind {
        Text,    // one string (also an empty value)
        List,    // unquoted commas made a list of strings
        Invalid, // "@Invalid()": a value that was written as nothing
        Typed,   // "@ByteArray(...)", "@Variant(...)" and other typed values
    };
    Kind kind = Kind::Text;
    // Text: the string; List: the items; Typed: the text inside the
    // parentheses (for byte arrays, their bytes).
    std::vector<std::string> items;
    // For Typed: the type word ("ByteArray", "Variant", ...).
    std::string typeName;

    // The value as one string: the text, or for a byte array its bytes;
    // empty for lists, invalid and other typed values.
    std::string text() const;
    bool isText() const { return kind == Kind::Text; }
};

struct IniEntry final {
    std::string key; // decoded, "/" between levels
    IniValue value;
    std::size_t line = 0; // 1-based line of its (last) definition
};

struct IniSection final {
    std::string name; // decoded; "" for keys outside any group
    std::size_t line = 0;
    std::vector<IniEntry> entries; // in file order; a repeated key keeps its first place, last value

    const IniEntry* find(std::string_view key) const;
};

struct IniProblem final {
    std::size_t line = 0;
    std::string message;
};

struct IniDocument final {
    // Sections in order of first appearance; a repeated section is merged
    // into the first one, as the settings class does.
    std::vector<IniSection> sections;
    // Lines that could not be read; the rest of the file is still read.
    std::vector<IniProblem> problems;

    const IniSection* find(std::string_view name) const;
};

IniDocument parseIni(std::string_view text);

// Reads and parses a file. False with a message when it cannot be read; a
// missing file is reported through that message too.
bool readIniFile(const std::string& path, IniDocument& document, std::string& error);

// Name and value codecs, exposed for tests and for writers of such files.
std::string decodeIniName(std::string_view encoded);
IniValue decodeIniValue(std::string_view raw, bool& ok);

} // namespace quorvex::store
