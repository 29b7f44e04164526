// 16-bit rectangle turns past their callers' limits, in buffers of exactly
// the bytes the arguments describe: negative positions, surface sizes and
// strides are served as empty rectangles, without a byte outside the buffers.
// (Odd sizes, codes above 3, positions past the surfaces and negative or
// unknown sizes and layouts are among the random cases of the turns and
// flips, whose buffers are as exact.)
#include <gtest/gtest.h>

#include "support/open_inputs.h"

namespace {

using namespace pixmill::test;

// A 16-bit rectangle turn, to 16 bits or to 24, on surfaces of exactly the
// arguments' size, with one position, surface side or stride negative.
const OpenInput kOpenInputs[] = {
    {"16-bit rectangle turns: a negative position, surface size or stride",
     [](ExactBuffers &b, Random &rng) {
         // sw, sh, srcX, srcY, srcW, srcH, dstX, dstY, dw, dh, stride (24 bits)
         int32_t v[11] = {rng.range(0, 20), rng.range(0, 20), 0, 0, rng.range(-2, 24), rng.range(-2, 24),
                          0, 0, rng.range(0, 20), rng.range(0, 20)};
         v[2] = rng.range(0, v[0]), v[3] = rng.range(0, v[1]), v[6] = rng.range(0, v[8]), v[7] = rng.range(0, v[9]);
         v[10] = 3 * v[8] + rng.range(0, 2);
         const bool to24 = rng.coin();
         const int32_t fields[] = {0, 1, 2, 3, 6, 7, to24 ? 10 : 8, 9};
         v[fields[rng.range(0, 7)]] = rng.coin() ? INT32_MIN : -rng.range(1, 5);
         const uint16_t *image = b.get<uint16_t>(area(v[0], v[1]));
         const auto code = uint32_t(rng.range(0, 3));
         return Outcome{to24 ? gRotateRGB16toBGR24(image, b.get(area(v[9], v[10])), v[0], v[1], v[2], v[3], v[4],
                                                   v[5], v[6], v[7], v[9], v[10], code)
                             : gRotateRGB16(image, b.get<uint16_t>(area(v[8], v[9])), v[0], v[1], v[2], v[3], v[4],
                                            v[5], v[6], v[7], v[8], v[9], code),
                        0, true};
     }},
};

TEST(GeometryOpenInputs, TurnedDownOrServedInsideTheBuffers) { walkOpenInputs(kOpenInputs); }

} // namespace
