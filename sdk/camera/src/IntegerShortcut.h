// A faster read of integer features that are one plain register.
//
// Aravis evaluates a feature read through its node graph, which costs more
// CPU than the register read itself. For the most common shape, an Integer
// whose value is an IntReg at a fixed address with no availability, lock or
// index rules (or such an IntReg itself), the register's place and coding are
// static: the SDK reads the same bytes through the same recording device and
// decodes them itself, so the wire traffic and the dumps stay identical.
#pragma once

#include <arv.h>

#include <cstdint>
#include <optional>

namespace xq {

struct IntegerShortcut {
    std::uint64_t address = 0;
    std::uint32_t length = 0; // 1 to 8 bytes
    bool bigEndian = false;
    bool isSigned = false;
};

// The shortcut for a readable integer feature, or nothing if any rule of the
// feature could change what a read means.
std::optional<IntegerShortcut> integerShortcutFor(ArvGcFeatureNode* feature);

// GenICam IntReg decoding of raw register bytes.
std::int64_t decodeIntegerRegister(const std::uint8_t* bytes, const IntegerShortcut& shortcut);

} // namespace xq
