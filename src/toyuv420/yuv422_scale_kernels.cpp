// Vector kernels of the 4:2:2 -> 4:2:0 crop and scale, one set per target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "toyuv420/yuv422_scale_kernels.cpp"
#include "frame/simd.h"
#include "toyuv420/yuv422_scale_kernels.h"

#include "scale/bilinear_rows-inl.h"

#if PIXMILL_VECTOR_TARGET
HWY_BEFORE_NAMESPACE();
namespace pixmill::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// pickEven for N = Lanes(d) samples from i on: one sample per 16-bit lane,
// its low byte.
template <class D>
HWY_INLINE void pickVector(D d, const uint8_t *in, uint8_t *out, size_t i)
{
    const hn::Repartition<uint8_t, D> d8;
    const hn::Rebind<uint8_t, D> dOut;
    const auto samples = hn::And(hn::BitCast(d, hn::LoadU(d8, in + 2 * i)), hn::Set(d, 0xFF));
    hn::StoreU(hn::DemoteTo(dOut, samples), dOut, out + i);
}

// Whole vectors of d from the start, then one that ends at n and overlaps the
// one before it (writing the same bytes again). False when n is narrower than
// a vector.
template <class D>
HWY_INLINE bool pickVectors(D d, const uint8_t *in, uint8_t *out, size_t n)
{
    const size_t N = hn::Lanes(d);
    if (n < N)
        return false;
    size_t i = 0;
    for (; i + N <= n; i += N)
        pickVector(d, in, out, i);
    if (i < n)
        pickVector(d, in, out, n - N);
    return true;
}

size_t pickEven(const uint8_t *in, uint8_t *out, size_t n)
{
    if (pickVectors(hn::ScalableTag<int16_t>(), in, out, n))
        return n;
#if HWY_TARGET == HWY_AVX3
    if (pickVectors(hn::FixedTag<int16_t, 16>(), in, out, n))
        return n;
#endif
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
    if (pickVectors(hn::FixedTag<int16_t, 8>(), in, out, n))
        return n;
#endif
    return 0;
}

constexpr Yuv422ScaleKernels kYuv422Scale{{&filterColumns, &blendRows}, &pickEven};

} // namespace pixmill::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif

#if PIXMILL_KERNELS_ONCE
namespace pixmill {
PIXMILL_KERNEL_SET(Yuv422ScaleKernels, kYuv422Scale, yuv422ScaleKernels)
} // namespace pixmill
#endif
