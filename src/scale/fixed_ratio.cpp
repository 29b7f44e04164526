// Fixed-ratio scaling of 4:2:0 frames: 2:1, 1:2, 1:4, and 4x4 blocks to 3x3.
// Every kernel is a short loop of adds and shifts over plain offsets from the
// corner: no position arithmetic, no table, no division. avg() truncates.
//
// Sizes outside a kernel's stated forms are refused (nothing is written):
//  - downby2: dstW odd or below 2, dstH below 1;
//  - upby2: sourceWidth or sourceHeight below 1;
//  - upby4: dstW or dstH below 8 or off a multiple of 4;
//  - downto3by3: dstW or dstH below 3 or off a multiple of 3;
//  - all: a negative corner; the exports, a corner of 2^31 or more.
// downby2 and downto3by3 refuse a source narrower than the samples a target
// row consumes, and read a wider one as a true rectangle: each target row (or
// row of blocks) starts two (or four) source rows below the one before, which
// is the same walk as a running read position when the widths match.
#include "scale/fixed_ratio.h"

#include <cstddef>
#include <cstring>

#include "frame/platform.h"
#include "scale/kernels.h"

namespace pixmill {
namespace {

PIXMILL_INLINE int32_t avg(int32_t a, int32_t b) { return (a + b) >> 1; }

// (9a + 3b + 3c + d) / 16: a quarter of the way from a to its diagonal
// neighbour d, with b and c the other two corners of the square.
PIXMILL_INLINE uint8_t nearCorner(int32_t a, int32_t b, int32_t c, int32_t d)
{
    return static_cast<uint8_t>(((3 * a + b + c) * 3 + d) >> 4);
}

// (3a + 3b + c + d) / 8: midway between a and b, a quarter of the way towards
// their neighbours c and d.
PIXMILL_INLINE uint8_t nearEdge(int32_t a, int32_t b, int32_t c, int32_t d)
{
    return static_cast<uint8_t>((3 * (a + b) + c + d) >> 3);
}

PIXMILL_INLINE uint8_t mean4(int32_t a, int32_t b, int32_t c, int32_t d)
{
    return static_cast<uint8_t>((a + b + c + d) >> 2);
}

PIXMILL_INLINE const uint8_t *cornerOf(const uint8_t *source, int32_t sourceWidth, int32_t srcX, int32_t srcY)
{
    return source + static_cast<ptrdiff_t>(srcY) * sourceWidth + srcX;
}

// n / 3 for a non-negative multiple of 3, -1 for any other n. 0xAAAAAAAB is
// the inverse of 3 modulo 2^32: the product is the exact quotient of every
// multiple of 3 and lies above 0x55555555 for every other value.
constexpr int32_t exactThird(int32_t n)
{
    const uint32_t q = static_cast<uint32_t>(n) * 0xAAAAAAABu;
    return q <= 0x55555555u ? static_cast<int32_t>(q) : -1;
}
static_assert(exactThird(0) == 0 && exactThird(3) == 1 && exactThird(65535) == 21845, "");
static_assert(exactThird(1) < 0 && exactThird(2) < 0 && exactThird(65534) < 0 && exactThird(-3) < 0, "");

PIXMILL_INLINE void put4(uint8_t *t, int32_t a, int32_t b, int32_t c, int32_t d)
{
    t[0] = static_cast<uint8_t>(a);
    t[1] = static_cast<uint8_t>(b);
    t[2] = static_cast<uint8_t>(c);
    t[3] = static_cast<uint8_t>(d);
}

// One 4x4 target block from sample p, q right of it, r below it and u below q.
PIXMILL_INLINE void upBlock(uint8_t *t, ptrdiff_t stride, int32_t p, int32_t q, int32_t r, int32_t u)
{
    const int32_t top = avg(p, q), left = avg(p, r), right = avg(q, u), bottom = avg(r, u);
    const int32_t rising = avg(r, q);
    const int32_t upper = avg(rising, top), lower = avg(rising, bottom);
    const int32_t pl = avg(p, left), rl = avg(r, left);
    put4(t, p, avg(p, top), top, avg(q, top));
    put4(t + stride, pl, avg(upper, pl), upper, avg(upper, avg(q, right)));
    put4(t + 2 * stride, left, avg(rising, left), avg(left, right), avg(rising, right));
    put4(t + 3 * stride, rl, avg(lower, rl), lower, avg(lower, avg(u, right)));
}

// One 3x3 target block from the 4x4 source block whose top row is s0.
PIXMILL_INLINE void downBlock(uint8_t *t0, ptrdiff_t out, const uint8_t *s0, ptrdiff_t stride)
{
    const uint8_t *s1 = s0 + stride, *s2 = s1 + stride, *s3 = s2 + stride;
    uint8_t *t1 = t0 + out, *t2 = t1 + out;
    t0[0] = nearCorner(s0[0], s0[1], s1[0], s1[1]);
    t0[1] = nearEdge(s0[1], s0[2], s1[1], s1[2]);
    t0[2] = nearCorner(s0[3], s0[2], s1[3], s1[2]);
    t1[0] = nearEdge(s1[0], s2[0], s1[1], s2[1]);
    t1[1] = mean4(s1[1], s1[2], s2[1], s2[2]);
    t1[2] = nearEdge(s1[3], s2[3], s1[2], s2[2]);
    t2[0] = nearCorner(s3[0], s3[1], s2[0], s2[1]);
    t2[1] = nearEdge(s3[1], s3[2], s2[1], s2[2]);
    t2[2] = nearCorner(s3[3], s3[2], s2[3], s2[2]);
}

using PlaneKernel = void (*)(const uint8_t *, uint8_t *, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                             int32_t, int32_t);

// The three kernel calls of an export: luma as given, then u and v with
// every size and position halved.
template <PlaneKernel kernel>
void scaleFrame420(const Frame &s, const Frame &t, uint32_t srcX, uint32_t srcY, uint32_t srcW, uint32_t srcH)
{
    // A corner of 2^31 or more lies in no frame: luma reads it as negative and
    // stops, but halved for chroma it would be a far reach past the planes.
    if (((srcX | srcY) >> 31) != 0)
        return;
    const int32_t w = s.width, h = s.height, tw = t.width, th = t.height;
    kernel(s.y, t.y, w, h, tw, th, static_cast<int32_t>(srcX), static_cast<int32_t>(srcY),
           static_cast<int32_t>(srcW), static_cast<int32_t>(srcH));
    const auto cx = static_cast<int32_t>(srcX >> 1), cy = static_cast<int32_t>(srcY >> 1);
    const auto cw = static_cast<int32_t>(srcW >> 1), ch = static_cast<int32_t>(srcH >> 1);
    kernel(s.u, t.u, w >> 1, h >> 1, tw >> 1, th >> 1, cx, cy, cw, ch);
    kernel(s.v, t.v, w >> 1, h >> 1, tw >> 1, th >> 1, cx, cy, cw, ch);
}

} // namespace

void gScalePlane_downby2(const uint8_t *source, uint8_t *target, int32_t sourceWidth, int32_t /*sourceHeight*/,
                         int32_t dstW, int32_t dstH, int32_t srcX, int32_t srcY, int32_t /*srcW*/,
                         int32_t /*srcH*/)
{
    if (!source || !target || dstW <= 0 || dstH <= 0 || (dstW & 1) || (sourceWidth >> 1) < dstW || srcX < 0 ||
        srcY < 0)
        return;
    const ptrdiff_t stride = sourceWidth;
    const ScaleKernels *k = scaleKernels();
    const uint8_t *row = cornerOf(source, sourceWidth, srcX, srcY);
    for (int32_t j = 0; j < dstH; ++j, row += 2 * stride) {
        // Two target samples per pass, from four source columns of two rows;
        // a kernel's whole vectors hold an even number of samples.
        const uint8_t *a = row, *c = row + stride;
        int32_t i = 0;
        if (k) {
            i = static_cast<int32_t>(k->downby2(a, c, target, static_cast<size_t>(dstW)));
            a += 2 * i, c += 2 * i, target += i;
        }
        for (; i < dstW; i += 2, a += 4, c += 4, target += 2) {
            target[0] = nearCorner(a[0], a[1], c[0], c[1]);
            target[1] = nearCorner(a[2], a[3], c[2], c[3]);
        }
    }
}

void gScalePlane_upby2(const uint8_t *source, uint8_t *target, int32_t sourceWidth, int32_t sourceHeight,
                       int32_t /*dstW*/, int32_t /*dstH*/, int32_t srcX, int32_t srcY, int32_t /*srcW*/,
                       int32_t /*srcH*/)
{
    if (!source || !target || sourceWidth < 1 || sourceHeight < 1 || srcX < 0 || srcY < 0)
        return;
    const ptrdiff_t w2 = 2 * static_cast<ptrdiff_t>(sourceWidth);
    const uint8_t *s = cornerOf(source, sourceWidth, srcX, srcY);
    const ScaleKernels *k = scaleKernels();
    const auto n = static_cast<size_t>(sourceWidth - 1);
    uint8_t *even = target;
    // Source samples of the odd row below `even` that a kernel has written.
    size_t oddDone = 0;
    for (int32_t j = 0; j < sourceHeight; ++j, s += sourceWidth, even += 2 * w2) {
        // Even row: each sample, then its mean with the next; the last one
        // twice. With a row below, a kernel writes the odd row below it too.
        const bool below = j + 1 < sourceHeight;
        size_t done = 0;
        if (k)
            done = below ? k->upby2Rows(s, s + sourceWidth, even, even + w2, n) : k->upby2Row(s, even, n);
        uint8_t *t = even + 2 * done;
        for (const uint8_t *p = s + done, *last = s + sourceWidth - 1; p < last; ++p, t += 2) {
            t[0] = p[0];
            t[1] = static_cast<uint8_t>(avg(p[0], p[1]));
        }
        t[0] = t[1] = s[sourceWidth - 1];
        // The rest of the odd row above it: the mean of the two even rows
        // around it.
        if (j > 0) {
            const uint8_t *above = even - 2 * w2;
            uint8_t *odd = even - w2;
            auto x = static_cast<ptrdiff_t>(2 * oddDone);
            if (k)
                x += static_cast<ptrdiff_t>(k->average(above + x, even + x, odd + x, static_cast<size_t>(w2 - x)));
            for (; x < w2; ++x)
                odd[x] = static_cast<uint8_t>(avg(above[x], even[x]));
        }
        oddDone = below ? done : 0;
    }
    // The last row repeats the one above it.
    std::memcpy(even - w2, even - 2 * w2, static_cast<size_t>(w2));
}

void gScalePlane_upby4(const uint8_t *source, uint8_t *target, int32_t sourceWidth, int32_t /*sourceHeight*/,
                       int32_t dstW, int32_t dstH, int32_t srcX, int32_t srcY, int32_t /*srcW*/, int32_t /*srcH*/)
{
    if (!source || !target || dstW < 8 || dstH < 8 || (dstW & 3) || (dstH & 3) || srcX < 0 || srcY < 0)
        return;
    const ptrdiff_t stride = sourceWidth, out = dstW;
    // The last source column and row serve only as right and lower taps.
    const int32_t blocksW = (dstW >> 2) - 1, blocksH = (dstH >> 2) - 1;
    const uint8_t *row = cornerOf(source, sourceWidth, srcX, srcY);
    const ScaleKernels *k = scaleKernels();
    uint8_t *t = target;
    for (int32_t j = 0; j < blocksH; ++j, row += stride, t += 4 * out) {
        uint8_t *const rows[4] = {t, t + out, t + 2 * out, t + 3 * out};
        const size_t done = k ? k->upby4(row, row + stride, rows, static_cast<size_t>(blocksW)) : 0;
        uint8_t *b = t + 4 * done;
        for (const uint8_t *p = row + done, *end = row + blocksW; p < end; ++p, b += 4)
            upBlock(b, out, p[0], p[1], p[stride], p[stride + 1]);
        // The last four columns of each row repeat the four before them.
        for (uint8_t *q = b, *end = b + 4 * out; q < end; q += out)
            std::memcpy(q, q - 4, 4);
    }
    // The last four rows repeat the four above them.
    std::memcpy(t, t - 4 * out, static_cast<size_t>(4 * out));
}

void gScalePlane_downto3by3(const uint8_t *source, uint8_t *target, int32_t sourceWidth, int32_t /*sourceHeight*/,
                            int32_t dstW, int32_t dstH, int32_t srcX, int32_t srcY, int32_t /*srcW*/,
                            int32_t /*srcH*/)
{
    const int32_t blocksW = exactThird(dstW), blocksH = exactThird(dstH);
    if (!source || !target || blocksW <= 0 || blocksH <= 0 || (sourceWidth >> 2) < blocksW || srcX < 0 || srcY < 0)
        return;
    const ptrdiff_t stride = sourceWidth, out = dstW;
    const ScaleKernels *k = scaleKernels();
    const uint8_t *row = cornerOf(source, sourceWidth, srcX, srcY);
    for (int32_t m = 0; m < blocksH; ++m, row += 4 * stride, target += 3 * out) {
        const uint8_t *const sourceRows[4] = {row, row + stride, row + 2 * stride, row + 3 * stride};
        uint8_t *const targetRows[3] = {target, target + out, target + 2 * out};
        const auto done = static_cast<int32_t>(k ? k->downto3by3(sourceRows, targetRows, size_t(blocksW)) : 0);
        const uint8_t *s = row + 4 * done;
        uint8_t *b = target + 3 * done;
        for (int32_t n = done; n < blocksW; ++n, s += 4, b += 3)
            downBlock(b, out, s, stride);
    }
}

} // namespace pixmill

// Each export makes the three calls of one kernel.
#define PIXMILL_FIXED_RATIO_EXPORT(name, kernel)                                                             \
    extern "C" PIXMILL_API void name(const Frame *source, Frame *target, uint32_t srcX, uint32_t srcY,       \
                                     uint32_t srcW, uint32_t srcH)                                             \
    {                                                                                                          \
        pixmill::scaleFrame420<pixmill::kernel>(*source, *target, srcX, srcY, srcW, srcH);                     \
    }

PIXMILL_FIXED_RATIO_EXPORT(gScaleCroppedFrame_downby2, gScalePlane_downby2)
PIXMILL_FIXED_RATIO_EXPORT(gScaleCroppedFrame_upby2, gScalePlane_upby2)
PIXMILL_FIXED_RATIO_EXPORT(gScaleCroppedFrame_upby4, gScalePlane_upby4)
PIXMILL_FIXED_RATIO_EXPORT(gScaleCroppedFrame_downto3by3, gScalePlane_downto3by3)
