// Faster reads of features that are one plain register.
//
// Aravis evaluates a feature read through its node graph, which costs more
// CPU than the register read itself on a fast link. For the most common
// shapes, an Integer, Boolean or Enumeration whose value is an IntReg at a
// fixed address (or such an IntReg itself), a Float whose value is a FloatReg
// (or the FloatReg), and a StringReg, all without lock rules, the register's
// place, coding and meaning are static: the SDK reads the same bytes through
// the same recording device and decodes them itself, so the dumps stay
// identical. A register indexed by one selector asks the description for the
// index, once per read.
//
// A feature may also have an availability rule that the SDK evaluates the
// same way: the value of a plain integer register, or an integer formula
// (IntSwissKnife) over plain integer registers.
#pragma once

#include "GObjectPtr.h"

#include <arv.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace xq {

struct RegisterPlace {
    std::uint64_t address = 0;
    std::uint32_t length = 0; // 1 to 8 bytes; strings up to kLongestStringRegister
    bool bigEndian = false;
    bool isSigned = false;
    // A register indexed by a selector: the address moves by the index
    // node's value (selector times offset). Owned by the loaded description.
    ArvGcIndexNode* index = nullptr;
};

// Longer string registers are left to Aravis.
constexpr std::uint32_t kLongestStringRegister = 4096;

// Available when the formula over the variables' registers is not zero;
// without a formula, when the one variable's register is not zero.
struct AvailabilityRule {
    struct Variable {
        std::string name;
        RegisterPlace place;
    };
    std::vector<Variable> variables;
    GObjectPtr<ArvEvaluator> formula;
};

struct FeatureShortcut {
    enum class Kind { Integer, Boolean, Enumeration, Float, String };
    Kind kind = Kind::Integer;
    RegisterPlace place;
    // XQ_AM_RO or XQ_AM_RW while available.
    unsigned int accessMode = 0;
    std::optional<AvailabilityRule> availability;
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
