// The job's life: its record, run(), stopping, releasing the devices and
// reporting a failed step. The steps themselves are in
// QCollectInfoThread_Capture.cpp (images and codes),
// QCollectInfoThread_Features.cpp (the feature tree) and
// QCollectInfoThread_Files.cpp (the job's folder).

#include "QCollectInfoThread.h"

#include "IgnoreList.h"
#include "QCollectInfoThread_p.h"
#include "StagingFolder.h"
#include "Symbology.h"

#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <atomic>

using namespace collect::job;

namespace {

// Jobs whose run() has not returned, in the whole process.
std::atomic<int> g_runningJobs{0};

struct RunningJobCounter final {
    RunningJobCounter() { ++g_runningJobs; }
    ~RunningJobCounter() { --g_runningJobs; }
    RunningJobCounter(const RunningJobCounter&) = delete;
    RunningJobCounter& operator=(const RunningJobCounter&) = delete;
};

} // namespace

QCollectInfoThread::QCollectInfoThread(QObject* parent)
    : QThread(parent)
{
}

QCollectInfoThread::~QCollectInfoThread()
{
    // Stopping and releasing first makes a job that is still talking to the
    // device fail fast, so the wait below ends.
    requestStop();
    ReleaseDevices();
    quit();
    wait();
}

void QCollectInfoThread::SetDeviceInfo(const _XQ_CODEREADER_DEVICE_INFO_& stDeviceInfo)
{
    m_stDeviceInfo = stDeviceInfo;
    m_strSerialNumber = fieldText(m_stDeviceInfo.stGigE.chSerialNumber);
}

void QCollectInfoThread::run()
{
    const RunningJobCounter counted;
    PraseJsonConfig();
    if (CollectImageInfo())
        CollectNodeInfo();
    // A job that did not replace the collection removes its own folder.
    m_stagingFolder.reset();
}

int QCollectInfoThread::runningJobCount()
{
    return g_runningJobs;
}

void QCollectInfoThread::requestStop()
{
    m_bStop = true;
}

void QCollectInfoThread::ReleaseDevices()
{
    releaseDevicesClosing();
}

// Handles are not cleared: a second call repeats the calls on the stale
// values, which the SDKs refuse without harm.
int QCollectInfoThread::releaseDevicesClosing()
{
    const XQ_HANDLE codeReader = m_hCodeReader.load();
    if (codeReader != nullptr)
        XQ_CODEREADER_DestroyHandle(codeReader);
    const XQ_HANDLE camera = m_hCamera.load();
    int closeRet = XQ_OK;
    if (camera != nullptr) {
        // The code-reader SDK refuses the camera handle as foreign; the call
        // stays so the release order is the same in every tool of the suite.
        XQ_CODEREADER_StopGrabbing(camera);
        closeRet = XQ_CC_CloseDevice(camera);
        XQ_CC_DestroyHandle(camera);
    }
    return closeRet;
}

void QCollectInfoThread::OnDeviceException(unsigned int nMsgType, void* pUser)
{
    if (pUser == nullptr || nMsgType != XQ_EXCEPTION_DEVICE_LOST)
        return;
    auto* const job = static_cast<QCollectInfoThread*>(pUser);
    job->m_bStop = true;
    job->ReleaseDevices();
}

void QCollectInfoThread::emitStatus(const char* statusText)
{
    emit SigDeviceCollectStatus(m_strSerialNumber, tr(statusText));
}

bool QCollectInfoThread::failJob(const LogSite& site, const char* statusText, const QString& reason, Handles handles)
{
    if (reason.isEmpty())
        logAt(site) << statusText;
    else
        logAt(site) << statusText << reason;
    emitStatus(statusText);
    if (handles == Handles::Release)
        ReleaseDevices();
    return false;
}

void QCollectInfoThread::PraseJsonConfig()
{
    m_setIgnoreNodes.clear();
    QFile file(QString::fromLatin1(collect::kIgnoreListPath));
    const QString fileName = QFileInfo(file).absoluteFilePath();
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        COLLECT_JOB_LOG() << QStringLiteral("can't open error! ") + fileName + QStringLiteral(": ") + file.errorString();
        return;
    }
    QTextStream stream(&file);
    stream.setCodec(kTextCodec);
    const QString text = stream.readAll();
    file.close();

    const collect::IgnoreListContent content = collect::parseIgnoreList(text.toUtf8());
    if (content.outcome == collect::IgnoreListContent::Outcome::NotJson) {
        COLLECT_JOB_LOG() << QStringLiteral("Json parse error ") + fileName + QStringLiteral(": ") + content.parseError;
        return;
    }
    for (const QString& skipped : content.skippedElements)
        COLLECT_JOB_LOG() << QStringLiteral("IgnoreNodes ") + skipped + QStringLiteral(" in ") + fileName
                + QStringLiteral(" is not a string; ignored");
    for (const QString& pattern : content.patterns) {
        COLLECT_JOB_LOG() << QStringLiteral("node = ") + pattern;
        m_setIgnoreNodes.insert(pattern);
    }
}

void QCollectInfoThread::GetCodeTypeName(int nCodeType, QString& strCodeType)
{
    strCodeType = collect::symbologyName(nCodeType);
}
