// Bilinear plane scaler: Q18 positions anchored at the rectangle's top-left
// corner, four taps per sample, and for strong reductions taps spread to
// every (1 << shift)-th sample instead of more taps.
#include "scale/scale_plane.h"

#include <cstddef>

#include "frame/frame.h"
#include "scale/bilinear.h"
#include "scale/kernels.h"

namespace pixmill {
namespace {

// One target row from the upper and lower tap rows. kSpread: the horizontal
// taps are dx samples apart on a lattice of every (1 << shiftX)-th sample;
// otherwise they are neighbours and col is the position's integer part.
template <bool kSpread>
PIXMILL_INLINE void scaleRow(const uint8_t *upper, const uint8_t *lower, uint8_t *out, int32_t dstW, int32_t stepX,
                             int32_t shiftX, int32_t dx, const WeightRow<uint8_t> &w)
{
    const int32_t shift = kSpread ? shiftX : 0;
    const int32_t far = kSpread ? dx : 1;
    int32_t posX = 0;
    for (uint8_t *end = out + dstW; out != end; ++out, posX += stepX) {
        const int32_t col = positionIndex(posX) << shift;
        *out = static_cast<uint8_t>(
            blend(w, positionPhase(posX), upper[col], upper[col + far], lower[col], lower[col + far]));
    }
}

// The vector walk splits each blend in two passes: a horizontal one per
// source row, h = (8 - px) * left + px * right, and a vertical one per target
// row, ((8 - py) * upper h + py * lower h) >> 6. Multiplied out, that is the
// four-tap sum of scaleRow term by term, so the bytes are the same. The
// horizontal results of the last two source rows are kept, so that an
// enlargement filters each source row once.

// One axis of a call: the step, the lattice shift and the distance from the
// near tap to the far one in samples (0 when the span is 0).
struct Axis {
    int32_t step, shift, far;
};

// Target columns are set up and walked in strips of this many, so that the
// column tables are a fixed size whatever the width.
constexpr int32_t kStrip = 512;

// The most neighbouring target samples (8, 4 or 2) whose taps always lie
// within 16 source bytes, or 0 when not even two do.
int32_t groupSize(const Axis &x)
{
    for (int32_t size = 8; size >= 2; size >>= 1) {
        const int64_t lattice = ((int64_t(size - 1) * x.step) >> kPositionBits) + 1;
        if ((lattice << x.shift) + x.far <= 15)
            return size;
    }
    return 0;
}

void fillGroup(ColumnGroup &g, const int32_t *cols, const uint16_t *phases, int32_t size, int32_t far)
{
    g.base = cols[0];
    for (int32_t t = 0; t < 8; ++t) {
        const int32_t lane = t < size ? t : 0;
        g.taps[2 * t] = static_cast<uint8_t>(cols[lane] - g.base);
        g.taps[2 * t + 1] = static_cast<uint8_t>(cols[lane] + far - g.base);
        g.phase[t] = phases[lane];
    }
}

// The whole target, strip by strip. `readable` counts the bytes from the
// start of a rectangle row to the end of its plane row.
void scaleInStrips(const ScaleKernels &k, const uint8_t *corner, ptrdiff_t stride, int32_t readable, uint8_t *target,
                   int32_t dstW, int32_t dstH, const Axis &x, const Axis &y)
{
    const int32_t size = groupSize(x);
    ColumnGroup groups[kStrip / 2];
    int32_t cols[kStrip];
    uint16_t phases[kStrip];
    int16_t filtered[2][kStrip + 8]; // a group stores eight lanes
    for (int32_t i0 = 0; i0 < dstW; i0 += kStrip) {
        const int32_t n = min32(kStrip, dstW - i0);
        for (int32_t i = 0; i < n; ++i) {
            const int32_t pos = (i0 + i) * x.step;
            cols[i] = positionIndex(pos) << x.shift;
            phases[i] = static_cast<uint16_t>(positionPhase(pos));
        }
        // Whole groups whose 16 bytes stay inside the plane's row go to the
        // kernel; the columns after them are filtered here.
        int32_t count = 0;
        while (size && (count + 1) * size <= n && cols[count * size] + 16 <= readable) {
            fillGroup(groups[count], cols + count * size, phases + count * size, size, x.far);
            ++count;
        }
        const int32_t vectored = count * size;

        int32_t held[2] = {-1, -1};
        // The horizontal pass of source row `row`, reusing a kept one; the
        // row `keep` is not evicted.
        auto filter = [&](int32_t row, int32_t keep) -> const int16_t * {
            for (int s = 0; s < 2; ++s)
                if (held[s] == row)
                    return filtered[s];
            const int s = held[0] == keep ? 1 : 0;
            held[s] = row;
            int16_t *h = filtered[s];
            const uint8_t *src = corner + row * stride;
            k.filterColumns(src, groups, size_t(count), size_t(size), h);
            for (int32_t i = vectored; i < n; ++i)
                h[i] = static_cast<int16_t>((8 - phases[i]) * src[cols[i]] + phases[i] * src[cols[i] + x.far]);
            return h;
        };

        uint8_t *out = target + i0;
        int32_t posY = 0;
        for (int32_t j = 0; j < dstH; ++j, posY += y.step, out += dstW) {
            const int32_t row = positionIndex(posY) << y.shift, py = positionPhase(posY);
            // A lower row of weight 0 is not filtered.
            const int16_t *upper = filter(row, py ? row + y.far : row);
            const int16_t *lower = py ? filter(row + y.far, row) : upper;
            for (auto i = int32_t(k.blendRows(upper, lower, py, out, size_t(n))); i < n; ++i)
                out[i] = static_cast<uint8_t>(((8 - py) * upper[i] + py * lower[i]) >> 6);
        }
    }
}

} // namespace

void gScalePlane(const uint8_t *source, uint8_t *target, int32_t sourceWidth, int32_t sourceHeight, int32_t dstW,
                 int32_t dstH, int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH)
{
    if (!source || !target)
        return;
    SourceRect r{srcX, srcY, srcW, srcH};
    if (!limitToPlane(r, sourceWidth, sourceHeight) || dstW < 1 || dstH < 1)
        return;
    // The reduction ratio of an axis picks its tap distance; its span counts
    // the gaps between the first and the last lattice point; the step divides
    // the span by the target extent, so the last sample stops short of the
    // last lattice point.
    const int32_t shiftX = DecimationShift[min32(r.w / dstW, kMaxDecimationRatio)];
    const int32_t shiftY = DecimationShift[min32(r.h / dstH, kMaxDecimationRatio)];
    const int32_t spanX = (r.w - 1) >> shiftX;
    const int32_t spanY = (r.h - 1) >> shiftY;
    if (spanX >= kPositionLimit || spanY >= kPositionLimit)
        return;
    const int32_t stepX = (spanX << kPositionBits) / dstW;
    const int32_t stepY = (spanY << kPositionBits) / dstH;

    // With a span of 0 the far tap always has weight 0: point it at the near
    // one so that nothing beyond the rectangle is read.
    const int32_t dx = spanX ? 1 << shiftX : 0;
    const ptrdiff_t stride = sourceWidth;
    const ptrdiff_t dy = spanY ? stride << shiftY : 0;
    const uint8_t *corner = source + r.y * stride + r.x;
    if (const ScaleKernels *k = scaleKernels()) {
        scaleInStrips(*k, corner, stride, sourceWidth - r.x, target, dstW, dstH, {stepX, shiftX, dx},
                      {stepY, shiftY, spanY ? 1 << shiftY : 0});
        return;
    }
    const bool spread = dx != 1;

    int32_t posY = 0;
    for (int32_t j = 0; j < dstH; ++j, posY += stepY, target += dstW) {
        const uint8_t *upper = corner + (positionIndex(posY) << shiftY) * stride;
        const WeightRow<uint8_t> w = weightRow(BilinearWeights, positionPhase(posY));
        if (spread)
            scaleRow<true>(upper, upper + dy, target, dstW, stepX, shiftX, dx, w);
        else
            scaleRow<false>(upper, upper + dy, target, dstW, stepX, shiftX, dx, w);
    }
}

} // namespace pixmill
