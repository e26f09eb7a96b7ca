#include "FeatureAccess.h"

#include "ErrorMapping.h"
#include "GObjectPtr.h"

#include <cmath>
#include <memory>

namespace xq::features {
namespace {

bool isEnumeration(ArvGcNode* node) { return ARV_IS_GC_ENUMERATION(node); }
bool isInteger(ArvGcNode* node) { return ARV_IS_GC_INTEGER(node) && !isEnumeration(node); }
bool isFloat(ArvGcNode* node) { return ARV_IS_GC_FLOAT(node) && !isEnumeration(node); }
bool isString(ArvGcNode* node) { return ARV_IS_GC_STRING(node) && !isEnumeration(node); }

// Finds the node and checks its type and that it may be read or written now.
enum class Use { Read, Write };

template <class TypeTest>
int prepare(ArvGc* genicam, const char* name, TypeTest isRightType, Use use, ArvGcFeatureNode** node)
{
    if (const int code = find(genicam, name, node); code != XQ_OK)
        return code;
    if (!isRightType(ARV_GC_NODE(*node)))
        return XQ_ERR_GENICAM;
    const unsigned int mode = accessModeOf(*node);
    const bool allowed = use == Use::Read ? (mode == XQ_AM_RO || mode == XQ_AM_RW)
                                          : (mode == XQ_AM_WO || mode == XQ_AM_RW);
    return allowed ? XQ_OK : XQ_ERR_ACCESS_DENIED;
}

struct GFreeDeleter final {
    void operator()(gpointer data) const noexcept { g_free(data); }
};

} // namespace

unsigned int interfaceTypeOf(ArvGcNode* node)
{
    if (ARV_IS_GC_CATEGORY(node))
        return XQ_IFT_ICATEGORY;
    if (ARV_IS_GC_ENUM_ENTRY(node))
        return XQ_IFT_IENUMENTRY;
    // An enumeration also has the integer and string interfaces: test it first.
    if (ARV_IS_GC_ENUMERATION(node))
        return XQ_IFT_IENUMERATION;
    if (ARV_IS_GC_COMMAND(node))
        return XQ_IFT_ICOMMAND;
    if (ARV_IS_GC_BOOLEAN(node))
        return XQ_IFT_IBOOLEAN;
    if (ARV_IS_GC_FLOAT(node))
        return XQ_IFT_IFLOAT;
    if (ARV_IS_GC_INTEGER(node))
        return XQ_IFT_IINTEGER;
    if (ARV_IS_GC_STRING(node))
        return XQ_IFT_ISTRING;
    if (ARV_IS_GC_REGISTER(node))
        return XQ_IFT_IREGISTER;
    if (ARV_IS_GC_PORT(node))
        return XQ_IFT_IPORT;
    return XQ_IFT_IVALUE;
}

unsigned int visibilityOf(ArvGcFeatureNode* node)
{
    switch (arv_gc_feature_node_get_visibility(node)) {
    case ARV_GC_VISIBILITY_BEGINNER:
        return XQ_VISIBILITY_BEGINNER;
    case ARV_GC_VISIBILITY_EXPERT:
        return XQ_VISIBILITY_EXPERT;
    case ARV_GC_VISIBILITY_GURU:
        return XQ_VISIBILITY_GURU;
    case ARV_GC_VISIBILITY_INVISIBLE:
        return XQ_VISIBILITY_INVISIBLE;
    default:
        return XQ_VISIBILITY_UNDEFINED;
    }
}

unsigned int accessModeOf(ArvGcFeatureNode* node)
{
    GErrorSlot error;
    const bool implemented = arv_gc_feature_node_is_implemented(node, error.out());
    if (error)
        return XQ_AM_UNDEFINED;
    if (!implemented)
        return XQ_AM_NI;
    const bool available = arv_gc_feature_node_is_available(node, error.out());
    if (error)
        return XQ_AM_UNDEFINED;
    if (!available)
        return XQ_AM_NA;
    switch (arv_gc_feature_node_get_actual_access_mode(node)) {
    case ARV_GC_ACCESS_MODE_RO:
        return XQ_AM_RO;
    case ARV_GC_ACCESS_MODE_WO:
        return XQ_AM_WO;
    case ARV_GC_ACCESS_MODE_RW: {
        const bool locked = arv_gc_feature_node_is_locked(node, error.out());
        if (error)
            return XQ_AM_UNDEFINED;
        return locked ? XQ_AM_RO : XQ_AM_RW;
    }
    default:
        return XQ_AM_UNDEFINED;
    }
}

int find(ArvGc* genicam, const char* name, ArvGcFeatureNode** node)
{
    if (!name || !*name || !node)
        return XQ_ERR_INVALID_PARAMETER;
    ArvGcNode* found = arv_gc_get_node(genicam, name);
    if (!found || !ARV_IS_GC_FEATURE_NODE(found))
        return XQ_ERR_GENICAM;
    *node = ARV_GC_FEATURE_NODE(found);
    return XQ_OK;
}

int getInteger(ArvGc* genicam, const char* name, std::int64_t* value)
{
    if (!value)
        return XQ_ERR_INVALID_PARAMETER;
    ArvGcFeatureNode* node = nullptr;
    if (const int code = prepare(genicam, name, isInteger, Use::Read, &node); code != XQ_OK)
        return code;
    GErrorSlot error;
    const gint64 read = arv_gc_integer_get_value(ARV_GC_INTEGER(node), error.out());
    if (error)
        return errorCodeOf(error.get());
    *value = read;
    return XQ_OK;
}

int setInteger(ArvGc* genicam, const char* name, std::int64_t value)
{
    ArvGcFeatureNode* node = nullptr;
    if (const int code = prepare(genicam, name, isInteger, Use::Write, &node); code != XQ_OK)
        return code;
    GErrorSlot error;
    auto* integer = ARV_GC_INTEGER(node);
    const gint64 minimum = arv_gc_integer_get_min(integer, error.out());
    const gint64 maximum = error ? G_MAXINT64 : arv_gc_integer_get_max(integer, error.out());
    if (!error && (value < minimum || value > maximum))
        return XQ_ERR_INVALID_PARAMETER;
    arv_gc_integer_set_value(integer, value, error.out());
    return errorCodeOf(error.get());
}

int getFloat(ArvGc* genicam, const char* name, double* value)
{
    if (!value)
        return XQ_ERR_INVALID_PARAMETER;
    ArvGcFeatureNode* node = nullptr;
    if (const int code = prepare(genicam, name, isFloat, Use::Read, &node); code != XQ_OK)
        return code;
    GErrorSlot error;
    const double read = arv_gc_float_get_value(ARV_GC_FLOAT(node), error.out());
    if (error)
        return errorCodeOf(error.get());
    *value = read;
    return XQ_OK;
}

int setFloat(ArvGc* genicam, const char* name, double value)
{
    if (!std::isfinite(value))
        return XQ_ERR_INVALID_PARAMETER;
    ArvGcFeatureNode* node = nullptr;
    if (const int code = prepare(genicam, name, isFloat, Use::Write, &node); code != XQ_OK)
        return code;
    GErrorSlot error;
    auto* number = ARV_GC_FLOAT(node);
    const double minimum = arv_gc_float_get_min(number, error.out());
    const double maximum = error ? G_MAXDOUBLE : arv_gc_float_get_max(number, error.out());
    if (!error && (value < minimum || value > maximum))
        return XQ_ERR_INVALID_PARAMETER;
    arv_gc_float_set_value(number, value, error.out());
    return errorCodeOf(error.get());
}

int getBoolean(ArvGc* genicam, const char* name, bool* value)
{
    if (!value)
        return XQ_ERR_INVALID_PARAMETER;
    ArvGcFeatureNode* node = nullptr;
    if (const int code = prepare(genicam, name, [](ArvGcNode* n) { return ARV_IS_GC_BOOLEAN(n); }, Use::Read, &node);
        code != XQ_OK)
        return code;
    GErrorSlot error;
    const gboolean read = arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), error.out());
    if (error)
        return errorCodeOf(error.get());
    *value = read != FALSE;
    return XQ_OK;
}

int setBoolean(ArvGc* genicam, const char* name, bool value)
{
    ArvGcFeatureNode* node = nullptr;
    if (const int code = prepare(genicam, name, [](ArvGcNode* n) { return ARV_IS_GC_BOOLEAN(n); }, Use::Write, &node);
        code != XQ_OK)
        return code;
    GErrorSlot error;
    arv_gc_boolean_set_value(ARV_GC_BOOLEAN(node), value ? TRUE : FALSE, error.out());
    return errorCodeOf(error.get());
}

int getString(ArvGc* genicam, const char* name, std::string* value, std::int64_t* maxLength)
{
    if (!value)
        return XQ_ERR_INVALID_PARAMETER;
    ArvGcFeatureNode* node = nullptr;
    if (const int code = prepare(genicam, name, isString, Use::Read, &node); code != XQ_OK)
        return code;
    GErrorSlot error;
    const char* read = arv_gc_string_get_value(ARV_GC_STRING(node), error.out());
    if (error)
        return errorCodeOf(error.get());
    *value = read ? read : "";
    if (maxLength) {
        const gint64 longest = arv_gc_string_get_max_length(ARV_GC_STRING(node), error.out());
        *maxLength = error ? 0 : longest;
    }
    return XQ_OK;
}

int setString(ArvGc* genicam, const char* name, const char* value)
{
    if (!value)
        return XQ_ERR_INVALID_PARAMETER;
    ArvGcFeatureNode* node = nullptr;
    if (const int code = prepare(genicam, name, isString, Use::Write, &node); code != XQ_OK)
        return code;
    GErrorSlot error;
    const gint64 longest = arv_gc_string_get_max_length(ARV_GC_STRING(node), error.out());
    if (!error && longest > 0 && static_cast<gint64>(std::char_traits<char>::length(value)) > longest)
        return XQ_ERR_INVALID_PARAMETER;
    arv_gc_string_set_value(ARV_GC_STRING(node), value, error.out());
    return errorCodeOf(error.get());
}

int getEnumeration(ArvGc* genicam, const char* name, XQ_ENUMVALUE* value)
{
    if (!value)
        return XQ_ERR_INVALID_PARAMETER;
    ArvGcFeatureNode* node = nullptr;
    if (const int code = prepare(genicam, name, isEnumeration, Use::Read, &node); code != XQ_OK)
        return code;
    auto* enumeration = ARV_GC_ENUMERATION(node);
    GErrorSlot error;
    const gint64 current = arv_gc_enumeration_get_int_value(enumeration, error.out());
    if (error)
        return errorCodeOf(error.get());
    guint count = 0;
    const std::unique_ptr<gint64, GFreeDeleter> available(
        arv_gc_enumeration_dup_available_int_values(enumeration, &count, error.out()));
    if (error)
        return errorCodeOf(error.get());
    *value = XQ_ENUMVALUE{};
    value->nCurrentValue = static_cast<unsigned int>(current);
    const guint kept = count < XQ_MAX_ENUM_SUPPORTED_NUM ? count : XQ_MAX_ENUM_SUPPORTED_NUM;
    for (guint i = 0; i < kept; ++i)
        value->nSupportedValues[i] = static_cast<unsigned int>(available.get()[i]);
    value->nSupportedCount = kept;
    return XQ_OK;
}

namespace {

// The available entry of an enumeration whose value or name matches.
template <class Matches>
ArvGcEnumEntry* availableEntry(ArvGcEnumeration* enumeration, Matches matches)
{
    for (const GSList* item = arv_gc_enumeration_get_entries(enumeration); item; item = item->next) {
        if (!ARV_IS_GC_ENUM_ENTRY(item->data))
            continue;
        auto* entry = ARV_GC_ENUM_ENTRY(item->data);
        auto* feature = ARV_GC_FEATURE_NODE(entry);
        GErrorSlot error;
        if (!matches(entry))
            continue;
        const bool usable = arv_gc_feature_node_is_implemented(feature, error.out()) && !error
            && arv_gc_feature_node_is_available(feature, error.out()) && !error;
        if (usable)
            return entry;
    }
    return nullptr;
}

bool entryHasValue(ArvGcEnumEntry* entry, std::int64_t value)
{
    GErrorSlot error;
    const gint64 entryValue = arv_gc_enum_entry_get_value(entry, error.out());
    return !error && entryValue == value;
}

} // namespace

int setEnumerationValue(ArvGc* genicam, const char* name, std::int64_t value)
{
    ArvGcFeatureNode* node = nullptr;
    if (const int code = prepare(genicam, name, isEnumeration, Use::Write, &node); code != XQ_OK)
        return code;
    auto* enumeration = ARV_GC_ENUMERATION(node);
    if (!availableEntry(enumeration, [value](ArvGcEnumEntry* entry) { return entryHasValue(entry, value); }))
        return XQ_ERR_INVALID_PARAMETER;
    GErrorSlot error;
    arv_gc_enumeration_set_int_value(enumeration, value, error.out());
    return errorCodeOf(error.get());
}

int setEnumerationSymbol(ArvGc* genicam, const char* name, const char* symbol)
{
    if (!symbol)
        return XQ_ERR_INVALID_PARAMETER;
    ArvGcFeatureNode* node = nullptr;
    if (const int code = prepare(genicam, name, isEnumeration, Use::Write, &node); code != XQ_OK)
        return code;
    auto* enumeration = ARV_GC_ENUMERATION(node);
    const std::string wanted = symbol;
    ArvGcEnumEntry* entry = availableEntry(enumeration, [&wanted](ArvGcEnumEntry* candidate) {
        const char* entryName = arv_gc_feature_node_get_name(ARV_GC_FEATURE_NODE(candidate));
        return entryName && wanted == entryName;
    });
    if (!entry)
        return XQ_ERR_INVALID_PARAMETER;
    GErrorSlot error;
    const gint64 value = arv_gc_enum_entry_get_value(entry, error.out());
    if (error)
        return errorCodeOf(error.get());
    arv_gc_enumeration_set_int_value(enumeration, value, error.out());
    return errorCodeOf(error.get());
}

int enumerationSymbolOf(ArvGc* genicam, const char* name, std::int64_t value, std::string* symbol)
{
    if (!symbol)
        return XQ_ERR_INVALID_PARAMETER;
    ArvGcFeatureNode* node = nullptr;
    if (const int code = find(genicam, name, &node); code != XQ_OK)
        return code;
    if (!isEnumeration(ARV_GC_NODE(node)))
        return XQ_ERR_GENICAM;
    for (const GSList* item = arv_gc_enumeration_get_entries(ARV_GC_ENUMERATION(node)); item; item = item->next) {
        if (ARV_IS_GC_ENUM_ENTRY(item->data) && entryHasValue(ARV_GC_ENUM_ENTRY(item->data), value)) {
            const char* entryName = arv_gc_feature_node_get_name(ARV_GC_FEATURE_NODE(item->data));
            *symbol = entryName ? entryName : "";
            return XQ_OK;
        }
    }
    return XQ_ERR_INVALID_PARAMETER;
}

int executeCommand(ArvGc* genicam, const char* name)
{
    ArvGcFeatureNode* node = nullptr;
    if (const int code = prepare(genicam, name, [](ArvGcNode* n) { return ARV_IS_GC_COMMAND(n); }, Use::Write, &node);
        code != XQ_OK)
        return code;
    GErrorSlot error;
    arv_gc_command_execute(ARV_GC_COMMAND(node), error.out());
    return errorCodeOf(error.get());
}

} // namespace xq::features
