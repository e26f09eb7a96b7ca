#include "StoreCommands.h"

#include "AppFolders.h"
#include "CommandLine.h"
#include "Console.h"
#include "ExitCodes.h"
#include "FileOperations.h"
#include "StorePaths.h"
#include "SupportedModels.h"
#include "VirtualCameraActions.h"
#include "VirtualCameraConfig.h"
#include "VirtualCameraCreation.h"
#include "VirtualCameraList.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QSettings>

#include <memory>
#include <optional>

namespace cli {

namespace {

int Refuse(const Request& request, const Console& console, int code, const QString& message)
{
    console.err(QStringLiteral("quorvex-cli: %1\n").arg(message));
    if (request.json)
        console.json({{QStringLiteral("error"), message}});
    return code;
}

std::unique_ptr<QSettings> OpenStoreSettings()
{
    return std::unique_ptr<QSettings>(
        VirtualStore::openVirtualCameraSettings(VirtualStore::configFilePath(), nullptr));
}

bool IsHeld(const VirtualStore::VirtualCameraEntry& entry)
{
    return VirtualStore::isSafeStoreName(entry.model)
        && VirtualStore::IsFileOccupied(VirtualStore::registerFilePath(entry.group, entry.model));
}

QString Shown(const QString& path)
{
    return printable(QDir::cleanPath(path));
}

} // namespace

int runAdd(const Request& request, const Console& console)
{
    const QString model = request.operands.value(0);
    const QString root = GetVirtualCameraRoot();
    bool rootExists = false;
    const QStringList collected = VirtualStore::listCollectedModels(root, rootExists);
    if (!collected.contains(model)) {
        QStringList shown;
        for (const QString& name : collected)
            shown << printable(name);
        return Refuse(request, console, kExitNotFound,
                      QStringLiteral("\"%1\" has not been collected; collected models in %2: %3")
                          .arg(printable(model), Shown(root),
                               shown.isEmpty() ? QStringLiteral("none") : shown.join(QStringLiteral(", "))));
    }
    const std::optional<VirtualStore::VirtualCameraPlan> plan = VirtualStore::planFreshVirtualCamera(model, root);
    // "%" is dropped from a model's name when planned, so the copy would
    // come from another folder.
    if (!plan || plan->model != model)
        return Refuse(request, console, kExitFailed,
                      QStringLiteral("\"%1\" cannot name a virtual camera").arg(printable(model)));

    const QString configPath = VirtualStore::configFilePath();
    if (!VirtualStore::isConfigFileWritable(configPath))
        return Refuse(request, console, kExitFailed,
                      QStringLiteral("the store's configuration file %1 cannot be written").arg(Shown(configPath)));

    const std::unique_ptr<QSettings> settings = OpenStoreSettings();
    const VirtualStore::CreationOutcome outcome = VirtualStore::createVirtualCamera(
        *plan,
        [&settings](const QString& strGroup, const QString& strModel) {
            return VirtualStore::writeVirtualCameraGroupToDisk(*settings, strGroup, strModel);
        },
        [&settings] { return settings.get(); });
    if (outcome == VirtualStore::CreationOutcome::GroupNotWritten)
        return Refuse(request, console, kExitFailed,
                      QStringLiteral("the store's configuration file %1 cannot be written").arg(Shown(configPath)));
    if (outcome == VirtualStore::CreationOutcome::CopyIncomplete)
        return Refuse(request, console, kExitFailed,
                      QStringLiteral("copying %1 into %2 failed; virtual camera %3 was not kept")
                          .arg(Shown(plan->sourceFolder), Shown(plan->cameraFolder), plan->group));

    if (request.json)
        console.json({{QStringLiteral("group"), plan->group},
                      {QStringLiteral("model"), plan->model},
                      {QStringLiteral("folder"), QDir::cleanPath(plan->cameraFolder)},
                      {QStringLiteral("config"), QDir::cleanPath(configPath)}});
    else
        console.out(plan->group + QLatin1Char('\n'));
    return kExitOk;
}

int runCameras(const Request& request, const Console& console)
{
    const std::unique_ptr<QSettings> settings = OpenStoreSettings();
    const QVector<VirtualStore::VirtualCameraEntry> entries = VirtualStore::readVirtualCameraList(*settings);
    if (request.json) {
        QJsonArray cameras;
        for (const VirtualStore::VirtualCameraEntry& entry : entries)
            cameras.append(QJsonObject{{QStringLiteral("group"), entry.group},
                                       {QStringLiteral("model"), entry.model},
                                       {QStringLiteral("folder"),
                                        QDir::cleanPath(VirtualStore::cameraFolder(entry.group))},
                                       {QStringLiteral("held"), IsHeld(entry)}});
        console.json({{QStringLiteral("store"), QDir::cleanPath(VirtualStore::storePath())},
                      {QStringLiteral("cameras"), cameras}});
        return kExitOk;
    }
    if (entries.isEmpty()) {
        console.err(QStringLiteral("quorvex-cli: no virtual cameras in %1\n").arg(Shown(VirtualStore::storePath())));
        return kExitOk;
    }
    int groupWidth = 5;
    int modelWidth = 5;
    for (const VirtualStore::VirtualCameraEntry& entry : entries) {
        groupWidth = std::max(groupWidth, static_cast<int>(printable(entry.group).size()));
        modelWidth = std::max(modelWidth, static_cast<int>(printable(entry.model).size()));
    }
    const auto line = [&](const QString& group, const QString& model, const QString& held, const QString& folder) {
        return group.leftJustified(groupWidth + 2) + model.leftJustified(modelWidth + 2) + held.leftJustified(6)
            + folder + QLatin1Char('\n');
    };
    QString table = line(QStringLiteral("GROUP"), QStringLiteral("MODEL"), QStringLiteral("HELD"),
                         QStringLiteral("FOLDER"));
    for (const VirtualStore::VirtualCameraEntry& entry : entries)
        table += line(printable(entry.group), printable(entry.model),
                      IsHeld(entry) ? QStringLiteral("yes") : QStringLiteral("no"),
                      Shown(VirtualStore::cameraFolder(entry.group)));
    console.out(table);
    return kExitOk;
}

int runDelete(const Request& request, const Console& console)
{
    const QString group = request.operands.value(0);
    const std::unique_ptr<QSettings> settings = OpenStoreSettings();
    const QVector<VirtualStore::VirtualCameraEntry> entries = VirtualStore::readVirtualCameraList(*settings);
    const auto it = std::find_if(entries.cbegin(), entries.cend(),
                                 [&group](const VirtualStore::VirtualCameraEntry& entry) { return entry.group == group; });
    if (it == entries.cend())
        return Refuse(request, console, kExitNotFound,
                      QStringLiteral("no virtual camera %1 in %2").arg(printable(group), Shown(VirtualStore::storePath())));

    if (!VirtualStore::isConfigFileWritable(VirtualStore::configFilePath()))
        return Refuse(request, console, kExitFailed,
                      QStringLiteral("the store's configuration file %1 cannot be written")
                          .arg(Shown(VirtualStore::configFilePath())));

    QString reason;
    switch (VirtualStore::deleteVirtualCamera(it->group, it->model, settings.get(), &reason)) {
    case VirtualStore::DeletionOutcome::UnsafeGroup: // the list never holds one
        return Refuse(request, console, kExitFailed,
                      QStringLiteral("\"%1\" cannot name a camera folder").arg(printable(group)));
    case VirtualStore::DeletionOutcome::HeldOpen:
        return Refuse(request, console, kExitBusy,
                      QStringLiteral("virtual camera %1 is connected to a client; disconnect it and try again")
                          .arg(printable(group)));
    case VirtualStore::DeletionOutcome::OutsideStore:
        return Refuse(request, console, kExitFailed,
                      QStringLiteral("not deleting %1: %2").arg(printable(group), printable(reason)));
    case VirtualStore::DeletionOutcome::ConfigNotWritten:
        return Refuse(request, console, kExitFailed,
                      QStringLiteral("the store's configuration file %1 cannot be written; nothing was deleted")
                          .arg(Shown(VirtualStore::configFilePath())));
    case VirtualStore::DeletionOutcome::Deleted:
        break;
    }
    if (request.json)
        console.json({{QStringLiteral("deleted"), group}, {QStringLiteral("model"), it->model}});
    else
        console.out(QStringLiteral("deleted %1 (%2)\n").arg(printable(group), printable(it->model)));
    return kExitOk;
}

} // namespace cli
