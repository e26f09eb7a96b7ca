#include "StorePaths.h"

#include "XqFileNames.h"

#include "XQInterface.h"
#include "store_names.h"

#include <QDir>
#include <QFileInfo>

namespace VirtualStore {

QString systemTempPath()
{
    return QDir::toNativeSeparators(XQInterface::systemTemp());
}

QString storePath()
{
    return systemTempPath() + "/" + xq::names::kVirtualCameraFolder;
}

QString configFilePath()
{
    return storePath() + "/" + xq::names::kStoreConfigFile;
}

QString cameraFolder(const QString& strGroup)
{
    // Joined, not filled in with arg(): a "%1" inside the temporary folder's
    // path must stay text.
    return storePath() + "/" + xq::names::kStoreCamerasFolder + "/" + strGroup;
}

QString registerFilePath(const QString& strGroup, const QString& strModel)
{
    return cameraFolder(strGroup) + "/" + strModel + xq::names::kRegisterDumpSuffix;
}

bool isSafeStoreName(const QString& strName)
{
    return quorvex::store::isSafeStoreName(strName.toStdString());
}

bool isCameraFolderInsideStore(const QString& strGroup, QString& strReason)
{
    if (!isSafeStoreName(strGroup)) {
        strReason = QStringLiteral("the group cannot name a folder");
        return false;
    }
    const QString strCameras = storePath() + "/" + xq::names::kStoreCamerasFolder;
    const QString strFolder = cameraFolder(strGroup);
    // A link anywhere on the way would make the removal act elsewhere.
    for (const QString& strPath : {storePath(), strCameras, strFolder}) {
        const QFileInfo info(strPath);
        if (info.isSymLink()) {
            strReason = QStringLiteral("%1 is a symbolic link").arg(strPath);
            return false;
        }
        if (!info.exists())
            return true;
        if (!info.isDir()) {
            strReason = QStringLiteral("%1 is not a folder").arg(strPath);
            return false;
        }
    }
    const QString strRealCameras = QFileInfo(strCameras).canonicalFilePath();
    const QString strRealFolder = QFileInfo(strFolder).canonicalFilePath();
    if (strRealCameras.isEmpty() || strRealFolder != strRealCameras + "/" + strGroup) {
        strReason = QStringLiteral("%1 does not resolve inside %2").arg(strFolder, strCameras);
        return false;
    }
    return true;
}

} // namespace VirtualStore
