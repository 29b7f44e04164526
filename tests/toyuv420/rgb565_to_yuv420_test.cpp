// RGB565 -> 4:2:0 frame against a per-pixel model: the image upside down,
// chroma from the first pixel of each 2x2 block, the last column and row
// replicated over the rest of the frame. Also the constant tables and the
// worked values.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

#include "pixmill.h"
#include "support/frames.h"
#include "support/planar_buffer.h"
#include "toyuv420/rgb565_tables.h"

namespace {

using namespace pixmill::test;

struct ModelYuv {
    int y, u, v;
};

// The studio-range matrix applied to the raw 5- and 6-bit levels.
ModelYuv modelYuv(uint16_t px)
{
    const int r = px / 2048, g = px / 32 % 64, b = px % 32;
    return {16 + int(floorShift(23840 * r + 40092 * g + 8096 * b, 14)),
            128 + int(floorShift(-13184 * r - 22116 * g + 57344 * b, 14)),
            128 + int(floorShift(57344 * r - 26028 * g - 5272 * b, 14))};
}

int lesser(int a, int b) { return a < b ? a : b; }

// Frame row R shows source row min(H-1-R, sh-1); a column c shows source
// column min(c, EW-1). Chroma row C shows source row 2 * min(H/2-1-C,
// ceil(sh/2)-1), chroma column j source column 2 * min(j, EW/2-1).
::testing::AssertionResult matchesModel(const TestFrame &f, const uint16_t *img, int sw, int sh)
{
    const int W = f.width(), H = f.height(), ew = sw & ~1;
    auto pixelAt = [&](int row, int col) { return img[size_t(row) * size_t(sw) + size_t(col)]; };
    for (int R = 0; R < H; ++R)
        for (int c = 0; c < W; ++c) {
            const int want = modelYuv(pixelAt(lesser(H - 1 - R, sh - 1), lesser(c, ew - 1))).y;
            if (f.Y(c, R) != want)
                return ::testing::AssertionFailure() << "y(" << R << ", " << c << ") = " << int(f.Y(c, R))
                                                     << ", want " << want;
        }
    for (int C = 0; C < H / 2; ++C)
        for (int j = 0; j < W / 2; ++j) {
            const int row = 2 * lesser(H / 2 - 1 - C, (sh + 1) / 2 - 1), col = 2 * lesser(j, ew / 2 - 1);
            const ModelYuv want = modelYuv(pixelAt(row, col));
            if (f.U(j, C) != want.u || f.V(j, C) != want.v)
                return ::testing::AssertionFailure() << "u, v(" << C << ", " << j << ") = " << int(f.U(j, C)) << ", "
                                                     << int(f.V(j, C)) << ", want " << want.u << ", " << want.v;
        }
    return ::testing::AssertionSuccess();
}

TEST(RGB565toYUV420, MatchesModelOnRandomSizes)
{
    Random rng;
    for (int i = 0; i < 1500; ++i) {
        const int maxSide = i < 1200 ? 12 : 60;
        const int W = 2 * rng.range(1, maxSide / 2), H = 2 * rng.range(1, maxSide / 2);
        const int sw = rng.coin() ? W : rng.range(2, W), sh = rng.coin() ? H : rng.range(1, H);
        SCOPED_TRACE(::testing::Message() << "case " << i << ": frame " << W << "x" << H << ", image " << sw << "x"
                                          << sh);
        TestFrame f(W, H, Layout::Yuv420, rng);
        const Frame record = f.frame();
        Guarded<uint16_t> img(size_t(sw) * size_t(sh), 0, rng.word());
        img.randomize(rng);
        gEmRGB565toYUV420(img.data(), &f.frame(), uint32_t(sw), uint32_t(sh));
        ASSERT_TRUE(matchesModel(f, img.data(), sw, sh));
        ASSERT_TRUE(f.intact());
        ASSERT_TRUE(img.untouched());
        ASSERT_EQ(0, std::memcmp(&record, &f.frame(), sizeof record));
    }
}

// Every RGB565 word as the first pixel of a 2x2 block, so it gives Y, U and V.
TEST(RGB565toYUV420, AllWordsMatchModel)
{
    Random rng;
    TestFrame f(512, 512, Layout::Yuv420, rng);
    std::vector<uint16_t> img(512 * 512);
    for (size_t r = 0; r < 512; ++r)
        for (size_t c = 0; c < 512; ++c)
            img[r * 512 + c] = uint16_t((r / 2) * 256 + c / 2);
    gEmRGB565toYUV420(img.data(), &f.frame(), 512, 512);
    EXPECT_TRUE(matchesModel(f, img.data(), 512, 512));
}

TEST(RGB565toYUV420, WorkedColours)
{
    const struct {
        uint16_t px;
        int y, u, v;
    } cases[] = {{0x0000, 16, 128, 128}, {0xFFFF, 230, 126, 126}, {0xF800, 61, 103, 236},
                 {0x07E0, 170, 42, 27},  {0x001F, 31, 236, 118}};
    for (const auto &k : cases) {
        const uint16_t img[4] = {k.px, k.px, k.px, k.px};
        uint8_t y[4], u[1], v[1];
        Frame f{y, u, v, 2, 2, 0};
        gEmRGB565toYUV420(img, &f, 2, 2);
        EXPECT_EQ(y[3], k.y) << std::hex << k.px;
        EXPECT_EQ(u[0], k.u) << std::hex << k.px;
        EXPECT_EQ(v[0], k.v) << std::hex << k.px;
    }
}

// A 5x3 image in an 8x8 frame: column 4 is never read, rows above the image
// copy the last one written.
TEST(RGB565toYUV420, OddImageInLargerFrame)
{
    uint16_t img[15];
    for (int i = 0; i < 15; ++i)
        img[i] = uint16_t(0x0841 * i); // grey ramp: distinct lumas
    Random rng;
    TestFrame f(8, 8, Layout::Yuv420, rng);
    gEmRGB565toYUV420(img, &f.frame(), 5, 3);
    const int rowOf[8] = {2, 2, 2, 2, 2, 2, 1, 0}; // source row shown by frame row
    for (int R = 0; R < 8; ++R)
        for (int c = 0; c < 8; ++c)
            EXPECT_EQ(f.Y(c, R), modelYuv(img[rowOf[R] * 5 + (c < 4 ? c : 3)]).y) << R << ", " << c;
    const int chromaRowOf[4] = {2, 2, 2, 0};
    for (int C = 0; C < 4; ++C)
        for (int j = 0; j < 4; ++j)
            EXPECT_EQ(f.U(j, C), modelYuv(img[chromaRowOf[C] * 5 + (j < 2 ? 2 * j : 2)]).u) << C << ", " << j;
    EXPECT_TRUE(f.intact());
}

TEST(RGB565toYUV420, TablesAreLinearWithTheListedLastEntries)
{
    const auto &t = pixmill::Rgb565ToYuv;
    const struct {
        const int32_t *table;
        int entries;
        int32_t last;
        size_t offset;
    } tables[] = {{t.YFromR, 32, 739040, 0},      {t.YFromG, 64, 2525796, 32},    {t.YFromB, 32, 250976, 96},
                  {t.UFromR, 32, -408704, 128},   {t.UFromG, 64, -1393308, 160},  {t.ChromaFull5, 32, 1777664, 224},
                  {t.VFromG, 64, -1639764, 256},  {t.VFromB, 32, -163432, 320}};
    const auto *block = reinterpret_cast<const int32_t *>(&t);
    for (const auto &k : tables) {
        EXPECT_EQ(k.table, block + k.offset);
        const int32_t step = k.last / (k.entries - 1);
        for (int i = 0; i < k.entries; ++i)
            EXPECT_EQ(k.table[i], step * i) << "offset " << k.offset << ", entry " << i;
    }
}

} // namespace
