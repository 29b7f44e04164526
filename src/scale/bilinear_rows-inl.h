// The two passes of the bilinear walk (scale/bilinear_walk.h) as vector
// kernels, for each family that runs the walk to include into its own kernel
// file under Highway's foreach_target. They work on 16-byte blocks: the
// one-lane fallback target gets none.
#if defined(PIXMILL_SCALE_BILINEAR_ROWS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef PIXMILL_SCALE_BILINEAR_ROWS_INL_H
#undef PIXMILL_SCALE_BILINEAR_ROWS_INL_H
#else
#define PIXMILL_SCALE_BILINEAR_ROWS_INL_H
#endif

#if PIXMILL_VECTOR_TARGET
#include <cstring>

#include "frame/x86-inl.h"
#include "scale/bilinear_walk.h"

HWY_BEFORE_NAMESPACE();
namespace pixmill::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// (8 - px) * near + px * far for the byte pairs of `bytes` (near the even
// byte), px given as the byte weights (8 - px, px) of every pair: at most
// 8 * 255 per 16-bit lane. x86 multiplies and adds the pairs in one step.
#if PIXMILL_X86_OPS
template <class V8>
HWY_INLINE auto filterPairs(V8 bytes, V8 weights)
{
    return mulAddBytePairs(bytes, weights);
}
#else
template <class V8>
HWY_INLINE auto filterPairs(V8 bytes, V8 weights)
{
    const hn::Repartition<int16_t, hn::DFromV<V8>> d;
    const hn::RebindToUnsigned<decltype(d)> du;
    const auto lowByte = hn::Set(d, 0xFF);
    const auto pairs = hn::BitCast(d, bytes), w = hn::BitCast(d, weights);
    const auto nearTap = hn::And(pairs, lowByte), farTap = hn::BitCast(d, hn::ShiftRight<8>(hn::BitCast(du, pairs)));
    return hn::Add(hn::Mul(nearTap, hn::And(w, lowByte)), hn::Mul(farTap, hn::ShiftRight<8>(w)));
}
#endif

// One group's lanes from its source bytes, tap indices and tap weights
// (each a 16-byte block per group): (8 - px) * near + px * far.
template <class V8>
HWY_INLINE auto filterGroups(V8 bytes, V8 taps, V8 weights)
{
    return filterPairs(hn::TableLookupBytes(bytes, taps), weights);
}

inline size_t filterColumns(const uint8_t *row, const ColumnGroups &groups, size_t count, size_t size, int16_t *out)
{
    const hn::FixedTag<uint8_t, 16> d8;
    size_t g = 0;
#if HWY_TARGET == HWY_AVX3
    {
        // Blocks of 16 lanes: one two-vector lane pick gives all their tap
        // pairs, and the upper bits of the lane numbers hold the weights. The
        // leading pairs of blocks on the same 33 bytes take one pick of 32
        // lanes from one vector of the 32 bytes from the base and those from
        // base + 1.
        constexpr size_t kLanes = ColumnGroups::kBlockLanes;
        const hn::FixedTag<uint8_t, 2 * kLanes> dBytes;
        const hn::FixedTag<uint8_t, 4 * kLanes> dWide;
        const auto weights = [](auto lanes) {
            const hn::DFromV<decltype(lanes)> du;
            return hn::BitCast(hn::Repartition<uint8_t, decltype(du)>(),
                               hn::Or(hn::ShiftRight<11>(lanes), hn::And(lanes, hn::Set(du, 0x0700))));
        };
        const size_t blocks = size_t(groups.blocks), paired = size_t(groups.pairedBlocks);
        size_t b = 0;
        for (; b < paired; b += 2) {
            const uint8_t *s = row + groups.blockBase[b];
            const auto lanes = hn::Load(hn::FixedTag<uint16_t, 2 * kLanes>(), groups.pairs[b]);
            const __m512i bytes =
                _mm512_inserti64x4(_mm512_castsi256_si512(hn::LoadU(dBytes, s).raw), hn::LoadU(dBytes, s + 1).raw, 1);
            const auto pairs = hn::Vec<decltype(dWide)>{_mm512_permutexvar_epi16(lanes.raw, bytes)};
            hn::StoreU(filterPairs(pairs, weights(lanes)), hn::FixedTag<int16_t, 2 * kLanes>(), out + b * kLanes);
        }
        const auto block = [&](size_t b) {
            const uint8_t *s = row + groups.blockBase[b];
            const auto lanes = hn::Load(hn::FixedTag<uint16_t, kLanes>(), groups.pairs[b]);
            const auto pairs = hn::Vec<decltype(dBytes)>{
                _mm256_permutex2var_epi16(hn::LoadU(dBytes, s).raw, lanes.raw, hn::LoadU(dBytes, s + 1).raw)};
            hn::StoreU(filterPairs(pairs, weights(lanes)), hn::FixedTag<int16_t, kLanes>(), out + b * kLanes);
        };
        for (; b + 2 <= blocks; b += 2) {
            block(b);
            block(b + 1);
        }
        if (b < blocks)
            block(b);
        out += blocks * kLanes;
        if (blocks) // size is 2, 4 or 8: no division
            g = (blocks * kLanes) >> hwy::Num0BitsBelowLS1Bit_Nonzero64(size);
    }
#endif
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
    // Groups of eight fill a block each: two groups per 32-byte vector.
    if (size == 8) {
        const hn::FixedTag<uint8_t, 32> d32;
        const hn::FixedTag<int16_t, 16> d16;
        for (; g + 2 <= count; g += 2, out += 16) {
            const auto bytes = groups.base[g + 1] == groups.base[g]
                                   ? hn::LoadDup128(d32, row + groups.base[g])
                                   : hn::Combine(d32, hn::LoadU(d8, row + groups.base[g + 1]),
                                                 hn::LoadU(d8, row + groups.base[g]));
            const auto taps = hn::LoadU(d32, groups.taps[g]), weights = hn::LoadU(d32, groups.weights[g]);
            hn::StoreU(filterGroups(bytes, taps, weights), d16, out);
        }
    }
#endif
    const hn::FixedTag<int16_t, 8> d16;
    for (; g < count; ++g, out += size) {
        const auto taps = hn::LoadU(d8, groups.taps[g]), weights = hn::LoadU(d8, groups.weights[g]);
        hn::StoreU(filterGroups(hn::LoadU(d8, row + groups.base[g]), taps, weights), d16, out);
    }
    return count;
}

// (8 - w) * a + w * b of 16-bit lanes, as 8 * a + w * (b - a): the two
// taps of either pass, at most 64 * 255 with filtered taps.
template <class V>
HWY_INLINE V twoTaps(V a, V b, V w)
{
    return hn::Add(hn::ShiftLeft<3>(a), hn::Mul(hn::Sub(b, a), w));
}

// The 16-bit lanes of lo, then of hi, as bytes in lane order (the sums of
// the vertical pass lie in 0..255 once shifted): one pack and, on vectors of
// more than one block, one permute of its 8-byte quarters.
template <class D>
HWY_INLINE hn::Vec<hn::Repartition<uint8_t, D>> narrowInOrder(D d, hn::Vec<D> lo, hn::Vec<D> hi)
{
#if PIXMILL_X86_OPS
    (void)d;
    const auto packed = packUnsignedBytes(lo, hi); // per block: 8 bytes of lo, 8 of hi
    if constexpr (sizeof(packed) == 16) {
        return packed;
    }
#if HWY_TARGET != HWY_SSE4
    else if constexpr (sizeof(packed) == 32) {
        return hn::Vec256<uint8_t>{_mm256_permute4x64_epi64(packed.raw, 0xD8)};
    }
#endif
#if HWY_TARGET == HWY_AVX3
    else {
        return hn::Vec512<uint8_t>{_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), packed.raw)};
    }
#endif
#else
    const hn::Repartition<uint8_t, D> d8;
    const hn::Rebind<uint8_t, D> dHalf;
    return hn::Combine(d8, hn::DemoteTo(dHalf, hi), hn::DemoteTo(dHalf, lo));
#endif
}

// Target bytes of the vertical pass from N 16-bit lanes of each filtered
// row (u0, l0) and the N after them (u1, l1): (wu * u + w * l) >> 6 with wu
// = 8 - py and w = py, as 2N bytes. Two products per lane ran faster here
// than twoTaps' one product and two more steps.
template <class D, class V = hn::Vec<D>>
HWY_INLINE hn::Vec<hn::Repartition<uint8_t, D>> blendLanes(D d, V u0, V u1, V l0, V l1, V wu, V w)
{
    const auto s0 = hn::Add(hn::Mul(u0, wu), hn::Mul(l0, w));
    const auto s1 = hn::Add(hn::Mul(u1, wu), hn::Mul(l1, w));
    return narrowInOrder(d, hn::ShiftRight<6>(s0), hn::ShiftRight<6>(s1));
}

// Target bytes i .. i + 2N - 1 of one row.
template <class D, class V = hn::Vec<D>>
HWY_INLINE hn::Vec<hn::Repartition<uint8_t, D>> blendVector(D d, const int16_t *upper, const int16_t *lower, V wu,
                                                            V w, size_t i)
{
    const size_t N = hn::Lanes(d);
    return blendLanes(d, hn::LoadU(d, upper + i), hn::LoadU(d, upper + i + N), hn::LoadU(d, lower + i),
                      hn::LoadU(d, lower + i + N), wu, w);
}

// Bytes [from, to) of the vector v to out + from, by way of the stack: the
// ends of a streamed row, whose lines hold bytes of no other store of the row.
template <class D8>
HWY_INLINE void storePart(D8 d8, hn::Vec<D8> v, uint8_t *out, size_t from, size_t to)
{
    alignas(HWY_MAX_BYTES) uint8_t bytes[HWY_MAX_BYTES];
    hn::Store(v, d8, bytes);
    std::memcpy(out + from, bytes + from, to - from);
}

// Writes the n bytes of one or more target rows as whole vectors:
// vectors(i, store) makes the vectors of bytes i .. i + N - 1 of its rows
// and hands each to store(v, row + i). The first vector goes where it falls
// (unless `aligned` starts on a vector), the following ones on the vector
// alignment of `aligned`, the last one ends at n (it writes some bytes
// again, with the same values). kStream stores the aligned ones past the
// caches and the bytes before and after them alone, so that no line takes
// both kinds of store (a plain store into a streamed line waits for it to
// leave); streamed rows share the alignment of `aligned`. Returns n, or 0
// when n is below a vector.
template <bool kStream, class D8, class Vectors>
HWY_INLINE size_t storeRows(D8 d8, const uint8_t *aligned, size_t n, Vectors vectors)
{
    using V8 = hn::Vec<D8>;
    const size_t N = hn::Lanes(d8);
    if (n < N)
        return 0;
    size_t i = (N - reinterpret_cast<uintptr_t>(aligned) % N) % N;
    const size_t last = n - N;
    if constexpr (kStream) {
        if (i)
            vectors(0, [&](V8 v, uint8_t *at) { storePart(d8, v, at, 0, i); });
        for (; i + N <= n; i += N)
            vectors(i, [&](V8 v, uint8_t *at) { hn::Stream(v, d8, at); });
        if (i < n)
            vectors(last, [&](V8 v, uint8_t *at) { storePart(d8, v, at, i - last, N); });
        return n;
    }
    const auto store = [&](V8 v, uint8_t *at) { hn::StoreU(v, d8, at); };
    if (i)
        vectors(0, store);
    for (; i + N <= n; i += N)
        vectors(i, store);
    if (i < n)
        vectors(last, store);
    return n;
}

// The vertical pass of one row; kStream writes it past the caches.
template <bool kStream>
HWY_INLINE size_t blendRow(const int16_t *upper, const int16_t *lower, int32_t py, uint8_t *out, size_t n)
{
    const hn::ScalableTag<int16_t> d;
    const hn::Repartition<uint8_t, decltype(d)> d8;
    const auto wu = hn::Set(d, static_cast<int16_t>(8 - py)), w = hn::Set(d, static_cast<int16_t>(py));
    if (const size_t done = storeRows<kStream>(
            d8, out, n, [&](size_t i, auto store) { store(blendVector(d, upper, lower, wu, w, i), out + i); }))
        return done;
    // Rows shorter than a vector of bytes: half vectors.
    const hn::Rebind<uint8_t, decltype(d)> dHalf;
    const size_t N = hn::Lanes(d);
    size_t i = 0;
    for (; i + N <= n; i += N) {
        const auto sum = hn::Add(hn::Mul(hn::LoadU(d, upper + i), wu), hn::Mul(hn::LoadU(d, lower + i), w));
        hn::StoreU(hn::DemoteTo(dHalf, hn::ShiftRight<6>(sum)), dHalf, out + i);
    }
    return i;
}

inline size_t blendRows(const int16_t *upper, const int16_t *lower, int32_t py, uint8_t *out, size_t n)
{
    return blendRow<false>(upper, lower, py, out, n);
}

} // namespace pixmill::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif
#endif
