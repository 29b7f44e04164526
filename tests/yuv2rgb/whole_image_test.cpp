// Whole-image YUV -> RGB conversions against per-pixel models on random
// frames, sizes, row orders and strides, with guards around every buffer;
// then the worked values.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "pixmill.h"
#include "support/colour_model.h"
#include "support/buffers.h"

namespace {

using namespace pixmill::test;

// One call: the frame, the part converted, the flag, and the units between
// target rows (the stride of gYUV420toBGR24).
struct Case {
    int32_t width, height, w, h, flag, pitch;
};

// A top-left part of 0 to maxW by 0 to maxH pixels, with any of the flag
// values that must read as "top down".
Case partCase(Random &rng, int32_t maxW, int32_t maxH, int32_t units)
{
    static const uint32_t on[] = {1u, 0x80000000u, 0x00010000u, 0xFFFFFFFFu, 0x00000100u, 2u};
    const int32_t w = rng.range(0, maxW), h = rng.range(0, maxH);
    const int32_t flag = rng.coin() ? int32_t(on[rng.range(0, 5)]) : 0;
    return {w + (rng.coin() ? 0 : rng.range(0, 9)), h + (rng.coin() ? 0 : rng.range(0, 5)), w, h, flag, w * units};
}

// A whole frame, mostly of even size, with a stride that now and then falls
// short (or is padded: the padding after each row stays).
Case strideCase(Random &rng, int32_t maxW, int32_t maxH, int32_t)
{
    const int32_t w = 2 * rng.range(0, maxW / 2) + !rng.range(0, 7), h = 2 * rng.range(0, maxH / 2) + !rng.range(0, 7);
    const int32_t stride = 3 * w + (rng.coin() ? 0 : rng.range(1, 13));
    const int32_t shortStride[] = {3 * w - 1, -stride, INT32_MIN};
    return {w, h, w, h, 1, rng.range(0, 7) == 0 ? shortStride[rng.range(0, 2)] : stride};
}

// Runs `op` on 2300 random cases and one of every chroma pair against the model: px(p, f, c, r) writes the
// pixel of source (c, r) at p. Sizes up to 12, then widths up to 130 and a
// few up to 2000, past the widest vector step. A pitch short of a row is
// refused with -1 and writes nothing; a size of 1 has no defined result. The
// frame and everything outside the target stay as they were; every fourth
// case has planes and a target that end, or start, at an inaccessible page.
template <class T, class Op, class Px>
void checkRandom(const char *name, Layout layout, int32_t units, Case (*make)(Random &, int32_t, int32_t, int32_t),
                 Op op, Px px)
{
    Random rng;
    for (int i = 0; i <= 2300; ++i) {
        // The last case converts a 512 by 512 frame that has every chroma pair.
        const Case k = i < 1000   ? make(rng, 12, 12, units)
                       : i < 2200 ? make(rng, 130, 9, units)
                       : i < 2300 ? make(rng, 2000, 5, units)
                                  : Case{512, 512, 512, 512, 1, 512 * units};
        SCOPED_TRACE(::testing::Message() << name << ", case " << i << ": frame " << k.width << "x" << k.height
                                          << ", convert " << k.w << "x" << k.h << ", flag " << k.flag << ", pitch "
                                          << k.pitch);
        const size_t misalign = size_t(rng.range(0, 3)), pitch = size_t(std::max({k.pitch, k.w * units, 1}));
        const Placement where = i % 4 ? Placement::Guarded : i % 8 ? Placement::PageEnd : Placement::PageStart;
        TestFrame f(k.width, k.height, layout, rng, misalign, where);
        if (i == 2300)
            everyChromaPair(f);
        Guarded<T> out(pitch * size_t(k.h), misalign, rng.word(), where);
        const bool refused = k.pitch < k.w * units, defined = k.w != 1 && k.h != 1;
        std::vector<T> want = out.contents();
        // Source row r lands on target row r, or h - 1 - r; an odd last column
        // and row repeat their neighbour.
        for (int32_t r = 0; r < k.h && defined && !refused; ++r)
            for (int32_t c = 0; c < k.w; ++c)
                px(&want[size_t(k.flag ? r : k.h - 1 - r) * pitch + size_t(c * units)], f,
                   (k.w & 1) && c == k.w - 1 ? c - 1 : c, (k.h & 1) && r == k.h - 1 ? r - 1 : r);
        ASSERT_EQ(op(f.get(), out.begin(), k), refused ? -1 : 0);
        ASSERT_TRUE(sameUnits(out.contents(), defined ? want : out.contents(), pitch));
        ASSERT_TRUE(out.intact());
        ASSERT_TRUE(f.untouched());
    }
}

ModelRgb source601(const TestFrame &f, int32_t c, int32_t r, ModelOffsets d)
{
    return modelPixel(f.Y(c, r), f.Ufor(c, r), f.Vfor(c, r), kModel601, false, d);
}

void put(uint8_t *o, const ModelRgb &p, bool bgr)
{
    o[0] = uint8_t(bgr ? p.b : p.r), o[1] = uint8_t(p.g), o[2] = uint8_t(bgr ? p.r : p.b);
}

// The 4:2:2 form has two names at one address. gYUV420toBGR24 lifts luma in
// odd columns by 1 before the clamp.
TEST(WholeImage, MatchesModelOnRandomCases)
{
    using F = const Frame *;
    using TF = const TestFrame &;
    // Compared at run time: the compiler may fold the comparison of two
    // differently named functions to "unequal".
    void (*const volatile bgr)(F, uint8_t *, int32_t, int32_t, int32_t) = &gYUV422HPlanartoBGR888TopDown;
    EXPECT_EQ(bgr, &gYUV422HPlanartoRGB888TopDown);
    checkRandom<uint8_t>(
        "RGB888", Layout::Yuv420, 3, partCase,
        [](F f, uint8_t *o, const Case &k) { return gEmYUV420toRGB888TopDown(f, o, k.w, k.h, k.flag), 0; },
        [](uint8_t *o, TF f, int32_t c, int32_t r) { put(o, source601(f, c, r, kNoDither), false); });
    checkRandom<uint16_t>(
        "RGB565", Layout::Yuv420, 1, partCase,
        [](F f, uint16_t *o, const Case &k) { return gEmYUV420toRGB565TopDown(f, o, k.w, k.h, k.flag), 0; },
        [](uint16_t *o, TF f, int32_t c, int32_t r) { *o = modelRgb565(source601(f, c, r, modelDither(r, c))); });
    checkRandom<uint8_t>(
        "BGR888 from 4:2:2", Layout::Yuv422, 3, partCase,
        [](F f, uint8_t *o, const Case &k) { return gYUV422HPlanartoBGR888TopDown(f, o, k.w, k.h, k.flag), 0; },
        [](uint8_t *o, TF f, int32_t c, int32_t r) { put(o, source601(f, c, r, modelDither(r, c)), true); });
    checkRandom<uint8_t>(
        "BGR24", Layout::Yuv420, 3, strideCase,
        [](F f, uint8_t *o, const Case &k) { return gYUV420toBGR24(f, o, k.pitch); },
        [](uint8_t *o, TF f, int32_t c, int32_t r) {
            put(o, modelPixel(f.Y(c, r) + (c & 1), f.Ufor(c, r), f.Vfor(c, r), kModel709, true, kNoDither), true);
        });
}

// 2 by 2 frames, u and v on both chroma rows so that they serve 4:2:0 and
// 4:2:2 alike: each call, its flag (stride for BGR24) and the target.
TEST(WholeImage, WorkedValues)
{
    const struct {
        uint8_t y[4], u, v;
        int call;
        int32_t flag;
        std::vector<int> want;
    } cases[] = {
        {{81, 82, 83, 84}, 90, 240, 0, 1, {238, 15, 13, 239, 16, 14, 240, 17, 15, 241, 18, 16}},
        {{81, 82, 83, 84}, 90, 240, 0, 0, {240, 17, 15, 241, 18, 16, 238, 15, 13, 239, 16, 14}},
        {{81, 82, 83, 84}, 90, 240, 1, 1, {0xF081, 0xF082, 0xF082, 0xF0A2}},
        {{81, 82, 83, 84}, 90, 240, 1, 0, {0xF082, 0xF0A2, 0xF081, 0xF082}},
        {{81, 82, 83, 84}, 90, 240, 2, 1, {13, 18, 240, 18, 16, 245, 21, 18, 244, 18, 20, 241}},
        {{100, 100, 100, 100}, 128, 128, 2, 1, {100, 103, 102, 104, 100, 106, 106, 101, 104, 102, 102, 100}},
        {{81, 82, 83, 84}, 90, 240, 3, 6, {10, 36, 255, 12, 38, 255, 12, 38, 255, 14, 40, 255}},
        {{255, 255, 255, 255}, 128, 128, 3, 6, std::vector<int>(12, 255)},
    };
    for (const auto &k : cases) {
        uint8_t y[4] = {k.y[0], k.y[1], k.y[2], k.y[3]}, u[2] = {k.u, k.u}, v[2] = {k.v, k.v}, bytes[12] = {};
        uint16_t words[4] = {};
        const Frame f{y, u, v, 2, 2, 0};
        switch (k.call) {
        case 0: gEmYUV420toRGB888TopDown(&f, bytes, 2, 2, k.flag); break;
        case 1: gEmYUV420toRGB565TopDown(&f, words, 2, 2, k.flag); break;
        case 2: gYUV422HPlanartoBGR888TopDown(&f, bytes, 2, 2, k.flag); break;
        default: EXPECT_EQ(gYUV420toBGR24(&f, bytes, k.flag), 0);
        }
        const std::vector<int> got(bytes, bytes + 12), gotWords(words, words + 4);
        EXPECT_EQ(k.call == 1 ? gotWords : got, k.want) << "call " << k.call << ", flag " << k.flag;
    }
}

} // namespace
