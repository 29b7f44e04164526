// Row kernels of the conversions into planar 4:2:0. Each one handles a
// prefix of the units it is given in whole vectors and returns how many it
// handled; the walker finishes the row with the plain code. See
// frame/simd.h for the rules that every kernel keeps.
#ifndef PIXMILL_TOYUV420_KERNELS_H
#define PIXMILL_TOYUV420_KERNELS_H

#include <cstddef>
#include <cstdint>

namespace pixmill {

struct ToYuv420Kernels {
    // 2x2 blocks of RGB565: pixels 2i and 2i + 1 of `first` give their luma
    // to lower[2i], lower[2i + 1], those of `second` to upper[2i],
    // upper[2i + 1]; pixel 2i of `first` alone gives u[i] and v[i].
    size_t (*rgb565Blocks)(const uint16_t *first, const uint16_t *second, uint8_t *lower, uint8_t *upper,
                           uint8_t *u, uint8_t *v, size_t blocks);
    // 2x2 blocks of B,G,R pixels: each pixel its own luma, at the same place
    // in yTop / yBottom; u[i] and v[i] from the sums of block i.
    size_t (*bgr24Blocks)(const uint8_t *top, const uint8_t *bottom, uint8_t *yTop, uint8_t *yBottom, uint8_t *u,
                          uint8_t *v, size_t blocks);
    // Packed 4:2:2 groups of four bytes (two pixels): the two lumas to
    // y[2i], y[2i + 1], the first and second chroma byte in memory order to
    // c0[i] and c1[i], as the index (Unpack) says; one set for lumas at
    // offsets 0 and 2 (Y0 U Y1 V), one for lumas at 1 and 3 (U Y0 V Y1).
    enum Unpack { Luma, Chroma, LumaAndChroma };
    using UnpackFn = size_t (*)(const uint8_t *src, uint8_t *y, uint8_t *c0, uint8_t *c1, size_t groups);
    UnpackFn y0uy1v[3];
    UnpackFn uy0vy1[3];
};

// The kernels of the chosen target, or nullptr for the plain code.
const ToYuv420Kernels *toYuv420Kernels();

} // namespace pixmill

#endif
