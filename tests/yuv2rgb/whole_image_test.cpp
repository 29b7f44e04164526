// Whole-image YUV -> RGB conversions against per-pixel models, on random
// frames and sizes, both row orders, with guards around every buffer.
#include <gtest/gtest.h>

#include <vector>

#include "pixmill.h"
#include "support/colour_model.h"
#include "support/frames.h"
#include "support/whole_image_model.h"

namespace {

using namespace pixmill::test;

// Expected 24-bit target of a whole-image walk: `rgbOrder` says whether R or
// B comes first; `dither` whether Dither2x2 applies; the layout gives chroma.
std::vector<uint8_t> model24(const TestFrame &f, int32_t w, int32_t h, bool topDown, bool rgbOrder, bool dither)
{
    std::vector<uint8_t> out(size_t(w) * size_t(h) * 3);
    for (int32_t r = 0; r < h; ++r)
        for (int32_t c = 0; c < w; ++c) {
            const SourcePos s = sourceOf(c, r, w, h);
            const ModelRgb p = modelPixel(f.Y(s.c, s.r), f.Ufor(s.c, s.r), f.Vfor(s.c, s.r), kModel601, false,
                                          dither ? modelDither(s.r, s.c) : kNoDither);
            uint8_t *o = &out[(size_t(targetRow(r, h, topDown)) * size_t(w) + size_t(c)) * 3];
            o[0] = uint8_t(rgbOrder ? p.r : p.b);
            o[1] = uint8_t(p.g);
            o[2] = uint8_t(rgbOrder ? p.b : p.r);
        }
    return out;
}

struct Case {
    int32_t width, height, w, h;
    bool topDown;
    int32_t flag;
    size_t misalign;
};

Case randomCase(Random &rng, int32_t maxSide)
{
    Case k{};
    k.w = rng.range(2, maxSide);
    k.h = rng.range(2, maxSide);
    k.width = k.w + (rng.coin() ? 0 : rng.range(0, 9));
    k.height = k.h + (rng.coin() ? 0 : rng.range(0, 5));
    k.topDown = rng.coin();
    k.flag = flagValue(rng.word(), k.topDown);
    k.misalign = size_t(rng.range(0, 3));
    return k;
}

::testing::AssertionResult sameBytes(const std::vector<uint8_t> &got, const std::vector<uint8_t> &want, int32_t pitch)
{
    for (size_t i = 0; i < want.size(); ++i)
        if (got[i] != want[i])
            return ::testing::AssertionFailure() << "first difference at row " << i / size_t(pitch) << ", byte "
                                                 << i % size_t(pitch) << ": got " << int(got[i]) << ", want "
                                                 << int(want[i]);
    return ::testing::AssertionSuccess();
}

// ---- 4:2:0 -> R,G,B ---------------------------------------------------------

TEST(YUV420toRGB888, MatchesModelOnRandomFrames)
{
    Random rng;
    for (int i = 0; i < 1500; ++i) {
        const Case k = randomCase(rng, i < 1000 ? 12 : 70);
        SCOPED_TRACE(::testing::Message() << "case " << i << ": frame " << k.width << "x" << k.height << ", convert "
                                          << k.w << "x" << k.h << ", flag " << k.flag);
        TestFrame f(k.width, k.height, Layout::Yuv420, rng, k.misalign);
        Guarded<uint8_t> out(size_t(k.w) * size_t(k.h) * 3, k.misalign);
        gEmYUV420toRGB888TopDown(f.get(), out.data(), k.w, k.h, k.flag);
        ASSERT_TRUE(sameBytes(out.contents(), model24(f, k.w, k.h, k.topDown, true, false), k.w * 3));
        ASSERT_TRUE(out.intact());
        ASSERT_TRUE(f.untouched());
    }
}

TEST(YUV420toRGB888, WorkedExamples)
{
    uint8_t y[4] = {81, 82, 83, 84}, u[1] = {90}, v[1] = {240};
    Frame f{y, u, v, 2, 2, 0};
    uint8_t out[12];
    gEmYUV420toRGB888TopDown(&f, out, 2, 2, 1);
    const uint8_t want[12] = {238, 15, 13, 239, 16, 14, 240, 17, 15, 241, 18, 16};
    EXPECT_EQ(std::vector<uint8_t>(out, out + 12), std::vector<uint8_t>(want, want + 12));
    gEmYUV420toRGB888TopDown(&f, out, 2, 2, 0);
    EXPECT_EQ(out[0], 240); // R of source pixel (0, 1) comes first
}

TEST(YUV420toRGB888, ThreeByThreeRepeatsLastColumnAndRow)
{
    Random rng;
    TestFrame f(4, 4, Layout::Yuv420, rng);
    Guarded<uint8_t> out(27);
    gEmYUV420toRGB888TopDown(f.get(), out.data(), 3, 3, 1);
    ASSERT_TRUE(out.intact());
    for (int row = 0; row < 2; ++row)
        for (int b = 0; b < 3; ++b)
            EXPECT_EQ(out[size_t(row * 9 + 6 + b)], out[size_t(row * 9 + 3 + b)]);
    for (int b = 0; b < 9; ++b)
        EXPECT_EQ(out[size_t(18 + b)], out[size_t(9 + b)]);
}

TEST(YUV420toRGB888, DegenerateSizesStayInsideTheTarget)
{
    Random rng;
    TestFrame f(8, 8, Layout::Yuv420, rng);
    for (auto [w, h] : {std::pair{0, 5}, {5, 0}, {0, 0}}) {
        Guarded<uint8_t> out(16);
        gEmYUV420toRGB888TopDown(f.get(), out.data(), w, h, 1);
        EXPECT_TRUE(out.untouched()) << w << "x" << h;
    }
    for (auto [w, h] : {std::pair{1, 5}, {5, 1}, {1, 1}, {1, 2}, {2, 1}})
        for (int32_t flag : {0, 1}) {
            Guarded<uint8_t> out(size_t(w * h * 3));
            gEmYUV420toRGB888TopDown(f.get(), out.data(), w, h, flag);
            EXPECT_TRUE(out.intact()) << w << "x" << h;
        }
}

} // namespace
