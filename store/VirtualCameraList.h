#pragma once
// Reading the store back: the cameras its file lists, and the collected
// models a camera can be made from.

#include <QString>
#include <QStringList>
#include <QVector>

class QSettings;

namespace VirtualStore {

struct VirtualCameraEntry final {
    QString group;
    QString model;
};

// One entry per camera group that has a chModelName key, in the settings
// object's group order (by name as text, so Vir10 before Vir2). "Global"
// is skipped, and so is a group whose name could not name a camera folder.
QVector<VirtualCameraEntry> readVirtualCameraList(QSettings& settings);

// "<model>(<group>)", the text of a list entry.
QString virtualCameraEntryText(const QString& strModel, const QString& strGroup);

// The folder names directly below root (hidden ones left out), by name
// without regard to case. bExists tells whether root exists at all.
QStringList listCollectedModels(const QString& strRoot, bool& bExists);

} // namespace VirtualStore
