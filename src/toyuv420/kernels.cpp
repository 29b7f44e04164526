// Vector kernels of the conversions into planar 4:2:0, one set per target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "toyuv420/kernels.cpp"
#include "frame/simd.h"
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
// Luma in 16-bit lanes: with each Q16 weight split as 256 * high + low, the
// sum is 256 * A + B for A = 76 r + 150 g + 29 b and B = 139 r + 70 g + 47 b,
// both at most 65280 for bytes, and (256 * A + B) >> 16 equals
// (A + (B >> 8)) >> 8, since B's low byte cannot carry into bit 16.
static_assert(76 * 256 + 139 == 19595 && 150 * 256 + 70 == 38470 && 29 * 256 + 47 == 7471, "luma weights");

HWY_INLINE V16 bgrLuma(V16 b, V16 g, V16 r)
{
    const D16 d;
    const V16 a = hn::Add(hn::Add(mulConst(r, uint16_t(76)), mulConst(g, uint16_t(150))), mulConst(b, uint16_t(29)));
    const V16 lo = hn::Add(hn::Add(mulConst(r, uint16_t(139)), mulConst(g, uint16_t(70))), mulConst(b, uint16_t(47)));
    return hn::ShiftRight<8>(hn::Add(a, hn::ShiftRight<8>(lo)));
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

// Chroma in 16-bit lanes from block sums S of at most 1020. The negative
// weights of U, and those of V, add up to -32768; taking them on the
// complements 1020 - S turns the sum into P - 1020 * 32768 with P >= 0 a sum
// of three products w * S' (S' a sum or its complement, 0 < w < 32768), so
//   128 + (sum >> 18) = (P + 2^17) >> 18,  P + 2^17 < 2^26.
// With each S' times 64 in a lane (at most 65280), the products 64 * w * S'
// split into high and low 16-bit halves, and
//   (P + 2^17) >> 18 = (128 + highs + carries) >> 8,
// the carries out of the sum of the low halves. Those are multiples of 64, so
// a carry out of a + b shows in bit 15 of their rounded mean (a + b + 1) >> 1.
static_assert(11059 + 21709 == 32768 && 5329 + 27439 == 32768, "negative chroma weights");

HWY_INLINE V16 bgrChroma(const V16 (&s64)[3], const uint16_t (&w)[3])
{
    const D16 d;
    const V16 f0 = factor(d, w[0]);
    V16 high = hn::Add(hn::Set(d, 128), hn::MulHigh(s64[0], f0)), low = hn::Mul(s64[0], f0);
    for (size_t k = 1; k < 3; ++k) {
        const V16 f = factor(d, w[k]);
        const V16 lo = hn::Mul(s64[k], f);
        high = hn::Add(hn::Add(high, hn::MulHigh(s64[k], f)), hn::ShiftRight<15>(hn::AverageRound(low, lo)));
        low = hn::Add(low, lo);
    }
    return hn::ShiftRight<8>(high);
}

size_t bgr24Blocks(const uint8_t *top, const uint8_t *bottom, uint8_t *yTop, uint8_t *yBottom, uint8_t *u,
                   uint8_t *v, size_t blocks)
{
    const D16 d;
    const size_t N = hn::Lanes(d); // blocks per step: Lanes(D8) pixels a row
    const V16 full = hn::Set(d, 1020 << 6);
    size_t i = 0;
    for (; i + N <= blocks; i += N) {
        const PairSums t = bgrRow(top + 6 * i, yTop + 2 * i);
        const PairSums s = bgrRow(bottom + 6 * i, yBottom + 2 * i);
        const V16 b = hn::ShiftLeft<6>(hn::Add(t.b, s.b)), g = hn::ShiftLeft<6>(hn::Add(t.g, s.g)),
                  r = hn::ShiftLeft<6>(hn::Add(t.r, s.r));
        const V16 gFlipped = hn::Sub(full, g);
        const V16 uTerms[3] = {b, hn::Sub(full, r), gFlipped}, vTerms[3] = {r, hn::Sub(full, b), gFlipped};
        // U = 128 + ((32767 SB - 11059 SR - 21709 SG) >> 18),
        // V = 128 + ((32767 SR - 5329 SB - 27439 SG) >> 18).
        const V16 uOut = bgrChroma(uTerms, {32767, 11059, 21709}), vOut = bgrChroma(vTerms, {32767, 5329, 27439});
        storeHalves(narrow16(vOut, uOut), u + i, v + i);
    }
    return i;
}

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
