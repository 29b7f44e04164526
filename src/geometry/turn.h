// Steps of a turned image: where each pixel of a w x h source lands in
// the destination, as a start offset and two constant steps, so that a
// worker walks the destination with running pointers and no products.
#ifndef PIXMILL_TURN_H
#define PIXMILL_TURN_H

#include <cstddef>
#include <cstdint>

#include "frame/frame.h"

namespace pixmill {

// Source pixel (i, j) lands at start + i * col + j * row.
struct TurnSteps {
    ptrdiff_t start;
    ptrdiff_t col;
    ptrdiff_t row;
};

// The turn by code R of a w x h source into a destination whose pixels are
// `unit` elements apart and whose rows are `stride` elements apart, with the
// turned image's top-left corner at offset 0:
//   ROTATE_NONE (i, j)   ROTATE_90 (h-1-j, i)   ROTATE_180 (w-1-i, h-1-j)   ROTATE_270 (j, w-1-i)
template <uint32_t R>
constexpr TurnSteps turnSteps(ptrdiff_t w, ptrdiff_t h, ptrdiff_t unit, ptrdiff_t stride)
{
    static_assert(R <= ROTATE_270, "rotation code");
    if (R == ROTATE_90)
        return {(h - 1) * unit, stride, -unit};
    if (R == ROTATE_180)
        return {(w - 1) * unit + (h - 1) * stride, -unit, -stride};
    if (R == ROTATE_270)
        return {(w - 1) * stride, -stride, unit};
    return {0, unit, stride};
}

// The same for a whole packed plane of bytes: the destination is h wide after
// a quarter turn, w wide otherwise.
template <uint32_t R>
constexpr TurnSteps turnPlane(ptrdiff_t w, ptrdiff_t h)
{
    return turnSteps<R>(w, h, 1, isQuarterTurn(R) ? h : w);
}

// Rows of `cols` samples, row j at s + j * sStride, placed one sample at a
// time: sample (i, j) at d + i * to.col + j * to.row (to.start is already in
// d), and once more `again` elements further on when that is not 0.
template <class T>
void placeSamples(const T *s, ptrdiff_t sStride, ptrdiff_t cols, ptrdiff_t rows, T *d, TurnSteps to,
                  ptrdiff_t again = 0)
{
    for (ptrdiff_t j = 0; j < rows; ++j, s += sStride, d += to.row) {
        T *o = d;
        for (ptrdiff_t i = 0; i < cols; ++i, o += to.col) {
            o[0] = s[i];
            if (again != 0)
                o[again] = s[i];
        }
    }
}

// A quarter turn (to.row is +1 or -1) in bands of `band` source rows, which
// go to `transpose(in, inStride, out, outStride, n)`: it writes source column
// i of a band as `band` adjacent samples at out + i * outStride, with the
// band's rows taken from `in` in the order in which they lie along a
// destination row, and returns how many columns it did. The kernel walks a
// strip of kStripColumns columns down through all bands before the next
// strip, so that the destination rows it fills stay in the first-level cache
// until they are whole. placeSamples does the columns it leaves and the rows
// below the last whole band.
constexpr ptrdiff_t kStripColumns = 256;

template <class T, class Transpose>
void turnBands(const T *s, ptrdiff_t sStride, ptrdiff_t cols, ptrdiff_t rows, T *d, TurnSteps to, ptrdiff_t again,
               ptrdiff_t band, Transpose transpose)
{
    const ptrdiff_t bands = rows / band;
    const bool up = to.row < 0;
    ptrdiff_t done = 0; // columns turned in every band
    for (ptrdiff_t strip = 0; bands != 0 && strip < cols; strip += kStripColumns) {
        const ptrdiff_t width = cols - strip < kStripColumns ? cols - strip : kStripColumns;
        ptrdiff_t n = 0;
        for (ptrdiff_t j = 0; j < bands * band; j += band) {
            const ptrdiff_t first = up ? j + band - 1 : j;
            n = static_cast<ptrdiff_t>(transpose(s + first * sStride + strip, up ? -sStride : sStride,
                                                 d + first * to.row + strip * to.col, to.col,
                                                 static_cast<size_t>(width)));
        }
        done = strip + n;
        if (n < width)
            break;
    }
    for (ptrdiff_t j = 0; j < bands * band; j += band)
        placeSamples(s + j * sStride + done, sStride, cols - done, band, d + done * to.col + j * to.row, to, again);
    placeSamples(s + bands * band * sStride, sStride, cols, rows - bands * band, d + bands * band * to.row, to, again);
}

} // namespace pixmill

#endif
