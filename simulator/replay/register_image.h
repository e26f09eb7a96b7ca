#pragma once
// The feature registers of a replayed device: a sparse byte image built
// from its register dumps. Replay rules:
//  - a byte starts with the value of the first recorded read that covers it
//    (reads ordered by the number of writes before them, then numeric dump
//    before string dump, then file order);
//  - a write stores its bytes, so the device reads back what it was told;
//  - bytes no read ever covered read as zero.
// String registers follow the same rules: they are bytes like any other.

#include "register_dump.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace quorvex::sim {

class RegisterImage final {
public:
    RegisterImage() = default;
    // dumps in their order of precedence (numeric first).
    static RegisterImage fromDumps(const std::vector<const RegisterDump*>& dumps);

    void read(std::uint32_t address, std::uint8_t* out, std::size_t size) const;
    void write(std::uint32_t address, const std::uint8_t* data, std::size_t size);

    bool knows(std::uint32_t address, std::size_t size) const;
    // A NUL-padded text field, if every byte of it was recorded.
    std::optional<std::string> text(std::uint32_t address, std::size_t size) const;
    std::size_t knownBytes() const { return m_bytes.size(); }

private:
    std::unordered_map<std::uint32_t, std::uint8_t> m_bytes;
};

} // namespace quorvex::sim
