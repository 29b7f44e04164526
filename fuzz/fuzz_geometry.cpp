// Rotation and mirroring: whole frames, rectangles of 16-bit images, the
// 16-to-24-bit rectangle turn and the two mirrors. Sizes, rectangles, codes
// and modes come from the input and stay within what each operation asks.
#include "fuzz_support.h"

using namespace fuzz;

namespace {

// Whole-frame turns; `kind` 0: 4:2:0, 1: 4:2:2, 2: luma alone.
void rotateFrame(FuzzedDataProvider &in, Random &rng)
{
    const int kind = pick(in, 0, 2);
    auto fn = kind == 0 ? gRotateFrame : kind == 1 ? gRotate422Frame : gRotateMonochromeFrame;
    if (!defined(fn))
        return;
    const uint32_t code = in.ConsumeBool() ? uint32_t(pick(in, 0, 3)) : in.ConsumeIntegral<uint32_t>();
    // Any size without a turn; even sizes otherwise, except an odd height
    // for the half turn of 4:2:2.
    int32_t w = pick(in, 0, 40), h = pick(in, 0, 40);
    if (code != ROTATE_NONE)
        w &= ~1, h &= kind == 1 && code == ROTATE_180 ? ~0 : ~1;
    const size_t luma = size_t(w) * size_t(h);
    const size_t plane = kind == 0 ? size_t(w >> 1) * size_t(h >> 1) : size_t(w >> 1) * size_t(h);
    // The plain copy moves (W * H) >> 2 or >> 1 chroma bytes, more than the
    // plane at odd sizes.
    const size_t chroma = kind == 2 ? 0 : std::max(plane, kind == 0 ? luma >> 2 : luma >> 1);
    SourceFrame src(w, h, chroma, rng);
    TargetFrame out(pick(in, 0, 100), pick(in, 0, 100), luma, chroma, rng);
    if (kind == 2) // the luma turn looks at no chroma plane
        src.frame.u = src.frame.v = out.frame.u = out.frame.v = nullptr;
    const Frame before = out.frame;
    fn(&src.frame, &out.frame, code);
    require(std::memcmp(&before, &out.frame, sizeof before) == 0, "the target record changed");
    if (code > 3)
        out.checkUntouched();
    out.check();
    src.check();
}

// Clipped size of the 16-bit rectangle turns: every limit cuts the far end.
struct Clip {
    int32_t cw, ch;
};
Clip clip(int32_t sourceWidth, int32_t sourceHeight, int32_t &srcX, int32_t &srcY, int32_t srcW, int32_t srcH,
          int32_t &dstX, int32_t &dstY, int32_t dw, int32_t dh, bool quarter)
{
    srcX = std::min(srcX, sourceWidth), srcY = std::min(srcY, sourceHeight);
    dstX = std::min(dstX, dw), dstY = std::min(dstY, dh);
    srcW = std::min(srcW, sourceWidth - srcX), srcH = std::min(srcH, sourceHeight - srcY);
    if (quarter)
        return {std::min(srcW, dh - dstY), std::min(srcH, dw - dstX)};
    return {std::min(srcW, dw - dstX), std::min(srcH, dh - dstY)};
}

// gRotateRGB16 (`to24` false) and gRotateRGB16toBGR24 (`to24` true).
void rotateRectangle(FuzzedDataProvider &in, Random &rng, bool to24)
{
    if (to24 ? !defined(gRotateRGB16toBGR24) : !defined(gRotateRGB16))
        return;
    const int32_t sourceWidth = pick(in, 0, 40), sourceHeight = pick(in, 0, 40);
    Source<uint16_t> image(size_t(sourceWidth) * size_t(sourceHeight), rng);
    // Positions are not negative; sizes may be anything.
    int32_t srcX = pick(in, 0, 50), srcY = pick(in, 0, 50), dstX = pick(in, 0, 50), dstY = pick(in, 0, 50);
    const int32_t srcW = pick(in, -5, 50), srcH = pick(in, -5, 50);
    const int32_t dw = pick(in, 0, 40), dh = pick(in, 0, 40);
    const int32_t stride = to24 ? 3 * dw + pick(in, 0, 2) : dw; // in elements of the target
    const uint32_t code = uint32_t(pick(in, 0, 4));
    const bool nullSource = pick(in, 0, 20) == 0, nullTarget = pick(in, 0, 20) == 0;
    Target<uint16_t> out16(to24 ? 0 : size_t(dw) * size_t(dh), rng);
    Target<uint8_t> out24(to24 ? size_t(stride) * size_t(dh) : 0, rng);
    const uint16_t *source = nullSource ? nullptr : image.ptr();
    const int32_t x0 = srcX, y0 = srcY, dx0 = dstX, dy0 = dstY;
    const int32_t result =
        to24 ? gRotateRGB16toBGR24(source, nullTarget ? nullptr : out24.begin(), sourceWidth, sourceHeight, x0, y0,
                                   srcW, srcH, dx0, dy0, dh, stride, code)
             : gRotateRGB16(source, nullTarget ? nullptr : out16.begin(), sourceWidth, sourceHeight, x0, y0, srcW,
                            srcH, dx0, dy0, dw, dh, code);
    image.check();
    if (nullSource || nullTarget || code > 3) {
        require(result == -1, "a null pointer or a bad code was not refused");
        out16.checkUntouched();
        out24.checkUntouched();
        return;
    }
    require(result == 0, "a valid call did not return 0");
    const bool quarter = (code & 1) != 0;
    const Clip c = clip(sourceWidth, sourceHeight, srcX, srcY, srcW, srcH, dstX, dstY, dw, dh, quarter);
    const int32_t w = quarter ? c.ch : c.cw, h = quarter ? c.cw : c.ch;
    const bool empty = c.cw <= 0 || c.ch <= 0;
    if (to24)
        out24.checkOutside(stride, 3 * dstX, dstY, empty ? 0 : 3 * w, h);
    else
        out16.checkOutside(std::max(dw, 1), dstX, dstY, empty ? 0 : w, h);
}

void mirror(FuzzedDataProvider &in, Random &rng)
{
    const uint32_t mode = in.ConsumeBool() ? uint32_t(pick(in, 0, 3)) : in.ConsumeIntegral<uint32_t>();
    if (in.ConsumeBool()) {
        if (!defined(gMirrorImageRGB565))
            return;
        const int32_t w = pick(in, -2, 40), h = pick(in, -2, 40);
        const size_t count = w > 0 && h > 0 ? size_t(w) * size_t(h) : 0;
        Source<uint16_t> image(count, rng);
        Target<uint16_t> out(count, rng);
        const int32_t result = gMirrorImageRGB565(image.ptr(), out.begin(), w, h, mode);
        require(result == (w < 0 || h < 0 ? -1 : 0), "wrong result");
        out.check();
        image.check();
        return;
    }
    if (!defined(gMirrorImageYUV))
        return;
    const int32_t w = pick(in, 0, 40), h = pick(in, 0, 40), layout = pick(in, -1, 2);
    const size_t luma = size_t(w) * size_t(h), chroma = size_t(w >> 1) * size_t(layout == 1 ? h : h >> 1);
    TargetFrame frame(w, h, luma, chroma, rng), other(pick(in, 0, 100), pick(in, 0, 100), luma, chroma, rng);
    const uint8_t flag = in.ConsumeBool() ? uint8_t(pick(in, 0, 2)) : in.ConsumeIntegral<uint8_t>();
    const bool toDestination = flag == 1;
    Frame expected = other.frame;
    if (toDestination && (layout == 0 || layout == 1))
        expected.width = frame.frame.width, expected.height = frame.frame.height, expected.tag = frame.frame.tag;
    const int32_t result = gMirrorImageYUV(&frame.frame, &other.frame, layout, mode, flag);
    require(std::memcmp(&expected, &other.frame, sizeof expected) == 0, "the destination record is wrong");
    if (layout != 0 && layout != 1) {
        require(result == -1, "a bad chroma layout was not refused");
        frame.checkUntouched();
        other.checkUntouched();
        return;
    }
    require(result == 0, "a valid call did not return 0");
    frame.check();
    other.check();
    if (toDestination)
        frame.checkUntouched();
    else
        other.checkUntouched();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    return run(data, size,
               {rotateFrame, [](FuzzedDataProvider &in, Random &rng) { rotateRectangle(in, rng, false); },
                [](FuzzedDataProvider &in, Random &rng) { rotateRectangle(in, rng, true); }, mirror});
}
