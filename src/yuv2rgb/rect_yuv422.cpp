// Planar 4:2:2 rectangle -> RGB565 rectangle with rotation, in two forms:
//  - gYUV422toRGB16Rotate: BT.709, 32-bit arguments, corner and size made
//    even, rows top-down, one source row at a time in pixel pairs with the
//    even-row offsets only;
//  - gYUV422HPlanartoBGR565TopDown_Rotate: BT.601, 16-bit arguments, corner
//    used as given, dstW/dstH taken before the turn, rows written bottom-up
//    in 2x2 blocks like the 4:2:0 form.
#include "yuv2rgb/rect_walk.h"

namespace pixmill {
namespace {

// Each source row in pairs; rows are never paired, so every row takes the
// offsets of an even row.
template <uint32_t code>
PIXMILL_INLINE void rowPairs709(const Source &s, const Surface &d, const ClipSize &size)
{
    const Yuv2RgbKernels *k = yuv2rgbKernels();
    const PairKernel<uint16_t> *rows = k ? k->rgb565RowBt709 : nullptr;
    const auto convert = [rows](const Source &from, const Target &to, int32_t w, int32_t h) {
        for (int32_t r = 0; r < h; ++r)
            convertRow(Coeff709, from.y + r * from.lumaStride, from.u + r * from.chromaStride,
                       from.v + r * from.chromaStride, to.at + r * to.row, to.col, w, rows);
    };
    convertTurned(k ? k->turn565RowsBt709 : nullptr, true, s, place(TopDown[code], d, size.cw, size.ch), size.cw,
                  size.ch, convert);
}

// The workers live in COLORCON. They are explicit specialisations, not
// instances of a template, because GCC drops a section given to a template.
struct Rgb16From422 {
    template <uint32_t code>
    static void worker(const Source &s, const Surface &d, const ClipSize &size);
};
#define PIXMILL_RGB16_FROM_422(code)                                                                          \
    template <>                                                                                              \
    PIXMILL_CODE(PIXMILL_SECTION_COLORCON)                                                                   \
    void Rgb16From422::worker<code>(const Source &s, const Surface &d, const ClipSize &size)                 \
    {                                                                                                        \
        rowPairs709<code>(s, d, size);                                                                       \
    }
PIXMILL_RGB16_FROM_422(ROTATE_NONE)
PIXMILL_RGB16_FROM_422(ROTATE_90)
PIXMILL_RGB16_FROM_422(ROTATE_180)
PIXMILL_RGB16_FROM_422(ROTATE_270)
#undef PIXMILL_RGB16_FROM_422

} // namespace
} // namespace pixmill

extern "C" PIXMILL_API PIXMILL_CODE(PIXMILL_SECTION_COLORCON) int32_t
    gYUV422toRGB16Rotate(const Frame *frame, uint16_t *destination, int32_t dstW, int32_t dstH, int32_t dstX,
                         int32_t dstY, int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH, Rotation rotation)
{
    using namespace pixmill;
    const Frame &f = *frame;
    const SignedStart start = startSigned(f, destination, rotation, srcX, srcY, dstX, dstY, dstW, dstH);
    if (start.result <= 0)
        return start.result;
    // The requested size is made even like the corner.
    ClipSize size = clipRectangle(srcW & ~1, srcH & ~1, f.width, f.height, start.x0, start.y0, dstW, dstH, dstX,
                                  dstY, isQuarterTurn(rotation));
    // Whole pixel pairs across every row; only ROTATE_NONE drops an odd last row.
    size.cw &= ~1;
    if (rotation == ROTATE_NONE)
        size.ch &= ~1;
    if (size.cw <= 0 || size.ch <= 0)
        return 0;
    const ptrdiff_t cs = chromaStride(f);
    const ptrdiff_t chroma = start.y0 * cs + (start.x0 >> 1);
    const Source s{f.y + ptrdiff_t(start.y0) * f.width + start.x0, f.u + chroma, f.v + chroma, f.width, cs};
    dispatch<Rgb16From422>(rotation, s, Surface{destination, dstW, dstX, dstY}, size);
    return 0;
}

extern "C" PIXMILL_API int32_t gYUV422HPlanartoBGR565TopDown_Rotate(const Frame *frame, uint16_t *destination,
                                                                    uint32_t srcX, uint32_t srcY, uint16_t srcW,
                                                                    uint16_t srcH, uint16_t dstX, uint16_t dstY,
                                                                    uint16_t dstW, uint16_t dstH, Rotation rotation)
{
    using namespace pixmill;
    const Frame &f = *frame;
    const uint32_t code = rotation & 0xffu;
    if (refused(f, destination, code))
        return -1;
    // A corner beyond the frame is not served.
    if (srcX > f.width || srcY > f.height)
        return 0;
    const int32_t x0 = static_cast<int32_t>(srcX);
    const int32_t y0 = static_cast<int32_t>(srcY);
    // dstW and dstH describe the target before the turn: under a quarter turn
    // the surface is dstH words wide and dstW rows high.
    const bool quarter = isQuarterTurn(code);
    const int32_t surfaceW = quarter ? dstH : dstW;
    const int32_t surfaceH = quarter ? dstW : dstH;
    const ClipSize size =
        clipRectangle(srcW, srcH, f.width, f.height, x0, y0, surfaceW, surfaceH, dstX, dstY, quarter);
    if (size.cw <= 0 || size.ch <= 0)
        return 0;
    // Chroma of the corner is half its luma offset, which for an odd width is
    // not column x0 >> 1 of chroma row y0; rows below follow at the chroma stride.
    const ptrdiff_t corner = ptrdiff_t(y0) * f.width + x0;
    const Source s{f.y + corner, f.u + (corner >> 1), f.v + (corner >> 1), f.width, chromaStride(f)};
    dispatch<BottomUpBlocks<true>>(code, s, Surface{destination, surfaceW, dstX, dstY}, size);
    return 0;
}
