// Whole-frame turns against a per-sample model of the placement table, on
// random sizes and codes, with every plane between guards or against an
// inaccessible page.
#include <gtest/gtest.h>

#include <cstring>

#include "pixmill.h"
#include "support/buffers.h"
#include "support/geometry_model.h"

namespace {

using namespace pixmill::test;

// The exports, each with the shift that gives each chroma copy's byte count
// from the luma count: 2 for 4:2:0, 1 for 4:2:2, none (-1) for luma alone.
const std::pair<void (*)(const Frame *, const Frame *, Rotation), int> kinds[] = {
    {gRotateFrame, 2}, {gRotate422Frame, 1}, {gRotateMonochromeFrame, -1}};

// A side of a random case: small ones first, then every size around the
// vector steps and tile bands, then now and then a long one.
int32_t randomSide(Random &rng, int n, int32_t longSide)
{
    return rng.range(0, n < 100 ? 12 : n % 8 == 0 ? longSide : 130);
}

TEST(RotateFrame, MatchesModelOnRandomFrames)
{
    Random rng;
    for (const auto &[rotate, shift] : kinds)
        for (int n = 0; n < 700; ++n) {
            const uint32_t code = randomRotation(rng);
            const bool halfTurn422 = shift == 1 && code == 2, turn = code % 2 == 1; // a quarter turn swaps the sides
            const int32_t even = code == 0 || rng.range(0, 5) == 0 ? ~0 : ~1;
            // Mostly sizes that the turns serve: even sides, for the 4:2:2 half
            // turn an even width. One side may be long when the other is short.
            const int32_t w = randomSide(rng, n, 2000) & even;
            const int32_t h = randomSide(rng, n, w > 130 ? 40 : 2000) & (halfTurn422 ? ~0 : even);
            SCOPED_TRACE(::testing::Message() << "shift " << shift << ", case " << n << ": " << w << "x" << h
                                              << ", code " << code);
            // Chroma planes have the byte count of the plain copy, (W * H) >> 2
            // or >> 1, more than the plane at odd sizes; of a turn, exactly the
            // plane's. For luma alone they are empty and the record's u and v null.
            const size_t chroma = shift < 0 ? 0 : code == 0 ? size_t(w) * size_t(h) >> shift
                                                            : size_t(w >> 1) * size_t(shift == 1 ? h : h >> 1);
            TestFrame in(w, h, chroma, rng), out(turn ? h : w, turn ? w : h, chroma, rng);
            Frame src = in.frame(), dst = out.frame();
            if (shift < 0)
                src.u = src.v = dst.u = dst.v = nullptr;
            const Frame record = dst;
            const Guarded<uint8_t> *was = code == 0 ? in.planes : out.planes;
            std::vector<uint8_t> want[3] = {was[0].initial(), was[1].initial(), was[2].initial()};
            uint8_t *lumaOnly[1] = {dst.y}; // luma alone gets a record that holds nothing but y
            rotate(&src, shift < 0 ? reinterpret_cast<const Frame *>(lumaOnly) : &dst, code);

            ASSERT_EQ(std::memcmp(&record, &dst, sizeof record), 0);
            ASSERT_TRUE(in.untouched() && out.intact());
            const bool model = code != 0 && code <= 3 && w % 2 == 0 && (h % 2 == 0 || halfTurn422);
            for (int i = 0; i < (shift < 0 ? 1 : 3); ++i) {
                const Guarded<uint8_t> &plane = in.planes[i];
                const int32_t pw = i == 0 ? w : w >> 1, ph = i == 0 || shift == 1 ? h : h >> 1;
                // 4:2:2 chroma under a quarter turn: sample (c, 2k) lands in column
                // (h >> 1) - 1 - k of rows 2c and 2c + 1 (ROTATE_90), in column k
                // of rows w - 2 - 2c and w - 1 - 2c (ROTATE_270). Here odd row
                // 2k + 1 makes the second store, and reads as a copy of row 2k.
                const bool doubled = model && i > 0 && shift == 1 && turn;
                std::vector<uint8_t> samples = plane.contents();
                for (size_t j = 0; doubled && j < samples.size(); ++j)
                    samples[j] = plane[j / size_t(2 * pw) * size_t(2 * pw) + j % size_t(pw)];
                if (model)
                    placePlane(samples, pw, ph, doubled ? h / 2 : turn ? ph : pw, want[i], [&](int32_t c, int32_t r) {
                        const int32_t k = r / 2, row = (code == 1 ? 2 * c : w - 2 - 2 * c) + r % 2;
                        return doubled ? Pos{code == 1 ? h / 2 - 1 - k : k, row} : turned(code, c, r, pw, ph);
                    });
                ASSERT_EQ(out.planes[i].contents(), want[i]) << "plane " << i;
            }
        }
}
// A 2x2 image turned each way, written out by hand: 1 2 / 3 4 becomes
// 3 1 / 4 2 clockwise and 2 4 / 1 3 counter-clockwise.
TEST(RotateFrame, WorkedQuarterTurns)
{
    uint8_t y[4] = {1, 2, 3, 4}, t[4];
    const Frame src{y, nullptr, nullptr, 2, 2, 0}, dst{t, nullptr, nullptr, 2, 2, 0};
    gRotateMonochromeFrame(&src, &dst, ROTATE_90);
    EXPECT_EQ(std::vector<uint8_t>(t, t + 4), (std::vector<uint8_t>{3, 1, 4, 2}));
    gRotateMonochromeFrame(&src, &dst, ROTATE_270);
    EXPECT_EQ(std::vector<uint8_t>(t, t + 4), (std::vector<uint8_t>{2, 4, 1, 3}));
}

} // namespace
