// Node tree of a camera session: root, children of categories, and the
// properties of single nodes.
#include "CameraSession.h"

#include "FeatureAccess.h"
#include "TextFields.h"

#include <algorithm>
#include <cstring>

namespace xq {
namespace {

constexpr char kRootName[] = "Root";
// nReserved slots of a node record that carry the session's node key.
constexpr int kKeySlot = 0;
constexpr int kStampSlot = 1;

const char* orEmpty(const char* text) { return text ? text : ""; }

} // namespace

void CameraSession::fillNode(ArvGcFeatureNode* source, XQ_XML_NODE_FEATURE* node)
{
    std::memset(node, 0, sizeof *node);
    const std::string name = orEmpty(arv_gc_feature_node_get_name(source));
    node->nInterfaceType = features::interfaceTypeOf(ARV_GC_NODE(source));
    node->nVisibility = features::visibilityOf(source);
    copyText(node->chName, name);
    const char* displayName = arv_gc_feature_node_get_display_name(source);
    copyText(node->chDisplayName, displayName ? displayName : name.c_str());
    copyText(node->chDescription, orEmpty(arv_gc_feature_node_get_description(source)));
    copyText(node->chToolTip, orEmpty(arv_gc_feature_node_get_tooltip(source)));

    // Names longer than the record's field are found again through this key.
    auto [entry, added] = m_nodeIndex.emplace(name, static_cast<std::uint32_t>(m_nodeNames.size()));
    if (added)
        m_nodeNames.push_back(name);
    node->nReserved[kKeySlot] = entry->second + 1;
    node->nReserved[kStampSlot] = m_stamp;
}

std::string CameraSession::nodeNameOf(const XQ_XML_NODE_FEATURE& node) const
{
    const std::string shown = boundedText(node.chName, sizeof node.chName);
    const std::uint32_t key = node.nReserved[kKeySlot];
    if (node.nReserved[kStampSlot] == m_stamp && key >= 1 && key <= m_nodeNames.size()) {
        const std::string& full = m_nodeNames[key - 1];
        if (full.compare(0, shown.size(), shown) == 0)
            return full;
    }
    return shown;
}

int CameraSession::rootNode(XQ_XML_NODE_FEATURE* node)
{
    if (!node)
        return XQ_ERR_INVALID_PARAMETER;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (const int code = usable(); code != XQ_OK)
        return code;
    ArvGcFeatureNode* root = nullptr;
    if (const int code = features::find(genicam(), kRootName, &root); code != XQ_OK)
        return code;
    fillNode(root, node);
    return XQ_OK;
}

int CameraSession::children(const XQ_XML_NODE_FEATURE* node, XQ_XML_NODES_LIST* list)
{
    if (!node || !list)
        return XQ_ERR_INVALID_PARAMETER;
    list->nNodeNum = 0;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (const int code = usable(); code != XQ_OK)
        return code;
    const std::string parentName = nodeNameOf(*node);
    auto known = m_children.find(parentName);
    if (known == m_children.end()) {
        ArvGcFeatureNode* parent = nullptr;
        if (const int code = features::find(genicam(), parentName.c_str(), &parent); code != XQ_OK)
            return code;
        known = m_children.emplace(parentName, listChildren(parent)).first;
    }
    const ChildRecords& children = known->second;
    if (!children.isCategory)
        return XQ_ERR_GENICAM;
    const std::size_t count = std::min<std::size_t>(children.records.size(), XQ_MAX_XML_NODE_NUM);
    std::copy_n(children.records.begin(), count, list->stNodes);
    list->nNodeNum = static_cast<unsigned int>(count);
    return children.records.size() > XQ_MAX_XML_NODE_NUM ? XQ_ERR_BUFFER_TOO_SMALL : XQ_OK;
}

CameraSession::ChildRecords CameraSession::listChildren(ArvGcFeatureNode* parent)
{
    ChildRecords children;
    children.isCategory = ARV_IS_GC_CATEGORY(parent);
    if (!children.isCategory)
        return children;
    // The category rebuilds its list on every call: copy the names first.
    std::vector<std::string> names;
    for (const GSList* item = arv_gc_category_get_features(ARV_GC_CATEGORY(parent)); item; item = item->next)
        names.emplace_back(orEmpty(static_cast<const char*>(item->data)));
    for (const auto& name : names) {
        ArvGcNode* child = arv_gc_get_node(genicam(), name.c_str());
        if (!child || !ARV_IS_GC_FEATURE_NODE(child))
            continue;
        fillNode(ARV_GC_FEATURE_NODE(child), &children.records.emplace_back());
    }
    return children;
}

int CameraSession::nodeFeature(const char* name, XQ_XML_NODE_FEATURE* node)
{
    return withFeatureNode(name, node,
                           [this](ArvGcFeatureNode* found, XQ_XML_NODE_FEATURE* out) { fillNode(found, out); });
}

int CameraSession::nodeAccessMode(const char* name, unsigned int* mode)
{
    if (!mode)
        return XQ_ERR_INVALID_PARAMETER;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (const int state = usable(); state != XQ_OK)
            return state;
        const FeatureShortcut* shortcut = name && *name ? shortcutOf(name) : nullptr;
        if (shortcut) {
            // As the node graph answers: an evaluation that fails gives an
            // undefined mode, not an error.
            bool available = true;
            if (shortcut->availability && evaluateAvailability(*shortcut->availability, &available) != XQ_OK)
                *mode = XQ_AM_UNDEFINED;
            else
                *mode = available ? shortcut->accessMode : XQ_AM_NA;
            return XQ_OK;
        }
    }
    return withFeatureNode(name, mode, [](ArvGcFeatureNode* found, unsigned int* out) {
        *out = features::accessModeOf(found);
    });
}

int CameraSession::nodeVisibility(const char* name, unsigned int* visibility)
{
    return withFeatureNode(name, visibility, [](ArvGcFeatureNode* found, unsigned int* out) {
        *out = features::visibilityOf(found);
    });
}

int CameraSession::nodeInterfaceType(const char* name, unsigned int* type)
{
    return withFeatureNode(name, type, [](ArvGcFeatureNode* found, unsigned int* out) {
        *out = features::interfaceTypeOf(ARV_GC_NODE(found));
    });
}

} // namespace xq
