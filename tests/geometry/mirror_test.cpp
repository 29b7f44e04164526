// Flips of 16-bit images and planar frames against a per-sample model of the
// mode table, on random sizes, modes and layouts, in place and into a second
// frame, with every buffer between guards or against an inaccessible page.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "pixmill.h"
#include "support/buffers.h"
#include "support/geometry_model.h"

namespace {

using namespace pixmill::test;

// A packed w x h plane flipped as the mode table has it: (c, r) goes to
// (c, h - 1 - r) in mode 1 (top-bottom), to (w - 1 - c, h - 1 - r) in mode 2
// (both) and to (w - 1 - c, r) in any other mode (left-right).
template <class T>
std::vector<T> flip(const std::vector<T> &in, int32_t w, int32_t h, uint32_t mode)
{
    std::vector<T> out(in.size());
    placePlane(in, w, h, w, out, [&](int32_t c, int32_t r) {
        return Pos{mode == 1 ? c : w - 1 - c, mode == 1 || mode == 2 ? h - 1 - r : r};
    });
    return out;
}

// Each random case flips a 16-bit image (negative sides are refused) and a
// frame of that size (side 0 for a negative side) in either layout or a
// refused one, in place or into a second frame. Modes: the two named ones and
// a spread of values that mean left-right.
TEST(Mirror, BothExportsMatchModelOnRandomImages)
{
    static const uint32_t modes[] = {0u, 1u, 2u, 0u, 1u, 2u, 3u, 99u, 0xFFFFFFFFu, 0x101u};
    static const uint8_t targets[] = {1, 1, 0, 2, 255};
    Random rng;
    for (int n = 0; n < 1500; ++n) {
        // Small sides first, then all sides around the vector steps, now and
        // then a long row or a tall column.
        const int32_t side = n < 700 ? 12 : n % 8 == 0 ? 2000 : 130;
        const int32_t w = rng.range(-2, side), h = rng.range(-2, w > 130 ? 40 : side);
        const int32_t layout = rng.range(0, 9) == 0 ? (rng.coin() ? 2 : -1) : rng.range(0, 1);
        const uint32_t mode = modes[rng.word() % 10];
        const uint8_t toDestination = targets[rng.word() % 5];
        SCOPED_TRACE(::testing::Message() << "case " << n << ": " << w << "x" << h << ", layout " << layout
                                          << ", mode " << mode << ", to " << int(toDestination));
        const int32_t fw = std::max(w, 0), fh = std::max(h, 0); // frame sides
        Guarded<uint16_t> image(size_t(fw) * size_t(fh), rng), out(size_t(fw) * size_t(fh), rng);
        EXPECT_EQ(gMirrorImageRGB565(image.data(), out.data(), w, h, mode), w < 0 || h < 0 ? -1 : 0);
        ASSERT_TRUE(image.untouched() && out.intact());
        ASSERT_EQ(out.contents(), flip(image.contents(), w, h, mode));

        const Layout chroma = layout == 1 ? Layout::Yuv422 : Layout::Yuv420;
        const size_t chromaCount = chromaSize(fw, fh, chroma);
        TestFrame src(fw, fh, chromaCount, rng), dst(fw, fh, chromaCount, rng);
        const Frame srcRecord = src.frame(), dstRecord = dst.frame();
        // In place the destination record is not looked at: pass none at all.
        Frame *target = toDestination == 1 || rng.coin() ? &dst.frame() : nullptr;
        const bool refused = layout != 0 && layout != 1, intoSecond = toDestination == 1 && !refused;
        EXPECT_EQ(gMirrorImageYUV(&src.frame(), target, layout, mode, toDestination), refused ? -1 : 0);
        // Into a second frame width, height and tag are copied; else that record and its planes stay.
        const Frame copied{dstRecord.y, dstRecord.u, dstRecord.v, srcRecord.width, srcRecord.height, srcRecord.tag};
        ASSERT_EQ(std::memcmp(intoSecond ? &copied : &dstRecord, &dst.frame(), sizeof dstRecord), 0);
        ASSERT_EQ(std::memcmp(&srcRecord, &src.frame(), sizeof srcRecord), 0);
        ASSERT_TRUE(src.intact() && dst.intact() && (intoSecond ? src : dst).untouched());
        // A refused call leaves the source as it was; 4:2:2 chroma is flipped
        // as a plane of all rows.
        const TestFrame &flipped = intoSecond ? dst : src;
        for (int i = 0; i < 3; ++i) {
            const int32_t pw = i == 0 ? fw : fw >> 1, ph = i == 0 || layout == 1 ? fh : fh >> 1;
            const std::vector<uint8_t> before = src.planes[i].initial();
            ASSERT_EQ(flipped.planes[i].contents(), refused ? before : flip(before, pw, ph, mode)) << "plane " << i;
        }
    }
}

} // namespace
