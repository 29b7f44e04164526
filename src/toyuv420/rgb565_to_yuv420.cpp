// RGB565 image -> 4:2:0 frame, upside down: source row 0 lands on the
// frame's last row. Chroma of each 2x2 block comes from its first pixel
// alone. Columns right of the image and rows above it are filled by
// replication, so every byte of the three planes is written.
#include <cstddef>
#include <cstring>

#include "frame/platform.h"
#include "toyuv420/kernels.h"
#include "toyuv420/rgb565_tables.h"

namespace pixmill {

PIXMILL_CONST(PIXMILL_SECTION_CONSTANT) constexpr Rgb565ToYuvTables Rgb565ToYuv = makeRgb565ToYuvTables();

namespace {

// Sums of table terms never leave 16..230 (Y) or 17..236 (U, V): no clamp.
PIXMILL_INLINE uint8_t lumaOf(uint32_t px)
{
    const Rgb565ToYuvTables &t = Rgb565ToYuv;
    return static_cast<uint8_t>(16 + ((t.YFromR[px >> 11] + t.YFromG[(px >> 5) & 63] + t.YFromB[px & 31]) >> 14));
}

PIXMILL_INLINE uint8_t uOf(uint32_t px)
{
    const Rgb565ToYuvTables &t = Rgb565ToYuv;
    return static_cast<uint8_t>(128 + ((t.UFromR[px >> 11] + t.UFromG[(px >> 5) & 63] + t.ChromaFull5[px & 31]) >> 14));
}

PIXMILL_INLINE uint8_t vOf(uint32_t px)
{
    const Rgb565ToYuvTables &t = Rgb565ToYuv;
    return static_cast<uint8_t>(128 + ((t.ChromaFull5[px >> 11] + t.VFromG[(px >> 5) & 63] + t.VFromB[px & 31]) >> 14));
}

// A pair of frame rows (y on the upper one) and their chroma row, walked
// from the bottom of the frame upwards.
struct RowPair {
    uint8_t *y;
    uint8_t *u;
    uint8_t *v;
    size_t width;
    size_t chroma;
    PIXMILL_INLINE void stepUp()
    {
        y -= 2 * width;
        u -= chroma;
        v -= chroma;
    }
};

// Converts the first `ew` pixels of source rows `first` and `second` into the
// lower and the upper row of `at` and its chroma row, then repeats the last
// written column of each row up to the frame's width. The kernels `k`, if
// any, take the leading blocks.
PIXMILL_INLINE void convertRowPair(const uint16_t *first, const uint16_t *second, const RowPair &at, size_t ew,
                                   const ToYuv420Kernels *k)
{
    uint8_t *lower = at.y + at.width;
    uint8_t *upper = at.y;
    uint8_t *u = at.u;
    uint8_t *v = at.v;
    size_t c = 0;
    if (k != nullptr) {
        const size_t blocks = k->rgb565Blocks(first, second, lower, upper, u, v, ew / 2);
        c = 2 * blocks;
        first += c;
        second += c;
        lower += c;
        upper += c;
        u += blocks;
        v += blocks;
    }
    for (; c < ew; c += 2) {
        const uint32_t px = first[0];
        lower[0] = lumaOf(px);
        lower[1] = lumaOf(first[1]);
        upper[0] = lumaOf(second[0]);
        upper[1] = lumaOf(second[1]);
        *u++ = uOf(px);
        *v++ = vOf(px);
        first += 2;
        second += 2;
        lower += 2;
        upper += 2;
    }
    const size_t tail = at.width - ew;
    std::memset(lower, lower[-1], tail);
    std::memset(upper, upper[-1], tail);
    std::memset(u, u[-1], tail / 2);
    std::memset(v, v[-1], tail / 2);
}

} // namespace
} // namespace pixmill

extern "C" PIXMILL_API PIXMILL_CODE(PIXMILL_SECTION_COLORCON) void gEmRGB565toYUV420(
    const uint16_t *source, Frame *frame, uint32_t sourceWidth, uint32_t sourceHeight)
{
    using namespace pixmill;
    // Served: an even frame, 2 <= sourceWidth <= width, 1 <= sourceHeight <=
    // height. Anything else would walk rows above the planes or tails of
    // negative length, and is left alone: nothing is written.
    if (((frame->width | frame->height) & 1) != 0 || sourceWidth < 2 || sourceHeight < 1 ||
        sourceWidth > frame->width || sourceHeight > frame->height)
        return;
    const size_t width = frame->width;
    const size_t chroma = width >> 1;
    const size_t ew = sourceWidth & ~1u;
    const uint32_t eh = sourceHeight & ~1u;

    // The pointers start one row past each plane and step up a row pair
    // (one chroma row) before each pass: y then stands on the upper row.
    RowPair at{frame->y + size_t(frame->height) * width, frame->u + size_t(frame->height >> 1) * chroma,
               frame->v + size_t(frame->height >> 1) * chroma, width, chroma};
    int32_t rowsLeft = frame->height;
    const ToYuv420Kernels *k = toYuv420Kernels();

    for (uint32_t r = 0; r < eh; r += 2) {
        at.stepUp();
        convertRowPair(source, source + sourceWidth, at, ew, k);
        source += 2 * size_t(sourceWidth);
        rowsLeft -= 2;
    }
    // An odd last row counts as two equal rows.
    if (sourceHeight & 1) {
        at.stepUp();
        convertRowPair(source, source, at, ew, k);
        rowsLeft -= 2;
    }
    // Rows above the image copy the row below them.
    for (; rowsLeft > 0; rowsLeft -= 2) {
        at.stepUp();
        std::memcpy(at.y + width, at.y + 2 * width, width);
        std::memcpy(at.y, at.y + 2 * width, width);
        std::memcpy(at.u, at.u + chroma, chroma);
        std::memcpy(at.v, at.v + chroma, chroma);
    }
}
