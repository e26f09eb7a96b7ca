// Fuzz target for the store's INI reader: any bytes must parse without a
// crash, and every value and name must come out as valid UTF-8 or bytes.
// Built and run by fuzz/run-fuzz.sh store-ini.

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
