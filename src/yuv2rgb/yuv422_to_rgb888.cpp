// 4:2:2 planar -> B,G,R bytes: BT.601, truncating terms, Dither2x2 added to
// the 8-bit values that are stored. Each row of a block reads its own chroma.
// The function has two export names at one address; the bytes are B,G,R
// under both.
#include "yuv2rgb/block_walk.h"

namespace pixmill {
namespace {

struct Bgr888From422 : ChromaOf<Terms::Truncating, Coeff601, true> {
    using Out = uint8_t;
    static PairKernel<uint8_t> kernel(const Yuv2RgbKernels &k) { return k.bgr888From422; }
    static constexpr int32_t kUnits = 3;
    template <int row, int col>
    static PIXMILL_INLINE void put(uint8_t *p, int32_t luma, const ChromaTerms &t)
    {
        storeBgr(p, pixel(luma, t, Dither2x2[row][col]));
    }
};

} // namespace
} // namespace pixmill

extern "C" PIXMILL_API void gYUV422HPlanartoBGR888TopDown(const Frame *frame, uint8_t *destination,
                                                          int32_t sourceWidth, int32_t sourceHeight, int32_t topDown)
{
    using namespace pixmill;
    if (!servesPart(*frame, sourceWidth, sourceHeight))
        return;
    walkBlocks<Bgr888From422>(*frame, destination, sourceWidth, sourceHeight,
                              static_cast<ptrdiff_t>(sourceWidth) * 3, topDown != 0);
}

#if PIXMILL_HAS_ALIAS_ATTRIBUTE
extern "C" PIXMILL_API void gYUV422HPlanartoRGB888TopDown(const Frame *frame, uint8_t *destination,
                                                          int32_t sourceWidth, int32_t sourceHeight, int32_t topDown)
    PIXMILL_ALIAS(gYUV422HPlanartoBGR888TopDown);
#endif
