#pragma once
// One collection job: images and codes through the code-reader SDK, then the
// GenICam description, the register dumps and the feature tree read in every
// state through the camera SDK. Everything goes into a folder of the job's
// own (collect/StagingFolder.h), which replaces the device's collection
// folder only when the job has finished well.

#include "XQCameraControl.h"
#include "XqCodeReaderCtrl.h"

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QThread>
#include <QVector>

#include <atomic>
#include <memory>

namespace collect {
class NodeListPool;
class StagingFolder;
}
namespace collect::job {
struct LogSite;
}

class QCollectInfoThread final : public QThread
{
    Q_OBJECT
    Q_DISABLE_COPY(QCollectInfoThread)

public:
    explicit QCollectInfoThread(QObject* parent = nullptr);
    ~QCollectInfoThread() override;

    // Copies the record; its serial number becomes the job's key. Call once,
    // before start().
    void SetDeviceInfo(const _XQ_CODEREADER_DEVICE_INFO_& stDeviceInfo);

    // Moves a file: copies, then removes the source. "\\" in the destination
    // counts as "/". Same path is a no-op success; a failed copy keeps the
    // source.
    static bool MoveFileToPath(const QString& strSourcePath, QString strDestPath, bool bOverwrite);

    // Short name of a symbology number as the code-reader SDK reports it;
    // "NONE" for anything not in the tool's table.
    static void GetCodeTypeName(int nCodeType, QString& strCodeType);

    // Registered with both SDKs, the thread object being the user pointer.
    // A lost device stops the job and releases both handles.
    static void OnDeviceException(unsigned int nMsgType, void* pUser);

    // Destroys the code-reader handle and stops, closes and destroys the
    // camera handle. collect::CollectJobs calls it before deleting a job.
    void ReleaseDevices();

    // Asks a running job to end soon (it then fails with "Collect Failed!"
    // and removes its own folder). Any thread may call it.
    void requestStop();

    // Jobs of the whole process whose run() has not returned.
    static int runningJobCount();

signals:
    void SigDeviceCollectProgress(QString strSerialNumber, int nPercent);
    void SigDeviceCollectStatus(QString strSerialNumber, QString nInfo);
    void SigDeviceCollectFinish(QString strSerialNumber, QString nInfo);

protected:
    void run() override;

private:
    // Whether a failing step leaves the devices open or releases them.
    enum class Handles { Keep, Release };

    // Lifecycle and failures (QCollectInfoThread.cpp)
    void PraseJsonConfig();
    void emitStatus(const char* statusText);
    // Logs the status text (with the reason, if any) from where the step
    // failed, emits it, releases the devices if asked, and returns false.
    bool failJob(const collect::job::LogSite& site, const char* statusText, const QString& reason, Handles handles);
    // ReleaseDevices() that returns what closing the camera gave: whether
    // the register dumps were written.
    int releaseDevicesClosing();

    // Images and codes (QCollectInfoThread_Capture.cpp)
    bool CollectImageInfo();
    bool openCodeReader();
    bool captureImages();

    // Feature tree (QCollectInfoThread_Features.cpp)
    void CollectNodeInfo();
    // Opens the job's device through the camera SDK; modelBuffer gets the
    // model name of a GigE record.
    bool openCamera(QByteArray& modelBuffer);
    // Loads the default user set and finds the root of the feature tree.
    bool prepareFeatureWalks(XQ_HANDLE camera, XQ_XML_NODE_FEATURE& root);
    bool walkBooleans(XQ_HANDLE camera, const XQ_XML_NODE_FEATURE& root);
    bool walkEnumerations(XQ_HANDLE camera, const XQ_XML_NODE_FEATURE& root);
    void TraverseNode(XQ_HANDLE hCamera, const XQ_XML_NODE_FEATURE& stNode);
    void traverseNodeAt(XQ_HANDLE camera, const XQ_XML_NODE_FEATURE& node, int depth, collect::NodeListPool& lists);
    void ReadNode(XQ_HANDLE hCamera, const XQ_XML_NODE_FEATURE* pstNode);

    // The job's folder (QCollectInfoThread_Files.cpp)
    bool makeJobFolder();
    bool saveFeatureDescription(XQ_HANDLE camera);
    bool replaceCollection();

    QVector<QString> m_vecBoolNodes;
    QVector<QString> m_vecEnumNodes;
    _XQ_CODEREADER_DEVICE_INFO_ m_stDeviceInfo{};
    QString m_strSerialNumber;
    QString m_strFolderPath;
    QString m_strOutImageFile;
    qint32 m_nImageCount = 0;
    // The handles and the stop flag are also used by the SDKs' exception
    // threads, hence atomic.
    std::atomic<XQ_HANDLE> m_hCodeReader{nullptr};
    std::atomic<XQ_HANDLE> m_hCamera{nullptr};
    std::atomic<bool> m_bStop{false};
    bool m_bRecordNodes = false;
    QSet<QString> m_setIgnoreNodes;
    // The model name as it names the job's folder and files.
    QString m_modelName;
    // Held from the first write until run() returns.
    std::unique_ptr<collect::StagingFolder> m_stagingFolder;
};
