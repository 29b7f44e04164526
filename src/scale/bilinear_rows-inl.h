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

#if PIXMILL_SIMD && HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128
#include "scale/bilinear_walk.h"

HWY_BEFORE_NAMESPACE();
namespace pixmill::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

inline size_t filterColumns(const uint8_t *row, const ColumnGroup *groups, size_t count, size_t size, int16_t *out)
{
    const hn::FixedTag<uint8_t, 16> d8;
    const hn::FixedTag<int16_t, 8> d16;
    const hn::FixedTag<uint16_t, 8> du16;
    const auto lowByte = hn::Set(d16, 0xFF);
    for (size_t g = 0; g < count; ++g, out += size) {
        const ColumnGroup &group = groups[g];
        const auto taps = hn::TableLookupBytes(hn::LoadU(d8, row + group.base), hn::LoadU(d8, group.taps));
        const auto nearTap = hn::And(hn::BitCast(d16, taps), lowByte);
        const auto farTap = hn::BitCast(d16, hn::ShiftRight<8>(hn::BitCast(du16, taps)));
        const auto px = hn::BitCast(d16, hn::LoadU(du16, group.phase));
        // (8 - px) * near + px * far
        hn::StoreU(hn::Add(hn::ShiftLeft<3>(nearTap), hn::Mul(hn::Sub(farTap, nearTap), px)), d16, out);
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
