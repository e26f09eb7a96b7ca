#include "VirtualCameraActions.h"

#include "CollectedFiles.h"
#include "FileOperations.h"
#include "StorePaths.h"
#include "SupportedModels.h"
#include "VirtualCameraConfig.h"

#include <algorithm>

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QThread>
#include <QStringList>
#include <QPair>
#include <QSettings>
#include <QVariant>
#include <QVector>

namespace VirtualStore {

namespace {
// IDs come from a 10 ms clock; adding twice in a row must not land on the
// camera just made.
constexpr int kPlanAttempts = 20;
constexpr unsigned long kClockStepMs = 10;
} // namespace

std::optional<VirtualCameraPlan> planFreshVirtualCamera(const QString& strModel, const QString& strCollectionRoot)
{
    for (int attempt = 0; attempt < kPlanAttempts; ++attempt) {
        std::optional<VirtualCameraPlan> plan =
            planVirtualCamera(strModel, strCollectionRoot, QDateTime::currentMSecsSinceEpoch());
        if (!plan || !QFileInfo::exists(plan->cameraFolder))
            return plan;
        QThread::msleep(kClockStepMs);
    }
    return std::nullopt;
}

CreationOutcome createVirtualCamera(const VirtualCameraPlan& plan,
                                    const std::function<bool(const QString& strGroup, const QString& strModel)>& writeGroup,
                                    const std::function<QSettings*()>& settingsInUse)
{
    QDir().mkpath(plan.cameraFolder);
    if (!writeGroup(plan.group, plan.model)) {
        QDir().rmdir(plan.cameraFolder); // only while still empty
        return CreationOutcome::GroupNotWritten;
    }
    if (CopyDirectory(plan.sourceFolder, plan.cameraFolder, true))
        return CreationOutcome::Created;
    deleteVirtualCamera(plan.group, plan.model, settingsInUse ? settingsInUse() : nullptr);
    return CreationOutcome::CopyIncomplete;
}

bool writeVirtualCameraGroupToDisk(QSettings& settings, const QString& strGroup, const QString& strModel)
{
    writeVirtualCameraGroup(settings, strGroup, strModel, supportedModels());
    if (syncStoreSettings(settings))
        return true;
    settings.remove(strGroup);
    return false;
}

bool syncStoreSettings(QSettings& settings)
{
    // QSettings writes a new file and renames it over the old one, and
    // refuses to fall back to rewriting in place.
    settings.setAtomicSyncRequired(true);
    settings.sync();
    // Its status keeps the first error for good, so the file itself is read
    // back: written means that what is on disk is what is in memory.
    QSettings onDisk(settings.fileName(), QSettings::IniFormat);
    onDisk.setIniCodec("utf-8");
    const QStringList keys = settings.allKeys();
    if (onDisk.status() != QSettings::NoError || onDisk.allKeys().size() != keys.size())
        return false;
    return std::all_of(keys.cbegin(), keys.cend(), [&](const QString& strKey) {
        return onDisk.value(strKey).toString() == settings.value(strKey).toString();
    });
}

namespace {

// Removes a group and writes the file; on failure the group is put back in
// memory, so the settings object again matches the untouched file.
bool RemoveGroupOnDisk(QSettings& settings, const QString& strGroup)
{
    QVector<QPair<QString, QVariant>> saved;
    settings.beginGroup(strGroup);
    for (const QString& strKey : settings.allKeys())
        saved.append({strKey, settings.value(strKey)});
    settings.endGroup();
    settings.remove(strGroup);
    if (syncStoreSettings(settings))
        return true;
    for (const auto& entry : saved)
        settings.setValue(strGroup + "/" + entry.first, entry.second);
    return false;
}

} // namespace

DeletionOutcome deleteVirtualCamera(const QString& strGroup, const QString& strModel, QSettings* pSettings,
                                    QString* pReason)
{
    QString strReason;
    const auto refuse = [&](DeletionOutcome outcome, const QString& strWhy) {
        if (pReason)
            *pReason = strWhy;
        return outcome;
    };
    if (!isSafeStoreName(strGroup))
        return refuse(DeletionOutcome::UnsafeGroup, QStringLiteral("the group cannot name a folder"));
    if (isSafeStoreName(strModel) && IsFileOccupied(registerFilePath(strGroup, strModel)))
        return refuse(DeletionOutcome::HeldOpen, QStringLiteral("a serving program holds the camera"));
    if (!isCameraFolderInsideStore(strGroup, strReason))
        return refuse(DeletionOutcome::OutsideStore, strReason);
    // The group goes first: when the file cannot be written the camera
    // stays whole, and a folder whose removal fails afterwards is unused
    // space that no list shows, never a listed camera without files.
    if (pSettings && !RemoveGroupOnDisk(*pSettings, strGroup))
        return refuse(DeletionOutcome::ConfigNotWritten, QStringLiteral("the configuration file cannot be written"));
    collect::deleteFileOrFolderAt(cameraFolder(strGroup));
    return DeletionOutcome::Deleted;
}

} // namespace VirtualStore
