// Vector kernels of the scalers, one set per target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "scale/kernels.cpp"
#include "frame/simd.h"
#include "scale/kernels.h"

#include <cstring>

#include "scale/bilinear_rows-inl.h"

// The kernels work on 16-byte blocks; Highway's one-lane fallback target
// gets none (the plain code serves there).
#if PIXMILL_VECTOR_TARGET
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
            hn::StoreU(hn::Add(hn::ShiftLeft<3>(l), hn::Mul(hn::Sub(r, l), px)), d16, out[c] + at);
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
            const auto u = hn::LoadU(d, upper[c] + i), l = hn::LoadU(d, lower[c] + i);
            // (8 - py) * u + py * l, at most 64 * 252
            sum[c] = hn::BitCast(du, hn::Add(hn::ShiftLeft<3>(u), hn::Mul(hn::Sub(l, u), w)));
        }
        const auto red = hn::And(hn::ShiftLeft<2>(sum[0]), hn::Set(du, 0xF800));
        const auto green = hn::And(hn::ShiftRight<3>(sum[1]), hn::Set(du, 0x07E0));
        hn::StoreU(hn::Or(red, hn::Or(green, hn::ShiftRight<9>(sum[2]))), du, out + i);
    }
    return i;
}

// One target row of a row pair: ((8 - py) * u + py * l) >> 6 for whole
// vectors of the lanes [from, to).
template <class D>
HWY_INLINE void blendRowPart(D d, const int16_t *upper, const int16_t *lower, hn::Vec<D> w, uint8_t *out, size_t from,
                             size_t to)
{
    const hn::Rebind<uint8_t, D> d8;
    for (size_t i = from; i + hn::Lanes(d) <= to; i += hn::Lanes(d)) {
        const auto u = hn::LoadU(d, upper + i), l = hn::LoadU(d, lower + i);
        // 8 * u + py * (l - u) = (8 - py) * u + py * l, at most 64 * 255
        const auto sum = hn::Add(hn::ShiftLeft<3>(u), hn::Mul(hn::Sub(l, u), w));
        hn::StoreU(hn::DemoteTo(d8, hn::ShiftRight<6>(sum)), d8, out + i);
    }
}

size_t blendRowPair(const int16_t *upper, const int16_t *lower, int32_t py0, int32_t py1, uint8_t *out0,
                    uint8_t *out1, size_t n)
{
    const hn::ScalableTag<int16_t> d;
    const size_t N = hn::Lanes(d);
    const auto w0 = hn::Set(d, static_cast<int16_t>(py0)), w1 = hn::Set(d, static_cast<int16_t>(py1));
    // One row after the other: two rows written side by side were slower
    // where the target does not stay in the caches; the filtered lanes are
    // read again from the L1 cache.
    const size_t whole = n / N * N;
    blendRowPart(d, upper, lower, w0, out0, 0, whole);
    blendRowPart(d, upper, lower, w1, out1, 0, whole);
    return whole;
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

void blendPairBlocks(const uint8_t *upper, const uint8_t *lower, int32_t py, const PairBlocks &blocks, size_t count,
                     uint8_t *out)
{
    constexpr size_t kLanes = PairBlocks::kLanes;
    // At most 16 lanes: on AVX-512 two 256-bit steps per block ran no slower
    // than one 512-bit step.
    const hn::CappedTag<int16_t, 16> d;
    const hn::Repartition<uint8_t, decltype(d)> d8;
    const hn::Rebind<uint8_t, decltype(d)> dOut;
    const size_t N = hn::Lanes(d);
    const auto wUpper = hn::Set(d, static_cast<int16_t>(8 - py)), wLower = hn::Set(d, static_cast<int16_t>(py));
    for (size_t b = 0; b < count; ++b) {
        const uint8_t *u = upper + blocks.base[b], *l = lower + blocks.base[b];
        const bool mixed = blocks.mixed[b] != 0;
        uint8_t *o = out + blocks.from[b];
        for (size_t t = 0; t < kLanes; t += N) {
            // (8 - py) * ((8 - px) * a + px * b) + py * ((8 - px) * c + px * d),
            // at most 64 * 255 per lane and per pair of products
            hn::Vec<decltype(d8)> eu, el;
            rowWeights(d, blocks.even[b] + 2 * t, wUpper, wLower, eu, el);
            auto sum = hn::Add(filterPairs(hn::LoadU(d8, u + 2 * t), eu), filterPairs(hn::LoadU(d8, l + 2 * t), el));
            if (mixed) {
                hn::Vec<decltype(d8)> ou, ol;
                rowWeights(d, blocks.odd[b] + 2 * t, wUpper, wLower, ou, ol);
                sum = hn::Add(sum, hn::Add(filterPairs(hn::LoadU(d8, u + 2 * t + 1), ou),
                                           filterPairs(hn::LoadU(d8, l + 2 * t + 1), ol)));
            }
            hn::StoreU(hn::DemoteTo(dOut, hn::ShiftRight<6>(sum)), dOut, o + t);
        }
    }
}

size_t downby2(const uint8_t *top, const uint8_t *bottom, uint8_t *out, size_t n)
{
    // One target sample per 16-bit lane, from the two bytes of a source pair.
    const hn::ScalableTag<int16_t> d;
    const hn::RebindToUnsigned<decltype(d)> du;
    const hn::Repartition<uint8_t, decltype(d)> d8;
    const hn::Rebind<uint8_t, decltype(d)> dOut;
    const size_t N = hn::Lanes(d);
    const auto lowByte = hn::Set(d, 0xFF);
    size_t i = 0;
    for (; i + N <= n; i += N) {
        const auto t = hn::BitCast(d, hn::LoadU(d8, top + 2 * i));
        const auto b = hn::BitCast(d, hn::LoadU(d8, bottom + 2 * i));
        const auto a = hn::And(t, lowByte);
        const auto c = hn::And(b, lowByte);
        const auto right = hn::BitCast(d, hn::ShiftRight<8>(hn::BitCast(du, t)));
        const auto diagonal = hn::BitCast(d, hn::ShiftRight<8>(hn::BitCast(du, b)));
        const auto inner = hn::Add(hn::Add(hn::Add(hn::ShiftLeft<1>(a), a), right), c);
        const auto sum = hn::Add(hn::Add(hn::ShiftLeft<1>(inner), inner), diagonal);
        hn::StoreU(hn::DemoteTo(dOut, hn::ShiftRight<4>(sum)), dOut, out + i);
    }
    return i;
}

size_t downto3by3(const uint8_t *const s[4], uint8_t *const t[3], size_t n)
{
    // One block per 32-bit lane: its four samples of a row are the lane's bytes.
    const hn::ScalableTag<uint32_t> d;
    const hn::Repartition<uint8_t, decltype(d)> d8;
    const size_t N = hn::Lanes(d);
    const auto lowByte = hn::Set(d, 0xFF);
    // Bytes 0, 1, 2 of each lane, packed to the front of each 16-byte block.
    alignas(16) static constexpr uint8_t kPack[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0};
    const auto pack = hn::LoadDup128(d8, kPack);
    HWY_ALIGN uint8_t packed[hn::MaxLanes(d8)];
    size_t i = 0;
    for (; i + N <= n; i += N) {
        // Per source row, the horizontal sums of the three target columns:
        // 3 p0 + p1, p1 + p2, 3 p3 + p2.
        hn::Vec<decltype(d)> left[4], middle[4], right[4];
        for (int r = 0; r < 4; ++r) {
            const auto v = hn::BitCast(d, hn::LoadU(d8, s[r] + 4 * i));
            const auto p0 = hn::And(v, lowByte);
            const auto p1 = hn::And(hn::ShiftRight<8>(v), lowByte);
            const auto p2 = hn::And(hn::ShiftRight<16>(v), lowByte);
            const auto p3 = hn::ShiftRight<24>(v);
            left[r] = hn::Add(hn::Add(hn::ShiftLeft<1>(p0), p0), p1);
            middle[r] = hn::Add(p1, p2);
            right[r] = hn::Add(hn::Add(hn::ShiftLeft<1>(p3), p3), p2);
        }
        // Outer target rows: 3/4 of the nearer source row and 1/4 of the
        // next; the middle one: the two middle rows in equal parts.
        static constexpr int kNearer[3] = {0, 1, 3}, kFurther[3] = {1, 2, 2};
        for (int r = 0; r < 3; ++r) {
            const int a = kNearer[r], b = kFurther[r];
            hn::Vec<decltype(d)> c0, c1, c2;
            if (r == 1) {
                c0 = hn::ShiftRight<3>(hn::Add(left[a], left[b]));
                c1 = hn::ShiftRight<2>(hn::Add(middle[a], middle[b]));
                c2 = hn::ShiftRight<3>(hn::Add(right[a], right[b]));
            } else {
                c0 = hn::ShiftRight<4>(hn::Add(hn::Add(hn::ShiftLeft<1>(left[a]), left[a]), left[b]));
                c1 = hn::ShiftRight<3>(hn::Add(hn::Add(hn::ShiftLeft<1>(middle[a]), middle[a]), middle[b]));
                c2 = hn::ShiftRight<4>(hn::Add(hn::Add(hn::ShiftLeft<1>(right[a]), right[a]), right[b]));
            }
            const auto lanes = hn::Or(c0, hn::Or(hn::ShiftLeft<8>(c1), hn::ShiftLeft<16>(c2)));
            hn::Store(hn::TableLookupBytes(hn::BitCast(d8, lanes), pack), d8, packed);
            for (size_t block = 0; block < N / 4; ++block)
                std::memcpy(t[r] + 3 * i + 12 * block, packed + 16 * block, 12);
        }
    }
    return i;
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
                              &blendPairBlocks,
                              &downby2,
                              &downto3by3,
                              &upby2Row,
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
