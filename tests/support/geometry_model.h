// Where a pixel lands under a turn or a flip, written from the placement
// tables alone, and the codes that must be refused.
#ifndef PIXMILL_TEST_GEOMETRY_MODEL_H
#define PIXMILL_TEST_GEOMETRY_MODEL_H

#include <cstdint>

#include "support/random.h"

namespace pixmill::test {

struct Pos {
    int32_t c, r;
};

// Pixel (c, r) of a w x h image after a turn by `code` (0 to 3).
inline Pos turned(uint32_t code, int32_t c, int32_t r, int32_t w, int32_t h)
{
    switch (code) {
    case 1: return {h - 1 - r, c};
    case 2: return {w - 1 - c, h - 1 - r};
    case 3: return {r, w - 1 - c};
    default: return {c, r};
    }
}

inline bool quarterTurn(uint32_t code) { return code == 1 || code == 3; }

// Pixel (c, r) of a w x h image after a flip: 1 top-bottom, 2 both, any
// other value left-right.
inline Pos mirrored(uint32_t mode, int32_t c, int32_t r, int32_t w, int32_t h)
{
    if (mode == 1)
        return {c, h - 1 - r};
    if (mode == 2)
        return {w - 1 - c, h - 1 - r};
    return {w - 1 - c, r};
}

// Rotation codes above 3, including ones whose low byte is a valid code.
inline uint32_t invalidRotation(Random &rng)
{
    static const uint32_t codes[] = {4u, 5u, 255u, 256u, 257u, 0x102u, 0x10003u, 0x80000001u, 0xFFFFFFFFu};
    return rng.coin() ? codes[rng.word() % 9] : rng.word() | 4u;
}

// A rotation code: usually valid, one time in `invalidOneIn` not.
inline uint32_t randomRotation(Random &rng, int32_t invalidOneIn = 10)
{
    return rng.range(1, invalidOneIn) == 1 ? invalidRotation(rng) : uint32_t(rng.range(0, 3));
}

// Mirror modes: the two named ones and a spread of values that mean left-right.
inline uint32_t randomMirrorMode(Random &rng)
{
    static const uint32_t modes[] = {0u, 1u, 2u, 0u, 1u, 2u, 3u, 99u, 0xFFFFFFFFu, 0x101u};
    return modes[rng.word() % 10];
}

} // namespace pixmill::test

#endif
