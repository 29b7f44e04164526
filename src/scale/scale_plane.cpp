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

// Target planes of at least this many bytes are written with non-temporal
// stores: they would only push the source out of the caches.
constexpr int64_t kStreamedTarget = int64_t(4) << 20;
// Below that, planes of at least this many bytes take the two rows that
// blend the same source rows one after the other: written side by side, they
// ran slower where the plane outgrows the caches, faster where it stays.
constexpr int64_t kRowByRowTarget = int64_t(3) << 20;

// The vector walk (scale/bilinear_walk.h), strip by strip. Columns run on
// the lattice of the tap shift; rows likewise, with the lower row `dy`
// bytes below the upper one.
void scaleInStrips(const ScaleKernels &k, const Columns &columns, const uint8_t *corner, ptrdiff_t stride,
                   ptrdiff_t dy, uint8_t *target, int32_t dstW, int32_t dstH, int32_t stepY, int32_t shiftY)
{
    const int32_t width = BilinearStrip::width(columns);
    // Targets much larger than the caches are written past them.
    const int64_t bytes = int64_t(dstW) * dstH;
    const BilinearStrip::PairKernel pair = bytes >= kStreamedTarget   ? k.blendRowPairStreamed
                                           : bytes >= kRowByRowTarget ? nullptr
                                                                      : k.blendRowPair;
    for (int32_t i0 = 0; i0 < dstW; i0 += width) {
        BilinearStrip strip(k.bilinear, columns, i0, min32(width, dstW - i0));
        uint8_t *out = target + i0;
        int32_t posY = 0;
        for (int32_t j = 0; j < dstH; ++j, posY += stepY, out += dstW) {
            const uint8_t *upper = corner + (positionIndex(posY) << shiftY) * stride;
            // Enlarging, the next row often blends the same two source rows.
            if (pair && j + 1 < dstH && positionIndex(posY + stepY) == positionIndex(posY)) {
                strip.rowPair(pair, upper, upper + dy, positionPhase(posY), positionPhase(posY + stepY), out,
                              out + dstW);
                ++j, posY += stepY, out += dstW;
                continue;
            }
            strip.row(upper, upper + dy, positionPhase(posY), out);
        }
    }
}

// Halving: neighbouring taps and a step within kMaxPairDrift of two
// samples. Column i stands at i * stepX = 2i samples + i * drift, drift =
// stepX - 2 samples; |drift| stays below an eighth of an eighth, so over a
// block of PairBlocks::kLanes columns the near taps stray from 2 samples
// apart by less than half a sample: each lies at 2t or 2t + 1 from the
// block's base. Blocks run through the row, the last one overlapping the one
// before it; a column that no block can take (the first, whose neighbour
// may stand one sample short of 2, or where a block would read past the
// row) goes to the plain blend.
constexpr int32_t kTwoSamples = 2 << kPositionBits;
constexpr int32_t kMaxPairDrift = 1 << 12;

PIXMILL_INLINE bool walksInPairs(int32_t stepX, int32_t shiftX, int32_t dx)
{
    return shiftX == 0 && dx == 1 && stepX > kTwoSamples - kMaxPairDrift && stepX < kTwoSamples + kMaxPairDrift;
}

// Fills block n for the columns from `from` on; false when their taps do not
// fit a block or it would read outside the `readable` bytes of a row.
bool pairBlock(PairBlocks &blocks, int32_t n, int32_t from, int32_t stepX, int32_t readable)
{
    constexpr int32_t kLanes = PairBlocks::kLanes;
    int32_t rel[kLanes];
    const int32_t start = from * stepX;
    int32_t lo = positionIndex(start), hi = lo;
    for (int32_t t = 0, pos = start; t < kLanes; ++t, pos += stepX) {
        rel[t] = positionIndex(pos) - 2 * t;
        lo = min32(lo, rel[t]);
        hi = rel[t] > hi ? rel[t] : hi;
    }
    if (hi - lo > 1 || lo < 0 || lo + 2 * kLanes + 1 > readable)
        return false;
    blocks.from[n] = from;
    blocks.base[n] = lo;
    blocks.mixed[n] = static_cast<uint8_t>(hi != lo);
    for (int32_t t = 0, pos = start; t < kLanes; ++t, pos += stepX) {
        const int32_t px = positionPhase(pos);
        const bool odd = rel[t] != lo;
        blocks.even[n][2 * t] = static_cast<uint8_t>(odd ? 0 : 8 - px);
        blocks.even[n][2 * t + 1] = static_cast<uint8_t>(odd ? 0 : px);
        blocks.odd[n][2 * t] = static_cast<uint8_t>(odd ? 8 - px : 0);
        blocks.odd[n][2 * t + 1] = static_cast<uint8_t>(odd ? px : 0);
    }
    return true;
}

// Target rows go to the kernel in bands of up to kBandRows rows of one
// phase, whose source rows lie evenly apart: a halving holds a phase for
// many rows, and the kernel makes each block's weights once per band. Rows
// of at least kPrefetchBlocks blocks prefetch along the rows (the hardware
// prefetcher alone lost time on the many rows of a band); shorter rows ran
// faster without.
constexpr int32_t kBandRows = 8;
constexpr int32_t kPrefetchBlocks = 8;

void scaleInPairs(const ScaleKernels &k, const uint8_t *corner, ptrdiff_t stride, ptrdiff_t dy, uint8_t *target,
                  int32_t dstW, int32_t dstH, int32_t stepX, int32_t stepY, int32_t shiftY, int32_t readable)
{
    constexpr int32_t kLanes = PairBlocks::kLanes;
    // Strips of whole blocks, with room for the last one to overlap.
    constexpr int32_t kStrip = (PairBlocks::kCount - 1) * kLanes;
    PairBlocks blocks;
    int32_t plainFrom[PairBlocks::kCount + 1], plainTo[PairBlocks::kCount + 1];
    for (int32_t s0 = 0; s0 < dstW; s0 += kStrip) {
        const int32_t s1 = min32(dstW, s0 + kStrip);
        int32_t count = 0, plain = 0;
        for (int32_t i = s0; i < s1;) {
            const int32_t from = min32(i, s1 - kLanes);
            if (from >= s0 && pairBlock(blocks, count, from, stepX, readable)) {
                ++count;
                i = from + kLanes;
                continue;
            }
            if (plain && plainTo[plain - 1] == i)
                ++plainTo[plain - 1];
            else
                plainFrom[plain] = i, plainTo[plain] = i + 1, ++plain;
            ++i;
        }
        for (int32_t j = 0, posY = 0; j < dstH;) {
            // The band: the rows from j on at this phase, their upper rows
            // one step apart.
            const int32_t py = positionPhase(posY), index = positionIndex(posY);
            const int32_t delta = positionIndex(posY + stepY) - index; // read only for n > 1
            int32_t n = 1;
            while (n < kBandRows && j + n < dstH && positionPhase(posY + n * stepY) == py &&
                   positionIndex(posY + n * stepY) - positionIndex(posY + (n - 1) * stepY) == delta)
                ++n;
            const PairRows rows{corner + ptrdiff_t(index << shiftY) * stride,
                                ptrdiff_t(delta << shiftY) * stride,
                                dy,
                                target + ptrdiff_t(j) * dstW,
                                dstW,
                                py,
                                n,
                                count >= kPrefetchBlocks};
            k.blendPairBlocks(rows, blocks, size_t(count));
            // The plain columns of the band's rows: column 0 stands at phase
            // 0, so its right taps weigh 0.
            const int32_t first = plain && plainFrom[0] == 0 && plainTo[0] == 1 ? 1 : 0;
            if (first) {
                const uint8_t *upper = rows.upper;
                uint8_t *out = rows.out;
                for (int32_t r = 0; r < n; ++r, upper += rows.step, out += dstW)
                    out[0] = static_cast<uint8_t>(((8 - py) * upper[0] + py * upper[dy]) >> 3);
            }
            const WeightRow<uint8_t> w = weightRow(BilinearWeights, py);
            for (int32_t r = 0; r < n && first < plain; ++r) {
                uint8_t *out = rows.out + ptrdiff_t(r) * dstW;
                const uint8_t *upper = rows.upper + r * rows.step, *lower = upper + dy;
                for (int32_t g = first; g < plain; ++g)
                    for (int32_t c = plainFrom[g], pos = c * stepX; c < plainTo[g]; ++c, pos += stepX) {
                        const int32_t col = positionIndex(pos);
                        out[c] = static_cast<uint8_t>(
                            blend(w, positionPhase(pos), upper[col], upper[col + 1], lower[col], lower[col + 1]));
                    }
            }
            j += n;
            posY += n * stepY;
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
            scaleInPairs(*k, corner, stride, dy, target, dstW, dstH, stepX, stepY, shiftY, sourceWidth - r.x);
            return;
        }
        const Columns columns{0, stepX, shiftX, dx, dstW, sourceWidth - r.x};
        scaleInStrips(*k, columns, corner, stride, dy, target, dstW, dstH, stepY, shiftY);
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
