// Vector kernels of the rotation and mirroring walkers, one set per target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "geometry/kernels.cpp"
#include "frame/simd.h"
#include "geometry/kernels.h"

#if PIXMILL_VECTOR_TARGET
HWY_BEFORE_NAMESPACE();
namespace pixmill::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Calls step(d, i) for whole vectors from i = 0 while they fit in n: full
// vectors, then 128-bit ones, so that short tails of wide targets still go in
// vectors. Returns where it stopped.
template <class T, class Step>
HWY_INLINE size_t wholeVectors(size_t n, const Step &step)
{
    const hn::ScalableTag<T> d;
    size_t i = 0;
    for (; i + hn::Lanes(d) <= n; i += hn::Lanes(d))
        step(d, i);
    const hn::CappedTag<T, 16 / sizeof(T)> d128;
    for (; i + hn::Lanes(d128) <= n; i += hn::Lanes(d128))
        step(d128, i);
    return i;
}

// Bytes in reverse order: within each 128-bit block by a byte shuffle, then
// the blocks themselves.
template <class D>
HWY_INLINE hn::Vec<D> reverseBytes(D d, hn::Vec<D> v)
{
    alignas(16) static constexpr uint8_t kBackwards[16] = {15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
    return hn::ReverseBlocks(d, hn::TableLookupBytes(v, hn::LoadDup128(d, kBackwards)));
}

size_t reverse16(const uint16_t *in, uint16_t *out, size_t n)
{
    return wholeVectors<uint16_t>(n, [&](auto d, size_t i) {
        hn::StoreU(hn::Reverse(d, hn::LoadU(d, in + i)), d, out - i - (hn::Lanes(d) - 1));
    });
}

size_t reverse8(const uint8_t *in, uint8_t *out, size_t n)
{
    return wholeVectors<uint8_t>(n, [&](auto d, size_t i) {
        hn::StoreU(reverseBytes(d, hn::LoadU(d, in + i)), d, out - i - (hn::Lanes(d) - 1));
    });
}

size_t swap8(const uint8_t *inA, const uint8_t *inB, uint8_t *outA, uint8_t *outB, size_t n)
{
    return wholeVectors<uint8_t>(n, [&](auto d, size_t i) {
        const auto a = hn::LoadU(d, inA + i);
        const auto b = hn::LoadU(d, inB + i);
        hn::StoreU(b, d, outA + i);
        hn::StoreU(a, d, outB + i);
    });
}

size_t swapReverse8(const uint8_t *inA, const uint8_t *inB, uint8_t *outA, uint8_t *outB, size_t n)
{
    return wholeVectors<uint8_t>(n, [&](auto d, size_t i) {
        const size_t last = i + hn::Lanes(d) - 1;
        const auto a = hn::LoadU(d, inA + i);
        const auto b = hn::LoadU(d, inB - last);
        hn::StoreU(reverseBytes(d, b), d, outA + i);
        hn::StoreU(reverseBytes(d, a), d, outB - last);
    });
}

// ---- Transposes of 128-bit tiles --------------------------------------------
//
// K vectors, each one row of a K x K tile, are interleaved in stages of
// doubling lane width (r[k] with r[k + K/2], low and high halves). Each stage
// rotates the bits of (row, column) by one place, so after the last one
// vector c holds column c, with the rows in bit-reversed lane order: loading
// row bitReversed(v) into vector v puts row l in lane l. Interleaving works
// within 128-bit blocks, so a wider vector turns one tile per block side by
// side: block b of vector c is column 16 * b + c of the band (bytes).

using Tile8 = hn::FixedTag<uint8_t, 16>;
using Tile16 = hn::FixedTag<uint16_t, 8>;

template <class TLane, class D, size_t K>
HWY_INLINE void interleaveStage(D d, hn::Vec<D> (&r)[K])
{
    const hn::Repartition<TLane, D> dl;
    hn::Vec<D> t[K];
    for (size_t k = 0; k < K / 2; ++k) {
        const auto a = hn::BitCast(dl, r[k]);
        const auto b = hn::BitCast(dl, r[k + K / 2]);
        t[2 * k] = hn::BitCast(d, hn::InterleaveLower(dl, a, b));
        t[2 * k + 1] = hn::BitCast(d, hn::InterleaveUpper(dl, a, b));
    }
    for (size_t k = 0; k < K; ++k)
        r[k] = t[k];
}

// Block b of v at out + b * blockStride, and `again` further on when that is
// not 0.
template <class D>
HWY_INLINE void storeBlocks(D d, hn::Vec<D> v, hn::TFromD<D> *out, ptrdiff_t blockStride, ptrdiff_t again)
{
    if constexpr (hn::MaxLanes(D()) * sizeof(hn::TFromD<D>) <= 16) {
        hn::StoreU(v, d, out);
        if (again != 0)
            hn::StoreU(v, d, out + again);
    } else {
        const hn::Half<D> dh;
        const auto blocks = static_cast<ptrdiff_t>(hn::MaxLanes(dh) * sizeof(hn::TFromD<D>) / 16);
        storeBlocks(dh, hn::LowerHalf(dh, v), out, blockStride, again);
        storeBlocks(dh, hn::UpperHalf(dh, v), out + blocks * blockStride, blockStride, again);
    }
}

// Whole vectors of d across the band from column i on; returns where it stopped.
template <class D>
HWY_INLINE size_t transposeBytes(D d, const uint8_t *in, ptrdiff_t inStride, uint8_t *out, ptrdiff_t outStride,
                                 ptrdiff_t again, size_t n, size_t i)
{
    static_assert(kTransposeRows8 == 16, "16 x 16 tiles of bytes");
    static constexpr int kRowOf[16] = {0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15};
    const size_t N = hn::Lanes(d);
    for (; i + N <= n; i += N) {
        hn::Vec<D> r[16];
        for (int v = 0; v < 16; ++v)
            r[v] = hn::LoadU(d, in + kRowOf[v] * inStride + ptrdiff_t(i));
        interleaveStage<uint8_t>(d, r);
        interleaveStage<uint16_t>(d, r);
        interleaveStage<uint32_t>(d, r);
        interleaveStage<uint64_t>(d, r);
        uint8_t *o = out + ptrdiff_t(i) * outStride;
        for (int c = 0; c < 16; ++c, o += outStride)
            storeBlocks(d, r[c], o, 16 * outStride, again);
    }
    return i;
}

size_t transpose8(const uint8_t *in, ptrdiff_t inStride, uint8_t *out, ptrdiff_t outStride, ptrdiff_t again, size_t n)
{
    const size_t i = transposeBytes(hn::ScalableTag<uint8_t>(), in, inStride, out, outStride, again, n, 0);
    return transposeBytes(Tile8(), in, inStride, out, outStride, again, n, i);
}

// The 8 x 8 tiles of 16-bit pixels whose row j is at in + j * inStride,
// turned: block b of r[c] is column 8 * b + c, row j in lane j of the block.
template <class D>
HWY_INLINE void loadColumns16(D d, const uint16_t *in, ptrdiff_t inStride, hn::Vec<D> (&r)[8])
{
    static_assert(kTransposeRows16 == 8, "8 x 8 tiles of 16-bit pixels");
    static constexpr int kRowOf[8] = {0, 4, 2, 6, 1, 5, 3, 7};
    for (int v = 0; v < 8; ++v)
        r[v] = hn::LoadU(d, in + kRowOf[v] * inStride);
    interleaveStage<uint16_t>(d, r);
    interleaveStage<uint32_t>(d, r);
    interleaveStage<uint64_t>(d, r);
}

template <class D>
HWY_INLINE size_t transposeWords(D d, const uint16_t *in, ptrdiff_t inStride, uint16_t *out, ptrdiff_t outStride,
                                 size_t n, size_t i)
{
    const size_t N = hn::Lanes(d);
    for (; i + N <= n; i += N) {
        hn::Vec<D> r[8];
        loadColumns16(d, in + i, inStride, r);
        uint16_t *o = out + ptrdiff_t(i) * outStride;
        for (int c = 0; c < 8; ++c, o += outStride)
            storeBlocks(d, r[c], o, 8 * outStride, 0);
    }
    return i;
}

size_t transpose16(const uint16_t *in, ptrdiff_t inStride, uint16_t *out, ptrdiff_t outStride, size_t n)
{
    const size_t i = transposeWords(hn::ScalableTag<uint16_t>(), in, inStride, out, outStride, n, 0);
    return transposeWords(Tile16(), in, inStride, out, outStride, n, i);
}

// ---- RGB565 to B,G,R bytes ----------------------------------------------------

// Two fill bytes that alternate lane by lane, the first in even lanes.
template <class D>
HWY_INLINE hn::Vec<D> alternating(D d, uint8_t even, uint8_t odd)
{
    const hn::Repartition<uint16_t, D> dw;
    return hn::BitCast(d, hn::Set(dw, static_cast<uint16_t>(even | odd << 8)));
}

// B, G, R of the pixels whose low bytes are `lo` and high bytes `hi`: blue is
// bits 4-0 times 8, green bits 10-5 times 4, red bits 15-11 times 8, each with
// its fill added to the clear low bits.
template <class D>
HWY_INLINE void expandStore(D d, hn::Vec<D> lo, hn::Vec<D> hi, hn::Vec<D> fill5, hn::Vec<D> fill6, uint8_t *out)
{
    const auto blue = hn::Add(hn::ShiftLeft<3>(lo), fill5);
    const auto green = hn::Add(hn::Or(hn::And(hn::ShiftRight<3>(lo), hn::Set(d, uint8_t{0x1C})), hn::ShiftLeft<5>(hi)),
                               fill6);
    const auto red = hn::Add(hn::And(hi, hn::Set(d, uint8_t{0xF8})), fill5);
    hn::StoreInterleaved3(blue, green, red, d, out);
}

size_t expandTurned565(const uint16_t *in, ptrdiff_t inStride, uint8_t *out, ptrdiff_t outStride, size_t n,
                       const ExpandFill &fill)
{
    const Tile8 d8;
    const hn::FixedTag<uint8_t, 8> dh; // one column of a tile: 8 pixels
    const hn::Vec<decltype(dh)> fill5[2] = {alternating(dh, fill.blue[0][0], fill.blue[0][1]),
                                            alternating(dh, fill.blue[1][0], fill.blue[1][1])};
    const hn::Vec<decltype(dh)> fill6[2] = {alternating(dh, fill.green[0][0], fill.green[0][1]),
                                            alternating(dh, fill.green[1][0], fill.green[1][1])};
    size_t i = 0;
    for (; i + 8 <= n; i += 8) {
        hn::Vec<Tile16> r[8];
        loadColumns16(Tile16(), in + i, inStride, r);
        uint8_t *o = out + ptrdiff_t(i) * outStride;
        for (int c = 0; c < 8; ++c, o += outStride) {
            const auto bytes = hn::BitCast(d8, r[c]);
            const auto lo = hn::LowerHalf(dh, hn::ConcatEven(d8, bytes, bytes));
            const auto hi = hn::LowerHalf(dh, hn::ConcatOdd(d8, bytes, bytes));
            expandStore(dh, lo, hi, fill5[c & 1], fill6[c & 1], o);
        }
    }
    return i;
}

// A row of pixels, N at a time; backwards each vector is reversed and stored
// from the far end, so that lane q holds pixel N - 1 - q of the step.
size_t expand565(const uint16_t *in, uint8_t *out, size_t n, bool backwards, const ExpandFill &fill)
{
    const hn::ScalableTag<uint8_t> d;
    const hn::Repartition<uint16_t, decltype(d)> dw;
    const size_t N = hn::Lanes(d);
    const int first = backwards ? 1 : 0; // the parity of pixel i in lane 0 (N is even)
    const auto fill5 = alternating(d, fill.blue[0][first], fill.blue[0][first ^ 1]);
    const auto fill6 = alternating(d, fill.green[0][first], fill.green[0][first ^ 1]);
    size_t i = 0;
    for (; i + N <= n; i += N) {
        const auto a = hn::BitCast(d, hn::LoadU(dw, in + i));
        const auto b = hn::BitCast(d, hn::LoadU(dw, in + i + N / 2));
        auto lo = hn::ConcatEven(d, b, a);
        auto hi = hn::ConcatOdd(d, b, a);
        if (backwards) {
            lo = reverseBytes(d, lo);
            hi = reverseBytes(d, hi);
            expandStore(d, lo, hi, fill5, fill6, out - 3 * (i + N - 1));
        } else {
            expandStore(d, lo, hi, fill5, fill6, out + 3 * i);
        }
    }
    return i;
}

constexpr GeometryKernels kGeometry{&reverse16,   &reverse8,    &swap8,     &swapReverse8,
                                    &transpose8,  &transpose16, &expand565, &expandTurned565};

} // namespace pixmill::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif

#if PIXMILL_KERNELS_ONCE
namespace pixmill {
PIXMILL_KERNEL_SET(GeometryKernels, kGeometry, geometryKernels)
} // namespace pixmill
#endif
