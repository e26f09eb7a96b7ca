#include "FeatureShortcut.h"

#include "GObjectPtr.h"
#include "XQSdkDefs.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace xq {
namespace {

// Child elements that do not change what reading the value means. Anything
// else (availability, locks, imposed access, indexes, formulas) rules the
// shortcut out.
constexpr std::string_view kPlainIntegerChildren[] = {
    "pValue", "Min", "Max", "Inc", "pMin", "pMax", "pInc", "Representation", "Unit", "ToolTip", "Description",
    "DisplayName", "Visibility", "Streamable", "pSelected", "pInvalidator", "EventID", "Extension"};
constexpr std::string_view kPlainBooleanChildren[] = {
    "pValue", "OnValue", "OffValue", "ToolTip", "Description", "DisplayName", "Visibility", "Streamable",
    "pSelected", "pInvalidator", "EventID", "Extension"};
constexpr std::string_view kPlainEnumerationChildren[] = {
    "pValue", "EnumEntry", "ToolTip", "Description", "DisplayName", "Visibility", "Streamable", "pSelected",
    "pInvalidator", "EventID", "Extension"};
constexpr std::string_view kPlainEntryChildren[] = {
    "Value", "Symbolic", "NumericValue", "IsSelfClearing", "ToolTip", "Description", "DisplayName", "Visibility",
    "Extension"};
constexpr std::string_view kPlainFloatChildren[] = {
    "pValue", "Min", "Max", "pMin", "pMax", "Inc", "pInc", "Representation", "Unit", "DisplayNotation",
    "DisplayPrecision", "ToolTip", "Description", "DisplayName", "Visibility", "Streamable", "pSelected",
    "pInvalidator", "EventID", "Extension"};
constexpr std::string_view kPlainFormulaChildren[] = {
    "pVariable", "Formula", "ToolTip", "Description", "DisplayName", "Visibility", "Representation", "Unit",
    "Extension"};
constexpr std::string_view kAvailabilityChild = "pIsAvailable";
// A register may be indexed by one selector (pIndex).
constexpr std::string_view kPlainRegisterChildren[] = {
    "Address", "Length", "AccessMode", "pPort", "Cachable", "PollingTime", "Sign", "Endianess", "ToolTip",
    "Description", "DisplayName", "Visibility", "Streamable", "pSelected", "pInvalidator", "Extension", "pIndex"};

// The element name of a child. Aravis 0.8 names some properties it parses
// "Unknown" (the display notation and precision of a Float): name those by
// their type.
std::string_view childElementName(ArvDomNode* child)
{
    if (ARV_IS_GC_PROPERTY_NODE(child)) {
        switch (arv_gc_property_node_get_node_type(ARV_GC_PROPERTY_NODE(child))) {
        case ARV_GC_PROPERTY_NODE_TYPE_DISPLAY_NOTATION:
            return "DisplayNotation";
        case ARV_GC_PROPERTY_NODE_TYPE_DISPLAY_PRECISION:
            return "DisplayPrecision";
        default:
            break;
        }
    }
    const char* name = arv_dom_node_get_node_name(child);
    return name ? std::string_view(name) : std::string_view();
}

// Whether every child element is one of allowed, or the one extra name.
template <std::size_t N>
bool onlyAllowedChildren(ArvDomNode* element, const std::string_view (&allowed)[N], std::string_view extra = {})
{
    for (ArvDomNode* child = arv_dom_node_get_first_child(element); child; child = arv_dom_node_get_next_sibling(child)) {
        if (arv_dom_node_get_node_type(child) != ARV_DOM_NODE_TYPE_ELEMENT_NODE)
            continue;
        const std::string_view found = childElementName(child);
        if (found.empty())
            return false;
        if (found != extra && std::find(std::begin(allowed), std::end(allowed), found) == std::end(allowed))
            return false;
    }
    return true;
}

ArvGcPropertyNode* childProperty(ArvDomNode* element, std::string_view wanted)
{
    for (ArvDomNode* child = arv_dom_node_get_first_child(element); child; child = arv_dom_node_get_next_sibling(child)) {
        const char* name = arv_dom_node_get_node_name(child);
        if (name && wanted == name && ARV_IS_GC_PROPERTY_NODE(child))
            return ARV_GC_PROPERTY_NODE(child);
    }
    return nullptr;
}

// Exact types only: register kinds derived from these add their own rules.
bool isPlainIntReg(gpointer node) { return node && G_OBJECT_TYPE(node) == ARV_TYPE_GC_INT_REG_NODE; }
bool isPlainFloatReg(gpointer node) { return node && G_OBJECT_TYPE(node) == ARV_TYPE_GC_FLOAT_REG_NODE; }
bool isPlainStringReg(gpointer node) { return node && G_OBJECT_TYPE(node) == ARV_TYPE_GC_STRING_REG_NODE; }

// The register that a feature's pValue names, if it passes the test.
ArvDomNode* valueRegister(ArvGcFeatureNode* feature, bool (*isPlain)(gpointer))
{
    ArvGcPropertyNode* value = childProperty(ARV_DOM_NODE(feature), "pValue");
    ArvGcNode* target = value ? arv_gc_property_node_get_linked_node(value) : nullptr;
    return isPlain(target) ? ARV_DOM_NODE(target) : nullptr;
}

std::optional<RegisterPlace> placeOf(ArvGcFeatureNode* feature, ArvDomNode* registerElement, std::uint32_t longest)
{
    // Only the feature itself may carry an availability rule.
    const bool own = ARV_DOM_NODE(feature) == registerElement;
    if (!onlyAllowedChildren(registerElement, kPlainRegisterChildren, own ? kAvailabilityChild : std::string_view()))
        return std::nullopt;
    // No implemented or locked rules are left: the mode while available is
    // the description's.
    const ArvGcAccessMode mode = arv_gc_feature_node_get_actual_access_mode(feature);
    if (mode != ARV_GC_ACCESS_MODE_RO && mode != ARV_GC_ACCESS_MODE_RW)
        return std::nullopt;
    if (!own && arv_gc_feature_node_get_actual_access_mode(ARV_GC_FEATURE_NODE(registerElement)) == ARV_GC_ACCESS_MODE_WO)
        return std::nullopt;

    GErrorSlot error;
    auto* reg = ARV_GC_REGISTER(registerElement);
    RegisterPlace place;
    int indexes = 0;
    for (ArvDomNode* child = arv_dom_node_get_first_child(registerElement); child;
         child = arv_dom_node_get_next_sibling(child)) {
        if (ARV_IS_GC_INDEX_NODE(child)) {
            place.index = ARV_GC_INDEX_NODE(child);
            ++indexes;
        }
    }
    if (indexes > 1)
        return std::nullopt;
    if (place.index) {
        // The fixed part only: asking the register would read the selector.
        bool addressed = false;
        for (ArvDomNode* child = arv_dom_node_get_first_child(registerElement); child;
             child = arv_dom_node_get_next_sibling(child)) {
            const char* name = arv_dom_node_get_node_name(child);
            if (!name || std::strcmp(name, "Address") != 0 || !ARV_IS_GC_PROPERTY_NODE(child))
                continue;
            place.address += arv_gc_property_node_get_int64(ARV_GC_PROPERTY_NODE(child), error.out());
            if (error)
                return std::nullopt;
            addressed = true;
        }
        if (!addressed)
            return std::nullopt;
    } else {
        place.address = arv_gc_register_get_address(reg, error.out());
        if (error)
            return std::nullopt;
    }
    const guint64 length = arv_gc_register_get_length(reg, error.out());
    if (error || length == 0 || length > longest)
        return std::nullopt;
    place.length = static_cast<std::uint32_t>(length);
    // GenICam's defaults: little-endian, unsigned.
    ArvGcPropertyNode* endianness = childProperty(registerElement, "Endianess");
    place.bigEndian = endianness && arv_gc_property_node_get_endianness(endianness, G_LITTLE_ENDIAN) == G_BIG_ENDIAN;
    ArvGcPropertyNode* sign = childProperty(registerElement, "Sign");
    place.isSigned =
        sign && arv_gc_property_node_get_sign(sign, ARV_GC_SIGNEDNESS_UNSIGNED) == ARV_GC_SIGNEDNESS_SIGNED;
    return place;
}

bool fillBoolean(ArvGcFeatureNode* feature, FeatureShortcut& shortcut)
{
    // Without OnValue, GenICam's true is 1.
    if (ArvGcPropertyNode* on = childProperty(ARV_DOM_NODE(feature), "OnValue")) {
        GErrorSlot error;
        shortcut.onValue = arv_gc_property_node_get_int64(on, error.out());
        if (error)
            return false;
    }
    return true;
}

bool fillEnumeration(ArvGcFeatureNode* feature, FeatureShortcut& shortcut)
{
    for (const GSList* item = arv_gc_enumeration_get_entries(ARV_GC_ENUMERATION(feature)); item; item = item->next) {
        if (!ARV_IS_GC_ENUM_ENTRY(item->data) || !onlyAllowedChildren(ARV_DOM_NODE(item->data), kPlainEntryChildren))
            return false;
        GErrorSlot error;
        const gint64 value = arv_gc_enum_entry_get_value(ARV_GC_ENUM_ENTRY(item->data), error.out());
        if (error)
            return false;
        shortcut.entryValues.push_back(value);
    }
    // Aravis lists the entries last first; available values are reported in
    // description order.
    std::reverse(shortcut.entryValues.begin(), shortcut.entryValues.end());
    return !shortcut.entryValues.empty();
}

} // namespace

namespace {

std::optional<FeatureShortcut> shortcutFor(ArvGcFeatureNode* feature, bool allowRules);

// The register of a node that reads as a plain integer, without rules.
std::optional<RegisterPlace> plainIntegerPlace(ArvGcNode* node)
{
    if (!node || !ARV_IS_GC_FEATURE_NODE(node))
        return std::nullopt;
    const std::optional<FeatureShortcut> shortcut = shortcutFor(ARV_GC_FEATURE_NODE(node), false);
    if (!shortcut || shortcut->kind != FeatureShortcut::Kind::Integer)
        return std::nullopt;
    return shortcut->place;
}

std::optional<AvailabilityRule> availabilityRuleFor(ArvGcFeatureNode* feature)
{
    ArvGcPropertyNode* property = childProperty(ARV_DOM_NODE(feature), kAvailabilityChild);
    ArvGcNode* target = property ? arv_gc_property_node_get_linked_node(property) : nullptr;
    if (!target)
        return std::nullopt;
    AvailabilityRule rule;
    if (const std::optional<RegisterPlace> place = plainIntegerPlace(target)) {
        rule.variables.push_back({std::string(), *place});
        return rule;
    }
    if (G_OBJECT_TYPE(target) != ARV_TYPE_GC_INT_SWISS_KNIFE_NODE
        || !onlyAllowedChildren(ARV_DOM_NODE(target), kPlainFormulaChildren))
        return std::nullopt;
    for (ArvDomNode* child = arv_dom_node_get_first_child(ARV_DOM_NODE(target)); child;
         child = arv_dom_node_get_next_sibling(child)) {
        if (!ARV_IS_GC_PROPERTY_NODE(child))
            continue;
        auto* childProperty = ARV_GC_PROPERTY_NODE(child);
        const std::string_view kind(arv_dom_node_get_node_name(child));
        if (kind == "Formula") {
            GErrorSlot error;
            const char* text = arv_gc_property_node_get_string(childProperty, error.out());
            if (error || !text)
                return std::nullopt;
            rule.formula.reset(arv_evaluator_new(text));
        } else if (kind == "pVariable") {
            const char* name = arv_gc_property_node_get_name(childProperty);
            const std::optional<RegisterPlace> place = plainIntegerPlace(arv_gc_property_node_get_linked_node(childProperty));
            if (!name || !place)
                return std::nullopt;
            rule.variables.push_back({name, *place});
        }
    }
    if (!rule.formula)
        return std::nullopt;
    return rule;
}

std::optional<FeatureShortcut> shortcutFor(ArvGcFeatureNode* feature, bool allowRules)
{
    using Kind = FeatureShortcut::Kind;
    FeatureShortcut shortcut;
    ArvDomNode* registerElement = nullptr;
    ArvDomNode* const element = ARV_DOM_NODE(feature);
    const std::string_view rules = allowRules ? kAvailabilityChild : std::string_view();
    if (isPlainIntReg(feature)) {
        registerElement = element;
    } else if (isPlainFloatReg(feature)) {
        shortcut.kind = Kind::Float;
        registerElement = element;
    } else if (isPlainStringReg(feature)) {
        shortcut.kind = Kind::String;
        registerElement = element;
    } else if (ARV_IS_GC_ENUMERATION(feature)) {
        shortcut.kind = Kind::Enumeration;
        if (!onlyAllowedChildren(element, kPlainEnumerationChildren, rules) || !fillEnumeration(feature, shortcut))
            return std::nullopt;
        registerElement = valueRegister(feature, isPlainIntReg);
    } else if (ARV_IS_GC_BOOLEAN(feature)) {
        shortcut.kind = Kind::Boolean;
        if (!onlyAllowedChildren(element, kPlainBooleanChildren, rules) || !fillBoolean(feature, shortcut))
            return std::nullopt;
        registerElement = valueRegister(feature, isPlainIntReg);
    } else if (ARV_IS_GC_INTEGER_NODE(feature)) {
        if (!onlyAllowedChildren(element, kPlainIntegerChildren, rules))
            return std::nullopt;
        registerElement = valueRegister(feature, isPlainIntReg);
    } else if (ARV_IS_GC_FLOAT_NODE(feature)) {
        shortcut.kind = Kind::Float;
        if (!onlyAllowedChildren(element, kPlainFloatChildren, rules))
            return std::nullopt;
        registerElement = valueRegister(feature, isPlainFloatReg);
    }
    if (!registerElement)
        return std::nullopt;
    if (childProperty(element, kAvailabilityChild)) {
        if (!allowRules || !(shortcut.availability = availabilityRuleFor(feature)))
            return std::nullopt;
    }
    const std::uint32_t longest = shortcut.kind == Kind::String ? kLongestStringRegister : 8;
    const std::optional<RegisterPlace> place = placeOf(feature, registerElement, longest);
    if (!place || (shortcut.kind == Kind::Float && place->length != 4 && place->length != 8))
        return std::nullopt;
    shortcut.place = *place;
    shortcut.accessMode =
        arv_gc_feature_node_get_actual_access_mode(feature) == ARV_GC_ACCESS_MODE_RW ? XQ_AM_RW : XQ_AM_RO;
    return shortcut;
}

} // namespace

std::optional<FeatureShortcut> featureShortcutFor(ArvGcFeatureNode* feature)
{
    return shortcutFor(feature, true);
}

std::int64_t decodeIntegerRegister(const std::uint8_t* bytes, const RegisterPlace& place)
{
    std::uint64_t value = 0;
    for (std::uint32_t i = 0; i < place.length; ++i) {
        const std::uint32_t index = place.bigEndian ? i : place.length - 1 - i;
        value = (value << 8) | bytes[index];
    }
    const unsigned int bits = place.length * 8;
    if (place.isSigned && bits < 64 && (value >> (bits - 1)) != 0)
        value |= ~std::uint64_t{0} << bits;
    return static_cast<std::int64_t>(value);
}

double decodeFloatRegister(const std::uint8_t* bytes, const RegisterPlace& place)
{
    std::uint64_t raw = 0;
    for (std::uint32_t i = 0; i < place.length; ++i) {
        const std::uint32_t index = place.bigEndian ? i : place.length - 1 - i;
        raw = (raw << 8) | bytes[index];
    }
    if (place.length == 4) {
        const auto bits = static_cast<std::uint32_t>(raw);
        float single = 0;
        std::memcpy(&single, &bits, sizeof single);
        return single;
    }
    double value = 0;
    std::memcpy(&value, &raw, sizeof value);
    return value;
}

} // namespace xq
