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

// Up to eight neighbouring target pixels of an RGB565 row whose taps all lie
// in the 8 source pixels from `base` on: lane t takes its left tap from bytes
// left[2t], left[2t + 1] of those 16 bytes, its right tap from bytes
// right[2t], right[2t + 1], and phase phase[t]; lanes past the group's size
// repeat lane 0.
struct PixelGroup {
    int32_t base;
    uint8_t left[16];
    uint8_t right[16];
    uint16_t phase[8];
};

// Blocks of kLanes neighbouring target columns of a halving walk, whose
// near taps lie kLanes * 2 samples apart give or take one. Block b covers
// the target columns from[b] .. from[b] + kLanes - 1; its lane t takes the
// byte pair (near, near + 1) at near = base[b] + 2t, weighted by
// even[b][2t] = 8 - px and even[b][2t + 1] = px, or at near = base[b] + 2t
// + 1, weighted by odd[b][2t] and odd[b][2t + 1]; the other pair of the lane
// weighs 0. `mixed[b]` is 0 when no lane of the block takes an odd pair (all
// odd weights are 0). A block reads the source bytes base[b] .. base[b] +
// 2 * kLanes of a row.
struct PairBlocks {
    static constexpr int32_t kLanes = 32;
    static constexpr int32_t kCount = 128;
    int32_t from[kCount];
    int32_t base[kCount];
    uint8_t mixed[kCount];
    uint8_t even[kCount][2 * kLanes];
    uint8_t odd[kCount][2 * kLanes];
};

// A band of target rows of a halving walk at one phase py: row r (below
// `rows`) blends the source rows at upper + r * step and `dy` bytes below
// into out + r * outStride. `prefetch`: the rows also prefetch the bytes
// two blocks on (no load there).
struct PairRows {
    const uint8_t *upper;
    ptrdiff_t step, dy;
    uint8_t *out;
    ptrdiff_t outStride;
    int32_t py, rows;
    bool prefetch;
};

struct ScaleKernels {
    // The two passes of the bilinear plane scaler.
    BilinearRowKernels bilinear;

    // RGB565 horizontal pass: for each group g, each of its `size` lanes t
    // and each channel c (red, green, blue as bytes with their bits at the
    // top), out[c][g * size + t] = (8 - px) * c(left) + px * c(right). Writes
    // eight samples per group, like filterColumns.
    size_t (*filterPixels)(const uint16_t *row, const PixelGroup *groups, size_t count, size_t size,
                           int16_t *const out[3]);
    // RGB565 vertical pass: per channel sum = (8 - py) * upper + py * lower,
    // packed as ((R << 2) & 0xF800) | ((G >> 3) & 0x07E0) | (B >> 9).
    size_t (*blendPixels)(const int16_t *const upper[3], const int16_t *const lower[3], int32_t py, uint16_t *out,
                          size_t n);

    // Two target rows of the bilinear walk from the same source rows (see
    // BilinearStrip::PairKernel).
    BilinearStrip::PairKernel blendRowPair;
    // The same for targets much larger than the caches: the rows are written
    // past the caches (non-temporal stores).
    BilinearStrip::PairKernel blendRowPairStreamed;

    // Halving bilinear rows, block by block: for each row r of the band,
    // block b and lane t, with h(row) = the lane's weighted pair of that row
    // as in PairBlocks, out[r * outStride + from[b] + t] = ((8 - py) *
    // h(upper row) + py * h(lower row)) >> 6. Handles all `count` blocks.
    void (*blendPairBlocks)(const PairRows &rows, const PairBlocks &blocks, size_t count);

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
    // upby2 row pair: the even row of `a` into `even` as upby2Row does, and
    // at each column the mean of it and the even row of `b` into `odd`.
    size_t (*upby2Rows)(const uint8_t *a, const uint8_t *b, uint8_t *even, uint8_t *odd, size_t n);
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
