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
#include "scale/bilinear_walk.h"

HWY_BEFORE_NAMESPACE();
namespace pixmill::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// One group's lanes from its source bytes, tap indices and phases (each a
// 16-byte block per group): (8 - px) * near + px * far.
template <class D8, class V8>
HWY_INLINE hn::Vec<hn::Repartition<int16_t, D8>> filterGroups(D8 d8, V8 bytes, V8 taps, V8 phases)
{
    const hn::Repartition<int16_t, D8> d16;
    const hn::Repartition<uint16_t, D8> du16;
    const auto pairs = hn::TableLookupBytes(bytes, taps);
    const auto nearTap = hn::And(hn::BitCast(d16, pairs), hn::Set(d16, 0xFF));
    const auto farTap = hn::BitCast(d16, hn::ShiftRight<8>(hn::BitCast(du16, pairs)));
    (void)d8;
    return hn::Add(hn::ShiftLeft<3>(nearTap), hn::Mul(hn::Sub(farTap, nearTap), hn::BitCast(d16, phases)));
}

inline size_t filterColumns(const uint8_t *row, const ColumnGroup *groups, size_t count, size_t size, int16_t *out)
{
    const hn::FixedTag<uint8_t, 16> d8;
    size_t g = 0;
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
    // Groups of eight fill a block each: two groups per 32-byte vector.
    if (size == 8) {
        const hn::FixedTag<uint8_t, 32> d32;
        const hn::FixedTag<int16_t, 16> d16;
        auto both = [&](const uint8_t *lo, const uint8_t *hi) {
            return hn::Combine(d32, hn::LoadU(d8, hi), hn::LoadU(d8, lo));
        };
        for (; g + 2 <= count; g += 2, out += 16) {
            const ColumnGroup &a = groups[g], &b = groups[g + 1];
            const auto phases = both(reinterpret_cast<const uint8_t *>(a.phase),
                                     reinterpret_cast<const uint8_t *>(b.phase));
            hn::StoreU(filterGroups(d32, both(row + a.base, row + b.base), both(a.taps, b.taps), phases), d16, out);
        }
    }
#endif
    const hn::FixedTag<int16_t, 8> d16;
    for (; g < count; ++g, out += size) {
        const ColumnGroup &group = groups[g];
        const auto phases = hn::LoadU(d8, reinterpret_cast<const uint8_t *>(group.phase));
        hn::StoreU(filterGroups(d8, hn::LoadU(d8, row + group.base), hn::LoadU(d8, group.taps), phases), d16, out);
    }
    return count;
}

inline size_t blendRows(const int16_t *upper, const int16_t *lower, int32_t py, uint8_t *out, size_t n)
{
    const hn::ScalableTag<int16_t> d;
    const hn::Rebind<uint8_t, decltype(d)> d8;
    const size_t N = hn::Lanes(d);
    const auto w = hn::Set(d, static_cast<int16_t>(py));
    size_t i = 0;
    for (; i + N <= n; i += N) {
        const auto u = hn::LoadU(d, upper + i);
        const auto l = hn::LoadU(d, lower + i);
        // (8 - py) * u + py * l, at most 64 * 255
        const auto sum = hn::Add(hn::ShiftLeft<3>(u), hn::Mul(hn::Sub(l, u), w));
        hn::StoreU(hn::DemoteTo(d8, hn::ShiftRight<6>(sum)), d8, out + i);
    }
    return i;
}

} // namespace pixmill::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif
#endif
