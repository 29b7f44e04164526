// Vector kernels of the scalers, one set per target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "scale/kernels.cpp"
#include "frame/simd.h"
#include "scale/kernels.h"

#include "scale/bilinear_rows-inl.h"

// The kernels work on 16-byte blocks; Highway's one-lane fallback target
// gets none (the plain code serves there).
#if PIXMILL_VECTOR_TARGET
#include <hwy/cache_control.h> // FlushStream

HWY_BEFORE_NAMESPACE();
namespace pixmill::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// (a + b) >> 1 on bytes: the rounding mean less the bit it rounded up.
template <class V>
HWY_INLINE V truncatingAverage(V a, V b)
{
    const hn::DFromV<V> d;
    return hn::Sub(hn::AverageRound(a, b), hn::And(hn::Xor(a, b), hn::Set(d, 1)));
}

// Red, green and blue of RGB565 pixels as bytes with their bits at the top.
template <class D>
HWY_INLINE void channels(D d, hn::Vec<D> p, hn::Vec<D> c[3])
{
    c[0] = hn::And(hn::ShiftRight<8>(p), hn::Set(d, 0xF8));
    c[1] = hn::And(hn::ShiftRight<3>(p), hn::Set(d, 0xFC));
    c[2] = hn::And(hn::ShiftLeft<3>(p), hn::Set(d, 0xFF));
}

size_t filterPixels(const uint16_t *row, const PixelGroup *groups, size_t count, size_t size, int16_t *const out[3])
{
    const hn::FixedTag<uint8_t, 16> d8;
    const hn::FixedTag<uint16_t, 8> du;
    const hn::FixedTag<int16_t, 8> d16;
    for (size_t g = 0, at = 0; g < count; ++g, at += size) {
        const PixelGroup &group = groups[g];
        const auto pixels = hn::LoadU(d8, reinterpret_cast<const uint8_t *>(row + group.base));
        hn::Vec<decltype(du)> left[3], right[3];
        channels(du, hn::BitCast(du, hn::TableLookupBytes(pixels, hn::LoadU(d8, group.left))), left);
        channels(du, hn::BitCast(du, hn::TableLookupBytes(pixels, hn::LoadU(d8, group.right))), right);
        const auto px = hn::BitCast(d16, hn::LoadU(du, group.phase));
        for (int c = 0; c < 3; ++c) {
            const auto l = hn::BitCast(d16, left[c]), r = hn::BitCast(d16, right[c]);
            hn::StoreU(twoTaps(l, r, px), d16, out[c] + at);
        }
    }
    return count;
}

size_t blendPixels(const int16_t *const upper[3], const int16_t *const lower[3], int32_t py, uint16_t *out, size_t n)
{
    const hn::ScalableTag<int16_t> d;
    const hn::RebindToUnsigned<decltype(d)> du;
    const size_t N = hn::Lanes(d);
    const auto w = hn::Set(d, static_cast<int16_t>(py));
    size_t i = 0;
    for (; i + N <= n; i += N) {
        hn::Vec<decltype(du)> sum[3];
        for (int c = 0; c < 3; ++c) {
            // at most 64 * 252
            sum[c] = hn::BitCast(du, twoTaps(hn::LoadU(d, upper[c] + i), hn::LoadU(d, lower[c] + i), w));
        }
        const auto red = hn::And(hn::ShiftLeft<2>(sum[0]), hn::Set(du, 0xF800));
        const auto green = hn::And(hn::ShiftRight<3>(sum[1]), hn::Set(du, 0x07E0));
        hn::StoreU(hn::Or(red, hn::Or(green, hn::ShiftRight<9>(sum[2]))), du, out + i);
    }
    return i;
}

// Both rows in one walk over the filtered lanes: each pair of vectors of
// them is loaded once for the two rows. Whole vectors as storeRows writes
// them, aligned in out0; kStream streams both rows this way when they share
// the alignment, and else streams them one after the other.
template <bool kStream>
HWY_INLINE size_t blendPair(const int16_t *upper, const int16_t *lower, int32_t py0, int32_t py1, uint8_t *out0,
                            uint8_t *out1, size_t n)
{
    const hn::ScalableTag<int16_t> d;
    const hn::Repartition<uint8_t, decltype(d)> d8;
    const size_t N = hn::Lanes(d), N8 = hn::Lanes(d8);
    if (n < N8 || (kStream && (out1 - out0) % ptrdiff_t(N8))) { // row by row
        const size_t done0 = blendRow<kStream>(upper, lower, py0, out0, n);
        const size_t done1 = blendRow<kStream>(upper, lower, py1, out1, n);
        // The walker redoes the lanes from the smaller prefix on: the same bytes.
        return done0 < done1 ? done0 : done1;
    }
    const auto w0 = hn::Set(d, static_cast<int16_t>(py0)), w1 = hn::Set(d, static_cast<int16_t>(py1));
    const auto wu0 = hn::Set(d, static_cast<int16_t>(8 - py0)), wu1 = hn::Set(d, static_cast<int16_t>(8 - py1));
    return storeRows<kStream>(d8, out0, n, [&](size_t i, auto store) {
        const auto u0 = hn::LoadU(d, upper + i), u1 = hn::LoadU(d, upper + i + N);
        const auto l0 = hn::LoadU(d, lower + i), l1 = hn::LoadU(d, lower + i + N);
        store(blendLanes(d, u0, u1, l0, l1, wu0, w0), out0 + i);
        store(blendLanes(d, u0, u1, l0, l1, wu1, w1), out1 + i);
    });
}

size_t blendRowPair(const int16_t *upper, const int16_t *lower, int32_t py0, int32_t py1, uint8_t *out0,
                    uint8_t *out1, size_t n)
{
    return blendPair<false>(upper, lower, py0, py1, out0, out1, n);
}

size_t blendRowPairStreamed(const int16_t *upper, const int16_t *lower, int32_t py0, int32_t py1, uint8_t *out0,
                            uint8_t *out1, size_t n)
{
    const size_t done = blendPair<true>(upper, lower, py0, py1, out0, out1, n);
    // Order the non-temporal stores before whatever follows.
    hwy::FlushStream();
    return done;
}

// A halving block's pair weights of one kind (even or odd), as 16-bit lanes
// of byte pairs (8 - px, px), times the upper and lower rows' weights: each
// byte of a product stays below 65, so the 16-bit products are the byte
// products.
template <class D>
HWY_INLINE void rowWeights(D d, const uint8_t *pairs, hn::Vec<D> wUpper, hn::Vec<D> wLower,
                           hn::Vec<hn::Repartition<uint8_t, D>> &upper, hn::Vec<hn::Repartition<uint8_t, D>> &lower)
{
    const hn::Repartition<uint8_t, D> d8;
    const auto w = hn::BitCast(d, hn::LoadU(d8, pairs));
    upper = hn::BitCast(d8, hn::Mul(w, wUpper));
    lower = hn::BitCast(d8, hn::Mul(w, wLower));
}

// Rows of a band as in blendPairBlocks. Each block's weights are made once
// and kept in registers for all rows of the band.
template <bool kPrefetch>
HWY_INLINE void blendBand(const PairRows r, const PairBlocks &blocks, size_t count)
{
    constexpr size_t kLanes = PairBlocks::kLanes;
    // A whole block per vector on AVX-512: with the weights kept for the
    // band, one 512-bit step ran some 6-10% faster than two 256-bit ones.
    const hn::CappedTag<int16_t, 32> d;
    const hn::Repartition<uint8_t, decltype(d)> d8;
    const hn::Rebind<uint8_t, decltype(d)> dOut;
    const size_t N = hn::Lanes(d);
    using V8 = hn::Vec<decltype(d8)>;
    const auto wUpper = hn::Set(d, static_cast<int16_t>(8 - r.py)), wLower = hn::Set(d, static_cast<int16_t>(r.py));
    const ptrdiff_t dy = r.dy;
    for (size_t b = 0; b < count; ++b) {
        const uint8_t *u = r.upper + blocks.base[b];
        uint8_t *o = r.out + blocks.from[b];
        // (8 - py) * ((8 - px) * a + px * b) + py * ((8 - px) * c + px * d),
        // at most 64 * 255 per lane and per pair of products
        if (!blocks.mixed[b]) {
#if HWY_HAVE_SCALABLE
            // Sizeless vectors make no arrays: N lanes down all rows, then
            // the next N (slower on x86 than all lanes row by row).
            for (size_t t = 0; t < kLanes; t += N) {
                V8 eu, el;
                rowWeights(d, blocks.even[b] + 2 * t, wUpper, wLower, eu, el);
                const uint8_t *from = u + 2 * t;
                uint8_t *to = o + t;
                for (int32_t row = 0; row < r.rows; ++row, from += r.step, to += r.outStride) {
                    if (kPrefetch && t == 0) {
                        hwy::Prefetch(from + 4 * kLanes);
                        hwy::Prefetch(from + dy + 4 * kLanes);
                    }
                    const auto sum =
                        hn::Add(filterPairs(hn::LoadU(d8, from), eu), filterPairs(hn::LoadU(d8, from + dy), el));
                    hn::StoreU(hn::DemoteTo(dOut, hn::ShiftRight<6>(sum)), dOut, to);
                }
            }
#else
            constexpr size_t kMaxParts = 4; // of 8 lanes
            V8 eu[kMaxParts], el[kMaxParts];
            for (size_t p = 0; p < kLanes / N; ++p)
                rowWeights(d, blocks.even[b] + 2 * N * p, wUpper, wLower, eu[p], el[p]);
            for (int32_t row = 0; row < r.rows; ++row, u += r.step, o += r.outStride) {
                if (kPrefetch) {
                    hwy::Prefetch(u + 4 * kLanes);
                    hwy::Prefetch(u + dy + 4 * kLanes);
                }
                for (size_t p = 0; p < kLanes / N; ++p) {
                    const auto sum = hn::Add(filterPairs(hn::LoadU(d8, u + 2 * N * p), eu[p]),
                                             filterPairs(hn::LoadU(d8, u + dy + 2 * N * p), el[p]));
                    hn::StoreU(hn::DemoteTo(dOut, hn::ShiftRight<6>(sum)), dOut, o + N * p);
                }
            }
#endif
            continue;
        }
        for (int32_t row = 0; row < r.rows; ++row, u += r.step, o += r.outStride)
            for (size_t t = 0; t < kLanes; t += N) {
                V8 eu, el, ou, ol;
                rowWeights(d, blocks.even[b] + 2 * t, wUpper, wLower, eu, el);
                rowWeights(d, blocks.odd[b] + 2 * t, wUpper, wLower, ou, ol);
                const auto even = hn::Add(filterPairs(hn::LoadU(d8, u + 2 * t), eu),
                                          filterPairs(hn::LoadU(d8, u + dy + 2 * t), el));
                const auto odd = hn::Add(filterPairs(hn::LoadU(d8, u + 2 * t + 1), ou),
                                         filterPairs(hn::LoadU(d8, u + dy + 2 * t + 1), ol));
                hn::StoreU(hn::DemoteTo(dOut, hn::ShiftRight<6>(hn::Add(even, odd))), dOut, o + t);
            }
    }
}

void blendPairBlocks(const PairRows &rows, const PairBlocks &blocks, size_t count)
{
    // Copies: the stores could otherwise alias them.
    if (rows.prefetch)
        blendBand<true>(rows, blocks, count);
    else
        blendBand<false>(rows, blocks, count);
}

size_t downby2(const uint8_t *top, const uint8_t *bottom, uint8_t *out, size_t n)
{
    // One target sample per 16-bit lane, from the two bytes of a source pair:
    // (9, 3) of the top pair and (3, 1) of the bottom one, over 16.
    const hn::ScalableTag<uint8_t> d8;
    const hn::Repartition<int16_t, decltype(d8)> d;
    const hn::Rebind<uint8_t, decltype(d)> dOut;
    const size_t N = hn::Lanes(d);
    const auto near = hn::BitCast(d8, hn::Set(d, 0x0309)), far = hn::BitCast(d8, hn::Set(d, 0x0103));
    size_t i = 0;
    for (; i + N <= n; i += N) {
        const auto sum = hn::Add(filterPairs(hn::LoadU(d8, top + 2 * i), near),
                                 filterPairs(hn::LoadU(d8, bottom + 2 * i), far));
        hn::StoreU(hn::DemoteTo(dOut, hn::ShiftRight<4>(sum)), dOut, out + i);
    }
    return i;
}

// downto3by3 on eight blocks at a time: their 32 source bytes of a row give
// the 24 target columns as three vectors of eight, each from one 16-byte load
// (at 0, 8 and 16) whose bytes are shuffled into the pair of taps of each
// column: (p0, p1), (p1, p2) and (p3, p2), the nearer tap first. Weighted pair
// sums fold both axes into one: the outer target rows take (9, 3) of the
// nearer source row and (3, 1) of the next for the outer columns, (6, 6) and
// (2, 2) for the middle one, all over 16; the middle target row takes (3, 1)
// or (2, 2) of each of the two middle source rows, over 8. Doubled, the middle
// column's weights share the outer columns' shift.
struct ThirdsTable {
    uint8_t taps[3][16];
    uint8_t outer[3][16];
    uint8_t inner[3][16];
};
constexpr ThirdsTable thirdsTable()
{
    ThirdsTable t{};
    for (int v = 0; v < 3; ++v)
        for (int k = 0; k < 8; ++k) {
            const int column = 8 * v + k, block = column / 3, place = column % 3;
            // Source columns from this vector's load, which starts at 8 v.
            const int first = 4 * block - 8 * v;
            t.taps[v][2 * k] = static_cast<uint8_t>(first + (place == 2 ? 3 : place));
            t.taps[v][2 * k + 1] = static_cast<uint8_t>(first + (place == 2 ? 2 : place + 1));
            t.outer[v][2 * k] = place == 1 ? 6 : 9;
            t.outer[v][2 * k + 1] = place == 1 ? 6 : 3;
            t.inner[v][2 * k] = place == 1 ? 2 : 3;
            t.inner[v][2 * k + 1] = place == 1 ? 2 : 1;
        }
    return t;
}
alignas(16) constexpr ThirdsTable kThirds = thirdsTable();

// The three target rows of the columns whose tap pairs `taps` picks from the
// loads load(0..3) of the four source rows.
template <class V8, class Load>
HWY_INLINE void thirdsColumns(Load load, V8 taps, V8 outer, V8 inner, decltype(filterPairs(taps, taps)) rows[3])
{
    auto pairs = [&](int r) { return hn::TableLookupBytes(load(r), taps); };
    const auto second = filterPairs(pairs(1), inner), third = filterPairs(pairs(2), inner);
    rows[0] = hn::ShiftRight<4>(hn::Add(filterPairs(pairs(0), outer), second));
    rows[1] = hn::ShiftRight<3>(hn::Add(second, third));
    rows[2] = hn::ShiftRight<4>(hn::Add(filterPairs(pairs(3), outer), third));
}

// Eight blocks from byte `at` of each source row into the target rows from
// byte 3 * at / 4 on.
HWY_INLINE void thirdsGroup(const uint8_t *const s[4], uint8_t *const t[3], size_t at)
{
    const hn::FixedTag<uint8_t, 16> d8;
    const hn::FixedTag<uint8_t, 8> dHalf;
    hn::Vec<hn::FixedTag<int16_t, 8>> rows[3][3];
    for (int v = 0; v < 3; ++v) {
        auto load = [&](int r) { return hn::LoadU(d8, s[r] + at + 8 * v); };
        thirdsColumns(load, hn::Load(d8, kThirds.taps[v]), hn::Load(d8, kThirds.outer[v]),
                      hn::Load(d8, kThirds.inner[v]), rows[v]);
    }
    const size_t to = at / 4 * 3;
    for (int r = 0; r < 3; ++r) {
        hn::StoreU(hn::ConcatEven(d8, hn::BitCast(d8, rows[1][r]), hn::BitCast(d8, rows[0][r])), d8, t[r] + to);
        hn::StoreU(hn::DemoteTo(dHalf, rows[2][r]), dHalf, t[r] + to + 16);
    }
}

#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
// Sixteen blocks (two groups of eight) from byte `at` of each source row, in
// 32-byte vectors whose halves hold the two groups: one source load at 0
// gives the first group's first and last eight columns, one at 32 the
// second's, and two 16-byte loads at 8 and 40 their middle eight.
HWY_INLINE void thirdsGroupPair(const uint8_t *const s[4], uint8_t *const t[3], size_t at)
{
    const hn::FixedTag<uint8_t, 32> d32;
    const hn::FixedTag<uint8_t, 16> d16;
    const auto outerTaps = hn::Combine(d32, hn::Load(d16, kThirds.taps[2]), hn::Load(d16, kThirds.taps[0]));
    const auto outerOuter = hn::Combine(d32, hn::Load(d16, kThirds.outer[2]), hn::Load(d16, kThirds.outer[0]));
    const auto outerInner = hn::Combine(d32, hn::Load(d16, kThirds.inner[2]), hn::Load(d16, kThirds.inner[0]));
    const auto middleTaps = hn::Combine(d32, hn::Load(d16, kThirds.taps[1]), hn::Load(d16, kThirds.taps[1]));
    const auto middleOuter = hn::Combine(d32, hn::Load(d16, kThirds.outer[1]), hn::Load(d16, kThirds.outer[1]));
    const auto middleInner = hn::Combine(d32, hn::Load(d16, kThirds.inner[1]), hn::Load(d16, kThirds.inner[1]));
    hn::Vec<hn::FixedTag<int16_t, 16>> first[3], second[3], middle[3];
    thirdsColumns([&](int r) { return hn::LoadU(d32, s[r] + at); }, outerTaps, outerOuter, outerInner, first);
    thirdsColumns([&](int r) { return hn::LoadU(d32, s[r] + at + 32); }, outerTaps, outerOuter, outerInner, second);
    auto middleLoad = [&](int r) {
        return hn::Combine(d32, hn::LoadU(d16, s[r] + at + 40), hn::LoadU(d16, s[r] + at + 8));
    };
    thirdsColumns(middleLoad, middleTaps, middleOuter, middleInner, middle);
    const size_t to = at / 4 * 3;
    for (int r = 0; r < 3; ++r) {
        // 8-byte quarters a0 b0 c0 a1 b1 c1 in target order, from
        // (a0 b0 c0 b1) and (a1 b0 c1 b1).
        const __m256i p = _mm256_packus_epi16(first[r].raw, middle[r].raw);
        const __m256i q = _mm256_packus_epi16(second[r].raw, middle[r].raw);
        const __m256i c0b1 = _mm256_permute4x64_epi64(p, 0xFA), a1c1 = _mm256_permute4x64_epi64(q, 0xA0);
        const __m256i tail = _mm256_blend_epi32(c0b1, a1c1, 0xCC);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(t[r] + to), _mm256_castsi256_si128(p));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(t[r] + to + 16), tail);
    }
}
#endif

// n units in steps of `size` from the first: whole steps, then one more that
// ends at n (it writes some samples again, with the same values). Returns n,
// or 0 when n is below a step.
template <class Step>
HWY_INLINE size_t overlappingSteps(size_t n, size_t size, Step step)
{
    if (n < size)
        return 0;
    size_t i = 0;
    for (; i + size <= n; i += size)
        step(i);
    if (i < n)
        step(n - size);
    return n;
}

size_t downto3by3(const uint8_t *const rowsIn[4], uint8_t *const rowsOut[3], size_t n)
{
    // Local copies: the stores could otherwise alias the row tables.
    const uint8_t *const s[4] = {rowsIn[0], rowsIn[1], rowsIn[2], rowsIn[3]};
    uint8_t *const t[3] = {rowsOut[0], rowsOut[1], rowsOut[2]};
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
    if (const size_t done = overlappingSteps(n, 16, [&](size_t i) { thirdsGroupPair(s, t, 4 * i); }))
        return done;
#endif
    return overlappingSteps(n, 8, [&](size_t i) { thirdsGroup(s, t, 4 * i); });
}

size_t upby2Row(const uint8_t *in, uint8_t *out, size_t n)
{
    const hn::ScalableTag<uint8_t> d;
    const size_t N = hn::Lanes(d);
    size_t k = 0;
    for (; k + N <= n; k += N) {
        const auto a = hn::LoadU(d, in + k);
        hn::StoreInterleaved2(a, truncatingAverage(a, hn::LoadU(d, in + k + 1)), d, out + 2 * k);
    }
    return k;
}

// upby2Rows for N = Lanes(d) samples of `a` and `b` from k on.
template <class D>
HWY_INLINE void upby2Pair(D d, const uint8_t *a, const uint8_t *b, uint8_t *even, uint8_t *odd, size_t k)
{
    const auto a0 = hn::LoadU(d, a + k), b0 = hn::LoadU(d, b + k);
    const auto aMid = truncatingAverage(a0, hn::LoadU(d, a + k + 1));
    const auto bMid = truncatingAverage(b0, hn::LoadU(d, b + k + 1));
    hn::StoreInterleaved2(a0, aMid, d, even + 2 * k);
    hn::StoreInterleaved2(truncatingAverage(a0, b0), truncatingAverage(aMid, bMid), d, odd + 2 * k);
}

size_t upby2Rows(const uint8_t *a, const uint8_t *b, uint8_t *even, uint8_t *odd, size_t n)
{
    const hn::ScalableTag<uint8_t> d;
    return overlappingSteps(n, hn::Lanes(d), [&](size_t k) { upby2Pair(d, a, b, even, odd, k); });
}

size_t average(const uint8_t *a, const uint8_t *b, uint8_t *out, size_t n)
{
    const hn::ScalableTag<uint8_t> d;
    const size_t N = hn::Lanes(d);
    size_t i = 0;
    for (; i + N <= n; i += N)
        hn::StoreU(truncatingAverage(hn::LoadU(d, a + i), hn::LoadU(d, b + i)), d, out + i);
    return i;
}

size_t upby4(const uint8_t *top, const uint8_t *bottom, uint8_t *const t[4], size_t n)
{
    const hn::ScalableTag<uint8_t> d;
    const size_t N = hn::Lanes(d);
    size_t k = 0;
    for (; k + N <= n; k += N) {
        const auto p = hn::LoadU(d, top + k), q = hn::LoadU(d, top + k + 1);
        const auto r = hn::LoadU(d, bottom + k), u = hn::LoadU(d, bottom + k + 1);
        const auto T = truncatingAverage(p, q), L = truncatingAverage(p, r), M = truncatingAverage(r, q);
        const auto E = truncatingAverage(q, u), B = truncatingAverage(r, u);
        const auto F = truncatingAverage(M, T), G = truncatingAverage(M, B);
        const auto pl = truncatingAverage(p, L), rl = truncatingAverage(r, L);
        hn::StoreInterleaved4(p, truncatingAverage(p, T), T, truncatingAverage(q, T), d, t[0] + 4 * k);
        hn::StoreInterleaved4(pl, truncatingAverage(F, pl), F, truncatingAverage(F, truncatingAverage(q, E)), d,
                              t[1] + 4 * k);
        hn::StoreInterleaved4(L, truncatingAverage(M, L), truncatingAverage(L, E), truncatingAverage(M, E), d,
                              t[2] + 4 * k);
        hn::StoreInterleaved4(rl, truncatingAverage(G, rl), G, truncatingAverage(G, truncatingAverage(u, E)), d,
                              t[3] + 4 * k);
    }
    return k;
}

constexpr ScaleKernels kScale{{&filterColumns, &blendRows},
                              &filterPixels,
                              &blendPixels,
                              &blendRowPair,
                              &blendRowPairStreamed,
                              &blendPairBlocks,
                              &downby2,
                              &downto3by3,
                              &upby2Row,
                              &upby2Rows,
                              &average,
                              &upby4};

} // namespace pixmill::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif

#if PIXMILL_KERNELS_ONCE
namespace pixmill {
PIXMILL_KERNEL_SET(ScaleKernels, kScale, scaleKernels)
} // namespace pixmill
#endif
