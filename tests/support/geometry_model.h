// Where a pixel lands under a turn, written from the placement table alone;
// random rotation codes, including ones that must be refused; and the model
// of a whole packed plane under any placement, turn or flip.
#ifndef PIXMILL_TEST_GEOMETRY_MODEL_H
#define PIXMILL_TEST_GEOMETRY_MODEL_H

#include <cstdint>
#include <vector>

#include "support/buffers.h"
#include "support/random.h"

namespace pixmill::test {

struct Pos {
    int32_t c, r;
};

// Pixel (c, r) of a w x h image after a turn by `code` (0 to 3), as the
// placement table has it: ROTATE_90 clockwise, ROTATE_270 counter-clockwise.
inline Pos turned(uint32_t code, int32_t c, int32_t r, int32_t w, int32_t h)
{
    const Pos table[4] = {{c, r}, {h - 1 - r, c}, {w - 1 - c, h - 1 - r}, {r, w - 1 - c}};
    return table[code];
}

// A rotation code: nine times in ten 0 to 3, else one above 3, among them
// codes whose low byte is a valid code.
inline uint32_t randomRotation(Random &rng)
{
    static const uint32_t invalid[] = {4u, 5u, 255u, 256u, 257u, 0x102u, 0x10003u, 0x80000001u, 0xFFFFFFFFu};
    return rng.range(0, 9) != 0 ? uint32_t(rng.range(0, 3)) : rng.coin() ? invalid[rng.word() % 9] : rng.word() | 4u;
}

// out[where(c, r)] = in[r * w + c] for a packed w x h plane, into a packed
// plane outWidth samples wide.
template <class T, class Where>
void placePlane(const std::vector<T> &in, int32_t w, int32_t h, int32_t outWidth, std::vector<T> &out, Where where)
{
    for (int32_t r = 0; r < h; ++r)
        for (int32_t c = 0; c < w; ++c) {
            const Pos p = where(c, r);
            out[size_t(p.r) * size_t(outWidth) + size_t(p.c)] = in[size_t(r) * size_t(w) + size_t(c)];
        }
}

} // namespace pixmill::test

#endif
