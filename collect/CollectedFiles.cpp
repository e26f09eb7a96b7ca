#include "CollectedFiles.h"

#include "CollectPaths.h"

#include <QDir>
#include <QFileInfo>

namespace collect {

QStringList StagingFilePaths(const QString& applicationDir, const QString& modelName)
{
    return {applicationDir + "/" + RegisterDumpName(modelName),
            applicationDir + "/" + StringRegisterDumpName(modelName),
            applicationDir + "/" + FeatureDescriptionName(modelName)};
}

bool DeleteFileOrFolderAt(const QString& path)
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
            DeleteFileOrFolderAt(entry.absoluteFilePath());
        else
            dir.remove(entry.fileName());
    }
    return dir.rmdir(dir.absolutePath());
}

QStringList DeleteCollectedFilesOf(const QString& applicationDir, const QString& collectionRoot,
                                   const QString& modelName)
{
    QStringList paths = StagingFilePaths(applicationDir, modelName);
    paths << CollectionFolderOf(collectionRoot, modelName);
    if (modelName.isEmpty() || !IsSafeModelName(modelName))
        return paths;
    for (const QString& path : paths)
        DeleteFileOrFolderAt(path);
    return {};
}

} // namespace collect
