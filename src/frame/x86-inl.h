// x86 instructions that Highway has no operation for, at each vector width
// the target has, for a kernel file to include in each of its target passes
// (see frame/simd.h). PIXMILL_X86_OPS says whether this pass has them: 1 on
// SSE4, AVX2 and AVX-512, 0 elsewhere, where the kernels keep a portable way.
#if defined(PIXMILL_FRAME_X86_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef PIXMILL_FRAME_X86_INL_H
#undef PIXMILL_FRAME_X86_INL_H
#else
#define PIXMILL_FRAME_X86_INL_H
#endif

#undef PIXMILL_X86_OPS
#if HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
#define PIXMILL_X86_OPS 1

HWY_BEFORE_NAMESPACE();
namespace pixmill::HWY_NAMESPACE {

// For vectors Vec of one width with the intrinsics' prefix:
//  - mulAddBytePairs(a, w): a0 * w0 + a1 * w1 for each byte pair, a unsigned
//    and w signed, saturated to 16 bits (pmaddubsw);
//  - mulAddWordPairs(a, w): the same for 16-bit pairs, in 32 bits (pmaddwd);
//  - packUnsignedBytes / packSignedBytes(lo, hi): the 16-bit lanes of lo,
//    then of hi, narrowed to bytes with saturation, 128-bit block by block;
//  - packWords(lo, hi): the same from 32-bit lanes to signed 16 bits.
#define PIXMILL_X86_WIDTH(Vec, prefix)                                                                             \
    HWY_INLINE Vec<int16_t> mulAddBytePairs(Vec<uint8_t> a, Vec<uint8_t> w)                                         \
    {                                                                                                               \
        return Vec<int16_t>{prefix##maddubs_epi16(a.raw, w.raw)};                                                   \
    }                                                                                                               \
    HWY_INLINE Vec<int32_t> mulAddWordPairs(Vec<int16_t> a, Vec<int32_t> w)                                         \
    {                                                                                                               \
        return Vec<int32_t>{prefix##madd_epi16(a.raw, w.raw)};                                                      \
    }                                                                                                               \
    HWY_INLINE Vec<uint8_t> packUnsignedBytes(Vec<int16_t> lo, Vec<int16_t> hi)                                     \
    {                                                                                                               \
        return Vec<uint8_t>{prefix##packus_epi16(lo.raw, hi.raw)};                                                  \
    }                                                                                                               \
    HWY_INLINE Vec<uint8_t> packSignedBytes(Vec<int16_t> lo, Vec<int16_t> hi)                                       \
    {                                                                                                               \
        return Vec<uint8_t>{prefix##packs_epi16(lo.raw, hi.raw)};                                                   \
    }                                                                                                               \
    HWY_INLINE Vec<int16_t> packWords(Vec<int32_t> lo, Vec<int32_t> hi)                                             \
    {                                                                                                               \
        return Vec<int16_t>{prefix##packs_epi32(lo.raw, hi.raw)};                                                   \
    }

PIXMILL_X86_WIDTH(hwy::HWY_NAMESPACE::Vec128, _mm_)
#if HWY_TARGET != HWY_SSE4
PIXMILL_X86_WIDTH(hwy::HWY_NAMESPACE::Vec256, _mm256_)
#endif
#if HWY_TARGET == HWY_AVX3
PIXMILL_X86_WIDTH(hwy::HWY_NAMESPACE::Vec512, _mm512_)
#endif
#undef PIXMILL_X86_WIDTH

} // namespace pixmill::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#else
#define PIXMILL_X86_OPS 0
#endif

#endif
