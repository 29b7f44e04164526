// 4:2:2 -> 4:2:0 crop and scale against a per-sample model: positions from 1
// stepping by extent / target size, the row guard at the frame's last row,
// chroma from the even target rows, the last two luma columns and rows and
// the last chroma column and row repeated.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "pixmill.h"
#include "support/bilinear_model.h"
#include "support/frames.h"

namespace {

using namespace pixmill::test;

struct Case {
    int W, H, TW, TH;
    uint32_t x, y;
    uint16_t w, h;
};

struct Planes {
    std::vector<uint8_t> y, u, v;
};

// Where the right taps would pass the frame's last column, the scaler uses
// that column instead.
Planes model(const TestFrame &s, const Case &k)
{
    const int x0 = int(k.x), y0 = int(k.y);
    const int w = std::min(int(k.w), k.W - x0), h = std::min(int(k.h), k.H - y0);
    const int64_t stepX = int64_t(w) * 262144 / k.TW, stepY = int64_t(h) * 262144 / k.TH;
    const int lastRow = k.H - y0 - 1, cw = k.TW / 2;
    Planes p{std::vector<uint8_t>(size_t(k.TW) * size_t(k.TH)), std::vector<uint8_t>(size_t(cw) * size_t(k.TH / 2)),
             {}};
    p.v = p.u;
    for (int r = 0; r < k.TH; ++r) {
        ModelPos py = modelPos(1 + std::min(r, k.TH - 3) * stepY);
        if (py.index == lastRow)
            --py.index;
        const int row = y0 + py.index;
        for (int i = 0; i < k.TW; ++i) {
            const ModelPos px = modelPos(1 + std::min(i, k.TW - 3) * stepX);
            p.y[size_t(r) * size_t(k.TW) + size_t(i)] = uint8_t(modelBlend(py.phase, px.phase, [&](int tx, int ty) {
                return s.Y(std::min(x0 + px.index + tx, k.W - 1), row + ty);
            }));
        }
        if (r % 2 || r / 2 >= k.TH / 2)
            continue;
        for (int j = 0; j < cw; ++j) {
            const ModelPos px = modelPos(1 + std::min(j, cw - 2) * stepX);
            const int col = x0 / 2 + px.index;
            const size_t at = size_t(r / 2) * size_t(cw) + size_t(j);
            p.u[at] = uint8_t(modelBlend(py.phase, px.phase, [&](int tx, int ty) {
                return s.U(std::min(col + tx, k.W / 2 - 1), row + ty);
            }));
            p.v[at] = uint8_t(modelBlend(py.phase, px.phase, [&](int tx, int ty) {
                return s.V(std::min(col + tx, k.W / 2 - 1), row + ty);
            }));
        }
    }
    // Chroma row TH/2 - 1 repeats row TH/2 - 2, which target row TH - 4 sampled.
    std::copy_n(p.u.end() - 2 * cw, cw, p.u.end() - cw);
    std::copy_n(p.v.end() - 2 * cw, cw, p.v.end() - cw);
    return p;
}

Case randomCase(Random &rng, int i)
{
    Case k{};
    const bool enlarge = i % 3 == 2;
    k.W = 2 * rng.range(1, i % 3 == 1 ? 200 : 30);
    k.H = rng.range(2, i % 3 == 1 ? 90 : 30);
    k.TW = 2 * rng.range(2, enlarge ? 50 : 20);
    k.TH = 2 * rng.range(2, enlarge ? 40 : 20);
    k.x = uint32_t(rng.coin() ? 0 : rng.range(0, k.W - 1));
    k.y = uint32_t(rng.coin() ? 0 : rng.range(0, k.H - 1));
    k.w = uint16_t(rng.coin() ? k.W - int(k.x) : rng.range(1, enlarge ? 6 : k.W + 9));
    k.h = uint16_t(rng.coin() ? k.H - int(k.y) : rng.range(1, enlarge ? 6 : k.H + 9));
    return k;
}

TEST(YUV422toYUV420, MatchesModelOnRandomFrames)
{
    Random rng;
    for (int i = 0; i < 1500; ++i) {
        const Case k = randomCase(rng, i);
        SCOPED_TRACE(scaleCase(i, k.W, k.H, k.x, k.y, k.w, k.h, k.TW, k.TH));
        const TestFrame s(k.W, k.H, Layout::Yuv422, rng, size_t(rng.range(0, 3)));
        TestFrame t(k.TW, k.TH, Layout::Yuv420, rng, size_t(rng.range(0, 3)));
        ASSERT_EQ(gYUV422toYUV420(s.get(), &t.frame(), k.x, k.y, k.w, k.h), 0);
        const Planes want = model(s, k);
        ASSERT_TRUE(sameSamples(t.yPlane().contents(), want.y, k.TW));
        ASSERT_TRUE(sameSamples(t.uPlane().contents(), want.u, k.TW / 2));
        ASSERT_TRUE(sameSamples(t.vPlane().contents(), want.v, k.TW / 2));
        ASSERT_TRUE(t.intact());
        ASSERT_TRUE(s.untouched());
    }
}

TEST(YUV422toYUV420, SameSizeIsACopyOfLumaAndEvenChromaRows)
{
    // 8 x 8, luma 8 * row + column: rows 0..5 copied up to column 5, then repeated.
    uint8_t y[64], u[32], v[32], ty[64] = {}, tu[16] = {}, tv[16] = {};
    for (int i = 0; i < 64; ++i)
        y[i] = uint8_t(i);
    for (int i = 0; i < 32; ++i)
        u[i] = uint8_t(i), v[i] = uint8_t(100 + i);
    const Frame s{y, u, v, 8, 8, 0};
    Frame t{ty, tu, tv, 8, 8, 0};
    EXPECT_EQ(gYUV422toYUV420(&s, &t, 0, 0, 8, 8), 0);
    for (int r = 0; r < 8; ++r)
        for (int c = 0; c < 8; ++c)
            EXPECT_EQ(ty[r * 8 + c], 8 * std::min(r, 5) + std::min(c, 5)) << c << ", " << r;
    // Chroma row m is source chroma row 2m, the last column and row repeated.
    for (int m = 0; m < 4; ++m)
        for (int c = 0; c < 4; ++c) {
            EXPECT_EQ(tu[m * 4 + c], 4 * 2 * std::min(m, 2) + std::min(c, 2)) << c << ", " << m;
            EXPECT_EQ(tv[m * 4 + c], 100 + 4 * 2 * std::min(m, 2) + std::min(c, 2)) << c << ", " << m;
        }
}

} // namespace
