#include "AppFolders.h"

#include "XqFileNames.h"

#include "XQInterface.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFileInfo>

#include <atomic>

QString parentDirOf(const QString& applicationDirPath)
{
    return applicationDirPath.left(applicationDirPath.lastIndexOf(QLatin1Char('/')));
}

QString baseFolderOf(const QString& parentDirPath)
{
    return QString(parentDirPath).replace(QStringLiteral("/Quorvex"), QString());
}

QString suiteFolderOf(const QString& baseFolder)
{
    return baseFolder + QStringLiteral("/../");
}

QString virtualCameraRootOf(const QString& baseFolder)
{
    return baseFolder + QStringLiteral("/../common/") + QLatin1String(xq::names::kVirtualCameraFolder);
}

bool suiteHoldsCollections(const QString& baseFolder)
{
    const QString suite = QDir::cleanPath(QDir(suiteFolderOf(baseFolder)).absolutePath()) + QLatin1Char('/');
    for (const QLatin1String installed : {QLatin1String("/usr/lib/"), QLatin1String("/usr/local/lib/")})
        if (suite.startsWith(installed))
            return false;
    // The root is made on first use, so a missing one counts as writable
    // where the folder that would hold it is.
    QString folder = QDir::cleanPath(QDir(virtualCameraRootOf(baseFolder)).absolutePath());
    while (!QFileInfo::exists(folder) && folder.lastIndexOf(QLatin1Char('/')) > 0)
        folder = folder.left(folder.lastIndexOf(QLatin1Char('/')));
    const QFileInfo existing(folder);
    return existing.isDir() && existing.isWritable();
}

QString collectionRootOf(const QString& baseFolder, const QString& perUserRoot)
{
    return suiteHoldsCollections(baseFolder) ? virtualCameraRootOf(baseFolder) : perUserRoot;
}

QString GetParentDirPath()
{
    return parentDirOf(QCoreApplication::applicationDirPath());
}

QString GetBaseDirPath()
{
    return baseFolderOf(GetParentDirPath());
}

QString GetSuiteDirPath()
{
    return suiteFolderOf(GetBaseDirPath());
}

QString GetVirtualCameraRoot()
{
    const QString baseFolder = GetBaseDirPath();
    if (suiteHoldsCollections(baseFolder))
        return virtualCameraRootOf(baseFolder);
    const QString perUserRoot = XQInterface::userDataPath() + QLatin1Char('/') + QLatin1String(xq::names::kVirtualCameraFolder);
    static std::atomic_bool told{false};
    if (!told.exchange(true))
        qInfo().noquote() << "collections are kept per user in" << perUserRoot << "since the suite in"
                          << QDir::cleanPath(suiteFolderOf(baseFolder)) << "is installed or not writable";
    return perUserRoot;
}
