#pragma once
// The whole program behind main(): environment, parsing, dispatch.

namespace cli {

int runCli(int argc, char* argv[]);

} // namespace cli
