#pragma once
// What quorvex-cli's exit status tells a calling script.

namespace cli {

enum ExitCode : int {
    kExitOk = 0,
    kExitFailed = 1,      // a job failed, a file could not be written
    kExitUsage = 2,       // the command line is wrong
    kExitNotFound = 3,    // no such device, collected model or camera
    kExitBusy = 4,        // another client holds the device or the camera
    kExitInterrupted = 130,
};

} // namespace cli
