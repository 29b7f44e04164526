// The pieces shared by the rectangle conversions to RGB565 with rotation:
// where a source pixel lands for each code, the dispatch to one worker per
// code, and the walks over 2x2 blocks and over pixel pairs of one row.
//
// A worker places the source rectangle with a Target: the word of source
// pixel (0, 0) and the constant steps that one source column and one source
// row move on the surface. Every walk advances running pointers by these
// steps only.
#ifndef PIXMILL_RECT_WALK_H
#define PIXMILL_RECT_WALK_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/frame.h"
#include "yuv2rgb/colour.h"
#include "yuv2rgb/kernels.h"

namespace pixmill {

// Surface moves, in columns (x) and rows (y), for one step of the source.
struct Step {
    int32_t x;
    int32_t y;
};

// How a code places the source: the moves for one source column and for one
// source row.
struct Placement {
    Step col;
    Step row;
};

// Rows written top-down, for a placed area w by h: ROTATE_NONE is a copy,
// ROTATE_90 turns clockwise in memory.
inline constexpr Placement TopDown[4] = {
    {{1, 0}, {0, 1}},   // ROTATE_NONE: (c, r)
    {{0, 1}, {-1, 0}},  // ROTATE_90:   (h - 1 - r, c)
    {{-1, 0}, {0, -1}}, // ROTATE_180:  (w - 1 - c, h - 1 - r)
    {{0, -1}, {1, 0}},  // ROTATE_270:  (r, w - 1 - c)
};

// Rows written bottom-up: ROTATE_NONE flips vertically, ROTATE_180
// horizontally, the quarter turns transpose along either diagonal.
inline constexpr Placement BottomUp[4] = {
    {{1, 0}, {0, -1}},  // ROTATE_NONE: (c, h - 1 - r)
    {{0, 1}, {1, 0}},   // ROTATE_90:   (r, c)
    {{-1, 0}, {0, 1}},  // ROTATE_180:  (w - 1 - c, r)
    {{0, -1}, {-1, 0}}, // ROTATE_270:  (h - 1 - r, w - 1 - c)
};

// The RGB565 surface: first word, row stride in words, and the corner of the
// destination rectangle on it.
struct Surface {
    uint16_t *base;
    ptrdiff_t stride;
    int32_t x;
    int32_t y;
};

struct Target {
    uint16_t *at;  // word of source pixel (0, 0)
    ptrdiff_t col; // move for one source column
    ptrdiff_t row; // move for one source row
};

// Places an area of w source columns by h source rows at the corner of `s`:
// the area starts on the side where the moves are positive.
PIXMILL_INLINE constexpr Target place(const Placement &p, const Surface &s, int32_t w, int32_t h)
{
    const ptrdiff_t x = s.x + (p.col.x < 0 ? w - 1 : 0) + (p.row.x < 0 ? h - 1 : 0);
    const ptrdiff_t y = s.y + (p.col.y < 0 ? w - 1 : 0) + (p.row.y < 0 ? h - 1 : 0);
    return {s.base + y * s.stride + x, p.col.x + p.col.y * s.stride, p.row.x + p.row.y * s.stride};
}

// The refusals shared by the four conversions: a null surface or plane, or a
// code above 3.
PIXMILL_INLINE bool refused(const Frame &f, const uint16_t *destination, uint32_t code)
{
    return destination == nullptr || f.y == nullptr || f.u == nullptr || f.v == nullptr || code > ROTATE_270;
}

// The start of the two signed forms: the checks before clipping, and the
// source corner with its lowest bits cleared. `result` is -1 for a refusal, 0
// when there is nothing to serve, 1 to go on. A corner left of or above the
// frame or the surface, or a surface of negative size, is served as an empty
// rectangle, so that nothing outside the surface is written.
struct SignedStart {
    int32_t result;
    int32_t x0;
    int32_t y0;
};

PIXMILL_INLINE SignedStart startSigned(const Frame &f, const uint16_t *destination, uint32_t code, int32_t srcX,
                                       int32_t srcY, int32_t dstX, int32_t dstY, int32_t dstW, int32_t dstH)
{
    if (refused(f, destination, code))
        return {-1, 0, 0};
    const bool empty = srcX < 0 || srcY < 0 || dstX < 0 || dstY < 0 || dstW < 0 || dstH < 0;
    return {empty ? 0 : 1, srcX & ~1, srcY & ~1};
}

// Calls Op::worker<code>(args...) for a code of 0 to 3, so that no walk ever
// tests the code.
template <class Op, class... Args>
PIXMILL_INLINE void dispatch(uint32_t code, const Args &...args)
{
    switch (code) {
    case ROTATE_NONE: Op::template worker<ROTATE_NONE>(args...); break;
    case ROTATE_90: Op::template worker<ROTATE_90>(args...); break;
    case ROTATE_180: Op::template worker<ROTATE_180>(args...); break;
    case ROTATE_270: Op::template worker<ROTATE_270>(args...); break;
    default: break;
    }
}

PIXMILL_INLINE uint16_t rgb565(const uint8_t *luma, const ChromaTerms &t, const Offsets &d)
{
    return packRgb565(pixel(*luma, t, d));
}

PIXMILL_INLINE ChromaTerms terms(const Coeffs &k, const uint8_t *u, const uint8_t *v)
{
    return chromaTerms<Terms::Truncating>(k, *u, *v);
}

// The part of the source that starts c columns and r rows into `s` (c even,
// and r even for 4:2:0), and the word of its first pixel on the surface.
PIXMILL_INLINE Source shifted(const Source &s, int32_t c, int32_t r, bool chromaPerRow)
{
    const ptrdiff_t chroma = (chromaPerRow ? r : r >> 1) * s.chromaStride + (c >> 1);
    return {s.y + r * s.lumaStride + c, s.u + chroma, s.v + chroma, s.lumaStride, s.chromaStride};
}

PIXMILL_INLINE Target shifted(const Target &t, int32_t c, int32_t r)
{
    return {t.at + c * t.col + r * t.row, t.col, t.row};
}

// Of a kernel pair (left to right, right to left), the one that writes where
// one source column moves one word, if any.
PIXMILL_INLINE PairKernel<uint16_t> alongRows(const PairKernel<uint16_t> *both, ptrdiff_t col)
{
    if (both == nullptr)
        return nullptr;
    return col == 1 ? both[LeftToRight] : col == -1 ? both[RightToLeft] : nullptr;
}

// The ew x eh (both even) top-left part of the rectangle in 2x2 blocks, with
// all of Dither2x2. 4:2:0 reads one chroma pair per block; 4:2:2
// (chromaPerRow) one per row of the block. `fast` is the kernel pair of the
// same conversion, or nullptr.
template <bool chromaPerRow>
PIXMILL_INLINE void convertBlocks(const Coeffs &k, const Source &s, const Target &t, int32_t ew, int32_t eh,
                                  const PairKernel<uint16_t> *fast)
{
    const PairKernel<uint16_t> along = alongRows(fast, t.col);
    const ptrdiff_t chromaPairStep = chromaPerRow ? 2 * s.chromaStride : s.chromaStride;
    const ptrdiff_t chromaSecondRow = chromaPerRow ? s.chromaStride : 0;
    uint16_t *rowOut = t.at;
    const uint8_t *yRow = s.y;
    const uint8_t *uRow = s.u;
    const uint8_t *vRow = s.v;
    for (int32_t r = 0; r < eh; r += 2) {
        uint16_t *a = rowOut;
        uint16_t *b = rowOut + t.row;
        const uint8_t *ya = yRow;
        const uint8_t *yb = yRow + s.lumaStride;
        const uint8_t *u = uRow;
        const uint8_t *v = vRow;
        int32_t c = 0;
        if (along) {
            const PairRows in{{ya, yb}, {u, u + chromaSecondRow}, {v, v + chromaSecondRow}};
            c = int32_t(2 * along(in, a, b, size_t(ew >> 1)));
            a += c * t.col;
            b += c * t.col;
            ya += c;
            yb += c;
            u += c >> 1;
            v += c >> 1;
        }
        for (; c < ew; c += 2) {
            const ChromaTerms ta = terms(k, u, v);
            a[0] = rgb565(ya, ta, Dither2x2[0][0]);
            a[t.col] = rgb565(ya + 1, ta, Dither2x2[0][1]);
            const ChromaTerms tb = chromaPerRow ? terms(k, u + chromaSecondRow, v + chromaSecondRow) : ta;
            b[0] = rgb565(yb, tb, Dither2x2[1][0]);
            b[t.col] = rgb565(yb + 1, tb, Dither2x2[1][1]);
            a += 2 * t.col;
            b += 2 * t.col;
            ya += 2;
            yb += 2;
            ++u;
            ++v;
        }
        rowOut += 2 * t.row;
        yRow += 2 * s.lumaStride;
        uRow += chromaPairStep;
        vRow += chromaPairStep;
    }
}

// One source row of w pixels in pairs that share a chroma pair, with the
// offsets of an even source row; an odd last pixel takes those of an even
// column. `out` is the word of the row's first pixel, `col` the move per
// pixel; `fast` the kernel pair of BT.709 rows, or nullptr.
PIXMILL_INLINE void convertRow(const Coeffs &k, const uint8_t *y, const uint8_t *u, const uint8_t *v,
                               uint16_t *out, ptrdiff_t col, int32_t w, const PairKernel<uint16_t> *fast)
{
    int32_t c = 0;
    if (const PairKernel<uint16_t> along = alongRows(fast, col)) {
        c = int32_t(2 * along(PairRows{{y, y}, {u, u}, {v, v}}, out, out, size_t(w >> 1)));
        out += c * col;
        y += c;
        u += c >> 1;
        v += c >> 1;
    }
    for (; c + 1 < w; c += 2) {
        const ChromaTerms t = terms(k, u++, v++);
        out[0] = rgb565(y, t, Dither2x2[0][0]);
        out[col] = rgb565(y + 1, t, Dither2x2[0][1]);
        out += 2 * col;
        y += 2;
    }
    if (w & 1)
        *out = rgb565(y, terms(k, u, v), Dither2x2[0][0]);
}

// Starts of the strips along one side of n units: every `strip` units from 0,
// the last one moved back to end at n (one short of an odd n), so that each
// starts on an even unit; none when n is below a strip.
struct StripStarts {
    int32_t covered; // units from 0 that the strips cover
    int32_t count;
    int32_t strip;
    PIXMILL_INLINE int32_t operator[](int32_t i) const
    {
        return i * strip < covered - strip ? i * strip : covered - strip;
    }
};

PIXMILL_INLINE StripStarts stripStarts(int32_t n, int32_t strip)
{
    const int32_t covered = n >= strip ? n & ~1 : 0;
    return {covered, (covered + strip - 1) / strip, strip};
}

// A w x h area under a quarter turn, with kernels: strips of kStripRows
// source rows go from the registers of the turn kernel straight onto the
// surface. The last strip overlaps the one before it, which it rewrites with
// the same words, so that only an odd last row, the columns of a strip
// narrower than a vector, an area lower than a strip, or one that is not
// turned, goes the plain way: `convert(source, target, w, h)` converts an
// area the walk's own way. Strips start on even rows, so that every pixel
// keeps its offsets.
template <class Convert>
PIXMILL_INLINE void convertTurned(const TurnKernel *turn, bool chromaPerRow, const Source &s, const Target &t,
                                  int32_t w, int32_t h, Convert convert)
{
    if (turn == nullptr || t.col == 1 || t.col == -1) {
        convert(s, t, w, h);
        return;
    }
    // Turned, a source row moves one word along the surface's rows. The
    // strips go in the order of rising addresses along those rows: written
    // the other way round, a 1080p quarter turn took two to four times as
    // long on a busy machine.
    const TurnKernel kernel = turn[t.row > 0 ? 0 : 1];
    const StripStarts rows = stripStarts(h, kStripRows);
    for (int32_t i = 0; i < rows.count; ++i) {
        const int32_t r = rows[t.row > 0 ? i : rows.count - 1 - i];
        const int32_t c = int32_t(2 * kernel(shifted(s, 0, r, chromaPerRow), t.at + r * t.row, t.col, size_t(w >> 1)));
        convert(shifted(s, c, r, chromaPerRow), shifted(t, c, r), w - c, kStripRows);
    }
    convert(shifted(s, 0, rows.covered, chromaPerRow), shifted(t, 0, rows.covered), w, h - rows.covered);
}

// The tail of the bottom-up ROTATE_NONE walk, which places rows from the full
// height ch: the odd last column repeats the word to its left, and then an odd
// top row repeats the row below it. Without a block there is nothing to repeat
// from, and nothing is written.
PIXMILL_INLINE void repeatOddEdges(const Target &t, int32_t cw, int32_t ch)
{
    const int32_t ew = cw & ~1;
    const int32_t eh = ch & ~1;
    if (ew == 0 || eh == 0)
        return;
    if (cw & 1) {
        uint16_t *p = t.at + ew * t.col;
        for (int32_t r = 0; r < eh; ++r, p += t.row)
            p[0] = p[-t.col];
    }
    if (ch & 1) {
        uint16_t *top = t.at + (ch - 1) * t.row;
        std::memcpy(top, top - t.row, static_cast<size_t>(cw) * sizeof(uint16_t));
    }
}

// The bottom-up walk of the two 601 conversions: whole 2x2 blocks only, rows
// placed from the bottom of the rectangle, and a tail under ROTATE_NONE alone.
template <bool chromaPerRow>
struct BottomUpBlocks {
    template <uint32_t code>
    static void worker(const Source &s, const Surface &d, const ClipSize &size)
    {
        const int32_t ew = size.cw & ~1;
        const int32_t eh = size.ch & ~1;
        // ROTATE_NONE counts its rows from the full ch: its tail fills the top row.
        const Target t = place(BottomUp[code], d, ew, code == ROTATE_NONE ? size.ch : eh);
        const Yuv2RgbKernels *k = yuv2rgbKernels();
        const PairKernel<uint16_t> *fast = k ? (chromaPerRow ? k->rgb565From422 : k->rgb565From420) : nullptr;
        const TurnKernel *turn = k ? (chromaPerRow ? k->turn565From422 : k->turn565From420) : nullptr;
        const auto convert = [fast](const Source &from, const Target &to, int32_t w, int32_t h) {
            convertBlocks<chromaPerRow>(Coeff601, from, to, w, h, fast);
        };
        convertTurned(turn, chromaPerRow, s, t, ew, eh, convert);
        if constexpr (code == ROTATE_NONE)
            repeatOddEdges(t, size.cw, size.ch);
    }
};

} // namespace pixmill

#endif
