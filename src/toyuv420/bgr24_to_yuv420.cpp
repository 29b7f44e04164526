// B,G,R bytes -> one contiguous 4:2:0 buffer (Y, then U, then V), rows in
// source order. Full-range BT.601 luma per pixel; chroma from the mean of
// each 2x2 block, folded into the shift.
#include <cstddef>

#include "frame/platform.h"
#include "toyuv420/kernels.h"

namespace pixmill {
namespace {

// Channel sums of a 2x2 block, 0 to 1020 each.
struct BlockSums {
    int32_t b = 0;
    int32_t g = 0;
    int32_t r = 0;
};

// Luma of one pixel (Q16 weights summing to 65536, no rounding term); its
// bytes are added to the block's sums on the way.
PIXMILL_INLINE uint8_t lumaOf(const uint8_t *px, BlockSums &sums)
{
    const uint32_t b = px[0], g = px[1], r = px[2];
    sums.b += static_cast<int32_t>(b);
    sums.g += static_cast<int32_t>(g);
    sums.r += static_cast<int32_t>(r);
    return static_cast<uint8_t>((19595u * r + 38470u * g + 7471u * b) >> 16);
}

// The shift of 18 is the Q16 scale and the division by four in one step.
// Results stay within 0..255: no clamp.
PIXMILL_INLINE uint8_t uOf(const BlockSums &s)
{
    return static_cast<uint8_t>(128 + ((32767 * s.b - 11059 * s.r - 21709 * s.g) >> 18));
}

PIXMILL_INLINE uint8_t vOf(const BlockSums &s)
{
    return static_cast<uint8_t>(128 + ((32767 * s.r - 5329 * s.b - 27439 * s.g) >> 18));
}

} // namespace
} // namespace pixmill

// Odd sizes have no whole-block layout and are refused: nothing is written.
extern "C" PIXMILL_API void gBGR24INTtoYUV420Planar(const uint8_t *source, uint8_t *destination, uint32_t width,
                                                    uint32_t height, int32_t stride)
{
    using namespace pixmill;
    if (height == 0 || ((width | height) & 1))
        return;
    const size_t lumaSize = size_t(width) * height;
    uint8_t *yRow = destination;
    uint8_t *u = destination + lumaSize;
    uint8_t *v = u + lumaSize / 4;
    const ptrdiff_t step = stride;
    const ToYuv420Kernels *k = toYuv420Kernels();

    for (uint32_t r = 0; r < height; r += 2) {
        const uint8_t *top = source;
        const uint8_t *bottom = source + step;
        uint8_t *yTop = yRow;
        uint8_t *yBottom = yRow + width;
        uint32_t c = 0;
        if (k != nullptr) {
            const size_t blocks = k->bgr24Blocks(top, bottom, yTop, yBottom, u, v, width / 2);
            c = static_cast<uint32_t>(2 * blocks);
            top += 3 * c;
            bottom += 3 * c;
            yTop += c;
            yBottom += c;
            u += blocks;
            v += blocks;
        }
        for (; c < width; c += 2) {
            BlockSums sums;
            yTop[0] = lumaOf(top, sums);
            yTop[1] = lumaOf(top + 3, sums);
            yBottom[0] = lumaOf(bottom, sums);
            yBottom[1] = lumaOf(bottom + 3, sums);
            *u++ = uOf(sums);
            *v++ = vOf(sums);
            top += 6;
            bottom += 6;
            yTop += 2;
            yBottom += 2;
        }
        source += 2 * step;
        yRow += 2 * size_t(width);
    }
}
