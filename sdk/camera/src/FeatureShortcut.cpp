#include "FeatureShortcut.h"

#include "FeatureAccess.h"
#include "GObjectPtr.h"

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
constexpr std::string_view kPlainRegisterChildren[] = {
    "Address", "Length", "AccessMode", "pPort", "Cachable", "PollingTime", "Sign", "Endianess", "ToolTip",
    "Description", "DisplayName", "Visibility", "Streamable", "pSelected", "pInvalidator", "Extension"};

template <std::size_t N>
bool onlyAllowedChildren(ArvDomNode* element, const std::string_view (&allowed)[N])
{
    for (ArvDomNode* child = arv_dom_node_get_first_child(element); child; child = arv_dom_node_get_next_sibling(child)) {
        if (arv_dom_node_get_node_type(child) != ARV_DOM_NODE_TYPE_ELEMENT_NODE)
            continue;
        const char* name = arv_dom_node_get_node_name(child);
        if (!name || std::find(std::begin(allowed), std::end(allowed), std::string_view(name)) == std::end(allowed))
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
    if (!onlyAllowedChildren(registerElement, kPlainRegisterChildren))
        return std::nullopt;
    const unsigned int mode = features::accessModeOf(feature);
    if (mode != XQ_AM_RO && mode != XQ_AM_RW)
        return std::nullopt;
    if (ARV_DOM_NODE(feature) != registerElement
        && features::accessModeOf(ARV_GC_FEATURE_NODE(registerElement)) == XQ_AM_WO)
        return std::nullopt;

    GErrorSlot error;
    auto* reg = ARV_GC_REGISTER(registerElement);
    RegisterPlace place;
    place.address = arv_gc_register_get_address(reg, error.out());
    if (error)
        return std::nullopt;
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

std::optional<FeatureShortcut> featureShortcutFor(ArvGcFeatureNode* feature)
{
    using Kind = FeatureShortcut::Kind;
    FeatureShortcut shortcut;
    ArvDomNode* registerElement = nullptr;
    ArvDomNode* const element = ARV_DOM_NODE(feature);
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
        if (!onlyAllowedChildren(element, kPlainEnumerationChildren) || !fillEnumeration(feature, shortcut))
            return std::nullopt;
        registerElement = valueRegister(feature, isPlainIntReg);
    } else if (ARV_IS_GC_BOOLEAN(feature)) {
        shortcut.kind = Kind::Boolean;
        if (!onlyAllowedChildren(element, kPlainBooleanChildren) || !fillBoolean(feature, shortcut))
            return std::nullopt;
        registerElement = valueRegister(feature, isPlainIntReg);
    } else if (ARV_IS_GC_INTEGER_NODE(feature)) {
        if (!onlyAllowedChildren(element, kPlainIntegerChildren))
            return std::nullopt;
        registerElement = valueRegister(feature, isPlainIntReg);
    } else if (ARV_IS_GC_FLOAT_NODE(feature)) {
        shortcut.kind = Kind::Float;
        if (!onlyAllowedChildren(element, kPlainFloatChildren))
            return std::nullopt;
        registerElement = valueRegister(feature, isPlainFloatReg);
    }
    if (!registerElement)
        return std::nullopt;
    const std::uint32_t longest = shortcut.kind == Kind::String ? kLongestStringRegister : 8;
    const std::optional<RegisterPlace> place = placeOf(feature, registerElement, longest);
    if (!place || (shortcut.kind == Kind::Float && place->length != 4 && place->length != 8))
        return std::nullopt;
    shortcut.place = *place;
    return shortcut;
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
