#include "VirtualCameraCreation.h"

#include "StorePaths.h"
#include "VirtualIdentity.h"

namespace VirtualStore {

std::optional<VirtualCameraPlan> PlanVirtualCamera(const QString& strPickedText, const QString& strCollectionRoot,
                                                   qint64 nClockMSecs)
{
    if (strPickedText.isEmpty())
        return std::nullopt;
    VirtualCameraPlan plan;
    plan.strModel = QString(strPickedText).remove('%');
    if (!IsSafeStoreName(plan.strModel))
        return std::nullopt;
    plan.strSourceFolder = strCollectionRoot + "/" + plan.strModel;
    plan.strId = CameraIdFromClock(nClockMSecs);
    plan.strGroup = GroupNameForId(plan.strId);
    plan.strCameraFolder = CameraFolder(plan.strGroup);
    return plan;
}

} // namespace VirtualStore
