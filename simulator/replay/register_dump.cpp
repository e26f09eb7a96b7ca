#include "register_dump.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace quorvex::sim {

namespace {

constexpr std::string_view kMagic = "QUORVEX-REGDUMP 1";

class LineReader final {
public:
    explicit LineReader(std::string_view text) : m_text(text) {}

    bool next(std::string_view& line)
    {
        // A missing line still counts, so errors name the line that is not there.
        ++m_number;
        if (m_position >= m_text.size())
            return false;
        const std::size_t end = m_text.find('\n', m_position);
        const std::size_t stop = end == std::string_view::npos ? m_text.size() : end;
        line = m_text.substr(m_position, stop - m_position);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        m_position = stop + 1;
        return true;
    }
    std::size_t number() const { return m_number; }

private:
    std::string_view m_text;
    std::size_t m_position = 0;
    std::size_t m_number = 0;
};

std::vector<std::string_view> splitWords(std::string_view line)
{
    std::vector<std::string_view> words;
    std::size_t position = 0;
    while (position < line.size()) {
        const std::size_t start = line.find_first_not_of(' ', position);
        if (start == std::string_view::npos)
            break;
        const std::size_t end = line.find(' ', start);
        const std::size_t stop = end == std::string_view::npos ? line.size() : end;
        words.push_back(line.substr(start, stop - start));
        position = stop;
    }
    return words;
}

bool parseDecimal(std::string_view text, std::uint64_t& value)
{
    if (text.empty() || text.size() > 19)
        return false;
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), value, 10);
    return status == std::errc() && end == text.data() + text.size();
}

bool parseAddress(std::string_view text, std::uint64_t& value)
{
    if (text.size() < 3 || text.size() > 18 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X'))
        return false;
    text.remove_prefix(2);
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    return status == std::errc() && end == text.data() + text.size();
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool parseHexBytes(std::string_view text, std::size_t expected, std::vector<std::uint8_t>& bytes)
{
    if (text.size() != expected * 2)
        return false;
    bytes.resize(expected);
    for (std::size_t i = 0; i < expected; ++i) {
        const int high = hexDigit(text[2 * i]);
        const int low = hexDigit(text[2 * i + 1]);
        if (high < 0 || low < 0)
            return false;
        bytes[i] = static_cast<std::uint8_t>(high << 4 | low);
    }
    return true;
}

std::string unescape(std::string_view text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hexDigit(text[i + 1]) >= 0 && hexDigit(text[i + 2]) >= 0) {
            out.push_back(static_cast<char>(hexDigit(text[i + 1]) << 4 | hexDigit(text[i + 2])));
            i += 2;
        } else {
            out.push_back(text[i]);
        }
    }
    return out;
}

// One access: "<address> <length> <hex bytes>" starting at words[first].
bool parseAccess(const std::vector<std::string_view>& words, std::size_t first, std::uint64_t& address,
                 std::vector<std::uint8_t>& bytes, std::string& problem)
{
    std::uint64_t length = 0;
    if (!parseAddress(words[first], address)) {
        problem = "address \"" + std::string(words[first]) + "\" is not 0x followed by hexadecimal digits";
        return false;
    }
    if (!parseDecimal(words[first + 1], length) || length == 0 || length > kMaxDumpAccessBytes) {
        problem = "length \"" + std::string(words[first + 1]) + "\" is not 1 to " + std::to_string(kMaxDumpAccessBytes);
        return false;
    }
    if (address + length > (std::uint64_t{1} << 32)) {
        problem = "access runs past the 32-bit address space";
        return false;
    }
    const std::string_view hex = first + 2 < words.size() ? words[first + 2] : std::string_view();
    if (!parseHexBytes(hex, static_cast<std::size_t>(length), bytes)) {
        problem = "data is not " + std::to_string(length) + " bytes of hexadecimal";
        return false;
    }
    return true;
}

} // namespace

bool parseRegisterDump(std::string_view text, RegisterDump& dump, std::string& error)
{
    dump = RegisterDump{};
    LineReader lines(text);
    std::string_view line;
    const auto fail = [&](const std::string& message) {
        error = "line " + std::to_string(lines.number()) + ": " + message;
        return false;
    };
    const auto header = [&](std::string_view keyword, std::string_view& value) {
        if (!lines.next(line))
            return fail("ends before the \"" + std::string(keyword) + "\" line");
        if (line.substr(0, keyword.size() + 1) != std::string(keyword) + " " && line != keyword)
            return fail("expected \"" + std::string(keyword) + " ...\"");
        value = line.size() > keyword.size() ? line.substr(keyword.size() + 1) : std::string_view();
        return true;
    };

    if (!lines.next(line) || line != kMagic)
        return fail("not a register dump (the first line is not \"" + std::string(kMagic) + "\")");
    std::string_view value;
    if (!header("content", value))
        return false;
    if (value == "numeric")
        dump.content = RegisterDump::Content::Numeric;
    else if (value == "string")
        dump.content = RegisterDump::Content::String;
    else
        return fail("content must be numeric or string");
    if (!header("model", value))
        return false;
    dump.model = unescape(value);
    if (!header("device", value))
        return false;
    dump.device = unescape(value);

    std::uint64_t count = 0;
    if (!header("events", value))
        return false;
    if (!parseDecimal(value, count))
        return fail("event count is not a number");
    std::string problem;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (!lines.next(line))
            return fail("ends after " + std::to_string(i) + " of " + std::to_string(count) + " events");
        const std::vector<std::string_view> words = splitWords(line);
        if (words.size() != 5 || (words[0] != "R" && words[0] != "W"))
            return fail("an event is \"R|W <epoch> <address> <length> <bytes>\"");
        RegisterAccessEvent event;
        event.kind = words[0] == "R" ? RegisterAccessEvent::Kind::Read : RegisterAccessEvent::Kind::Write;
        if (!parseDecimal(words[1], event.epoch))
            return fail("epoch \"" + std::string(words[1]) + "\" is not a number");
        if (!parseAccess(words, 2, event.address, event.bytes, problem))
            return fail(problem);
        dump.events.push_back(std::move(event));
    }

    if (!header("last", value))
        return false;
    if (!parseDecimal(value, count))
        return fail("last-read count is not a number");
    for (std::uint64_t i = 0; i < count; ++i) {
        if (!lines.next(line))
            return fail("ends after " + std::to_string(i) + " of " + std::to_string(count) + " last-read lines");
        const std::vector<std::string_view> words = splitWords(line);
        if (words.size() != 4 || words[0] != "L")
            return fail("a last-read line is \"L <address> <length> <bytes>\"");
        std::uint64_t address = 0;
        std::vector<std::uint8_t> bytes;
        if (!parseAccess(words, 1, address, bytes, problem))
            return fail(problem);
        dump.lastRead.emplace_back(address, std::move(bytes));
    }
    if (!lines.next(line) || line != "end")
        return fail("missing the closing \"end\" line");
    return true;
}

bool readRegisterDump(const std::string& path, RegisterDump& dump, std::string& error)
{
    std::error_code status;
    const std::uintmax_t size = std::filesystem::file_size(path, status);
    if (status) {
        error = path + ": " + status.message();
        return false;
    }
    if (size > kMaxDumpFileBytes) {
        error = path + ": larger than " + std::to_string(kMaxDumpFileBytes) + " bytes";
        return false;
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        error = path + ": cannot be opened";
        return false;
    }
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!parseRegisterDump(text, dump, error)) {
        error = path + " " + error;
        return false;
    }
    return true;
}

} // namespace quorvex::sim
