#include "IntegerShortcut.h"

#include "FeatureAccess.h"
#include "GObjectPtr.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace xq {
namespace {

// Child elements that do not change what reading the value means.
constexpr std::string_view kPlainIntegerChildren[] = {
    "pValue", "Min", "Max", "Inc", "pMin", "pMax", "pInc", "Representation", "Unit", "ToolTip", "Description",
    "DisplayName", "Visibility", "Streamable", "pSelected", "pInvalidator", "EventID", "Extension"};
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

} // namespace

std::optional<IntegerShortcut> integerShortcutFor(ArvGcFeatureNode* feature)
{
    ArvDomNode* registerElement = nullptr;
    // Exact types only: register kinds derived from IntReg add their own rules.
    const auto isPlainIntReg = [](gpointer node) { return G_OBJECT_TYPE(node) == ARV_TYPE_GC_INT_REG_NODE; };
    if (isPlainIntReg(feature)) {
        registerElement = ARV_DOM_NODE(feature);
    } else if (ARV_IS_GC_INTEGER_NODE(feature)) {
        if (!onlyAllowedChildren(ARV_DOM_NODE(feature), kPlainIntegerChildren))
            return std::nullopt;
        ArvGcPropertyNode* value = childProperty(ARV_DOM_NODE(feature), "pValue");
        ArvGcNode* target = value ? arv_gc_property_node_get_linked_node(value) : nullptr;
        if (!target || !isPlainIntReg(target))
            return std::nullopt;
        registerElement = ARV_DOM_NODE(target);
    } else {
        return std::nullopt;
    }
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
    IntegerShortcut shortcut;
    shortcut.address = arv_gc_register_get_address(reg, error.out());
    if (error)
        return std::nullopt;
    const guint64 length = arv_gc_register_get_length(reg, error.out());
    if (error || length == 0 || length > 8)
        return std::nullopt;
    shortcut.length = static_cast<std::uint32_t>(length);
    // GenICam's defaults: little-endian, unsigned.
    ArvGcPropertyNode* endianness = childProperty(registerElement, "Endianess");
    shortcut.bigEndian = endianness && arv_gc_property_node_get_endianness(endianness, G_LITTLE_ENDIAN) == G_BIG_ENDIAN;
    ArvGcPropertyNode* sign = childProperty(registerElement, "Sign");
    shortcut.isSigned =
        sign && arv_gc_property_node_get_sign(sign, ARV_GC_SIGNEDNESS_UNSIGNED) == ARV_GC_SIGNEDNESS_SIGNED;
    return shortcut;
}

std::int64_t decodeIntegerRegister(const std::uint8_t* bytes, const IntegerShortcut& shortcut)
{
    std::uint64_t value = 0;
    for (std::uint32_t i = 0; i < shortcut.length; ++i) {
        const std::uint32_t index = shortcut.bigEndian ? i : shortcut.length - 1 - i;
        value = (value << 8) | bytes[index];
    }
    const unsigned int bits = shortcut.length * 8;
    if (shortcut.isSigned && bits < 64 && (value >> (bits - 1)) != 0)
        value |= ~std::uint64_t{0} << bits;
    return static_cast<std::int64_t>(value);
}

} // namespace xq
