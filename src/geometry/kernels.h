// Row kernels of the rotation and mirroring walkers. Each one handles a
// prefix of the units it is given in whole vectors and returns how many it
// handled; the walker finishes the row with the plain code. See
// frame/simd.h for the rules that every kernel keeps.
#ifndef PIXMILL_GEOMETRY_KERNELS_H
#define PIXMILL_GEOMETRY_KERNELS_H

#include <cstddef>
#include <cstdint>

namespace pixmill {

// Rows in one band of the transposing kernels: 16 rows of bytes, 8 rows of
// 16-bit pixels.
constexpr ptrdiff_t kTransposeRows8 = 16;
constexpr ptrdiff_t kTransposeRows16 = 8;

// The low-bit fill of an RGB565 to B,G,R expansion, [a][b] as each kernel
// says; red takes the blue entry.
struct ExpandFill {
    uint8_t blue[2][2];
    uint8_t green[2][2];
};

struct GeometryKernels {
    // out[-i] = in[i]: a row of 16-bit pixels written right to left, from
    // the word `out` leftwards.
    size_t (*reverse16)(const uint16_t *in, uint16_t *out, size_t n);
    // The same for a row of bytes.
    size_t (*reverse8)(const uint8_t *in, uint8_t *out, size_t n);

    // Exchange of two runs of n bytes, each read before either is stored:
    //   swap8:         outA[i] = inB[i],  outB[i] = inA[i]
    //   swapReverse8:  outA[i] = inB[-i], outB[-i] = inA[i]
    // In place (out = in) the two runs must not overlap.
    size_t (*swap8)(const uint8_t *inA, const uint8_t *inB, uint8_t *outA, uint8_t *outB, size_t n);
    size_t (*swapReverse8)(const uint8_t *inA, const uint8_t *inB, uint8_t *outA, uint8_t *outB, size_t n);

    // A band of kTransposeRows8 rows of n bytes, row j at in + j * inStride,
    // turned on its side: column i of the band becomes the run of
    // kTransposeRows8 bytes at out + i * outStride (row 0 first), and, when
    // `again` is not 0, also at out + i * outStride + again.
    size_t (*transpose8)(const uint8_t *in, ptrdiff_t inStride, uint8_t *out, ptrdiff_t outStride, ptrdiff_t again,
                         size_t n);
    // The same for a band of kTransposeRows16 rows of 16-bit pixels, without
    // the second store; strides in pixels.
    size_t (*transpose16)(const uint16_t *in, ptrdiff_t inStride, uint16_t *out, ptrdiff_t outStride, size_t n);

    // RGB565 pixels expanded to B,G,R bytes: blue and red are the 5-bit
    // fields times 8, green the 6-bit field times 4, each plus its fill.
    //   expand565: pixel in[i] at out + 3 * i, or at out - 3 * i when
    //     `backwards`, with the fills [0][i & 1];
    //   expandTurned565: the band of transpose16, each pixel expanded in its
    //     place: band row b, column i at out + i * outStride + 3 * b, with the
    //     fills [i & 1][b & 1].
    size_t (*expand565)(const uint16_t *in, uint8_t *out, size_t n, bool backwards, const ExpandFill &fill);
    size_t (*expandTurned565)(const uint16_t *in, ptrdiff_t inStride, uint8_t *out, ptrdiff_t outStride, size_t n,
                              const ExpandFill &fill);
};

// The kernels of the chosen target, or nullptr for the plain code.
const GeometryKernels *geometryKernels();

} // namespace pixmill

#endif
