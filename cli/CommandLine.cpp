#include "CommandLine.h"

#include <array>
#include <utility>

namespace cli {

namespace {

constexpr std::array<std::pair<const char*, Command>, 7> kCommands{{
    {"help", Command::Help},
    {"version", Command::Version},
    {"devices", Command::Devices},
    {"collect", Command::Collect},
    {"add", Command::Add},
    {"cameras", Command::Cameras},
    {"delete", Command::Delete},
}};

Command CommandNamed(const QString& name)
{
    for (const auto& [text, command] : kCommands)
        if (name == QLatin1String(text))
            return command;
    return Command::None;
}

bool TakesAll(Command command)
{
    return command == Command::Devices || command == Command::Collect;
}

// Checks operand counts once the whole line is read.
QString OperandError(const Request& request)
{
    const int count = request.operands.size();
    switch (request.command) {
    case Command::Help:
        return count > 1 ? QStringLiteral("help takes at most one command name") : QString();
    case Command::Version:
    case Command::Devices:
    case Command::Cameras:
        return count > 0 ? QStringLiteral("%1 takes no operands, got \"%2\"")
                               .arg(commandName(request.command), request.operands.first())
                         : QString();
    case Command::Collect:
        if (request.all && count > 0)
            return QStringLiteral("collect takes either serial numbers or --all, not both");
        if (!request.all && count == 0)
            return QStringLiteral("collect needs serial numbers or --all");
        return QString();
    case Command::Add:
        return count != 1 ? QStringLiteral("add needs exactly one collected model name") : QString();
    case Command::Delete:
        return count != 1 ? QStringLiteral("delete needs exactly one camera group (Vir...)") : QString();
    case Command::None:
        break;
    }
    return QString();
}

} // namespace

Request parseCommandLine(const QStringList& arguments)
{
    Request request;
    bool optionsEnded = false;
    bool wantsVersion = false;
    for (const QString& argument : arguments) {
        if (!optionsEnded && argument == QLatin1String("--")) {
            optionsEnded = true;
            continue;
        }
        if (!optionsEnded && argument.startsWith(QLatin1Char('-')) && argument.size() > 1) {
            if (argument == QLatin1String("--json"))
                request.json = true;
            else if (argument == QLatin1String("--help") || argument == QLatin1String("-h"))
                request.help = true;
            else if (argument == QLatin1String("--version"))
                wantsVersion = true;
            else if (argument == QLatin1String("--all") || argument == QLatin1String("-a"))
                request.all = true;
            else if (request.error.isEmpty())
                request.error = QStringLiteral("unknown option \"%1\"").arg(argument);
            continue;
        }
        if (request.command == Command::None) {
            request.command = CommandNamed(argument);
            if (request.command == Command::None && request.error.isEmpty())
                request.error = QStringLiteral("unknown command \"%1\"").arg(argument);
            continue;
        }
        request.operands << argument;
    }

    if (request.command == Command::None) {
        if (request.help)
            request.command = Command::Help;
        else if (wantsVersion)
            request.command = Command::Version;
        else if (request.error.isEmpty())
            request.error = QStringLiteral("no command given");
    }
    if (!request.error.isEmpty() || request.help)
        return request;
    if (request.all && !TakesAll(request.command)) {
        request.error = QStringLiteral("--all belongs to devices and collect, not %1").arg(commandName(request.command));
        return request;
    }
    request.error = OperandError(request);
    return request;
}

QString commandName(Command command)
{
    for (const auto& [text, known] : kCommands)
        if (known == command)
            return QLatin1String(text);
    return QString();
}

QString usageText(Command command)
{
    switch (command) {
    case Command::Devices:
        return QStringLiteral(
            "usage: quorvex-cli [--json] devices [--all]\n"
            "\n"
            "Lists the code readers the tool's window would list: serial number, model,\n"
            "address, firmware version, and whether it can be opened now (another client\n"
            "may hold it). With --all, virtual cameras (serial \"Vir...\") and cameras that\n"
            "are no code readers are listed too, with their kind. Takes about a second.\n");
    case Command::Collect:
        return QStringLiteral(
            "usage: quorvex-cli [--json] collect SERIAL... | --all\n"
            "\n"
            "Collects the named code readers, or every listed one, all at the same time:\n"
            "images with their codes, the GenICam description, register dumps and the\n"
            "feature tree, into <suite>/common/VirtualCamera/<model> (for an installed or\n"
            "read-only suite: <user data>/VirtualCamera/<model>; each folder is printed).\n"
            "Shows one progress bar per device on a terminal, plain lines otherwise. A\n"
            "device held by another client is skipped and reported. A collection replaces\n"
            "the model's earlier one only when it finished well; a failed or stopped job\n"
            "removes only what it wrote itself.\n"
            "Reads the ignore list ./Config/Config.json from the working directory, like\n"
            "the tool: run it from its own folder to use the shipped list.\n"
            "Ctrl-C or SIGTERM stops every job within a second; earlier collections stay.\n");
    case Command::Add:
        return QStringLiteral(
            "usage: quorvex-cli [--json] add MODEL\n"
            "\n"
            "Creates a virtual camera from a collected model: a camera folder in the\n"
            "store, a group in VirtualCameraConfig.ini and a copy of the collection.\n"
            "Prints the camera's group (\"Vir\" and eight digits), which is also its\n"
            "serial number.\n");
    case Command::Cameras:
        return QStringLiteral(
            "usage: quorvex-cli [--json] cameras\n"
            "\n"
            "Lists the virtual cameras of the store: group, model, folder, and whether a\n"
            "serving program holds the camera open for a client.\n");
    case Command::Delete:
        return QStringLiteral(
            "usage: quorvex-cli [--json] delete GROUP\n"
            "\n"
            "Deletes a virtual camera: its folder and its group. Refused while a client\n"
            "is connected to the camera (a serving program holds it open).\n");
    case Command::Version:
        return QStringLiteral("usage: quorvex-cli version\n\nPrints the program's version.\n");
    case Command::None:
    case Command::Help:
        break;
    }
    return QStringLiteral(
        "usage: quorvex-cli [--json] COMMAND [ARGUMENTS]\n"
        "\n"
        "The tool's main job without a window, over the same engine and store.\n"
        "\n"
        "commands:\n"
        "  devices [--all]        list the code readers on the network\n"
        "  collect SERIAL...      collect the named code readers\n"
        "  collect --all          collect every listed code reader\n"
        "  add MODEL              create a virtual camera from a collected model\n"
        "  cameras                list the virtual cameras of the store\n"
        "  delete GROUP           delete a virtual camera\n"
        "  help [COMMAND]         show this text or a command's\n"
        "\n"
        "options:\n"
        "  --json                 machine-readable output on standard output\n"
        "  -h, --help             help, also after a command\n"
        "  --version              the program's version\n"
        "\n"
        "exit status: 0 all well, 1 a job or a write failed, 2 wrong command line,\n"
        "3 no such device, model or camera, 4 held by another client, 130 interrupted.\n");
}

} // namespace cli
