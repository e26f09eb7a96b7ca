// The demo reader measured through the camera SDK, apart from the job:
// walks by the job's rules, round trips and the device's own read counter.
#include "DeviceFigures.h"

#include "FeatureRules.h"
#include "IgnoreList.h"
#include "NodeListPool.h"

#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <algorithm>
#include <vector>

bool InPrivateNamespace()
{
    QFile devices(QStringLiteral("/proc/net/dev"));
    if (!devices.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    const QStringList lines = QString::fromLatin1(devices.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString& line : lines.mid(2)) {
        if (line.section(QLatin1Char(':'), 0, 0).trimmed() != QLatin1String("lo"))
            return false;
    }
    return true;
}

// The reader to collect and its sibling, the first two listed.
bool FindReaders(XQ_CODEREADER_DEVICE_INFO* reader, XQ_CODEREADER_DEVICE_INFO* sibling)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 30000) {
        auto list = std::make_unique<XQ_CODEREADER_DEVICE_INFO_LIST>();
        if (XQ_CODEREADER_EnumDevices(list.get(), XQ_TLAYER_GIGE) == XQ_OK && list->nDeviceNum > 1
            && list->pDeviceInfo[0] != nullptr && list->pDeviceInfo[1] != nullptr) {
            *reader = *list->pDeviceInfo[0];
            *sibling = *list->pDeviceInfo[1];
            return true;
        }
        QThread::msleep(200);
    }
    return false;
}


namespace {

double MsSince(const QElapsedTimer& clock)
{
    return clock.nsecsElapsed() / 1e6;
}

// One walk by the job's rules (ignore list, access mode, visibility, type),
// reading every qualifying node once, with a node list per node as the job
// takes it.
void Walk(XQ_HANDLE camera, const XQ_XML_NODE_FEATURE& node, const QSet<QString>& ignore, int depth,
          collect::NodeListPool& lists, WalkFigures* figures)
{
    const QString name = QString::fromUtf8(node.chName);
    if (collect::matchingIgnorePattern(name, ignore) == nullptr) {
        QElapsedTimer clock;
        clock.start();
        unsigned int access = XQ_AM_NI;
        XQ_XML_GetNodeAccessMode(camera, node.chName, &access);
        figures->accessModeMs += MsSince(clock);
        if (!collect::isSkippedAccessMode(access) && collect::isReadVisibility(node.nVisibility)
            && collect::isValueInterfaceType(node.nInterfaceType)) {
            ++figures->reads;
            clock.restart();
            switch (node.nInterfaceType) {
            case XQ_IFT_IINTEGER: { int64_t v = 0; XQ_CC_GetIntValue(camera, node.chName, &v); break; }
            case XQ_IFT_IBOOLEAN: { bool v = false; XQ_CC_GetBoolValue(camera, node.chName, &v); break; }
            case XQ_IFT_IFLOAT: { double v = 0; XQ_CC_GetFloatValue(camera, node.chName, &v); break; }
            case XQ_IFT_ISTRING: { XQ_CC_STRINGVALUE v{}; XQ_CC_GetStringValue(camera, node.chName, &v); break; }
            default: { XQ_ENUMVALUE v{}; XQ_CC_GetEnumValue(camera, node.chName, &v); break; }
            }
            figures->valueReadMs += MsSince(clock);
        }
    }
    const collect::NodeListPool::Lease children = lists.take();
    QElapsedTimer clock;
    clock.start();
    const bool listed = XQ_XML_GetChildren(camera, &node, children.get()) == XQ_OK;
    figures->childrenMs += MsSince(clock);
    if (listed && depth < 64) {
        for (unsigned int i = 0; i < children->nNodeNum && i < XQ_MAX_XML_NODE_NUM; ++i)
            Walk(camera, children->stNodes[i], ignore, depth + 1, lists, figures);
    }
}

// One walk with its wire reads counted; the counter counts its own reads too.
void CountedWalk(XQ_HANDLE camera, const XQ_XML_NODE_FEATURE& root, const QSet<QString>& ignore, WalkFigures* walk)
{
    int64_t before = 0;
    const bool counted = XQ_CC_GetIntValue(camera, "StatRegisterReads", &before) == XQ_OK;
    QElapsedTimer clock;
    clock.start();
    collect::NodeListPool lists;
    Walk(camera, root, ignore, 0, lists, walk);
    walk->walkMs = MsSince(clock);
    int64_t after = 0;
    if (counted && XQ_CC_GetIntValue(camera, "StatRegisterReads", &after) == XQ_OK)
        walk->wireReads = after - before - 1;
}

} // namespace

QByteArray SerialOf(const XQ_CODEREADER_DEVICE_INFO& reader)
{
    const auto* serial = reinterpret_cast<const char*>(reader.stGigE.chSerialNumber);
    return QByteArray(serial, int(strnlen(serial, sizeof reader.stGigE.chSerialNumber)));
}

// A handle on the camera with this serial number, opened exclusively, or
// nullptr. Destroying the handle closes it.
XQ_HANDLE OpenCamera(const QByteArray& serial)
{
    auto list = std::make_unique<XQ_CC_DEVICE_INFO_LIST>();
    if (XQ_CC_EnumDevices(list.get(), XQ_TLAYER_GIGE) != XQ_OK)
        return nullptr;
    for (unsigned int i = 0; i < list->nDeviceNum && i < XQ_MAX_DEVICE_NUM; ++i) {
        const XQ_CC_DEVICE_INFO* device = list->pDeviceInfo[i];
        const auto* listed = reinterpret_cast<const char*>(device->stGigE.chSerialNumber);
        if (serial != QByteArray(listed, int(strnlen(listed, sizeof device->stGigE.chSerialNumber))))
            continue;
        XQ_HANDLE camera = nullptr;
        if (XQ_CC_CreateHandle(&camera, device) != XQ_OK)
            return nullptr;
        if (XQ_CC_OpenDevice(camera, XQ_ACCESS_EXCLUSIVE, 0) != XQ_OK) {
            XQ_CC_DestroyHandle(camera);
            return nullptr;
        }
        return camera;
    }
    return nullptr;
}

// The same device through the camera SDK, after the job: walks in the state
// the job left (every boolean flipped, the last entries chosen) and one in
// the default state.
bool MeasureDevice(const QByteArray& serial, const QSet<QString>& ignore, WalkFigures* lastState,
                   WalkFigures* defaultState)
{
    XQ_HANDLE camera = OpenCamera(serial);
    if (!camera)
        return false;
    XQ_XML_NODE_FEATURE root{};
    const bool ok = XQ_XML_GetRootNode(camera, &root) == XQ_OK;
    if (ok) {
        // The first walk of a session also learns the description's shapes:
        // keep the median of several.
        std::vector<WalkFigures> walks(kMeasuredWalks);
        for (WalkFigures& walk : walks)
            CountedWalk(camera, root, ignore, &walk);
        std::sort(walks.begin(), walks.end(),
                  [](const WalkFigures& a, const WalkFigures& b) { return a.walkMs < b.walkMs; });
        *lastState = walks[walks.size() / 2];
        XQ_CC_SetEnumValueByString(camera, "UserSetSelector", "Default");
        XQ_CC_SetCommandValue(camera, "UserSetLoad");
        CountedWalk(camera, root, ignore, defaultState);
    }
    XQ_CC_DestroyHandle(camera);
    return ok;
}


// Samples the device through a session of its own, then restores its
// factory settings. Every sample costs the same read commands, so they
// cancel between two samples' counts.
DeviceSample SampleDevice(const QByteArray& serial)
{
    DeviceSample sample;
    XQ_HANDLE camera = OpenCamera(serial);
    if (!camera)
        return sample;
    int64_t count = -1;
    int64_t value = 0;
    bool ok = XQ_CC_GetIntValue(camera, "StatRegisterReads", &count) == XQ_OK
        && XQ_CC_GetIntValue(camera, "Width", &value) == XQ_OK;
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; ok && i < kRoundTripReads; ++i)
        ok = XQ_CC_GetIntValue(camera, "Width", &value) == XQ_OK;
    if (ok) {
        sample.roundTripMs = clock.nsecsElapsed() / 1e6 / kRoundTripReads;
        sample.readCommands = count;
    }
    // A job leaves every boolean flipped and the last entry of every
    // enumeration chosen, acquisition mode included: the next job would see
    // its images stop after one frame. Start each from the factory settings.
    XQ_CC_SetEnumValueByString(camera, "UserSetSelector", "Default");
    XQ_CC_SetCommandValue(camera, "UserSetLoad");
    XQ_CC_DestroyHandle(camera);
    return sample;
}
