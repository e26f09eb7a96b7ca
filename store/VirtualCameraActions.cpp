#include "VirtualCameraActions.h"

#include "CollectedFiles.h"
#include "FileOperations.h"
#include "StorePaths.h"

#include <QDir>
#include <QSettings>

namespace VirtualStore {

CreationOutcome CreateVirtualCamera(const VirtualCameraPlan& plan,
                                    const std::function<bool(const QString& strGroup, const QString& strModel)>& writeGroup)
{
    QDir().mkpath(plan.strCameraFolder);
    if (!writeGroup(plan.strGroup, plan.strModel))
        return CreationOutcome::GroupNotWritten;
    return CopyDirectory(plan.strSourceFolder, plan.strCameraFolder, true) ? CreationOutcome::Created
                                                                           : CreationOutcome::CopyIncomplete;
}

DeletionOutcome DeleteVirtualCamera(const QString& strGroup, const QString& strModel, QSettings* pSettings)
{
    if (!IsSafeStoreName(strGroup))
        return DeletionOutcome::UnsafeGroup;
    if (IsSafeStoreName(strModel) && IsFileOccupied(RegisterFilePath(strGroup, strModel)))
        return DeletionOutcome::HeldOpen;
    collect::DeleteFileOrFolderAt(CameraFolder(strGroup));
    if (pSettings)
        pSettings->remove(strGroup);
    return DeletionOutcome::Deleted;
}

} // namespace VirtualStore
