// The program's commands.
#ifndef PIXMILL_TOOLS_COMMANDS_H
#define PIXMILL_TOOLS_COMMANDS_H

#include <string>

#include "cli.h"

namespace pixmill::tools {

// Checks the operation's guarantees for a w x h input of `file` and works out
// its arguments; then runs it on one picture, converting to `result`.
Plan planFor(const OpSpec *op, const Options &opt, int32_t w, int32_t h, const std::string &file);
Picture applyPlan(const Plan &plan, Fmt result, Picture in);

int runTransform(const Options &opt); // convert, scale, rotate, mirror
int runInfo(const Options &opt);
int listOps();
int runGallery(const std::string &dir);
int runDemo(const std::string &dir);

} // namespace pixmill::tools

#endif
