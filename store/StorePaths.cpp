#include "StorePaths.h"

#include "XQInterface.h"
#include "store_names.h"

#include <QDir>

namespace VirtualStore {

QString SystemTempPath()
{
    return QDir::toNativeSeparators(XQInterface::systemTemp());
}

QString StorePath()
{
    return SystemTempPath() + "/VirtualCamera";
}

QString ConfigFilePath()
{
    return StorePath() + "/VirtualCameraConfig.ini";
}

QString CameraFolder(const QString& strGroup)
{
    // Joined, not filled in with arg(): a "%1" inside the temporary folder's
    // path must stay text.
    return StorePath() + "/Cameras/" + strGroup;
}

QString RegisterFilePath(const QString& strGroup, const QString& strModel)
{
    return CameraFolder(strGroup) + "/" + strModel + "_regfile.dat";
}

bool IsSafeStoreName(const QString& strName)
{
    return quorvex::store::isSafeStoreName(strName.toStdString());
}

} // namespace VirtualStore
