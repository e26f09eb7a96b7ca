#include "VirtualCameraList.h"

#include "StorePaths.h"

#include <QDir>
#include <QSettings>
#include <QtDebug>

namespace VirtualStore {

QVector<VirtualCameraEntry> readVirtualCameraList(QSettings& settings)
{
    QVector<VirtualCameraEntry> entries;
    const QStringList groups = settings.childGroups();
    for (const QString& strGroup : groups) {
        if (strGroup == "Global")
            continue;
        // "[..]" in a hand-edited file must never turn deletion onto the
        // store itself.
        if (!isSafeStoreName(strGroup)) {
            qInfo() << "Skipping configuration group that cannot name a camera folder:" << strGroup;
            continue;
        }
        settings.beginGroup(strGroup);
        const QStringList keys = settings.childKeys();
        for (const QString& strKey : keys) {
            if (strKey == "chModelName") {
                entries.push_back({strGroup, settings.value(strKey, QString("")).toString()});
                break;
            }
        }
        settings.endGroup();
    }
    return entries;
}

QString virtualCameraEntryText(const QString& strModel, const QString& strGroup)
{
    // Joined, not filled in with arg(): a "%1" in a model name stays text.
    return strModel + "(" + strGroup + ")";
}

QStringList listCollectedModels(const QString& strRoot, bool& bExists)
{
    const QDir root(strRoot);
    bExists = root.exists();
    QStringList names = root.entryList(QDir::Dirs);
    names.removeOne(".");
    names.removeOne("..");
    return names;
}

} // namespace VirtualStore
