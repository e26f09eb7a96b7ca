#include "CliMain.h"

#include "AppFolders.h"
#include "CollectCommand.h"
#include "CommandLine.h"
#include "Console.h"
#include "DeviceCommands.h"
#include "ExitCodes.h"
#include "StoreCommands.h"
#include "XQInterface.h"

#include <QCoreApplication>

#include <unistd.h>

namespace cli {

namespace {

int Dispatch(const Request& request, const Console& console)
{
    switch (request.command) {
    case Command::Devices:
        return runDevices(request, console);
    case Command::Collect:
        return runCollect(request, console);
    case Command::Add:
        return runAdd(request, console);
    case Command::Cameras:
        return runCameras(request, console);
    case Command::Delete:
        return runDelete(request, console);
    case Command::Version:
        console.out(QStringLiteral("quorvex-cli %1\n").arg(XQInterface::curExeVersion()));
        return kExitOk;
    case Command::Help:
    case Command::None:
        break;
    }
    return kExitUsage;
}

} // namespace

int runCli(int argc, char* argv[])
{
    const Console console(takeStandardOutput(), STDERR_FILENO);
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quorvex-cli"));

    const Request request = parseCommandLine(QCoreApplication::arguments().mid(1));
    if (!request.error.isEmpty()) {
        console.err(QStringLiteral("quorvex-cli: %1\n\n%2").arg(request.error, usageText(request.command)));
        return kExitUsage;
    }
    if (request.help || request.command == Command::Help) {
        Command topic = request.command;
        if (request.command == Command::Help && !request.operands.isEmpty()) {
            topic = parseCommandLine({request.operands.first()}).command;
            if (topic == Command::None) {
                console.err(QStringLiteral("quorvex-cli: no command \"%1\"\n\n%2")
                                .arg(printable(request.operands.first()), usageText(Command::None)));
                return kExitUsage;
            }
        }
        console.out(usageText(topic));
        return kExitOk;
    }

    // The engine logs like the window does, into the suite's log file.
    XQInterface::initLog4qtConfig(GetSuiteDirPath() + "/common/config/log4qt_Quorvex.conf");
    return Dispatch(request, console);
}

} // namespace cli
