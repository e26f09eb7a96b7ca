#include "feature_registers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace quorvex::sim {

namespace {

std::uint64_t readBig64(const std::uint8_t* p)
{
    return (std::uint64_t{readBig32(p)} << 32) | readBig32(p + 4);
}

void writeBig64(std::uint8_t* p, std::uint64_t value)
{
    writeBig32(p, static_cast<std::uint32_t>(value >> 32));
    writeBig32(p + 4, static_cast<std::uint32_t>(value));
}

double decodeDouble(const std::uint8_t* p)
{
    const std::uint64_t bits = readBig64(p);
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

bool isNumeric(const FeatureDefinition& definition) { return definition.type != FeatureType::String; }

} // namespace

FeatureRegisters::FeatureRegisters(const FeatureTable& table)
    : m_table(table), m_base(table.registerBase()), m_image(table.registerEnd() - table.registerBase(), 0)
{
    for (const FeatureDefinition& feature : table.features()) {
        m_byName.emplace(feature.name, &feature);
        if (!feature.hasRegister() || feature.fixedAddress)
            continue;
        const std::uint32_t copies =
            feature.selectedBy.empty() ? 1 : static_cast<std::uint32_t>(definition(feature.selectedBy).entries.size());
        for (std::uint32_t index = 0; index < copies; ++index)
            m_slots.push_back({&feature, feature.address + index * feature.length, feature.length});
    }
    std::sort(m_slots.begin(), m_slots.end(), [](const Slot& a, const Slot& b) { return a.address < b.address; });
    loadDefaults(true);
}

const FeatureDefinition& FeatureRegisters::definition(const std::string& name) const
{
    const auto found = m_byName.find(name);
    if (found == m_byName.end())
        throw std::logic_error("no feature named " + name);
    return *found->second;
}

std::uint8_t* FeatureRegisters::at(const FeatureDefinition& feature, std::uint32_t index)
{
    return m_image.data() + (feature.address - m_base) + index * feature.length;
}

const std::uint8_t* FeatureRegisters::at(const FeatureDefinition& feature, std::uint32_t index) const
{
    return m_image.data() + (feature.address - m_base) + index * feature.length;
}

bool FeatureRegisters::covers(std::uint32_t address, std::size_t size) const
{
    return address >= m_base && std::uint64_t{address} + size <= std::uint64_t{m_base} + m_image.size();
}

bool FeatureRegisters::isAvailable(const FeatureDefinition& feature) const
{
    if (!feature.availableWhen)
        return true;
    const AvailabilityRule& rule = *feature.availableWhen;
    const bool equal = integer(rule.feature) == rule.value;
    return equal == rule.equal;
}

std::int64_t FeatureRegisters::decodeInteger(const FeatureDefinition& feature, const std::uint8_t* bytes) const
{
    if (feature.length == 8)
        return static_cast<std::int64_t>(readBig64(bytes));
    const std::uint32_t raw = readBig32(bytes);
    return feature.isSigned ? std::int64_t{static_cast<std::int32_t>(raw)} : std::int64_t{raw};
}

gvcp::Status FeatureRegisters::read(std::uint32_t address, MutableByteView out) const
{
    if (!covers(address, out.size))
        return gvcp::status::kInvalidAddress;
    std::memcpy(out.data, m_image.data() + (address - m_base), out.size);
    const std::uint64_t end = std::uint64_t{address} + out.size;
    auto slot = std::upper_bound(m_slots.begin(), m_slots.end(), address,
                                 [](std::uint32_t a, const Slot& s) { return a < s.address; });
    if (slot != m_slots.begin())
        --slot;
    for (; slot != m_slots.end() && slot->address < end; ++slot) {
        if (slot->address + slot->length <= address)
            continue;
        // Texts are refused while unavailable; numbers stay readable, since
        // availability rules of other features are computed from them.
        if (slot->definition->type == FeatureType::String && !isAvailable(*slot->definition))
            return gvcp::status::kAccessDenied;
        if (slot->definition->access == FeatureAccess::WriteOnly) {
            // Write-only registers read as zero rather than refusing.
            const std::uint32_t from = std::max(slot->address, address);
            const std::uint64_t to = std::min<std::uint64_t>(slot->address + slot->length, end);
            std::memset(out.data + (from - address), 0, static_cast<std::size_t>(to - from));
        }
    }
    return gvcp::status::kSuccess;
}

gvcp::Status FeatureRegisters::validate(const Slot& slot, const std::uint8_t* bytes) const
{
    const FeatureDefinition& feature = *slot.definition;
    switch (feature.type) {
    case FeatureType::Integer:
    case FeatureType::Boolean: {
        const std::int64_t value = decodeInteger(feature, bytes);
        if (value < feature.minimum || value > feature.maximum)
            return gvcp::status::kInvalidParameter;
        if (feature.increment > 1 && (value - feature.minimum) % feature.increment != 0)
            return gvcp::status::kInvalidParameter;
        return gvcp::status::kSuccess;
    }
    case FeatureType::Enumeration: {
        const std::int64_t value = decodeInteger(feature, bytes);
        const bool known = std::any_of(feature.entries.begin(), feature.entries.end(),
                                       [value](const EnumEntry& entry) { return entry.value == value; });
        return known ? gvcp::status::kSuccess : gvcp::status::kInvalidParameter;
    }
    case FeatureType::Float: {
        const double value = decodeDouble(bytes);
        if (!std::isfinite(value) || value < feature.floatMinimum || value > feature.floatMaximum)
            return gvcp::status::kInvalidParameter;
        return gvcp::status::kSuccess;
    }
    case FeatureType::Command:
    case FeatureType::String:
    case FeatureType::Category:
        return gvcp::status::kSuccess;
    }
    return gvcp::status::kSuccess;
}

gvcp::Status FeatureRegisters::write(std::uint32_t address, ByteView data, std::vector<const FeatureDefinition*>& written)
{
    written.clear();
    if (!covers(address, data.size))
        return gvcp::status::kInvalidAddress;
    const std::uint64_t end = std::uint64_t{address} + data.size;
    auto first = std::upper_bound(m_slots.begin(), m_slots.end(), address,
                                  [](std::uint32_t a, const Slot& s) { return a < s.address; });
    if (first == m_slots.begin())
        return gvcp::status::kInvalidAddress;
    --first;

    std::uint64_t expected = address;
    auto slot = first;
    for (; slot != m_slots.end() && slot->address < end; ++slot) {
        if (slot->address + slot->length <= address)
            continue;
        if (slot->address > expected)
            return gvcp::status::kInvalidAddress; // a gap between registers
        const FeatureDefinition& feature = *slot->definition;
        if (feature.access == FeatureAccess::ReadOnly)
            return gvcp::status::kWriteProtect;
        if (!isAvailable(feature))
            return gvcp::status::kAccessDenied;
        if (isNumeric(feature)) {
            if (slot->address < address || slot->address + slot->length > end)
                return gvcp::status::kInvalidParameter; // part of a number
            const gvcp::Status status = validate(*slot, data.data + (slot->address - address));
            if (status != gvcp::status::kSuccess)
                return status;
        }
        expected = slot->address + slot->length;
    }
    if (expected < end)
        return gvcp::status::kInvalidAddress;

    for (slot = first; slot != m_slots.end() && slot->address < end; ++slot) {
        if (slot->address + slot->length <= address)
            continue;
        const FeatureDefinition& feature = *slot->definition;
        if (feature.type == FeatureType::Command) {
            // A command register keeps nothing; executing is the side effect.
            if (readBig32(data.data + (slot->address - address)) != 0)
                written.push_back(&feature);
            continue;
        }
        const std::uint32_t from = std::max(slot->address, address);
        const std::uint64_t to = std::min<std::uint64_t>(slot->address + slot->length, end);
        std::memcpy(m_image.data() + (from - m_base), data.data + (from - address), static_cast<std::size_t>(to - from));
        written.push_back(&feature);
    }
    return gvcp::status::kSuccess;
}

std::int64_t FeatureRegisters::integer(const std::string& name, std::uint32_t index) const
{
    const FeatureDefinition& feature = definition(name);
    return decodeInteger(feature, at(feature, index));
}

void FeatureRegisters::setInteger(const std::string& name, std::int64_t value, std::uint32_t index)
{
    const FeatureDefinition& feature = definition(name);
    if (feature.length == 8)
        writeBig64(at(feature, index), static_cast<std::uint64_t>(value));
    else
        writeBig32(at(feature, index), static_cast<std::uint32_t>(value));
}

double FeatureRegisters::floating(const std::string& name, std::uint32_t index) const
{
    return decodeDouble(at(definition(name), index));
}

void FeatureRegisters::setFloating(const std::string& name, double value, std::uint32_t index)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    writeBig64(at(definition(name), index), bits);
}

void FeatureRegisters::setString(const std::string& name, const std::string& value)
{
    const FeatureDefinition& feature = definition(name);
    std::uint8_t* field = at(feature, 0);
    std::memset(field, 0, feature.length);
    std::memcpy(field, value.data(), std::min<std::size_t>(value.size(), feature.length - 1));
}

void FeatureRegisters::storeDefault(const FeatureDefinition& feature)
{
    const std::uint32_t copies =
        feature.selectedBy.empty() ? 1 : static_cast<std::uint32_t>(definition(feature.selectedBy).entries.size());
    for (std::uint32_t index = 0; index < copies; ++index) {
        switch (feature.type) {
        case FeatureType::Float:
            setFloating(feature.name, feature.defaultFloat, index);
            break;
        case FeatureType::String:
            setString(feature.name, feature.defaultString);
            break;
        case FeatureType::Command:
        case FeatureType::Category:
            break;
        default:
            setInteger(feature.name, feature.defaultInteger, index);
            break;
        }
    }
}

void FeatureRegisters::loadDefaults(bool everything)
{
    for (const FeatureDefinition& feature : m_table.features())
        if (feature.hasRegister() && !feature.fixedAddress && (everything || feature.inUserSet))
            storeDefault(feature);
}

FeatureRegisters::Snapshot FeatureRegisters::snapshot() const
{
    return m_image;
}

void FeatureRegisters::restore(const Snapshot& saved)
{
    if (saved.size() != m_image.size())
        return;
    for (const Slot& slot : m_slots)
        if (slot.definition->inUserSet)
            std::memcpy(m_image.data() + (slot.address - m_base), saved.data() + (slot.address - m_base), slot.length);
}

} // namespace quorvex::sim
