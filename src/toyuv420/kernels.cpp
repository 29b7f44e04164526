// Vector kernels of the conversions into planar 4:2:0, one set per target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "toyuv420/kernels.cpp"
#include "frame/simd.h"
#if PIXMILL_SIMD
#  include "frame/x86-inl.h"
#endif
#include "toyuv420/kernels.h"
#include "toyuv420/rgb565_tables.h"

#if PIXMILL_VECTOR_TARGET
HWY_BEFORE_NAMESPACE();
namespace pixmill::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D8 = hn::ScalableTag<uint8_t>;
using D16 = hn::ScalableTag<uint16_t>;
using V8 = hn::Vec<D8>;
using V16 = hn::Vec<D16>;

// A vector of the constant c whose value the compiler does not see. Left to
// itself, GCC turns a multiplication by a known constant into shifts and
// additions, several instructions where one would do; an empty asm hides the
// value.
template <class D, typename T>
HWY_INLINE hn::Vec<D> factor(D d, T c)
{
    auto v = hn::Set(d, hn::TFromD<D>(c));
#if defined(__GNUC__) && HWY_ARCH_X86
    asm("" : "+v"(v.raw));
#endif
    return v;
}

// v * c for a constant c, as one multiplication.
template <class V, typename T>
HWY_INLINE V mulConst(V v, T c)
{
    return hn::Mul(v, factor(hn::DFromV<V>(), c));
}

// Low bytes of the 16-bit lanes of lo, then of hi.
HWY_INLINE V8 narrow16(V16 hi, V16 lo) { return hn::ConcatEven(D8(), hn::BitCast(D8(), hi), hn::BitCast(D8(), lo)); }

// Stores the first half of `both` at `first` and the second half at `second`.
HWY_INLINE void storeHalves(V8 both, uint8_t *first, uint8_t *second)
{
    const hn::Half<D8> dh;
    hn::StoreU(hn::LowerHalf(dh, both), dh, first);
    hn::StoreU(hn::UpperHalf(dh, both), dh, second);
}

// ---- RGB565 -----------------------------------------------------------------
// The colour tables are linear (entry i = i * step), so an output is
// base + (step_r * r + step_g * g + step_b * b) >> 14. Every step is a
// multiple of 4; written as 4 * (64 * a + b) with 0 <= b < 64, the sum is
// 4 * (64 * A + B) for A = a_r * r + a_g * g + a_b * b and B likewise, so
// that the output is base + ((A + (B >> 6)) >> 6): |A| <= 13672 and
// 0 <= B <= 3945 fit signed 16-bit lanes, and the two shifts floor like the
// one shift of the plain code.

struct Rgb565Rule {
    int16_t base;
    int16_t a[3], b[3]; // per level r, g, b
};

constexpr Rgb565Rule rgb565Rule(int32_t base, int32_t stepR, int32_t stepG, int32_t stepB)
{
    Rgb565Rule rule{int16_t(base), {}, {}};
    const int32_t steps[3] = {stepR, stepG, stepB};
    for (int k = 0; k < 3; ++k) {
        const int32_t quarter = steps[k] / 4;
        const int32_t a = quarter >= 0 ? quarter / 64 : -((63 - quarter) / 64);
        rule.a[k] = int16_t(a);
        rule.b[k] = int16_t(quarter - 64 * a);
    }
    return rule;
}

// The split gives back every step.
constexpr bool splitsExactly(const Rgb565Rule &rule, int32_t stepR, int32_t stepG, int32_t stepB)
{
    const int32_t steps[3] = {stepR, stepG, stepB};
    for (int k = 0; k < 3; ++k)
        if (4 * (64 * rule.a[k] + rule.b[k]) != steps[k] || rule.b[k] < 0 || rule.b[k] >= 64)
            return false;
    return true;
}

constexpr Rgb565ToYuvTables kSteps = makeRgb565ToYuvTables();
#define PIXMILL_RGB565_RULE(name, base, r, g, b)                                                                   \
    constexpr Rgb565Rule name = rgb565Rule(base, kSteps.r[1], kSteps.g[1], kSteps.b[1]);                            \
    static_assert(splitsExactly(name, kSteps.r[1], kSteps.g[1], kSteps.b[1]), "steps split into 4 * (64 a + b)");
PIXMILL_RGB565_RULE(kLumaRule, 16, YFromR, YFromG, YFromB)
PIXMILL_RGB565_RULE(kURule, 128, UFromR, UFromG, ChromaFull5)
PIXMILL_RGB565_RULE(kVRule, 128, ChromaFull5, VFromG, VFromB)
#undef PIXMILL_RGB565_RULE

using DI16 = hn::ScalableTag<int16_t>;
using VI16 = hn::Vec<DI16>;

// The levels r, g, b of RGB565 words.
struct Levels {
    VI16 at[3];
};

HWY_INLINE Levels levelsOf(V16 px)
{
    const D16 d;
    const DI16 di;
    return {{hn::BitCast(di, hn::ShiftRight<11>(px)), hn::BitCast(di, hn::And(hn::ShiftRight<5>(px), hn::Set(d, 63))),
             hn::BitCast(di, hn::And(px, hn::Set(d, 31)))}};
}

HWY_INLINE V16 rgb565Apply(const Rgb565Rule &rule, const Levels &x)
{
    const DI16 d;
    VI16 a = hn::Zero(d), b = hn::Zero(d);
    for (int k = 0; k < 3; ++k) {
        if (rule.a[k] != 0)
            a = hn::Add(a, mulConst(x.at[k], rule.a[k]));
        if (rule.b[k] != 0)
            b = hn::Add(b, mulConst(x.at[k], rule.b[k]));
    }
    const VI16 out = hn::Add(hn::Set(d, rule.base), hn::ShiftRight<6>(hn::Add(a, hn::ShiftRight<6>(b))));
    return hn::BitCast(D16(), out);
}

size_t rgb565Blocks(const uint16_t *first, const uint16_t *second, uint8_t *lower, uint8_t *upper, uint8_t *u,
                    uint8_t *v, size_t blocks)
{
    const D16 d;
    const size_t N = hn::Lanes(d); // blocks per step: two vectors of pixels a row
    const auto luma = [&](V16 px) { return rgb565Apply(kLumaRule, levelsOf(px)); };
    size_t i = 0;
    for (; i + N <= blocks; i += N) {
        const V16 f0 = hn::LoadU(d, first + 2 * i), f1 = hn::LoadU(d, first + 2 * i + N);
        const V16 s0 = hn::LoadU(d, second + 2 * i), s1 = hn::LoadU(d, second + 2 * i + N);
        hn::StoreU(narrow16(luma(f1), luma(f0)), D8(), lower + 2 * i);
        hn::StoreU(narrow16(luma(s1), luma(s0)), D8(), upper + 2 * i);
        // Chroma from the first pixel of each block.
        const Levels x = levelsOf(hn::ConcatEven(d, f1, f0));
        storeHalves(narrow16(rgb565Apply(kVRule, x), rgb565Apply(kURule, x)), u + i, v + i);
    }
    return i;
}

// ---- B,G,R bytes ------------------------------------------------------------
using DI32 = hn::ScalableTag<int32_t>;
using VI32 = hn::Vec<DI32>;

// Two signed 16-bit weights, w0 in the low half of each 32-bit lane.
HWY_INLINE VI32 weightPair(int16_t w0, int16_t w1)
{
    return hn::Set(DI32(), int32_t(uint32_t(uint16_t(w0)) | uint32_t(uint16_t(w1)) << 16));
}

#if PIXMILL_X86_OPS
// A block's two pixels of one row are the six bytes b0 g0 r0 b1 g1 r1. They
// are gathered into 32-bit lanes, one lane per block, as X1 = [b0 g0 g1 r1]
// and X2 = [r0 b1 r0 b1]; multiply-adds of byte pairs (unsigned bytes,
// signed byte weights, one pair per 16-bit lane) give every sum below,
// exactly.
//
// Luma: with X = 19595 r + 7471 b - 27066 g, Y = g + (X >> 16). Each weight
// is 256 h + l with h and l signed bytes (r: 77, -117; b: 29, 47;
// g: -106, 70), so X = 256 XH + XL for XH = 77 r + 29 b - 106 g and
// XL = -117 r + 47 b + 70 g, both within +-29835, and
// X >> 16 = (XH + (XL >> 8)) >> 8. No byte pair saturates its lane.
static_assert(77 * 256 - 117 == 19595 && 29 * 256 + 47 == 7471 && -106 * 256 + 70 == -(19595 + 7471),
              "luma weights split into signed bytes");

using D32 = hn::ScalableTag<uint32_t>;
constexpr size_t kVectorBytes = hn::MaxLanes(D8());
constexpr size_t kBlocks128 = kVectorBytes / 16;

// Four byte weights, w0 in the lowest byte of every 32-bit lane.
HWY_INLINE V8 byteWeights(int8_t w0, int8_t w1, int8_t w2, int8_t w3)
{
    return hn::BitCast(D8(), hn::Set(D32(), uint32_t(uint8_t(w0)) | uint32_t(uint8_t(w1)) << 8 |
                                                uint32_t(uint8_t(w2)) << 16 | uint32_t(uint8_t(w3)) << 24));
}

// Lane k of the result (lanes of d) from lane at[k] of v; nothing moves in a
// single 128-bit block.
template <class V, class D, typename T, size_t K>
HWY_INLINE V reorder(V v, D d, const T (&at)[K])
{
    if constexpr (kBlocks128 == 1)
        return v;
    else
        return hn::BitCast(hn::DFromV<V>(), hn::TableLookupLanes(hn::BitCast(d, v), hn::SetTableIndices(d, at)));
}

// The lane orders that undo the block-by-block packs: for luma, 64-bit lane
// 0 of every 128-bit block (the first vector's pixels), then lane 1 (the
// second's); for chroma, packed from four vectors (U of each half, V of
// each half), 32-bit lane 0 of every block, then lane 1, 2 and 3.
struct BgrOrder {
    int64_t lanes64[2 * kBlocks128];
    int32_t lanes32[4 * kBlocks128];
};
constexpr BgrOrder bgrOrder()
{
    BgrOrder t{};
    for (size_t b = 0; b < kBlocks128; ++b)
        for (size_t h = 0; h < 2; ++h)
            t.lanes64[h * kBlocks128 + b] = int64_t(2 * b + h);
    for (size_t b = 0; b < kBlocks128; ++b)
        for (size_t j = 0; j < 4; ++j)
            t.lanes32[j * kBlocks128 + b] = int32_t(4 * b + j);
    return t;
}
alignas(64) constexpr BgrOrder kBgrOrder = bgrOrder();

// Gathering X1 and X2 for the Lanes(D16) / 2 blocks (3 * Lanes(D8) / 2
// bytes) from `px`.
#if HWY_TARGET == HWY_AVX3
// The two pixels are the words (b0, g0) (r0, b1) (g1, r1): one permutation
// of words over two vectors makes X1 (words 3k and 3k + 2 to lane k),
// another X2 (word 3k + 1 twice). Blocks 0..15 come from vectors (a, b),
// blocks 16..31 from (b, c).
struct BgrGather {
    uint16_t at[4][32];
};
constexpr BgrGather bgrGather()
{
    BgrGather t{};
    for (int half = 0; half < 2; ++half)
        for (int k = 0; k < 16; ++k) {
            const int first = 3 * k + 16 * half;
            t.at[2 * half][2 * k] = uint16_t(first);
            t.at[2 * half][2 * k + 1] = uint16_t(first + 2);
            t.at[2 * half + 1][2 * k] = t.at[2 * half + 1][2 * k + 1] = uint16_t(first + 1);
        }
    return t;
}
alignas(64) constexpr BgrGather kBgrGather = bgrGather();
using Gather = V16;

// Words of (lo, hi) picked by 16-bit indices: 0..31 from lo, 32..63 from hi.
HWY_INLINE V8 pickWords(V8 lo, V16 index, V8 hi) { return V8{_mm512_permutex2var_epi16(lo.raw, index.raw, hi.raw)}; }
#else
// Byte shuffles within 128-bit blocks: block j takes the bytes of its four
// blocks of pixels, 24 j to 24 j + 23, from the vectors loaded at px
// (bytes 16 j on) and at px + Lanes(D8) / 2 (bytes Lanes(D8) / 2 + 16 j on);
// 0x80 makes a zero to be ored with the other shuffle.
struct BgrGather {
    uint8_t at[4][kVectorBytes]; // X1 from the first vector, from the second, X2 likewise
};
constexpr BgrGather bgrGather()
{
    BgrGather t{};
    constexpr int kOffsets[2][4] = {{0, 1, 4, 5}, {2, 3, 2, 3}};
    for (int x = 0; x < 2; ++x)
        for (int p = 0; p < int(kVectorBytes); ++p) {
            const int block = p / 16, byte = 6 * (p / 4) + kOffsets[x][p % 4];
            const int inFirst = byte - 16 * block, inSecond = byte - int(kVectorBytes) / 2 - 16 * block;
            t.at[2 * x][p] = uint8_t(inFirst >= 0 && inFirst < 16 ? inFirst : 0x80);
            t.at[2 * x + 1][p] = uint8_t(inSecond >= 0 && inSecond < 16 ? inSecond : 0x80);
        }
    return t;
}
alignas(32) constexpr BgrGather kBgrGather = bgrGather();
using Gather = V8;

HWY_INLINE V8 pickBytes(V8 first, V8 second, Gather fromFirst, Gather fromSecond)
{
    return hn::Or(hn::TableLookupBytesOr0(first, fromFirst), hn::TableLookupBytesOr0(second, fromSecond));
}
#endif

struct BgrWeights {
    V8 hi1, hi2, lo1, lo2, middle, ends;
    Gather gather[4];
};

HWY_INLINE BgrWeights bgrWeights()
{
    const hn::DFromV<Gather> d;
    const auto &at = kBgrGather.at;
    return {byteWeights(29, -106, -106, 77),
            byteWeights(77, 0, 0, 29),
            byteWeights(47, 70, 70, -117),
            byteWeights(-117, 0, 0, 47),
            byteWeights(0, 1, 1, 0),
            byteWeights(1, 0, 0, 1),
            {hn::Load(d, at[0]), hn::Load(d, at[1]), hn::Load(d, at[2]), hn::Load(d, at[3])}};
}

// What one row gives for Lanes(D16) / 2 blocks: the luma of its pixels in
// 16-bit lanes; in each block's 32-bit lane (g0, g1) and (b0 + b1, r0 + r1).
struct BgrHalf {
    VI16 y, g, br;
};

HWY_INLINE BgrHalf bgrHalf(V8 x1, V8 x2, const BgrWeights &w)
{
    const VI16 xh = hn::Add(mulAddBytePairs(x1, w.hi1), mulAddBytePairs(x2, w.hi2));
    const VI16 xl = hn::Add(mulAddBytePairs(x1, w.lo1), mulAddBytePairs(x2, w.lo2));
    const VI16 g = mulAddBytePairs(x1, w.middle);
    const VI16 y = hn::Add(g, hn::ShiftRight<8>(hn::Add(xh, hn::ShiftRight<8>(xl))));
    return {y, g, hn::Add(mulAddBytePairs(x1, w.ends), mulAddBytePairs(x2, w.middle))};
}

// One half of a row of Lanes(D16) blocks: blocks `first` to
// first + Lanes(D16) / 2 - 1 of the row of pixels at px.
HWY_INLINE BgrHalf bgrHalfAt(const uint8_t *px, size_t first, const BgrWeights &w)
{
    const D8 d8;
    const size_t N = hn::Lanes(d8);
#if HWY_TARGET == HWY_AVX3
    // Blocks 0..15 come from the vectors at px and px + 64, blocks 16..31
    // from those at px + 64 and px + 128.
    const size_t k = first == 0 ? 0 : 2;
    const uint8_t *p = first == 0 ? px : px + N;
    const V8 a = hn::LoadU(d8, p), b = hn::LoadU(d8, p + N);
    return bgrHalf(pickWords(a, w.gather[k], b), pickWords(a, w.gather[k + 1], b), w);
#else
    const uint8_t *p = px + 6 * first;
    const V8 a = hn::LoadU(d8, p), b = hn::LoadU(d8, p + N / 2);
    return bgrHalf(pickBytes(a, b, w.gather[0], w.gather[1]), pickBytes(a, b, w.gather[2], w.gather[3]), w);
#endif
}

// The luma of two halves of a row, in order.
HWY_INLINE void storeLuma(VI16 first, VI16 second, uint8_t *y)
{
    hn::StoreU(reorder(packUnsignedBytes(first, second), hn::Repartition<int64_t, D8>(), kBgrOrder.lanes64), D8(), y);
}

// Chroma minus 128 of the blocks whose rows gave t and b:
// (wBR.0 SB + wBR.1 SR + wG SG) >> 18, within -128..127; (SB, SR) and the
// two halves of SG lie in the 16-bit lanes of each block, so two 16-bit
// multiply-adds form the sum exactly (|sum| < 2^26).
HWY_INLINE VI32 bgrChroma(const BgrHalf &t, const BgrHalf &b, VI32 wBR, VI32 wG)
{
    const VI32 sum = hn::Add(mulAddWordPairs(hn::Add(t.br, b.br), wBR), mulAddWordPairs(hn::Add(t.g, b.g), wG));
    return hn::ShiftRight<18>(sum);
}

size_t bgr24Blocks(const uint8_t *top, const uint8_t *bottom, uint8_t *yTop, uint8_t *yBottom, uint8_t *u,
                   uint8_t *v, size_t blocks)
{
    const BgrWeights w = bgrWeights();
    // U = 128 + ((32767 SB - 11059 SR - 21709 SG) >> 18),
    // V = 128 + ((32767 SR - 5329 SB - 27439 SG) >> 18).
    const VI32 uBR = weightPair(32767, -11059), uG = weightPair(-21709, -21709);
    const VI32 vBR = weightPair(-5329, 32767), vG = weightPair(-27439, -27439);
    const D8 d8;
    const hn::Half<D8> dh;
    const size_t N = hn::Lanes(D16()); // blocks per step
    size_t i = 0;
    for (; i + N <= blocks; i += N) {
        VI16 yt[2], yb[2];
        VI32 uSums[2], vSums[2];
        for (size_t h = 0; h < 2; ++h) {
            const BgrHalf t = bgrHalfAt(top + 6 * i, h * N / 2, w), b = bgrHalfAt(bottom + 6 * i, h * N / 2, w);
            yt[h] = t.y, yb[h] = b.y;
            uSums[h] = bgrChroma(t, b, uBR, uG);
            vSums[h] = bgrChroma(t, b, vBR, vG);
        }
        storeLuma(yt[0], yt[1], yTop + 2 * i);
        storeLuma(yb[0], yb[1], yBottom + 2 * i);
        // Each 128-bit block of the narrowed sums holds four blocks of U from
        // each half, then the same of V: U 0..N-1 and V 0..N-1 once the
        // dwords are in order.
        const VI16 uWords = packWords(uSums[0], uSums[1]), vWords = packWords(vSums[0], vSums[1]);
        const V8 both = hn::Xor(reorder(packSignedBytes(uWords, vWords), DI32(), kBgrOrder.lanes32), hn::Set(d8, 0x80));
        hn::StoreU(hn::LowerHalf(dh, both), dh, u + i);
        hn::StoreU(hn::UpperHalf(dh, both), dh, v + i);
    }
    return i;
}
#else
// Every sum of products is formed exactly in 32-bit lanes by 16-bit
// multiply-adds of lane pairs: w0 * a + w1 * b for the pair (a, b), the pairs
// taken from the even lanes of two 16-bit vectors, then from the odd ones.
HWY_INLINE VI32 wide(V16 v) { return hn::BitCast(DI32(), v); }
HWY_INLINE V16 words(VI32 v) { return hn::BitCast(D16(), v); }

// The pair (a[2i], b[2i]), or (a[2i + 1], b[2i + 1]), in 32-bit lane i.
HWY_INLINE VI32 evenPairs(V16 a, V16 b) { return wide(hn::OddEven(words(hn::ShiftLeft<16>(wide(b))), a)); }
HWY_INLINE VI32 oddPairs(V16 a, V16 b) { return wide(hn::OddEven(b, words(hn::ShiftRight<16>(wide(a))))); }

// sum + w0 * a + w1 * b of each 32-bit lane holding the pair (a, b); `odd`
// collects what a target keeps apart (nothing on x86), see sumOf.
HWY_INLINE VI32 mulAdd(VI32 pairs, VI32 weights, VI32 sum, VI32 &odd)
{
    return hn::ReorderWidenMulAccumulate(DI32(), hn::BitCast(DI16(), pairs), hn::BitCast(DI16(), weights), sum, odd);
}
HWY_INLINE VI32 sumOf(VI32 sum, VI32 odd) { return hn::RearrangeToOddPlusEven(sum, odd); }

// The high halves (x >> 16) of the sums of the even lanes and of the odd
// lanes, back in the 16-bit lanes the pairs came from.
HWY_INLINE V16 highHalves(VI32 even, VI32 odd) { return hn::OddEven(words(odd), words(hn::ShiftRight<16>(even))); }

// Luma. The Q16 weights sum to 65536, so
//   19595 r + 38470 g + 7471 b = 65536 g + X,  X = 19595 (r - g) + 7471 (b - g),
// and the luma is g + (X >> 16), the shift arithmetic: one multiply-add of
// the pair (r - g, b - g), |X| < 2^23.
static_assert(19595 + 38470 + 7471 == 65536, "luma weights");

HWY_INLINE V16 bgrLuma(V16 b, V16 g, V16 r)
{
    const V16 dr = hn::Sub(r, g), db = hn::Sub(b, g);
    const VI32 w = weightPair(19595, 7471), zero = hn::Zero(DI32());
    VI32 oddE = zero, oddO = zero;
    const VI32 even = mulAdd(evenPairs(dr, db), w, zero, oddE), odd = mulAdd(oddPairs(dr, db), w, zero, oddO);
    return hn::Add(g, highHalves(sumOf(even, oddE), sumOf(odd, oddO)));
}

// Channel sums of the horizontal pixel pairs of one row, one pair per
// 16-bit lane.
struct PairSums {
    V16 b, g, r;
};

// Luma of Lanes(D8) pixels of one row, stored at y; returns the row's
// pair sums.
HWY_INLINE PairSums bgrRow(const uint8_t *px, uint8_t *y)
{
    const D8 d8;
    const D16 d16;
    V8 b8, g8, r8;
    hn::LoadInterleaved3(d8, px, b8, g8, r8);
    // A 16-bit lane holds a pixel pair: the first in its low byte.
    const V16 lowByte = hn::Set(d16, 0xFF);
    const V16 b = hn::BitCast(d16, b8), g = hn::BitCast(d16, g8), r = hn::BitCast(d16, r8);
    const V16 b0 = hn::And(b, lowByte), g0 = hn::And(g, lowByte), r0 = hn::And(r, lowByte);
    const V16 b1 = hn::ShiftRight<8>(b), g1 = hn::ShiftRight<8>(g), r1 = hn::ShiftRight<8>(r);
    const V16 luma = hn::Or(bgrLuma(b0, g0, r0), hn::ShiftLeft<8>(bgrLuma(b1, g1, r1)));
    hn::StoreU(hn::BitCast(d8, luma), d8, y);
    return {hn::Add(b0, b1), hn::Add(g0, g1), hn::Add(r0, r1)};
}

// Chroma from block sums of at most 1020: two multiply-adds, of the pair
// (sb, sr) and of the pair (sg, 0), give the signed sum exactly (|sum| < 2^26);
// its high half shifted by 2 more is sum >> 18, which stays within -128..127.
HWY_INLINE V16 bgrChroma(const VI32 (&pairs)[4], VI32 wBR, VI32 wG)
{
    const VI32 zero = hn::Zero(DI32());
    VI32 oddE = zero, oddO = zero;
    const VI32 even = mulAdd(pairs[0], wBR, mulAdd(pairs[1], wG, zero, oddE), oddE);
    const VI32 odd = mulAdd(pairs[2], wBR, mulAdd(pairs[3], wG, zero, oddO), oddO);
    const V16 high = highHalves(sumOf(even, oddE), sumOf(odd, oddO));
    return hn::Add(hn::Set(D16(), 128), hn::BitCast(D16(), hn::ShiftRight<2>(hn::BitCast(DI16(), high))));
}

size_t bgr24Blocks(const uint8_t *top, const uint8_t *bottom, uint8_t *yTop, uint8_t *yBottom, uint8_t *u,
                   uint8_t *v, size_t blocks)
{
    const D16 d;
    const size_t N = hn::Lanes(d); // blocks per step: Lanes(D8) pixels a row
    size_t i = 0;
    for (; i + N <= blocks; i += N) {
        const PairSums t = bgrRow(top + 6 * i, yTop + 2 * i);
        const PairSums s = bgrRow(bottom + 6 * i, yBottom + 2 * i);
        const V16 b = hn::Add(t.b, s.b), g = hn::Add(t.g, s.g), r = hn::Add(t.r, s.r), zero = hn::Zero(d);
        const VI32 pairs[4] = {evenPairs(b, r), evenPairs(g, zero), oddPairs(b, r), oddPairs(g, zero)};
        // U = 128 + ((32767 SB - 11059 SR - 21709 SG) >> 18),
        // V = 128 + ((32767 SR - 5329 SB - 27439 SG) >> 18).
        const V16 uOut = bgrChroma(pairs, weightPair(32767, -11059), weightPair(-21709, 0));
        const V16 vOut = bgrChroma(pairs, weightPair(-5329, 32767), weightPair(-27439, 0));
        storeHalves(narrow16(vOut, uOut), u + i, v + i);
    }
    return i;
}
#endif

// ---- Packed 4:2:2 -----------------------------------------------------------
// Groups of four bytes, two pixels: the lumas at the even offsets (Y0 U Y1 V)
// when `lumaOdd` is false, else at the odd ones (U Y0 V Y1); the chroma bytes
// at the others.
template <bool lumaOdd, ToYuv420Kernels::Unpack take>
size_t unpackGroups(const uint8_t *src, uint8_t *y, uint8_t *c0, uint8_t *c1, size_t groups)
{
    const D8 d;
    const size_t N = hn::Lanes(d); // groups per step: four vectors in
    const auto lumas = [&](V8 hi, V8 lo) { return lumaOdd ? hn::ConcatOdd(d, hi, lo) : hn::ConcatEven(d, hi, lo); };
    const auto chromas = [&](V8 hi, V8 lo) { return lumaOdd ? hn::ConcatEven(d, hi, lo) : hn::ConcatOdd(d, hi, lo); };
    size_t i = 0;
    for (; i + N <= groups; i += N) {
        const uint8_t *s = src + 4 * i;
        const V8 a = hn::LoadU(d, s), b = hn::LoadU(d, s + N), c = hn::LoadU(d, s + 2 * N),
                 e = hn::LoadU(d, s + 3 * N);
        if (take != ToYuv420Kernels::Chroma) {
            hn::StoreU(lumas(b, a), d, y + 2 * i);
            hn::StoreU(lumas(e, c), d, y + 2 * i + N);
        }
        if (take != ToYuv420Kernels::Luma) {
            const V8 lo = chromas(b, a), hi = chromas(e, c); // c0 c1 c0 c1 ...
            hn::StoreU(hn::ConcatEven(d, hi, lo), d, c0 + i);
            hn::StoreU(hn::ConcatOdd(d, hi, lo), d, c1 + i);
        }
    }
    return i;
}


constexpr ToYuv420Kernels kToYuv420{
    &rgb565Blocks,
    &bgr24Blocks,
    {&unpackGroups<false, ToYuv420Kernels::Luma>, &unpackGroups<false, ToYuv420Kernels::Chroma>,
     &unpackGroups<false, ToYuv420Kernels::LumaAndChroma>},
    {&unpackGroups<true, ToYuv420Kernels::Luma>, &unpackGroups<true, ToYuv420Kernels::Chroma>,
     &unpackGroups<true, ToYuv420Kernels::LumaAndChroma>}};

} // namespace pixmill::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif

#if PIXMILL_KERNELS_ONCE
namespace pixmill {
PIXMILL_KERNEL_SET(ToYuv420Kernels, kToYuv420, toYuv420Kernels)
} // namespace pixmill
#endif
