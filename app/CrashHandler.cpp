#include "CrashHandler.h"

#include "XQInterface.h"

#include <QDir>

QString crashDumpFolder()
{
    return XQInterface::userDataPath() + "/Dump/Quorvex_Dump";
}

void installCrashHandler()
{
    QDir().mkpath(crashDumpFolder());
}
