// The bilinear scalers' shared arithmetic: the Q18 position format with its
// eight phases, the constant weight table (byte and 32-bit forms) and the
// decimation shifts. Header-only, so that any family can use the tables
// without linking the scalers.
#ifndef PIXMILL_BILINEAR_H
#define PIXMILL_BILINEAR_H

#include <cstdint>

#include "frame/platform.h"

namespace pixmill {

// Positions: signed 32-bit, 18 fraction bits. Bits 17..15 are the phase in
// eighths of a tap distance; the bits below only ride along in running sums.
constexpr int32_t kPositionBits = 18;
// Extents and spans below this fit a position once shifted up.
constexpr int32_t kPositionLimit = 1 << (31 - kPositionBits);
PIXMILL_INLINE constexpr int32_t positionIndex(int32_t p) { return p >> kPositionBits; }
PIXMILL_INLINE constexpr int32_t positionPhase(int32_t p) { return (p >> 15) & 7; }

// A source rectangle in samples of one plane.
struct SourceRect {
    int32_t x, y, w, h;
};

// Cuts a rectangle that sticks out right or below to the plane; the corner
// does not move. False when nothing sound can be made of it: a corner
// outside the plane or a size under 1.
PIXMILL_INLINE constexpr bool limitToPlane(SourceRect &r, int32_t width, int32_t height)
{
    if (r.x < 0 || r.y < 0 || r.x >= width || r.y >= height || r.w < 1 || r.h < 1)
        return false;
    if (r.x + r.w > width)
        r.w = width - r.x;
    if (r.y + r.h > height)
        r.h = height - r.y;
    return true;
}

// Of the `count` positions start, start + step, start + 2 * step, ..., the
// first whose index reaches `index`, or count if none does. A set-up walk
// that lets edge columns be split off a row without a test per sample.
PIXMILL_INLINE constexpr int32_t firstReaching(int32_t start, int32_t step, int32_t count, int32_t index)
{
    int32_t i = 0;
    for (int32_t p = start; i < count && positionIndex(p) < index; p += step)
        ++i;
    return i;
}

// Four sub-tables of 64 weights, one per tap, indexed by py * 8 + px. They
// lie one after the other: 256 numbers in the order w00, w01, w10, w11.
template <class T>
struct BilinearTable {
    T w00[64]; // top left:     (8 - py) * (8 - px)
    T w01[64]; // top right:    (8 - py) * px
    T w10[64]; // bottom left:  py * (8 - px)
    T w11[64]; // bottom right: py * px
};

template <class T>
constexpr BilinearTable<T> makeBilinearTable()
{
    BilinearTable<T> t{};
    for (int32_t k = 0; k < 64; ++k) {
        const int32_t py = k >> 3;
        const int32_t px = k & 7;
        t.w00[k] = static_cast<T>((8 - py) * (8 - px));
        t.w01[k] = static_cast<T>((8 - py) * px);
        t.w10[k] = static_cast<T>(py * (8 - px));
        t.w11[k] = static_cast<T>(py * px);
    }
    return t;
}

// The four weights of an index add up to 64, so a blend >> 6 needs no clamp.
inline constexpr BilinearTable<uint8_t> BilinearWeights = makeBilinearTable<uint8_t>();
inline constexpr BilinearTable<uint32_t> BilinearWeights32 = makeBilinearTable<uint32_t>();

// DecimationShift[ratio]: taps 1 << shift samples apart for an integer
// reduction ratio of 0..31; the smallest shift with ratio <= 2 << shift.
struct DecimationTable {
    uint8_t shift[32];
    constexpr uint8_t operator[](int32_t ratio) const { return shift[ratio]; }
};

constexpr DecimationTable makeDecimationTable()
{
    DecimationTable t{};
    for (int32_t ratio = 0; ratio < 32; ++ratio) {
        uint8_t s = 0;
        while (ratio > (2 << s))
            ++s;
        t.shift[ratio] = s;
    }
    return t;
}

inline constexpr DecimationTable DecimationShift = makeDecimationTable();
constexpr int32_t kMaxDecimationRatio = 31;

// The eight weights of each tap for one py, chosen once per target row; px
// indexes within them.
template <class T>
struct WeightRow {
    const T *w00;
    const T *w01;
    const T *w10;
    const T *w11;
};

template <class T>
PIXMILL_INLINE constexpr WeightRow<T> weightRow(const BilinearTable<T> &t, int32_t py)
{
    return {t.w00 + py * 8, t.w01 + py * 8, t.w10 + py * 8, t.w11 + py * 8};
}

// Four taps blended with the weights of phase px: the floor of the weighted
// mean, nothing added before the shift.
template <class T>
PIXMILL_INLINE constexpr int32_t blend(const WeightRow<T> &w, int32_t px, int32_t a, int32_t b, int32_t c, int32_t d)
{
    return (static_cast<int32_t>(w.w00[px]) * a + static_cast<int32_t>(w.w01[px]) * b +
            static_cast<int32_t>(w.w10[px]) * c + static_cast<int32_t>(w.w11[px]) * d) >> 6;
}

} // namespace pixmill

#endif
