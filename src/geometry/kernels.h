// Row kernels of the rotation and mirroring walkers. Each one handles a
// prefix of the units it is given in whole vectors and returns how many it
// handled; the walker finishes the row with the plain code. See
// frame/simd.h for the rules that every kernel keeps.
#ifndef PIXMILL_GEOMETRY_KERNELS_H
#define PIXMILL_GEOMETRY_KERNELS_H

#include <cstddef>
#include <cstdint>

namespace pixmill {

struct GeometryKernels {
    // out[-i] = in[i]: a row of 16-bit pixels written right to left, from
    // the word `out` leftwards.
    size_t (*reverse16)(const uint16_t *in, uint16_t *out, size_t n);
};

// The kernels of the chosen target, or nullptr for the plain code.
const GeometryKernels *geometryKernels();

} // namespace pixmill

#endif
