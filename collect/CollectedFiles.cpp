#include "CollectedFiles.h"

#include "StagingFolder.h"

#include <QDir>
#include <QFileInfo>

namespace collect {

bool deleteFileOrFolderAt(const QString& path)
{
    if (path.isEmpty())
        return false;
    const QFileInfo info(path);
    if (info.isFile() || info.isSymLink()) {
        info.dir().remove(info.fileName());
        return true;
    }
    QDir dir(path);
    if (!dir.exists())
        return true;
    // Hidden entries are deliberately not listed: they keep their folder.
    const QFileInfoList entries = dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) {
        if (entry.isDir() && !entry.isSymLink())
            deleteFileOrFolderAt(entry.absoluteFilePath());
        else
            dir.remove(entry.fileName());
    }
    return dir.rmdir(dir.absolutePath());
}

QStringList deleteCollectedFilesOf(const QString& collectionRoot, const QString& modelName)
{
    // A null name would sweep every model's.
    if (modelName.isEmpty())
        return {};
    return sweepAbandonedStagingFolders(collectionRoot, modelName);
}

} // namespace collect
