// Fuzz target for the store's INI reader: any bytes must parse without a
// crash, and every value and name must come out as valid UTF-8 or bytes.
// Built for libFuzzer with clang; with other compilers a small driver runs
// the files it is given, or a fixed number of generated inputs.

#include "ini_file.h"
#include "store_names.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const quorvex::store::IniDocument document = quorvex::store::parseIni(text);
    std::size_t total = 0;
    for (const quorvex::store::IniSection& section : document.sections) {
        total += quorvex::store::isSafeStoreName(section.name) ? 1 : 0;
        for (const quorvex::store::IniEntry& entry : section.entries)
            total += entry.key.size() + entry.value.text().size() + entry.value.items.size();
    }
    for (const quorvex::store::IniProblem& problem : document.problems)
        total += problem.line;
    bool ok = true;
    total += quorvex::store::decodeIniValue(text, ok).items.size();
    total += quorvex::store::decodeIniName(text).size();
    return total == static_cast<std::size_t>(-1) ? 1 : 0;
}

#ifdef QUORVEX_FUZZ_STANDALONE
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

int main(int argc, char** argv)
{
    if (argc > 1) {
        for (int i = 1; i < argc; ++i) {
            std::ifstream file(argv[i], std::ios::binary);
            const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        }
        return 0;
    }
    // Inputs built from the dialect's own pieces reach deeper than noise.
    const std::vector<std::string> pieces = {
        "[", "]", "=", "\n", "\r\n", "\\", "\\\n", "\"", ";", "#", ",", " ", "\t", "%", "%U", "%G", "%UD83D",
        "%UDCF7", "%4", "\\x", "\\x1F", "\\0", "\\777", "\\xFFFFFFFFF", "@", "@@", "@Invalid()", "@ByteArray(",
        "@String(", "@Variant(\\0)", ")", "General", "%General", "Global", "Vir1", "chModelName", "..", "\xC3",
        "\xE2\x82", "\xF0\x9F\x93\xB7", "\xFF", std::string(1, '\0'), "\xEF\xBB\xBF"};
    std::mt19937 random(20240611);
    constexpr int kRuns = 20000;
    for (int run = 0; run < kRuns; ++run) {
        std::string input;
        const int count = static_cast<int>(random() % 40);
        for (int i = 0; i < count; ++i) {
            if (random() % 5 == 0)
                input.push_back(static_cast<char>(random() & 0xFF));
            else
                input += pieces[random() % pieces.size()];
        }
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    }
    std::cout << kRuns << " generated inputs parsed\n";
    return 0;
}
#endif
