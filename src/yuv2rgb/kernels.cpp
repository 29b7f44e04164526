// Vector kernels of the conversions to RGB, one set per target. They mirror
// colour.h lane by lane: the chroma terms in 16-bit lanes with exact Q14
// products, R = clamp(Y + Rt + dR), G = clamp(Y - Gt + dG),
// B = clamp(Y + Bt + dB), and the RGB565 word by dropping low bits.
//
// A 16-bit lane holds one pixel pair: the two luma bytes loaded as one word
// (even column in the low byte) and the one chroma pair that they share, so
// that the pair never needs a shuffle and the offsets of even and odd
// columns are constants. On x86 one saturating pack clamps and narrows the
// values of a channel with its first pixels of the pairs in the low half of
// each 128-bit block and the second ones in the high half (split order); the
// stores and the turned strips take them in that order, which saves an
// interleave per channel. Elsewhere the values of a pair go back into the two
// bytes of its lane, in pixel order.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "yuv2rgb/kernels.cpp"
#include "frame/simd.h"
#if PIXMILL_SIMD
#  include <hwy/cache_control.h>

#  include "frame/x86-inl.h"
#endif
#include "yuv2rgb/colour.h"
#include "yuv2rgb/kernels.h"

#if PIXMILL_SIMD
#  if defined(__BYTE_ORDER__) && __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#    error "The RGB565 kernels store each word as its two bytes, low byte first."
#  endif

HWY_BEFORE_NAMESPACE();
namespace pixmill::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#  if HWY_TARGET == HWY_SCALAR
// One lane holds no pixel pair: the plain code serves.
constexpr Yuv2RgbKernels kYuv2Rgb{};
#  else
using DI = hn::ScalableTag<int16_t>;  // one pixel pair per lane
using DU = hn::RebindToUnsigned<DI>;
using D8 = hn::Repartition<uint8_t, DI>; // one pixel per lane
using DC = hn::Rebind<uint8_t, DI>;      // one chroma sample per pair
using VI = hn::Vec<DI>;
using VU = hn::Vec<DU>;
using V8 = hn::Vec<D8>;

// ---- Chroma terms ------------------------------------------------------------
// k * x for a Q14 coefficient k and a chroma difference x, split into the
// quotient floor(k * x / 2^14) and the remainder below 2^14. Given 4x, the
// quotient is the high half of the 16 x 16 product k * 4x and the remainder
// its low half shifted down by 2, so that no product needs 32-bit lanes.
struct Q14 {
    VI quot;
    VU rem;
};

HWY_INLINE Q14 product(int32_t k, VI x4)
{
    const VI kv = hn::Set(DI(), static_cast<int16_t>(k));
    return {hn::MulHigh(kv, x4), hn::ShiftRight<2>(hn::BitCast(DU(), kv * x4))};
}

// (a + b + bias) >> 14: remainders and bias add up below 2^16 and carry 0 to
// 2 into the sum of the quotients.
template <int32_t bias>
HWY_INLINE VI shift14(const Q14 &a, const Q14 &b)
{
    const VU rest = hn::Add(hn::Add(a.rem, b.rem), hn::Set(DU(), static_cast<uint16_t>(bias)));
    return hn::Add(hn::Add(a.quot, b.quot), hn::BitCast(DI(), hn::ShiftRight<14>(rest)));
}

template <int32_t bias>
HWY_INLINE VI shift14(const Q14 &a)
{
    if constexpr (bias == 0)
        return a.quot;
    else
        return hn::Add(a.quot, hn::BitCast(DI(), hn::ShiftRight<14>(hn::Add(a.rem, hn::Set(DU(), uint16_t(bias))))));
}

// Rt, -Gt and Bt of one chroma pair per lane.
struct TermsV {
    VI r;
    VI negG;
    VI b;
};

template <class R, Direction dir>
HWY_INLINE TermsV chromaTerms(const uint8_t *u, const uint8_t *v)
{
    const DI di;
    const DC dc;
    VI cb = hn::Sub(hn::BitCast(di, hn::PromoteTo(DU(), hn::LoadU(dc, u))), hn::Set(di, 128));
    VI cr = hn::Sub(hn::BitCast(di, hn::PromoteTo(DU(), hn::LoadU(dc, v))), hn::Set(di, 128));
    if constexpr (dir == RightToLeft) {
        cb = hn::Reverse(di, cb);
        cr = hn::Reverse(di, cr);
    }
    const VI cb4 = hn::ShiftLeft<2>(cb);
    const VI cr4 = hn::ShiftLeft<2>(cr);
    constexpr int32_t bias = R::kForm == Terms::Rounding ? 8192 : 0;
    const Coeffs &k = R::kCoeffs;
#  if PIXMILL_X86_OPS
    // -Gt = -((crToG * Cr + cbToG * Cb + bias) >> 14)
    //     = (-crToG * Cr - cbToG * Cb + 16383 - bias) >> 14,
    // both products and their sum in 32 bits by one multiply-add of (Cr, Cb).
    const hn::Repartition<int32_t, DI> d32;
    const auto w = hn::Set(d32, int32_t(uint32_t(uint16_t(-k.crToG)) | uint32_t(uint16_t(-k.cbToG)) << 16));
    const auto lift = hn::Set(d32, 16383 - bias);
    const auto lo = hn::ShiftRight<14>(hn::Add(mulAddWordPairs(hn::InterleaveLower(di, cr, cb), w), lift));
    const auto hi = hn::ShiftRight<14>(hn::Add(mulAddWordPairs(hn::InterleaveUpper(di, cr, cb), w), lift));
    const VI negG = packWords(lo, hi);
#  else
    const VI negG = hn::Neg(shift14<bias>(product(k.crToG, cr4), product(k.cbToG, cb4)));
#  endif
    return {shift14<bias>(product(k.crToR, cr4)), negG, shift14<bias>(product(k.cbToB, cb4))};
}

// ---- Pixels ------------------------------------------------------------------
// Whether channel bytes come in split order (see the top of the file): per
// 128-bit block, the first pixels of its 8 pairs in memory order, then the
// second ones.
constexpr bool kSplit = PIXMILL_X86_OPS != 0;

// One channel of the pairs: clamp(Y + term + offset) for the even and the odd
// column, in split order on x86, else in the two bytes of each lane in the
// order of the store.
template <Direction dir>
HWY_INLINE V8 channel(VI yEven, VI yOdd, VI term, int32_t dEven, int32_t dOdd)
{
    const DI di;
    const VI even = hn::Add(yEven, hn::Add(term, hn::Set(di, int16_t(dEven))));
    const VI odd = hn::Add(yOdd, hn::Add(term, hn::Set(di, int16_t(dOdd))));
    // Right to left, the odd pixel of a pair comes first in memory.
    const VI first = dir == LeftToRight ? even : odd;
    const VI second = dir == LeftToRight ? odd : even;
#  if PIXMILL_X86_OPS
    return packUnsignedBytes(first, second);
#  else
    const VI lo = hn::Zero(di);
    const VI hi = hn::Set(di, 255);
    return hn::BitCast(D8(), hn::Or(hn::Min(hn::Max(first, lo), hi), hn::ShiftLeft<8>(hn::Min(hn::Max(second, lo), hi))));
#  endif
}

enum class Layout { Rgb, Bgr, Rgb565 };

// R, G and B of 2 * Lanes pixels of one row, of source row parity `row`, one
// byte per pixel in the order of the store (reversed right to left).
struct Channels {
    V8 r;
    V8 g;
    V8 b;
};

template <class R, Direction dir, int row>
HWY_INLINE Channels rowChannels(const uint8_t *y, const TermsV &t)
{
    const DU du;
    VU pairs = hn::BitCast(du, hn::LoadU(D8(), y));
    if constexpr (dir == RightToLeft)
        pairs = hn::Reverse(du, pairs);
    const VI yEven = hn::BitCast(DI(), hn::And(pairs, hn::Set(du, 0xFF)));
    const VI yOdd = hn::BitCast(DI(), hn::ShiftRight<8>(pairs));
    constexpr Offsets e = R::kOffsets[row][0];
    constexpr Offsets o = R::kOffsets[row][1];
    return {channel<dir>(yEven, yOdd, t.r, e.r, o.r), channel<dir>(yEven, yOdd, t.negG, e.g, o.g),
            channel<dir>(yEven, yOdd, t.b, e.b, o.b)};
}

// The two bytes of each RGB565 word: R >> 3 in bits 15..11, G >> 2 in
// 10..5, B >> 3 in 4..0.
struct Bytes565 {
    V8 low;
    V8 high;
};

HWY_INLINE Bytes565 bytes565(const Channels &c)
{
    const D8 d8;
    return {hn::Or(hn::And(hn::ShiftLeft<3>(c.g), hn::Set(d8, 0xE0)), hn::ShiftRight<3>(c.b)),
            hn::Or(hn::And(c.r, hn::Set(d8, 0xF8)), hn::ShiftRight<5>(c.g))};
}

#  if PIXMILL_X86_OPS
// The byte of split order that holds pixel p of a 128-bit block.
constexpr uint8_t splitByte(int p) { return uint8_t(p % 2 == 0 ? p / 2 : 8 + p / 2); }

// Byte shuffles that put three channels in split order into 3-byte pixels:
// table [3 * k + c] fills output block k (bytes 16k .. 16k + 15 of the 48 that
// a block of 16 pixels takes) with the bytes of channel c, 0x80 (zero)
// elsewhere. Repeated for every block of the widest vector.
struct Pixel3Tables {
    alignas(64) uint8_t t[9][64];
};

constexpr Pixel3Tables pixel3Tables()
{
    Pixel3Tables x{};
    for (int k = 0; k < 3; ++k)
        for (int c = 0; c < 3; ++c)
            for (int i = 0; i < 64; ++i) {
                const int o = 16 * k + i % 16;
                x.t[3 * k + c][i] = o % 3 == c ? splitByte(o / 3) : uint8_t(0x80);
            }
    return x;
}

inline constexpr Pixel3Tables kPixel3 = pixel3Tables();

// Stores 2 * Lanes 3-byte pixels of the channels a, b, c (first byte a), all
// in split order.
HWY_INLINE void storePixels3(V8 a, V8 b, V8 c, uint8_t *out)
{
    const D8 d8;
    V8 blocks[3];
    for (int k = 0; k < 3; ++k) {
        const V8 fromA = hn::TableLookupBytes(a, hn::Load(d8, kPixel3.t[3 * k]));
        const V8 fromB = hn::TableLookupBytes(b, hn::Load(d8, kPixel3.t[3 * k + 1]));
        const V8 fromC = hn::TableLookupBytes(c, hn::Load(d8, kPixel3.t[3 * k + 2]));
        blocks[k] = hn::Or3(fromA, fromB, fromC);
    }
    hn::detail::StoreTransposedBlocks3(blocks[0], blocks[1], blocks[2], d8, out);
}
#  endif

// Converts 2 * Lanes pixels of one row, of source row parity `row`, and
// stores them from `out` upwards (in reverse pixel order right to left).
template <class R, Direction dir, int row>
HWY_INLINE void convertRow(const uint8_t *y, const TermsV &t, typename R::Out *out)
{
    const D8 d8;
    const Channels c = rowChannels<R, dir, row>(y, t);
    if constexpr (R::kLayout == Layout::Rgb565) {
        const Bytes565 w = bytes565(c);
        if constexpr (kSplit) {
            // Words of the first and of the second pixels of the pairs, then
            // interleaved into memory order.
            const DU du;
            hn::StoreInterleaved2(hn::BitCast(du, hn::InterleaveLower(d8, w.low, w.high)),
                                  hn::BitCast(du, hn::InterleaveUpper(d8, w.low, w.high)), du, out);
        } else {
            hn::StoreInterleaved2(w.low, w.high, d8, reinterpret_cast<uint8_t *>(out));
        }
    } else {
        const V8 first = R::kLayout == Layout::Rgb ? c.r : c.b;
        const V8 last = R::kLayout == Layout::Rgb ? c.b : c.r;
#  if PIXMILL_X86_OPS
        storePixels3(first, c.g, last, out);
#  else
        hn::StoreInterleaved3(first, c.g, last, d8, out);
#  endif
    }
}

// Where the vector of pairs from pair i starts on its target row: left to
// right pixel 2i is at out + 2i; right to left the vector of pixels
// 2i .. 2i + 2N - 1 ends at out - 2i.
template <class R, Direction dir>
HWY_INLINE ptrdiff_t vectorAt(size_t i, size_t N)
{
    return dir == LeftToRight ? ptrdiff_t(2 * i * R::kUnits) : -ptrdiff_t(2 * i + 2 * N - 1);
}

// The kernel of a recipe: whole vectors of pairs along one row or a row pair.
// Rows with chroma of their own go one after the other, so that the target
// is written as one stream at a time: with the target out of the caches, a
// 1080p row pair written in step took half as long again.
template <class R, Direction dir>
size_t convertPairs(const PairRows &in, typename R::Out *out0, typename R::Out *out1, size_t pairs)
{
    const size_t N = hn::Lanes(DI());
    size_t i = 0;
    if constexpr (R::kChromaPerRow) {
        for (; i + N <= pairs; i += N)
            convertRow<R, dir, 0>(in.y[0] + 2 * i, chromaTerms<R, dir>(in.u[0] + i, in.v[0] + i),
                                  out0 + vectorAt<R, dir>(i, N));
        if constexpr (R::kRows == 2)
            for (size_t j = 0; j < i; j += N)
                convertRow<R, dir, 1>(in.y[1] + 2 * j, chromaTerms<R, dir>(in.u[1] + j, in.v[1] + j),
                                      out1 + vectorAt<R, dir>(j, N));
        return i;
    }
    for (; i + N <= pairs; i += N) {
        const ptrdiff_t at = vectorAt<R, dir>(i, N);
        const TermsV t = chromaTerms<R, dir>(in.u[0] + i, in.v[0] + i);
        convertRow<R, dir, 0>(in.y[0] + 2 * i, t, out0 + at);
        if constexpr (R::kRows == 2)
            convertRow<R, dir, 1>(in.y[1] + 2 * i, t, out1 + at);
    }
    return i;
}

// ---- Recipes -----------------------------------------------------------------
inline constexpr Offsets kNoOffsets[2][2] = {{NoOffsets, NoOffsets}, {NoOffsets, NoOffsets}};
// gYUV420toBGR24 lifts luma in odd columns by 1, an offset of 1 on all three.
inline constexpr Offsets kOddColumnLift[2][2] = {{NoOffsets, {1, 1, 1}}, {NoOffsets, {1, 1, 1}}};

template <class Out_, const Coeffs &k, Terms form, const Offsets (&offsets)[2][2], bool perRow, Layout layout,
          int rows = 2>
struct Recipe {
    using Out = Out_;
    static constexpr const Coeffs &kCoeffs = k;
    static constexpr Terms kForm = form;
    static constexpr const Offsets (&kOffsets)[2][2] = offsets;
    static constexpr bool kChromaPerRow = perRow;
    static constexpr Layout kLayout = layout;
    static constexpr size_t kUnits = layout == Layout::Rgb565 ? 1 : 3;
    static constexpr int kRows = rows;
};

using Rgb888From420 = Recipe<uint8_t, Coeff601, Terms::Truncating, kNoOffsets, false, Layout::Rgb>;
using Bgr24From420 = Recipe<uint8_t, Coeff709, Terms::Rounding, kOddColumnLift, false, Layout::Bgr>;
using Bgr888From422 = Recipe<uint8_t, Coeff601, Terms::Truncating, Dither2x2, true, Layout::Bgr>;
using Rgb565From420 = Recipe<uint16_t, Coeff601, Terms::Truncating, Dither2x2, false, Layout::Rgb565>;
using Rgb565From422 = Recipe<uint16_t, Coeff601, Terms::Truncating, Dither2x2, true, Layout::Rgb565>;
using Rgb565From420Bt709 = Recipe<uint16_t, Coeff709, Terms::Truncating, Dither2x2, false, Layout::Rgb565>;
using Rgb565RowBt709 = Recipe<uint16_t, Coeff709, Terms::Truncating, Dither2x2, true, Layout::Rgb565, 1>;
// Rows of the BT.709 4:2:2 form in pairs, both with the offsets of an even row.
inline constexpr Offsets kEvenRowOffsets[2][2] = {{Dither2x2[0][0], Dither2x2[0][1]},
                                                  {Dither2x2[0][0], Dither2x2[0][1]}};
using Rgb565RowsBt709 = Recipe<uint16_t, Coeff709, Terms::Truncating, kEvenRowOffsets, true, Layout::Rgb565>;

// ---- Turned strips ------------------------------------------------------------
// A strip goes from the pair kernels' registers straight onto the surface:
// per 128-bit block, the words of 8 source rows of 8 neighbouring pixels are
// transposed into 8 runs of 8 words, each a piece of one surface row. Targets
// with vectors of a size known only at run time leave turned strips to the
// plain code.
#    if !HWY_HAVE_SCALABLE

// Within each 128-bit block, rows 0..7 of v become its columns.
template <class D>
HWY_INLINE void transpose8x8(D d, hn::Vec<D> v[8])
{
    const hn::Repartition<uint32_t, D> d32;
    const hn::Repartition<uint64_t, D> d64;
    hn::Vec<D> a[8], b[8];
    for (int i = 0; i < 4; ++i) {
        a[2 * i] = hn::InterleaveLower(d, v[2 * i], v[2 * i + 1]);
        a[2 * i + 1] = hn::InterleaveUpper(d, v[2 * i], v[2 * i + 1]);
    }
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 2; ++j) {
            const auto x = hn::BitCast(d32, a[4 * i + j]), y = hn::BitCast(d32, a[4 * i + j + 2]);
            b[4 * i + 2 * j] = hn::BitCast(d, hn::InterleaveLower(d32, x, y));
            b[4 * i + 2 * j + 1] = hn::BitCast(d, hn::InterleaveUpper(d32, x, y));
        }
    for (int j = 0; j < 4; ++j) {
        const auto x = hn::BitCast(d64, b[j]), y = hn::BitCast(d64, b[j + 4]);
        v[2 * j] = hn::BitCast(d, hn::InterleaveLower(d64, x, y));
        v[2 * j + 1] = hn::BitCast(d, hn::InterleaveUpper(d64, x, y));
    }
}

// Stores block k of v (8 words) at p + k * step.
template <class D>
HWY_INLINE void storeBlocks(D d, hn::Vec<D> v, uint16_t *p, ptrdiff_t step)
{
    if constexpr (hn::MaxLanes(d) <= 8) {
        hn::StoreU(v, d, p);
    } else {
        const hn::Half<D> dh;
        storeBlocks(dh, hn::LowerHalf(dh, v), p, step);
        storeBlocks(dh, hn::UpperHalf(dh, v), p + ptrdiff_t(hn::MaxLanes(dh) / 8) * step, step);
    }
}

// One vector of pairs of a strip, from pair i of its rows: 2 * Lanes source
// columns, each stored as runs of 8 words on its surface row. `up`: a row
// move of 1; else of -1, and the rows go in reversed so that each run is
// stored from its lowest address.
template <class R, bool up>
HWY_INLINE void turnVector(const uint8_t *const y[8], const uint8_t *const u[8], const uint8_t *const v[8],
                           size_t i, uint16_t *at, ptrdiff_t col)
{
    const DU du;
    const D8 d8;
    VU first[8], second[8];
    // Unrolled, so that the rows stay in registers.
    HWY_UNROLL(4)
    for (int p = 0; p < 4; ++p) {
        const TermsV t0 = chromaTerms<R, LeftToRight>(u[2 * p] + i, v[2 * p] + i);
        const TermsV t1 = R::kChromaPerRow ? chromaTerms<R, LeftToRight>(u[2 * p + 1] + i, v[2 * p + 1] + i) : t0;
        const Bytes565 w0 = bytes565(rowChannels<R, LeftToRight, 0>(y[2 * p] + 2 * i, t0));
        const Bytes565 w1 = bytes565(rowChannels<R, LeftToRight, 1>(y[2 * p + 1] + 2 * i, t1));
        // Per block, the words of pixels 16b .. 16b + 7 and the 8 after them,
        // or in split order of its even and its odd pixels.
        const int a = up ? 2 * p : 7 - 2 * p;
        const int b = up ? 2 * p + 1 : 6 - 2 * p;
        first[a] = hn::BitCast(du, hn::InterleaveLower(d8, w0.low, w0.high));
        second[a] = hn::BitCast(du, hn::InterleaveUpper(d8, w0.low, w0.high));
        first[b] = hn::BitCast(du, hn::InterleaveLower(d8, w1.low, w1.high));
        second[b] = hn::BitCast(du, hn::InterleaveUpper(d8, w1.low, w1.high));
    }
    transpose8x8(du, first);
    transpose8x8(du, second);
    uint16_t *p = at + ptrdiff_t(2 * i) * col - (up ? 0 : 7);
    const ptrdiff_t block = 16 * col;
    // In split order `first` holds the even columns of a block and `second`
    // the odd ones, else the 8 columns of each half.
    const ptrdiff_t firstStep = kSplit ? 2 : 1;
    const ptrdiff_t secondAt = kSplit ? 1 : 8;
    for (int j = 0; j < 8; ++j) {
        storeBlocks(du, first[j], p + j * firstStep * col, block);
        storeBlocks(du, second[j], p + (secondAt + j * firstStep) * col, block);
    }
}

// A strip of kStripRows rows, in groups of 8: each vector of columns goes
// out for every group before the next, so that a surface row takes
// 2 * kStripRows bytes in a row at each step.
template <class R, bool up>
size_t turnStrip(const Source &in, uint16_t *at, ptrdiff_t col, size_t pairs)
{
    static_assert(kStripRows % 8 == 0, "strips are whole groups of 8 rows");
    const size_t N = hn::Lanes(DU());
    if (pairs < N)
        return 0;
    const uint8_t *y[kStripRows], *u[kStripRows], *v[kStripRows];
    for (int32_t r = 0; r < kStripRows; ++r) {
        const ptrdiff_t chroma = (R::kChromaPerRow ? r : r >> 1) * in.chromaStride;
        y[r] = in.y + r * in.lumaStride;
        u[r] = in.u + chroma;
        v[r] = in.v + chroma;
    }
    const auto columns = [&](size_t i) {
        // The source lines of the vector after next, while they are inside the strip.
        if (i + 3 * N <= pairs)
            for (int32_t r = 0; r < kStripRows; ++r) {
                hwy::Prefetch(y[r] + 2 * (i + 2 * N));
                if (R::kChromaPerRow || (r & 1) == 0) {
                    hwy::Prefetch(u[r] + i + 2 * N);
                    hwy::Prefetch(v[r] + i + 2 * N);
                }
            }
        for (int32_t g = 0; g < kStripRows; g += 8)
            turnVector<R, up>(y + g, u + g, v + g, i, at + (up ? g : -g), col);
    };
    for (size_t i = 0; i + N < pairs; i += N)
        columns(i);
    columns(pairs - N);
    return pairs;
}
#    endif

// Highway's emulated target compiles this set too, but only the vector
// targets' sets go into the dispatch table.
HWY_MAYBE_UNUSED constexpr Yuv2RgbKernels kYuv2Rgb{
    &convertPairs<Rgb888From420, LeftToRight>,
    &convertPairs<Bgr24From420, LeftToRight>,
    &convertPairs<Bgr888From422, LeftToRight>,
    {&convertPairs<Rgb565From420, LeftToRight>, &convertPairs<Rgb565From420, RightToLeft>},
    {&convertPairs<Rgb565From422, LeftToRight>, &convertPairs<Rgb565From422, RightToLeft>},
    {&convertPairs<Rgb565From420Bt709, LeftToRight>, &convertPairs<Rgb565From420Bt709, RightToLeft>},
    {&convertPairs<Rgb565RowBt709, LeftToRight>, &convertPairs<Rgb565RowBt709, RightToLeft>},
#    if !HWY_HAVE_SCALABLE
    {&turnStrip<Rgb565From420, true>, &turnStrip<Rgb565From420, false>},
    {&turnStrip<Rgb565From422, true>, &turnStrip<Rgb565From422, false>},
    {&turnStrip<Rgb565From420Bt709, true>, &turnStrip<Rgb565From420Bt709, false>},
    {&turnStrip<Rgb565RowsBt709, true>, &turnStrip<Rgb565RowsBt709, false>},
#    endif
};
#  endif

} // namespace pixmill::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif

#if PIXMILL_KERNELS_ONCE
namespace pixmill {
PIXMILL_KERNEL_SET(Yuv2RgbKernels, kYuv2Rgb, yuv2rgbKernels)
} // namespace pixmill
#endif
