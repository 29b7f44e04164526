// Per-sample models of the bilinear scalers, written from the rules alone:
// Q18 positions split by division, weights multiplied out from the phases,
// tap distances from the listed decimation shifts. A tap of weight 0 is not
// read. Shares no code with the library.
#ifndef PIXMILL_TEST_BILINEAR_MODEL_H
#define PIXMILL_TEST_BILINEAR_MODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

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

// The plane scaler: the whole dstW x dstH result, or nothing (empty) when the
// target has no sample.
inline std::vector<uint8_t> modelScalePlane(const uint8_t *src, int sw, int sh, int dstW, int dstH, int x, int y,
                                            int w, int h)
{
    if (dstW < 1 || dstH < 1)
        return {};
    w = std::min(w, sw - x);
    h = std::min(h, sh - y);
    const int distX = 1 << kListedShifts[std::min(w / dstW, 31)];
    const int distY = 1 << kListedShifts[std::min(h / dstH, 31)];
    const int64_t stepX = int64_t((w - 1) / distX) * 262144 / dstW;
    const int64_t stepY = int64_t((h - 1) / distY) * 262144 / dstH;
    std::vector<uint8_t> out(size_t(dstW) * size_t(dstH));
    for (int j = 0; j < dstH; ++j)
        for (int i = 0; i < dstW; ++i) {
            const ModelPos py = modelPos(j * stepY), px = modelPos(i * stepX);
            out[size_t(j) * size_t(dstW) + size_t(i)] = uint8_t(modelBlend(py.phase, px.phase, [&](int tx, int ty) {
                const int col = x + (px.index + tx) * distX, row = y + (py.index + ty) * distY;
                return int(src[size_t(row) * size_t(sw) + size_t(col)]);
            }));
        }
    return out;
}

// Trace text of one random scaling case.
inline std::string scaleCase(int i, int sw, int sh, int64_t x, int64_t y, int w, int h, int dw, int dh)
{
    return "case " + std::to_string(i) + ": source " + std::to_string(sw) + "x" + std::to_string(sh) + ", rect (" +
           std::to_string(x) + ", " + std::to_string(y) + ") " + std::to_string(w) + "x" + std::to_string(h) +
           " -> " + std::to_string(dw) + "x" + std::to_string(dh);
}

// First difference between two sample runs, as a message.
template <class T>
::testing::AssertionResult sameSamples(const std::vector<T> &got, const std::vector<T> &want, int width)
{
    if (got.size() != want.size())
        return ::testing::AssertionFailure() << "size " << got.size() << ", want " << want.size();
    for (size_t i = 0; i < want.size(); ++i)
        if (got[i] != want[i])
            return ::testing::AssertionFailure() << "first difference at (" << i % size_t(width) << ", "
                                                 << i / size_t(width) << "): got " << int(got[i]) << ", want "
                                                 << int(want[i]);
    return ::testing::AssertionSuccess();
}

} // namespace pixmill::test

#endif
