// Bilinear scaler for packed RGB565 images. Shares the weights and the
// position format with the plane scaler but not its walk: the step spans the
// whole extent, positions after the first carry a +1, taps are always
// neighbours, and the last target column and row repeat the ones before.
#include <cstddef>
#include <cstring>

#include "scale/bilinear.h"

namespace pixmill {
namespace {

// Channels as bytes with their bits at the top, by position alone.
PIXMILL_INLINE int32_t red(uint16_t p) { return (p >> 8) & 0xF8; }
PIXMILL_INLINE int32_t green(uint16_t p) { return (p >> 3) & 0xFC; }
PIXMILL_INLINE int32_t blue(uint16_t p) { return (p << 3) & 0xFF; }

// Each channel blended on its own; the sums are 64 times a byte value and
// keep their top bits only.
PIXMILL_INLINE uint16_t blendPixel(const WeightRow<uint8_t> &w, int32_t px, uint16_t a, uint16_t b, uint16_t c,
                                   uint16_t d)
{
    const int32_t w00 = w.w00[px], w01 = w.w01[px], w10 = w.w10[px], w11 = w.w11[px];
    const int32_t r = w00 * red(a) + w01 * red(b) + w10 * red(c) + w11 * red(d);
    const int32_t g = w00 * green(a) + w01 * green(b) + w10 * green(c) + w11 * green(d);
    const int32_t bl = w00 * blue(a) + w01 * blue(b) + w10 * blue(c) + w11 * blue(d);
    return static_cast<uint16_t>(((r << 2) & 0xF800) | ((g >> 3) & 0x07E0) | (bl >> 9));
}

// Target columns [from, to) of one row, from position posX on. The lower
// right tap is lowerRight samples right of the lower left one.
PIXMILL_INLINE int32_t scaleColumns(const uint16_t *upper, const uint16_t *lower, uint16_t *out, int32_t from,
                                    int32_t to, int32_t posX, int32_t stepX, int32_t lowerRight,
                                    const WeightRow<uint8_t> &w)
{
    for (out += from; from < to; ++from, ++out, posX += stepX) {
        const int32_t col = positionIndex(posX);
        *out = blendPixel(w, positionPhase(posX), upper[col], upper[col + 1], lower[col], lower[col + lowerRight]);
    }
    return posX;
}

void gScalePlaneRGB565(const uint16_t *source, uint16_t *target, int32_t sourceWidth, int32_t sourceHeight,
                       int32_t dstW, int32_t dstH, int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH)
{
    if (!source || !target)
        return;
    // Served: a rectangle of at least one column and two rows inside the
    // image, a target of at least 2 x 2, extents whose positions fit.
    SourceRect r{srcX, srcY, srcW, srcH};
    if (!limitToPlane(r, sourceWidth, sourceHeight) || r.h < 2 || r.w >= kPositionLimit || r.h >= kPositionLimit ||
        dstW < 2 || dstH < 2)
        return;
    const int32_t stepX = (r.w << kPositionBits) / dstW;
    const int32_t stepY = (r.h << kPositionBits) / dstH;

    const ptrdiff_t stride = sourceWidth;
    const uint16_t *corner = source + r.y * stride + r.x;

    // The right taps are never limited: at col = srcW - 1 they are the pixels
    // that follow in memory. When the rectangle touches the image's right and
    // bottom edges, the lower one of those is past the image's end; there the
    // lower left tap (the image's last pixel) stands in for it. Columns from
    // edgeFrom on have col = srcW - 1.
    const bool cornerAtEnd = r.x + r.w == sourceWidth && r.y + r.h == sourceHeight;
    const int32_t edgeFrom = firstReaching(1, stepX, dstW - 1, r.w - 1);

    // Position 1 has index 0 and phase 0, the same as the first row's and
    // first column's position 0; and with srcH >= 2 row 0 is never lowered.
    uint16_t *out = target;
    int32_t posY = 1;
    for (int32_t j = 0; j < dstH - 1; ++j, posY += stepY, out += dstW) {
        int32_t row = positionIndex(posY);
        if (row == r.h - 1)
            --row; // keeps the lower taps inside the rectangle
        const uint16_t *upper = corner + row * stride;
        const uint16_t *lower = upper + stride;
        const WeightRow<uint8_t> w = weightRow(BilinearWeights, positionPhase(posY));
        const int32_t split = cornerAtEnd && row == r.h - 2 ? edgeFrom : dstW - 1;
        const int32_t posX = scaleColumns(upper, lower, out, 0, split, 1, stepX, 1, w);
        scaleColumns(upper, lower, out, split, dstW - 1, posX, stepX, 0, w);
        out[dstW - 1] = out[dstW - 2];
    }
    std::memcpy(out, out - dstW, static_cast<size_t>(dstW) * sizeof(uint16_t));
}

} // namespace
} // namespace pixmill

extern "C" PIXMILL_API void gScaleRGB565Frame(const uint16_t *source, uint16_t *target, int32_t sourceWidth,
                                              int32_t sourceHeight, int32_t dstW, int32_t dstH)
{
    pixmill::gScalePlaneRGB565(source, target, sourceWidth, sourceHeight, dstW, dstH, 0, 0, sourceWidth,
                               sourceHeight);
}

extern "C" PIXMILL_API void gScaleRGB565CroppedFrame(const uint16_t *source, uint16_t *target, int32_t sourceWidth,
                                                     int32_t sourceHeight, int32_t dstW, int32_t dstH, int32_t srcX,
                                                     int32_t srcY, int32_t srcW, int32_t srcH)
{
    pixmill::gScalePlaneRGB565(source, target, sourceWidth, sourceHeight, dstW, dstH, srcX, srcY, srcW, srcH);
}
