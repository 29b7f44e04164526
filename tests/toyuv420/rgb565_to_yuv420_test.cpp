// RGB565 -> 4:2:0 frame against a per-pixel model: the image upside down,
// chroma from the first pixel of each 2x2 block, the last column and row
// replicated over the rest of the frame. Also the worked colours
// and the worked 5x3 image.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "support/buffers.h"

namespace {

using namespace pixmill::test;

// Y, U and V: the studio-range matrix applied to the raw 5- and 6-bit levels.
std::array<int, 3> modelYuv(uint16_t px)
{
    const int r = px / 2048, g = px / 32 % 64, b = px % 32;
    return {16 + floorShift(23840 * r + 40092 * g + 8096 * b, 14),
            128 + floorShift(-13184 * r - 22116 * g + 57344 * b, 14),
            128 + floorShift(57344 * r - 26028 * g - 5272 * b, 14)};
}

// Converts `img` into frame `f` and checks every
// sample against the model of the source pixel that `luma(R, c)` names for
// frame row R, column c, and that `chroma(C, j)` names for chroma row C,
// column j; guards and record stay.
template <class Luma, class Chroma>
void expectFrame(TestFrame &f, const uint16_t *img, int sw, int sh, Luma luma, Chroma chroma)
{
    const Frame record = f.frame();
    gEmRGB565toYUV420(img, &f.frame(), uint32_t(sw), uint32_t(sh));
    const auto at = [&](std::pair<int, int> p) { return modelYuv(img[size_t(p.first * sw + p.second)]); };
    for (int R = 0; R < f.height(); ++R)
        for (int c = 0; c < f.width(); ++c) {
            const auto yuv = at(chroma(R / 2, c / 2));
            ASSERT_EQ(f.Y(c, R), at(luma(R, c))[0]) << "y(" << R << ", " << c << ")";
            ASSERT_EQ(f.Ufor(c, R), yuv[1]) << "u(" << R / 2 << ", " << c / 2 << ")";
            ASSERT_EQ(f.Vfor(c, R), yuv[2]) << "v(" << R / 2 << ", " << c / 2 << ")";
        }
    ASSERT_TRUE(f.intact());
    ASSERT_EQ(0, std::memcmp(&record, &f.frame(), sizeof record));
}

// The general rule: frame row R shows source row min(H-1-R, sh-1), column c
// source column min(c, EW-1); chroma row C that of source row
// min(H-2-2C, sh-1) rounded down to even, chroma column j that of source
// column min(2j, EW-2).
void expectUpsideDown(TestFrame &f, const uint16_t *img, int sw, int sh)
{
    const int H = f.height(), ew = sw & ~1;
    expectFrame(f, img, sw, sh,
        [&](int R, int c) { return std::pair{std::min(H - 1 - R, sh - 1), std::min(c, ew - 1)}; },
        [&](int C, int j) { return std::pair{std::min(H - 2 - 2 * C, (sh - 1) & ~1), std::min(2 * j, ew - 2)}; });
}

// Case 0 holds every RGB565 word once as the first pixel of a 2x2 block;
// then every even frame width up to 130 (past the widest vector step), random
// ones up to 2000 on a few rows, and small random sizes; planes at any
// alignment or against an inaccessible page (an odd last column is never
// read, so an image that ends at a page still converts).
TEST(RGB565toYUV420, MatchesModelOnRandomSizes)
{
    Random rng;
    for (int i = 0; i < 1600; ++i) {
        const int half = i < 1300 ? 6 : 30;
        int W = 2 * rng.range(1, half), H = 2 * rng.range(1, half);
        if (i == 0)
            W = H = 512;
        else if (i <= 65)
            W = 2 * i, H = 2 * rng.range(1, 3);
        else if (i <= 165)
            W = 2 * rng.range(1, 1000), H = 2 * rng.range(1, 2);
        const int sw = i && rng.coin() ? rng.range(2, W) : W, sh = i && rng.coin() ? rng.range(1, H) : H;
        SCOPED_TRACE(::testing::Message() << "case " << i << ": " << sw << "x" << sh << " into " << W << "x" << H);
        const Placement where = Placement(rng.range(0, 2));
        Guarded<uint16_t> img(size_t(sw * sh), size_t(rng.range(0, 31)), rng.word(), where);
        for (size_t k = 0; i == 0 && k < img.size(); ++k)
            img[k] = uint16_t(k / 1024 * 256 + k % 512 / 2);
        img.snapshot();
        TestFrame f(W, H, Layout::Yuv420, rng, size_t(rng.range(0, 63)), where);
        ASSERT_NO_FATAL_FAILURE(expectUpsideDown(f, img.data(), sw, sh));
        ASSERT_TRUE(img.untouched());
    }
}

// The worked 5x3 image in an 8x8 frame: source column 4 is never read, row 2
// lands on frame rows 5 and 4, the rows above copy row 4, chroma columns 2 and
// 3 repeat chroma column 1. The worked colours against the model (which the
// library meets on every word in case 0 above).
TEST(RGB565toYUV420, WorkedExamples)
{
    Random rng;
    uint16_t img[15];
    for (size_t k = 0; k < 15; ++k)
        img[k] = uint16_t(0x107E * k + 31); // r = 2k, g = 4k, b = 31 - 2k: Y, U and V all differ
    const int rowOf[8] = {2, 2, 2, 2, 2, 2, 1, 0}, colOf[8] = {0, 1, 2, 3, 3, 3, 3, 3};
    const int chromaRowOf[4] = {2, 2, 2, 0}, chromaColOf[4] = {0, 2, 2, 2};
    TestFrame f(8, 8, Layout::Yuv420, rng);
    expectFrame(f, img, 5, 3,
                [&](int R, int c) { return std::pair{rowOf[R], colOf[c]}; },
                [&](int C, int j) { return std::pair{chromaRowOf[C], chromaColOf[j]}; });
    const std::array<int, 4> colours[] = {{0x0000, 16, 128, 128}, {0xFFFF, 230, 126, 126}, {0xF800, 61, 103, 236},
                                          {0x07E0, 170, 42, 27},  {0x001F, 31, 236, 118}};
    for (const auto &k : colours)
        EXPECT_EQ(modelYuv(uint16_t(k[0])), (std::array<int, 3>{k[1], k[2], k[3]})) << std::hex << k[0];
}

} // namespace
