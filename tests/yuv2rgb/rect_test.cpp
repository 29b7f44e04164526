// The four rectangle conversions to RGB565 with rotation against a per-pixel
// model written from the rules alone, on random frames, corners (also past
// the frame or the surface, or negative), sizes, surfaces, codes and null
// pointers, with every surface word and guard byte checked; then the worked
// placements and words.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "pixmill.h"
#include "support/colour_model.h"
#include "support/buffers.h"

namespace {

using namespace pixmill::test;

// The two 601 forms write rows bottom-up, take 16-bit sizes and read the low
// byte of the code; the two 709 forms write top-down and take signed values.
enum class Op { Yuv420BottomUp, Yuv420TopDown, Yuv422TopDown, Yuv422BottomUp };
const char *const kOpNames[] = {"YUV420toBGR565TopDown_Rotate", "YUV420toRGB16Rotate", "YUV422toRGB16Rotate",
                                "YUV422HPlanartoBGR565TopDown_Rotate"};
bool bottomUp(Op op) { return op == Op::Yuv420BottomUp || op == Op::Yuv422BottomUp; }

// Arguments as passed (dstW, dstH as the form takes them), and the surface
// sw x sh as it lies in memory.
struct RectCase {
    int32_t srcX, srcY, srcW, srcH, dstX, dstY, dstW, dstH;
    uint32_t code;
    int32_t sw, sh;
};

// Expected result of one call; `s` holds the surface before the call and
// receives the expected words.
int32_t rectModel(Op op, TestFrame &f, const RectCase &k, std::vector<uint16_t> &s)
{
    const bool bu = bottomUp(op), is422bu = op == Op::Yuv422BottomUp, is709on422 = op == Op::Yuv422TopDown;
    const uint32_t code = bu ? k.code & 0xFF : k.code;
    const int32_t W = f.width(), H = f.height();
    if (code > 3)
        return -1;
    // Served as empty: a negative corner or surface of the signed forms, a
    // corner past the frame of the 4:2:2 bottom-up form.
    if ((!bu && std::min({k.srcX, k.srcY, k.dstX, k.dstY, k.dstW, k.dstH}) < 0) ||
        (is422bu && (uint32_t(k.srcX) > uint32_t(W) || uint32_t(k.srcY) > uint32_t(H))))
        return 0;
    // The corner is masked with 0xfffe, used as given, or made even; the 709
    // 4:2:2 form makes the size and cw even too, and ch under ROTATE_NONE.
    const int32_t mask = op == Op::Yuv420BottomUp ? 0xFFFE : is422bu ? -1 : ~1, even = is709on422 ? ~1 : -1;
    const int32_t x0 = k.srcX & mask, y0 = k.srcY & mask;
    // Under a quarter turn (an odd code) source columns run down the surface.
    const int32_t cw = std::min({k.srcW & even, W - x0, code % 2 ? k.sh - k.dstY : k.sw - k.dstX}) & even;
    const int32_t ch = std::min({k.srcH & even, H - y0, code % 2 ? k.sw - k.dstX : k.sh - k.dstY}) &
                       (code == 0 ? even : -1);
    if (cw <= 0 || ch <= 0)
        return 0;
    auto at = [&](int32_t x, int32_t y) -> uint16_t & {
        EXPECT_TRUE(x >= 0 && y >= 0 && k.dstX + x < k.sw && k.dstY + y < k.sh) << "model writes off the surface";
        return s.at(size_t(k.dstY + y) * size_t(k.sw) + size_t(k.dstX + x));
    };
    // The bottom-up forms convert whole 2x2 blocks only, and count the rows
    // of ROTATE_NONE from ch.
    const int32_t ew = bu ? cw & ~1 : cw, eh = bu ? ch & ~1 : ch;
    for (int32_t r = 0; r < eh; ++r)
        for (int32_t c = 0; c < ew; ++c) {
            const int32_t x[2][4] = {{c, eh - 1 - r, ew - 1 - c, r}, {c, r, ew - 1 - c, eh - 1 - r}};
            const int32_t y[2][4] = {{r, c, eh - 1 - r, ew - 1 - c}, {ch - 1 - r, c, r, ew - 1 - c}};
            // 4:2:2 bottom-up chroma starts at half the corner's luma offset.
            const size_t at422 = size_t(((y0 * W + x0) >> 1) + r * (W >> 1) + (c >> 1));
            const int u = is422bu ? f.planes[1][at422] : f.Ufor(x0 + c, y0 + r);
            const int v = is422bu ? f.planes[2][at422] : f.Vfor(x0 + c, y0 + r);
            // The 709 4:2:0 form gives an odd last column under ROTATE_NONE
            // (4, 0, 6) in odd rows; the 709 4:2:2 form knows row parity 0 only.
            const bool oddTail = op == Op::Yuv420TopDown && code == 0 && (cw & 1) && c == cw - 1 && (r & 1);
            const ModelOffsets d = oddTail ? ModelOffsets{4, 0, 6} : modelDither(is709on422 ? 0 : r, c);
            at(x[bu][code], y[bu][code]) =
                modelRgb565(modelPixel(f.Y(x0 + c, y0 + r), u, v, bu ? kModel601 : kModel709, false, d));
        }
    // ROTATE_NONE of the bottom-up forms, given a whole block: an odd last
    // column repeats its left neighbour on every converted row, then an odd
    // top row repeats the row below.
    if (bu && code == 0 && ew > 0 && eh > 0) {
        for (int32_t r = 0; r < eh && (cw & 1); ++r)
            at(cw - 1, ch - 1 - r) = at(cw - 2, ch - 1 - r);
        for (int32_t c = 0; c < cw && (ch & 1); ++c)
            at(c, 0) = at(c, 1);
    }
    return 0;
}

int32_t run(Op op, const Frame *f, uint16_t *d, const RectCase &k)
{
    if (!bottomUp(op)) {
        const auto call = op == Op::Yuv420TopDown ? gYUV420toRGB16Rotate : gYUV422toRGB16Rotate;
        return call(f, d, k.dstW, k.dstH, k.dstX, k.dstY, k.srcX, k.srcY, k.srcW, k.srcH, k.code);
    }
    const auto call = op == Op::Yuv420BottomUp ? gYUV420toBGR565TopDown_Rotate : gYUV422HPlanartoBGR565TopDown_Rotate;
    const auto u16 = [](int32_t x) { return uint16_t(x); };
    return call(f, d, uint32_t(k.srcX), uint32_t(k.srcY), u16(k.srcW), u16(k.srcH), u16(k.dstX), u16(k.dstY),
                u16(k.dstW), u16(k.dstH), k.code);
}

// Corners mostly inside the frame and the surface, sizes that overrun either
// one or not; now and then a code that is refused or counts by its low byte,
// a corner with bits above the low 16, or a negative value (a huge corner
// for the unsigned forms).
RectCase randomCase(Random &rng, Op op, int32_t width, int32_t height)
{
    RectCase k{rng.range(0, width + 2), rng.range(0, height + 2), rng.range(0, width + 3), rng.range(0, height + 3),
               0, 0, 0, 0, uint32_t(rng.range(0, 3)), 0, 0};
    // A surface up to 4 words wider and higher than the frame, turned with
    // the code.
    k.sw = rng.range(0, (k.code % 2 ? height : width) + 4);
    k.sh = rng.range(0, (k.code % 2 ? width : height) + 4);
    k.dstX = rng.range(0, k.sw + 1);
    k.dstY = rng.range(0, k.sh + 1);
    // Now and then nearly the whole frame onto a surface that takes it.
    if (rng.range(0, 2) == 0) {
        k.srcX = rng.range(0, 3), k.srcY = rng.range(0, 3), k.srcW = width + 1, k.srcH = height + 1;
        k.dstX = rng.range(0, std::min(k.sw, 3)), k.dstY = rng.range(0, std::min(k.sh, 3));
        k.sw = std::max(k.sw, k.dstX + (k.code % 2 ? height : width));
        k.sh = std::max(k.sh, k.dstY + (k.code % 2 ? width : height));
    }
    if (rng.range(0, 15) == 0)
        k.code = rng.coin() ? uint32_t(rng.range(4, 255)) : 0x80000000u | k.code;
    else if (bottomUp(op) && rng.coin())
        k.code |= uint32_t(rng.range(1, 0xFFFF)) << 8;
    if (op == Op::Yuv420BottomUp && rng.coin())
        k.srcX |= rng.range(1, 3) << 16;
    // The 4:2:2 bottom-up form takes the surface size before the turn.
    const bool turned = op == Op::Yuv422BottomUp && k.code % 2 == 1;
    k.dstW = turned ? k.sh : k.sw;
    k.dstH = turned ? k.sw : k.sh;
    int32_t *field[] = {&k.srcX, &k.srcY, &k.dstX, &k.dstY, &k.dstW, &k.dstH};
    if (rng.range(0, 31) == 0)
        *field[rng.range(0, bottomUp(op) ? 1 : 5)] = rng.coin() ? INT32_MIN : -rng.range(1, 20);
    return k;
}

class RectConversion : public ::testing::TestWithParam<Op> {};

TEST_P(RectConversion, MatchesModelOnRandomCases)
{
    const Op op = GetParam();
    const Layout layout = op == Op::Yuv420BottomUp || op == Op::Yuv420TopDown ? Layout::Yuv420 : Layout::Yuv422;
    Random rng;
    // Small frames, then frames past the widest vector step and the turned
    // tiles, and a few up to 2000 wide.
    // The last case is a 512 by 512 frame that has every chroma pair.
    for (int i = 0; i <= 3000; ++i) {
        const int32_t width = i == 3000 ? 512 : rng.range(1, i < 1800 ? 10 : i < 2900 ? 280 : 2000);
        const int32_t height = i == 3000 ? 512 : rng.range(1, i < 1800 ? 10 : i < 2900 ? 40 : 20);
        // Every fourth case on planes and a surface at a page end or start.
        const size_t misalign = size_t(rng.range(0, 3));
        const Placement where = i % 4 ? Placement::Guarded : i % 8 ? Placement::PageEnd : Placement::PageStart;
        // Planes of exactly the frame's layout for the two forms that keep to
        // it; for the others two rows and columns larger than the record says:
        // a rectangle of odd size may read the chroma sample just past it.
        const int32_t spare = op == Op::Yuv420BottomUp || op == Op::Yuv422TopDown ? 0 : 2;
        TestFrame f(width + spare, height + spare, layout, rng, misalign, where);
        f.frame().width = uint16_t(width);
        f.frame().height = uint16_t(height);
        if (i == 3000)
            everyChromaPair(f);
        RectCase k = randomCase(rng, op, width, height);
        if (i == 3000)
            k = {0, 0, 512, 512, 0, 0, 512, 512, uint32_t(rng.range(0, 3)), 512, 512};
        // Now and then a null plane or surface, which is refused.
        const int broken = i == 3000 ? 127 : rng.range(0, 127);
        SCOPED_TRACE(::testing::Message() << "case " << i << ": frame " << width << "x" << height << ", src ("
                                          << k.srcX << ", " << k.srcY << ") " << k.srcW << "x" << k.srcH << ", dst ("
                                          << k.dstX << ", " << k.dstY << ") of " << k.dstW << "x" << k.dstH
                                          << ", code " << k.code << ", null pointer " << broken);
        Guarded<uint16_t> surface(size_t(k.sw) * size_t(k.sh), misalign, rng.word(), where);
        Frame record = f.frame();
        uint8_t *Frame::*planes[] = {&Frame::y, &Frame::u, &Frame::v};
        if (broken < 3)
            record.*planes[broken] = nullptr;
        std::vector<uint16_t> want = surface.contents();
        const int32_t result = broken < 4 ? -1 : rectModel(op, f, k, want);
        ASSERT_EQ(run(op, &record, broken == 3 ? nullptr : surface.begin(), k), result);
        ASSERT_TRUE(sameUnits(surface.contents(), want, size_t(std::max(k.sw, 1))));
        ASSERT_TRUE(surface.intact());
        ASSERT_TRUE(f.untouched());
    }
}

INSTANTIATE_TEST_SUITE_P(All, RectConversion,
                         ::testing::Values(Op::Yuv420BottomUp, Op::Yuv420TopDown, Op::Yuv422TopDown,
                                           Op::Yuv422BottomUp),
                         [](const auto &p) { return std::string(kOpNames[int(p.param)]); });

// A 4 by 2 neutral frame of luma 10 20 30 40 above 50 60 70 80, converted
// whole: the pixel (digit 1 to 8) at each surface word in memory order for
// codes 0 to 3, on a 4 by 2 surface or a 2 by 4 one under a quarter turn.
TEST(RectConversionExamples, FourByTwoPlacements)
{
    const char *grids[2][4] = {{"12345678", "51627384", "87654321", "48372615"},
                               {"56781234", "15263748", "43218765", "84736251"}};
    uint8_t y[8] = {10, 20, 30, 40, 50, 60, 70, 80}, neutral[4] = {128, 128, 128, 128};
    const Frame f{y, neutral, neutral, 4, 2, 0};
    for (Op op : {Op::Yuv420BottomUp, Op::Yuv420TopDown, Op::Yuv422TopDown, Op::Yuv422BottomUp})
        for (uint32_t code = 0; code < 4; ++code) {
            // The 4:2:2 bottom-up form takes the size before the turn.
            const bool wide = op == Op::Yuv422BottomUp || code % 2 == 0;
            uint16_t out[8] = {};
            ASSERT_EQ(run(op, &f, out, {0, 0, 4, 2, 0, 0, wide ? 4 : 2, wide ? 2 : 4, code, 0, 0}), 0);
            for (int i = 0; i < 8; ++i) {
                const int n = grids[bottomUp(op)][code][i] - '1';
                const ModelOffsets d = modelDither(op == Op::Yuv422TopDown ? 0 : n / 4, n % 4);
                EXPECT_EQ(out[i], modelRgb565(modelPixel(10 * n + 10, 128, 128, kModel601, false, d)))
                    << kOpNames[int(op)] << ", code " << code << ", word " << i;
            }
        }
}

// A 2 by 2 frame of luma 81 82 / 83 84 with u 90 and v 240 on both rows, and
// a 3 by 2 neutral one of luma 122, whose source pixel (2, 1) takes the
// offsets (4, 0, 6) under ROTATE_NONE and (6, 1, 4) under ROTATE_180.
TEST(RectConversionExamples, WorkedWords)
{
    uint8_t y[4] = {81, 82, 83, 84}, u[2] = {90, 90}, v[2] = {240, 240};
    uint8_t grey[6] = {122, 122, 122, 122, 122, 122}, neutral[2] = {128, 128};
    const Frame block{y, u, v, 2, 2, 0}, odd{grey, neutral, neutral, 3, 2, 0};
    const struct {
        Op op;
        const Frame *f;
        uint32_t code;
        std::vector<uint16_t> want;
    } cases[] = {{Op::Yuv422TopDown, &block, 0, {0xF921, 0xF921, 0xF941, 0xF922}},
                 {Op::Yuv422BottomUp, &block, 0, {0xF082, 0xF0A2, 0xF081, 0xF082}},
                 {Op::Yuv420TopDown, &odd, 0, {0x7BEF, 0x83CF, 0x7BEF, 0x7BD0, 0x7BEF, 0x83CF}},
                 {Op::Yuv420TopDown, &odd, 2, {0x7BD0, 0x7BEF, 0x7BD0, 0x7BEF, 0x83CF, 0x7BEF}}};
    for (const auto &k : cases) {
        const int32_t w = k.f->width;
        std::vector<uint16_t> out(size_t(w) * 2);
        ASSERT_EQ(run(k.op, k.f, out.data(), {0, 0, w, 2, 0, 0, w, 2, k.code, 0, 0}), 0);
        EXPECT_EQ(out, k.want) << kOpNames[int(k.op)] << ", code " << k.code;
    }
}

} // namespace
