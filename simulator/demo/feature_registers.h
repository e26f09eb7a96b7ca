#pragma once
// The register image behind a feature table: every access is checked
// against the feature it lands on (access mode, availability, range).

#include "core/byte_order.h"
#include "core/gvcp.h"
#include "feature_table.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace quorvex::sim {

class FeatureRegisters final {
public:
    // The table must outlive this object.
    explicit FeatureRegisters(const FeatureTable& table);

    bool covers(std::uint32_t address, std::size_t size) const;
    gvcp::Status read(std::uint32_t address, MutableByteView out) const;
    // Validates the whole write before storing any of it; names the
    // features written (commands included) in written.
    gvcp::Status write(std::uint32_t address, ByteView data, std::vector<const FeatureDefinition*>& written);

    std::int64_t integer(const std::string& name, std::uint32_t index = 0) const;
    void setInteger(const std::string& name, std::int64_t value, std::uint32_t index = 0);
    double floating(const std::string& name, std::uint32_t index = 0) const;
    void setFloating(const std::string& name, double value, std::uint32_t index = 0);
    void setString(const std::string& name, const std::string& value);

    bool isAvailable(const FeatureDefinition& definition) const;

    // Values of the features that belong to user sets.
    using Snapshot = std::vector<std::uint8_t>;
    Snapshot snapshot() const;
    void restore(const Snapshot& saved);
    // Factory values of the features that belong to user sets.
    void loadDefaults(bool everything = false);

private:
    struct Slot final {
        const FeatureDefinition* definition;
        std::uint32_t address;
        std::uint32_t length;
    };

    const FeatureDefinition& definition(const std::string& name) const;
    std::uint8_t* at(const FeatureDefinition& feature, std::uint32_t index);
    const std::uint8_t* at(const FeatureDefinition& feature, std::uint32_t index) const;
    std::int64_t decodeInteger(const FeatureDefinition& feature, const std::uint8_t* bytes) const;
    gvcp::Status validate(const Slot& slot, const std::uint8_t* bytes) const;
    void storeDefault(const FeatureDefinition& feature);

    const FeatureTable& m_table;
    std::uint32_t m_base;
    std::vector<std::uint8_t> m_image;
    std::vector<Slot> m_slots; // sorted by address, contiguous
    std::unordered_map<std::string, const FeatureDefinition*> m_byName;
};

} // namespace quorvex::sim
