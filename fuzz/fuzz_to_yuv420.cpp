// Conversions into planar 4:2:0: RGB565, B,G,R bytes, the packed 4:2:2 byte
// orders and the cropping scaler from planar 4:2:2. Sizes come from the input
// and stay within what each operation asks of its caller.
#include "fuzz_support.h"

using namespace fuzz;

namespace {

void fromRgb565(FuzzedDataProvider &in, Random &rng)
{
    if (!defined(gEmRGB565toYUV420))
        return;
    const int32_t w = 2 * pick(in, 1, 20), h = 2 * pick(in, 1, 20);
    const int32_t sw = pick(in, 2, w), sh = pick(in, 1, h);
    Source<uint16_t> image(size_t(sw) * size_t(sh), rng);
    TargetFrame out(w, h, size_t(w) * size_t(h), size_t(w / 2) * size_t(h / 2), rng);
    const Frame before = out.frame;
    gEmRGB565toYUV420(image.ptr(), &out.frame, uint32_t(sw), uint32_t(sh));
    require(std::memcmp(&before, &out.frame, sizeof before) == 0, "the Frame record changed");
    out.check();
    image.check();
}

void fromBgr24(FuzzedDataProvider &in, Random &rng)
{
    if (!defined(gBGR24INTtoYUV420Planar))
        return;
    const int32_t w = 2 * pick(in, 0, 20), h = 2 * pick(in, 0, 20);
    const int32_t pitch = 3 * w + pick(in, 0, 7);
    const bool bottomUp = in.ConsumeBool(); // source on the last row, negative stride
    Source<uint8_t> image(h ? size_t(h - 1) * size_t(pitch) + size_t(3 * w) : 0, rng);
    Target<uint8_t> out(size_t(w) * size_t(h) * 3 / 2, rng);
    const uint8_t *first = image.ptr() + (bottomUp && h ? size_t(h - 1) * size_t(pitch) : 0);
    gBGR24INTtoYUV420Planar(first, out.begin(), uint32_t(w), uint32_t(h), bottomUp ? -pitch : pitch);
    out.check();
    image.check();
}

// The three Frame forms (odd heights write one more chroma row) and the
// contiguous YUY2 form (any size).
void fromPacked(FuzzedDataProvider &in, Random &rng)
{
    const int op = pick(in, 0, 3);
    const bool contiguous = op == 3;
    const int32_t w = contiguous ? pick(in, 0, 40) : 2 * pick(in, 0, 20), h = pick(in, 0, 40);
    Source<uint8_t> image(size_t(w) * size_t(h) * 2, rng);
    if (contiguous) {
        if (!defined(YUY2toYUV420))
            return;
        const size_t luma = size_t(w) * size_t(h);
        Target<uint8_t> out(luma + luma / 4 + size_t(w / 2) * size_t(h / 2), rng);
        YUY2toYUV420(image.ptr(), out.begin(), uint32_t(w), uint32_t(h));
        out.check();
    } else {
        auto fn = op == 0 ? gY1UY2VToYUV420 : op == 1 ? gY1UY2VToYV12 : gUY1VY2ToYUV420;
        if (!defined(fn))
            return;
        TargetFrame out(pick(in, 0, 500), pick(in, 0, 500), size_t(w) * size_t(h), size_t(w / 2) * size_t((h + 1) / 2),
                        rng);
        Frame expected = out.frame;
        expected.width = uint16_t(w), expected.height = uint16_t(h);
        require(fn(image.ptr(), &out.frame, uint32_t(w), uint32_t(h)) == 0, "the result was not 0");
        require(std::memcmp(&expected, &out.frame, sizeof expected) == 0, "the record does not hold the new size");
        out.check();
    }
    image.check();
}

// Planar 4:2:2 rectangle to a whole 4:2:0 target of even size, at least 4.
void from422(FuzzedDataProvider &in, Random &rng)
{
    if (!defined(gYUV422toYUV420))
        return;
    const int32_t w = 2 * pick(in, 1, 24), h = pick(in, 1, 48);
    SourceFrame src(w, h, size_t(w / 2) * size_t(h), rng);
    const int32_t tw = 2 * pick(in, 2, 40), th = 2 * pick(in, 2, 40);
    TargetFrame out(tw, th, size_t(tw) * size_t(th), size_t(tw / 2) * size_t(th / 2), rng);
    const uint32_t x = uint32_t(pick(in, 0, w - 1)), y = uint32_t(pick(in, 0, h - 1));
    const uint16_t srcW = uint16_t(pick(in, 1, 100)), srcH = uint16_t(pick(in, 1, 100));
    const Frame before = out.frame;
    require(gYUV422toYUV420(&src.frame, &out.frame, x, y, srcW, srcH) == 0, "the result was not 0");
    require(std::memcmp(&before, &out.frame, sizeof before) == 0, "the target record changed");
    out.check();
    src.check();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    return run(data, size, {fromRgb565, fromBgr24, fromPacked, from422});
}
