#include "AppFolders.h"

#include <QCoreApplication>

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
    return baseFolder + QStringLiteral("/../common/VirtualCamera");
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
    return virtualCameraRootOf(GetBaseDirPath());
}
