// Packed 4:2:2 -> planar 4:2:0 against a per-pixel model built from the
// byte-offset table of each operation: lumas in place, chroma of the even
// source rows only. The Frame forms also against the record fields they
// set; the contiguous form plane by plane, with its odd-size walk.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "pixmill.h"
#include "support/guarded.h"
#include "support/planar_buffer.h"

namespace {

using namespace pixmill::test;

using FrameOp = int32_t (*)(const uint8_t *, Frame *, uint32_t, uint32_t);

// Offsets within a 4-byte group: first and second pixel's luma, the byte
// that goes to `u` and the byte that goes to `v`.
struct FrameForm {
    const char *name;
    FrameOp op;
    int luma0, luma1, toU, toV;
};
const FrameForm kFrameForms[] = {{"gY1UY2VToYUV420", gY1UY2VToYUV420, 0, 2, 3, 1},
                                 {"gY1UY2VToYV12", gY1UY2VToYV12, 0, 2, 1, 3},
                                 {"gUY1VY2ToYUV420", gUY1VY2ToYUV420, 1, 3, 0, 2}};

// Three guarded planes for a w x h target, (h + 1) / 2 chroma rows, under a
// record whose size fields and tag hold random values.
struct Target {
    Guarded<uint8_t> y, u, v;
    Frame frame;
    Target(uint32_t w, uint32_t h, Random &rng)
        : y(size_t(w) * h, 0, rng.word()), u(size_t(w / 2) * ((h + 1) / 2), 0, rng.word()),
          v(size_t(w / 2) * ((h + 1) / 2), 0, rng.word()),
          frame{y.begin(), u.begin(), v.begin(), uint16_t(rng.word()), uint16_t(rng.word()), rng.word()}
    {
    }
    bool untouched() const { return y.untouched() && u.untouched() && v.untouched(); }
};

// The record after the call: the sizes cut to 16 bits, nothing else changed.
::testing::AssertionResult recordSet(const Frame &before, const Frame &after, uint32_t w, uint32_t h)
{
    Frame want = before;
    want.width = uint16_t(w);
    want.height = uint16_t(h);
    if (std::memcmp(&want, &after, sizeof want) != 0)
        return ::testing::AssertionFailure() << "record says " << after.width << "x" << after.height;
    return ::testing::AssertionSuccess();
}

TEST(PackedToFrame, MatchesModelOnRandomSizes)
{
    Random rng;
    for (const FrameForm &form : kFrameForms)
        for (int i = 0; i < 1200; ++i) {
            const int maxSide = i < 1000 ? 14 : 50;
            const uint32_t w = 2 * uint32_t(rng.range(0, maxSide / 2)), h = uint32_t(rng.range(0, maxSide));
            SCOPED_TRACE(::testing::Message() << form.name << " case " << i << ": " << w << "x" << h);
            Guarded<uint8_t> src(2 * size_t(w) * h, size_t(rng.range(0, 3)), rng.word());
            src.randomize(rng);
            Target t(w, h, rng);
            const Frame before = t.frame;
            ASSERT_EQ(form.op(src.begin(), &t.frame, w, h), 0);
            ASSERT_TRUE(recordSet(before, t.frame, w, h));
            for (uint32_t r = 0; r < h; ++r)
                for (uint32_t c = 0; c < w; ++c)
                    ASSERT_EQ(t.y[r * w + c], src[r * 2 * w + c / 2 * 4 + size_t(c & 1 ? form.luma1 : form.luma0)])
                        << "y(" << r << ", " << c << ")";
            for (uint32_t j = 0; j < (h + 1) / 2; ++j)
                for (uint32_t k = 0; k < w / 2; ++k) {
                    const size_t group = 2 * j * 2 * w + 4 * k;
                    ASSERT_EQ(t.u[j * (w / 2) + k], src[group + size_t(form.toU)]) << "u(" << j << ", " << k << ")";
                    ASSERT_EQ(t.v[j * (w / 2) + k], src[group + size_t(form.toV)]) << "v(" << j << ", " << k << ")";
                }
            ASSERT_TRUE(t.y.intact() && t.u.intact() && t.v.intact());
            ASSERT_TRUE(src.untouched());
        }
}

// Sizes that move no pixel still land in the record (cut to 16 bits); an
// odd width is refused after the record is set.
TEST(PackedToFrame, SizesWithoutPixelMovesOnlySetTheRecord)
{
    Random rng;
    Guarded<uint8_t> src(2 * 7 * 6);
    src.randomize(rng);
    for (const FrameForm &form : kFrameForms)
        for (auto [w, h] : {std::pair{0u, 6u}, {6u, 0u}, {0x10000u, 0u}, {0u, 0x10003u}, {7u, 6u}, {3u, 3u}}) {
            Target t(8, 8, rng);
            const Frame before = t.frame;
            EXPECT_EQ(form.op(src.data(), &t.frame, w, h), 0);
            EXPECT_TRUE(recordSet(before, t.frame, w, h)) << form.name << " " << w << "x" << h;
            EXPECT_TRUE(t.untouched()) << form.name << " " << w << "x" << h;
        }
}

// The contiguous form: row pairs only, each row floor(w / 2) groups long;
// the chroma planes start where the full w x h puts them.
TEST(YUY2toYUV420, MatchesModelOnRandomSizes)
{
    Random rng;
    for (int i = 0; i < 1500; ++i) {
        const int maxSide = i < 1200 ? 14 : 50;
        const uint32_t w = uint32_t(rng.range(0, maxSide)), h = uint32_t(rng.range(0, maxSide));
        SCOPED_TRACE(::testing::Message() << "case " << i << ": " << w << "x" << h);
        Guarded<uint8_t> src(2 * size_t(w) * h, 0, rng.word());
        src.randomize(rng);
        const PlanarBuffer pb = planarBuffer(w, h);
        Guarded<uint8_t> out(pb.size, 0, rng.word());
        out.randomize(rng);
        std::vector<uint8_t> want = out.contents();
        const uint32_t ew = w & ~1u;
        for (uint32_t r = 0; r < (h & ~1u); ++r)
            for (uint32_t c = 0; c < ew; ++c)
                want[r * ew + c] = src[r * 2 * ew + c / 2 * 4 + (c & 1) * 2];
        for (uint32_t j = 0; j < h / 2; ++j)
            for (uint32_t k = 0; k < w / 2; ++k) {
                want[pb.first + j * (w / 2) + k] = src[2 * j * 2 * ew + 4 * k + 1];
                want[pb.second + j * (w / 2) + k] = src[2 * j * 2 * ew + 4 * k + 3];
            }
        YUY2toYUV420(src.begin(), out.begin(), w, h);
        ASSERT_EQ(out.contents(), want);
        ASSERT_TRUE(out.intact());
        ASSERT_TRUE(src.untouched());
    }
}

} // namespace
