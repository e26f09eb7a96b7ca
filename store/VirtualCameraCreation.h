#pragma once
// What "Add" does for a picked collected model: the names and folders of
// the new virtual camera.

#include <QString>

#include <optional>

namespace VirtualStore {

struct VirtualCameraPlan final {
    QString model;        // the picked text without any "%"
    QString sourceFolder; // the model's collection folder
    QString id;           // eight digits from the clock
    QString group;        // "Vir" + ID
    QString cameraFolder; // the store's camera folder for the group
};

// Nothing for an empty text, or for a model name that cannot name a folder.
std::optional<VirtualCameraPlan> planVirtualCamera(const QString& strPickedText, const QString& strCollectionRoot,
                                                   qint64 nClockMSecs);

} // namespace VirtualStore
