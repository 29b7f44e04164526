// Rectangle turns of packed 16-bit images: into a second 16-bit surface with
// the pixels moved whole, or into a 24-bit B,G,R surface with each RGB565
// pixel expanded and its missing low bits filled from a 2x2 pattern.
#include "geometry/turn.h"

namespace pixmill {
namespace {

// The rectangle that is read, after the clamps: the corner stays, the size
// is cut from the far end.
struct Rect {
    int32_t srcX, srcY, dstX, dstY;
    int32_t cw, ch;
};

// Each position is first limited to its surface; then the size is limited by
// the source and by the room right of and below (dstX, dstY), where a quarter
// turn lays source rows across the destination and columns down it.
template <uint32_t R>
constexpr Rect clampRect(int32_t sourceWidth, int32_t sourceHeight, int32_t srcX, int32_t srcY, int32_t srcW,
                         int32_t srcH, int32_t dstX, int32_t dstY, int32_t dstW, int32_t dstH)
{
    srcX = min32(srcX, sourceWidth);
    srcY = min32(srcY, sourceHeight);
    dstX = min32(dstX, dstW);
    dstY = min32(dstY, dstH);
    const ClipSize size =
        clipRectangle(srcW, srcH, sourceWidth, sourceHeight, srcX, srcY, dstW, dstH, dstX, dstY, isQuarterTurn(R));
    return {srcX, srcY, dstX, dstY, size.cw, size.ch};
}

// ---- 16-bit to 16-bit ------------------------------------------------------

// Eight pixels of a source row, stored `col` elements apart.
PIXMILL_INLINE void moveBlock8(const uint16_t *s, uint16_t *d, ptrdiff_t col)
{
    for (int k = 0; k < 8; ++k, d += col)
        *d = s[k];
}

template <uint32_t R>
int32_t rotateRGB16(const uint16_t *source, uint16_t *destination, int32_t sourceWidth, int32_t sourceHeight,
                    int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH, int32_t dstX, int32_t dstY, int32_t dstW,
                    int32_t dstH)
{
    const Rect k = clampRect<R>(sourceWidth, sourceHeight, srcX, srcY, srcW, srcH, dstX, dstY, dstW, dstH);
    if (k.cw <= 0 || k.ch <= 0)
        return 0;
    const TurnSteps to = turnSteps<R>(k.cw, k.ch, 1, dstW);
    const ptrdiff_t blockStep = 8 * to.col;
    const int32_t blocks = k.cw >> 3;
    const int32_t rest = k.cw & 7;
    const uint16_t *row = source + ptrdiff_t{sourceWidth} * k.srcY + k.srcX;
    uint16_t *rowOut = destination + ptrdiff_t{dstW} * k.dstY + k.dstX + to.start;
    for (int32_t j = 0; j < k.ch; ++j, row += sourceWidth, rowOut += to.row) {
        const uint16_t *s = row;
        uint16_t *d = rowOut;
        for (int32_t b = 0; b < blocks; ++b, s += 8, d += blockStep)
            moveBlock8(s, d, to.col);
        for (int32_t i = 0; i < rest; ++i, d += to.col)
            *d = *s++;
    }
    return 0;
}

using RGB16Worker = int32_t (*)(const uint16_t *, uint16_t *, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                                int32_t, int32_t, int32_t, int32_t);
constexpr RGB16Worker gRotateRGB16Copy = rotateRGB16<ROTATE_NONE>;
constexpr RGB16Worker gRotateRGB16By90 = rotateRGB16<ROTATE_90>;
constexpr RGB16Worker gRotateRGB16By180 = rotateRGB16<ROTATE_180>;
constexpr RGB16Worker gRotateRGB16By270 = rotateRGB16<ROTATE_270>;
constexpr RGB16Worker RGB16Workers[4] = {gRotateRGB16Copy, gRotateRGB16By90, gRotateRGB16By180, gRotateRGB16By270};

// ---- RGB565 to B,G,R bytes -------------------------------------------------

// Fill for the low bits, indexed by 2 * (row & 1) + (column & 1) of the pixel
// within the rectangle: three bits for red and blue, two for green.
constexpr int32_t ExpandDither5[4] = {0, 4, 6, 2};
constexpr int32_t ExpandDither6[4] = {0, 2, 3, 1};

// stride / 3 without a division: the high word of stride * 0x55555556,
// plus one when negative so that it truncates towards zero.
constexpr int32_t thirdOf(int32_t stride)
{
    const auto high = static_cast<int32_t>((int64_t{stride} * int64_t{0x55555556}) >> 32);
    return high < 0 ? high + 1 : high;
}

// The sums stay within 255 (248 + 6, 252 + 3), so there is no clamp.
PIXMILL_INLINE void expandPixel(uint8_t *d, int32_t p, int32_t fill5, int32_t fill6)
{
    d[0] = static_cast<uint8_t>((p & 0x1F) * 8 + fill5);
    d[1] = static_cast<uint8_t>(((p >> 5) & 0x3F) * 4 + fill6);
    d[2] = static_cast<uint8_t>((p >> 11) * 8 + fill5);
}

template <uint32_t R>
int32_t rotateRGB16toBGR24(const uint16_t *source, uint8_t *destination, int32_t sourceWidth, int32_t sourceHeight,
                           int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH, int32_t dstX, int32_t dstY,
                           int32_t dstH, int32_t dstStride)
{
    const int32_t dstW = thirdOf(dstStride);
    const Rect k = clampRect<R>(sourceWidth, sourceHeight, srcX, srcY, srcW, srcH, dstX, dstY, dstW, dstH);
    if (k.cw <= 0 || k.ch <= 0)
        return 0;
    const TurnSteps to = turnSteps<R>(k.cw, k.ch, 3, dstStride);
    const uint16_t *row = source + ptrdiff_t{sourceWidth} * k.srcY + k.srcX;
    uint8_t *rowOut = destination + ptrdiff_t{dstStride} * k.dstY + 3 * ptrdiff_t{k.dstX} + to.start;
    for (int32_t j = 0; j < k.ch; ++j, row += sourceWidth, rowOut += to.row) {
        // The row's half of each table; the column parity picks the entry.
        const int32_t *fill5 = ExpandDither5 + 2 * (j & 1);
        const int32_t *fill6 = ExpandDither6 + 2 * (j & 1);
        uint8_t *d = rowOut;
        for (int32_t i = 0; i < k.cw; ++i, d += to.col)
            expandPixel(d, row[i], fill5[i & 1], fill6[i & 1]);
    }
    return 0;
}

using BGR24Worker = int32_t (*)(const uint16_t *, uint8_t *, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                                int32_t, int32_t, int32_t, int32_t);
constexpr BGR24Worker gRotateRGB16toBGR24Copy = rotateRGB16toBGR24<ROTATE_NONE>;
constexpr BGR24Worker gRotateRGB16toBGR24By90 = rotateRGB16toBGR24<ROTATE_90>;
constexpr BGR24Worker gRotateRGB16toBGR24By180 = rotateRGB16toBGR24<ROTATE_180>;
constexpr BGR24Worker gRotateRGB16toBGR24By270 = rotateRGB16toBGR24<ROTATE_270>;
constexpr BGR24Worker BGR24Workers[4] = {gRotateRGB16toBGR24Copy, gRotateRGB16toBGR24By90, gRotateRGB16toBGR24By180,
                                         gRotateRGB16toBGR24By270};

} // namespace
} // namespace pixmill

extern "C" PIXMILL_API int32_t gRotateRGB16(const uint16_t *source, uint16_t *destination, int32_t sourceWidth,
                                            int32_t sourceHeight, int32_t srcX, int32_t srcY, int32_t srcW,
                                            int32_t srcH, int32_t dstX, int32_t dstY, int32_t dstW, int32_t dstH,
                                            Rotation rotation)
{
    if (source == nullptr || destination == nullptr || rotation > ROTATE_270)
        return -1;
    // The clamps only ever lower a value: a negative position would reach
    // before the surfaces. It is served as an empty rectangle.
    if ((sourceWidth | sourceHeight | srcX | srcY | dstX | dstY | dstW | dstH) < 0)
        return 0;
    return pixmill::RGB16Workers[rotation](source, destination, sourceWidth, sourceHeight, srcX, srcY, srcW, srcH,
                                           dstX, dstY, dstW, dstH);
}

extern "C" PIXMILL_API int32_t gRotateRGB16toBGR24(const uint16_t *source, uint8_t *destination,
                                                   int32_t sourceWidth, int32_t sourceHeight, int32_t srcX,
                                                   int32_t srcY, int32_t srcW, int32_t srcH, int32_t dstX,
                                                   int32_t dstY, int32_t dstH, int32_t dstStride, Rotation rotation)
{
    if (source == nullptr || destination == nullptr || rotation > ROTATE_270)
        return -1;
    // As in gRotateRGB16, negative positions (a negative stride among them)
    // are served as an empty rectangle.
    if ((sourceWidth | sourceHeight | srcX | srcY | dstX | dstY | dstH | dstStride) < 0)
        return 0;
    return pixmill::BGR24Workers[rotation](source, destination, sourceWidth, sourceHeight, srcX, srcY, srcW, srcH,
                                           dstX, dstY, dstH, dstStride);
}
