// Fuzz target for the register-dump parser: the replay reads dumps from a
// store anyone can edit. Any bytes must parse or be refused with a line
// number, and what parses keeps within the parser's own bounds.

#include "register_dump.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    quorvex::sim::RegisterDump dump;
    std::string error;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (!quorvex::sim::parseRegisterDump(text, dump, error)) {
        if (error.rfind("line ", 0) != 0)
            std::abort(); // a refusal names its line
        return 0;
    }
    for (const quorvex::sim::RegisterAccessEvent& event : dump.events) {
        if (event.bytes.size() > quorvex::sim::kMaxDumpAccessBytes)
            std::abort();
    }
    return 0;
}
