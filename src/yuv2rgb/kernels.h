// Row kernels of the conversions to RGB. A pair kernel converts pixel pairs
// (two luma samples that share one chroma pair) along one source row, or
// along the two rows of a row pair at once; it handles a prefix of the pairs
// it is given in whole vectors and returns how many it handled, and the
// walker finishes the rows with the plain code. See frame/simd.h for the
// rules that every kernel keeps.
#ifndef PIXMILL_YUV2RGB_KERNELS_H
#define PIXMILL_YUV2RGB_KERNELS_H

#include <cstddef>
#include <cstdint>

namespace pixmill {

// The samples of a row pair: its two luma rows and the chroma rows that
// serve them (one chroma row twice for 4:2:0). Pair i of a row is luma
// y[i * 2], y[i * 2 + 1] with chroma u[i], v[i].
struct PairRows {
    const uint8_t *y[2];
    const uint8_t *u[2];
    const uint8_t *v[2];
};

// Writes the pixels of row 0 from out0 and of row 1 from out1, in the
// target's units (3 bytes or one RGB565 word per pixel). A single-row kernel
// reads y[0], u[0], v[0] and writes out0 alone.
template <class Out>
using PairKernel = size_t (*)(const PairRows &in, Out *out0, Out *out1, size_t pairs);

// The words of RGB565 kernels go left to right ([0]), or right to left from
// out leftwards ([1]): pixel i of a row at out[-i].
enum Direction { LeftToRight, RightToLeft };

// Source rows from their first pixels: luma rows lumaStride apart, chroma
// rows chromaStride apart, one chroma row per luma row (4:2:2) or per row
// pair (4:2:0).
struct Source {
    const uint8_t *y;
    const uint8_t *u;
    const uint8_t *v;
    ptrdiff_t lumaStride;
    ptrdiff_t chromaStride;
};

// A turned strip kernel converts kStripRows source rows (from an even row)
// of `pairs` pixel pairs each and writes source pixel (c, r) of the strip at
// at[c * col + r * row], for a row move of 1 ([0]) or -1 ([1]) and any
// column move: the words of each source column go out as runs along a row
// of the surface. It handles every pair when the strip holds at least one
// vector of them (the last vector ends at the last pair and writes some words
// of the one before again, with the same values) and none otherwise, and
// returns how many it handled.
inline constexpr int32_t kStripRows = 16;
using TurnKernel = size_t (*)(const Source &in, uint16_t *at, ptrdiff_t col, size_t pairs);

struct Yuv2RgbKernels {
    // Whole images, row pairs: BT.601 truncating without offsets to R,G,B;
    // BT.709 rounding with luma + 1 in odd columns to B,G,R; 4:2:2 BT.601
    // truncating with Dither2x2 to B,G,R.
    PairKernel<uint8_t> rgb888From420;
    PairKernel<uint8_t> bgr24From420;
    PairKernel<uint8_t> bgr888From422;
    // RGB565 with all of Dither2x2, row pairs, truncating terms: BT.601 over
    // 4:2:0 and 4:2:2, BT.709 over 4:2:0.
    PairKernel<uint16_t> rgb565From420[2];
    PairKernel<uint16_t> rgb565From422[2];
    PairKernel<uint16_t> rgb565From420Bt709[2];
    // RGB565 of one row with the offsets of an even row, BT.709 truncating.
    PairKernel<uint16_t> rgb565RowBt709[2];
    // Turned strips of the same four RGB565 conversions; the BT.709 rows
    // take the offsets of an even row on every row.
    TurnKernel turn565From420[2];
    TurnKernel turn565From422[2];
    TurnKernel turn565From420Bt709[2];
    TurnKernel turn565RowsBt709[2];
};

// The kernels of the chosen target, or nullptr for the plain code.
const Yuv2RgbKernels *yuv2rgbKernels();

} // namespace pixmill

#endif
