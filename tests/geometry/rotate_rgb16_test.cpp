// Rectangle turns of 16-bit images, moved whole or expanded to B,G,R bytes,
// against a model of the clamp steps and the placement table, on random
// surfaces, rectangles and codes, with guards around both buffers.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <ostream>
#include <vector>

#include "pixmill.h"
#include "support/geometry_model.h"
#include "support/guarded.h"

namespace {

using namespace pixmill::test;

struct Case {
    int32_t sw, sh, srcX, srcY, srcW, srcH, dstX, dstY, dstW, dstH;
    uint32_t code;
    int nulls; // 0: both buffers, 1: no source, 2: no destination
};

std::ostream &operator<<(std::ostream &os, const Case &k)
{
    return os << "source " << k.sw << "x" << k.sh << " rect (" << k.srcX << "," << k.srcY << ") " << k.srcW << "x"
              << k.srcH << " -> (" << k.dstX << "," << k.dstY << ") on " << k.dstW << "x" << k.dstH << ", code "
              << k.code << ", nulls " << k.nulls;
}

// Sizes near the surfaces, corners now and then beyond them, sizes now and
// then negative or huge. dstW is in pixels.
Case randomCase(Random &rng, int32_t maxSide)
{
    Case k{};
    k.sw = rng.range(0, maxSide);
    k.sh = rng.range(0, maxSide);
    k.dstW = rng.range(0, maxSide);
    k.dstH = rng.range(0, maxSide);
    k.srcX = rng.range(0, k.sw + 2);
    k.srcY = rng.range(0, k.sh + 2);
    k.dstX = rng.range(0, k.dstW + 2);
    k.dstY = rng.range(0, k.dstH + 2);
    auto size = [&rng](int32_t side) { return rng.range(0, 15) == 0 ? (rng.coin() ? INT_MAX : -rng.range(1, 3))
                                                                    : rng.range(0, side + 2); };
    k.srcW = size(k.sw);
    k.srcH = size(k.sh);
    k.code = randomRotation(rng);
    k.nulls = rng.range(0, 30) == 0 ? rng.range(1, 2) : 0;
    return k;
}

// The clamp steps as stated, in wide arithmetic: positions limited to their
// surfaces, then the size cut by the source and by the room on the surface.
struct Clipped {
    int32_t srcX, srcY, dstX, dstY, cw, ch;
};
Clipped clampModel(const Case &k, int32_t dw)
{
    Clipped c{std::min(k.srcX, k.sw), std::min(k.srcY, k.sh), std::min(k.dstX, dw), std::min(k.dstY, k.dstH),
              k.srcW, k.srcH};
    if (int64_t(c.srcX) + c.cw > k.sw)
        c.cw = k.sw - c.srcX;
    if (int64_t(c.srcY) + c.ch > k.sh)
        c.ch = k.sh - c.srcY;
    int32_t &across = quarterTurn(k.code) ? c.ch : c.cw;
    int32_t &down = quarterTurn(k.code) ? c.cw : c.ch;
    if (int64_t(across) + c.dstX > dw)
        across = dw - c.dstX;
    if (int64_t(down) + c.dstY > k.dstH)
        down = k.dstH - c.dstY;
    return c;
}

// Calls put(i, j, source pixel, destination column, destination row) for
// every pixel of the clipped rectangle.
template <class Put>
void placeModel(const Case &k, const Clipped &c, const Guarded<uint16_t> &src, Put put)
{
    for (int32_t j = 0; j < c.ch; ++j)
        for (int32_t i = 0; i < c.cw; ++i) {
            const Pos p = turned(k.code, i, j, c.cw, c.ch);
            put(i, j, src[size_t(k.sw) * size_t(c.srcY + j) + size_t(c.srcX + i)], c.dstX + p.c, c.dstY + p.r);
        }
}

int32_t expectedResult(const Case &k) { return k.nulls != 0 || k.code > 3 ? -1 : 0; }

TEST(RotateRGB16, MatchesModelOnRandomRectangles)
{
    Random rng;
    for (int n = 0; n < 2000; ++n) {
        const Case k = randomCase(rng, n < 1000 ? 12 : 40);
        SCOPED_TRACE(::testing::Message() << "case " << n << ": " << k);
        Guarded<uint16_t> src(size_t(k.sw) * size_t(k.sh), size_t(rng.range(0, 3)), rng.word());
        Guarded<uint16_t> dst(size_t(k.dstW) * size_t(k.dstH), size_t(rng.range(0, 3)), rng.word());
        src.randomize(rng);
        dst.randomize(rng);
        const int32_t result = gRotateRGB16(k.nulls == 1 ? nullptr : src.begin(), k.nulls == 2 ? nullptr : dst.begin(),
                                            k.sw, k.sh, k.srcX, k.srcY, k.srcW, k.srcH, k.dstX, k.dstY, k.dstW,
                                            k.dstH, k.code);
        ASSERT_EQ(result, expectedResult(k));
        ASSERT_TRUE(src.untouched());
        ASSERT_TRUE(dst.intact());
        std::vector<uint16_t> want(dst.size());
        for (size_t i = 0; i < want.size(); ++i)
            want[i] = dst.before(i);
        if (result == 0)
            placeModel(k, clampModel(k, k.dstW), src, [&](int32_t, int32_t, uint16_t p, int32_t x, int32_t y) {
                want[size_t(y) * size_t(k.dstW) + size_t(x)] = p;
            });
        ASSERT_EQ(dst.contents(), want);
    }
}

// RGB565 expanded to B,G,R: each channel's bits shifted to the top and the
// low bits filled from the pattern, by parity in the rectangle.
void expandModel(uint16_t p, int32_t i, int32_t j, uint8_t *out)
{
    static const int fill5[2][2] = {{0, 4}, {6, 2}}, fill6[2][2] = {{0, 2}, {3, 1}};
    const int f5 = fill5[j % 2][i % 2], f6 = fill6[j % 2][i % 2];
    out[0] = uint8_t(p % 32 * 8 + f5);
    out[1] = uint8_t(p / 32 % 64 * 4 + f6);
    out[2] = uint8_t(p / 2048 * 8 + f5);
}

TEST(RotateRGB16toBGR24, MatchesModelOnRandomRectangles)
{
    Random rng;
    for (int n = 0; n < 2000; ++n) {
        Case k = randomCase(rng, n < 1000 ? 12 : 40);
        const int32_t stride = rng.range(0, 3 * k.dstW + 5); // dstW here: room for whole pixels and some spare
        const int32_t dw = stride / 3;
        k.dstX = std::min(k.dstX, dw + 2);
        SCOPED_TRACE(::testing::Message() << "case " << n << ": " << k << ", stride " << stride);
        Guarded<uint16_t> src(size_t(k.sw) * size_t(k.sh), size_t(rng.range(0, 3)), rng.word());
        Guarded<uint8_t> dst(size_t(stride) * size_t(k.dstH), size_t(rng.range(0, 3)), rng.word());
        src.randomize(rng);
        dst.randomize(rng);
        const int32_t result =
            gRotateRGB16toBGR24(k.nulls == 1 ? nullptr : src.begin(), k.nulls == 2 ? nullptr : dst.begin(), k.sw,
                                k.sh, k.srcX, k.srcY, k.srcW, k.srcH, k.dstX, k.dstY, k.dstH, stride, k.code);
        ASSERT_EQ(result, expectedResult(k));
        ASSERT_TRUE(src.untouched());
        ASSERT_TRUE(dst.intact());
        std::vector<uint8_t> want(dst.size());
        for (size_t i = 0; i < want.size(); ++i)
            want[i] = dst.before(i);
        if (result == 0)
            placeModel(k, clampModel(k, dw), src, [&](int32_t i, int32_t j, uint16_t p, int32_t x, int32_t y) {
                expandModel(p, i, j, &want[size_t(y) * size_t(stride) + 3 * size_t(x)]);
            });
        ASSERT_EQ(dst.contents(), want);
    }
}

// White and black at the four parities; the pattern follows the rectangle,
// not the source position, and turns with the picture.
TEST(RotateRGB16toBGR24, WorkedExpansions)
{
    const uint16_t src[3 * 3] = {0, 0, 0, 0, 0xFFFF, 0xFFFF, 0, 0xFFFF, 0xFFFF};
    uint8_t out[2 * 6];
    ASSERT_EQ(gRotateRGB16toBGR24(src, out, 3, 3, 1, 1, 2, 2, 0, 0, 2, 6, ROTATE_NONE), 0);
    EXPECT_EQ(std::vector<uint8_t>(out, out + 12),
              (std::vector<uint8_t>{248, 252, 248, 252, 254, 252, 254, 255, 254, 250, 253, 250}));
    ASSERT_EQ(gRotateRGB16toBGR24(src, out, 3, 3, 1, 1, 2, 2, 0, 0, 2, 6, ROTATE_180), 0);
    EXPECT_EQ(std::vector<uint8_t>(out, out + 6), (std::vector<uint8_t>{250, 253, 250, 254, 255, 254}));
    ASSERT_EQ(gRotateRGB16toBGR24(src, out, 3, 3, 0, 0, 2, 2, 0, 0, 2, 6, ROTATE_NONE), 0);
    EXPECT_EQ(std::vector<uint8_t>(out, out + 12), (std::vector<uint8_t>{0, 0, 0, 4, 2, 4, 6, 3, 6, 250, 253, 250}));
}

} // namespace
