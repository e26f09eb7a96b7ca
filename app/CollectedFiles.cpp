#include "CollectedFiles.h"

#include <QDir>
#include <QFileInfo>

bool isSafeModelName(const QString& strModelName)
{
    if (strModelName.isEmpty() || strModelName == QLatin1String(".") || strModelName == QLatin1String(".."))
        return false;
    for (const QChar c : strModelName) {
        if (c == QLatin1Char('/') || c == QLatin1Char('\\') || c.category() == QChar::Other_Control)
            return false;
    }
    return true;
}

QStringList stagingFilePaths(const QString& strAppDir, const QString& strModelName)
{
    return {strAppDir + QString("/%1_regfile.dat").arg(strModelName),
            strAppDir + QString("/%1_strRegFile.dat").arg(strModelName),
            strAppDir + QString("/%1.xml").arg(strModelName)};
}

QString collectionFolderPath(const QString& strRoot, const QString& strModelName)
{
    return QString("%1/%2").arg(strRoot, strModelName);
}

bool DeleteFileOrFolderAt(const QString& strPath)
{
    if (strPath.isEmpty())
        return false;
    const QFileInfo info(strPath);
    // A link is removed as itself; its target is never followed.
    if (info.isFile() || info.isSymLink()) {
        info.dir().remove(info.fileName());
        return true;
    }
    QDir dir(strPath);
    if (!dir.exists())
        return true;
    const QFileInfoList entries = dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) {
        if (entry.isDir() && !entry.isSymLink())
            DeleteFileOrFolderAt(entry.absoluteFilePath());
        else
            dir.remove(entry.fileName());
    }
    return dir.rmdir(dir.absolutePath());
}

QStringList deleteCollectedFilesOf(const QString& strAppDir, const QString& strRoot, const QString& strModelName)
{
    QStringList paths = stagingFilePaths(strAppDir, strModelName);
    paths << collectionFolderPath(strRoot, strModelName);
    if (!isSafeModelName(strModelName))
        return paths;
    for (const QString& path : paths)
        DeleteFileOrFolderAt(path);
    return {};
}
