// Fixed-size, NUL-terminated text fields of the SDK records.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace xq {

// Bytes of text that fit in capacity - 1 bytes without splitting a UTF-8
// sequence.
inline std::size_t fittingLength(std::string_view text, std::size_t capacity)
{
    if (capacity == 0)
        return 0;
    std::size_t length = text.size() < capacity - 1 ? text.size() : capacity - 1;
    if (length < text.size()) {
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
            --length;
    }
    return length;
}

template <class Char, std::size_t N>
void copyText(Char (&field)[N], std::string_view text)
{
    static_assert(sizeof(Char) == 1, "byte text fields only");
    std::memset(field, 0, N);
    const std::size_t length = fittingLength(text, N);
    std::memcpy(field, text.data(), length);
}

inline void copyText(char* field, std::size_t capacity, std::string_view text)
{
    if (capacity == 0)
        return;
    std::memset(field, 0, capacity);
    std::memcpy(field, text.data(), fittingLength(text, capacity));
}

// Raw bytes into a field, unchanged and cut only at the field's size: a
// text that fills the field has no terminating NUL.
template <class Char, std::size_t N>
void copyBytes(Char (&field)[N], std::string_view bytes)
{
    static_assert(sizeof(Char) == 1, "byte text fields only");
    std::memset(field, 0, N);
    std::memcpy(field, bytes.data(), bytes.size() < N ? bytes.size() : N);
}

// Text of a field that may lack a terminating NUL.
template <class Char, std::size_t N>
std::string fieldText(const Char (&field)[N])
{
    static_assert(sizeof(Char) == 1, "byte text fields only");
    const auto* bytes = reinterpret_cast<const char*>(field);
    const void* nul = std::memchr(bytes, 0, N);
    return std::string(bytes, nul ? static_cast<const char*>(nul) - bytes : N);
}

inline std::string boundedText(const char* bytes, std::size_t size)
{
    const void* nul = std::memchr(bytes, 0, size);
    return std::string(bytes, nul ? static_cast<const char*>(nul) - bytes : size);
}

} // namespace xq
