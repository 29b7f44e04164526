// The conversions to RGB past their callers' limits, in buffers of exactly the
// bytes the arguments describe: parts of 1 pixel or beyond the frame, odd
// whole frames, corners beyond the frame or the surface, negative corners and
// surfaces, codes above 3. Each is turned down with nothing written, or served
// without a byte outside its buffers.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/open_inputs.h"

namespace {

using namespace pixmill::test;

size_t area(int64_t w, int64_t h) { return size_t(std::max<int64_t>(w, 0)) * size_t(std::max<int64_t>(h, 0)); }

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

// The four rectangle conversions through one signature: surface dw x dh (for
// the 4:2:2 BT.601 form, as it lies after the turn), corner, rectangle, code.
struct RectCall {
    int op; // 0: 4:2:0 BT.601, 1: 4:2:0 BT.709, 2: 4:2:2 BT.709, 3: 4:2:2 BT.601
    int32_t dw, dh, dstX, dstY, srcX, srcY, srcW, srcH;
    uint32_t code;
    int32_t operator()(const Frame *f, uint16_t *out) const
    {
        const bool swap = op == 3 && (code & 1);
        const auto u16 = [](int32_t v) { return uint16_t(v); };
        switch (op) {
        case 0:
            return gYUV420toBGR565TopDown_Rotate(f, out, uint32_t(srcX), uint32_t(srcY), u16(srcW), u16(srcH),
                                                 u16(dstX), u16(dstY), u16(dw), u16(dh), code);
        case 1: return gYUV420toRGB16Rotate(f, out, dw, dh, dstX, dstY, srcX, srcY, srcW, srcH, code);
        case 2: return gYUV422toRGB16Rotate(f, out, dw, dh, dstX, dstY, srcX, srcY, srcW, srcH, code);
        default:
            return gYUV422HPlanartoBGR565TopDown_Rotate(f, out, uint32_t(srcX), uint32_t(srcY), u16(srcW),
                                                        u16(srcH), u16(dstX), u16(dstY), u16(swap ? dh : dw),
                                                        u16(swap ? dw : dh), code);
        }
    }
};

// A frame of the op's layout with exact planes, a surface of exactly dw x dh
// words, and a call on them; `make` adjusts the call before it is made.
template <class Make>
Outcome rect(ExactBuffers &b, Random &rng, int32_t W, int32_t H, bool nothing, Make make)
{
    RectCall k{rng.range(0, 3), rng.range(0, 20), rng.range(0, 20), 0, 0, 0, 0, rng.range(0, 24), rng.range(0, 24),
               uint32_t(rng.range(0, 3))};
    k.dstX = rng.range(0, k.dw);
    k.dstY = rng.range(0, k.dh);
    k.srcX = rng.range(0, W);
    k.srcY = rng.range(0, H);
    const int32_t want = make(k);
    const Frame *f = b.frame(W, H, area(W >> 1, k.op >= 2 ? H : H >> 1));
    return {k(f, b.get<uint16_t>(area(k.dw, k.dh))), want, nothing};
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
    {"rectangle: a corner beyond the frame or the surface",
     [](ExactBuffers &b, Random &rng) {
         const int32_t W = side(rng), H = side(rng);
         return rect(b, rng, W, H, true, [&](RectCall &k) {
             int32_t *corner[] = {&k.srcX, &k.srcY, &k.dstX, &k.dstY};
             const int32_t beyond[] = {W, H, k.dw, k.dh}, which = rng.range(0, 3);
             // The corner of the even-cornered forms is beyond also once made even.
             *corner[which] = beyond[which] + rng.range(which < 2 && k.op < 3 ? 2 : 1, 6);
             return 0;
         });
     }},
    {"rectangle: 1 pixel wide or high where only whole blocks are converted",
     [](ExactBuffers &b, Random &rng) {
         return rect(b, rng, side(rng), side(rng), true, [&](RectCall &k) {
             k.op = rng.coin() ? 0 : 3;
             (rng.coin() ? k.srcW : k.srcH) = 1;
             return 0;
         });
     }},
    {"rectangle: a negative corner or surface size (32-bit forms)",
     [](ExactBuffers &b, Random &rng) {
         return rect(b, rng, side(rng), side(rng), true, [&](RectCall &k) {
             k.op = rng.range(1, 2);
             int32_t *field[] = {&k.srcX, &k.srcY, &k.dstX, &k.dstY, &k.dw, &k.dh};
             *field[rng.range(0, 5)] = rng.coin() ? INT32_MIN : -rng.range(1, 5);
             return 0;
         });
     }},
    {"rectangle: a code above 3",
     [](ExactBuffers &b, Random &rng) {
         return rect(b, rng, side(rng), side(rng), true, [&](RectCall &k) {
             // The 4:2:0 BT.601 and 4:2:2 BT.601 forms read the low 8 bits only.
             k.code = rng.coin() ? uint32_t(rng.range(4, 255)) : rng.word() | 0x80u;
             return -1;
         });
     }},
    {"rectangle: odd frame sizes, corners inside, in the frame's own planes",
     [](ExactBuffers &b, Random &rng) {
         return rect(b, rng, side(rng) | 1, side(rng) | 1, false, [&](RectCall &k) {
             // The other two read one chroma sample past the layout there (the
             // caller's to provide).
             k.op = rng.coin() ? 0 : 2;
             return 0;
         });
     }},
};

TEST(Yuv2RgbOpenInputs, TurnedDownOrServedInsideTheBuffers) { walkOpenInputs(kOpenInputs); }

} // namespace
