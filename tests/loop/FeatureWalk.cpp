#include "FeatureWalk.h"

#include "FeatureRules.h"
#include "IgnoreList.h"

#include <cstring>
#include <memory>

namespace {

constexpr int kMaxDepth = 64;

QString ValueText(XQ_HANDLE hCamera, const QByteArray& name, unsigned int type, bool* ok)
{
    int result = XQ_OK;
    QString text;
    switch (type) {
    case XQ_IFT_IINTEGER: {
        int64_t value = 0;
        result = XQ_CC_GetIntValue(hCamera, name.constData(), &value);
        text = QStringLiteral("int %1").arg(value);
        break;
    }
    case XQ_IFT_IBOOLEAN: {
        bool value = false;
        result = XQ_CC_GetBoolValue(hCamera, name.constData(), &value);
        text = QStringLiteral("bool %1").arg(value ? 1 : 0);
        break;
    }
    case XQ_IFT_IFLOAT: {
        double value = 0.0;
        result = XQ_CC_GetFloatValue(hCamera, name.constData(), &value);
        text = QStringLiteral("float %1").arg(value, 0, 'g', 17);
        break;
    }
    case XQ_IFT_ISTRING: {
        XQ_CC_STRINGVALUE value{};
        result = XQ_CC_GetStringValue(hCamera, name.constData(), &value);
        text = QStringLiteral("string \"%1\" max %2")
                   .arg(QString::fromUtf8(value.chValue, static_cast<int>(strnlen(value.chValue, sizeof value.chValue))))
                   .arg(value.nMaxLength);
        break;
    }
    case XQ_IFT_IENUMERATION: {
        XQ_ENUMVALUE value{};
        result = XQ_CC_GetEnumValue(hCamera, name.constData(), &value);
        QStringList entries;
        for (unsigned int i = 0; i < value.nSupportedCount && i < XQ_MAX_ENUM_SUPPORTED_NUM; ++i)
            entries << QString::number(value.nSupportedValues[i]);
        text = QStringLiteral("enum %1 of [%2]").arg(value.nCurrentValue).arg(entries.join(','));
        break;
    }
    default:
        *ok = false;
        return {};
    }
    *ok = result == XQ_OK;
    return text;
}

void Walk(XQ_HANDLE hCamera, const XQ_XML_NODE_FEATURE& node, const QSet<QString>& ignore, FeatureWalk* walk, int depth)
{
    const QByteArray name(node.chName, static_cast<int>(strnlen(node.chName, sizeof node.chName)));
    const QString text = QString::fromUtf8(name);
    if (collect::matchingIgnorePattern(text, ignore) == nullptr) {
        unsigned int accessMode = XQ_AM_NI;
        XQ_XML_GetNodeAccessMode(hCamera, name.constData(), &accessMode);
        if (!collect::isSkippedAccessMode(accessMode) && collect::isReadVisibility(node.nVisibility)
            && collect::isValueInterfaceType(node.nInterfaceType)) {
            bool ok = false;
            const QString value = ValueText(hCamera, name, node.nInterfaceType, &ok);
            if (ok)
                walk->values.insert(text, value);
            else
                walk->failedReads << text;
        }
    }
    const auto children = std::make_unique<XQ_XML_NODES_LIST>();
    if (depth >= kMaxDepth || XQ_XML_GetChildren(hCamera, &node, children.get()) != XQ_OK)
        return;
    for (unsigned int i = 0; i < children->nNodeNum && i < XQ_MAX_XML_NODE_NUM; ++i)
        Walk(hCamera, children->stNodes[i], ignore, walk, depth + 1);
}

} // namespace

bool WalkFeatureTree(XQ_HANDLE hCamera, const QSet<QString>& ignorePatterns, FeatureWalk* walk, QString* error)
{
    XQ_XML_NODE_FEATURE root{};
    const int result = XQ_XML_GetRootNode(hCamera, &root);
    if (result != XQ_OK) {
        *error = QStringLiteral("XQ_XML_GetRootNode failed: %1").arg(result, 0, 16);
        return false;
    }
    Walk(hCamera, root, ignorePatterns, walk, 0);
    return true;
}

XQ_HANDLE OpenCameraBySerial(const QString& serial, QString* error)
{
    const auto list = std::make_unique<XQ_CC_DEVICE_INFO_LIST>();
    int result = XQ_CC_EnumDevices(list.get(), XQ_TLAYER_GIGE);
    if (result != XQ_OK) {
        *error = QStringLiteral("XQ_CC_EnumDevices failed: %1").arg(result, 0, 16);
        return nullptr;
    }
    for (unsigned int i = 0; i < list->nDeviceNum && i < XQ_MAX_DEVICE_NUM; ++i) {
        const XQ_CC_DEVICE_INFO* record = list->pDeviceInfo[i];
        const auto* field = reinterpret_cast<const char*>(record->stGigE.chSerialNumber);
        if (QString::fromUtf8(field, static_cast<int>(strnlen(field, sizeof record->stGigE.chSerialNumber))) != serial)
            continue;
        XQ_HANDLE handle = nullptr;
        result = XQ_CC_CreateHandle(&handle, record);
        if (result != XQ_OK) {
            *error = QStringLiteral("XQ_CC_CreateHandle failed: %1").arg(result, 0, 16);
            return nullptr;
        }
        result = XQ_CC_OpenDevice(handle, XQ_ACCESS_EXCLUSIVE, 0);
        if (result != XQ_OK) {
            XQ_CC_DestroyHandle(handle);
            *error = QStringLiteral("XQ_CC_OpenDevice failed: %1").arg(result, 0, 16);
            return nullptr;
        }
        return handle;
    }
    *error = QStringLiteral("the camera SDK lists no device with serial number %1").arg(serial);
    return nullptr;
}

QStringList CompareWalks(const FeatureWalk& expected, const FeatureWalk& actual, const QSet<QString>& skipped)
{
    QStringList differences;
    QSet<QString> names;
    for (auto it = expected.values.cbegin(); it != expected.values.cend(); ++it)
        names.insert(it.key());
    for (auto it = actual.values.cbegin(); it != actual.values.cend(); ++it)
        names.insert(it.key());
    QStringList sorted = names.values();
    sorted.sort();
    for (const QString& name : sorted) {
        if (skipped.contains(name))
            continue;
        const QString want = expected.values.value(name, QStringLiteral("(not read)"));
        const QString have = actual.values.value(name, QStringLiteral("(not read)"));
        if (want != have)
            differences << QStringLiteral("%1: %2 != %3").arg(name, want, have);
    }
    return differences;
}
