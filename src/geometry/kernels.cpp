// Vector kernels of the rotation and mirroring walkers, one set per target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "geometry/kernels.cpp"
#include "frame/simd.h"
#include "geometry/kernels.h"

#if PIXMILL_SIMD
HWY_BEFORE_NAMESPACE();
namespace pixmill::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

size_t reverse16(const uint16_t *in, uint16_t *out, size_t n)
{
    const hn::ScalableTag<uint16_t> d;
    const size_t N = hn::Lanes(d);
    size_t i = 0;
    for (; i + N <= n; i += N)
        hn::StoreU(hn::Reverse(d, hn::LoadU(d, in + i)), d, out - i - (N - 1));
    return i;
}

constexpr GeometryKernels kGeometry{&reverse16};

} // namespace pixmill::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif

#if PIXMILL_KERNELS_ONCE
namespace pixmill {
PIXMILL_KERNEL_SET(GeometryKernels, kGeometry, geometryKernels)
} // namespace pixmill
#endif
