// The first half of a job: sample images and their decoded codes through
// the code-reader SDK, into the job's Jpg folder and ImportInformation.csv.

#include "QCollectInfoThread.h"

#include "CaptureCsv.h"
#include "CheckedFile.h"
#include "CollectPaths.h"
#include "CollectProgress.h"
#include "QCollectInfoThread_p.h"

#include <QElapsedTimer>

#include <cstdio>
#include <cstring>
#include <memory>

using namespace collect::job;

namespace {

constexpr unsigned int kGvcpTimeoutMs = 5000;
constexpr unsigned int kRunningModeCodeReading = 2;
constexpr unsigned int kTriggerModeOff = 0;
constexpr unsigned int kTriggerModeOn = 1;
constexpr unsigned int kTriggerSourceSoftware = 7;
// Capture is bounded by time, not by a frame count: the first progress
// tick ends it after one more trigger.
constexpr qint64 kProgressTickMs = 1500;
constexpr unsigned int kFrameTimeoutMs = 1000;

} // namespace

bool QCollectInfoThread::CollectImageInfo()
{
    return makeJobFolder() && openCodeReader() && captureImages();
}

bool QCollectInfoThread::openCodeReader()
{
    COLLECT_JOB_LOG() << "XQ_CODEREADER_CreateHandle" << m_modelName;
    XQ_HANDLE codeReader = nullptr;
    if (XQ_CODEREADER_CreateHandle(&codeReader, &m_stDeviceInfo) != XQ_OK)
        return failJob(COLLECT_JOB_SITE, kCreateHandleFailed, {}, Handles::Keep);
    m_hCodeReader = codeReader;

    COLLECT_JOB_LOG() << "XQ_CODEREADER_OpenDevice" << m_modelName;
    const int openRet = XQ_CODEREADER_OpenDevice(codeReader);
    if (openRet != XQ_OK)
        return failJob(COLLECT_JOB_SITE, kOpenCameraFail, hexCode(openRet), Handles::Release);

    if (XQ_CODEREADER_RegisterExceptionCallBack(codeReader, &QCollectInfoThread::OnDeviceException, this) == XQ_OK)
        COLLECT_JOB_LOG() << "RegisterExceptionCallBack";

    COLLECT_JOB_LOG() << "VirtualCamera7" << m_modelName;
    XQ_CODEREADER_GIGE_SetGvcpTimeout(codeReader, kGvcpTimeoutMs);
    if (XQ_CODEREADER_SetEnumValue(codeReader, "RunningMode", kRunningModeCodeReading) != XQ_OK)
        return failJob(COLLECT_JOB_SITE, kSetRunningModeFail, {}, Handles::Release);

    COLLECT_JOB_LOG() << "VirtualCamera8" << m_modelName;
    if (XQ_CODEREADER_SetEnumValue(codeReader, "TriggerMode", kTriggerModeOn) != XQ_OK)
        return failJob(COLLECT_JOB_SITE, kSetTriggerModeFail, {}, Handles::Release);

    COLLECT_JOB_LOG() << "VirtualCamera9" << m_modelName;
    if (XQ_CODEREADER_SetEnumValue(codeReader, "TriggerSource", kTriggerSourceSoftware) != XQ_OK)
        XQ_CODEREADER_SetEnumValue(codeReader, "TriggerMode", kTriggerModeOff); // no software trigger: run freely

    if (XQ_CODEREADER_StartGrabbing(codeReader) != XQ_OK)
        return failJob(COLLECT_JOB_SITE, kStartGrabbingFail, {}, Handles::Release);
    return true;
}

bool QCollectInfoThread::captureImages()
{
    const XQ_HANDLE codeReader = m_hCodeReader.load();
    const auto frameInfo = std::make_unique<XQ_CODEREADER_FRAME_INFO>();
    collect::CheckedFile csv;
    if (!csv.open(collect::csvFileOf(m_strFolderPath)))
        return failJob(COLLECT_JOB_SITE, kOpenFileFail, csv.error(), Handles::Release);
    if (!csv.write(collect::kCsvHeader))
        return failJob(COLLECT_JOB_SITE, kCollectFailed, csv.error(), Handles::Release);

    QElapsedTimer stopwatch;
    stopwatch.start();
    quint32 frameNumber = 1;
    bool imageWritten = false;
    bool aborted = m_bStop;
    QString writeError;
    while (!aborted && writeError.isEmpty()) {
        if (stopwatch.elapsed() >= kProgressTickMs) {
            stopwatch.restart();
            emit SigDeviceCollectProgress(m_strSerialNumber, m_nImageCount);
            ++m_nImageCount;
        }
        XQ_CODEREADER_SetCommandValue(codeReader, "TriggerSoftware");
        unsigned char* image = nullptr;
        if (XQ_CODEREADER_GetOneFrameTimeout(codeReader, &image, frameInfo.get(), kFrameTimeoutMs) == XQ_OK) {
            const QString imageFile = collect::imageFileOf(m_strOutImageFile, frameNumber);
            if (!collect::writeWholeFile(imageFile, image, image != nullptr ? frameInfo->nFrameLen : 0, &writeError))
                break;
            imageWritten = true;
            const QByteArray row = collect::csvRowOf(frameNumber, *frameInfo);
            for (unsigned int i = 0; i < frameInfo->nCodeNum; ++i) {
                const char* const code = frameInfo->stCodeInfo[i].chCode;
                std::printf("CodeNum[%u] Code[%.*s]\n", i,
                            static_cast<int>(strnlen(code, XQ_CODEREADER_CODE_TEXT_SIZE)), code);
            }
            if (!csv.write(row.constData(), static_cast<std::size_t>(row.size()))) {
                writeError = csv.error();
                break;
            }
            ++frameNumber;
        }
        if (m_nImageCount == 1)
            break;
        aborted = m_bStop;
    }
    if (!writeError.isEmpty())
        return failJob(COLLECT_JOB_SITE, kCollectFailed, writeError, Handles::Release);
    if (aborted)
        return failJob(COLLECT_JOB_SITE, kCollectFailed, QStringLiteral("stopped"), Handles::Release);

    if (XQ_CODEREADER_StopGrabbing(codeReader) != XQ_OK)
        return failJob(COLLECT_JOB_SITE, kStopGrabbingFail, {}, Handles::Release);
    emit SigDeviceCollectProgress(m_strSerialNumber, collect::kProgressAfterImages);
    if (!csv.close())
        return failJob(COLLECT_JOB_SITE, kCollectFailed, csv.error(), Handles::Release);
    if (!imageWritten)
        return failJob(COLLECT_JOB_SITE, kNoImageCaptured, {}, Handles::Release);
    ReleaseDevices();
    return true;
}
