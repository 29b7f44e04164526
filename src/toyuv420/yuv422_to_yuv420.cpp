// Planar 4:2:2 rectangle -> whole planar 4:2:0 frame, cropped and scaled in
// one pass. Bilinear with the 32-bit weights; positions start at 1 and step
// by extent / target size; taps are always neighbours. Chroma is sampled on
// even target rows only, from the same source row and phase as their luma.
// The last two luma columns and rows, and the last chroma column and row,
// repeat their neighbour.
#include <cstddef>
#include <cstring>

#include "frame/frame.h"
#include "scale/bilinear.h"
#include "scale/bilinear_walk.h"
#include "toyuv420/yuv422_scale_kernels.h"

namespace pixmill {
namespace {

// A source tap row pair and its vertical weights.
struct TapRows {
    const uint8_t *upper;
    const uint8_t *lower;
    WeightRow<uint32_t> w;
};

// Target samples [from, to) of a row from position q on; the right taps lie
// `right` samples right of the left ones. Returns the next position.
PIXMILL_INLINE int32_t sampleRun(const TapRows &t, uint8_t *out, int32_t from, int32_t to, int32_t q, int32_t step,
                                 int32_t right)
{
    for (out += from; from < to; ++from, ++out, q += step) {
        const int32_t col = positionIndex(q);
        *out = static_cast<uint8_t>(
            blend(t.w, positionPhase(q), t.upper[col], t.upper[col + right], t.lower[col], t.lower[col + right]));
    }
    return q;
}

// One plane's source: its corner and row stride, how many samples of a
// target row are computed, and from which of them on a sample sits on the
// frame's last column, where its right taps repeat that column instead of
// reading past the row's end.
struct Plane {
    const uint8_t *corner;
    ptrdiff_t stride;
    int32_t count;
    int32_t edgeFrom;
};

// One target row of `width` samples: `count` computed at 1, 1 + step, ...,
// the rest repeating the last of them.
void sampleRow(const Plane &p, const TapRows &t, uint8_t *out, int32_t width, int32_t step)
{
    const int32_t q = sampleRun(t, out, 0, p.edgeFrom, 1, step, 1);
    sampleRun(t, out, p.edgeFrom, p.count, q, step, 0);
    for (int32_t i = p.count; i < width; ++i)
        out[i] = out[p.count - 1];
}

// The vector walk of one plane: `rows` target rows `width` wide, at row
// positions 1, 1 + rowStep, ... (looked up with the guard at lastRow), each
// with p.count samples computed and the rest repeating the last of them.
// When both steps are whole samples every phase is 0 and each sample is its
// upper left tap: a copy or a pick of every kx-th sample.
void scaleFast(const Yuv422ScaleKernels &k, const Plane &p, int32_t readable, int32_t lastRow, uint8_t *out,
               int32_t width, int32_t rows, int32_t stepX, int32_t rowStep)
{
    auto upperRow = [&](int32_t pos) {
        int32_t row = positionIndex(pos);
        if (row == lastRow)
            --row;
        return p.corner + row * p.stride;
    };
    constexpr int32_t kSample = 1 << kPositionBits;
    if (stepX % kSample == 0 && rowStep % kSample == 0) {
        const int32_t kx = stepX / kSample;
        uint8_t *o = out;
        for (int32_t j = 0, pos = 1; j < rows; ++j, pos += rowStep, o += width) {
            const uint8_t *src = upperRow(pos);
            if (kx == 1) {
                std::memcpy(o, src, size_t(p.count));
                continue;
            }
            int32_t i = kx == 2 ? int32_t(k.pickEven(src, o, size_t(min32(p.count, readable / 2)))) : 0;
            for (src += i * kx; i < p.count; ++i, src += kx)
                o[i] = *src;
        }
    } else {
        const Columns columns{1, stepX, 0, 1, p.edgeFrom, readable};
        const int32_t stripWidth = BilinearStrip::width(columns);
        for (int32_t i0 = 0; i0 < p.count; i0 += stripWidth) {
            BilinearStrip strip(k.bilinear, columns, i0, min32(stripWidth, p.count - i0));
            uint8_t *o = out + i0;
            for (int32_t j = 0, pos = 1; j < rows; ++j, pos += rowStep, o += width) {
                const uint8_t *upper = upperRow(pos);
                strip.row(upper, upper + p.stride, positionPhase(pos), o);
            }
        }
    }
    for (int32_t j = 0; j < rows; ++j, out += width)
        for (int32_t i = p.count; i < width; ++i)
            out[i] = out[p.count - 1];
}

} // namespace
} // namespace pixmill

extern "C" PIXMILL_API int32_t gYUV422toYUV420(const Frame *source, Frame *target, uint32_t srcX, uint32_t srcY,
                                               uint16_t srcW, uint16_t srcH)
{
    using namespace pixmill;
    const Frame &s = *source;
    const Frame &t = *target;
    const int32_t W = s.width, H = s.height, TW = t.width, TH = t.height;
    // Served: an even source width, at least two source rows, a corner inside
    // the frame (a corner of 2^31 or more reads as negative and is refused),
    // extents whose positions fit, and an even target of at least 4 x 4.
    // Anything else is left alone.
    SourceRect r{static_cast<int32_t>(srcX), static_cast<int32_t>(srcY), srcW, srcH};
    if ((W & 1) || H < 2 || !limitToPlane(r, W, H) || r.w >= kPositionLimit || r.h >= kPositionLimit ||
        TW < 4 || TH < 4 || ((TW | TH) & 1))
        return 0;
    const int32_t x0 = r.x, y0 = r.y;
    const int32_t stepX = (r.w << kPositionBits) / TW;
    const int32_t stepY = (r.h << kPositionBits) / TH;

    const ptrdiff_t cs = chromaStride(s);
    const ptrdiff_t chromaCorner = y0 * cs + (x0 >> 1);
    const int32_t lumaCount = TW - 2, chromaCount = (TW >> 1) - 1;
    const Plane luma{s.y + y0 * ptrdiff_t(W) + x0, W, lumaCount, firstReaching(1, stepX, lumaCount, W - x0 - 1)};
    const int32_t chromaEdge = firstReaching(1, stepX, chromaCount, int32_t(cs) - (x0 >> 1) - 1);
    const Plane cb{s.u + chromaCorner, cs, chromaCount, chromaEdge};
    const Plane cr{s.v + chromaCorner, cs, chromaCount, chromaEdge};

    // The frame's last row, counted from the corner: a tap row there moves up
    // one, keeping its phase, so that the lower taps stay in the frame.
    const int32_t lastRow = H - y0 - 1;
    auto tapRows = [lastRow](const Plane &p, int32_t pos) {
        int32_t row = positionIndex(pos);
        if (row == lastRow)
            --row;
        const uint8_t *upper = p.corner + row * p.stride;
        return TapRows{upper, upper + p.stride, weightRow(BilinearWeights32, positionPhase(pos))};
    };

    uint8_t *yOut = t.y;
    uint8_t *uOut = t.u;
    uint8_t *vOut = t.v;
    const ptrdiff_t tcs = TW >> 1;
    if (const Yuv422ScaleKernels *k = yuv422ScaleKernels()) {
        // Plane by plane; chroma rows stand where the even luma rows do.
        const int32_t chromaReadable = int32_t(cs) - (x0 >> 1), chromaRows = (TH >> 1) - 1;
        scaleFast(*k, luma, W - x0, lastRow, yOut, TW, TH - 2, stepX, stepY);
        scaleFast(*k, cb, chromaReadable, lastRow, uOut, TW >> 1, chromaRows, stepX, 2 * stepY);
        scaleFast(*k, cr, chromaReadable, lastRow, vOut, TW >> 1, chromaRows, stepX, 2 * stepY);
        yOut += (TH - 2) * ptrdiff_t(TW);
        uOut += chromaRows * tcs;
        vOut += chromaRows * tcs;
    } else {
        int32_t pos = 1;
        for (int32_t m = 0; m < (TH >> 1) - 1; ++m, uOut += tcs, vOut += tcs) {
            sampleRow(luma, tapRows(luma, pos), yOut, TW, stepX);
            sampleRow(cb, tapRows(cb, pos), uOut, TW >> 1, stepX);
            sampleRow(cr, tapRows(cr, pos), vOut, TW >> 1, stepX);
            pos += stepY;
            yOut += TW;
            sampleRow(luma, tapRows(luma, pos), yOut, TW, stepX);
            pos += stepY;
            yOut += TW;
        }
    }
    // The last two luma rows and the last chroma row repeat the row above.
    std::memcpy(yOut, yOut - TW, size_t(TW));
    std::memcpy(yOut + TW, yOut - TW, size_t(TW));
    std::memcpy(uOut, uOut - tcs, size_t(tcs));
    std::memcpy(vOut, vOut - tcs, size_t(tcs));
    return 0;
}
