// The weight and decimation tables against their listed values, and the
// plane scaler against a per-sample model on random planes, rectangles and
// ratios, with guards around both planes.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "scale/bilinear.h"
#include "scale/scale_plane.h"
#include "support/bilinear_model.h"
#include "support/guarded.h"

namespace {

using namespace pixmill::test;
using pixmill::BilinearWeights;
using pixmill::BilinearWeights32;
using pixmill::gScalePlane;

TEST(BilinearTables, ListedWeightsAndShifts)
{
    struct Row {
        int py, px, w00, w01, w10, w11;
    };
    for (const Row r : {Row{0, 0, 64, 0, 0, 0}, {0, 3, 40, 24, 0, 0}, {2, 1, 42, 6, 14, 2}, {4, 4, 16, 16, 16, 16},
                        {7, 7, 1, 7, 7, 49}}) {
        const int k = r.py * 8 + r.px;
        EXPECT_EQ(BilinearWeights.w00[k], r.w00) << k;
        EXPECT_EQ(BilinearWeights.w01[k], r.w01) << k;
        EXPECT_EQ(BilinearWeights.w10[k], r.w10) << k;
        EXPECT_EQ(BilinearWeights.w11[k], r.w11) << k;
    }
    // 256 entries in the order w00, w01, w10, w11; both forms hold the same numbers.
    static_assert(sizeof(BilinearWeights) == 256 && sizeof(BilinearWeights32) == 1024);
    uint8_t bytes[256];
    uint32_t words[256];
    std::memcpy(bytes, &BilinearWeights, 256);
    std::memcpy(words, &BilinearWeights32, 1024);
    for (int k = 0; k < 64; ++k) {
        const int py = k / 8, px = k % 8;
        for (int t = 0; t < 4; ++t) {
            EXPECT_EQ(bytes[t * 64 + k], modelWeight(t / 2, t % 2, py, px)) << t << " " << k;
            EXPECT_EQ(words[t * 64 + k], bytes[t * 64 + k]) << t << " " << k;
        }
        EXPECT_EQ(bytes[k] + bytes[64 + k] + bytes[128 + k] + bytes[192 + k], 64);
    }
    for (int ratio = 0; ratio < 32; ++ratio)
        EXPECT_EQ(pixmill::DecimationShift[ratio], kListedShifts[ratio]) << ratio;
}

struct PlaneCase {
    int sw, sh, dw, dh, x, y, w, h;
};

// Sizes from tiny to reductions past the ratio limit and strong enlargements;
// rectangles that fit or stick out.
PlaneCase randomPlaneCase(Random &rng, int i)
{
    PlaneCase k{};
    switch (i % 4) {
    case 0: // small both ways
        k = {rng.range(1, 24), rng.range(1, 24), rng.range(1, 24), rng.range(1, 24), 0, 0, 0, 0};
        break;
    case 1: // strong reduction on one or both axes
        k = {rng.range(20, 700), rng.range(1, 90), rng.range(1, 12), rng.range(1, 30), 0, 0, 0, 0};
        if (rng.coin())
            std::swap(k.sw, k.sh), std::swap(k.dw, k.dh);
        break;
    case 2: // enlargement
        k = {rng.range(1, 8), rng.range(1, 8), rng.range(8, 90), rng.range(8, 60), 0, 0, 0, 0};
        break;
    default: // same size
        k.sw = k.dw = rng.range(1, 40);
        k.sh = k.dh = rng.range(1, 40);
    }
    k.x = rng.coin() ? 0 : rng.range(0, k.sw - 1);
    k.y = rng.coin() ? 0 : rng.range(0, k.sh - 1);
    k.w = rng.coin() ? k.sw - k.x : rng.range(1, k.sw + 5);
    k.h = rng.coin() ? k.sh - k.y : rng.range(1, k.sh + 5);
    return k;
}

TEST(ScalePlane, MatchesModelOnRandomPlanes)
{
    Random rng;
    for (int i = 0; i < 2000; ++i) {
        const PlaneCase k = randomPlaneCase(rng, i);
        SCOPED_TRACE(scaleCase(i, k.sw, k.sh, k.x, k.y, k.w, k.h, k.dw, k.dh));
        Guarded<uint8_t> src(size_t(k.sw) * size_t(k.sh), size_t(rng.range(0, 3)), rng.word());
        Guarded<uint8_t> dst(size_t(k.dw) * size_t(k.dh), size_t(rng.range(0, 3)), rng.word());
        src.randomize(rng);
        gScalePlane(src.data(), dst.data(), k.sw, k.sh, k.dw, k.dh, k.x, k.y, k.w, k.h);
        ASSERT_TRUE(sameSamples(dst.contents(), modelScalePlane(src.data(), k.sw, k.sh, k.dw, k.dh, k.x, k.y, k.w, k.h),
                                k.dw));
        ASSERT_TRUE(dst.intact());
        ASSERT_TRUE(src.untouched());
    }
}

std::vector<uint8_t> scaleRow(std::vector<uint8_t> row, int dw)
{
    std::vector<uint8_t> out(static_cast<size_t>(dw));
    const int w = int(row.size());
    gScalePlane(row.data(), out.data(), w, 1, dw, 1, 0, 0, w, 1);
    return out;
}

TEST(ScalePlane, WorkedExamples)
{
    // Half-sample steps: the last source sample shows only at half weight.
    EXPECT_EQ(scaleRow({0, 80, 160, 240, 40}, 8), (std::vector<uint8_t>{0, 40, 80, 120, 160, 200, 240, 140}));
    // Ratio 3: taps two apart at (0, 2), (2, 4), (4, 6); odd columns and column 8 unread.
    EXPECT_EQ(scaleRow({0, 10, 20, 30, 40, 50, 60, 70, 80}, 3), (std::vector<uint8_t>{0, 25, 52}));
    EXPECT_EQ(scaleRow({0, 255, 20, 255, 40, 255, 60, 255, 255}, 3), (std::vector<uint8_t>{0, 25, 52}));
    // Same size is not a copy: columns at 0, 0.75, 1.5, 2.25.
    EXPECT_EQ(scaleRow({0, 80, 160, 240}, 4), (std::vector<uint8_t>{0, 60, 120, 180}));
}

// An extent of 1 has a far tap of weight 0, which may lie past the plane's
// end; the plane here has no guard, so a read there is an overflow.
TEST(ScalePlane, ExtentOfOneReadsNothingBeyondThePlane)
{
    std::vector<uint8_t> src(20);
    for (size_t i = 0; i < src.size(); ++i)
        src[i] = uint8_t(7 * i);
    std::vector<uint8_t> dst(6);
    gScalePlane(src.data(), dst.data(), 5, 4, 3, 2, 4, 3, 1, 1);
    EXPECT_EQ(dst, std::vector<uint8_t>(6, src[19]));
    gScalePlane(src.data(), dst.data(), 5, 4, 3, 2, 3, 3, 5, 1); // two columns of the last row
    // Columns at 0, 1/3, 2/3 of a sample: px 0, 2, 5 between 126 and 133.
    EXPECT_EQ(dst, (std::vector<uint8_t>{126, 127, 130, 126, 127, 130}));
}

TEST(ScalePlane, NullPlanesAndEmptyTargetsWriteNothing)
{
    Random rng;
    Guarded<uint8_t> src(64, 0, rng.word()), dst(64, 0, rng.word());
    gScalePlane(nullptr, dst.data(), 8, 8, 8, 8, 0, 0, 8, 8);
    gScalePlane(src.data(), nullptr, 8, 8, 8, 8, 0, 0, 8, 8);
    gScalePlane(src.data(), dst.data(), 8, 8, 0, 8, 0, 0, 8, 8);
    gScalePlane(src.data(), dst.data(), 8, 8, 8, 0, 0, 0, 8, 8);
    EXPECT_TRUE(dst.untouched());
}

} // namespace
