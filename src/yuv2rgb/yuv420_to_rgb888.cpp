// 4:2:0 -> tightly packed R,G,B bytes: BT.601, truncating terms, no offsets.
#include "yuv2rgb/block_walk.h"

namespace pixmill {
namespace {

struct Rgb888From420 : ChromaOf<Terms::Truncating, Coeff601, false> {
    using Out = uint8_t;
    static PairKernel<uint8_t> kernel(const Yuv2RgbKernels &k) { return k.rgb888From420; }
    static constexpr int32_t kUnits = 3;
    template <int row, int col>
    static PIXMILL_INLINE void put(uint8_t *p, int32_t luma, const ChromaTerms &t)
    {
        storeRgb(p, pixel(luma, t, NoOffsets));
    }
};

} // namespace
} // namespace pixmill

extern "C" PIXMILL_API PIXMILL_CODE(PIXMILL_SECTION_YUV420_LOWER) void gEmYUV420toRGB888TopDown(
    const Frame *frame, uint8_t *destination, int32_t sourceWidth, int32_t sourceHeight, int32_t topDown)
{
    using namespace pixmill;
    if (!servesPart(*frame, sourceWidth, sourceHeight))
        return;
    walkBlocks<Rgb888From420>(*frame, destination, sourceWidth, sourceHeight,
                              static_cast<ptrdiff_t>(sourceWidth) * 3, topDown != 0);
}
