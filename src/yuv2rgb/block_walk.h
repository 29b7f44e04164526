// The walk shared by the whole-image YUV -> RGB conversions: 2x2 blocks, two
// target rows per pass, rows in source order or reversed, and the repeat of
// an odd last column and row. What differs between operations (coefficients,
// term form, offsets, byte order, where chroma rows come from) lives in a
// small pixel policy:
//
//   using Out;                        target unit (uint8_t or uint16_t)
//   static constexpr int32_t kUnits;  units per pixel
//   kChromaPerRow and terms(u, v)     from ChromaOf<form, coefficients, 4:2:2?>
//   template <int row, int col> static void put(Out *p, int32_t luma, const ChromaTerms &t);
//   static PairKernel<Out> kernel(const Yuv2RgbKernels &k);   its row pair kernel
//
// `row` and `col` are the parities of the pixel in the source.
#ifndef PIXMILL_BLOCK_WALK_H
#define PIXMILL_BLOCK_WALK_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/frame.h"
#include "yuv2rgb/colour.h"
#include "yuv2rgb/kernels.h"

namespace pixmill {

// Converts the top-left w x h pixels of `f`. Target rows are `pitch` units
// apart; source row r lands on target row r (topDown) or h - 1 - r. Samples in
// an odd last column or row are never read: their target pixels repeat the
// neighbour to the left or the row before. A size of 1 has nothing to repeat
// from and leaves the target as it was.
template <class P>
PIXMILL_INLINE void walkBlocks(const Frame &f, typename P::Out *dst, int32_t w, int32_t h, ptrdiff_t pitch,
                               bool topDown)
{
    using Out = typename P::Out;
    constexpr int32_t U = P::kUnits;
    if (w <= 0 || h <= 0)
        return;
    const int32_t ew = w & ~1;
    const int32_t eh = h & ~1;
    const ptrdiff_t lumaStride = f.width;
    const ptrdiff_t chromaRow = chromaStride(f);
    const ptrdiff_t rowStep = topDown ? pitch : -pitch;
    const Yuv2RgbKernels *k = yuv2rgbKernels();
    const PairKernel<Out> fast = k ? P::kernel(*k) : nullptr;

    Out *rowOut = topDown ? dst : dst + (h - 1) * pitch;
    const uint8_t *yRow = f.y;
    const uint8_t *uRow = f.u;
    const uint8_t *vRow = f.v;
    for (int32_t r = 0; r < eh; r += 2) {
        Out *a = rowOut;
        Out *b = rowOut + rowStep;
        const uint8_t *ya = yRow;
        const uint8_t *yb = yRow + lumaStride;
        const uint8_t *ua = uRow;
        const uint8_t *va = vRow;
        const uint8_t *ub = P::kChromaPerRow ? uRow + chromaRow : uRow;
        const uint8_t *vb = P::kChromaPerRow ? vRow + chromaRow : vRow;
        int32_t c = 0;
        if (fast) {
            // The kernel converts a prefix of the pairs; the loop below the rest.
            const size_t done = fast(PairRows{{ya, yb}, {ua, ub}, {va, vb}}, a, b, size_t(ew >> 1));
            c = int32_t(2 * done);
            a += c * U;
            b += c * U;
            ya += c;
            yb += c;
            ua += c >> 1;
            va += c >> 1;
            ub += c >> 1;
            vb += c >> 1;
        }
        for (; c < ew; c += 2) {
            const ChromaTerms ta = P::terms(*ua++, *va++);
            P::template put<0, 0>(a, ya[0], ta);
            P::template put<0, 1>(a + U, ya[1], ta);
            const ChromaTerms tb = P::kChromaPerRow ? P::terms(*ub++, *vb++) : ta;
            P::template put<1, 0>(b, yb[0], tb);
            P::template put<1, 1>(b + U, yb[1], tb);
            a += 2 * U;
            b += 2 * U;
            ya += 2;
            yb += 2;
        }
        if ((w & 1) && ew > 0) {
            for (int32_t i = 0; i < U; ++i) {
                a[i] = a[i - U];
                b[i] = b[i - U];
            }
        }
        rowOut += 2 * rowStep;
        yRow += 2 * lumaStride;
        uRow += P::kChromaPerRow ? 2 * chromaRow : chromaRow;
        vRow += P::kChromaPerRow ? 2 * chromaRow : chromaRow;
    }
    // rowOut now stands on the target row of source row h - 1.
    if ((h & 1) && eh > 0)
        std::memcpy(rowOut, rowOut - rowStep, static_cast<size_t>(w) * U * sizeof(Out));
}

// The chroma half of a pixel policy: coefficient set, term form, and whether
// each source row has chroma of its own (4:2:2) or a row pair shares it (4:2:0).
template <Terms form, const Coeffs &k, bool perRow>
struct ChromaOf {
    static constexpr bool kChromaPerRow = perRow;
    static PIXMILL_INLINE ChromaTerms terms(int32_t u, int32_t v) { return chromaTerms<form>(k, u, v); }
};

// Stores of one pixel in the target's byte order.
PIXMILL_INLINE void storeRgb(uint8_t *p, const Rgb &px)
{
    p[0] = static_cast<uint8_t>(px.r);
    p[1] = static_cast<uint8_t>(px.g);
    p[2] = static_cast<uint8_t>(px.b);
}

PIXMILL_INLINE void storeBgr(uint8_t *p, const Rgb &px)
{
    p[0] = static_cast<uint8_t>(px.b);
    p[1] = static_cast<uint8_t>(px.g);
    p[2] = static_cast<uint8_t>(px.r);
}

} // namespace pixmill

#endif
