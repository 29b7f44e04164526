// B,G,R bytes -> contiguous 4:2:0 buffer against a per-pixel model: own luma
// per pixel, chroma from the sums of each 2x2 block, any stride including a
// negative one. Also the worked colours and the refused sizes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "pixmill.h"
#include "support/guarded.h"
#include "support/planar_buffer.h"

namespace {

using namespace pixmill::test;

// The expected buffer for a w x h image whose row r starts at row(r).
template <class Row>
std::vector<uint8_t> model(Row row, uint32_t w, uint32_t h)
{
    const PlanarBuffer pb = planarBuffer(w, h);
    std::vector<uint8_t> out(pb.size);
    for (uint32_t r = 0; r < h; ++r)
        for (uint32_t c = 0; c < w; ++c) {
            const uint8_t *p = row(r) + 3 * c;
            out[r * w + c] = uint8_t((19595u * p[2] + 38470u * p[1] + 7471u * p[0]) / 65536u);
        }
    for (uint32_t j = 0; j < h / 2; ++j)
        for (uint32_t k = 0; k < w / 2; ++k) {
            int sb = 0, sg = 0, sr = 0;
            for (uint32_t i = 0; i < 4; ++i) {
                const uint8_t *p = row(2 * j + i / 2) + 3 * (2 * k + i % 2);
                sb += p[0], sg += p[1], sr += p[2];
            }
            out[pb.first + j * (w / 2) + k] = uint8_t(128 + floorShift(32767 * sb - 11059 * sr - 21709 * sg, 18));
            out[pb.second + j * (w / 2) + k] = uint8_t(128 + floorShift(32767 * sr - 5329 * sb - 27439 * sg, 18));
        }
    return out;
}

TEST(BGR24toYUV420Planar, MatchesModelOnRandomSizesAndStrides)
{
    Random rng;
    for (int i = 0; i < 1500; ++i) {
        const int maxHalf = i < 1200 ? 6 : 30;
        const uint32_t w = 2 * uint32_t(rng.range(1, maxHalf)), h = 2 * uint32_t(rng.range(1, maxHalf));
        const int32_t pitch = int32_t(3 * w) + (rng.coin() ? 0 : rng.range(1, 9));
        const int32_t stride = rng.range(0, 2) == 0 ? -pitch : pitch;
        SCOPED_TRACE(::testing::Message() << "case " << i << ": " << w << "x" << h << ", stride " << stride);
        Guarded<uint8_t> src(size_t(pitch) * (h - 1) + 3 * w, size_t(rng.range(0, 3)), rng.word());
        src.randomize(rng);
        const uint8_t *first = stride < 0 ? src.data() + size_t(pitch) * (h - 1) : src.data();
        Guarded<uint8_t> out(planarBuffer(w, h).size, size_t(rng.range(0, 3)), rng.word());
        gBGR24INTtoYUV420Planar(first, out.data(), w, h, stride);
        const auto want = model([&](uint32_t r) { return first + ptrdiff_t(r) * stride; }, w, h);
        ASSERT_EQ(out.contents(), want);
        ASSERT_TRUE(out.intact());
        ASSERT_TRUE(src.untouched());
    }
}

TEST(BGR24toYUV420Planar, WorkedColours)
{
    const struct {
        uint8_t b, g, r;
        uint8_t y, u, v;
    } cases[] = {{0, 0, 0, 0, 128, 128},       {255, 255, 255, 255, 127, 127}, {255, 0, 0, 29, 255, 107},
                 {0, 255, 0, 149, 43, 21},     {0, 0, 255, 76, 84, 255},       {0, 255, 255, 225, 0, 148},
                 {255, 255, 0, 178, 171, 0}};
    for (const auto &k : cases) {
        const uint8_t img[12] = {k.b, k.g, k.r, k.b, k.g, k.r, k.b, k.g, k.r, k.b, k.g, k.r};
        uint8_t out[6];
        gBGR24INTtoYUV420Planar(img, out, 2, 2, 6);
        const std::vector<uint8_t> want{k.y, k.y, k.y, k.y, k.u, k.v};
        EXPECT_EQ(std::vector<uint8_t>(out, out + 6), want) << int(k.b) << ", " << int(k.g) << ", " << int(k.r);
    }
}

// A zero size writes nothing; odd sizes have no whole-block layout and are
// refused.
TEST(BGR24toYUV420Planar, ZeroAndOddSizesWriteNothing)
{
    Random rng;
    Guarded<uint8_t> src(3 * 8 * 8);
    src.randomize(rng);
    for (auto [w, h] : {std::pair{0u, 4u}, {4u, 0u}, {0u, 0u}, {3u, 4u}, {4u, 3u}, {5u, 5u}, {1u, 2u}}) {
        Guarded<uint8_t> out(3 * 8 * 8);
        gBGR24INTtoYUV420Planar(src.data(), out.data(), w, h, 24);
        EXPECT_TRUE(out.untouched()) << w << "x" << h;
    }
}

} // namespace
