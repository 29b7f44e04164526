// The whole-image conversions to RGB past their callers' limits, in buffers of
// exactly the bytes the arguments describe: parts of 1 pixel, negative or
// beyond the frame, odd whole frames. Each is turned down with nothing
// written, or served without a byte outside its buffers. (The rectangle
// conversions meet such inputs among their random cases.)
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/open_inputs.h"

namespace {

using namespace pixmill::test;

// A part of a W x H frame that is not served: a size of 1, a size past the
// frame, now and then a negative one.
void unservedPart(Random &rng, int32_t W, int32_t H, int32_t &w, int32_t &h)
{
    w = rng.range(0, W);
    h = rng.range(0, H);
    const int32_t k = rng.range(0, 1);
    int32_t *pick[] = {&w, &h};
    *pick[k] = rng.coin() ? 1 : (k ? H : W) + rng.range(1, 4);
    if (rng.range(0, 7) == 0)
        *pick[rng.range(0, 1)] = -rng.range(1, 3);
}

int32_t side(Random &rng) { return rng.range(0, 20); }

const OpenInput kOpenInputs[] = {
    {"whole image: a part of 1 pixel, negative or past the frame",
     [](ExactBuffers &b, Random &rng) {
         const int32_t W = side(rng), H = side(rng), op = rng.range(0, 3), flag = rng.coin() ? 0 : int32_t(rng.word());
         int32_t w, h;
         unservedPart(rng, W, H, w, h);
         const Frame *f = b.frame(W, H, area(W >> 1, op >= 2 ? H : H >> 1));
         if (op == 1)
             gEmYUV420toRGB565TopDown(f, b.get<uint16_t>(area(w, h)), w, h, flag);
         else
             (op == 0 ? gEmYUV420toRGB888TopDown : op == 2 ? gYUV422HPlanartoBGR888TopDown
                                                           : gYUV422HPlanartoRGB888TopDown)(
                 f, b.get(3 * area(w, h)), w, h, flag);
         return Outcome{};
     }},
    {"gYUV420toBGR24 at odd sizes: the last column and row repeat, 1 writes nothing",
     [](ExactBuffers &b, Random &rng) {
         const int32_t W = side(rng) | 1, H = rng.coin() ? side(rng) | 1 : side(rng) + 1, pitch = 3 * W + side(rng) / 4;
         const Frame *f = b.frame(W, H, area(W >> 1, H >> 1));
         uint8_t *out = b.get(area(H - 1, pitch) + 3 * size_t(W));
         const std::vector<uint8_t> before(out, out + area(H - 1, pitch) + 3 * size_t(W));
         const int32_t r = gYUV420toBGR24(f, out, pitch);
         const bool served = W >= 2 && H >= 2;
         for (int32_t y = 0; y < H && served; ++y) {
             const uint8_t *row = out + size_t(y) * size_t(pitch);
             EXPECT_EQ(0, std::memcmp(row + 3 * (W - 1), row + 3 * (W - 2), 3)) << "row " << y;
             // The padding after each row but the last stays.
             const size_t rowStart = size_t(y) * size_t(pitch);
             EXPECT_TRUE(std::equal(row + 3 * W, row + (y + 1 < H ? pitch : 3 * W), &before[rowStart + 3 * size_t(W)]));
         }
         if (served && (H & 1)) {
             EXPECT_EQ(0, std::memcmp(out + size_t(H - 1) * size_t(pitch), out + size_t(H - 2) * size_t(pitch),
                                      3 * size_t(W)));
         }
         return Outcome{r, 0, !served};
     }},
};

TEST(Yuv2RgbOpenInputs, TurnedDownOrServedInsideTheBuffers) { walkOpenInputs(kOpenInputs); }

} // namespace
