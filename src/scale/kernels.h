// Row kernels of the scalers. Each one handles a prefix of the units it is
// given in whole vectors and returns how many it handled; the walker does
// the rest with the plain code. See frame/simd.h for the rules that every
// kernel keeps.
#ifndef PIXMILL_SCALE_KERNELS_H
#define PIXMILL_SCALE_KERNELS_H

#include <cstddef>
#include <cstdint>

#include "scale/bilinear_walk.h"

namespace pixmill {

struct ScaleKernels {
    // The two passes of the bilinear plane scaler.
    BilinearRowKernels bilinear;

    // Fixed ratios; `n` counts target samples of one row, or blocks.
    // downby2: out[i] = (9a + 3b + 3c + d) >> 4 from a = top[2i], b =
    // top[2i + 1], c = bottom[2i], d = bottom[2i + 1].
    size_t (*downby2)(const uint8_t *top, const uint8_t *bottom, uint8_t *out, size_t n);
    // downto3by3: n 4x4 blocks from the four source rows s[0..3] into three
    // target rows t[0..2], three samples per block.
    size_t (*downto3by3)(const uint8_t *const s[4], uint8_t *const t[3], size_t n);
    // upby2 even row: out[2k] = in[k], out[2k + 1] = avg(in[k], in[k + 1]),
    // for k below n; in[n] is read.
    size_t (*upby2Row)(const uint8_t *in, uint8_t *out, size_t n);
    // out[i] = avg(a[i], b[i]).
    size_t (*average)(const uint8_t *a, const uint8_t *b, uint8_t *out, size_t n);
    // upby4: n 4x4 target blocks from the source samples top[0..n] and
    // bottom[0..n] into the four target rows t[0..3].
    size_t (*upby4)(const uint8_t *top, const uint8_t *bottom, uint8_t *const t[4], size_t n);
};

// The kernels of the chosen target, or nullptr for the plain code.
const ScaleKernels *scaleKernels();

} // namespace pixmill

#endif
