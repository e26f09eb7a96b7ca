#pragma once
// What "Add" does for a picked collected model: the names and folders of
// the new virtual camera.

#include <QString>

#include <optional>

namespace VirtualStore {

struct VirtualCameraPlan final {
    QString strModel;        // the picked text without any "%"
    QString strSourceFolder; // the model's collection folder
    QString strId;           // eight digits from the clock
    QString strGroup;        // "Vir" + ID
    QString strCameraFolder; // the store's camera folder for the group
};

// Nothing for an empty text, or for a model name that cannot name a folder.
std::optional<VirtualCameraPlan> planVirtualCamera(const QString& strPickedText, const QString& strCollectionRoot,
                                                   qint64 nClockMSecs);

} // namespace VirtualStore
