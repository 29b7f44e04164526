// The conversions into planar 4:2:0 past their callers' limits, in buffers of
// exactly the bytes the arguments describe: odd frames and images larger than
// the frame, odd and zero sizes, corners outside, empty rectangles, small or
// odd targets, extents whose positions overflow. Each is turned down with
// nothing written, or served without a byte outside its buffers.
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
    {"gBGR24INTtoYUV420Planar: odd or zero sizes",
     [](ExactBuffers &b, Random &rng) {
         const int32_t w = rng.range(0, 20) | (rng.coin() ? 1 : 0), h = rng.range(0, 20) | (w & 1 ? 0 : 1);
         const int32_t pitch = 3 * w + rng.range(0, 4);
         const uint8_t *image = b.get(h ? area(h - 1, pitch) + 3 * size_t(w) : 0);
         gBGR24INTtoYUV420Planar(image, b.get(area(w, h) + 2 * (area(w, h) / 4)), uint32_t(w), uint32_t(h), pitch);
         return Outcome{};
     }},
    {"packed 4:2:2 into a Frame at an odd width: the record takes the size, no plane is written",
     [](ExactBuffers &b, Random &rng) {
         const int32_t w = rng.range(0, 20) | 1, h = rng.range(0, 20), op = rng.range(0, 2);
         const uint8_t *image = b.get(2 * area(w, h));
         Frame *f = b.frame(rng.range(0, 99), rng.range(0, 99), area(w / 2, (h + 1) / 2), int64_t(area(w, h)));
         const auto call = op == 0 ? gY1UY2VToYUV420 : op == 1 ? gY1UY2VToYV12 : gUY1VY2ToYUV420;
         const int32_t r = call(image, f, uint32_t(w), uint32_t(h));
         EXPECT_TRUE(f->width == w && f->height == h);
         EXPECT_TRUE(b.unchanged(f->y) && b.unchanged(f->u) && b.unchanged(f->v));
         return Outcome{r, 0, false};
     }},
    {"YUY2toYUV420 at odd sizes and under 2: rows one pixel narrower, a last row left unread",
     [](ExactBuffers &b, Random &rng) {
         const int32_t w = rng.range(0, 20), h = rng.range(0, 20);
         const uint8_t *image = b.get(2 * area(w, h));
         YUY2toYUV420(image, b.get(area(w, h) + area(w, h) / 4 + area(w / 2, h / 2)), uint32_t(w), uint32_t(h));
         return Outcome{0, 0, w < 2 || h < 2};
     }},
    {"gYUV422toYUV420: an odd source width, a single row, a corner outside, an empty rectangle, an odd or "
     "small target, an extent of 8192",
     [](ExactBuffers &b, Random &rng) {
         int32_t W = 2 * rng.range(1, 12), H = rng.range(2, 24), TW = 2 * rng.range(2, 12), TH = 2 * rng.range(2, 12);
         int32_t x = rng.range(0, W - 1), y = rng.range(0, H - 1), srcW = rng.range(1, 40), srcH = rng.range(1, 40);
         switch (rng.range(0, 5)) {
         case 0: W -= 1, x = std::min(x, W - 1); break;
         case 1: H = 1, y = 0; break;
         case 2: rng.coin() ? x = W + rng.range(0, 3) : y = H + rng.range(0, 3); break;
         case 3: (rng.coin() ? srcW : srcH) = 0; break;
         case 4: (rng.coin() ? TW : TH) = rng.coin() ? rng.range(0, 3) : 2 * rng.range(2, 12) + 1; break;
         default: W = 8192 + 2 * rng.range(0, 4), H = 2, x = 0, srcW = W; break;
         }
         const Frame *s = b.frame(W, H, area(W >> 1, H));
         Frame *t = b.frame(TW, TH, area(TW >> 1, TH >> 1));
         return Outcome{gYUV422toYUV420(s, t, uint32_t(x), uint32_t(y), uint16_t(srcW), uint16_t(srcH)), 0, true};
     }},
    {"gYUV422toYUV420: enlarged more than three times up to the frame's right and bottom edges",
     [](ExactBuffers &b, Random &rng) {
         const int32_t W = 2 * rng.range(1, 3), H = rng.range(2, 6);
         const int32_t TW = 2 * rng.range(8, 24), TH = 2 * rng.range(8, 24);
         const int32_t x = rng.range(0, W - 1), y = rng.range(0, H - 1);
         const Frame *s = b.frame(W, H, area(W >> 1, H));
         Frame *t = b.frame(TW, TH, area(TW >> 1, TH >> 1));
         return Outcome{gYUV422toYUV420(s, t, uint32_t(x), uint32_t(y), uint16_t(W), uint16_t(H)), 0, false};
     }},
};

TEST(ToYuv420OpenInputs, TurnedDownOrServedInsideTheBuffers) { walkOpenInputs(kOpenInputs); }

} // namespace
