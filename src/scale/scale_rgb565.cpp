// Bilinear scaler for packed RGB565 images. Shares the weights and the
// position format with the plane scaler but not its walk: the step spans the
// whole extent, positions after the first carry a +1, taps are always
// neighbours, and the last target column and row repeat the ones before.
#include <cstddef>
#include <cstring>

#include "scale/bilinear.h"
#include "scale/kernels.h"

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

// The vector walk splits each channel's blend in two passes, as the plane
// scalers' walk does (scale/bilinear_walk.h): a horizontal one per source
// row and channel, then a vertical one per target row that also packs. The
// target columns [from, from + n) of a row are set up once per call.
class PixelStrip {
public:
    static constexpr int32_t kWidth = 512;

    // Columns at 1, 1 + stepX, ...; a source row has `readable` pixels from
    // the rectangle's corner column to its end; from column edgeFrom on, the
    // image's last row takes its left tap for its right one.
    PixelStrip(const ScaleKernels &k, int32_t from, int32_t n, int32_t stepX, int32_t readable, int32_t edgeFrom)
        : k_(k), n_(n), edgeFrom_(edgeFrom - from)
    {
        int32_t pos = 1 + from * stepX;
        for (int32_t i = 0; i < n; ++i, pos += stepX) {
            col_[i] = positionIndex(pos);
            phase_[i] = static_cast<uint16_t>(positionPhase(pos));
        }
        // The most lanes (8, 4 or 2) whose taps always lie in 8 pixels.
        for (size_ = 8; size_ >= 2; size_ >>= 1)
            if (((int64_t(size_ - 1) * stepX) >> kPositionBits) + 2 <= 7)
                break;
        while (size_ >= 2 && (count_ + 1) * size_ <= n && col_[count_ * size_] + 8 <= readable) {
            fill(groups_[count_], count_ * size_);
            ++count_;
        }
        if (size_ < 2)
            size_ = 0;
        edgeCount_ = 0;
        while (edgeCount_ < count_ && (edgeCount_ + 1) * size_ <= edgeFrom_)
            ++edgeCount_;
    }

    // One target row from the source rows at `upper` and `lower` at phase py;
    // `lowerIsLast` when the lower row is the image's last.
    void row(const uint16_t *upper, const uint16_t *lower, bool lowerIsLast, int32_t py, uint16_t *out)
    {
        const int32_t s = upper == held_[1] ? 1 : 0; // keep what the last row filtered
        const int16_t *const *u = filtered(upper, s, false);
        const int16_t *const *l = py ? filtered(lower, 1 - s, lowerIsLast) : u; // weight 0: not read
        for (auto i = static_cast<int32_t>(k_.blendPixels(u, l, py, out, size_t(n_))); i < n_; ++i) {
            int32_t sum[3];
            for (int c = 0; c < 3; ++c)
                sum[c] = (8 - py) * u[c][i] + py * l[c][i];
            out[i] = static_cast<uint16_t>(((sum[0] << 2) & 0xF800) | ((sum[1] >> 3) & 0x07E0) | (sum[2] >> 9));
        }
    }

private:
    void fill(PixelGroup &g, int32_t first) const
    {
        g.base = col_[first];
        for (int32_t t = 0; t < 8; ++t) {
            const int32_t lane = first + (t < size_ ? t : 0);
            const auto left = static_cast<uint8_t>(2 * (col_[lane] - g.base));
            g.left[2 * t] = left;
            g.left[2 * t + 1] = static_cast<uint8_t>(left + 1);
            g.right[2 * t] = static_cast<uint8_t>(left + 2);
            g.right[2 * t + 1] = static_cast<uint8_t>(left + 3);
            g.phase[t] = phase_[lane];
        }
    }

    // The horizontal pass of the source row at `src`, from the slot that
    // holds it or else into slot `s`.
    const int16_t *const *filtered(const uint16_t *src, int32_t s, bool atEnd)
    {
        if (held_[s] != src && held_[1 - s] == src)
            s = 1 - s;
        int16_t *const *h = h_[s];
        if (held_[s] == src)
            return h;
        held_[s] = src;
        const int32_t count = atEnd ? edgeCount_ : count_;
        k_.filterPixels(src, groups_, size_t(count), size_t(size_), h);
        for (int32_t i = count * size_; i < n_; ++i) {
            const uint16_t a = src[col_[i]], b = src[col_[i] + (atEnd && i >= edgeFrom_ ? 0 : 1)];
            const int32_t px = phase_[i];
            h[0][i] = static_cast<int16_t>((8 - px) * red(a) + px * red(b));
            h[1][i] = static_cast<int16_t>((8 - px) * green(a) + px * green(b));
            h[2][i] = static_cast<int16_t>((8 - px) * blue(a) + px * blue(b));
        }
        return h;
    }

    const ScaleKernels &k_;
    int32_t n_, edgeFrom_, size_ = 0, count_ = 0, edgeCount_ = 0;
    int32_t col_[kWidth];
    uint16_t phase_[kWidth];
    PixelGroup groups_[kWidth / 2];
    const uint16_t *held_[2] = {nullptr, nullptr};
    int16_t samples_[2][3][kWidth + 8]; // a group stores eight lanes
    int16_t *const h_[2][3] = {{samples_[0][0], samples_[0][1], samples_[0][2]},
                               {samples_[1][0], samples_[1][1], samples_[1][2]}};
};

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
    if (const ScaleKernels *k = scaleKernels()) {
        for (int32_t i0 = 0; i0 < dstW - 1; i0 += PixelStrip::kWidth) {
            PixelStrip strip(*k, i0, min32(PixelStrip::kWidth, dstW - 1 - i0), stepX, sourceWidth - r.x,
                             cornerAtEnd ? edgeFrom : dstW);
            int32_t posY = 1;
            for (int32_t j = 0; j < dstH - 1; ++j, posY += stepY) {
                int32_t row = positionIndex(posY);
                if (row == r.h - 1)
                    --row;
                const uint16_t *upper = corner + row * stride;
                strip.row(upper, upper + stride, row == r.h - 2, positionPhase(posY), out + j * ptrdiff_t(dstW) + i0);
            }
        }
        for (int32_t j = 0; j < dstH - 1; ++j, out += dstW)
            out[dstW - 1] = out[dstW - 2];
        std::memcpy(out, out - dstW, static_cast<size_t>(dstW) * sizeof(uint16_t));
        return;
    }
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
