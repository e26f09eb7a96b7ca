// Writes a register recording as the two dump files, <model>_regfile.dat
// (number, boolean, enumeration and command registers) and
// <model>_strRegFile.dat (string registers). Format: docs/register-dump-format.md.
#pragma once

#include "RegisterRecorder.h"

#include <string>

namespace xq {

// Where the dumps go: $QUORVEX_SDK_DUMP_DIR if set, else the folder of the
// running executable.
std::string dumpDirectory();

// A model name is usable in a file name if it cannot leave the folder.
bool isSafeModelName(const std::string& model);

// Writes both files into directory ("" for dumpDirectory()), each replaced
// atomically and only once both are complete on disk. Returns XQ_OK,
// XQ_ERR_INVALID_PARAMETER for an unsafe model name, or XQ_ERR_RESOURCE when
// a file could not be written completely (missing folder, disk full, ...).
int writeRegisterDumps(const RegisterRecording& recording, const std::string& directory, const std::string& model,
                       const std::string& deviceId);

// The text of one dump file; string selects which accesses it holds.
std::string formatRegisterDump(const RegisterRecording& recording, bool strings, const std::string& model,
                               const std::string& deviceId);

} // namespace xq
