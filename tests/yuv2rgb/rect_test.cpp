// The four rectangle conversions to RGB565 with rotation against per-pixel
// models: random frames, corners, sizes, surfaces and codes, rectangles
// clipped on every side, every surface word outside the written area and
// every guard byte checked; then refusals, corners beyond the caller's
// guarantee, and the worked placements and words.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "pixmill.h"
#include "support/colour_model.h"
#include "support/frames.h"
#include "support/rect_model.h"

namespace {

using namespace pixmill::test;

enum class Op { Yuv420BottomUp, Yuv420TopDown, Yuv422TopDown, Yuv422BottomUp };

std::string opName(const ::testing::TestParamInfo<Op> &info)
{
    static const char *names[] = {"YUV420toBGR565TopDown_Rotate", "YUV420toRGB16Rotate", "YUV422toRGB16Rotate",
                                  "YUV422HPlanartoBGR565TopDown_Rotate"};
    return names[int(info.param)];
}

Layout layoutOf(Op op) { return op == Op::Yuv420BottomUp || op == Op::Yuv420TopDown ? Layout::Yuv420 : Layout::Yuv422; }
bool readsLowByte(Op op) { return op == Op::Yuv420BottomUp || op == Op::Yuv422BottomUp; }

// Arguments as passed (dstW, dstH as the operation takes them).
struct RectCase {
    int32_t srcX, srcY, srcW, srcH, dstX, dstY, dstW, dstH;
    uint32_t code;
};

// The surface in memory: the 4:2:2 bottom-up form takes dstW and dstH before
// the turn, so under a quarter turn they exchange.
Pos surfaceSize(Op op, const RectCase &k)
{
    const bool swap = op == Op::Yuv422BottomUp && ((k.code & 0xFF) == 1 || (k.code & 0xFF) == 3);
    return swap ? Pos{k.dstH, k.dstW} : Pos{k.dstW, k.dstH};
}

int32_t run(Op op, const Frame *f, uint16_t *d, const RectCase &k)
{
    switch (op) {
    case Op::Yuv420BottomUp:
        return gYUV420toBGR565TopDown_Rotate(f, d, uint32_t(k.srcX), uint32_t(k.srcY), uint16_t(k.srcW),
                                             uint16_t(k.srcH), uint16_t(k.dstX), uint16_t(k.dstY), uint16_t(k.dstW),
                                             uint16_t(k.dstH), k.code);
    case Op::Yuv420TopDown:
        return gYUV420toRGB16Rotate(f, d, k.dstW, k.dstH, k.dstX, k.dstY, k.srcX, k.srcY, k.srcW, k.srcH, k.code);
    case Op::Yuv422TopDown:
        return gYUV422toRGB16Rotate(f, d, k.dstW, k.dstH, k.dstX, k.dstY, k.srcX, k.srcY, k.srcW, k.srcH, k.code);
    default:
        return gYUV422HPlanartoBGR565TopDown_Rotate(f, d, uint32_t(k.srcX), uint32_t(k.srcY), uint16_t(k.srcW),
                                                    uint16_t(k.srcH), uint16_t(k.dstX), uint16_t(k.dstY),
                                                    uint16_t(k.dstW), uint16_t(k.dstH), k.code);
    }
}

uint16_t word(int y, int u, int v, const ModelCoeffs &k, ModelOffsets d)
{
    return modelRgb565(modelPixel(y, u, v, k, false, d));
}

// ROTATE_NONE of the bottom-up forms: an odd last column repeats its left
// neighbour on every converted row, then an odd top row repeats the row below.
// Without a whole block nothing is written at all.
void bottomUpTail(SurfaceModel &s, int32_t cw, int32_t ch)
{
    const int32_t ew = cw & ~1, eh = ch & ~1;
    if (ew == 0 || eh == 0)
        return;
    if (cw & 1)
        for (int32_t r = 0; r < eh; ++r)
            s.at(cw - 1, ch - 1 - r) = s.at(cw - 2, ch - 1 - r);
    if (ch & 1)
        for (int32_t c = 0; c < cw; ++c)
            s.at(c, 0) = s.at(c, 1);
}

// Expected result of one call; the expected surface is written into `s`.
int32_t model(Op op, TestFrame &f, const RectCase &k, SurfaceModel &s)
{
    const uint32_t code = readsLowByte(op) ? k.code & 0xFF : k.code;
    if (code > 3)
        return -1;
    const bool quarter = code == 1 || code == 3;
    const int32_t W = f.width(), H = f.height();
    switch (op) {
    case Op::Yuv420BottomUp: {
        const int32_t x0 = k.srcX & 0xFFFE, y0 = k.srcY & 0xFFFE;
        const Clip cl = clipModel(k.srcW, k.srcH, W, H, x0, y0, s.sw, s.sh, k.dstX, k.dstY, quarter);
        if (cl.cw <= 0 || cl.ch <= 0)
            return 0;
        const int32_t ew = cl.cw & ~1, eh = cl.ch & ~1;
        for (int32_t r = 0; r < eh; ++r)
            for (int32_t c = 0; c < ew; ++c)
                s.put(bottomUpTarget(code, c, r, ew, eh, cl.ch),
                      word(f.Y(x0 + c, y0 + r), f.Ufor(x0 + c, y0 + r), f.Vfor(x0 + c, y0 + r), kModel601,
                           modelDither(r, c)));
        if (code == 0)
            bottomUpTail(s, cl.cw, cl.ch);
        return 0;
    }
    case Op::Yuv420TopDown: {
        if (k.srcX < 0 || k.srcY < 0 || k.dstX < 0 || k.dstY < 0 || k.dstW < 0 || k.dstH < 0)
            return 0;
        const int32_t x0 = k.srcX & ~1, y0 = k.srcY & ~1;
        const Clip cl = clipModel(k.srcW, k.srcH, W, H, x0, y0, s.sw, s.sh, k.dstX, k.dstY, quarter);
        for (int32_t r = 0; r < cl.ch; ++r)
            for (int32_t c = 0; c < cl.cw; ++c) {
                const bool oddColumnOddRow = code == 0 && (cl.cw & 1) && c == cl.cw - 1 && (r & 1);
                const ModelOffsets d = oddColumnOddRow ? ModelOffsets{4, 0, 6} : modelDither(r, c);
                s.put(topDownTarget(code, c, r, cl.cw, cl.ch),
                      word(f.Y(x0 + c, y0 + r), f.Ufor(x0 + c, y0 + r), f.Vfor(x0 + c, y0 + r), kModel709, d));
            }
        return 0;
    }
    case Op::Yuv422TopDown: {
        if (k.srcX < 0 || k.srcY < 0 || k.dstX < 0 || k.dstY < 0 || k.dstW < 0 || k.dstH < 0)
            return 0;
        const int32_t x0 = k.srcX & ~1, y0 = k.srcY & ~1;
        Clip cl = clipModel(k.srcW & ~1, k.srcH & ~1, W, H, x0, y0, s.sw, s.sh, k.dstX, k.dstY, quarter);
        cl.cw &= ~1;
        if (code == 0)
            cl.ch &= ~1;
        for (int32_t r = 0; r < cl.ch; ++r)
            for (int32_t c = 0; c < cl.cw; ++c)
                s.put(topDownTarget(code, c, r, cl.cw, cl.ch),
                      word(f.Y(x0 + c, y0 + r), f.U((x0 >> 1) + (c >> 1), y0 + r), f.V((x0 >> 1) + (c >> 1), y0 + r),
                           kModel709, modelDither(0, c)));
        return 0;
    }
    default: {
        if (uint32_t(k.srcX) > uint32_t(W) || uint32_t(k.srcY) > uint32_t(H))
            return 0;
        const Clip cl = clipModel(k.srcW, k.srcH, W, H, k.srcX, k.srcY, s.sw, s.sh, k.dstX, k.dstY, quarter);
        if (cl.cw <= 0 || cl.ch <= 0)
            return 0;
        const int32_t ew = cl.cw & ~1, eh = cl.ch & ~1;
        for (int32_t r = 0; r < eh; ++r)
            for (int32_t c = 0; c < ew; ++c) {
                const size_t chroma = size_t(((k.srcY * W + k.srcX) >> 1) + r * (W >> 1) + (c >> 1));
                s.put(bottomUpTarget(code, c, r, ew, eh, cl.ch),
                      word(f.Y(k.srcX + c, k.srcY + r), f.uPlane()[chroma], f.vPlane()[chroma], kModel601,
                           modelDither(r, c)));
            }
        if (code == 0)
            bottomUpTail(s, cl.cw, cl.ch);
        return 0;
    }
    }
}

// Random corners inside the frame and the surface, sizes that overrun either
// one or not, and now and then a code that is refused or only counts by its
// low byte.
RectCase randomCase(Random &rng, Op op, int32_t width, int32_t height, int32_t maxSurface)
{
    RectCase k{};
    k.srcX = rng.range(0, width);
    k.srcY = rng.range(0, height);
    k.srcW = rng.range(0, width + 3);
    k.srcH = rng.range(0, height + 3);
    const int32_t sw = rng.range(0, maxSurface), sh = rng.range(0, maxSurface);
    k.dstX = rng.range(0, sw);
    k.dstY = rng.range(0, sh);
    k.code = uint32_t(rng.range(0, 3));
    if (rng.range(0, 15) == 0)
        k.code = rng.coin() ? uint32_t(rng.range(4, 255)) : 0x80000000u | k.code;
    else if (readsLowByte(op) && rng.coin())
        k.code |= uint32_t(rng.range(1, 0xFFFF)) << 8;
    if (op == Op::Yuv420BottomUp && rng.coin())
        k.srcX |= rng.range(1, 3) << 16; // only the low 16 bits count
    k.dstW = sw;
    k.dstH = sh;
    const Pos s = surfaceSize(op, k); // exchanges back under a quarter turn
    k.dstW = s.x;
    k.dstH = s.y;
    return k;
}

::testing::AssertionResult sameWords(const std::vector<uint16_t> &got, const std::vector<uint16_t> &want, int32_t sw)
{
    for (size_t i = 0; i < want.size(); ++i)
        if (got[i] != want[i])
            return ::testing::AssertionFailure() << "surface word (" << i % size_t(sw) << ", " << i / size_t(sw)
                                                 << "): got 0x" << std::hex << got[i] << ", want 0x" << want[i];
    return ::testing::AssertionSuccess();
}

// A frame with planes two rows and columns larger than its record says: a
// rectangle of odd size may read the chroma sample just past the plane
// layout, which the caller provides.
void shrink(TestFrame &f, int32_t width, int32_t height)
{
    f.frame().width = uint16_t(width);
    f.frame().height = uint16_t(height);
}

class RectConversion : public ::testing::TestWithParam<Op> {};

TEST_P(RectConversion, MatchesModelOnRandomRectangles)
{
    const Op op = GetParam();
    Random rng;
    for (int i = 0; i < 1500; ++i) {
        const int32_t side = i < 1000 ? 10 : 40;
        const int32_t width = rng.range(1, side), height = rng.range(1, side);
        const size_t misalign = size_t(rng.range(0, 3));
        TestFrame f(width + 2, height + 2, layoutOf(op), rng, misalign);
        shrink(f, width, height);
        const RectCase k = randomCase(rng, op, width, height, side + 4);
        const Pos s = surfaceSize(op, k);
        SCOPED_TRACE(::testing::Message() << "case " << i << ": frame " << width << "x" << height << ", src ("
                                          << k.srcX << ", " << k.srcY << ") " << k.srcW << "x" << k.srcH << ", dst ("
                                          << k.dstX << ", " << k.dstY << ") on " << s.x << "x" << s.y << ", code "
                                          << k.code);
        Guarded<uint16_t> surface(size_t(s.x) * size_t(s.y), misalign, rng.word());
        surface.randomize(rng);
        SurfaceModel want{surface.contents(), s.x, s.y, k.dstX, k.dstY};
        const int32_t result = model(op, f, k, want);
        ASSERT_EQ(run(op, f.get(), surface.begin(), k), result);
        ASSERT_TRUE(sameWords(surface.contents(), want.words, s.x));
        ASSERT_TRUE(surface.intact());
        ASSERT_TRUE(f.untouched());
    }
}

TEST_P(RectConversion, NullPointersAreRefusedAndCornersBeyondWriteNothing)
{
    const Op op = GetParam();
    Random rng;
    TestFrame f(8, 8, layoutOf(op), rng);
    Guarded<uint16_t> surface(64);
    const RectCase whole{0, 0, 8, 8, 0, 0, 8, 8, 0};
    EXPECT_EQ(run(op, f.get(), nullptr, whole), -1);
    for (uint8_t *Frame::*plane : {&Frame::y, &Frame::u, &Frame::v}) {
        Frame broken = f.frame();
        broken.*plane = nullptr;
        EXPECT_EQ(run(op, &broken, surface.begin(), whole), -1);
    }
    // Beyond the guarantee: corners past the frame or the surface, and for
    // the signed forms corners before the origin or a negative surface.
    std::vector<RectCase> beyond = {{10, 0, 8, 8, 0, 0, 8, 8, 0}, {0, 10, 8, 8, 0, 0, 8, 8, 1},
                                    {0, 0, 8, 8, 9, 0, 8, 8, 2},  {0, 0, 8, 8, 0, 9, 8, 8, 3},
                                    {0, 0, 8, 8, 9, 9, 8, 8, 1},  {int32_t(0xFFFFFFF0u), 0, 8, 8, 0, 0, 8, 8, 0}};
    if (!readsLowByte(op))
        for (const RectCase &k : {RectCase{-2, 0, 8, 8, 0, 0, 8, 8, 0}, {0, -4, 8, 8, 0, 0, 8, 8, 2},
                                  {0, 0, 8, 8, -1, 0, 8, 8, 0}, {0, 0, 8, 8, 0, -3, 8, 8, 3},
                                  {0, 0, 8, 8, 2, 2, -8, 8, 1}, {0, 0, 8, 8, 2, 2, 8, INT32_MIN, 0},
                                  {0, 0, 8, 8, 2, 2, INT32_MIN, INT32_MIN, 1}})
            beyond.push_back(k);
    for (const RectCase &k : beyond)
        EXPECT_EQ(run(op, f.get(), surface.begin(), k), 0) << k.srcX << " " << k.srcY << " " << k.dstX << " " << k.dstY;
    EXPECT_TRUE(surface.untouched());
    EXPECT_TRUE(f.untouched());
}

INSTANTIATE_TEST_SUITE_P(All, RectConversion,
                         ::testing::Values(Op::Yuv420BottomUp, Op::Yuv420TopDown, Op::Yuv422TopDown,
                                           Op::Yuv422BottomUp),
                         opName);

// A 4 by 2 neutral frame, luma 10 20 30 40 above 50 60 70 80, converted whole:
// the luma whose pixel stands at each surface word, in memory order, for codes
// 0 to 3 (a 4 by 2 surface, or 2 by 4 under a quarter turn).
struct Placements {
    Op op;
    int grid[4][8];
};
constexpr Placements kBottomUp420{Op::Yuv420BottomUp,
                                  {{50, 60, 70, 80, 10, 20, 30, 40},
                                   {10, 50, 20, 60, 30, 70, 40, 80},
                                   {40, 30, 20, 10, 80, 70, 60, 50},
                                   {80, 40, 70, 30, 60, 20, 50, 10}}};
constexpr Placements kTopDown420{Op::Yuv420TopDown,
                                 {{10, 20, 30, 40, 50, 60, 70, 80},
                                  {50, 10, 60, 20, 70, 30, 80, 40},
                                  {80, 70, 60, 50, 40, 30, 20, 10},
                                  {40, 80, 30, 70, 20, 60, 10, 50}}};

TEST(RectConversionExamples, FourByTwoPlacements)
{
    Placements all[] = {kBottomUp420, kTopDown420, kTopDown420, kBottomUp420};
    all[2].op = Op::Yuv422TopDown;
    all[3].op = Op::Yuv422BottomUp;
    uint8_t y[8] = {10, 20, 30, 40, 50, 60, 70, 80}, chroma[4] = {128, 128, 128, 128};
    Frame f{y, chroma, chroma, 4, 2, 0};
    for (const Placements &p : all)
        for (uint32_t code = 0; code < 4; ++code) {
            const bool quarter = code % 2 == 1;
            // The 4:2:2 bottom-up form takes the size before the turn.
            const bool asBefore = p.op == Op::Yuv422BottomUp || !quarter;
            const RectCase k{0, 0, 4, 2, 0, 0, asBefore ? 4 : 2, asBefore ? 2 : 4, code};
            uint16_t out[8] = {};
            ASSERT_EQ(run(p.op, &f, out, k), 0);
            for (int i = 0; i < 8; ++i) {
                const int c = (p.grid[code][i] / 10 - 1) % 4, r = (p.grid[code][i] / 10 - 1) / 4;
                const ModelOffsets d = p.op == Op::Yuv422TopDown ? modelDither(0, c) : modelDither(r, c);
                EXPECT_EQ(out[i], word(p.grid[code][i], 128, 128, kModel601, d))
                    << "op " << int(p.op) << ", code " << code << ", word " << i;
            }
        }
}

TEST(RectConversionExamples, WorkedWords)
{
    // 2 by 2, luma 81 82 / 83 84, u 90 and v 240 on both rows, ROTATE_NONE.
    uint8_t y[4] = {81, 82, 83, 84}, u[2] = {90, 90}, v[2] = {240, 240};
    Frame f{y, u, v, 2, 2, 0};
    uint16_t out[4];
    ASSERT_EQ(gYUV422toRGB16Rotate(&f, out, 2, 2, 0, 0, 0, 0, 2, 2, ROTATE_NONE), 0);
    EXPECT_EQ(std::vector<uint16_t>(out, out + 4), (std::vector<uint16_t>{0xF921, 0xF921, 0xF941, 0xF922}));
    ASSERT_EQ(gYUV422HPlanartoBGR565TopDown_Rotate(&f, out, 0, 0, 2, 2, 0, 0, 2, 2, ROTATE_NONE), 0);
    EXPECT_EQ(std::vector<uint16_t>(out, out + 4), (std::vector<uint16_t>{0xF082, 0xF0A2, 0xF081, 0xF082}));

    // 3 by 2 neutral, luma 122: source pixel (2, 1) takes the offsets
    // (4, 0, 6) under ROTATE_NONE and (6, 1, 4) under ROTATE_180.
    uint8_t grey[6] = {122, 122, 122, 122, 122, 122}, neutral[2] = {128, 128};
    Frame g{grey, neutral, neutral, 3, 2, 0};
    uint16_t out6[6];
    ASSERT_EQ(gYUV420toRGB16Rotate(&g, out6, 3, 2, 0, 0, 0, 0, 3, 2, ROTATE_NONE), 0);
    EXPECT_EQ(out6[5], 0x83CF);
    ASSERT_EQ(gYUV420toRGB16Rotate(&g, out6, 3, 2, 0, 0, 0, 0, 3, 2, ROTATE_180), 0);
    EXPECT_EQ(out6[0], 0x7BD0);
}

} // namespace
