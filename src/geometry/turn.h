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

} // namespace pixmill

#endif
