#pragma once
// Crash reports: a fatal signal on any thread writes a report into
// userDataPath() + "/Dump/Quorvex_Dump" and the process then ends with the
// signal's default action.

#include <QString>

// The folder reports go to.
QString crashDumpFolder();

// Prepares the folder and installs the handlers; call once at start-up.
void installCrashHandler();
