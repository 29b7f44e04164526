// Planar YUV to RGB: the whole-image conversions and the four rectangle
// conversions with rotation. Sizes, rectangles and codes come from the input
// and stay within what each operation asks of its caller; the call must not
// write outside its target or outside the rectangle it was given.
#include "fuzz_support.h"

using namespace fuzz;

namespace {

int32_t min3(int32_t a, int32_t b, int32_t c) { return std::min(a, std::min(b, c)); }

// Whole-image walks, `op` 0: 4:2:0 to R,G,B; 1: 4:2:0 to RGB565; 2: 4:2:2 to
// B,G,R. Sizes both at least 2, or one of them 0.
void wholeImage(FuzzedDataProvider &in, Random &rng, int op)
{
    const bool yuv422 = op == 2;
    const int32_t w = pick(in, 0, 40), h = pick(in, 0, 40);
    SourceFrame src(w, h, size_t(w >> 1) * size_t(yuv422 ? h : h >> 1), rng);
    int32_t sw = pick(in, 0, w), sh = pick(in, 0, h);
    if (sw == 1 || sh == 1)
        sw = sh = 0;
    const int32_t topDown = in.ConsumeIntegral<int32_t>();
    if (op == 1) {
        if (!defined(gEmYUV420toRGB565TopDown))
            return;
        Target<uint16_t> out(size_t(sw) * size_t(sh), rng);
        gEmYUV420toRGB565TopDown(&src.frame, out.begin(), sw, sh, topDown);
        out.check();
    } else {
        auto fn = op == 0 ? gEmYUV420toRGB888TopDown
                          : in.ConsumeBool() ? gYUV422HPlanartoBGR888TopDown : gYUV422HPlanartoRGB888TopDown;
        if (!defined(fn))
            return;
        Target<uint8_t> out(size_t(sw) * size_t(sh) * 3, rng);
        fn(&src.frame, out.begin(), sw, sh, topDown);
        out.check();
    }
    src.check();
}

// Whole 4:2:0 frame of even size to B,G,R rows `stride` bytes apart.
void toBgr24(FuzzedDataProvider &in, Random &rng)
{
    if (!defined(gYUV420toBGR24))
        return;
    const int32_t w = 2 * pick(in, 0, 20), h = 2 * pick(in, 0, 20);
    SourceFrame src(w, h, size_t(w >> 1) * size_t(h >> 1), rng);
    const int32_t stride = 3 * w + pick(in, -4, 9);
    Target<uint8_t> out(h && stride >= 3 * w ? size_t(h - 1) * size_t(stride) + size_t(3 * w) : 0, rng);
    const int32_t result = gYUV420toBGR24(&src.frame, out.begin(), stride);
    if (stride < 3 * w) {
        require(result == -1, "a short stride was not refused");
        out.checkUntouched();
    } else {
        require(result == 0, "a valid call did not return 0");
        out.checkOutside(stride, 0, 0, 3 * w, h); // the padding of each row stays
    }
    src.check();
}

// The rectangle conversions. `op` 4: 4:2:0, 601, bottom-up; 5: 4:2:0, 709;
// 6: 4:2:2, 709; 7: 4:2:2, 601, bottom-up, surface size before the turn.
void rectangle(FuzzedDataProvider &in, Random &rng, int op)
{
    const bool yuv422 = op >= 6;
    const int32_t w = pick(in, 0, 40), h = pick(in, 0, 40);
    size_t chroma = size_t(w >> 1) * size_t(yuv422 ? h : h >> 1);
    if (op == 5) // odd sizes reach one chroma column and row past the layout
        chroma = size_t(w >> 1) * size_t((h >> 1) + 1) + 1;
    if (op == 7) // an odd corner on an odd width rounds the chroma position up
        chroma = size_t((w + 1) >> 1) * size_t(h);
    SourceFrame src(w, h, chroma, rng);
    const int32_t dstW = pick(in, 0, 40), dstH = pick(in, 0, 40);
    Target<uint16_t> surface(size_t(dstW) * size_t(dstH), rng);

    const uint32_t code = uint32_t(pick(in, 0, 5));
    const bool quarter = (code & 1) != 0;
    const int32_t sw = op == 7 && quarter ? dstH : dstW, sh = op == 7 && quarter ? dstW : dstH;
    const int32_t dstX = pick(in, 0, sw), dstY = pick(in, 0, sh);
    int32_t x = pick(in, 0, w), y = pick(in, 0, h);
    const int32_t srcW = pick(in, 0, 60), srcH = pick(in, 0, 60);
    const uint32_t high = in.ConsumeIntegral<uint16_t>(); // ignored bits of corner and code
    Frame frame = src.frame;
    uint16_t *destination = surface.begin();
    switch (pick(in, 0, 15)) { // now and then a null pointer, which is refused
    case 0: destination = nullptr; break;
    case 1: frame.y = nullptr; break;
    case 2: frame.u = nullptr; break;
    case 3: frame.v = nullptr; break;
    default: break;
    }
    const bool refused = code > 3 || !destination || !frame.y || !frame.u || !frame.v;

    int32_t result = 0;
    if (op == 4 && defined(gYUV420toBGR565TopDown_Rotate))
        result = gYUV420toBGR565TopDown_Rotate(&frame, destination, uint32_t(x) | high << 16, uint32_t(y) | high << 16,
                                               uint16_t(srcW), uint16_t(srcH), uint16_t(dstX), uint16_t(dstY),
                                               uint16_t(dstW), uint16_t(dstH), code | (high & 0xff00u) << 8);
    else if (op == 5 && defined(gYUV420toRGB16Rotate))
        result = gYUV420toRGB16Rotate(&frame, destination, dstW, dstH, dstX, dstY, x, y, srcW, srcH, code);
    else if (op == 6 && defined(gYUV422toRGB16Rotate))
        result = gYUV422toRGB16Rotate(&frame, destination, dstW, dstH, dstX, dstY, x, y, srcW, srcH, code);
    else if (op == 7 && defined(gYUV422HPlanartoBGR565TopDown_Rotate))
        result = gYUV422HPlanartoBGR565TopDown_Rotate(&frame, destination, uint32_t(x), uint32_t(y), uint16_t(srcW),
                                                      uint16_t(srcH), uint16_t(dstX), uint16_t(dstY), uint16_t(dstW),
                                                      uint16_t(dstH), code | (high & 0xff00u) << 8);
    else
        return;
    src.check();
    if (refused) {
        require(result == -1, "a null pointer or a bad code was not refused");
        surface.checkUntouched();
        return;
    }
    require(result == 0, "a valid call did not return 0");
    if (op != 7)
        x &= ~1, y &= ~1;
    // The clipped size of the source rectangle; its image on the surface is
    // the only area that may change.
    const int32_t cw = min3(op == 6 ? srcW & ~1 : srcW, w - x, quarter ? sh - dstY : sw - dstX);
    const int32_t ch = min3(op == 6 ? srcH & ~1 : srcH, h - y, quarter ? sw - dstX : sh - dstY);
    surface.checkOutside(sw, dstX, dstY, quarter ? ch : cw, quarter ? cw : ch);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    return run(data, size,
               {[](FuzzedDataProvider &in, Random &rng) { wholeImage(in, rng, pick(in, 0, 2)); }, toBgr24,
                [](FuzzedDataProvider &in, Random &rng) { rectangle(in, rng, pick(in, 4, 7)); }});
}
