// Fixed-point colour arithmetic shared by every YUV -> RGB conversion:
// the two Q14 coefficient sets, the two forms of the chroma terms, the clamp,
// the 2x2 offset table and the RGB565 word. All values are signed 32-bit and
// >> is an arithmetic shift (rounds towards minus infinity) on every
// compiler the library supports.
#ifndef PIXMILL_COLOUR_H
#define PIXMILL_COLOUR_H

#include <cstdint>

#include "frame/platform.h"

namespace pixmill {

// Q14 coefficients. Luma enters unscaled (0 black, 255 white); chroma is
// centred on 128. R and B add their terms, G subtracts its term.
struct Coeffs {
    int32_t crToR;
    int32_t crToG;
    int32_t cbToG;
    int32_t cbToB;
};

inline constexpr Coeffs Coeff601{22970, 11700, 5638, 29032}; // BT.601, full range
inline constexpr Coeffs Coeff709{25802, 7671, 3072, 30397};  // close to BT.709, full range

// Chroma terms of one chroma pair, computed once per block or pixel pair.
struct ChromaTerms {
    int32_t r;
    int32_t g;
    int32_t b;
};

enum class Terms { Truncating, Rounding };

template <Terms form>
PIXMILL_INLINE constexpr ChromaTerms chromaTerms(const Coeffs &k, int32_t uSample, int32_t vSample)
{
    constexpr int32_t bias = form == Terms::Rounding ? 8192 : 0;
    const int32_t cb = uSample - 128;
    const int32_t cr = vSample - 128;
    // The two products of the G term are summed before the single shift.
    return {(k.crToR * cr + bias) >> 14, (k.crToG * cr + k.cbToG * cb + bias) >> 14, (k.cbToB * cb + bias) >> 14};
}

PIXMILL_INLINE constexpr int32_t clamp255(int32_t x) { return x < 0 ? 0 : (x > 255 ? 255 : x); }

// Additive offsets for one pixel, added before the clamp.
struct Offsets {
    int32_t b;
    int32_t g;
    int32_t r;
};

inline constexpr Offsets NoOffsets{0, 0, 0};

// Dither2x2[source row parity][source column parity]. The pattern follows the
// source pixel, wherever a rotation or row order puts it.
inline constexpr Offsets Dither2x2[2][2] = {
    {{0, 3, 2}, {4, 0, 6}},
    {{6, 1, 4}, {2, 2, 0}},
};

// One pixel: R = clamp(Y + Rt + dR), G = clamp(Y - Gt + dG), B = clamp(Y + Bt + dB).
struct Rgb {
    int32_t r;
    int32_t g;
    int32_t b;
};

PIXMILL_INLINE constexpr Rgb pixel(int32_t luma, const ChromaTerms &t, const Offsets &d)
{
    return {clamp255(luma + t.r + d.r), clamp255(luma - t.g + d.g), clamp255(luma + t.b + d.b)};
}

// RGB565: R in bits 15..11, G in 10..5, B in 4..0; low bits dropped, not rounded.
PIXMILL_INLINE constexpr uint16_t packRgb565(const Rgb &p)
{
    return static_cast<uint16_t>(((p.r >> 3) << 11) | ((p.g >> 2) << 5) | (p.b >> 3));
}

} // namespace pixmill

#endif
