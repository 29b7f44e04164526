// The frame model shared by every family: plane addressing, rotation codes
// and the clipping rule of the rectangle operations.
#ifndef PIXMILL_FRAME_H
#define PIXMILL_FRAME_H

#include <cstdint>

#include "frame/platform.h"

namespace pixmill {

// Chroma rows are half a luma row in both planar layouts (rounded down).
constexpr int32_t chromaStride(const Frame &f) { return f.width >> 1; }

constexpr bool isQuarterTurn(uint32_t rotation) { return rotation == ROTATE_90 || rotation == ROTATE_270; }

constexpr int32_t min32(int32_t a, int32_t b) { return a < b ? a : b; }

// The top-left part w x h that a whole-image conversion serves: both sizes at
// least 2 and none beyond the frame. A size of 1 has no 2x2 block and nothing
// to repeat from; a larger part would read past the planes.
constexpr bool servesPart(const Frame &f, int32_t w, int32_t h)
{
    return w >= 2 && h >= 2 && w <= f.width && h <= f.height;
}

// Size of the source rectangle that is read, after limiting it by the frame
// (from corner x0, y0) and by the room that the surface has right of and below
// (dstX, dstY). Under a quarter turn source columns run down the surface and
// source rows across it. The destination rectangle is cw x ch, or ch x cw
// after a quarter turn. Corners beyond the frame or surface give a negative
// size; callers that may see one treat it as empty.
struct ClipSize {
    int32_t cw;
    int32_t ch;
};

constexpr ClipSize clipRectangle(int32_t srcW, int32_t srcH, int32_t width, int32_t height, int32_t x0,
                                 int32_t y0, int32_t dstW, int32_t dstH, int32_t dstX, int32_t dstY,
                                 bool quarterTurn)
{
    int32_t cw = min32(srcW, width - x0);
    int32_t ch = min32(srcH, height - y0);
    if (quarterTurn) {
        cw = min32(cw, dstH - dstY);
        ch = min32(ch, dstW - dstX);
    } else {
        cw = min32(cw, dstW - dstX);
        ch = min32(ch, dstH - dstY);
    }
    return {cw, ch};
}

} // namespace pixmill

#endif
