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

// The vector walk (scale/bilinear_walk.h), strip by strip. Columns run on
// the lattice of the tap shift; rows likewise, with the lower row `dy`
// bytes below the upper one.
void scaleInStrips(const BilinearRowKernels &k, const Columns &columns, const uint8_t *corner, ptrdiff_t stride,
                   ptrdiff_t dy, uint8_t *target, int32_t dstW, int32_t dstH, int32_t stepY, int32_t shiftY)
{
    const int32_t width = BilinearStrip::width(columns);
    for (int32_t i0 = 0; i0 < dstW; i0 += width) {
        BilinearStrip strip(k, columns, i0, min32(width, dstW - i0));
        uint8_t *out = target + i0;
        int32_t posY = 0;
        for (int32_t j = 0; j < dstH; ++j, posY += stepY, out += dstW) {
            const uint8_t *upper = corner + (positionIndex(posY) << shiftY) * stride;
            strip.row(upper, upper + dy, positionPhase(posY), out);
        }
    }
}

// Halving: neighbouring taps and a step within kMaxPairDrift of two
// samples. Column i stands at i * stepX = 2i samples + i * drift, with drift
// = stepX - 2 samples; 2i samples are a whole number of eighths, so the
// position in eighths is 16i + ((i * drift) >> 15). Over a run of columns
// that share e = (i * drift) >> 15, column i takes the taps 2i + (e >> 3)
// and 2i + (e >> 3) + 1 at phase e & 7: even and odd bytes with constant
// weights. |drift| stays below an eighth of an eighth, so runs are at least
// 8 columns long (the last one may be cut by the row's end), and i * drift
// fits 32 bits for every width.
constexpr int32_t kTwoSamples = 2 << kPositionBits;
constexpr int32_t kMaxPairDrift = 1 << 12;

PIXMILL_INLINE bool walksInPairs(int32_t stepX, int32_t shiftX, int32_t dx)
{
    return shiftX == 0 && dx == 1 && stepX > kTwoSamples - kMaxPairDrift && stepX < kTwoSamples + kMaxPairDrift;
}

void scaleInPairs(const ScaleKernels &k, const uint8_t *corner, ptrdiff_t stride, ptrdiff_t dy, uint8_t *target,
                  int32_t dstW, int32_t dstH, int32_t stepX, int32_t stepY, int32_t shiftY)
{
    constexpr int32_t kRuns = 64;
    PairRun runs[kRuns];
    const int32_t drift = stepX - kTwoSamples;
    for (int32_t i = 0; i < dstW;) {
        // Up to kRuns runs from column i on, then every row over them.
        int32_t count = 0;
        bool anyShort = false;
        for (; count < kRuns && i < dstW; ++count) {
            const int32_t eighths = (i * drift) >> 15;
            PairRun &run = runs[count];
            run = {i, i, eighths >> 3, eighths & 7};
            while (run.to < dstW && (run.to * drift) >> 15 == eighths)
                ++run.to;
            i = run.to;
            anyShort |= run.to - run.from < kMinPairRun;
        }
        int32_t posY = 0;
        uint8_t *out = target;
        for (int32_t j = 0; j < dstH; ++j, posY += stepY, out += dstW) {
            const uint8_t *upper = corner + (positionIndex(posY) << shiftY) * stride;
            const uint8_t *lower = upper + dy;
            const int32_t py = positionPhase(posY);
            k.blendPairRuns(upper, lower, py, runs, size_t(count), out);
            if (!anyShort)
                continue;
            const WeightRow<uint8_t> w = weightRow(BilinearWeights, py);
            for (const PairRun *run = runs; run != runs + count; ++run) {
                if (run->to - run->from >= kMinPairRun)
                    continue;
                for (int32_t c = run->from, col = 2 * c + run->offset; c < run->to; ++c, col += 2)
                    out[c] = static_cast<uint8_t>(
                        blend(w, run->px, upper[col], upper[col + 1], lower[col], lower[col + 1]));
            }
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
        if (walksInPairs(stepX, shiftX, dx)) {
            scaleInPairs(*k, corner, stride, dy, target, dstW, dstH, stepX, stepY, shiftY);
            return;
        }
        const Columns columns{0, stepX, shiftX, dx, dstW, sourceWidth - r.x};
        scaleInStrips(k->bilinear, columns, corner, stride, dy, target, dstW, dstH, stepY, shiftY);
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
