#pragma once
// The two store actions a front end carries out after its own checks:
// making a planned camera and deleting a listed one. The window and the
// command line share them, so both leave the store in the same state.

#include "VirtualCameraCreation.h"

#include <QString>

#include <functional>
#include <optional>

class QSettings;

namespace VirtualStore {

enum class CreationOutcome {
    Created,         // folder, group and a full copy of the collection
    CopyIncomplete,  // the group is written; the copy stopped part way
    GroupNotWritten, // writeGroup refused; the empty camera folder remains
};

// A plan for the model whose camera folder does not exist yet: identities
// come from the clock, so a taken one is planned again a moment later.
// Empty when the model cannot name a camera or no free identity came up.
std::optional<VirtualCameraPlan> planFreshVirtualCamera(const QString& strModel, const QString& strCollectionRoot);

// Makes the camera folder (result not checked), has writeGroup put the
// camera's group into the configuration file, then copies the collection
// folder into the camera folder with overwrite. Nothing is copied when
// writeGroup returns false, and the still empty camera folder goes again.
// A copy that stops part way takes the camera back out of the store
// (deleteVirtualCamera with the settings that settingsInUse gives once the
// group is written), so no half camera is ever served.
CreationOutcome createVirtualCamera(const VirtualCameraPlan& plan,
                                    const std::function<bool(const QString& strGroup, const QString& strModel)>& writeGroup,
                                    const std::function<QSettings*()>& settingsInUse = {});

// Writes the camera's group and puts it on disk at once, so that a full or
// read-only disk is reported while the user still waits; on failure the
// group is taken out of the settings again.
bool writeVirtualCameraGroupToDisk(QSettings& settings, const QString& strGroup, const QString& strModel);

enum class DeletionOutcome {
    Deleted,
    UnsafeGroup,      // the group cannot name a camera folder: nothing touched
    HeldOpen,         // a serving program holds the camera: nothing touched
    OutsideStore,     // a link or a stray path would lead out of the store: nothing touched
    ConfigNotWritten, // the configuration file could not be rewritten: nothing touched
};

// Removes the group from the configuration file (written to disk first, when
// pSettings is given) and then the camera folder, never following a link.
// A model name that cannot name a file has no register file a server could
// hold, so it never blocks. strReason tells why a refusal happened.
DeletionOutcome deleteVirtualCamera(const QString& strGroup, const QString& strModel, QSettings* pSettings,
                                    QString* pReason = nullptr);

// Writes pending changes of the store's settings to disk (the file is
// replaced whole, never rewritten in place) and tells whether that worked.
bool syncStoreSettings(QSettings& settings);

} // namespace VirtualStore
