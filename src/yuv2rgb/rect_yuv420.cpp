// 4:2:0 rectangle -> RGB565 rectangle with rotation, in two forms:
//  - gYUV420toBGR565TopDown_Rotate: BT.601, 16-bit arguments, rows written
//    bottom-up, whole 2x2 blocks only with a repeat of the odd last column and
//    row under ROTATE_NONE;
//  - gYUV420toRGB16Rotate: BT.709, 32-bit arguments, rows top-down, every
//    pixel of odd sizes converted.
// Both start the rectangle on an even corner, so dither parity in the
// rectangle is parity in the frame.
#include "yuv2rgb/rect_walk.h"

namespace pixmill {
namespace {

// Samples at the even corner (x0, y0) of a 4:2:0 frame.
PIXMILL_INLINE Source source420(const Frame &f, int32_t x0, int32_t y0)
{
    const ptrdiff_t cs = chromaStride(f);
    const ptrdiff_t chroma = (y0 >> 1) * cs + (x0 >> 1);
    return {f.y + ptrdiff_t(y0) * f.width + x0, f.u + chroma, f.v + chroma, f.width, cs};
}

// Top-down walk of every pixel: whole blocks, then an odd last column in
// pairs down the row pairs, then an odd last row in pairs with its corner.
struct Rgb16From420 {
    template <uint32_t code>
    static void worker(const Source &s, const Surface &d, const ClipSize &size)
    {
        const int32_t cw = size.cw;
        const int32_t ch = size.ch;
        const int32_t ew = cw & ~1;
        const int32_t eh = ch & ~1;
        const Target t = place(TopDown[code], d, cw, ch);
        const Yuv2RgbKernels *k = yuv2rgbKernels();
        const PairKernel<uint16_t> *blocks = k ? k->rgb565From420Bt709 : nullptr;
        convertTurned(k ? k->turn565From420Bt709 : nullptr, false, s, t, ew, eh,
                      [blocks](const Source &from, const Target &to, int32_t w, int32_t h) {
                          convertBlocks<false>(Coeff709, from, to, w, h, blocks);
                      });
        if (cw & 1) {
            // Under ROTATE_NONE the odd rows of this column take the offsets
            // of an even row's odd column.
            constexpr Offsets oddRow = code == ROTATE_NONE ? Dither2x2[0][1] : Dither2x2[1][0];
            uint16_t *out = t.at + ew * t.col;
            const uint8_t *y = s.y + ew;
            const uint8_t *u = s.u + (ew >> 1);
            const uint8_t *v = s.v + (ew >> 1);
            for (int32_t r = 0; r < eh; r += 2) {
                const ChromaTerms tc = terms(Coeff709, u, v);
                out[0] = rgb565(y, tc, Dither2x2[0][0]);
                out[t.row] = rgb565(y + s.lumaStride, tc, oddRow);
                out += 2 * t.row;
                y += 2 * s.lumaStride;
                u += s.chromaStride;
                v += s.chromaStride;
            }
        }
        if (ch & 1) {
            const ptrdiff_t chroma = (eh >> 1) * s.chromaStride;
            convertRow(Coeff709, s.y + eh * s.lumaStride, s.u + chroma, s.v + chroma, t.at + eh * t.row, t.col, cw,
                       k ? k->rgb565RowBt709 : nullptr);
        }
    }
};

} // namespace
} // namespace pixmill

extern "C" PIXMILL_API int32_t gYUV420toBGR565TopDown_Rotate(const Frame *frame, uint16_t *destination, uint32_t srcX,
                                                             uint32_t srcY, uint16_t srcW, uint16_t srcH, uint16_t dstX,
                                                             uint16_t dstY, uint16_t dstW, uint16_t dstH,
                                                             Rotation rotation)
{
    using namespace pixmill;
    const Frame &f = *frame;
    const uint32_t code = rotation & 0xffu;
    if (refused(f, destination, code))
        return -1;
    const int32_t x0 = static_cast<int32_t>(srcX & 0xfffeu);
    const int32_t y0 = static_cast<int32_t>(srcY & 0xfffeu);
    const ClipSize size = clipRectangle(srcW, srcH, f.width, f.height, x0, y0, dstW, dstH, dstX, dstY,
                                        isQuarterTurn(code));
    // A negative size comes from a corner beyond the frame or surface.
    if (size.cw <= 0 || size.ch <= 0)
        return 0;
    dispatch<BottomUpBlocks<false>>(code, source420(f, x0, y0), Surface{destination, dstW, dstX, dstY}, size);
    return 0;
}

extern "C" PIXMILL_API int32_t gYUV420toRGB16Rotate(const Frame *frame, uint16_t *destination, int32_t dstW,
                                                    int32_t dstH, int32_t dstX, int32_t dstY, int32_t srcX,
                                                    int32_t srcY, int32_t srcW, int32_t srcH, Rotation rotation)
{
    using namespace pixmill;
    const Frame &f = *frame;
    const SignedStart start = startSigned(f, destination, rotation, srcX, srcY, dstX, dstY, dstW, dstH);
    if (start.result <= 0)
        return start.result;
    const ClipSize size = clipRectangle(srcW, srcH, f.width, f.height, start.x0, start.y0, dstW, dstH, dstX, dstY,
                                        isQuarterTurn(rotation));
    if (size.cw <= 0 || size.ch <= 0)
        return 0;
    dispatch<Rgb16From420>(rotation, source420(f, start.x0, start.y0), Surface{destination, dstW, dstX, dstY}, size);
    return 0;
}
