#include "VirtualCameraCreation.h"

#include "StorePaths.h"
#include "VirtualIdentity.h"

namespace VirtualStore {

std::optional<VirtualCameraPlan> planVirtualCamera(const QString& strPickedText, const QString& strCollectionRoot,
                                                   qint64 nClockMSecs)
{
    if (strPickedText.isEmpty())
        return std::nullopt;
    VirtualCameraPlan plan;
    plan.strModel = QString(strPickedText).remove('%');
    if (!isSafeStoreName(plan.strModel))
        return std::nullopt;
    plan.strSourceFolder = strCollectionRoot + "/" + plan.strModel;
    plan.strId = cameraIdFromClock(nClockMSecs);
    plan.strGroup = groupNameForId(plan.strId);
    plan.strCameraFolder = cameraFolder(plan.strGroup);
    return plan;
}

} // namespace VirtualStore
