// The scalers past their callers' limits, in buffers of exactly the bytes the
// arguments describe: spans and extents whose positions overflow, negative
// values, corners of 2^31 and more. Each plane is left alone. (Sizes of 1,
// corners outside, empty rectangles, small targets, sizes off the fixed
// ratios' forms and sources narrower than a target row are among the random
// cases of each scaler, whose sources are as exact.)
#include <gtest/gtest.h>

#include <algorithm>

#include "support/open_inputs.h"

namespace {

using namespace pixmill::test;

// Free-ratio frame scaling of `op` (0: whole, 1: cropped, 2: cropped 4:2:2)
// between exact frames.
void scaleFrame(ExactBuffers &b, int32_t op, int32_t W, int32_t H, int32_t TW, int32_t TH, uint32_t x, uint32_t y,
                uint16_t srcW, uint16_t srcH, Frame **target = nullptr)
{
    const int32_t rows = op == 2 ? 0 : 1;
    const Frame *s = b.frame(W, H, area(W >> 1, H >> rows));
    Frame *t = b.frame(TW, TH, area(TW >> 1, TH >> rows));
    op == 0 ? gScaleFrame(s, t) : (op == 1 ? gScaleCroppedFrame : gScaleCroppedFrameYUV422)(s, t, x, y, srcW, srcH);
    if (target)
        *target = t;
}

using FixedRatio = void (*)(const Frame *, Frame *, uint32_t, uint32_t, uint32_t, uint32_t);
const FixedRatio kFixed[] = {gScaleCroppedFrame_downby2, gScaleCroppedFrame_upby2, gScaleCroppedFrame_upby4,
                             gScaleCroppedFrame_downto3by3};

const OpenInput kOpenInputs[] = {
    {"frame scalers: a span of 8192 samples or more leaves luma alone",
     [](ExactBuffers &b, Random &rng) {
         const int32_t W = 8193 + rng.range(0, 40), TW = W / 2 + rng.range(1, 40);
         Frame *t = nullptr;
         scaleFrame(b, rng.range(0, 2), W, rng.range(1, 2), TW, rng.range(1, 2), 0, 0, uint16_t(W), 2, &t);
         EXPECT_TRUE(b.unchanged(t->y));
         return Outcome{0, 0, false};
     }},
    {"RGB565 scalers: an extent of 8192, negative values",
     [](ExactBuffers &b, Random &rng) {
         int32_t v[8] = {rng.range(1, 20), rng.range(2, 20), rng.range(2, 20), rng.range(2, 20),
                         0, 0, rng.range(1, 24), rng.range(2, 24)}; // sw, sh, dw, dh, x, y, srcW, srcH
         v[4] = rng.range(0, v[0] - 1), v[5] = rng.range(0, v[1] - 2);
         if (rng.coin())
             v[0] = v[6] = 8192 + rng.range(0, 9), v[1] = 2, v[4] = v[5] = 0;
         else
             v[rng.range(0, 7)] = rng.coin() ? INT32_MIN : -rng.range(1, 5);
         const uint16_t *image = b.get<uint16_t>(area(v[0], v[1]));
         uint16_t *out = b.get<uint16_t>(area(v[2], v[3]));
         if (v[4] == 0 && v[5] == 0 && v[6] == v[0] && v[7] == v[1] && rng.coin())
             gScaleRGB565Frame(image, out, v[0], v[1], v[2], v[3]);
         else
             gScaleRGB565CroppedFrame(image, out, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]);
         return Outcome{};
     }},
    {"fixed ratios: a corner of 2^31 or more",
     [](ExactBuffers &b, Random &rng) {
         const int32_t W = rng.range(0, 40), H = rng.range(0, 40), TW = rng.range(0, 40), TH = rng.range(0, 40);
         uint32_t x = uint32_t(rng.range(0, 6)), y = uint32_t(rng.range(0, 6));
         (rng.coin() ? x : y) |= 0x80000000u | rng.word();
         const Frame *s = b.frame(W, H, area(W >> 1, H >> 1));
         kFixed[rng.range(0, 3)](s, b.frame(TW, TH, area(TW >> 1, TH >> 1)), x, y, rng.word(), rng.word());
         return Outcome{};
     }},
};

TEST(ScaleOpenInputs, TurnedDownOrServedInsideTheBuffers) { walkOpenInputs(kOpenInputs); }

} // namespace
