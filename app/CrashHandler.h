#pragma once
// Crash reports: a fatal signal (SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL) on
// any thread writes a report - signal, thread, time, backtrace, memory map -
// into userDataPath() + "/Dump/Quorvex_Dump" as "Quorvex_<yyyyMMddhhmmss>.DMP",
// then the process ends with the signal's default action.

#include <QString>

// The folder reports go to.
QString crashDumpFolder();

// Prepares the folder and installs the handlers; call once at start-up, on
// the GUI thread, before other threads exist. Returns false when the folder
// cannot be made: the handlers are installed anyway and then report to
// standard error only.
bool installCrashHandler();

// The report file name for a moment given in local time, seconds since the
// epoch shifted by the local UTC offset: "Quorvex_<yyyyMMddhhmmss>.DMP".
// The handler builds the same name without the C library's time functions,
// which are not safe in a signal handler.
QString crashReportFileName(long long localSecondsSinceEpoch);
