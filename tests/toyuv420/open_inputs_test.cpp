// The conversions into planar 4:2:0 past their callers' limits, in buffers of
// exactly the bytes the arguments describe: odd frames and images larger than
// the frame, extents whose positions overflow. Each is turned down with
// nothing written. (Odd and zero sizes, corners outside, empty rectangles,
// small or odd targets are among the random cases of each conversion, whose
// buffers are as exact.)
#include <gtest/gtest.h>

#include <algorithm>

#include "support/open_inputs.h"

namespace {

using namespace pixmill::test;

const OpenInput kOpenInputs[] = {
    {"gEmRGB565toYUV420: an odd frame, an image past the frame, a width under 2, no rows",
     [](ExactBuffers &b, Random &rng) {
         int32_t W = 2 * rng.range(1, 10), H = 2 * rng.range(1, 10), sw = rng.range(2, W), sh = rng.range(1, H);
         switch (rng.range(0, 4)) {
         case 0: (rng.coin() ? W : H) -= 1, sw = std::min(sw, W), sh = std::min(sh, H); break;
         case 1: sw = W + rng.range(1, 5); break;
         case 2: sh = H + rng.range(1, 5); break;
         case 3: sw = rng.range(0, 1); break;
         default: sh = 0; break;
         }
         Frame *f = b.frame(W, H, area(W >> 1, H >> 1));
         gEmRGB565toYUV420(b.get<uint16_t>(area(sw, sh)), f, uint32_t(sw), uint32_t(sh));
         return Outcome{};
     }},
    {"gYUV422toYUV420: an extent of 8192, whose positions overflow",
     [](ExactBuffers &b, Random &rng) {
         const int32_t W = 8192 + 2 * rng.range(0, 4), TW = 2 * rng.range(2, 12), TH = 2 * rng.range(2, 12);
         const Frame *s = b.frame(W, 2, area(W >> 1, 2));
         Frame *t = b.frame(TW, TH, area(TW >> 1, TH >> 1));
         return Outcome{gYUV422toYUV420(s, t, 0, uint32_t(rng.range(0, 1)), uint16_t(W), 2), 0, true};
     }},
};

TEST(ToYuv420OpenInputs, TurnedDownOrServedInsideTheBuffers) { walkOpenInputs(kOpenInputs); }

} // namespace
