// Model of the rectangle operations' geometry, written from the rules alone:
// the clipping of a source rectangle by the frame and by the surface, and the
// target position of a source pixel for each rotation code, top-down or
// bottom-up, on a surface held as a plain vector of words.
#ifndef PIXMILL_TEST_RECT_MODEL_H
#define PIXMILL_TEST_RECT_MODEL_H

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace pixmill::test {

struct Pos {
    int32_t x, y;
};

// Top-down placement of source pixel (c, r) of a w x h area:
// 0 (c, r), 1 (h-1-r, c), 2 (w-1-c, h-1-r), 3 (r, w-1-c).
inline Pos topDownTarget(uint32_t code, int32_t c, int32_t r, int32_t w, int32_t h)
{
    switch (code) {
    case 0: return {c, r};
    case 1: return {h - 1 - r, c};
    case 2: return {w - 1 - c, h - 1 - r};
    default: return {r, w - 1 - c};
    }
}

// Bottom-up placement of the 601 rectangle conversions, over whole blocks
// ew x eh, with rows of ROTATE_NONE counted from the clipped height ch.
inline Pos bottomUpTarget(uint32_t code, int32_t c, int32_t r, int32_t ew, int32_t eh, int32_t ch)
{
    switch (code) {
    case 0: return {c, ch - 1 - r};
    case 1: return {r, c};
    case 2: return {ew - 1 - c, r};
    default: return {eh - 1 - r, ew - 1 - c};
    }
}

// Clipped size of a source rectangle read from corner (x0, y0) of a
// width x height frame, onto a surface sw x sh from (dstX, dstY). Under a
// quarter turn source columns run down the surface.
struct Clip {
    int32_t cw, ch;
};
inline Clip clipModel(int32_t srcW, int32_t srcH, int32_t width, int32_t height, int32_t x0, int32_t y0, int32_t sw,
                      int32_t sh, int32_t dstX, int32_t dstY, bool quarter)
{
    auto lesser = [](int32_t a, int32_t b) { return a < b ? a : b; };
    Clip k{lesser(srcW, width - x0), lesser(srcH, height - y0)};
    k.cw = lesser(k.cw, quarter ? sh - dstY : sw - dstX);
    k.ch = lesser(k.ch, quarter ? sw - dstX : sh - dstY);
    return k;
}

// A surface of sw x sh words: the state before a call, with model writes
// relative to the corner (dstX, dstY).
struct SurfaceModel {
    std::vector<uint16_t> words;
    int32_t sw, sh, dstX, dstY;

    uint16_t &at(int32_t x, int32_t y)
    {
        const int32_t ax = dstX + x, ay = dstY + y;
        if (ax < 0 || ay < 0 || ax >= sw || ay >= sh) {
            ADD_FAILURE() << "model writes outside the surface at " << ax << ", " << ay;
            static uint16_t sink;
            return sink;
        }
        return words[size_t(ay) * size_t(sw) + size_t(ax)];
    }
    void put(Pos p, uint16_t w) { at(p.x, p.y) = w; }
};

} // namespace pixmill::test

#endif
