// Whole 4:2:0 frame -> B,G,R bytes with a caller's stride: BT.709 with
// rounded terms. Luma in odd columns is lifted by 1 before the clamp, which
// is the same as an offset of 1 on all three values of those pixels.
#include "yuv2rgb/block_walk.h"

namespace pixmill {
namespace {

struct Bgr24From420 : ChromaOf<Terms::Rounding, Coeff709, false> {
    using Out = uint8_t;
    static PairKernel<uint8_t> kernel(const Yuv2RgbKernels &k) { return k.bgr24From420; }
    static constexpr int32_t kUnits = 3;
    template <int row, int col>
    static PIXMILL_INLINE void put(uint8_t *p, int32_t luma, const ChromaTerms &t)
    {
        storeBgr(p, pixel(luma + col, t, NoOffsets));
    }
};

} // namespace
} // namespace pixmill

extern "C" PIXMILL_API int32_t gYUV420toBGR24(const Frame *frame, uint8_t *destination, int32_t stride)
{
    using namespace pixmill;
    const int32_t width = frame->width;
    const int32_t height = frame->height;
    if (stride < 3 * width)
        return -1;
    // Sizes are even by contract. An odd last column or row repeats its
    // neighbour, as in the other whole-image walks; a width or height of 1
    // has nothing to repeat from and is left alone.
    if (servesPart(*frame, width, height))
        walkBlocks<Bgr24From420>(*frame, destination, width, height, stride, true);
    return 0;
}
