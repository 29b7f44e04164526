// The weight and decimation tables against their listed values, and the
// plane scaler against a per-sample model on random planes, rectangles,
// ratios and null planes. Sources are exactly as large as the plane, and
// every other one ends (or starts) at an inaccessible page, so any read past
// it faults; targets are guarded, or now and then end at such a page.
#include <gtest/gtest.h>

#include <vector>

#include "scale/bilinear.h"
#include "scale/scale_plane.h"
#include "support/bilinear_model.h"

namespace {

using namespace pixmill::test;

// Listed rows py, px, w00, w01, w10, w11 pin the model's rule; both forms
// of the table hold the model's 256 numbers, sub-tables w00, w01, w10, w11
// in turn.
TEST(BilinearTables, ListedWeightsAndShifts)
{
    const int rows[5][6] = {
        {0, 0, 64, 0, 0, 0}, {0, 3, 40, 24, 0, 0}, {2, 1, 42, 6, 14, 2}, {4, 4, 16, 16, 16, 16}, {7, 7, 1, 7, 7, 49}};
    for (const auto &r : rows)
        for (int t = 0; t < 4; ++t)
            EXPECT_EQ(modelWeight(t / 2, t % 2, r[0], r[1]), r[2 + t]) << r[0] << " " << r[1];
    static_assert(sizeof(pixmill::BilinearWeights) == 256 && sizeof(pixmill::BilinearWeights32) == 1024);
    const auto *bytes = reinterpret_cast<const uint8_t *>(&pixmill::BilinearWeights);
    const auto *words = reinterpret_cast<const uint32_t *>(&pixmill::BilinearWeights32);
    for (int k = 0; k < 256; ++k)
        EXPECT_TRUE(bytes[k] == modelWeight(k / 128, k / 64 % 2, k % 64 / 8, k % 8) && words[k] == bytes[k]) << k;
    for (int ratio = 0; ratio < 32; ++ratio)
        EXPECT_EQ(pixmill::DecimationShift[ratio], kListedShifts[ratio]) << ratio;
}

TEST(ScalePlane, MatchesModelOnRandomPlanes)
{
    Random rng;
    for (int i = 0; i < 2000; ++i) {
        const ScaleCase k = randomScaleCase(rng, i);
        SCOPED_TRACE(::testing::Message() << "case " << i << ": " << k);
        const size_t samples = size_t(k.sw) * size_t(k.sh), targetSize = size_t(k.dw) * size_t(k.dh);
        const Guarded<uint8_t> src(samples, 0, rng.word(), i % 4 == 1 ? Placement::PageStart : Placement::PageEnd);
        Guarded<uint8_t> dst(targetSize, size_t(rng.range(0, 3)), rng.word(),
                             i % 8 == 7 ? Placement::PageEnd : Placement::Guarded);
        const uint8_t *from = i % 50 == 1 ? nullptr : src.data();
        uint8_t *to = i % 50 == 2 ? nullptr : dst.data();
        pixmill::gScalePlane(from, to, k.sw, k.sh, k.dw, k.dh, k.x, k.y, k.w, k.h);
        ASSERT_TRUE(written(dst, to ? modelScalePlane(from, k) : std::vector<uint8_t>(), k.dw));
        ASSERT_TRUE(src.untouched());
    }
}

// Enlargements to targets of 4 MiB and more, which are written past the
// caches: an odd width, so that rows start at every alignment, and a width
// of whole 64-byte lines, so that all rows share one.
TEST(ScalePlane, MatchesModelOnLargeEnlargements)
{
    Random rng;
    for (int i = 0; i < 2; ++i) {
        const int dw = i ? 2049 + 2 * rng.range(0, 40) : 2048 + 64 * rng.range(0, 8);
        const ScaleCase k{rng.range(200, 600), rng.range(100, 500), dw, 2048, 0, 0, 5000, 5000};
        SCOPED_TRACE(::testing::Message() << "case " << i << ": " << k);
        const Guarded<uint8_t> src(size_t(k.sw) * size_t(k.sh), 0, rng.word(), Placement::PageEnd);
        Guarded<uint8_t> dst(size_t(k.dw) * size_t(k.dh), 1, rng.word(), Placement::Guarded);
        pixmill::gScalePlane(src.data(), dst.data(), k.sw, k.sh, k.dw, k.dh, k.x, k.y, k.w, k.h);
        ASSERT_TRUE(written(dst, modelScalePlane(src.data(), k), k.dw));
        ASSERT_TRUE(src.untouched());
    }
}

// Rows of height 1: half-sample steps, where the last sample shows at half
// weight; ratio 3, taps two apart at (0, 2), (2, 4), (4, 6) and the odd
// columns and column 8 unread; the same size, which is no copy.
TEST(ScalePlane, WorkedRows)
{
    const std::vector<uint8_t> rows[][2] = {{{0, 80, 160, 240, 40}, {0, 40, 80, 120, 160, 200, 240, 140}},
                                            {{0, 10, 20, 30, 40, 50, 60, 70, 80}, {0, 25, 52}},
                                            {{0, 255, 20, 255, 40, 255, 60, 255, 255}, {0, 25, 52}},
                                            {{0, 80, 160, 240}, {0, 60, 120, 180}}};
    for (const auto &[row, want] : rows) {
        std::vector<uint8_t> out(want.size());
        const int w = int(row.size()), dw = int(out.size());
        pixmill::gScalePlane(row.data(), out.data(), w, 1, dw, 1, 0, 0, w, 1);
        EXPECT_EQ(out, want);
    }
}

} // namespace
