// Command-line parsing into Options.
#ifndef PIXMILL_TOOLS_ARGS_H
#define PIXMILL_TOOLS_ARGS_H

#include <string>
#include <vector>

#include "cli.h"

namespace pixmill::tools {

// Parses the arguments after the command word. In `scale`, --size is the
// target size; elsewhere it is the size of raw input (--in-size everywhere).
Options parseArgs(const std::string &command, const std::vector<std::string> &args);

} // namespace pixmill::tools

#endif
