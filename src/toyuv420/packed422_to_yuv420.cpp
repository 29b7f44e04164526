// Packed 4:2:2 -> planar 4:2:0. Pure byte moves: every second chroma row
// (the odd source rows') is dropped, never averaged. The byte orders differ
// only in where the two lumas and the two chroma bytes sit in a 4-byte group
// of two pixels; the walkers take that as a compile-time parameter.
#include <cstddef>
#include <cstdint>

#include "frame/platform.h"
#include "toyuv420/kernels.h"

namespace pixmill {
namespace {

// Offsets within a group of the first and second pixel's luma and of the
// first and second chroma byte in memory order.
template <int L0, int L1, int C0, int C1>
struct ByteOrder {
    static constexpr int luma0 = L0, luma1 = L1, chroma0 = C0, chroma1 = C1;
};
using Y0UY1V = ByteOrder<0, 2, 1, 3>;
using UY0VY1 = ByteOrder<1, 3, 0, 2>;

// One group as a little-endian word; byte k of the group is bits 8k..8k+7.
struct Group {
    uint32_t word;
    PIXMILL_INLINE explicit Group(const uint8_t *p)
        : word(uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24)
    {
    }
    template <int k>
    PIXMILL_INLINE uint8_t byte() const
    {
        return static_cast<uint8_t>(word >> (8 * k));
    }
};

// What a walk takes from each group.
enum Take { Luma = 1, Chroma = 2, LumaAndChroma = 3 };

// Walks `groups` groups, sending lumas to `y` and the first and second chroma
// byte to `c0` and `c1`, as `take` says; every pointer used advances. The
// kernels `k`, if any, take the leading groups.
template <class Order, int take>
PIXMILL_INLINE void copyGroups(const uint8_t *&src, uint8_t *&y, uint8_t *&c0, uint8_t *&c1, size_t groups,
                               const ToYuv420Kernels *k)
{
    size_t i = 0;
    if (k != nullptr) {
        i = (Order::luma0 == 0 ? k->y0uy1v : k->uy0vy1)[take - 1](src, y, c0, c1, groups);
        src += 4 * i;
        if constexpr ((take & Luma) != 0)
            y += 2 * i;
        if constexpr ((take & Chroma) != 0) {
            c0 += i;
            c1 += i;
        }
    }
    for (; i < groups; ++i) {
        const Group g(src);
        if constexpr ((take & Luma) != 0) {
            y[0] = g.byte<Order::luma0>();
            y[1] = g.byte<Order::luma1>();
            y += 2;
        }
        if constexpr ((take & Chroma) != 0) {
            *c0++ = g.byte<Order::chroma0>();
            *c1++ = g.byte<Order::chroma1>();
        }
        src += 4;
    }
}

// `pairs` pairs of rows of `groups` groups each: the first row gives luma and
// chroma, the second luma only.
template <class Order>
PIXMILL_INLINE void copyRowPairs(const uint8_t *&src, uint8_t *&y, uint8_t *&c0, uint8_t *&c1, size_t groups,
                                 uint32_t pairs, const ToYuv420Kernels *k)
{
    for (; pairs > 0; --pairs) {
        copyGroups<Order, LumaAndChroma>(src, y, c0, c1, groups, k);
        copyGroups<Order, Luma>(src, y, c0, c1, groups, k);
    }
}

// True when the `an` bytes from `a` and the `bn` bytes from `b` do not meet.
PIXMILL_INLINE bool apart(const uint8_t *a, size_t an, const uint8_t *b, size_t bn)
{
    const uintptr_t x = reinterpret_cast<uintptr_t>(a), z = reinterpret_cast<uintptr_t>(b);
    return x + an <= z || z + bn <= x;
}

// The Frame forms: the record takes the sizes first (cut to 16 bits), then a
// luma pass over the whole image as one run, then a chroma pass over the even
// source rows, ceil(height / 2) of them. An odd width has no whole groups per
// row and is refused after the record is set. `c0` and `c1` are the planes
// that receive the first and second chroma byte of a group.
//
// When no plane meets the source, the order of the two passes cannot show in
// the result, and one walk over row pairs does both, reading each source row
// once; an odd last row gives luma and chroma.
template <class Order>
PIXMILL_INLINE int32_t unpackToFrame(const uint8_t *source, Frame *frame, uint8_t *c0, uint8_t *c1, uint32_t width,
                                     uint32_t height)
{
    frame->height = static_cast<uint16_t>(height);
    frame->width = static_cast<uint16_t>(width);
    if (width & 1)
        return 0;
    const uint8_t *src = source;
    uint8_t *y = frame->y;
    const ToYuv420Kernels *k = toYuv420Kernels();
    const size_t lumaBytes = size_t(width) * height, chromaBytes = width / 2 * size_t(height - height / 2);
    if (apart(source, 2 * lumaBytes, y, lumaBytes) && apart(source, 2 * lumaBytes, c0, chromaBytes) &&
        apart(source, 2 * lumaBytes, c1, chromaBytes)) {
        copyRowPairs<Order>(src, y, c0, c1, width / 2, height / 2, k);
        if (height & 1)
            copyGroups<Order, LumaAndChroma>(src, y, c0, c1, width / 2, k);
        return 0;
    }
    copyGroups<Order, Luma>(src, y, c0, c1, lumaBytes / 2, k);

    // Each pass reads one even row and steps over the odd row after it.
    const size_t groups = width / 2;
    const size_t rowBytes = 2 * size_t(width);
    src = source;
    for (uint32_t evenRows = height - height / 2; evenRows > 0; --evenRows) {
        copyGroups<Order, Chroma>(src, y, c0, c1, groups, k);
        src += rowBytes;
    }
    return 0;
}

// Y0 U Y1 V into a frame; swapChroma != 0 sends offset 1 to v and offset 3
// to u, zero sends offset 1 to u and offset 3 to v.
int32_t gY1UY2VToPlanar(const uint8_t *source, Frame *frame, uint32_t width, uint32_t height, uint8_t swapChroma)
{
    return swapChroma ? unpackToFrame<Y0UY1V>(source, frame, frame->v, frame->u, width, height)
                      : unpackToFrame<Y0UY1V>(source, frame, frame->u, frame->v, width, height);
}

} // namespace
} // namespace pixmill

extern "C" PIXMILL_API int32_t gY1UY2VToYUV420(const uint8_t *source, Frame *frame, uint32_t width, uint32_t height)
{
    return pixmill::gY1UY2VToPlanar(source, frame, width, height, 1);
}

extern "C" PIXMILL_API int32_t gY1UY2VToYV12(const uint8_t *source, Frame *frame, uint32_t width, uint32_t height)
{
    return pixmill::gY1UY2VToPlanar(source, frame, width, height, 0);
}

extern "C" PIXMILL_API int32_t gUY1VY2ToYUV420(const uint8_t *source, Frame *frame, uint32_t width, uint32_t height)
{
    using namespace pixmill;
    return unpackToFrame<UY0VY1>(source, frame, frame->u, frame->v, width, height);
}

// Y0 U Y1 V into one contiguous buffer, a row pair at a time: the first row
// gives luma and chroma, the second luma only. An odd width is walked one
// pixel narrower and an odd last row is left alone; the chroma planes start
// where the full width x height puts them.
extern "C" PIXMILL_API void YUY2toYUV420(const uint8_t *source, uint8_t *destination, uint32_t width,
                                         uint32_t height)
{
    using namespace pixmill;
    const size_t lumaSize = size_t(width) * height;
    const size_t groups = width / 2;
    uint8_t *y = destination;
    uint8_t *c0 = destination + lumaSize;
    uint8_t *c1 = c0 + lumaSize / 4;
    copyRowPairs<Y0UY1V>(source, y, c0, c1, groups, height / 2, toYuv420Kernels());
}
