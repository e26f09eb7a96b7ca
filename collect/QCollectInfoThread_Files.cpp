// The job's folder: made beside the collection folder before the first
// write, filled by the capture and the feature walks, and put in the place
// of the collection folder once everything is there.

#include "QCollectInfoThread.h"

#include "AppFolders.h"
#include "CheckedFile.h"
#include "CollectPaths.h"
#include "QCollectInfoThread_p.h"
#include "StagingFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>

using namespace collect::job;

namespace {

constexpr std::size_t kFeatureDescriptionBufferSize = 0x500000;

} // namespace

bool QCollectInfoThread::makeJobFolder()
{
    // One spelling everywhere: these bytes name the job's folder, its files
    // and the collection folder.
    const QString modelName =
        collect::modelNameOfField(m_stDeviceInfo.stGigE.chModelName, sizeof m_stDeviceInfo.stGigE.chModelName);
    if (modelName.isEmpty())
        return failJob(COLLECT_JOB_SITE, kInvalidModelName, {}, Handles::Keep);
    m_modelName = modelName;

    const QString root = GetVirtualCameraRoot();
    // The whole path: a per-user root may lie below folders not made yet.
    if (!QFileInfo(root).isDir() && !QDir().mkpath(root) && !QFileInfo(root).isDir())
        return failJob(COLLECT_JOB_SITE, kCreateFileFailed, QStringLiteral("cannot make ") + root, Handles::Keep);
    for (const QString& leftover : collect::sweepAbandonedStagingFolders(root))
        COLLECT_JOB_LOG() << "removed the folder of an ended job:" << leftover;

    // The job writes into a folder of its own; the collection folder is
    // replaced by it only when everything has been written.
    QString error;
    m_stagingFolder = collect::StagingFolder::create(root, modelName, &error);
    if (!m_stagingFolder)
        return failJob(COLLECT_JOB_SITE, kCreateFileFailed, error, Handles::Keep);
    m_strFolderPath = m_stagingFolder->path();
    m_strOutImageFile = collect::imageFolderOf(m_strFolderPath);
    COLLECT_JOB_LOG() << "m_strFolderPath" << modelName;
    COLLECT_JOB_LOG() << "bCreatePath" << modelName;
    COLLECT_JOB_LOG() << "m_strOutImageFile" << modelName;
    if (!QDir().mkdir(m_strOutImageFile))
        return failJob(COLLECT_JOB_SITE, kCreateFileFailed, QStringLiteral("cannot make ") + m_strOutImageFile,
                       Handles::Keep);
    return true;
}

bool QCollectInfoThread::saveFeatureDescription(XQ_HANDLE camera)
{
    const std::unique_ptr<unsigned char[]> xml(new (std::nothrow) unsigned char[kFeatureDescriptionBufferSize]);
    unsigned int xmlLength = 0;
    if (!xml || XQ_XML_GetGenICamXML(camera, xml.get(), kFeatureDescriptionBufferSize, &xmlLength) != XQ_OK)
        return failJob(COLLECT_JOB_SITE, kGetXmlFail, {}, Handles::Release);
    const QString xmlPath = m_strFolderPath + QLatin1Char('/') + collect::featureDescriptionName(m_modelName);
    QString error;
    if (!collect::writeWholeFile(xmlPath, xml.get(), std::min<std::size_t>(xmlLength, kFeatureDescriptionBufferSize),
                                 &error)) {
        std::printf("open file fail\n");
        return failJob(COLLECT_JOB_SITE, kCollectFailed, error, Handles::Release);
    }
    return true;
}

// Checks that the three files of the feature capture are there, then puts
// the job's folder in the place of the collection folder.
bool QCollectInfoThread::replaceCollection()
{
    const QString names[] = {collect::registerDumpName(m_modelName), collect::stringRegisterDumpName(m_modelName),
                             collect::featureDescriptionName(m_modelName)};
    for (const QString& name : names) {
        const QString path = m_strFolderPath + QLatin1Char('/') + name;
        if (!QFileInfo(path).isFile())
            return failJob(COLLECT_JOB_SITE, kCollectFailed, QStringLiteral("missing ") + path, Handles::Keep);
    }
    QString error;
    if (!m_stagingFolder->commit(&error))
        return failJob(COLLECT_JOB_SITE, kCollectFailed, error, Handles::Keep);
    COLLECT_JOB_LOG() << "collection replaced:" << m_stagingFolder->collectionFolder();
    return true;
}

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
