#include "QCollectInfoThread.h"

#include "AppFolders.h"
#include "CaptureCsv.h"
#include "CheckedFile.h"
#include "CodeReaderStrings.h"
#include "CollectPaths.h"
#include "CollectProgress.h"
#include "FeatureRules.h"
#include "IgnoreList.h"
#include "NodeListPool.h"
#include "StagingFolder.h"
#include "Symbology.h"
#include "XQInterface.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

namespace {

constexpr char kCodec[] = "UTF-8";
constexpr int kTextFieldLength = 64;

constexpr unsigned int kGvcpTimeoutMs = 5000;
constexpr unsigned int kRunningModeCodeReading = 2;
constexpr unsigned int kTriggerSourceSoftware = 7;
constexpr qint64 kProgressTickMs = 1500;
constexpr unsigned int kFrameTimeoutMs = 1000;
constexpr unsigned int kEnumerationMask = XQ_TLAYER_GIGE | XQ_TLAYER_USB;
constexpr std::size_t kFeatureDescriptionBufferSize = 0x500000;
constexpr int kMaxTreeDepth = 64;

// Status texts, translated when emitted.
constexpr const char* kInvalidModelName = QT_TRANSLATE_NOOP("QCollectInfoThread", "Invalid device model name!");
constexpr const char* kCreateFileFailed = QT_TRANSLATE_NOOP("QCollectInfoThread", "Create File Failed!");
constexpr const char* kCreateHandleFailed = QT_TRANSLATE_NOOP("QCollectInfoThread", "Create Handle Failed!");
constexpr const char* kOpenCameraFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Open Camera Fail!");
constexpr const char* kSetRunningModeFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Set Running Mode fail!");
constexpr const char* kSetTriggerModeFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Set Trigger Mode fail!");
constexpr const char* kStartGrabbingFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Start Grabbing fail!");
constexpr const char* kOpenFileFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Open File fail!");
constexpr const char* kCollectFailed = QT_TRANSLATE_NOOP("QCollectInfoThread", "Collect Failed!");
constexpr const char* kStopGrabbingFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Stop Grabbing fail!");
constexpr const char* kNoImageCaptured = QT_TRANSLATE_NOOP("QCollectInfoThread", "No image was captured!");
constexpr const char* kCreateHandleFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Create Handle fail!");
constexpr const char* kOpenDeviceFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Open Device fail!");
constexpr const char* kGetXmlFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "GetGenI CamXML fail");
constexpr const char* kSetUserSetSelectorFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Set UserSetSelector fail!");
constexpr const char* kSetUserSetLoadFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Set UserSetLoad fail!");
constexpr const char* kGetRootNodeFail = QT_TRANSLATE_NOOP("QCollectInfoThread", "Get RootNode fail!");

// Jobs whose run() has not returned, in the whole process.
std::atomic<int> g_nRunningJobs{0};

struct RunningJobCounter final {
    RunningJobCounter() { ++g_nRunningJobs; }
    ~RunningJobCounter() { --g_nRunningJobs; }
    RunningJobCounter(const RunningJobCounter&) = delete;
    RunningJobCounter& operator=(const RunningJobCounter&) = delete;
};

template <std::size_t N>
QString FieldText(const unsigned char (&field)[N])
{
    return XQInterface::uchar2QString(field, static_cast<int>(std::min<std::size_t>(N, kTextFieldLength)), kCodec);
}

QString HexCode(int nRet)
{
    return QStringLiteral("%1").arg(static_cast<unsigned int>(nRet), 0, 16);
}

} // namespace

// ---- Lifecycle -------------------------------------------------------------

QCollectInfoThread::QCollectInfoThread(QObject* parent)
    : QThread(parent)
{
}

QCollectInfoThread::~QCollectInfoThread()
{
    // Stopping and releasing first makes a job that is still talking to the
    // device fail fast, so the wait below ends.
    RequestStop();
    ReleaseDevices();
    quit();
    wait();
}

void QCollectInfoThread::SetDeviceInfo(const _XQ_CODEREADER_DEVICE_INFO_& stDeviceInfo)
{
    m_stDeviceInfo = stDeviceInfo;
    m_strSerialNumber = FieldText(m_stDeviceInfo.stGigE.chSerialNumber);
}

void QCollectInfoThread::run()
{
    const RunningJobCounter counted;
    PraseJsonConfig();
    if (CollectImageInfo())
        CollectNodeInfo();
    // A job that did not replace the collection removes its own folder.
    m_pStagingFolder.reset();
}

int QCollectInfoThread::RunningJobCount()
{
    return g_nRunningJobs;
}

void QCollectInfoThread::RequestStop()
{
    m_bStop = true;
}

void QCollectInfoThread::ReleaseDevices()
{
    ReleaseDevicesClosing();
}

// Handles are not cleared: a second call repeats the calls on the stale
// values, which the SDKs refuse without harm.
int QCollectInfoThread::ReleaseDevicesClosing()
{
    const XQ_HANDLE hCodeReader = m_hCodeReader.load();
    if (hCodeReader != nullptr)
        XQ_CODEREADER_DestroyHandle(hCodeReader);
    const XQ_HANDLE hCamera = m_hCamera.load();
    int nCloseRet = XQ_OK;
    if (hCamera != nullptr) {
        // The code-reader SDK refuses the camera handle as foreign; the call
        // stays so the release order is the same in every tool of the suite.
        XQ_CODEREADER_StopGrabbing(hCamera);
        nCloseRet = XQ_CC_CloseDevice(hCamera);
        XQ_CC_DestroyHandle(hCamera);
    }
    return nCloseRet;
}

bool QCollectInfoThread::FailJob(const char* pSourceText, const QString& strReason, bool bRelease)
{
    qInfo().noquote() << pSourceText << strReason;
    EmitStatus(pSourceText);
    if (bRelease)
        ReleaseDevices();
    return false;
}

void QCollectInfoThread::OnDeviceException(unsigned int nMsgType, void* pUser)
{
    if (pUser == nullptr || nMsgType != XQ_EXCEPTION_DEVICE_LOST)
        return;
    auto* const pThread = static_cast<QCollectInfoThread*>(pUser);
    pThread->m_bStop = true;
    pThread->ReleaseDevices();
}

void QCollectInfoThread::EmitStatus(const char* pSourceText)
{
    emit SigDeviceCollectStatus(m_strSerialNumber, tr(pSourceText));
}

// ---- Ignore list -----------------------------------------------------------

void QCollectInfoThread::PraseJsonConfig()
{
    m_setIgnoreNodes.clear();
    QFile file(QString::fromLatin1(collect::kIgnoreListPath));
    const QString strFileName = QFileInfo(file).absoluteFilePath();
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qInfo().noquote() << QStringLiteral("can't open error! ") + strFileName + QStringLiteral(": ")
                + file.errorString();
        return;
    }
    QTextStream stream(&file);
    stream.setCodec(kCodec);
    const QString text = stream.readAll();
    file.close();

    const collect::IgnoreListContent content = collect::ParseIgnoreList(text.toUtf8());
    if (content.outcome == collect::IgnoreListContent::Outcome::NotJson) {
        qInfo().noquote() << QStringLiteral("Json parse error ") + strFileName + QStringLiteral(": ")
                + content.parseError;
        return;
    }
    for (const QString& skipped : content.skippedElements)
        qInfo().noquote() << QStringLiteral("IgnoreNodes ") + skipped + QStringLiteral(" in ") + strFileName
                + QStringLiteral(" is not a string; ignored");
    for (const QString& pattern : content.patterns) {
        qInfo().noquote() << QStringLiteral("node = ") + pattern;
        m_setIgnoreNodes.insert(pattern);
    }
}

// ---- Images and codes ------------------------------------------------------

bool QCollectInfoThread::CollectImageInfo()
{
    // One spelling everywhere: these bytes name the job's folder, its files
    // and the collection folder.
    const QString strModelName =
        collect::ModelNameOfField(m_stDeviceInfo.stGigE.chModelName, sizeof m_stDeviceInfo.stGigE.chModelName);
    if (strModelName.isEmpty()) {
        qInfo().noquote() << kInvalidModelName;
        EmitStatus(kInvalidModelName);
        return false;
    }
    m_strModelName = strModelName;

    const QString strRoot = GetVirtualCameraRoot();
    // The whole path: a per-user root may lie below folders not made yet.
    if (!QFileInfo(strRoot).isDir() && !QDir().mkpath(strRoot) && !QFileInfo(strRoot).isDir())
        return FailJob(kCreateFileFailed, QStringLiteral("cannot make ") + strRoot, false);
    for (const QString& strLeftover : collect::SweepAbandonedStagingFolders(strRoot))
        qInfo().noquote() << "removed the folder of an ended job:" << strLeftover;

    // The job writes into a folder of its own; the collection folder is
    // replaced by it only when everything has been written.
    QString strError;
    m_pStagingFolder = collect::StagingFolder::Create(strRoot, strModelName, &strError);
    if (!m_pStagingFolder)
        return FailJob(kCreateFileFailed, strError, false);
    m_strFolderPath = m_pStagingFolder->Path();
    m_strOutImageFile = collect::ImageFolderOf(m_strFolderPath);
    qInfo().noquote() << "m_strFolderPath" << strModelName;
    qInfo().noquote() << "bCreatePath" << strModelName;
    qInfo().noquote() << "m_strOutImageFile" << strModelName;
    if (!QDir().mkdir(m_strOutImageFile))
        return FailJob(kCreateFileFailed, QStringLiteral("cannot make ") + m_strOutImageFile, false);

    qInfo().noquote() << "XQ_CODEREADER_CreateHandle" << strModelName;
    XQ_HANDLE hCodeReader = nullptr;
    if (XQ_CODEREADER_CreateHandle(&hCodeReader, &m_stDeviceInfo) != XQ_OK) {
        qInfo().noquote() << kCreateHandleFailed;
        EmitStatus(kCreateHandleFailed);
        return false;
    }
    m_hCodeReader = hCodeReader;

    qInfo().noquote() << "XQ_CODEREADER_OpenDevice" << strModelName;
    const int nOpenRet = XQ_CODEREADER_OpenDevice(hCodeReader);
    if (nOpenRet != XQ_OK) {
        qInfo().noquote() << kOpenCameraFail << HexCode(nOpenRet);
        EmitStatus(kOpenCameraFail);
        ReleaseDevices();
        return false;
    }

    if (XQ_CODEREADER_RegisterExceptionCallBack(hCodeReader, &QCollectInfoThread::OnDeviceException, this) == XQ_OK)
        qInfo().noquote() << "RegisterExceptionCallBack";

    qInfo().noquote() << "VirtualCamera7" << strModelName;
    XQ_CODEREADER_GIGE_SetGvcpTimeout(hCodeReader, kGvcpTimeoutMs);
    if (XQ_CODEREADER_SetEnumValue(hCodeReader, "RunningMode", kRunningModeCodeReading) != XQ_OK) {
        qInfo().noquote() << kSetRunningModeFail;
        EmitStatus(kSetRunningModeFail);
        ReleaseDevices();
        return false;
    }

    qInfo().noquote() << "VirtualCamera8" << strModelName;
    if (XQ_CODEREADER_SetEnumValue(hCodeReader, "TriggerMode", 1) != XQ_OK) {
        qInfo().noquote() << kSetTriggerModeFail;
        EmitStatus(kSetTriggerModeFail);
        ReleaseDevices();
        return false;
    }

    qInfo().noquote() << "VirtualCamera9" << strModelName;
    if (XQ_CODEREADER_SetEnumValue(hCodeReader, "TriggerSource", kTriggerSourceSoftware) != XQ_OK)
        XQ_CODEREADER_SetEnumValue(hCodeReader, "TriggerMode", 0); // no software trigger: run freely

    if (XQ_CODEREADER_StartGrabbing(hCodeReader) != XQ_OK) {
        qInfo().noquote() << kStartGrabbingFail;
        EmitStatus(kStartGrabbingFail);
        ReleaseDevices();
        return false;
    }

    const auto pFrameInfo = std::make_unique<XQ_CODEREADER_FRAME_INFO>();
    collect::CheckedFile csv;
    if (!csv.Open(collect::CsvFileOf(m_strFolderPath)))
        return FailJob(kOpenFileFail, csv.Error(), true);
    if (!csv.Write(collect::kCsvHeader))
        return FailJob(kCollectFailed, csv.Error(), true);

    // Capture is bounded by time, not by a frame count: the first progress
    // tick ends it after one more trigger.
    QElapsedTimer stopwatch;
    stopwatch.start();
    quint32 nFrameNumber = 1;
    bool bImageWritten = false;
    bool bAborted = m_bStop;
    QString strWriteError;
    while (!bAborted && strWriteError.isEmpty()) {
        if (stopwatch.elapsed() >= kProgressTickMs) {
            stopwatch.restart();
            emit SigDeviceCollectProgress(m_strSerialNumber, m_nImageCount);
            ++m_nImageCount;
        }
        XQ_CODEREADER_SetCommandValue(hCodeReader, "TriggerSoftware");
        unsigned char* pImage = nullptr;
        if (XQ_CODEREADER_GetOneFrameTimeout(hCodeReader, &pImage, pFrameInfo.get(), kFrameTimeoutMs) == XQ_OK) {
            const QString strImageFile = collect::ImageFileOf(m_strOutImageFile, nFrameNumber);
            if (!collect::WriteWholeFile(strImageFile, pImage, pImage != nullptr ? pFrameInfo->nFrameLen : 0,
                                         &strWriteError))
                break;
            bImageWritten = true;
            const QByteArray row = collect::CsvRowOf(nFrameNumber, *pFrameInfo);
            for (unsigned int i = 0; i < pFrameInfo->nCodeNum; ++i) {
                const char* const pCode = pFrameInfo->stCodeInfo[i].chCode;
                std::printf("CodeNum[%u] Code[%.*s]\n", i,
                            static_cast<int>(strnlen(pCode, XQ_CODEREADER_CODE_TEXT_SIZE)), pCode);
            }
            if (!csv.Write(row.constData(), static_cast<std::size_t>(row.size()))) {
                strWriteError = csv.Error();
                break;
            }
            ++nFrameNumber;
        }
        if (m_nImageCount == 1)
            break;
        bAborted = m_bStop;
    }
    if (!strWriteError.isEmpty())
        return FailJob(kCollectFailed, strWriteError, true);
    if (bAborted)
        return FailJob(kCollectFailed, QStringLiteral("stopped"), true);

    if (XQ_CODEREADER_StopGrabbing(hCodeReader) != XQ_OK) {
        qInfo().noquote() << kStopGrabbingFail;
        EmitStatus(kStopGrabbingFail);
        ReleaseDevices();
        return false;
    }
    emit SigDeviceCollectProgress(m_strSerialNumber, collect::kProgressAfterImages);
    if (!csv.Close())
        return FailJob(kCollectFailed, csv.Error(), true);
    if (!bImageWritten) {
        qInfo().noquote() << kNoImageCaptured;
        EmitStatus(kNoImageCaptured);
        ReleaseDevices();
        return false;
    }
    ReleaseDevices();
    return true;
}

// ---- Feature tree ----------------------------------------------------------

void QCollectInfoThread::CollectNodeInfo()
{
    XQ_CC_DEVICE_INFO_LIST stDeviceList{};
    if (XQ_CC_EnumDevices(&stDeviceList, kEnumerationMask) != XQ_OK)
        return;
    const unsigned int nDeviceCount = std::min<unsigned int>(stDeviceList.nDeviceNum, XQ_MAX_DEVICE_NUM);
    if (nDeviceCount == 0) {
        qInfo().noquote() << "Find No Devices!\n";
        return;
    }

    // The last device with the job's serial number wins; none means device 0.
    unsigned int nSelected = 0;
    for (unsigned int i = 0; i < nDeviceCount; ++i) {
        const XQ_CC_DEVICE_INFO* const pDevice = stDeviceList.pDeviceInfo[i];
        if (pDevice != nullptr && FieldText(pDevice->stGigE.chSerialNumber) == m_strSerialNumber)
            nSelected = i;
    }
    const XQ_CC_DEVICE_INFO* const pDevice = stDeviceList.pDeviceInfo[nSelected];
    if (pDevice == nullptr)
        return;

    // The description and the dumps are named after this record's model
    // name: it must be the very name the job's folder has.
    const QString strRecordModel =
        collect::ModelNameOfField(pDevice->stGigE.chModelName, sizeof pDevice->stGigE.chModelName);
    if (strRecordModel.isEmpty() || strRecordModel != m_strModelName) {
        qInfo().noquote() << kInvalidModelName;
        EmitStatus(kInvalidModelName);
        return;
    }

    XQ_HANDLE hCamera = nullptr;
    if (XQ_CC_CreateHandle(&hCamera, pDevice) != XQ_OK) {
        qInfo().noquote() << kCreateHandleFail;
        EmitStatus(kCreateHandleFail);
        return;
    }
    m_hCamera = hCamera;
    // The dumps are written on close, into the job's own folder.
    const int nDumpFolderRet = XQ_CC_SetRegisterDumpFolder(hCamera, QFile::encodeName(m_strFolderPath).constData());
    if (nDumpFolderRet != XQ_OK) {
        FailJob(kCollectFailed, QStringLiteral("register dump folder refused: ") + HexCode(nDumpFolderRet), true);
        return;
    }

    std::array<char, 128> modelBuffer{};
    if (pDevice->nTLayerType == XQ_TLAYER_GIGE) {
        const auto* const pModel = reinterpret_cast<const char*>(pDevice->stGigE.chModelName);
        const std::size_t nModelLength = strnlen(pModel, sizeof pDevice->stGigE.chModelName);
        std::printf(" nRet [%.*s]\n", static_cast<int>(nModelLength), pModel);
        std::memcpy(modelBuffer.data(), pModel, nModelLength);
        std::printf(" nRet [%s]\n", modelBuffer.data());
    }
    const QString strModelBuffer = QString::fromUtf8(modelBuffer.data());

    if (XQ_CC_OpenDevice(hCamera, XQ_ACCESS_EXCLUSIVE, 0) != XQ_OK) {
        qInfo().noquote() << kOpenDeviceFail;
        EmitStatus(kOpenDeviceFail);
        ReleaseDevices();
        return;
    }
    if (XQ_CC_RegisterExceptionCallBack(hCamera, &QCollectInfoThread::OnDeviceException, this) == XQ_OK)
        qInfo().noquote() << "XQ_CC_RegisterExceptionCallBack";

    const std::unique_ptr<unsigned char[]> pXml(new (std::nothrow) unsigned char[kFeatureDescriptionBufferSize]);
    unsigned int nXmlLength = 0;
    if (!pXml
        || XQ_XML_GetGenICamXML(hCamera, pXml.get(), kFeatureDescriptionBufferSize, &nXmlLength) != XQ_OK) {
        qInfo().noquote() << kGetXmlFail;
        EmitStatus(kGetXmlFail);
        ReleaseDevices();
        return;
    }
    const QString strXmlPath = m_strFolderPath + QLatin1Char('/') + collect::FeatureDescriptionName(m_strModelName);
    QString strXmlError;
    if (!collect::WriteWholeFile(strXmlPath, pXml.get(), std::min<std::size_t>(nXmlLength, kFeatureDescriptionBufferSize),
                                 &strXmlError)) {
        std::printf("open file fail\n");
        FailJob(kCollectFailed, strXmlError, true);
        return;
    }

    XQ_GIGE_SetGvcpTimeout(hCamera, kGvcpTimeoutMs);
    if (XQ_CC_SetEnumValueByString(hCamera, "UserSetSelector", "Default") != XQ_OK) {
        qInfo().noquote() << kSetUserSetSelectorFail;
        EmitStatus(kSetUserSetSelectorFail);
    }
    if (XQ_CC_SetCommandValue(hCamera, "UserSetLoad") != XQ_OK) {
        qInfo().noquote() << kSetUserSetLoadFail;
        EmitStatus(kSetUserSetLoadFail);
        ReleaseDevices();
        return;
    }
    XQ_CC_SetEnumValueByString(hCamera, "PixelFormat", "RGB8Packed");
    XQ_CC_SetBoolValue(hCamera, "AcquisitionFrameRateEnable", true);

    XQ_XML_NODE_FEATURE stRoot{};
    if (XQ_XML_GetRootNode(hCamera, &stRoot) != XQ_OK) {
        qInfo().noquote() << kGetRootNodeFail;
        EmitStatus(kGetRootNodeFail);
        ReleaseDevices();
        return;
    }

    // The recording walk finds the booleans and enumerations; every later
    // walk reads the tree in one more state of them.
    m_bRecordNodes = true;
    TraverseNode(hCamera, stRoot);
    m_bRecordNodes = false;
    emit SigDeviceCollectProgress(m_strSerialNumber, collect::kProgressAfterRecording);

    const int nBoolCount = m_vecBoolNodes.size();
    const int nEnumCount = m_vecEnumNodes.size();
    for (int i = 0; i < nBoolCount; ++i) {
        if (m_bStop) {
            qInfo().noquote() << kCollectFailed;
            EmitStatus(kCollectFailed);
            ReleaseDevices();
            return;
        }
        // Flips are not undone: later walks see every earlier boolean flipped.
        const QByteArray name = m_vecBoolNodes.at(i).toUtf8();
        bool bValue = false;
        XQ_CC_GetBoolValue(hCamera, name.constData(), &bValue);
        XQ_CC_SetBoolValue(hCamera, name.constData(), !bValue);
        qInfo().noquote() << QStringLiteral("boolIndex[%1], boolTotal[%2]").arg(i).arg(nBoolCount);
        TraverseNode(hCamera, stRoot);
        emit SigDeviceCollectProgress(m_strSerialNumber, collect::BoolPassProgress(i, nBoolCount, nEnumCount));
    }

    for (int j = 0; j < nEnumCount; ++j) {
        if (m_bStop) {
            qInfo().noquote() << kCollectFailed;
            EmitStatus(kCollectFailed);
            ReleaseDevices();
            return;
        }
        const QByteArray name = m_vecEnumNodes.at(j).toUtf8();
        XQ_ENUMVALUE stEnumValue{};
        if (XQ_CC_GetEnumValue(hCamera, name.constData(), &stEnumValue) != XQ_OK)
            continue;
        // The current entry was covered by the earlier walks.
        const unsigned int nSupported = std::min<unsigned int>(stEnumValue.nSupportedCount, XQ_MAX_ENUM_SUPPORTED_NUM);
        for (unsigned int k = 0; k < nSupported; ++k) {
            if (stEnumValue.nSupportedValues[k] == stEnumValue.nCurrentValue)
                continue;
            if (m_bStop)
                break; // reported at the next step
            qInfo().noquote() << QStringLiteral("enumIndex[%1], enumTotal[%2], supportIndex[%3], supportTotal[%4]")
                                     .arg(j)
                                     .arg(nEnumCount)
                                     .arg(k)
                                     .arg(stEnumValue.nSupportedCount);
            XQ_CC_SetEnumValue(hCamera, name.constData(), stEnumValue.nSupportedValues[k]);
            TraverseNode(hCamera, stRoot);
        }
        emit SigDeviceCollectProgress(m_strSerialNumber, collect::EnumPassProgress(j, nBoolCount, nEnumCount));
    }
    emit SigDeviceCollectProgress(m_strSerialNumber, collect::kProgressAfterPasses);

    if (std::strstr(modelBuffer.data(), collect::kCodeReaderMarker) != nullptr && !m_bStop)
        collect::ReadCodeReaderStrings(hCamera);

    // Closing the camera makes its SDK write the register dumps; a walk cut
    // short by a stop or a lost device must not become the collection. The
    // flag is read first: closing ends the link, which may itself be
    // reported as a loss.
    const bool bStopped = m_bStop;
    const int nCloseRet = ReleaseDevicesClosing();
    if (bStopped) {
        FailJob(kCollectFailed, QStringLiteral("stopped or device lost"), false);
        return;
    }
    if (nCloseRet != XQ_OK) {
        FailJob(kCollectFailed, QStringLiteral("register dumps not written: ") + HexCode(nCloseRet), false);
        return;
    }
    qInfo().noquote() << QStringLiteral("collect ") + strModelBuffer + QStringLiteral(" successs\n");
    if (!ReplaceCollection())
        return;
    emit SigDeviceCollectProgress(m_strSerialNumber, collect::kProgressDone);
    emit SigDeviceCollectFinish(m_strSerialNumber, QStringLiteral("Collect Finished"));
}

// Checks that the three files of the feature capture are there, then puts
// the job's folder in the place of the collection folder.
bool QCollectInfoThread::ReplaceCollection()
{
    const QString names[] = {collect::RegisterDumpName(m_strModelName),
                             collect::StringRegisterDumpName(m_strModelName),
                             collect::FeatureDescriptionName(m_strModelName)};
    for (const QString& name : names) {
        const QString strPath = m_strFolderPath + QLatin1Char('/') + name;
        if (!QFileInfo(strPath).isFile())
            return FailJob(kCollectFailed, QStringLiteral("missing ") + strPath, false);
    }
    QString strError;
    if (!m_pStagingFolder->Commit(&strError))
        return FailJob(kCollectFailed, strError, false);
    qInfo().noquote() << "collection replaced:" << m_pStagingFolder->CollectionFolder();
    return true;
}

// Pre-order, depth first. The depth bound keeps a description whose
// categories contain each other from recursing without end.
void QCollectInfoThread::TraverseNode(XQ_HANDLE hCamera, const XQ_XML_NODE_FEATURE& stNode)
{
    collect::NodeListPool lists;
    TraverseNodeAt(hCamera, stNode, 0, lists);
}

void QCollectInfoThread::TraverseNodeAt(XQ_HANDLE hCamera, const XQ_XML_NODE_FEATURE& stNode, int nDepth,
                                        collect::NodeListPool& lists)
{
    if (m_bStop)
        return; // the next step reports it
    // Room for 256 records is too much for the stack of a deep walk.
    const collect::NodeListPool::Lease pChildren = lists.take();
    if (!pChildren)
        return;
    ReadNode(hCamera, &stNode);
    const int nRet = XQ_XML_GetChildren(hCamera, &stNode, pChildren.get());
    if (nRet != XQ_OK) {
        std::printf("XQ_XML_GetChildren fail nRet = [%x]\n", static_cast<unsigned int>(nRet));
        return;
    }
    if (nDepth >= kMaxTreeDepth)
        return;
    const unsigned int nChildren = std::min<unsigned int>(pChildren->nNodeNum, XQ_MAX_XML_NODE_NUM);
    for (unsigned int i = 0; i < nChildren; ++i)
        TraverseNodeAt(hCamera, pChildren->stNodes[i], nDepth + 1, lists);
}

void QCollectInfoThread::ReadNode(XQ_HANDLE hCamera, const XQ_XML_NODE_FEATURE* pstNode)
{
    const QByteArray name(pstNode->chName, static_cast<int>(strnlen(pstNode->chName, sizeof pstNode->chName)));
    const QString strName = QString::fromUtf8(name);
    if (collect::MatchingIgnorePattern(strName, m_setIgnoreNodes) != nullptr) {
        qInfo().noquote() << QStringLiteral("no collect ") + strName;
        return;
    }

    unsigned int nAccessMode = XQ_AM_NI;
    XQ_XML_GetNodeAccessMode(hCamera, name.constData(), &nAccessMode);
    if (collect::IsSkippedAccessMode(nAccessMode) || !collect::IsReadVisibility(pstNode->nVisibility))
        return;

    // Booleans and enumerations are recorded before the read, so one whose
    // read fails still takes part in the passes.
    int nRet = XQ_OK;
    switch (pstNode->nInterfaceType) {
    case XQ_IFT_IINTEGER: {
        int64_t nValue = 0;
        nRet = XQ_CC_GetIntValue(hCamera, name.constData(), &nValue);
        break;
    }
    case XQ_IFT_IBOOLEAN: {
        if (m_bRecordNodes)
            m_vecBoolNodes.append(strName);
        bool bValue = false;
        nRet = XQ_CC_GetBoolValue(hCamera, name.constData(), &bValue);
        break;
    }
    case XQ_IFT_IFLOAT: {
        double fValue = 0.0;
        nRet = XQ_CC_GetFloatValue(hCamera, name.constData(), &fValue);
        break;
    }
    case XQ_IFT_ISTRING: {
        XQ_CC_STRINGVALUE stValue{};
        nRet = XQ_CC_GetStringValue(hCamera, name.constData(), &stValue);
        break;
    }
    case XQ_IFT_IENUMERATION: {
        if (m_bRecordNodes)
            m_vecEnumNodes.append(strName);
        XQ_ENUMVALUE stValue{};
        nRet = XQ_CC_GetEnumValue(hCamera, name.constData(), &stValue);
        break;
    }
    default:
        return;
    }
    if (nRet != XQ_OK)
        qInfo().noquote() << QStringLiteral("-----------------------collect ") + strName
                                 + QStringLiteral("failed--------------------------------------");
}

// ---- File and name helpers -------------------------------------------------

bool QCollectInfoThread::MoveFileToPath(const QString& strSourcePath, QString strDestPath, bool bOverwrite)
{
    strDestPath.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (strSourcePath == strDestPath)
        return true;
    if (!QFile::exists(strSourcePath))
        return false;
    if (bOverwrite && QFile::exists(strDestPath))
        QFile::remove(strDestPath);
    if (!QFile::copy(strSourcePath, strDestPath))
        return false;
    if (QFileInfo(strSourcePath).isFile())
        QFile::remove(strSourcePath);
    return true;
}

void QCollectInfoThread::GetCodeTypeName(int nCodeType, QString& strCodeType)
{
    strCodeType = collect::SymbologyName(nCodeType);
}
