// Rotation and mirroring past their callers' limits, in buffers of exactly
// the bytes the arguments describe: odd sizes for the turns, codes above 3,
// negative positions, surface sizes and strides, positions past the surfaces,
// negative image sizes and unknown chroma layouts. Each is turned down with
// nothing written, or served without a byte outside its buffers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/open_inputs.h"

namespace {

using namespace pixmill::test;

// Whole-frame turn of `kind` (0: 4:2:0, 1: 4:2:2, 2: luma) between two
// frames of w x h whose chroma planes hold `chroma` samples each.
void turnFrame(ExactBuffers &b, int32_t kind, int32_t w, int32_t h, size_t chroma, uint32_t code,
               const Frame **source = nullptr, const Frame **destination = nullptr)
{
    const Frame *s = b.frame(w, h, kind == 2 ? 0 : chroma);
    const Frame *d = b.frame(w, h, kind == 2 ? 0 : chroma);
    (kind == 0 ? gRotateFrame : kind == 1 ? gRotate422Frame : gRotateMonochromeFrame)(s, d, code);
    if (source)
        *source = s, *destination = d;
}

size_t chromaOf(int32_t kind, int32_t w, int32_t h) { return area(w >> 1, kind == 1 ? h : h >> 1); }

// A 16-bit rectangle turn, to 16 bits or to 24, on surfaces of exactly the
// arguments' size; `make` sets what is past the limits and gives the result.
template <class Make>
Outcome rectTurn(ExactBuffers &b, Random &rng, Make make)
{
    int32_t v[12] = {rng.range(0, 20), rng.range(0, 20), 0, 0, rng.range(-2, 24), rng.range(-2, 24),
                     0, 0, rng.range(0, 20), rng.range(0, 20)};
    v[2] = rng.range(0, v[0]), v[3] = rng.range(0, v[1]), v[6] = rng.range(0, v[8]), v[7] = rng.range(0, v[9]);
    // sw, sh, srcX, srcY, srcW, srcH, dstX, dstY, dw, dh, stride (24 bits), code
    v[10] = 3 * v[8] + rng.range(0, 2);
    v[11] = rng.range(0, 3);
    const bool to24 = rng.coin();
    const int32_t want = make(v, to24);
    const uint16_t *image = b.get<uint16_t>(area(v[0], v[1]));
    const auto code = uint32_t(v[11]);
    const int32_t got =
        to24 ? gRotateRGB16toBGR24(image, b.get(area(v[9], v[10])), v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7],
                                   v[9], v[10], code)
             : gRotateRGB16(image, b.get<uint16_t>(area(v[8], v[9])), v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7],
                            v[8], v[9], code);
    return {got, want, true};
}

const OpenInput kOpenInputs[] = {
    {"whole-frame turns at odd sizes",
     [](ExactBuffers &b, Random &rng) {
         const int32_t kind = rng.range(0, 2), code = rng.range(1, 3);
         int32_t w = rng.range(0, 20), h = rng.range(0, 20);
         // The 4:2:2 half turn serves any height: only an odd width is past it.
         (kind == 1 && code == ROTATE_180 ? w : rng.coin() ? w : h) |= 1;
         turnFrame(b, kind, w, h, chromaOf(kind, w, h), uint32_t(code));
         return Outcome{};
     }},
    {"whole-frame turns: a code above 3",
     [](ExactBuffers &b, Random &rng) {
         const int32_t kind = rng.range(0, 2), w = rng.range(0, 20), h = rng.range(0, 20);
         turnFrame(b, kind, w, h, chromaOf(kind, w, h), rng.coin() ? uint32_t(rng.range(4, 300)) : rng.word() | 4u);
         return Outcome{};
     }},
    {"whole-frame copies at odd sizes move (W * H) >> 2 or >> 1 chroma bytes",
     [](ExactBuffers &b, Random &rng) {
         const int32_t kind = rng.range(0, 1), w = rng.range(0, 20) | 1, h = rng.range(0, 20);
         const size_t copied = area(w, h) >> (2 - kind);
         const Frame *s = nullptr, *d = nullptr;
         turnFrame(b, kind, w, h, std::max(chromaOf(kind, w, h), copied), ROTATE_NONE, &s, &d);
         EXPECT_EQ(0, std::memcmp(s->y, d->y, area(w, h)));
         EXPECT_TRUE(copied == 0 || (std::memcmp(s->u, d->u, copied) == 0 && std::memcmp(s->v, d->v, copied) == 0));
         return Outcome{0, 0, false};
     }},
    {"16-bit rectangle turns: a negative position, surface size or stride",
     [](ExactBuffers &b, Random &rng) {
         return rectTurn(b, rng, [&](int32_t *v, bool to24) {
             const int32_t fields[] = {0, 1, 2, 3, 6, 7, to24 ? 10 : 8, 9};
             v[fields[rng.range(0, 7)]] = rng.coin() ? INT32_MIN : -rng.range(1, 5);
             return 0;
         });
     }},
    {"16-bit rectangle turns: a position past its surface, a size of 0 or less",
     [](ExactBuffers &b, Random &rng) {
         return rectTurn(b, rng, [&](int32_t *v, bool) {
             // Corners against sw, sh, and the destination's width (also that
             // of the 24-bit surface, stride / 3) and height.
             const int32_t pick = rng.range(0, 5), corner[] = {2, 3, 6, 7}, bound[] = {0, 1, 8, 9};
             if (pick < 4)
                 v[corner[pick]] = v[bound[pick]] + rng.range(0, 5);
             else
                 v[pick] = rng.coin() ? INT32_MIN : -rng.range(0, 5);
             return 0;
         });
     }},
    {"16-bit rectangle turns: a code above 3",
     [](ExactBuffers &b, Random &rng) {
         return rectTurn(b, rng, [&](int32_t *v, bool) {
             v[11] = rng.coin() ? rng.range(4, 300) : int32_t(rng.word() | 4u);
             return -1;
         });
     }},
    {"gMirrorImageRGB565: a negative size",
     [](ExactBuffers &b, Random &rng) {
         int32_t w = rng.range(0, 20), h = rng.range(0, 20);
         (rng.coin() ? w : h) = rng.coin() ? INT32_MIN : -rng.range(1, 5);
         const uint16_t *image = b.get<uint16_t>(area(w, h));
         return Outcome{gMirrorImageRGB565(image, b.get<uint16_t>(area(w, h)), w, h, rng.word()), -1, true};
     }},
    {"gMirrorImageYUV: a chroma layout other than 0 and 1",
     [](ExactBuffers &b, Random &rng) {
         const int32_t w = rng.range(0, 20), h = rng.range(0, 20);
         const int32_t layout = rng.coin() ? rng.range(2, 9) : rng.coin() ? -rng.range(1, 9) : int32_t(rng.word() | 2u);
         Frame *s = b.frame(w, h, area(w >> 1, h));
         Frame *d = b.frame(w, h, area(w >> 1, h));
         return Outcome{gMirrorImageYUV(s, d, layout, rng.word(), uint8_t(rng.range(0, 2))), -1, true};
     }},
};

TEST(GeometryOpenInputs, TurnedDownOrServedInsideTheBuffers) { walkOpenInputs(kOpenInputs); }

} // namespace
