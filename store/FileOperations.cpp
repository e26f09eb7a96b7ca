#include "FileOperations.h"

#include "camera_hold.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtDebug>

namespace VirtualStore {

bool CopyDirectory(const QString& strSource, const QString& strDestination, bool bOverwrite)
{
    const QDir sourceDir(strSource);
    QDir destinationDir(strDestination);
    if (!destinationDir.exists() && !destinationDir.mkdir(destinationDir.absolutePath()))
        return false;

    const QFileInfoList entries = sourceDir.entryInfoList();
    for (const QFileInfo& entry : entries) {
        if (entry.fileName() == "." || entry.fileName() == "..")
            continue;
        const QString strTarget = destinationDir.filePath(entry.fileName());
        if (entry.isDir()) {
            // A link back up the tree would copy forever.
            if (entry.isSymLink()) {
                qInfo() << "Not following folder link while copying:" << entry.filePath();
                continue;
            }
            if (!CopyDirectory(entry.filePath(), strTarget, bOverwrite))
                return false;
            continue;
        }
        if (bOverwrite && QFileInfo::exists(strTarget))
            destinationDir.remove(entry.fileName());
        if (!QFile::copy(entry.filePath(), strTarget))
            return false;
    }
    return true;
}

bool IsFileOccupied(const QString& strPath)
{
    return quorvex::store::isHeldOpen(QFile::encodeName(strPath).toStdString());
}

} // namespace VirtualStore
