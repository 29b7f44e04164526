// Rectangle turns of 16-bit images, moved whole and expanded to B,G,R bytes,
// against one model of the clamp steps and the placement table, on random
// surfaces, rectangles, strides and codes, with every buffer between guards
// or against an inaccessible page.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>

#include "pixmill.h"
#include "support/buffers.h"
#include "support/geometry_model.h"

namespace {

using namespace pixmill::test;

// Each random case calls both exports with the same source and rectangle:
// gRotateRGB16 on a surface dw pixels wide, gRotateRGB16toBGR24 on a stride
// of 3 * dw and 0 to 2 spare bytes. Corners now and then lie beyond the
// surfaces, sizes are now and then negative or huge, a buffer now and then null.
TEST(RotateRGB16, BothExportsMatchModelOnRandomRectangles)
{
    Random rng;
    auto size = [&](int s) { return rng.range(0, 15) ? rng.range(0, s + 2) : rng.coin() ? INT_MAX : -rng.range(1, 3); };
    for (int n = 0; n < 2000; ++n) {
        // Small surfaces first, then sides around the vector steps and tiles,
        // now and then a long source row laid across or down a long destination.
        const uint32_t code = randomRotation(rng);
        const bool longRow = n >= 1000 && n % 8 == 0, unturned = code % 2 == 0;
        const int32_t side = n < 1000 ? 12 : 130, sw = rng.range(0, longRow ? 2000 : side);
        const int32_t sh = rng.range(0, longRow ? 40 : side);
        const int32_t dw = rng.range(0, longRow ? (unturned ? 2000 : 40) : side);
        const int32_t dh = rng.range(0, longRow ? (unturned ? 40 : 2000) : side), stride = 3 * dw + rng.range(0, 2);
        const int32_t srcX = rng.range(0, sw + 2), srcY = rng.range(0, sh + 2), srcW = size(sw), srcH = size(sh);
        const int32_t dstX = rng.range(0, dw + 2), dstY = rng.range(0, dh + 2);
        const int nulls = rng.range(0, 30) == 0 ? rng.range(1, 2) : 0; // 1: no source, 2: no destination
        SCOPED_TRACE(::testing::Message() << "case " << n << ": " << sw << "x" << sh << " (" << srcX << "," << srcY
                                          << " " << srcW << "x" << srcH << ") to (" << dstX << "," << dstY << ") on "
                                          << dw << "x" << dh << "/" << stride << " code " << code << " null " << nulls);
        const Guarded<uint16_t> src(size_t(sw) * size_t(sh), rng), dst(size_t(dw) * size_t(dh), rng);
        const Guarded<uint8_t> bgr(size_t(stride) * size_t(dh), rng);
        std::vector<uint16_t> pixels = dst.contents();
        std::vector<uint8_t> bytes = bgr.contents();
        const uint16_t *in = nulls == 1 ? nullptr : src.data();
        const int32_t result = nulls != 0 || code > 3 ? -1 : 0;
        EXPECT_EQ(result, gRotateRGB16(in, nulls == 2 ? nullptr : dst.data(), sw, sh, srcX, srcY, srcW, srcH, dstX,
                                       dstY, dw, dh, code));
        EXPECT_EQ(result, gRotateRGB16toBGR24(in, nulls == 2 ? nullptr : bgr.data(), sw, sh, srcX, srcY, srcW, srcH,
                                              dstX, dstY, dh, stride, code));
        ASSERT_TRUE(src.untouched() && dst.intact() && bgr.intact());
        // The clamp steps as stated: positions limited to their surfaces, then
        // the size cut by the source and by the room on the destination,
        // across and down as the turn lays the rectangle.
        const int32_t x0 = std::min(srcX, sw), y0 = std::min(srcY, sh);
        const int32_t x1 = std::min(dstX, dw), y1 = std::min(dstY, dh);
        int32_t cw = std::min(srcW, sw - x0), ch = std::min(srcH, sh - y0);
        int32_t &across = code % 2 ? ch : cw, &down = code % 2 ? cw : ch; // a quarter turn lays rows across
        across = std::min(across, dw - x1);
        down = std::min(down, dh - y1);
        // Each pixel moved whole, and expanded to B,G,R: each channel's bits
        // at the top, the low bits filled from the pattern by parity in the rectangle.
        static const int fill5[2][2] = {{0, 4}, {6, 2}}, fill6[2][2] = {{0, 2}, {3, 1}};
        for (int32_t j = 0; result == 0 && j < ch; ++j)
            for (int32_t i = 0; i < cw; ++i) {
                const Pos p = turned(code, i, j, cw, ch);
                const uint16_t px = src[size_t(sw) * size_t(y0 + j) + size_t(x0 + i)];
                const size_t x = size_t(x1 + p.c), y = size_t(y1 + p.r), at = y * size_t(stride) + 3 * x;
                pixels[y * size_t(dw) + x] = px;
                bytes[at] = uint8_t(px % 32 * 8 + fill5[j % 2][i % 2]);
                bytes[at + 1] = uint8_t(px / 32 % 64 * 4 + fill6[j % 2][i % 2]);
                bytes[at + 2] = uint8_t(px / 2048 * 8 + fill5[j % 2][i % 2]);
            }
        ASSERT_EQ(dst.contents(), pixels);
        ASSERT_EQ(bgr.contents(), bytes);
    }
}

// White and black at the four parities of a 4x2 rectangle at an odd corner,
// turned half way: the pattern starts at the rectangle's corner, not at the
// source position or the destination, and turns with the picture. Rectangle
// rows are white, white, black, black over black, black, white, white.
TEST(RotateRGB16toBGR24, WorkedExpansion)
{
    const uint16_t W = 0xFFFF, src[5 * 3] = {0, 0, 0, 0, 0, 0, W, W, 0, 0, 0, 0, 0, W, W};
    std::vector<uint8_t> out(2 * 12);
    ASSERT_EQ(gRotateRGB16toBGR24(src, out.data(), 5, 3, 1, 1, 4, 2, 0, 0, 2, 12, ROTATE_180), 0);
    EXPECT_EQ(out, (std::vector<uint8_t>{250, 253, 250, 254, 255, 254, 2, 1, 2, 6, 3, 6, // top row
                                         4, 2, 4, 0, 0, 0, 252, 254, 252, 248, 252, 248})); // bottom row
}

} // namespace
