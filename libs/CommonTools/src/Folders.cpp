#include "XQInterface.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

namespace {

QString fromEnvironment(const char* name)
{
    return QString::fromLocal8Bit(qgetenv(name));
}

// $XDG_<kind>_HOME, else ~/<fallback>, per the XDG base directory rules
// (a relative value is invalid and ignored).
QString xdgHome(const char* variable, const char* fallbackBelowHome)
{
    const QString value = fromEnvironment(variable);
    if (!value.isEmpty() && QDir::isAbsolutePath(value))
        return value;
    return QDir::homePath() + "/" + fallbackBelowHome;
}

QString overrideOr(const char* variable, const QString& fallback)
{
    const QString value = fromEnvironment(variable);
    return value.isEmpty() ? fallback : value;
}

// The suite folder is the one holding "apps"; programs live in apps/ or in a
// subfolder of it. Without a QCoreApplication there is no executable folder
// to start from, so the working folder stands in.
QString suiteFolder()
{
    QString start = QCoreApplication::instance() ? QCoreApplication::applicationDirPath()
                                                 : QDir::currentPath();
    QDir dir(start);
    for (int level = 0; level < 3; ++level) {
        if (dir.dirName() == QLatin1String("apps")) {
            dir.cdUp();
            return dir.absolutePath();
        }
        if (!dir.cdUp())
            break;
    }
    return QDir(start + "/../..").absolutePath();
}

} // namespace

QString XQInterface::userDataPath()
{
    return overrideOr("QUORVEX_USER_DATA", xdgHome("XDG_DATA_HOME", ".local/share") + "/ZELTA");
}

QString XQInterface::programDataPath()
{
    return overrideOr("QUORVEX_PROGRAM_DATA", xdgHome("XDG_CONFIG_HOME", ".config") + "/ZELTA");
}

QString XQInterface::readonlyCfgPath()
{
    return overrideOr("QUORVEX_READONLY_CFG", suiteFolder() + "/common/config");
}

QString XQInterface::systemTemp()
{
    return overrideOr("QUORVEX_SYSTEM_TEMP", xdgHome("XDG_CACHE_HOME", ".cache") + "/ZELTA");
}

QString XQInterface::curExeVersion()
{
    return QStringLiteral("V" QUORVEX_VERSION_TEXT);
}

void XQInterface::killProcess(const QString& processName)
{
    // Child processes of the suite's tools end with their parent on Linux.
    Q_UNUSED(processName);
}
