// Faster reads of features that are one plain register.
//
// Aravis evaluates a feature read through its node graph, which costs more
// CPU than the register read itself on a fast link. For the most common
// shapes, an Integer, Boolean or Enumeration whose value is an IntReg at a
// fixed address, with no availability, lock or index rules (or such an IntReg
// itself), the register's place, coding and meaning are static: the SDK reads
// the same bytes through the same recording device and decodes them itself,
// so the wire traffic and the dumps stay identical.
#pragma once

#include <arv.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace xq {

struct RegisterPlace {
    std::uint64_t address = 0;
    std::uint32_t length = 0; // 1 to 8 bytes
    bool bigEndian = false;
    bool isSigned = false;
};

struct FeatureShortcut {
    enum class Kind { Integer, Boolean, Enumeration };
    Kind kind = Kind::Integer;
    RegisterPlace place;
    // Booleans: the register value that means true.
    std::int64_t onValue = 1;
    // Enumerations: every entry's value in description order; none of them
    // has rules, so all are always available.
    std::vector<std::int64_t> entryValues;
};

// The shortcut for a readable integer, boolean or enumeration feature, or
// nothing if any rule of the feature could change what a read means.
std::optional<FeatureShortcut> featureShortcutFor(ArvGcFeatureNode* feature);

// GenICam IntReg decoding of raw register bytes.
std::int64_t decodeIntegerRegister(const std::uint8_t* bytes, const RegisterPlace& place);

} // namespace xq
