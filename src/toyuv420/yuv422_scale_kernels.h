// Row kernels of the 4:2:2 -> 4:2:0 crop and scale: the two passes of the
// bilinear walk, and a direct path for steps of whole samples. See
// frame/simd.h for the rules that every kernel keeps.
#ifndef PIXMILL_TOYUV420_YUV422_SCALE_KERNELS_H
#define PIXMILL_TOYUV420_YUV422_SCALE_KERNELS_H

#include <cstddef>
#include <cstdint>

#include "scale/bilinear_walk.h"

namespace pixmill {

struct Yuv422ScaleKernels {
    BilinearRowKernels bilinear;
    // out[i] = in[2 i] for i below n; in[2 n - 1] is the last byte read.
    size_t (*pickEven)(const uint8_t *in, uint8_t *out, size_t n);
};

// The kernels of the chosen target, or nullptr for the plain code.
const Yuv422ScaleKernels *yuv422ScaleKernels();

} // namespace pixmill

#endif
