// B,G,R bytes -> contiguous 4:2:0 buffer against a per-pixel model: own luma
// per pixel, chroma from the sums of each 2x2 block, any stride including a
// negative one; zero sizes and odd sizes write nothing. Also the worked
// colours.
#include <gtest/gtest.h>

#include <array>

#include "support/buffers.h"

namespace {

using namespace pixmill::test;

// The model's buffer `want` after a conversion of the image whose first row
// starts at `first`: own luma per pixel, chroma from the sums of each 2x2
// block; odd sizes write nothing.
void model(const uint8_t *first, uint32_t w, uint32_t h, int32_t stride, std::vector<uint8_t> &want)
{
    const size_t luma = size_t(w) * h;
    for (uint32_t r = 0; r < h && (w | h) % 2 == 0; ++r)
        for (uint32_t c = 0; c < w; ++c) {
            const uint8_t *p = first + ptrdiff_t(r) * stride + 3 * c;
            want[r * w + c] = uint8_t((19595u * p[2] + 38470u * p[1] + 7471u * p[0]) / 65536u);
            // Channel ch (B, G, R) summed over the 2x2 block of an even (r, c).
            const auto s = [&](int ch) { return p[ch] + p[ch + 3] + p[stride + ch] + p[stride + ch + 3]; };
            const size_t at = luma + r / 2 * (w / 2) + c / 2;
            if (r % 2 + c % 2 == 0) {
                want[at] = uint8_t(128 + floorShift(32767 * s(0) - 11059 * s(2) - 21709 * s(1), 18));
                want[at + luma / 4] = uint8_t(128 + floorShift(32767 * s(2) - 5329 * s(0) - 27439 * s(1), 18));
            }
        }
}

// Every even width up to 130 (past the widest vector step), random ones up to
// 2000 on a few rows, then small random sizes, one in eight anything from 0
// to 9; any stride, a negative one too; buffers at any alignment, or against
// an inaccessible page; bytes at random or at the extremes.
TEST(BGR24toYUV420Planar, MatchesModelOnRandomSizesAndStrides)
{
    Random rng;
    const auto side = [&](int half) { return uint32_t(rng.range(0, 7) ? 2 * rng.range(1, half) : rng.range(0, 9)); };
    for (int i = 0; i < 1700; ++i) {
        uint32_t w = side(i < 1400 ? 6 : 30), h = side(i < 1400 ? 6 : 30);
        if (i < 65)
            w = uint32_t(2 * i + 2), h = uint32_t(2 * rng.range(1, 2));
        else if (i < 165)
            w = uint32_t(2 * rng.range(1, 1000)), h = 2;
        const int32_t stride = (rng.range(0, 2) ? 1 : -1) * (int32_t(3 * w) + (rng.coin() ? 0 : rng.range(1, 9)));
        SCOPED_TRACE(::testing::Message() << "case " << i << ": " << w << "x" << h << ", stride " << stride);
        const size_t lastRow = h ? size_t(stride < 0 ? -stride : stride) * (h - 1) : 0, luma = size_t(w) * h;
        const Placement where = Placement(rng.range(0, 2));
        Guarded<uint8_t> src(lastRow + 3 * w, size_t(rng.range(0, 63)), rng.word(), where);
        // One image in four only black and full bytes: block sums of 0 and 1020.
        for (size_t k = 0; i % 4 == 1 && k < src.size(); ++k)
            src[k] = src[k] & 1 ? 255 : 0;
        src.snapshot();
        const uint8_t *first = src.begin() + (stride < 0 ? lastRow : 0);
        Guarded<uint8_t> out(luma * 3 / 2, size_t(rng.range(0, 63)), rng.word(), where);
        std::vector<uint8_t> want = out.contents();
        model(first, w, h, stride, want);
        gBGR24INTtoYUV420Planar(first, out.begin(), w, h, stride);
        ASSERT_EQ(out.contents(), want);
        ASSERT_TRUE(out.intact() && src.untouched());
    }
}

// 2x2 images of one colour: B, G, R in, Y, U, V out.
TEST(BGR24toYUV420Planar, WorkedColours)
{
    const uint8_t cases[][6] = {{0, 0, 0, 0, 128, 128},    {255, 255, 255, 255, 127, 127}, {255, 0, 0, 29, 255, 107},
                                {0, 255, 0, 149, 43, 21},  {0, 0, 255, 76, 84, 255},       {0, 255, 255, 225, 0, 148},
                                {255, 255, 0, 178, 171, 0}};
    for (const auto &k : cases) {
        const uint8_t img[6] = {k[0], k[1], k[2], k[0], k[1], k[2]}; // one row twice: stride 0
        std::array<uint8_t, 6> out;
        gBGR24INTtoYUV420Planar(img, out.data(), 2, 2, 0);
        EXPECT_EQ(out, (std::array<uint8_t, 6>{k[3], k[3], k[3], k[3], k[4], k[5]})) << "colour " << &k - cases;
    }
}

} // namespace
