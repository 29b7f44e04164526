// A per-pixel model of the colour arithmetic, written from the rules alone:
// Q14 coefficients, the truncating or rounding chroma terms, offsets added
// before the clamp, RGB565 packing by dropping low bits. Deliberately shares
// no code with the library. Also the comparison of a target with its model
// that the conversion tests share.
#ifndef PIXMILL_TEST_COLOUR_MODEL_H
#define PIXMILL_TEST_COLOUR_MODEL_H

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace pixmill::test {

struct ModelCoeffs {
    int crToR, crToG, cbToG, cbToB;
};
constexpr ModelCoeffs kModel601{22970, 11700, 5638, 29032};
constexpr ModelCoeffs kModel709{25802, 7671, 3072, 30397};

struct ModelRgb {
    int r, g, b;
    bool operator==(const ModelRgb &o) const { return r == o.r && g == o.g && b == o.b; }
};

// Dither offsets (B, G, R) by source row parity and column parity.
struct ModelOffsets {
    int b, g, r;
};
inline ModelOffsets modelDither(int row, int col)
{
    static const ModelOffsets table[4] = {{0, 3, 2}, {4, 0, 6}, {6, 1, 4}, {2, 2, 0}};
    return table[(row & 1) * 2 + (col & 1)];
}
constexpr ModelOffsets kNoDither{0, 0, 0};

// Arithmetic shift right that rounds towards minus infinity, written out so
// that the model does not lean on the same operator as the library.
inline int floorShift14(int x) { return x >= 0 ? x / 16384 : -((-x + 16383) / 16384); }

inline ModelRgb modelPixel(int y, int u, int v, const ModelCoeffs &k, bool rounding, ModelOffsets d)
{
    const int cb = u - 128, cr = v - 128, bias = rounding ? 8192 : 0;
    const int rt = floorShift14(k.crToR * cr + bias);
    const int gt = floorShift14(k.crToG * cr + k.cbToG * cb + bias);
    const int bt = floorShift14(k.cbToB * cb + bias);
    auto clamp = [](int x) { return x < 0 ? 0 : x > 255 ? 255 : x; };
    return {clamp(y + rt + d.r), clamp(y - gt + d.g), clamp(y + bt + d.b)};
}

inline uint16_t modelRgb565(const ModelRgb &p)
{
    return static_cast<uint16_t>((p.r / 8) * 2048 + (p.g / 4) * 32 + p.b / 8);
}

// First target unit (byte or word) that differs from the model, by row and
// unit within a row of `pitch` units.
template <class T>
::testing::AssertionResult sameUnits(const std::vector<T> &got, const std::vector<T> &want, size_t pitch)
{
    for (size_t i = 0; i < want.size(); ++i)
        if (got[i] != want[i])
            return ::testing::AssertionFailure() << "first difference at row " << i / pitch << ", unit " << i % pitch
                                                 << ": got " << int(got[i]) << ", want " << int(want[i]);
    return ::testing::AssertionSuccess();
}

} // namespace pixmill::test

#endif
