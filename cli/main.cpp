// quorvex-cli: the tool's main job without a window. Parses the command
// line and hands over to the command; the commands live in the library.

#include "CliMain.h"

int main(int argc, char* argv[])
{
    return cli::runCli(argc, argv);
}
