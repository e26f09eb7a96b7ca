#include "store_names.h"

namespace quorvex::store {

bool isSafeStoreName(std::string_view name)
{
    constexpr std::size_t kMaxComponentBytes = 255;
    if (name.empty() || name.size() > kMaxComponentBytes || name == "." || name == "..")
        return false;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '/' || c == '\\' || byte < 0x20 || byte == 0x7F)
            return false;
    }
    return true;
}

} // namespace quorvex::store
