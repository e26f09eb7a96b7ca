#include "ini_file.h"

#include <cctype>
#include <fstream>

namespace quorvex::store {

namespace {

// Files larger than this are not a store's configuration.
constexpr std::size_t kMaxIniFileBytes = 16u * 1024u * 1024u;
constexpr char32_t kMaxCodePoint = 0x10FFFF;

// UTF-8 in, code points out. Bytes that are not valid UTF-8 stand for
// themselves (as Latin-1), so nothing is lost or rejected here.
std::u32string toCodePoints(std::string_view text)
{
    std::u32string out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        int length = 0;
        char32_t cp = 0;
        if (lead < 0x80) {
            length = 1;
            cp = lead;
        } else if ((lead & 0xE0) == 0xC0) {
            length = 2;
            cp = lead & 0x1F;
        } else if ((lead & 0xF0) == 0xE0) {
            length = 3;
            cp = lead & 0x0F;
        } else if ((lead & 0xF8) == 0xF0) {
            length = 4;
            cp = lead & 0x07;
        }
        bool valid = length > 0 && i + length <= text.size();
        for (int k = 1; valid && k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80)
                valid = false;
            else
                cp = (cp << 6) | (next & 0x3F);
        }
        if (valid && length > 1) {
            static constexpr char32_t kSmallest[5] = {0, 0, 0x80, 0x800, 0x10000};
            valid = cp >= kSmallest[length] && cp <= kMaxCodePoint && !(cp >= 0xD800 && cp <= 0xDFFF);
        }
        if (!valid) {
            out.push_back(lead);
            ++i;
            continue;
        }
        out.push_back(cp);
        i += static_cast<std::size_t>(length);
    }
    return out;
}

void appendUtf8(std::string& out, char32_t cp)
{
    if (cp < 0x80) {
        out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

std::string toUtf8(std::u32string_view cps)
{
    std::string out;
    out.reserve(cps.size());
    for (const char32_t cp : cps)
        appendUtf8(out, cp);
    return out;
}

int hexValue(char32_t c)
{
    if (c >= '0' && c <= '9')
        return static_cast<int>(c - '0');
    if (c >= 'a' && c <= 'f')
        return static_cast<int>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F')
        return static_cast<int>(c - 'A' + 10);
    return -1;
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && (isBlank(text.front()) || text.front() == '\r'))
        text.remove_prefix(1);
    while (!text.empty() && (isBlank(text.back()) || text.back() == '\r'))
        text.remove_suffix(1);
    return text;
}

bool equalsIgnoringAsciiCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

bool startsWith(std::u32string_view text, std::string_view prefix)
{
    if (text.size() < prefix.size())
        return false;
    for (std::size_t i = 0; i < prefix.size(); ++i)
        if (text[i] != static_cast<unsigned char>(prefix[i]))
            return false;
    return true;
}

// Removes the escapes and quotes of one value and splits it at unquoted
// commas. Whitespace outside quotes around an item is dropped; an unquoted
// ";" starts a comment.
bool unescapeValue(std::u32string_view raw, std::vector<std::u32string>& items, bool& isList)
{
    items.assign(1, std::u32string());
    isList = false;
    std::u32string pendingBlanks;
    bool inQuotes = false;

    auto append = [&](char32_t cp) {
        if (!items.back().empty())
            items.back() += pendingBlanks;
        pendingBlanks.clear();
        items.back().push_back(cp);
    };

    for (std::size_t i = 0; i < raw.size(); ++i) {
        const char32_t c = raw[i];
        if (c == '\\') {
            if (++i >= raw.size())
                break;
            const char32_t e = raw[i];
            switch (e) {
            case 'a': append('\a'); break;
            case 'b': append('\b'); break;
            case 'f': append('\f'); break;
            case 'n': append('\n'); break;
            case 'r': append('\r'); break;
            case 't': append('\t'); break;
            case 'v': append('\v'); break;
            case '"': case '\'': case '?': case '\\': append(e); break;
            case 'x': {
                char32_t cp = 0;
                std::size_t digits = 0;
                while (i + 1 < raw.size() && hexValue(raw[i + 1]) >= 0) {
                    cp = cp * 16 + static_cast<char32_t>(hexValue(raw[++i]));
                    if (cp > kMaxCodePoint)
                        return false;
                    ++digits;
                }
                if (digits > 0)
                    append(cp);
                break;
            }
            default:
                if (e >= '0' && e <= '7') {
                    char32_t cp = e - '0';
                    while (i + 1 < raw.size() && raw[i + 1] >= '0' && raw[i + 1] <= '7') {
                        cp = cp * 8 + (raw[++i] - '0');
                        if (cp > kMaxCodePoint)
                            return false;
                    }
                    append(cp);
                }
                // Any other escaped character is dropped, as the writer's
                // own reader does.
                break;
            }
            continue;
        }
        if (inQuotes) {
            if (c == '"') {
                inQuotes = false;
            } else {
                if (!items.back().empty())
                    items.back() += pendingBlanks;
                pendingBlanks.clear();
                items.back().push_back(c);
            }
            continue;
        }
        if (c == '"') {
            inQuotes = true;
            if (!items.back().empty())
                items.back() += pendingBlanks;
            pendingBlanks.clear();
        } else if (c == ';') {
            break;
        } else if (c == ',') {
            isList = true;
            pendingBlanks.clear();
            items.emplace_back();
        } else if (c == ' ' || c == '\t') {
            pendingBlanks.push_back(c);
        } else {
            append(c);
        }
    }
    return !inQuotes;
}

} // namespace

std::string IniValue::text() const
{
    if (kind == Kind::Text || (kind == Kind::Typed && typeName == "ByteArray"))
        return items.empty() ? std::string() : items.front();
    return {};
}

const IniEntry* IniSection::find(std::string_view key) const
{
    for (const IniEntry& entry : entries)
        if (entry.key == key)
            return &entry;
    return nullptr;
}

const IniSection* IniDocument::find(std::string_view name) const
{
    for (const IniSection& section : sections)
        if (section.name == name)
            return &section;
    return nullptr;
}

std::string decodeIniName(std::string_view encoded)
{
    const std::u32string cps = toCodePoints(encoded);
    std::u32string out;
    out.reserve(cps.size());
    char32_t highSurrogate = 0;
    for (std::size_t i = 0; i < cps.size(); ++i) {
        const char32_t c = cps[i];
        if (c != '%')
            highSurrogate = 0; // a high half pairs only with the next escape
        if (c == '\\') {
            out.push_back('/');
            continue;
        }
        if (c == '%' && i + 5 < cps.size() && cps[i + 1] == 'U') {
            int value = 0;
            bool valid = true;
            for (std::size_t k = 2; k <= 5 && valid; ++k) {
                const int digit = hexValue(cps[i + k]);
                valid = digit >= 0;
                value = value * 16 + digit;
            }
            if (valid) {
                const auto unit = static_cast<char32_t>(value);
                i += 5;
                if (unit >= 0xD800 && unit <= 0xDBFF) {
                    highSurrogate = unit;
                } else if (unit >= 0xDC00 && unit <= 0xDFFF) {
                    if (highSurrogate != 0)
                        out.push_back(0x10000 + ((highSurrogate - 0xD800) << 10) + (unit - 0xDC00));
                    highSurrogate = 0;
                } else {
                    highSurrogate = 0;
                    out.push_back(unit);
                }
                continue;
            }
        }
        if (c == '%' && i + 2 < cps.size() && hexValue(cps[i + 1]) >= 0 && hexValue(cps[i + 2]) >= 0) {
            highSurrogate = 0;
            out.push_back(static_cast<char32_t>(hexValue(cps[i + 1]) * 16 + hexValue(cps[i + 2])));
            i += 2;
            continue;
        }
        out.push_back(c);
    }
    return toUtf8(out);
}

IniValue decodeIniValue(std::string_view raw, bool& ok)
{
    IniValue value;
    std::vector<std::u32string> items;
    bool isList = false;
    ok = unescapeValue(toCodePoints(raw), items, isList);
    if (isList) {
        value.kind = IniValue::Kind::List;
        for (const std::u32string& item : items)
            value.items.push_back(toUtf8(item));
        return value;
    }

    const std::u32string& text = items.front();
    if (!text.empty() && text.front() == '@') {
        if (startsWith(text, "@@")) {
            value.items.push_back(toUtf8(std::u32string_view(text).substr(1)));
            return value;
        }
        if (text == U"@Invalid()") {
            value.kind = IniValue::Kind::Invalid;
            return value;
        }
        const std::size_t open = text.find(U'(');
        if (open != std::u32string::npos && text.back() == ')') {
            const std::u32string_view inner = std::u32string_view(text).substr(open + 1, text.size() - open - 2);
            const std::string typeName = toUtf8(std::u32string_view(text).substr(1, open - 1));
            if (typeName == "String") {
                value.items.push_back(toUtf8(inner));
                return value;
            }
            value.kind = IniValue::Kind::Typed;
            value.typeName = typeName;
            if (typeName == "ByteArray") {
                // Byte arrays are written as one character per byte.
                std::string bytes;
                for (const char32_t cp : inner) {
                    if (cp > 0xFF) {
                        ok = false;
                        break;
                    }
                    bytes.push_back(static_cast<char>(cp));
                }
                value.items.push_back(bytes);
            } else {
                value.items.push_back(toUtf8(inner));
            }
            return value;
        }
    }
    value.items.push_back(toUtf8(text));
    return value;
}

namespace {

// "[General]" holds the keys outside any group; a group really named
// "General" is written as "[%General]".
std::string sectionName(std::string_view raw)
{
    if (equalsIgnoringAsciiCase(raw, "General"))
        return {};
    if (equalsIgnoringAsciiCase(raw, "%General"))
        return "General";
    return decodeIniName(raw);
}

} // namespace

IniDocument parseIni(std::string_view text)
{
    IniDocument document;
    if (text.substr(0, 3) == "\xEF\xBB\xBF")
        text.remove_prefix(3);

    // Keys before the first section belong to the top level.
    document.sections.push_back(IniSection{});
    std::size_t current = 0;
    bool skippingBrokenSection = false;

    auto sectionIndex = [&document](const std::string& name, std::size_t line) {
        for (std::size_t i = 0; i < document.sections.size(); ++i)
            if (document.sections[i].name == name)
                return i;
        IniSection section;
        section.name = name;
        section.line = line;
        document.sections.push_back(std::move(section));
        return document.sections.size() - 1;
    };

    std::size_t lineNumber = 0;
    std::size_t position = 0;
    while (position < text.size()) {
        // One logical line: a backslash at the end continues it.
        std::string logical;
        const std::size_t firstLine = lineNumber + 1;
        while (position < text.size()) {
            std::size_t end = text.find('\n', position);
            if (end == std::string_view::npos)
                end = text.size();
            std::string_view physical = text.substr(position, end - position);
            position = end + 1;
            ++lineNumber;
            if (!physical.empty() && physical.back() == '\r')
                physical.remove_suffix(1);
            std::size_t trailingBackslashes = 0;
            while (trailingBackslashes < physical.size()
                   && physical[physical.size() - 1 - trailingBackslashes] == '\\')
                ++trailingBackslashes;
            if (trailingBackslashes % 2 == 1) {
                physical.remove_suffix(1);
                logical.append(physical);
                continue;
            }
            logical.append(physical);
            break;
        }

        const std::string_view line = trimmed(logical);
        if (line.empty() || line.front() == ';' || line.front() == '#')
            continue;

        if (line.front() == '[') {
            const std::size_t close = line.find(']');
            if (close == std::string_view::npos) {
                document.problems.push_back(
                    {firstLine, "group header without a closing ']'; its keys are ignored"});
                skippingBrokenSection = true;
                continue;
            }
            skippingBrokenSection = false;
            const std::string_view rawName = trimmed(line.substr(1, close - 1));
            const std::string name = sectionName(rawName);
            current = sectionIndex(name, firstLine);
            continue;
        }
        if (skippingBrokenSection)
            continue;

        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos) {
            document.problems.push_back({firstLine, "line without '=' is not a key"});
            continue;
        }
        const std::string_view rawKey = trimmed(line.substr(0, equals));
        if (rawKey.empty()) {
            document.problems.push_back({firstLine, "key name is empty"});
            continue;
        }
        bool ok = true;
        IniValue value = decodeIniValue(trimmed(line.substr(equals + 1)), ok);
        if (!ok) {
            document.problems.push_back({firstLine, "value of key '" + std::string(rawKey)
                                                        + "' is malformed (open quote or bad escape)"});
            continue;
        }

        IniSection& section = document.sections[current];
        const std::string key = decodeIniName(rawKey);
        IniEntry* existing = nullptr;
        for (IniEntry& entry : section.entries)
            if (entry.key == key)
                existing = &entry;
        if (existing) {
            existing->value = std::move(value);
            existing->line = firstLine;
        } else {
            section.entries.push_back(IniEntry{key, std::move(value), firstLine});
        }
    }
    return document;
}

bool readIniFile(const std::string& path, IniDocument& document, std::string& error)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        error = "cannot open " + path;
        return false;
    }
    stream.seekg(0, std::ios::end);
    const std::streamoff size = stream.tellg();
    if (size < 0 || static_cast<std::size_t>(size) > kMaxIniFileBytes) {
        error = path + " is too large to be a configuration file";
        return false;
    }
    stream.seekg(0, std::ios::beg);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    if (!stream.read(bytes.data(), size)) {
        error = "cannot read " + path;
        return false;
    }
    document = parseIni(bytes);
    return true;
}

} // namespace quorvex::store
