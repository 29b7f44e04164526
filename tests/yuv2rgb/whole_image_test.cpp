// Whole-image YUV -> RGB conversions against per-pixel models, on random
// frames and sizes, both row orders, with guards around every buffer.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "pixmill.h"
#include "support/colour_model.h"
#include "support/frames.h"
#include "support/whole_image_model.h"

namespace {

using namespace pixmill::test;

// Target units of one model pixel: three bytes or one RGB565 word.
template <class T>
using PixelModel = std::function<void(T *out, const TestFrame &f, int32_t c, int32_t r)>;

// Expected target of a whole-image walk over the top-left w x h pixels.
template <class T, int units>
std::vector<T> modelWhole(const TestFrame &f, int32_t w, int32_t h, bool topDown, const PixelModel<T> &px)
{
    std::vector<T> out(size_t(w) * size_t(h) * units);
    for (int32_t r = 0; r < h; ++r)
        for (int32_t c = 0; c < w; ++c) {
            const SourcePos s = sourceOf(c, r, w, h);
            px(&out[(size_t(targetRow(r, h, topDown)) * size_t(w) + size_t(c)) * units], f, s.c, s.r);
        }
    return out;
}

ModelRgb sourcePixel(const TestFrame &f, int32_t c, int32_t r, const ModelCoeffs &k, bool rounding, ModelOffsets d)
{
    return modelPixel(f.Y(c, r), f.Ufor(c, r), f.Vfor(c, r), k, rounding, d);
}

void putRgb(uint8_t *o, const ModelRgb &p)
{
    o[0] = uint8_t(p.r), o[1] = uint8_t(p.g), o[2] = uint8_t(p.b);
}
void putBgr(uint8_t *o, const ModelRgb &p)
{
    o[0] = uint8_t(p.b), o[1] = uint8_t(p.g), o[2] = uint8_t(p.r);
}

const PixelModel<uint8_t> kRgb888 = [](uint8_t *o, const TestFrame &f, int32_t c, int32_t r) {
    putRgb(o, sourcePixel(f, c, r, kModel601, false, kNoDither));
};
const PixelModel<uint16_t> kRgb565 = [](uint16_t *o, const TestFrame &f, int32_t c, int32_t r) {
    *o = modelRgb565(sourcePixel(f, c, r, kModel601, false, modelDither(r, c)));
};
const PixelModel<uint8_t> kBgr888Dithered = [](uint8_t *o, const TestFrame &f, int32_t c, int32_t r) {
    putBgr(o, sourcePixel(f, c, r, kModel601, false, modelDither(r, c)));
};

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

template <class T>
::testing::AssertionResult sameUnits(const std::vector<T> &got, const std::vector<T> &want, size_t pitch)
{
    for (size_t i = 0; i < want.size(); ++i)
        if (got[i] != want[i])
            return ::testing::AssertionFailure() << "first difference at row " << i / pitch << ", unit " << i % pitch
                                                 << ": got " << int(got[i]) << ", want " << int(want[i]);
    return ::testing::AssertionSuccess();
}

// Runs a whole-image conversion on many random frames and compares it with
// its model; the frame, the guards and nothing else may change.
template <class T, int units, class Op>
void checkRandomFrames(Layout layout, Op op, const PixelModel<T> &px)
{
    Random rng;
    for (int i = 0; i < 1500; ++i) {
        const Case k = randomCase(rng, i < 1000 ? 12 : 70);
        SCOPED_TRACE(::testing::Message() << "case " << i << ": frame " << k.width << "x" << k.height << ", convert "
                                          << k.w << "x" << k.h << ", flag " << k.flag);
        TestFrame f(k.width, k.height, layout, rng, k.misalign);
        Guarded<T> out(size_t(k.w) * size_t(k.h) * units, k.misalign);
        op(f.get(), out.data(), k.w, k.h, k.flag);
        ASSERT_TRUE(sameUnits(out.contents(), modelWhole<T, units>(f, k.w, k.h, k.topDown, px), size_t(k.w) * units));
        ASSERT_TRUE(out.intact());
        ASSERT_TRUE(f.untouched());
    }
}

// Sizes of 0 write nothing; sizes of 1 have no defined result but stay
// inside the target.
template <class T, int units, class Op>
void checkDegenerateSizes(Layout layout, Op op)
{
    Random rng;
    TestFrame f(8, 8, layout, rng);
    for (auto [w, h] : {std::pair{0, 5}, {5, 0}, {0, 0}}) {
        Guarded<T> out(16);
        op(f.get(), out.data(), w, h, 1);
        EXPECT_TRUE(out.untouched()) << w << "x" << h;
    }
    for (auto [w, h] : {std::pair{1, 5}, {5, 1}, {1, 1}, {1, 2}, {2, 1}})
        for (int32_t flag : {0, 1}) {
            Guarded<T> out(size_t(w * h * units));
            op(f.get(), out.data(), w, h, flag);
            EXPECT_TRUE(out.intact()) << w << "x" << h;
        }
}

// The 2x2 frame of the worked examples: luma 81, 82 over 83, 84, u 90, v 240
// (on both chroma rows, so it serves 4:2:0 and 4:2:2 alike).
struct WorkedFrame {
    uint8_t y[4] = {81, 82, 83, 84}, u[2] = {90, 90}, v[2] = {240, 240};
    Frame f{y, u, v, 2, 2, 0};
};

// ---- 4:2:0 -> R,G,B ---------------------------------------------------------

TEST(YUV420toRGB888, MatchesModelOnRandomFrames)
{
    checkRandomFrames<uint8_t, 3>(Layout::Yuv420, gEmYUV420toRGB888TopDown, kRgb888);
}

TEST(YUV420toRGB888, DegenerateSizes) { checkDegenerateSizes<uint8_t, 3>(Layout::Yuv420, gEmYUV420toRGB888TopDown); }

TEST(YUV420toRGB888, WorkedExamples)
{
    WorkedFrame w;
    uint8_t out[12];
    gEmYUV420toRGB888TopDown(&w.f, out, 2, 2, 1);
    EXPECT_EQ(std::vector<uint8_t>(out, out + 12),
              (std::vector<uint8_t>{238, 15, 13, 239, 16, 14, 240, 17, 15, 241, 18, 16}));
    gEmYUV420toRGB888TopDown(&w.f, out, 2, 2, 0);
    EXPECT_EQ(out[0], 240); // R of source pixel (0, 1) comes first
}

TEST(YUV420toRGB888, ThreeByThreeRepeatsLastColumnAndRow)
{
    Random rng;
    TestFrame f(4, 4, Layout::Yuv420, rng);
    Guarded<uint8_t> out(27);
    gEmYUV420toRGB888TopDown(f.get(), out.data(), 3, 3, 1);
    ASSERT_TRUE(out.intact());
    for (size_t row = 0; row < 2; ++row)
        for (size_t b = 0; b < 3; ++b)
            EXPECT_EQ(out[row * 9 + 6 + b], out[row * 9 + 3 + b]);
    for (size_t b = 0; b < 9; ++b)
        EXPECT_EQ(out[18 + b], out[9 + b]);
}

// ---- 4:2:0 -> RGB565 --------------------------------------------------------

TEST(YUV420toRGB565, MatchesModelOnRandomFrames)
{
    checkRandomFrames<uint16_t, 1>(Layout::Yuv420, gEmYUV420toRGB565TopDown, kRgb565);
}

TEST(YUV420toRGB565, DegenerateSizes) { checkDegenerateSizes<uint16_t, 1>(Layout::Yuv420, gEmYUV420toRGB565TopDown); }

TEST(YUV420toRGB565, WorkedExamples)
{
    WorkedFrame w;
    uint16_t out[4];
    gEmYUV420toRGB565TopDown(&w.f, out, 2, 2, 1);
    EXPECT_EQ(std::vector<uint16_t>(out, out + 4), (std::vector<uint16_t>{0xF081, 0xF082, 0xF082, 0xF0A2}));
    gEmYUV420toRGB565TopDown(&w.f, out, 2, 2, 0);
    EXPECT_EQ(std::vector<uint16_t>(out, out + 4), (std::vector<uint16_t>{0xF082, 0xF0A2, 0xF081, 0xF082}));
}

// ---- 4:2:2 -> B,G,R, two names ----------------------------------------------

TEST(YUV422toBGR888, MatchesModelOnRandomFrames)
{
    checkRandomFrames<uint8_t, 3>(Layout::Yuv422, gYUV422HPlanartoBGR888TopDown, kBgr888Dithered);
}

TEST(YUV422toBGR888, DegenerateSizes)
{
    checkDegenerateSizes<uint8_t, 3>(Layout::Yuv422, gYUV422HPlanartoBGR888TopDown);
}

TEST(YUV422toBGR888, BothNamesAreOneFunction)
{
    EXPECT_EQ(reinterpret_cast<void *>(&gYUV422HPlanartoBGR888TopDown),
              reinterpret_cast<void *>(&gYUV422HPlanartoRGB888TopDown));
    Random rng;
    TestFrame f(17, 9, Layout::Yuv422, rng);
    std::vector<uint8_t> a(17 * 9 * 3), b(a.size());
    gYUV422HPlanartoBGR888TopDown(f.get(), a.data(), 17, 9, 0);
    gYUV422HPlanartoRGB888TopDown(f.get(), b.data(), 17, 9, 0);
    EXPECT_EQ(a, b);
}

TEST(YUV422toBGR888, WorkedExamples)
{
    WorkedFrame w;
    uint8_t out[12];
    gYUV422HPlanartoBGR888TopDown(&w.f, out, 2, 2, 1);
    EXPECT_EQ(std::vector<uint8_t>(out, out + 12),
              (std::vector<uint8_t>{13, 18, 240, 18, 16, 245, 21, 18, 244, 18, 20, 241}));
    uint8_t grey[4] = {100, 100, 100, 100}, neutral[2] = {128, 128};
    Frame g{grey, neutral, neutral, 2, 2, 0};
    gYUV422HPlanartoBGR888TopDown(&g, out, 2, 2, 1);
    EXPECT_EQ(std::vector<uint8_t>(out, out + 12),
              (std::vector<uint8_t>{100, 103, 102, 104, 100, 106, 106, 101, 104, 102, 102, 100}));
}

// ---- whole 4:2:0 frame -> B,G,R with a stride --------------------------------

std::vector<uint8_t> modelBgr24(const TestFrame &f, int32_t stride, const Guarded<uint8_t> &before)
{
    std::vector<uint8_t> out = before.contents();
    for (int32_t r = 0; r < f.height(); ++r)
        for (int32_t c = 0; c < f.width(); ++c) // odd columns: luma + 1 before the clamp
            putBgr(&out[size_t(r) * size_t(stride) + size_t(c) * 3],
                   modelPixel(f.Y(c, r) + (c & 1), f.Ufor(c, r), f.Vfor(c, r), kModel709, true, kNoDither));
    return out;
}

TEST(YUV420toBGR24, MatchesModelOnRandomFrames)
{
    Random rng;
    for (int i = 0; i < 1200; ++i) {
        const int32_t width = 2 * rng.range(0, i < 1000 ? 8 : 40), height = 2 * rng.range(0, i < 1000 ? 8 : 30);
        const int32_t stride = 3 * width + (rng.coin() ? 0 : rng.range(1, 13));
        SCOPED_TRACE(::testing::Message() << "case " << i << ": " << width << "x" << height << ", stride " << stride);
        TestFrame f(width, height, Layout::Yuv420, rng, size_t(rng.range(0, 3)));
        Guarded<uint8_t> out(size_t(stride) * size_t(height), size_t(rng.range(0, 3)));
        out.randomize(rng);
        const std::vector<uint8_t> want = modelBgr24(f, stride, out);
        ASSERT_EQ(gYUV420toBGR24(f.get(), out.begin(), stride), 0);
        ASSERT_TRUE(sameUnits(out.contents(), want, size_t(stride > 0 ? stride : 1)));
        ASSERT_TRUE(out.intact());
        ASSERT_TRUE(f.untouched());
    }
}

TEST(YUV420toBGR24, RefusesShortStrideWritingNothing)
{
    Random rng;
    TestFrame f(6, 4, Layout::Yuv420, rng);
    Guarded<uint8_t> out(18 * 4);
    for (int32_t stride : {17, 0, -1, -18, INT32_MIN}) {
        EXPECT_EQ(gYUV420toBGR24(f.get(), out.data(), stride), -1) << stride;
        EXPECT_TRUE(out.untouched()) << stride;
    }
    EXPECT_EQ(gYUV420toBGR24(f.get(), out.data(), 18), 0);
    TestFrame empty(0, 0, Layout::Yuv420, rng);
    EXPECT_EQ(gYUV420toBGR24(empty.get(), nullptr, 0), 0);
    EXPECT_EQ(gYUV420toBGR24(empty.get(), nullptr, -1), -1);
}

TEST(YUV420toBGR24, WorkedExampleAndNeutralColumns)
{
    WorkedFrame w;
    uint8_t out[12];
    ASSERT_EQ(gYUV420toBGR24(&w.f, out, 6), 0);
    EXPECT_EQ(std::vector<uint8_t>(out, out + 12),
              (std::vector<uint8_t>{10, 36, 255, 12, 38, 255, 12, 38, 255, 14, 40, 255}));
    uint8_t white[4] = {255, 255, 255, 255}, neutral[1] = {128};
    Frame g{white, neutral, neutral, 2, 2, 0};
    ASSERT_EQ(gYUV420toBGR24(&g, out, 6), 0);
    for (uint8_t b : out)
        EXPECT_EQ(b, 255);
}

} // namespace
