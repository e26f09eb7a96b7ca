#include "feature_table.h"

#include <algorithm>
#include <stdexcept>

namespace quorvex::sim {

FeatureDefinition& FeatureTable::add(FeatureDefinition definition)
{
    if (find(definition.name))
        throw std::logic_error("feature declared twice: " + definition.name);
    if (!definition.category.empty()) {
        FeatureDefinition* parent = findMutable(definition.category);
        if (!parent || parent->type != FeatureType::Category)
            throw std::logic_error("unknown category " + definition.category + " for " + definition.name);
        parent->children.push_back(definition.name);
    }
    m_features.push_back(std::move(definition));
    return m_features.back();
}

FeatureDefinition& FeatureTable::category(const std::string& name, const std::string& parent)
{
    FeatureDefinition definition;
    definition.name = name;
    definition.type = FeatureType::Category;
    definition.category = parent;
    definition.inUserSet = false;
    return add(std::move(definition));
}

FeatureDefinition& FeatureTable::integer(const std::string& name, const std::string& parent, std::int64_t value,
                                   std::int64_t minimum, std::int64_t maximum, std::int64_t increment)
{
    FeatureDefinition definition;
    definition.name = name;
    definition.type = FeatureType::Integer;
    definition.category = parent;
    definition.defaultInteger = value;
    definition.minimum = minimum;
    definition.maximum = maximum;
    definition.increment = increment;
    return add(std::move(definition));
}

FeatureDefinition& FeatureTable::floating(const std::string& name, const std::string& parent, double value, double minimum,
                                    double maximum)
{
    FeatureDefinition definition;
    definition.name = name;
    definition.type = FeatureType::Float;
    definition.category = parent;
    definition.length = 8;
    definition.defaultFloat = value;
    definition.floatMinimum = minimum;
    definition.floatMaximum = maximum;
    return add(std::move(definition));
}

FeatureDefinition& FeatureTable::boolean(const std::string& name, const std::string& parent, bool value)
{
    FeatureDefinition definition;
    definition.name = name;
    definition.type = FeatureType::Boolean;
    definition.category = parent;
    definition.defaultInteger = value ? 1 : 0;
    definition.minimum = 0;
    definition.maximum = 1;
    return add(std::move(definition));
}

FeatureDefinition& FeatureTable::string(const std::string& name, const std::string& parent, const std::string& value,
                                  std::uint32_t length)
{
    FeatureDefinition definition;
    definition.name = name;
    definition.type = FeatureType::String;
    definition.category = parent;
    definition.defaultString = value;
    definition.length = length;
    return add(std::move(definition));
}

FeatureDefinition& FeatureTable::enumeration(const std::string& name, const std::string& parent,
                                       std::vector<EnumEntry> entries, std::int64_t value)
{
    FeatureDefinition definition;
    definition.name = name;
    definition.type = FeatureType::Enumeration;
    definition.category = parent;
    definition.entries = std::move(entries);
    definition.defaultInteger = value;
    return add(std::move(definition));
}

FeatureDefinition& FeatureTable::command(const std::string& name, const std::string& parent)
{
    FeatureDefinition definition;
    definition.name = name;
    definition.type = FeatureType::Command;
    definition.category = parent;
    definition.access = FeatureAccess::WriteOnly;
    definition.inUserSet = false;
    return add(std::move(definition));
}

void FeatureTable::select(const std::string& selector, const std::vector<std::string>& features)
{
    FeatureDefinition* definition = findMutable(selector);
    if (!definition || definition->type != FeatureType::Enumeration)
        throw std::logic_error("selector must be an enumeration: " + selector);
    for (const std::string& name : features) {
        FeatureDefinition* selected = findMutable(name);
        if (!selected)
            throw std::logic_error("unknown selected feature " + name);
        selected->selectedBy = selector;
        definition->selects.push_back(name);
    }
}

void FeatureTable::layOut()
{
    for (FeatureDefinition& definition : m_features) {
        if (!definition.hasRegister() || definition.fixedAddress)
            continue;
        std::uint32_t copies = 1;
        if (!definition.selectedBy.empty()) {
            // Selector entries are numbered 0..n-1, so each picks one copy.
            const FeatureDefinition* selector = find(definition.selectedBy);
            copies = static_cast<std::uint32_t>(selector->entries.size());
        }
        definition.length = (definition.length + 3u) & ~3u;
        definition.address = m_nextAddress;
        m_nextAddress += definition.length * copies;
    }
}

const FeatureDefinition* FeatureTable::find(const std::string& name) const
{
    const auto definition = std::find_if(m_features.begin(), m_features.end(),
                                   [&](const FeatureDefinition& s) { return s.name == name; });
    return definition == m_features.end() ? nullptr : &*definition;
}

FeatureDefinition* FeatureTable::findMutable(const std::string& name)
{
    return const_cast<FeatureDefinition*>(static_cast<const FeatureTable*>(this)->find(name));
}

} // namespace quorvex::sim
