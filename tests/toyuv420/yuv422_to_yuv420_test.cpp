// 4:2:2 -> 4:2:0 crop and scale against a per-sample model on random frames
// and rectangles (among them copies and picks of every second or third
// sample), with source planes that end (or start) at an inaccessible page: positions from 1 stepping by extent / target size, the row
// guard at the frame's last row, chroma from the even target rows, the last
// two luma columns and rows and the last chroma column and row repeated.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "pixmill.h"
#include "support/bilinear_model.h"
#include "support/buffers.h"

namespace {

using namespace pixmill::test;

using Planes = std::array<std::vector<uint8_t>, 3>;

// Served: an even source width, two rows or more, a rectangle with a sample,
// an even target of at least 4 x 4. Where the right taps would pass the
// frame's last column, the scaler uses that column instead.
Planes model(TestFrame &s, ScaleCase k)
{
    if (k.sw % 2 || k.sh < 2 || !modelLimit(k) || k.dw < 4 || k.dh < 4 || k.dw % 2 || k.dh % 2)
        return {};
    const int64_t stepX = int64_t(k.w) * 262144 / k.dw, stepY = int64_t(k.h) * 262144 / k.dh;
    auto rowPos = [&](int r) {
        ModelPos py = modelPos(1 + r * stepY);
        if (py.index == k.sh - k.y - 1) // the frame's last row
            --py.index;
        return py;
    };
    auto sample = [&](const Guarded<uint8_t> &plane, int stride, int x0, ModelPos py, ModelPos px) {
        return uint8_t(modelBlend(py.phase, px.phase, [&](int tx, int ty) {
            const int col = std::min(x0 + px.index + tx, stride - 1);
            return plane[size_t(k.y + py.index + ty) * size_t(stride) + size_t(col)];
        }));
    };
    Planes p;
    for (int r = 0; r < k.dh; ++r)
        for (int i = 0; i < k.dw; ++i)
            p[0].push_back(sample(s.planes[0], k.sw, k.x, rowPos(std::min(r, k.dh - 3)),
                                  modelPos(1 + std::min(i, k.dw - 3) * stepX)));
    for (int m = 0; m < k.dh / 2; ++m)
        for (int j = 0; j < k.dw / 2; ++j) {
            const ModelPos py = rowPos(2 * std::min(m, k.dh / 2 - 2));
            const ModelPos px = modelPos(1 + std::min(j, k.dw / 2 - 2) * stepX);
            p[1].push_back(sample(s.planes[1], k.sw / 2, k.x / 2, py, px));
            p[2].push_back(sample(s.planes[2], k.sw / 2, k.x / 2, py, px));
        }
    return p;
}

TEST(YUV422toYUV420, MatchesModelOnRandomFrames)
{
    Random rng;
    for (int i = 0; i < 1500; ++i) {
        ScaleCase k = randomScaleCase(rng, i);
        if (i % 8) // mostly within the served forms
            k = {
                k.sw + k.sw % 2, std::max(k.sh, 2), std::max(4, k.dw & ~1), std::max(4, k.dh & ~1), k.x, k.y, k.w, k.h};
        if (i % 8 == 2) { // steps of whole samples: 1 to 3 across, 1 or 2 down
            k.dw = std::max(4, k.dw), k.dh = std::max(4, k.dh);
            k.sw = std::max(k.sw, k.dw * rng.range(1, 3)) + 2 * rng.range(0, 9);
            k.sh = std::max(k.sh, k.dh * rng.range(1, 2)) + rng.range(0, 3);
            k.x = rng.range(0, k.sw - k.dw), k.y = rng.range(0, k.sh - k.dh);
            k.w = k.dw * std::max(1, std::min(3, (k.sw - k.x) / k.dw));
            k.h = k.dh * std::max(1, std::min(2, (k.sh - k.y) / k.dh));
        }
        SCOPED_TRACE(::testing::Message() << "case " << i << ": " << k);
        TestFrame s(k.sw, k.sh, Layout::Yuv422, rng, 0, i % 4 ? Placement::PageEnd : Placement::PageStart);
        TestFrame t(k.dw, k.dh, Layout::Yuv420, rng, size_t(rng.range(0, 3)));
        ASSERT_EQ(gYUV422toYUV420(s.get(), &t.frame(), uint32_t(k.x), uint32_t(k.y), uint16_t(k.w), uint16_t(k.h)), 0);
        const Planes want = model(s, k);
        for (int p = 0; p < 3; ++p)
            ASSERT_TRUE(written(t.planes[p], want[size_t(p)], p ? k.dw / 2 : k.dw)) << "plane " << p;
        ASSERT_TRUE(s.untouched());
    }
}

// Same size: 8 x 8, luma 8 * row + column, chroma 4 * row + column. Luma is copied up to row and column 5, then
// repeated; chroma row m is source row 2m up to column and row 2, then repeated.
TEST(YUV422toYUV420, SameSizeCopiesLumaAndEvenChromaRows)
{
    uint8_t y[64], u[32], v[32] = {}, ty[64] = {}, tu[16] = {}, tv[16] = {};
    for (int i = 0; i < 64; ++i)
        y[i] = uint8_t(i);
    for (int i = 0; i < 32; ++i)
        u[i] = uint8_t(i);
    const Frame s{y, u, v, 8, 8, 0};
    Frame t{ty, tu, tv, 8, 8, 0};
    EXPECT_EQ(gYUV422toYUV420(&s, &t, 0, 0, 8, 8), 0);
    for (int i = 0; i < 64; ++i)
        EXPECT_EQ(ty[i], 8 * std::min(i / 8, 5) + std::min(i % 8, 5)) << i;
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(tu[i], 8 * std::min(i / 4, 2) + std::min(i % 4, 2)) << i;
}

} // namespace
