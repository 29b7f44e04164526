// The operation table: every export of the library with the checks that come
// before its call, and the choice of an operation for a command.
#ifndef PIXMILL_TOOLS_OPS_H
#define PIXMILL_TOOLS_OPS_H

#include <string>
#include <vector>

#include "cli.h"
#include "streams.h"

namespace pixmill::tools {

void addRgbOps(std::vector<OpSpec> &ops);
void addYuvOps(std::vector<OpSpec> &ops);
void addGeometryOps(std::vector<OpSpec> &ops);
void addScaleOps(std::vector<OpSpec> &ops);

// A result of -1 after every check passed is a fault of the program.
void requireRan(int32_t result, const char *op);

// Whether a picture in `from` can stand for `to` (yv12 and yuv420p, rgb24 and
// bgr24 both ways; rgb24 and bgr24 into rgb565 when `lossy`), and the copy.
bool adaptable(Fmt from, Fmt to, bool lossy);
Picture adapt(Picture &&pic, Fmt to);

// The operation for `opt` (its command, --op, --to, --matrix, --rect,
// --ratio) on input of format `in`, to be written to `container`.
const OpSpec *chooseOp(const Options &opt, Fmt in, Container out);

} // namespace pixmill::tools

#endif
