#pragma once
// The collection job derives its folders from where its executable lies:
// staging files go next to it and collection folders to
// <exe dir>/../../common/VirtualCamera. So that a test never writes into the
// build or source tree, its program re-executes itself from a copy at
// <test home>/suite/apps/Quorvex/<name>, where every folder is its own.

#include <QString>

// Call first thing in main(). Returns only in the relocated copy; otherwise
// it execs the copy (same pid, same arguments) or exits with a message.
void RunFromOwnSuiteLayout(char** argv);

// Removes the home when it was made here because none was given (a program
// started by hand); a home given by CTest stays for inspection.
void RemoveTemporaryHome();

// The folders of the relocated copy.
QString SuiteRoot();       // <home>/suite
QString ApplicationDir();  // <home>/suite/apps/Quorvex
QString CollectionRoot();  // <home>/suite/common/VirtualCamera
