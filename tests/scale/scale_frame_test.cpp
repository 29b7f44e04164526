// Frame scalers against the plane model, applied per plane with the sizes and
// rectangles each layout derives for chroma, on random frames, crops, ratios
// and null planes; every plane and its guards are checked, and two frames in
// three lie against an inaccessible page.
#include <gtest/gtest.h>

#include <vector>

#include "pixmill.h"
#include "support/bilinear_model.h"

namespace {

using namespace pixmill::test;

enum class Op { Whole, Cropped, Cropped422 };

class ScaleFrame : public ::testing::TestWithParam<Op> {};

TEST_P(ScaleFrame, MatchesPlaneModelOnRandomFrames)
{
    const Op op = GetParam();
    const Layout layout = op == Op::Cropped422 ? Layout::Yuv422 : Layout::Yuv420;
    const int rowShift = op == Op::Cropped422 ? 0 : 1;
    Random rng;
    for (int i = 0; i < 1200; ++i) {
        ScaleCase k = randomScaleCase(rng, i);
        if (op == Op::Whole)
            k = {k.sw, k.sh, k.dw, k.dh, 0, 0, k.sw, k.sh};
        SCOPED_TRACE(::testing::Message() << "case " << i << ": " << k);
        const Placement where = Placement(rng.range(0, 2));
        TestFrame s(k.sw, k.sh, layout, rng, size_t(rng.range(0, 3)), where);
        TestFrame t(k.dw, k.dh, layout, rng, size_t(rng.range(0, 3)), where);
        // Now and then one plane of either frame is null: that plane alone is skipped.
        const int nulled = rng.range(0, 7) ? -1 : rng.range(0, 5);
        uint8_t **fields[6] = {&s.frame().y, &s.frame().u, &s.frame().v, &t.frame().y, &t.frame().u, &t.frame().v};
        if (nulled >= 0)
            *fields[nulled] = nullptr;
        if (op == Op::Whole)
            gScaleFrame(s.get(), &t.frame());
        else if (op == Op::Cropped)
            gScaleCroppedFrame(s.get(), &t.frame(), uint32_t(k.x), uint32_t(k.y), uint16_t(k.w), uint16_t(k.h));
        else
            gScaleCroppedFrameYUV422(s.get(), &t.frame(), uint32_t(k.x), uint32_t(k.y), uint16_t(k.w), uint16_t(k.h));
        for (int p = 0; p < 3; ++p) {
            // Chroma halves the horizontal quantities and, in 4:2:0, the vertical ones.
            const int hx = p ? 1 : 0, hy = p ? rowShift : 0;
            const ScaleCase c{k.sw >> hx, k.sh >> hy, k.dw >> hx, k.dh >> hy,
                              k.x >> hx,  k.y >> hy,  k.w >> hx,  k.h >> hy};
            const bool skipped = nulled % 3 == p;
            ASSERT_TRUE(written(t.planes[p], skipped ? std::vector<uint8_t>() : modelScalePlane(s.planes[p].data(), c), c.dw))
                << "plane " << p;
        }
        ASSERT_TRUE(s.untouched());
    }
}

INSTANTIATE_TEST_SUITE_P(Ops, ScaleFrame, ::testing::Values(Op::Whole, Op::Cropped, Op::Cropped422));

// Chroma halves the requested rectangle, not the one cut to the luma plane:
// source 10 x 4 (chroma 10 * column), corner (3, 0), width 100. Chroma keeps
// 4 columns, not 3, at steps of 1.5 from column 1.
TEST(ScaleCroppedFrame, ChromaHalvesTheRequestedRectangle)
{
    uint8_t y[40] = {}, u[10], v[10] = {}, ty[8], tu[2], tv[2];
    for (int i = 0; i < 10; ++i)
        u[i] = uint8_t(10 * (i % 5));
    const Frame s{y, u, v, 10, 4, 0};
    Frame t{ty, tu, tv, 4, 2, 0};
    gScaleCroppedFrame(&s, &t, 3, 0, 100, 4);
    EXPECT_EQ(std::vector<uint8_t>(tu, tu + 2), (std::vector<uint8_t>{10, 25}));
}

} // namespace
