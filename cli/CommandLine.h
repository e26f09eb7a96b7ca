#pragma once
// The command line of quorvex-cli: one command, its operands and a few
// options. Parsing is pure, so tests feed it argument lists directly.

#include <QString>
#include <QStringList>

namespace cli {

enum class Command { None, Help, Version, Devices, Collect, Add, Cameras, Delete };

struct Request final {
    Command command = Command::None;
    bool json = false;
    bool help = false; // --help given for the command
    bool all = false;  // devices --all, collect --all
    QStringList operands;
    QString error;     // non-empty: the command line is wrong
};

// Arguments without the program name. Options may stand anywhere; "--"
// ends them, so a serial that starts with "-" can still be named.
Request parseCommandLine(const QStringList& arguments);

// Usage text of one command, or of the program for None and Help.
QString usageText(Command command);

// The name a user types for a command; empty for None.
QString commandName(Command command);

} // namespace cli
