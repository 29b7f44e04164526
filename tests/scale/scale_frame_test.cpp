// Frame scalers against the plane model, applied per plane with the sizes and
// rectangles each layout derives for chroma, on random frames, crops and
// ratios; every plane and its guards are checked.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "pixmill.h"
#include "support/bilinear_model.h"
#include "support/frames.h"

namespace {

using namespace pixmill::test;

enum class Op { Whole, Cropped, Cropped422 };

struct FrameCase {
    int W, H, TW, TH;
    uint32_t x, y;
    uint16_t w, h;
};

// Within the limits: every chroma rectangle holds a sample. Targets may be 1
// wide or high, which leaves a chroma plane unwritten.
FrameCase randomFrameCase(Random &rng, int i, Op op)
{
    FrameCase k{};
    const bool reduce = i % 3 == 1, enlarge = i % 3 == 2;
    k.W = rng.range(2, reduce ? 400 : 40);
    k.H = rng.range(op == Op::Cropped422 ? 1 : 2, reduce ? 60 : 40);
    k.TW = rng.range(1, enlarge ? 120 : 30);
    k.TH = rng.range(1, enlarge ? 90 : 30);
    if (op == Op::Whole)
        return k;
    const bool rowsHalved = op == Op::Cropped;
    k.x = uint32_t(rng.coin() ? 0 : rng.range(0, (k.W & ~1) - 1));
    k.y = uint32_t(rng.coin() ? 0 : rng.range(0, (rowsHalved ? k.H & ~1 : k.H) - 1));
    k.w = uint16_t(rng.coin() ? std::max(2, k.W - int(k.x)) : rng.range(2, k.W + 9));
    k.h = uint16_t(rng.coin() ? std::max(2, k.H - int(k.y)) : rng.range(rowsHalved ? 2 : 1, k.H + 9));
    if (enlarge && rng.coin()) { // a small crop of a larger frame
        k.w = uint16_t(std::min(int(k.w), rng.range(2, 6)));
        k.h = uint16_t(std::min(int(k.h), rng.range(2, 6)));
    }
    return k;
}

// Expected planes: the plane model with the arguments of each plane's call,
// chroma halving the horizontal quantities and, in 4:2:0, the vertical ones;
// plane `skipped` (0 y, 1 u, 2 v) must be untouched.
void expectScaled(TestFrame &s, TestFrame &t, const FrameCase &k, Op op, int skipped = -1)
{
    const bool whole = op == Op::Whole;
    const int x = whole ? 0 : int(k.x), y = whole ? 0 : int(k.y), w = whole ? k.W : k.w, h = whole ? k.H : k.h;
    Guarded<uint8_t> *src[3] = {&s.yPlane(), &s.uPlane(), &s.vPlane()};
    Guarded<uint8_t> *dst[3] = {&t.yPlane(), &t.uPlane(), &t.vPlane()};
    for (int p = 0; p < 3; ++p) {
        const int hx = p ? 1 : 0, hy = p && op != Op::Cropped422 ? 1 : 0;
        const auto want = modelScalePlane(src[p]->data(), k.W >> hx, k.H >> hy, k.TW >> hx, k.TH >> hy, x >> hx,
                                          y >> hy, w >> hx, h >> hy);
        if (want.empty() || p == skipped)
            EXPECT_TRUE(dst[p]->untouched()) << "plane " << p;
        else
            EXPECT_TRUE(sameSamples(dst[p]->contents(), want, k.TW >> hx)) << "plane " << p;
        EXPECT_TRUE(dst[p]->intact()) << "plane " << p;
    }
    EXPECT_TRUE(s.untouched());
}

void run(TestFrame &s, TestFrame &t, const FrameCase &k, Op op)
{
    switch (op) {
    case Op::Whole:
        gScaleFrame(s.get(), &t.frame());
        break;
    case Op::Cropped:
        gScaleCroppedFrame(s.get(), &t.frame(), k.x, k.y, k.w, k.h);
        break;
    case Op::Cropped422:
        gScaleCroppedFrameYUV422(s.get(), &t.frame(), k.x, k.y, k.w, k.h);
        break;
    }
}

class ScaleFrame : public ::testing::TestWithParam<Op> {};

TEST_P(ScaleFrame, MatchesPlaneModelOnRandomFrames)
{
    const Op op = GetParam();
    const Layout layout = op == Op::Cropped422 ? Layout::Yuv422 : Layout::Yuv420;
    Random rng;
    for (int i = 0; i < 1200; ++i) {
        const FrameCase k = randomFrameCase(rng, i, op);
        SCOPED_TRACE(scaleCase(i, k.W, k.H, k.x, k.y, k.w, k.h, k.TW, k.TH));
        TestFrame s(k.W, k.H, layout, rng, size_t(rng.range(0, 3)));
        TestFrame t(k.TW, k.TH, layout, rng, size_t(rng.range(0, 3)));
        run(s, t, k, op);
        expectScaled(s, t, k, op);
        if (HasFailure())
            return;
    }
}

// A null plane in either frame skips that plane alone.
TEST_P(ScaleFrame, NullPlaneSkipsThatPlaneAlone)
{
    const Op op = GetParam();
    const Layout layout = op == Op::Cropped422 ? Layout::Yuv422 : Layout::Yuv420;
    Random rng;
    for (int plane = 0; plane < 3; ++plane)
        for (const bool inSource : {true, false}) {
            const FrameCase k{20, 14, 9, 6, 3, 2, 15, 10};
            TestFrame s(k.W, k.H, layout, rng), t(k.TW, k.TH, layout, rng);
            Frame &f = (inSource ? s : t).frame();
            uint8_t **field[3] = {&f.y, &f.u, &f.v};
            uint8_t *kept = *field[plane];
            *field[plane] = nullptr;
            run(s, t, k, op);
            *field[plane] = kept;
            expectScaled(s, t, k, op, plane);
        }
}

INSTANTIATE_TEST_SUITE_P(Ops, ScaleFrame, ::testing::Values(Op::Whole, Op::Cropped, Op::Cropped422));

// Odd corners and sizes halve by truncation; a rectangle that sticks out is
// cut per plane against that plane's width.
TEST(ScaleCroppedFrame, RectangleCutPerPlane)
{
    // Source 9 x 4, luma 20 * column + row; chroma planes 4 x 2, 10 * column + row.
    uint8_t y[36], u[8], v[8];
    for (int i = 0; i < 36; ++i)
        y[i] = uint8_t(20 * (i % 9) + i / 9);
    for (int i = 0; i < 8; ++i)
        u[i] = uint8_t(10 * (i % 4) + i / 4), v[i] = uint8_t(u[i] + 100);
    const Frame s{y, u, v, 9, 4, 0};
    uint8_t ty[8] = {}, tu[2] = {}, tv[2] = {};
    Frame t{ty, tu, tv, 4, 2, 0};
    // srcX 2, srcW 100: 7 luma columns at steps of 1.5; chroma columns 1..3
    // at steps of exactly 1.
    gScaleCroppedFrame(&s, &t, 2, 0, 100, 4);
    EXPECT_EQ(std::vector<uint8_t>(ty, ty + 4), (std::vector<uint8_t>{40, 70, 100, 130}));
    EXPECT_EQ(std::vector<uint8_t>(tu, tu + 2), (std::vector<uint8_t>{10, 20}));
    EXPECT_EQ(std::vector<uint8_t>(tv, tv + 2), (std::vector<uint8_t>{110, 120}));
}

} // namespace
