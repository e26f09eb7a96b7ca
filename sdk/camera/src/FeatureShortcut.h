// Faster reads of features that are one plain register.
//
// Aravis evaluates a feature read through its node graph, which costs more
// CPU than the register read itself on a fast link. For the most common
// shapes, an Integer, Boolean or Enumeration whose value is an IntReg at a
// fixed address (or such an IntReg itself), a Float whose value is a FloatReg
// (or the FloatReg), and a StringReg, all without availability, lock or index
// rules, the register's place, coding and meaning are static: the SDK reads
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
    std::uint32_t length = 0; // 1 to 8 bytes; strings up to kLongestStringRegister
    bool bigEndian = false;
    bool isSigned = false;
};

// Longer string registers are left to Aravis.
constexpr std::uint32_t kLongestStringRegister = 4096;

struct FeatureShortcut {
    enum class Kind { Integer, Boolean, Enumeration, Float, String };
    Kind kind = Kind::Integer;
    RegisterPlace place;
    // Booleans: the register value that means true.
    std::int64_t onValue = 1;
    // Enumerations: every entry's value in description order; none of them
    // has rules, so all are always available.
    std::vector<std::int64_t> entryValues;
};

// The shortcut for a readable integer, boolean, enumeration, float or string
// feature, or nothing if any rule of the feature could change what a read
// means.
std::optional<FeatureShortcut> featureShortcutFor(ArvGcFeatureNode* feature);

// GenICam IntReg decoding of raw register bytes.
std::int64_t decodeIntegerRegister(const std::uint8_t* bytes, const RegisterPlace& place);

// GenICam FloatReg decoding (4 or 8 bytes, IEEE 754) of raw register bytes.
double decodeFloatRegister(const std::uint8_t* bytes, const RegisterPlace& place);

} // namespace xq
