#include "SdkTestHelpers.h"

#include <optional>

#include <arv.h>

#include <cstring>
#include <functional>
#include <memory>

namespace xqtest {

std::string text(const unsigned char* field, std::size_t size)
{
    const auto* bytes = reinterpret_cast<const char*>(field);
    const void* nul = std::memchr(bytes, 0, size);
    return std::string(bytes, nul ? static_cast<const char*>(nul) - bytes : size);
}

std::map<std::string, NodeSummary> walkTree(XQ_HANDLE camera)
{
    std::map<std::string, NodeSummary> nodes;
    std::function<void(const XQ_XML_NODE_FEATURE&)> visit = [&](const XQ_XML_NODE_FEATURE& node) {
        NodeSummary& summary = nodes[node.chName];
        summary.type = node.nInterfaceType;
        summary.visibility = node.nVisibility;
        XQ_XML_GetNodeAccessMode(camera, node.chName, &summary.access);
        const auto children = std::make_unique<XQ_XML_NODES_LIST>();
        if (XQ_XML_GetChildren(camera, &node, children.get()) != XQ_OK) {
            summary.childrenFailed = true;
            return;
        }
        for (unsigned int i = 0; i < children->nNodeNum; ++i)
            visit(children->stNodes[i]);
    };
    XQ_XML_NODE_FEATURE root{};
    if (XQ_XML_GetRootNode(camera, &root) == XQ_OK)
        visit(root);
    return nodes;
}

namespace {

std::optional<AravisValue> readWithAravis(ArvGcNode* node)
{
    GError* error = nullptr;
    AravisValue read;
    if (ARV_IS_GC_ENUMERATION(node)) {
        read.value = arv_gc_enumeration_get_int_value(ARV_GC_ENUMERATION(node), &error);
        guint count = 0;
        gint64* entries = error ? nullptr : arv_gc_enumeration_dup_available_int_values(ARV_GC_ENUMERATION(node), &count, &error);
        if (entries)
            read.entries.assign(entries, entries + count);
        g_free(entries);
    } else if (ARV_IS_GC_BOOLEAN(node)) {
        read.value = arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), &error) ? 1 : 0;
    } else if (ARV_IS_GC_INTEGER(node)) {
        read.value = arv_gc_integer_get_value(ARV_GC_INTEGER(node), &error);
    } else if (ARV_IS_GC_FLOAT(node)) {
        read.number = arv_gc_float_get_value(ARV_GC_FLOAT(node), &error);
    } else if (ARV_IS_GC_STRING(node)) {
        // A failed read may leave Aravis's buffer unterminated: read it only on success.
        const char* text = arv_gc_string_get_value(ARV_GC_STRING(node), &error);
        if (!error)
            read.text = text ? text : "";
    } else {
        return std::nullopt;
    }
    if (error) {
        g_clear_error(&error);
        return std::nullopt;
    }
    return read;
}

// Opens the device at ip with a client of its own and calls visit(name,
// node) for each of the names the description has.
void visitWithAravis(const char* ip, const std::vector<std::string>& names,
                     const std::function<void(const std::string&, ArvGcNode*)>& visit)
{
    ArvDevice* device = arv_open_device(ip, nullptr);
    if (!device)
        return;
    ArvGc* genicam = arv_device_get_genicam(device);
    for (const auto& name : names) {
        if (ArvGcNode* node = arv_gc_get_node(genicam, name.c_str()))
            visit(name, node);
    }
    g_object_unref(device);
}

} // namespace

std::map<std::string, AravisValue> stableAravisValues(const char* ip, const std::vector<std::string>& names)
{
    std::map<std::string, AravisValue> values;
    visitWithAravis(ip, names, [&](const std::string& name, ArvGcNode* node) {
        const std::optional<AravisValue> first = readWithAravis(node);
        const std::optional<AravisValue> second = first ? readWithAravis(node) : std::nullopt;
        if (first && second && *first == *second)
            values[name] = *first;
    });
    return values;
}

std::map<std::string, unsigned int> aravisAccessModes(const char* ip, const std::vector<std::string>& names)
{
    std::map<std::string, unsigned int> modes;
    visitWithAravis(ip, names, [&](const std::string& name, ArvGcNode* node) {
        if (!ARV_IS_GC_FEATURE_NODE(node))
            return;
        auto* feature = ARV_GC_FEATURE_NODE(node);
        GError* error = nullptr;
        unsigned int mode = XQ_AM_UNDEFINED;
        if (!arv_gc_feature_node_is_implemented(feature, &error))
            mode = XQ_AM_NI;
        else if (!error && !arv_gc_feature_node_is_available(feature, &error))
            mode = XQ_AM_NA;
        else if (!error) {
            switch (arv_gc_feature_node_get_actual_access_mode(feature)) {
            case ARV_GC_ACCESS_MODE_RO: mode = XQ_AM_RO; break;
            case ARV_GC_ACCESS_MODE_WO: mode = XQ_AM_WO; break;
            case ARV_GC_ACCESS_MODE_RW: mode = arv_gc_feature_node_is_locked(feature, &error) ? XQ_AM_RO : XQ_AM_RW; break;
            default: break;
            }
        }
        if (error) {
            g_clear_error(&error);
            mode = XQ_AM_UNDEFINED;
        }
        modes[name] = mode;
    });
    return modes;
}

} // namespace xqtest
