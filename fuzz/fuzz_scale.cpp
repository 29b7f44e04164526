// Scaling: the free-ratio frame scalers, the RGB565 scaler and the four
// fixed-ratio frame scalers. Sizes and rectangles come from the input and
// stay within what each operation asks of its caller; only the target planes
// may change, and only inside them.
#include "fuzz_support.h"

using namespace fuzz;

namespace {

// gScaleFrame, gScaleCroppedFrame (4:2:0) and gScaleCroppedFrameYUV422.
void freeRatio(FuzzedDataProvider &in, Random &rng)
{
    const int op = pick(in, 0, 2);
    const bool yuv422 = op == 2;
    const int32_t w = pick(in, 2, 60), h = pick(in, yuv422 ? 1 : 2, 60);
    SourceFrame src(w, h, size_t(w >> 1) * size_t(yuv422 ? h : h >> 1), rng);
    const int32_t tw = pick(in, 1, 60), th = pick(in, 1, 60);
    TargetFrame out(tw, th, size_t(tw) * size_t(th), size_t(tw >> 1) * size_t(yuv422 ? th : th >> 1), rng);
    // The corner lies inside every plane and every rectangle keeps a sample.
    const uint32_t x = uint32_t(2 * pick(in, 0, (w >> 1) - 1) + pick(in, 0, 1) * (w > 2));
    const uint32_t y = uint32_t(yuv422 ? pick(in, 0, h - 1) : 2 * pick(in, 0, (h >> 1) - 1) + pick(in, 0, 1) * (h > 2));
    const uint16_t srcW = uint16_t(pick(in, 2, 80)), srcH = uint16_t(pick(in, yuv422 ? 1 : 2, 80));
    if (op == 0 && defined(gScaleFrame))
        gScaleFrame(&src.frame, &out.frame);
    else if (op == 1 && defined(gScaleCroppedFrame))
        gScaleCroppedFrame(&src.frame, &out.frame, x, y, srcW, srcH);
    else if (op == 2 && defined(gScaleCroppedFrameYUV422))
        gScaleCroppedFrameYUV422(&src.frame, &out.frame, x, y, srcW | uint32_t(rng.word()) << 16, srcH);
    out.check();
    src.check();
}

void rgb565(FuzzedDataProvider &in, Random &rng)
{
    const int32_t sw = pick(in, 1, 60), sh = pick(in, 2, 60);
    Source<uint16_t> image(size_t(sw) * size_t(sh), rng);
    const int32_t dw = pick(in, 2, 80), dh = pick(in, 2, 80);
    Target<uint16_t> out(size_t(dw) * size_t(dh), rng);
    if (in.ConsumeBool()) {
        if (!defined(gScaleRGB565Frame))
            return;
        gScaleRGB565Frame(image.ptr(), out.begin(), sw, sh, dw, dh);
    } else {
        if (!defined(gScaleRGB565CroppedFrame))
            return;
        // The limited rectangle keeps at least one column and two rows.
        const int32_t x = pick(in, 0, sw - 1), y = pick(in, 0, sh - 2);
        gScaleRGB565CroppedFrame(image.ptr(), out.begin(), sw, sh, dw, dh, x, y, pick(in, 1, 80), pick(in, 2, 80));
    }
    out.check();
    image.check();
}

// The fixed ratios: each export has its own fitting sizes, and a corner away
// from (0, 0) reads a whole plane's run from the corner on, so the source
// planes reach that far.
void fixedRatio(FuzzedDataProvider &in, Random &rng)
{
    const int op = pick(in, 0, 3);
    const int32_t x = pick(in, 0, 6), y = pick(in, 0, 6);
    int32_t w = 0, h = 0, tw = 0, th = 0, rows = 0; // rows: the run read from the corner
    switch (op) {
    case 0: // 2:1, TW a multiple of 4, W = 2 TW, H at least 2 TH
        tw = 4 * pick(in, 1, 10), th = 2 * pick(in, 1, 15), w = 2 * tw, rows = 2 * th, h = rows + pick(in, 0, 3);
        break;
    case 1: // 1:2 goes by the source's size, even and at least 2
        w = 2 * pick(in, 1, 20), h = 2 * pick(in, 1, 20), tw = pick(in, 0, 100), th = pick(in, 0, 100), rows = h;
        break;
    case 2: // 1:4, TW and TH multiples of 8 and at least 16, rectangle inside
        tw = 8 * pick(in, 2, 8), th = 8 * pick(in, 2, 8);
        w = x + tw / 4 + pick(in, 0, 4), h = y + th / 4 + pick(in, 0, 4);
        break;
    default: // 4:3, TW and TH multiples of 6, W = TW * 4 / 3, H at least TH * 4 / 3
        tw = 6 * pick(in, 1, 8), th = 6 * pick(in, 1, 8), w = tw * 4 / 3, rows = th * 4 / 3, h = rows + pick(in, 0, 3);
        break;
    }
    // Exactly the bytes up to the last one read, or the whole plane.
    const size_t luma = std::max(size_t(y + rows) * size_t(w) + size_t(x), size_t(w) * size_t(h));
    const size_t chroma = std::max(size_t((y >> 1) + (rows >> 1)) * size_t(w >> 1) + size_t(x >> 1),
                                   size_t(w >> 1) * size_t(h >> 1));
    SourceFrame src(w, h, chroma, rng, luma);
    // 1:2 writes twice the source's size on both axes, whatever TW and TH say.
    const bool up2 = op == 1;
    TargetFrame out(tw, th, up2 ? 4 * size_t(w) * size_t(h) : size_t(tw) * size_t(th),
                    up2 ? 4 * size_t(w >> 1) * size_t(h >> 1) : size_t(tw >> 1) * size_t(th >> 1), rng);
    auto fn = op == 0 ? gScaleCroppedFrame_downby2
                      : op == 1 ? gScaleCroppedFrame_upby2
                                : op == 2 ? gScaleCroppedFrame_upby4 : gScaleCroppedFrame_downto3by3;
    if (!defined(fn))
        return;
    fn(&src.frame, &out.frame, uint32_t(x), uint32_t(y), rng.word(), rng.word());
    out.check();
    src.check();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    return run(data, size, {freeRatio, rgb565, fixedRatio});
}
