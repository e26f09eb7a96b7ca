// The second half of a job: the feature tree read through the camera SDK in
// every state its booleans and enumerations give, so that the SDK's register
// dumps hold every answer a virtual camera needs.

#include "QCollectInfoThread.h"

#include "CodeReaderStrings.h"
#include "CollectPaths.h"
#include "CollectProgress.h"
#include "FeatureRules.h"
#include "IgnoreList.h"
#include "NodeListPool.h"
#include "QCollectInfoThread_p.h"

#include <QFile>

#include <algorithm>
#include <cstdio>
#include <cstring>

using namespace collect::job;

namespace {

constexpr unsigned int kGvcpTimeoutMs = 5000;
constexpr unsigned int kEnumerationMask = XQ_TLAYER_GIGE | XQ_TLAYER_USB;
constexpr int kMaxTreeDepth = 64;

} // namespace

void QCollectInfoThread::CollectNodeInfo()
{
    QByteArray modelBuffer;
    if (!openCamera(modelBuffer))
        return;
    const XQ_HANDLE camera = m_hCamera.load();
    XQ_XML_NODE_FEATURE root{};
    if (!saveFeatureDescription(camera) || !prepareFeatureWalks(camera, root))
        return;

    // The recording walk finds the booleans and enumerations; every later
    // walk reads the tree in one more state of them.
    m_bRecordNodes = true;
    TraverseNode(camera, root);
    m_bRecordNodes = false;
    emit SigDeviceCollectProgress(m_strSerialNumber, collect::kProgressAfterRecording);
    if (!walkBooleans(camera, root) || !walkEnumerations(camera, root))
        return;
    emit SigDeviceCollectProgress(m_strSerialNumber, collect::kProgressAfterPasses);

    if (modelBuffer.contains(collect::kCodeReaderMarker) && !m_bStop)
        collect::readCodeReaderStrings(camera);

    // Closing the camera makes its SDK write the register dumps; a walk cut
    // short by a stop or a lost device must not become the collection. The
    // flag is read first: closing ends the link, which may itself be
    // reported as a loss.
    const bool stopped = m_bStop;
    const int closeRet = releaseDevicesClosing();
    if (stopped) {
        failJob(COLLECT_JOB_SITE, kCollectFailed, QStringLiteral("stopped or device lost"), Handles::Keep);
        return;
    }
    if (closeRet != XQ_OK) {
        failJob(COLLECT_JOB_SITE, kCollectFailed, QStringLiteral("register dumps not written: ") + hexCode(closeRet),
                Handles::Keep);
        return;
    }
    COLLECT_JOB_LOG() << QStringLiteral("collect ") + QString::fromUtf8(modelBuffer) + QStringLiteral(" successs\n");
    if (!replaceCollection())
        return;
    emit SigDeviceCollectProgress(m_strSerialNumber, collect::kProgressDone);
    emit SigDeviceCollectFinish(m_strSerialNumber, QStringLiteral("Collect Finished"));
}

// Some failures here end the job silently: the camera SDK lists no device,
// or not the job's record.
bool QCollectInfoThread::openCamera(QByteArray& modelBuffer)
{
    XQ_CC_DEVICE_INFO_LIST devices{};
    if (XQ_CC_EnumDevices(&devices, kEnumerationMask) != XQ_OK)
        return false;
    const unsigned int deviceCount = std::min<unsigned int>(devices.nDeviceNum, XQ_MAX_DEVICE_NUM);
    if (deviceCount == 0) {
        COLLECT_JOB_LOG() << "Find No Devices!\n";
        return false;
    }

    // The last device with the job's serial number wins; none means device 0.
    unsigned int selected = 0;
    for (unsigned int i = 0; i < deviceCount; ++i) {
        const XQ_CC_DEVICE_INFO* const device = devices.pDeviceInfo[i];
        if (device != nullptr && fieldText(device->stGigE.chSerialNumber) == m_strSerialNumber)
            selected = i;
    }
    const XQ_CC_DEVICE_INFO* const device = devices.pDeviceInfo[selected];
    if (device == nullptr)
        return false;

    // The description and the dumps are named after this record's model
    // name: it must be the very name the job's folder has.
    const QString recordModel = collect::modelNameOfField(device->stGigE.chModelName, sizeof device->stGigE.chModelName);
    if (recordModel.isEmpty() || recordModel != m_modelName)
        return failJob(COLLECT_JOB_SITE, kInvalidModelName, {}, Handles::Keep);

    XQ_HANDLE camera = nullptr;
    if (XQ_CC_CreateHandle(&camera, device) != XQ_OK)
        return failJob(COLLECT_JOB_SITE, kCreateHandleFail, {}, Handles::Keep);
    m_hCamera = camera;
    // The dumps are written on close, into the job's own folder.
    const int dumpFolderRet = XQ_CC_SetRegisterDumpFolder(camera, QFile::encodeName(m_strFolderPath).constData());
    if (dumpFolderRet != XQ_OK)
        return failJob(COLLECT_JOB_SITE, kCollectFailed,
                       QStringLiteral("register dump folder refused: ") + hexCode(dumpFolderRet), Handles::Release);

    // Only a GigE record's model name is taken; any other leaves it empty.
    if (device->nTLayerType == XQ_TLAYER_GIGE) {
        const auto* const model = reinterpret_cast<const char*>(device->stGigE.chModelName);
        const std::size_t modelLength = strnlen(model, sizeof device->stGigE.chModelName);
        std::printf(" nRet [%.*s]\n", static_cast<int>(modelLength), model);
        modelBuffer = QByteArray(model, static_cast<int>(modelLength));
        std::printf(" nRet [%s]\n", modelBuffer.constData());
    }

    if (XQ_CC_OpenDevice(camera, XQ_ACCESS_EXCLUSIVE, 0) != XQ_OK)
        return failJob(COLLECT_JOB_SITE, kOpenDeviceFail, {}, Handles::Release);
    if (XQ_CC_RegisterExceptionCallBack(camera, &QCollectInfoThread::OnDeviceException, this) == XQ_OK)
        COLLECT_JOB_LOG() << "XQ_CC_RegisterExceptionCallBack";
    return true;
}

bool QCollectInfoThread::prepareFeatureWalks(XQ_HANDLE camera, XQ_XML_NODE_FEATURE& root)
{
    XQ_GIGE_SetGvcpTimeout(camera, kGvcpTimeoutMs);
    // A device without a default user set is still walked.
    if (XQ_CC_SetEnumValueByString(camera, "UserSetSelector", "Default") != XQ_OK)
        failJob(COLLECT_JOB_SITE, kSetUserSetSelectorFail, {}, Handles::Keep);
    if (XQ_CC_SetCommandValue(camera, "UserSetLoad") != XQ_OK)
        return failJob(COLLECT_JOB_SITE, kSetUserSetLoadFail, {}, Handles::Release);
    XQ_CC_SetEnumValueByString(camera, "PixelFormat", "RGB8Packed");
    XQ_CC_SetBoolValue(camera, "AcquisitionFrameRateEnable", true);

    if (XQ_XML_GetRootNode(camera, &root) != XQ_OK)
        return failJob(COLLECT_JOB_SITE, kGetRootNodeFail, {}, Handles::Release);
    return true;
}

bool QCollectInfoThread::walkBooleans(XQ_HANDLE camera, const XQ_XML_NODE_FEATURE& root)
{
    const int boolCount = m_vecBoolNodes.size();
    const int enumCount = m_vecEnumNodes.size();
    for (int i = 0; i < boolCount; ++i) {
        if (m_bStop)
            return failJob(COLLECT_JOB_SITE, kCollectFailed, {}, Handles::Release);
        // Flips are not undone: later walks see every earlier boolean flipped.
        const QByteArray name = m_vecBoolNodes.at(i).toUtf8();
        bool value = false;
        XQ_CC_GetBoolValue(camera, name.constData(), &value);
        XQ_CC_SetBoolValue(camera, name.constData(), !value);
        COLLECT_JOB_LOG() << QStringLiteral("boolIndex[%1], boolTotal[%2]").arg(i).arg(boolCount);
        TraverseNode(camera, root);
        emit SigDeviceCollectProgress(m_strSerialNumber, collect::boolPassProgress(i, boolCount, enumCount));
    }
    return true;
}

bool QCollectInfoThread::walkEnumerations(XQ_HANDLE camera, const XQ_XML_NODE_FEATURE& root)
{
    const int boolCount = m_vecBoolNodes.size();
    const int enumCount = m_vecEnumNodes.size();
    for (int j = 0; j < enumCount; ++j) {
        if (m_bStop)
            return failJob(COLLECT_JOB_SITE, kCollectFailed, {}, Handles::Release);
        const QByteArray name = m_vecEnumNodes.at(j).toUtf8();
        XQ_ENUMVALUE value{};
        if (XQ_CC_GetEnumValue(camera, name.constData(), &value) != XQ_OK)
            continue;
        // The current entry was covered by the earlier walks.
        const unsigned int supported = std::min<unsigned int>(value.nSupportedCount, XQ_MAX_ENUM_SUPPORTED_NUM);
        for (unsigned int k = 0; k < supported; ++k) {
            if (value.nSupportedValues[k] == value.nCurrentValue)
                continue;
            if (m_bStop)
                break; // reported at the next step
            COLLECT_JOB_LOG() << QStringLiteral("enumIndex[%1], enumTotal[%2], supportIndex[%3], supportTotal[%4]")
                                     .arg(j)
                                     .arg(enumCount)
                                     .arg(k)
                                     .arg(value.nSupportedCount);
            XQ_CC_SetEnumValue(camera, name.constData(), value.nSupportedValues[k]);
            TraverseNode(camera, root);
        }
        emit SigDeviceCollectProgress(m_strSerialNumber, collect::enumPassProgress(j, boolCount, enumCount));
    }
    return true;
}

// Pre-order, depth first. The depth bound keeps a description whose
// categories contain each other from recursing without end.
void QCollectInfoThread::TraverseNode(XQ_HANDLE hCamera, const XQ_XML_NODE_FEATURE& stNode)
{
    collect::NodeListPool lists;
    traverseNodeAt(hCamera, stNode, 0, lists);
}

void QCollectInfoThread::traverseNodeAt(XQ_HANDLE camera, const XQ_XML_NODE_FEATURE& node, int depth,
                                        collect::NodeListPool& lists)
{
    if (m_bStop)
        return; // the next step reports it
    // Room for 256 records is too much for the stack of a deep walk.
    const collect::NodeListPool::Lease children = lists.take();
    if (!children)
        return;
    ReadNode(camera, &node);
    const int ret = XQ_XML_GetChildren(camera, &node, children.get());
    if (ret != XQ_OK) {
        std::printf("XQ_XML_GetChildren fail nRet = [%x]\n", static_cast<unsigned int>(ret));
        return;
    }
    if (depth >= kMaxTreeDepth)
        return;
    const unsigned int childCount = std::min<unsigned int>(children->nNodeNum, XQ_MAX_XML_NODE_NUM);
    for (unsigned int i = 0; i < childCount; ++i)
        traverseNodeAt(camera, children->stNodes[i], depth + 1, lists);
}

void QCollectInfoThread::ReadNode(XQ_HANDLE hCamera, const XQ_XML_NODE_FEATURE* pstNode)
{
    const QByteArray name(pstNode->chName, static_cast<int>(strnlen(pstNode->chName, sizeof pstNode->chName)));
    const QString nodeName = QString::fromUtf8(name);
    if (collect::matchingIgnorePattern(nodeName, m_setIgnoreNodes) != nullptr) {
        COLLECT_JOB_LOG() << QStringLiteral("no collect ") + nodeName;
        return;
    }

    unsigned int accessMode = XQ_AM_NI;
    XQ_XML_GetNodeAccessMode(hCamera, name.constData(), &accessMode);
    if (collect::isSkippedAccessMode(accessMode) || !collect::isReadVisibility(pstNode->nVisibility))
        return;

    // Booleans and enumerations are recorded before the read, so one whose
    // read fails still takes part in the passes.
    int ret = XQ_OK;
    switch (pstNode->nInterfaceType) {
    case XQ_IFT_IINTEGER: {
        int64_t value = 0;
        ret = XQ_CC_GetIntValue(hCamera, name.constData(), &value);
        break;
    }
    case XQ_IFT_IBOOLEAN: {
        if (m_bRecordNodes)
            m_vecBoolNodes.append(nodeName);
        bool value = false;
        ret = XQ_CC_GetBoolValue(hCamera, name.constData(), &value);
        break;
    }
    case XQ_IFT_IFLOAT: {
        double value = 0.0;
        ret = XQ_CC_GetFloatValue(hCamera, name.constData(), &value);
        break;
    }
    case XQ_IFT_ISTRING: {
        XQ_CC_STRINGVALUE value{};
        ret = XQ_CC_GetStringValue(hCamera, name.constData(), &value);
        break;
    }
    case XQ_IFT_IENUMERATION: {
        if (m_bRecordNodes)
            m_vecEnumNodes.append(nodeName);
        XQ_ENUMVALUE value{};
        ret = XQ_CC_GetEnumValue(hCamera, name.constData(), &value);
        break;
    }
    default:
        return;
    }
    if (ret != XQ_OK)
        COLLECT_JOB_LOG() << QStringLiteral("-----------------------collect ") + nodeName
                + QStringLiteral("failed--------------------------------------");
}
