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
    plan.model = QString(strPickedText).remove('%');
    if (!isSafeStoreName(plan.model))
        return std::nullopt;
    plan.sourceFolder = strCollectionRoot + "/" + plan.model;
    plan.id = cameraIdFromClock(nClockMSecs);
    plan.group = groupNameForId(plan.id);
    plan.cameraFolder = cameraFolder(plan.group);
    return plan;
}

} // namespace VirtualStore
