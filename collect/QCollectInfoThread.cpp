#include "QCollectInfoThread.h"

#include "AppFolders.h"
#include "CaptureCsv.h"
#include "CollectPaths.h"
#include "CollectProgress.h"
#include "FeatureRules.h"
#include "IgnoreList.h"
#include "NodeListPool.h"
#include "Symbology.h"
#include "XQInterface.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <sys/stat.h>
#include <unistd.h>

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

// Texts of a code reader that are only available under certain trigger and
// protocol settings; read after those settings are made.
constexpr std::array<const char*, 9> kCodeReaderStrings{
    "UdpEndTriggerStr",     "TcpEndTriggerStr",   "Barcodecharacterbegins",
    "BarcodeContainString", "BarcodeNoContainString", "TcpServerStartText",
    "TcpServerStopText",    "TcpServerDelimiter", "RegularExpressionRules"};
constexpr std::array<const char*, 8> kCodeReaderSwitches{
    "TcpEndTriggerEnable",          "UdpEndTriggerEnable",           "IOEndTriggerEnable",
    "SerialEndTriggerEnable",       "BarcodecharacterbeginsEnable",  "BarcodeContainStringEnable",
    "BarcodeNoContainStringEnable", "RegularExpressionRulesEnable"};
constexpr char kCodeReaderMarker[] = "ID";

struct FileCloser final {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

FilePtr OpenFile(const QString& path, const char* mode)
{
    return FilePtr(std::fopen(QFile::encodeName(path).constData(), mode));
}

template <std::size_t N>
QString FieldText(const unsigned char (&field)[N])
{
    return XQInterface::uchar2QString(field, static_cast<int>(std::min<std::size_t>(N, kTextFieldLength)), kCodec);
}

QString HexCode(int nRet)
{
    return QStringLiteral("%1").arg(static_cast<unsigned int>(nRet), 0, 16);
}

// Writes one delivered frame as it came; false when the file cannot be made.
bool WriteImageFile(const QString& path, const unsigned char* pData, unsigned int nLength)
{
    const FilePtr file = OpenFile(path, "wb+");
    if (!file)
        return false;
    if (pData != nullptr && nLength > 0)
        std::fwrite(pData, 1, nLength, file.get());
    std::fflush(file.get());
    return true;
}

} // namespace

// ---- Lifecycle -------------------------------------------------------------

QCollectInfoThread::QCollectInfoThread(QObject* parent)
    : QThread(parent)
{
}

QCollectInfoThread::~QCollectInfoThread()
{
    // Releasing first makes a job that is still talking to the device fail
    // fast, so the wait below ends.
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
    PraseJsonConfig();
    if (!CollectImageInfo())
        return;
    CollectNodeInfo();
}

// Handles are not cleared: a second call repeats the calls on the stale
// values, which the SDKs refuse without harm.
void QCollectInfoThread::ReleaseDevices()
{
    const XQ_HANDLE hCodeReader = m_hCodeReader.load();
    if (hCodeReader != nullptr)
        XQ_CODEREADER_DestroyHandle(hCodeReader);
    const XQ_HANDLE hCamera = m_hCamera.load();
    if (hCamera != nullptr) {
        // The code-reader SDK refuses the camera handle as foreign; the call
        // stays so the release order is the same in every tool of the suite.
        XQ_CODEREADER_StopGrabbing(hCamera);
        XQ_CC_CloseDevice(hCamera);
        XQ_CC_DestroyHandle(hCamera);
    }
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
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qInfo().noquote() << "can't open error!";
        return;
    }
    QTextStream stream(&file);
    stream.setCodec(kCodec);
    const QString text = stream.readAll();
    file.close();

    const collect::IgnoreListContent content = collect::ParseIgnoreList(text.toUtf8());
    if (content.outcome == collect::IgnoreListContent::Outcome::NotJson) {
        qInfo().noquote() << "Json parse error";
        return;
    }
    for (const QString& pattern : content.patterns) {
        qInfo().noquote() << QStringLiteral("node = ") + pattern;
        m_setIgnoreNodes.insert(pattern);
    }
}

// ---- Images and codes ------------------------------------------------------

bool QCollectInfoThread::CollectImageInfo()
{
    const QString strModelName = FieldText(m_stDeviceInfo.stGigE.chModelName);
    if (!collect::IsSafeModelName(strModelName)) {
        qInfo().noquote() << kInvalidModelName;
        EmitStatus(kInvalidModelName);
        return false;
    }

    const QString strRoot = GetVirtualCameraRoot();
    const QByteArray rootPath = QFile::encodeName(strRoot);
    if (access(rootPath.constData(), F_OK) != 0)
        mkdir(rootPath.constData(), 0755);

    m_strFolderPath = collect::CollectionFolderOf(strRoot, strModelName);
    m_strOutImageFile = collect::ImageFolderOf(m_strFolderPath);

    // A folder collected before is reused as it stands, Jpg or not.
    if (!QFileInfo::exists(m_strFolderPath)) {
        qInfo().noquote() << "m_strFolderPath" << strModelName;
        // A job of the same model may make the folder between the test and
        // the mkdir; the folder then exists, which is all this step needs.
        if (!QDir().mkdir(QDir(m_strFolderPath).absolutePath()) && !QFileInfo(m_strFolderPath).isDir()) {
            qInfo().noquote() << kCreateFileFailed;
            EmitStatus(kCreateFileFailed);
            return false;
        }
        qInfo().noquote() << "bCreatePath" << strModelName;
        if (!QFileInfo::exists(m_strOutImageFile)) {
            qInfo().noquote() << "m_strOutImageFile" << strModelName;
            QDir().mkdir(QDir(m_strOutImageFile).absolutePath());
        }
    }

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
    FilePtr csv = OpenFile(collect::CsvFileOf(m_strFolderPath), "wb+");
    if (!csv) {
        qInfo().noquote() << kOpenFileFail;
        EmitStatus(kOpenFileFail);
        ReleaseDevices();
        return false;
    }
    std::fputs(collect::kCsvHeader, csv.get());

    // Capture is bounded by time, not by a frame count: the first progress
    // tick ends it after one more trigger.
    QElapsedTimer stopwatch;
    stopwatch.start();
    quint32 nFrameNumber = 1;
    bool bImageWritten = false;
    bool bAborted = m_bStop;
    while (!bAborted) {
        if (stopwatch.elapsed() >= kProgressTickMs) {
            stopwatch.restart();
            emit SigDeviceCollectProgress(m_strSerialNumber, m_nImageCount);
            ++m_nImageCount;
        }
        XQ_CODEREADER_SetCommandValue(hCodeReader, "TriggerSoftware");
        unsigned char* pImage = nullptr;
        if (XQ_CODEREADER_GetOneFrameTimeout(hCodeReader, &pImage, pFrameInfo.get(), kFrameTimeoutMs) == XQ_OK) {
            const QString strImageFile = collect::ImageFileOf(m_strOutImageFile, nFrameNumber);
            if (WriteImageFile(strImageFile, pImage, pFrameInfo->nFrameLen))
                bImageWritten = true;
            const QByteArray row = collect::CsvRowOf(nFrameNumber, *pFrameInfo);
            for (unsigned int i = 0; i < pFrameInfo->nCodeNum; ++i) {
                const char* const pCode = pFrameInfo->stCodeInfo[i].chCode;
                std::printf("CodeNum[%u] Code[%.*s]\n", i,
                            static_cast<int>(strnlen(pCode, XQ_CODEREADER_CODE_TEXT_SIZE)), pCode);
            }
            std::fwrite(row.constData(), 1, static_cast<std::size_t>(row.size()), csv.get());
            ++nFrameNumber;
        }
        if (m_nImageCount == 1)
            break;
        bAborted = m_bStop;
    }
    if (bAborted) {
        qInfo().noquote() << kCollectFailed;
        EmitStatus(kCollectFailed);
        ReleaseDevices();
        return false;
    }

    if (XQ_CODEREADER_StopGrabbing(hCodeReader) != XQ_OK) {
        qInfo().noquote() << kStopGrabbingFail;
        EmitStatus(kStopGrabbingFail);
        ReleaseDevices();
        return false;
    }
    emit SigDeviceCollectProgress(m_strSerialNumber, collect::kProgressAfterImages);
    std::fflush(csv.get());
    csv.reset();
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

    // Staging names come from this record's model name: refuse one that
    // would put files outside the application and collection folders.
    const QString strRecordModel = FieldText(pDevice->stGigE.chModelName);
    if (!collect::IsSafeModelName(strRecordModel)) {
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
    const QString strXmlPath = QCoreApplication::applicationDirPath() + QStringLiteral("/%1.xml").arg(strRecordModel);
    {
        const FilePtr xmlFile = OpenFile(strXmlPath, "wb+");
        if (!xmlFile) {
            std::printf("open file fail\n");
            ReleaseDevices();
            return;
        }
        std::fwrite(pXml.get(), 1, std::min<std::size_t>(nXmlLength, kFeatureDescriptionBufferSize), xmlFile.get());
        std::fflush(xmlFile.get());
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

    if (std::strstr(modelBuffer.data(), kCodeReaderMarker) != nullptr)
        ReadCodeReaderStrings(hCamera);

    // Closing the camera makes its SDK write the register dumps.
    ReleaseDevices();
    qInfo().noquote() << QStringLiteral("collect %1 successs\n").arg(strModelBuffer);

    MoveCollectedFiles(strModelBuffer);
    emit SigDeviceCollectProgress(m_strSerialNumber, collect::kProgressDone);
    emit SigDeviceCollectFinish(m_strSerialNumber, QStringLiteral("Collect Finished"));
}

// Each string is read under the settings that make it available, so the
// order of the settings matters; every result is ignored.
void QCollectInfoThread::ReadCodeReaderStrings(XQ_HANDLE hCamera)
{
    XQ_CC_SetEnumValueByString(hCamera, "RunningMode", "Normal");
    XQ_CC_SetEnumValueByString(hCamera, "TriggerMode", "On");
    XQ_CC_SetEnumValueByString(hCamera, "TriggerSource", "TcpStart");
    XQ_CC_SetEnumValueByString(hCamera, "CommunicationProtocols", "TcpServer");
    for (const char* const pSwitch : kCodeReaderSwitches)
        XQ_CC_SetBoolValue(hCamera, pSwitch, true);

    XQ_CC_STRINGVALUE stString{};
    for (const char* const pString : kCodeReaderStrings)
        XQ_CC_GetStringValue(hCamera, pString, &stString);

    XQ_CC_SetEnumValueByString(hCamera, "TriggerSource", "TcpStart");
    XQ_CC_GetStringValue(hCamera, "TcpStartTriggerStr", &stString);
    XQ_CC_SetEnumValueByString(hCamera, "TriggerSource", "UdpStart");
    XQ_CC_GetStringValue(hCamera, "UdpStartTriggerStr", &stString);
    XQ_CC_SetEnumValueByString(hCamera, "CommunicationProtocols", "CommuPtlTcpIP");
    XQ_CC_GetStringValue(hCamera, "TcpStartText", &stString);
    XQ_CC_GetStringValue(hCamera, "TcpStopText", &stString);
    XQ_CC_GetStringValue(hCamera, "TcpDelimiter", &stString);
}

// Register dump, string-register dump, then the description: from the
// application folder into the collection folder of the staging model name.
void QCollectInfoThread::MoveCollectedFiles(const QString& strModelName)
{
    const QString strAppDir = QCoreApplication::applicationDirPath();
    const QString strFolder = collect::CollectionFolderOf(GetVirtualCameraRoot(), strModelName);
    const QString names[] = {collect::RegisterDumpName(strModelName), collect::StringRegisterDumpName(strModelName),
                             collect::FeatureDescriptionName(strModelName)};
    for (const QString& name : names) {
        const QString strSource = strAppDir + QLatin1Char('/') + name;
        const QString strDest = strFolder + QLatin1Char('/') + name;
        const bool bMoved = MoveFileToPath(strSource, strDest, true);
        qInfo().noquote() << QStringLiteral("MoveFileToPath[%1] [%2] -> [%3]")
                                 .arg(bMoved ? QStringLiteral("true") : QStringLiteral("false"), strSource, strDest);
    }
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
