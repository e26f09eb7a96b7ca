#include "SingleInstance.h"

#include <QDir>
#include <QLockFile>
#include <QStandardPaths>

#include <memory>

namespace {

std::unique_ptr<QLockFile> g_instanceLock;

QString lockPath()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return folder + "/Quorvex.lock";
}

} // namespace

bool isAlreadyRunning(const QStringList& arguments)
{
    Q_UNUSED(arguments);
    auto lock = std::make_unique<QLockFile>(lockPath());
    lock->setStaleLockTime(0);
    if (!lock->tryLock(0))
        return true;
    g_instanceLock = std::move(lock);
    return false;
}

void closeInstanceGuard()
{
    g_instanceLock.reset();
}
