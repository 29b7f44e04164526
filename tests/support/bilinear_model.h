// Per-sample models of the bilinear scalers, written from the rules alone:
// Q18 positions split by division, weights multiplied out from the phases,
// tap distances from the listed decimation shifts. A tap of weight 0 is not
// read. Shares no code with the library. Also the random cases and the
// target check that the scaling tests share.
#ifndef PIXMILL_TEST_BILINEAR_MODEL_H
#define PIXMILL_TEST_BILINEAR_MODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <vector>

#include "support/buffers.h"

namespace pixmill::test {

// The decimation shifts for reduction ratios 0..31, as listed.
inline constexpr int kListedShifts[32] = {0, 0, 0, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3,
                                          3, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4};

// Integer part and phase (eighths) of a non-negative Q18 position.
struct ModelPos {
    int index, phase;
};
inline ModelPos modelPos(int64_t p) { return {int(p / 262144), int(p % 262144 / 32768)}; }

// Weight of the lower (ty = 1) or upper tap and of the right (tx = 1) or
// left tap at phases (py, px).
inline int modelWeight(int ty, int tx, int py, int px) { return (ty ? py : 8 - py) * (tx ? px : 8 - px); }

// Floor of the weighted mean of the four taps; tap(tx, ty) fetches one and
// is called only for taps of non-zero weight.
template <class Tap>
int modelBlend(int py, int px, Tap tap)
{
    int sum = 0;
    for (int ty = 0; ty < 2; ++ty)
        for (int tx = 0; tx < 2; ++tx)
            if (const int w = modelWeight(ty, tx, py, px))
                sum += w * tap(tx, ty);
    return sum / 64;
}

// A source plane sw x sh, the rectangle (x, y, w, h) of it, a dw x dh target.
struct ScaleCase {
    int sw, sh, dw, dh, x, y, w, h;
};

// Cuts the rectangle to the plane; false when it holds no sample.
inline bool modelLimit(ScaleCase &k)
{
    if (k.x < 0 || k.y < 0 || k.x >= k.sw || k.y >= k.sh || k.w < 1 || k.h < 1)
        return false;
    k.w = std::min(k.w, k.sw - k.x);
    k.h = std::min(k.h, k.sh - k.y);
    return true;
}

// The plane scaler: the whole target, or nothing (empty) when it writes none.
inline std::vector<uint8_t> modelScalePlane(const uint8_t *src, ScaleCase k)
{
    if (!src || !modelLimit(k) || k.dw < 1 || k.dh < 1)
        return {};
    const int distX = 1 << kListedShifts[std::min(k.w / k.dw, 31)];
    const int distY = 1 << kListedShifts[std::min(k.h / k.dh, 31)];
    const int64_t stepX = int64_t((k.w - 1) / distX) * 262144 / k.dw;
    const int64_t stepY = int64_t((k.h - 1) / distY) * 262144 / k.dh;
    std::vector<uint8_t> out;
    for (int j = 0; j < k.dh; ++j)
        for (int i = 0; i < k.dw; ++i) {
            const ModelPos py = modelPos(j * stepY), px = modelPos(i * stepX);
            out.push_back(uint8_t(modelBlend(py.phase, px.phase, [&](int tx, int ty) {
                return src[size_t(k.y + (py.index + ty) * distY) * size_t(k.sw) +
                           size_t(k.x + (px.index + tx) * distX)];
            })));
        }
    return out;
}

// Mostly 0 or inside the extent, now and then -1 or just past it.
inline int randomCorner(Random &rng, int extent)
{
    const int r = rng.range(0, 39);
    return r == 0 ? -1 : r == 1 ? extent : r < 20 ? 0 : rng.range(0, extent - 1);
}

// Cases in turn small (now and then of the same size or an empty target),
// strongly reduced on one axis or both (ratios past the table's end),
// enlarged, and wide (often halved): every width up to 130 and now and then up to 5000 (past
// the column strips of the vector walks), at
// ratios around 1, 2 and 3 as often as at any other, so that rows run well
// past the widest vector. Rectangles end at the plane's edge, stick out, or
// are empty.
inline ScaleCase randomScaleCase(Random &rng, int i)
{
    if (i % 4 == 3) {
        const int wide = rng.range(0, 3);
        const int sw = wide == 0 ? rng.range(1, 5000) : wide == 1 ? rng.range(130, 700) : rng.range(1, 130);
        // Now and then half the width, give or take a sample: the halving walk.
        const int pick = rng.range(0, 3);
        const int dw = pick == 0   ? std::max(1, (sw + rng.range(-2, 2)) / 2)
                       : pick == 1 ? std::max(1, sw * rng.range(2, 26) / 8)
                                   : rng.range(1, 260);
        // Halving narrower planes, now and then tall ones too: their rows
        // keep one phase for many rows.
        const bool tall = pick == 0 && wide != 0 && rng.coin();
        const int sh = tall ? rng.range(7, 300) : rng.range(1, 6);
        const int dh = tall ? (sh + rng.range(-2, 2)) / 2 : rng.range(1, 6);
        ScaleCase k{sw, sh, dw, dh, 0, 0, 0, 0};
        k.x = rng.range(0, 3) ? 0 : rng.range(0, k.sw - 1);
        k.y = rng.range(0, k.sh - 1);
        k.w = rng.coin() ? k.sw - k.x : rng.range(1, k.sw + 5);
        k.h = rng.coin() ? k.sh - k.y : rng.range(1, k.sh + 5);
        return k;
    }
    // Ranges of sw, sh, dw, dh.
    static const int kRanges[3][8] = {
        {1, 24, 1, 24, 0, 24, 0, 24}, {20, 400, 1, 60, 1, 12, 1, 20}, {1, 8, 1, 8, 8, 90, 8, 60}};
    const int *r = kRanges[i % 4];
    ScaleCase k{rng.range(r[0], r[1]), rng.range(r[2], r[3]), rng.range(r[4], r[5]), rng.range(r[6], r[7]), 0, 0, 0, 0};
    if (i % 8 == 5)
        std::swap(k.sw, k.sh), std::swap(k.dw, k.dh);
    if (i % 12 == 0)
        k.dw = k.sw, k.dh = k.sh;
    k.x = randomCorner(rng, k.sw);
    k.y = randomCorner(rng, k.sh);
    k.w = rng.coin() ? k.sw - k.x : rng.range(0, k.sw + 5);
    k.h = rng.coin() ? k.sh - k.y : rng.range(0, k.sh + 5);
    return k;
}

// Trace text of one random scaling case.
inline std::ostream &operator<<(std::ostream &os, const ScaleCase &k)
{
    return os << "source " << k.sw << "x" << k.sh << ", rect (" << k.x << ", " << k.y << ") " << k.w << "x" << k.h
              << " -> " << k.dw << "x" << k.dh;
}

// A guarded target against the model's samples, or untouched when the model
// writes none; its guards intact either way.
template <class T>
::testing::AssertionResult written(const Guarded<T> &dst, const std::vector<T> &want, int width)
{
    const std::vector<T> got = dst.contents();
    if (dst.intact() && (want.empty() ? dst.untouched() : got == want))
        return ::testing::AssertionSuccess();
    const auto diff = std::mismatch(got.begin(), got.end(), want.begin(), want.end()).first - got.begin();
    return ::testing::AssertionFailure() << (dst.intact() ? "" : "guard bytes changed; ") << got.size()
                                         << " samples, want " << want.size() << "; first difference at ("
                                         << diff % std::max(width, 1) << ", " << diff / std::max(width, 1) << ")";
}

} // namespace pixmill::test

#endif
