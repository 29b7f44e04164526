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

size_t pickEven(const uint8_t *in, uint8_t *out, size_t n)
{
    // One sample per 16-bit lane: its low byte.
    const hn::ScalableTag<int16_t> d;
    const hn::Repartition<uint8_t, decltype(d)> d8;
    const hn::Rebind<uint8_t, decltype(d)> dOut;
    const size_t N = hn::Lanes(d);
    const auto lowByte = hn::Set(d, 0xFF);
    size_t i = 0;
    for (; i + N <= n; i += N)
        hn::StoreU(hn::DemoteTo(dOut, hn::And(hn::BitCast(d, hn::LoadU(d8, in + 2 * i)), lowByte)), dOut, out + i);
    return i;
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
