// Shared by the tests of the conversions into planar 4:2:0: the arithmetic
// shift of their models, and the guarded buffers and test frames they use.
#ifndef PIXMILL_TEST_PLANAR_BUFFER_H
#define PIXMILL_TEST_PLANAR_BUFFER_H

#include <cmath>

#include "support/frames.h"

namespace pixmill::test {

// x >> bits on a signed value, rounding towards minus infinity, without >>.
inline int floorShift(int64_t x, int bits) { return int(std::floor(double(x) / double(int64_t(1) << bits))); }

} // namespace pixmill::test

#endif
