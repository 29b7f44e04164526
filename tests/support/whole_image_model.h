// Model of the whole-image walks (top-left w x h, rows in order or reversed,
// odd last column and row repeating their neighbour): target pixel position
// for each source pixel, and which source pixel a repeated one copies.
#ifndef PIXMILL_TEST_WHOLE_IMAGE_MODEL_H
#define PIXMILL_TEST_WHOLE_IMAGE_MODEL_H

#include <cstdint>

namespace pixmill::test {

// The source pixel whose value target pixel (c, r) of a w x h image holds:
// a converted pixel is its own source, a repeated one its neighbour's.
struct SourcePos {
    int32_t c, r;
};
inline SourcePos sourceOf(int32_t c, int32_t r, int32_t w, int32_t h)
{
    return {(w & 1) && c == w - 1 ? c - 1 : c, (h & 1) && r == h - 1 ? r - 1 : r};
}

// Target row of source row r.
inline int32_t targetRow(int32_t r, int32_t h, bool topDown) { return topDown ? r : h - 1 - r; }

// Flag values that must all read as "top down" or as "reversed".
inline int32_t flagValue(uint32_t pick, bool topDown)
{
    static const uint32_t onValues[] = {1u, 0x80000000u, 0x00010000u, 0xFFFFFFFFu, 0x00000100u, 2u};
    return topDown ? static_cast<int32_t>(onValues[pick % 6]) : 0;
}

} // namespace pixmill::test

#endif
