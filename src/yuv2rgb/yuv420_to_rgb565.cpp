// 4:2:0 -> RGB565 words: BT.601, truncating terms, Dither2x2 by source parity.
#include "yuv2rgb/block_walk.h"

namespace pixmill {
namespace {

struct Rgb565From420 : ChromaOf<Terms::Truncating, Coeff601, false> {
    using Out = uint16_t;
    static PairKernel<uint16_t> kernel(const Yuv2RgbKernels &k) { return k.rgb565From420[LeftToRight]; }
    static constexpr int32_t kUnits = 1;
    template <int row, int col>
    static PIXMILL_INLINE void put(uint16_t *p, int32_t luma, const ChromaTerms &t)
    {
        *p = packRgb565(pixel(luma, t, Dither2x2[row][col]));
    }
};

} // namespace
} // namespace pixmill

extern "C" PIXMILL_API PIXMILL_CODE(PIXMILL_SECTION_YUV420_UPPER) void gEmYUV420toRGB565TopDown(
    const Frame *frame, uint16_t *destination, int32_t sourceWidth, int32_t sourceHeight, int32_t topDown)
{
    using namespace pixmill;
    if (!servesPart(*frame, sourceWidth, sourceHeight))
        return;
    walkBlocks<Rgb565From420>(*frame, destination, sourceWidth, sourceHeight, sourceWidth, topDown != 0);
}
