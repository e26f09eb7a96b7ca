#pragma once
// A device's features described once, from which both its GenICam
// description and its register behaviour are derived, so the two cannot
// disagree.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::sim {

enum class FeatureType { Category, Integer, Float, Boolean, String, Enumeration, Command };
enum class FeatureAccess { ReadOnly, ReadWrite, WriteOnly };
enum class FeatureVisibility { Beginner, Expert, Guru, Invisible };

struct EnumEntry final {
    std::string name;
    std::int64_t value = 0;
};

// A feature is available only while another feature's value compares
// equal (or unequal) to a constant.
struct AvailabilityRule final {
    std::string feature;
    std::int64_t value = 0;
    bool equal = true;
};

struct FeatureDefinition final {
    std::string name;
    FeatureType type = FeatureType::Integer;
    std::string category;
    FeatureAccess access = FeatureAccess::ReadWrite;
    FeatureVisibility visibility = FeatureVisibility::Beginner;
    std::string toolTip;

    // Register placement. A fixed address points into the transport
    // layer's own block; otherwise the table assigns one.
    std::uint32_t address = 0;
    std::uint32_t length = 4;
    bool fixedAddress = false;
    bool isSigned = false;
    // A field of a big-endian register, bits counted from its most
    // significant one (0); -1 when the feature has the whole register.
    int msb = -1;
    int lsb = -1;

    std::int64_t minimum = 0;
    std::int64_t maximum = 0;
    std::int64_t increment = 1;
    double floatMinimum = 0.0;
    double floatMaximum = 0.0;
    std::string unit;

    std::int64_t defaultInteger = 0;
    std::int64_t commandValue = 1;
    double defaultFloat = 0.0;
    std::string defaultString;

    std::vector<EnumEntry> entries;
    std::optional<AvailabilityRule> availableWhen;
    std::string selectedBy;                // the selector indexing this feature's register
    std::vector<std::string> selects;      // for selectors: the features they index
    std::vector<std::string> children;     // for categories
    bool inUserSet = true;                 // saved and restored with user sets

    // Fluent adjustments used while building the catalogue.
    FeatureDefinition& readOnly() { access = FeatureAccess::ReadOnly; inUserSet = false; return *this; }
    FeatureDefinition& writeOnly() { access = FeatureAccess::WriteOnly; inUserSet = false; return *this; }
    FeatureDefinition& expert() { visibility = FeatureVisibility::Expert; return *this; }
    FeatureDefinition& guru() { visibility = FeatureVisibility::Guru; return *this; }
    FeatureDefinition& invisible() { visibility = FeatureVisibility::Invisible; return *this; }
    FeatureDefinition& tip(std::string text) { toolTip = std::move(text); return *this; }
    FeatureDefinition& units(std::string text) { unit = std::move(text); return *this; }
    FeatureDefinition& at(std::uint32_t fixed, std::uint32_t size)
    {
        address = fixed; length = size; fixedAddress = true; inUserSet = false; return *this;
    }
    FeatureDefinition& availableIf(std::string feature, std::int64_t value, bool whenEqual = true)
    {
        availableWhen = AvailabilityRule{std::move(feature), value, whenEqual}; return *this;
    }
    FeatureDefinition& notInUserSet() { inUserSet = false; return *this; }
    FeatureDefinition& signedValue() { isSigned = true; return *this; }
    FeatureDefinition& executes(std::int64_t value) { commandValue = value; return *this; }
    FeatureDefinition& bits(int mostSignificant, int leastSignificant)
    {
        msb = mostSignificant; lsb = leastSignificant; return *this;
    }

    bool hasRegister() const { return type != FeatureType::Category; }
};

class FeatureTable final {
public:
    explicit FeatureTable(std::uint32_t registerBase) : m_nextAddress(registerBase), m_base(registerBase) {}

    FeatureDefinition& category(const std::string& name, const std::string& parent);
    FeatureDefinition& integer(const std::string& name, const std::string& parent, std::int64_t value, std::int64_t minimum,
                         std::int64_t maximum, std::int64_t increment = 1);
    FeatureDefinition& floating(const std::string& name, const std::string& parent, double value, double minimum,
                          double maximum);
    FeatureDefinition& boolean(const std::string& name, const std::string& parent, bool value);
    FeatureDefinition& string(const std::string& name, const std::string& parent, const std::string& value,
                        std::uint32_t length);
    FeatureDefinition& enumeration(const std::string& name, const std::string& parent, std::vector<EnumEntry> entries,
                             std::int64_t value);
    FeatureDefinition& command(const std::string& name, const std::string& parent);
    // Makes selector index the registers of the given features.
    void select(const std::string& selector, const std::vector<std::string>& features);

    // Assigns register addresses; call once, after the last feature.
    void layOut();

    const std::vector<FeatureDefinition>& features() const { return m_features; }
    const FeatureDefinition* find(const std::string& name) const;
    std::uint32_t registerBase() const { return m_base; }
    std::uint32_t registerEnd() const { return m_nextAddress; }

private:
    FeatureDefinition& add(FeatureDefinition definition);
    FeatureDefinition* findMutable(const std::string& name);

    std::vector<FeatureDefinition> m_features;
    std::uint32_t m_nextAddress;
    std::uint32_t m_base;
};

} // namespace quorvex::sim
