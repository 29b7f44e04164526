// Flips of 16-bit images and planar frames against a per-sample model of the
// mode table, on random sizes, modes and layouts, in place and into a second
// frame, with guards around every buffer.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "pixmill.h"
#include "support/frames.h"
#include "support/geometry_model.h"

namespace {

using namespace pixmill::test;

// out[mirrored position] = in, for a packed w x h plane.
template <class T>
std::vector<T> mirrorModel(const std::vector<T> &in, int32_t w, int32_t h, uint32_t mode)
{
    std::vector<T> out(in.size());
    for (int32_t r = 0; r < h; ++r)
        for (int32_t c = 0; c < w; ++c) {
            const Pos p = mirrored(mode, c, r, w, h);
            out[size_t(p.r) * size_t(w) + size_t(p.c)] = in[size_t(r) * size_t(w) + size_t(c)];
        }
    return out;
}

TEST(MirrorImageRGB565, MatchesModelOnRandomImages)
{
    Random rng;
    for (int n = 0; n < 1500; ++n) {
        const int32_t w = rng.range(-2, n < 1000 ? 12 : 48), h = rng.range(-2, n < 1000 ? 12 : 48);
        const uint32_t mode = randomMirrorMode(rng);
        SCOPED_TRACE(::testing::Message() << "case " << n << ": " << w << "x" << h << ", mode " << mode);
        const size_t count = w > 0 && h > 0 ? size_t(w) * size_t(h) : 0;
        Guarded<uint16_t> src(count, size_t(rng.range(0, 3)), rng.word());
        Guarded<uint16_t> dst(count, size_t(rng.range(0, 3)), rng.word());
        src.randomize(rng);
        dst.randomize(rng);
        const int32_t result = gMirrorImageRGB565(src.begin(), dst.begin(), w, h, mode);
        ASSERT_TRUE(src.untouched());
        if (w < 0 || h < 0) {
            ASSERT_EQ(result, -1);
            ASSERT_TRUE(dst.untouched());
            continue;
        }
        ASSERT_EQ(result, 0);
        ASSERT_TRUE(dst.intact());
        ASSERT_EQ(dst.contents(), mirrorModel(src.contents(), w, h, mode));
    }
}

TEST(MirrorImageYUV, MatchesModelOnRandomFrames)
{
    Random rng;
    static const uint8_t targets[] = {1, 1, 0, 2, 255};
    for (int n = 0; n < 1500; ++n) {
        const int32_t w = rng.range(0, n < 1000 ? 12 : 48), h = rng.range(0, n < 1000 ? 12 : 48);
        const int32_t layout = rng.range(0, 9) == 0 ? (rng.coin() ? 2 : -1) : rng.range(0, 1);
        const uint32_t mode = randomMirrorMode(rng);
        const uint8_t toDestination = targets[rng.word() % 5];
        SCOPED_TRACE(::testing::Message() << "case " << n << ": " << w << "x" << h << ", layout " << layout
                                          << ", mode " << mode << ", to " << int(toDestination));
        const Layout chroma = layout == 1 ? Layout::Yuv422 : Layout::Yuv420;
        TestFrame src(w, h, chroma, rng, size_t(rng.range(0, 3)));
        TestFrame dst(w, h, chroma, rng, size_t(rng.range(0, 3)));
        const Frame srcRecord = src.frame(), dstRecord = dst.frame();
        const std::vector<uint8_t> y = src.yPlane().contents(), u = src.uPlane().contents(),
                                   v = src.vPlane().contents();
        // In place the destination record is not looked at: pass none at all.
        Frame *target = toDestination == 1 || rng.coin() ? &dst.frame() : nullptr;

        const int32_t result = gMirrorImageYUV(&src.frame(), target, layout, mode, toDestination);

        ASSERT_EQ(std::memcmp(&srcRecord, &src.frame(), sizeof srcRecord), 0);
        ASSERT_TRUE(src.intact() && dst.intact());
        if (layout != 0 && layout != 1) {
            ASSERT_EQ(result, -1);
            ASSERT_TRUE(src.untouched() && dst.untouched());
            ASSERT_EQ(std::memcmp(&dstRecord, &dst.frame(), sizeof dstRecord), 0);
            continue;
        }
        ASSERT_EQ(result, 0);
        TestFrame &out = toDestination == 1 ? dst : src;
        if (toDestination == 1) {
            ASSERT_TRUE(src.untouched());
            EXPECT_EQ(dst.frame().width, srcRecord.width);
            EXPECT_EQ(dst.frame().height, srcRecord.height);
            EXPECT_EQ(dst.frame().tag, srcRecord.tag);
        } else {
            ASSERT_TRUE(dst.untouched());
            ASSERT_EQ(std::memcmp(&dstRecord, &dst.frame(), sizeof dstRecord), 0);
        }
        const int32_t chromaRows = layout == 0 ? h >> 1 : h;
        ASSERT_EQ(out.yPlane().contents(), mirrorModel(y, w, h, mode));
        ASSERT_EQ(out.uPlane().contents(), mirrorModel(u, w >> 1, chromaRows, mode));
        ASSERT_EQ(out.vPlane().contents(), mirrorModel(v, w >> 1, chromaRows, mode));
    }
}

// A flip of both axes in place is the half turn into a second frame.
TEST(MirrorImageYUV, BothInPlaceIsHalfTurn)
{
    Random rng;
    for (int n = 0; n < 20; ++n) {
        const int32_t w = 2 * rng.range(1, 20), h = 4 * rng.range(1, 10);
        TestFrame a(w, h, Layout::Yuv420, rng), turned(w, h, Layout::Yuv420, rng);
        gRotateFrame(a.get(), turned.get(), ROTATE_180);
        ASSERT_EQ(gMirrorImageYUV(&a.frame(), nullptr, 0, MIRROR_BOTH, 0), 0);
        EXPECT_EQ(a.yPlane().contents(), turned.yPlane().contents());
        EXPECT_EQ(a.uPlane().contents(), turned.uPlane().contents());
        EXPECT_EQ(a.vPlane().contents(), turned.vPlane().contents());
    }
}

} // namespace
