// Rectangle turns of packed 16-bit images: into a second 16-bit surface with
// the pixels moved whole, or into a 24-bit B,G,R surface with each RGB565
// pixel expanded and its missing low bits filled from a 2x2 pattern.
#include <cstring>

#include "geometry/kernels.h"
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

// Rows move as they are, or reversed, or through 8 x 8 tiles transposed in
// registers under a quarter turn; the kernels do a prefix of each row or
// band, the plain placement the rest.
template <uint32_t R>
int32_t rotateRGB16(const uint16_t *source, uint16_t *destination, int32_t sourceWidth, int32_t sourceHeight,
                    int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH, int32_t dstX, int32_t dstY, int32_t dstW,
                    int32_t dstH)
{
    const Rect k = clampRect<R>(sourceWidth, sourceHeight, srcX, srcY, srcW, srcH, dstX, dstY, dstW, dstH);
    if (k.cw <= 0 || k.ch <= 0)
        return 0;
    const TurnSteps to = turnSteps<R>(k.cw, k.ch, 1, dstW);
    const uint16_t *row = source + ptrdiff_t{sourceWidth} * k.srcY + k.srcX;
    uint16_t *rowOut = destination + ptrdiff_t{dstW} * k.dstY + k.dstX + to.start;
    const GeometryKernels *kernels = geometryKernels();
    if constexpr (isQuarterTurn(R)) {
        turnBands(row, sourceWidth, k.cw, k.ch, rowOut, to, 0, kTransposeRows16,
                  [kernels](const uint16_t *in, ptrdiff_t inStride, uint16_t *out, ptrdiff_t outStride, size_t n) {
                      return kernels != nullptr ? kernels->transpose16(in, inStride, out, outStride, n) : 0;
                  });
        return 0;
    }
    for (int32_t j = 0; j < k.ch; ++j, row += sourceWidth, rowOut += to.row) {
        ptrdiff_t n = 0;
        if (R == ROTATE_NONE) {
            n = k.cw;
            std::memcpy(rowOut, row, size_t(n) * sizeof *row);
        } else if (kernels != nullptr) {
            n = static_cast<ptrdiff_t>(kernels->reverse16(row, rowOut, size_t(k.cw)));
        }
        placeSamples(row + n, sourceWidth, k.cw - n, 1, rowOut + n * to.col, to);
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

// Pixels `from` to cw - 1 of rectangle row j, pixel i landing at d + i * col.
void expandRow(const uint16_t *row, int32_t j, int32_t from, int32_t cw, uint8_t *d, ptrdiff_t col)
{
    // The row's half of each table; the column parity picks the entry.
    const int32_t *fill5 = ExpandDither5 + 2 * (j & 1);
    const int32_t *fill6 = ExpandDither6 + 2 * (j & 1);
    for (int32_t i = from; i < cw; ++i)
        expandPixel(d + i * col, row[i], fill5[i & 1], fill6[i & 1]);
}

// The fills of a kernel: entry [a][b] serves the pixel whose row in the
// rectangle has parity rowParity(a, b) and whose column has parity
// columnParity(a, b).
template <class RowParity, class ColumnParity>
ExpandFill expandFill(RowParity rowParity, ColumnParity columnParity)
{
    ExpandFill fill{};
    for (int a = 0; a < 2; ++a)
        for (int b = 0; b < 2; ++b) {
            const auto k = static_cast<int32_t>(2 * (rowParity(a, b) & 1) + (columnParity(a, b) & 1));
            fill.blue[a][b] = static_cast<uint8_t>(ExpandDither5[k]);
            fill.green[a][b] = static_cast<uint8_t>(ExpandDither6[k]);
        }
    return fill;
}

// Rows expand in vectors, forwards or backwards; under a quarter turn bands
// of 8 rows go through 8 x 8 tiles transposed in registers. The kernels do a
// prefix of each row or band, expandRow the rest.
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
    const GeometryKernels *kernels = geometryKernels();
    int32_t j = 0;
    if (isQuarterTurn(R) && kernels != nullptr) {
        // The band's rows in the order in which they lie along a destination row.
        const bool up = to.row < 0;
        const ptrdiff_t band = kTransposeRows16;
        for (; j + band <= k.ch; j += band) {
            const ptrdiff_t first = up ? j + band - 1 : j;
            const ExpandFill fill =
                expandFill([&](int, int b) { return up ? first - b : first + b; }, [](int a, int) { return a; });
            const auto n = static_cast<int32_t>(
                kernels->expandTurned565(row + first * sourceWidth, up ? -ptrdiff_t{sourceWidth} : sourceWidth,
                                         rowOut + first * to.row, to.col, size_t(k.cw), fill));
            for (ptrdiff_t b = j; b < j + band; ++b)
                expandRow(row + b * sourceWidth, int32_t(b), n, k.cw, rowOut + b * to.row, to.col);
        }
    }
    for (; j < k.ch; ++j) {
        const uint16_t *s = row + ptrdiff_t{j} * sourceWidth;
        uint8_t *d = rowOut + ptrdiff_t{j} * to.row;
        int32_t n = 0;
        if (!isQuarterTurn(R) && kernels != nullptr)
            n = static_cast<int32_t>(kernels->expand565(s, d, size_t(k.cw), R == ROTATE_180,
                                                        expandFill([j](int, int) { return j; },
                                                                   [](int, int b) { return b; })));
        expandRow(s, j, n, k.cw, d, to.col);
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
