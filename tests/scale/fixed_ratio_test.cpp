// Fixed-ratio frame scalers against per-sample models of their rules, on
// random frames, sizes, corners and null planes. Source planes are sized to
// exactly the last offset the model reads, so the sanitizer sees any read
// beyond it; target planes are guarded and sized as the exports size them.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <vector>

#include "pixmill.h"
#include "scale/fixed_ratio.h"
#include "support/frames.h"

namespace {

using namespace pixmill::test;
using Plane = std::vector<uint8_t>;
// Sample at row r, column c counted from the corner, with the source stride.
using Source = std::function<int32_t(int32_t r, int32_t c)>;

struct PlaneArgs {
    int32_t sourceWidth, sourceHeight, dstW, dstH, srcX, srcY, srcW, srcH;
};

int32_t avg(int32_t a, int32_t b) { return (a + b) >> 1; }

// Each model gives the written plane, or nothing when the call must not write.
std::optional<Plane> modelDownby2(const PlaneArgs &a, const Source &S)
{
    if (a.dstW < 2 || a.dstW % 2 || a.dstH < 1 || a.sourceWidth < 2 * a.dstW || a.srcX < 0 || a.srcY < 0)
        return {};
    Plane out;
    for (int32_t j = 0; j < a.dstH; ++j)
        for (int32_t i = 0; i < a.dstW; ++i)
            out.push_back(uint8_t(
                (9 * S(2 * j, 2 * i) + 3 * S(2 * j, 2 * i + 1) + 3 * S(2 * j + 1, 2 * i) + S(2 * j + 1, 2 * i + 1)) >>
                4));
    return out;
}

std::optional<Plane> modelUpby2(const PlaneArgs &a, const Source &S)
{
    const int32_t w = a.sourceWidth, h = a.sourceHeight;
    if (w < 1 || h < 1 || a.srcX < 0 || a.srcY < 0)
        return {};
    auto even = [&](int32_t j, int32_t x) {
        if (x % 2 == 0)
            return S(j, x / 2);
        return x == 2 * w - 1 ? S(j, w - 1) : avg(S(j, x / 2), S(j, x / 2 + 1));
    };
    Plane out;
    for (int32_t y = 0; y < 2 * h; ++y)
        for (int32_t x = 0; x < 2 * w; ++x) {
            const int32_t j = y / 2;
            out.push_back(uint8_t(y % 2 == 0 || j == h - 1 ? even(j, x) : avg(even(j, x), even(j + 1, x))));
        }
    return out;
}

std::optional<Plane> modelUpby4(const PlaneArgs &a, const Source &S)
{
    if (a.dstW < 8 || a.dstH < 8 || a.dstW % 4 || a.dstH % 4 || a.srcX < 0 || a.srcY < 0)
        return {};
    Plane out;
    for (int32_t y = 0; y < a.dstH; ++y)
        for (int32_t x = 0; x < a.dstW; ++x) {
            // The last four columns and rows repeat the block before them.
            const int32_t k = std::min(x / 4, a.dstW / 4 - 2), j = std::min(y / 4, a.dstH / 4 - 2);
            const int32_t P = S(j, k), Q = S(j, k + 1), R = S(j + 1, k), U = S(j + 1, k + 1);
            const int32_t T = avg(P, Q), L = avg(P, R), M = avg(R, Q), E = avg(Q, U), B = avg(R, U);
            const int32_t F = avg(M, T), G = avg(M, B);
            const int32_t block[4][4] = {{P, avg(P, T), T, avg(Q, T)},
                                         {avg(P, L), avg(F, avg(P, L)), F, avg(F, avg(Q, E))},
                                         {L, avg(M, L), avg(L, E), avg(M, E)},
                                         {avg(R, L), avg(G, avg(R, L)), G, avg(G, avg(U, E))}};
            out.push_back(uint8_t(block[y % 4][x % 4]));
        }
    return out;
}

struct Tap {
    int32_t r, c, weight;
};
struct BlockRule {
    Tap taps[4];
    int32_t shift;
};
constexpr BlockRule kThreeByThree[3][3] = {
    {{{{0, 0, 9}, {0, 1, 3}, {1, 0, 3}, {1, 1, 1}}, 4},
     {{{0, 1, 3}, {0, 2, 3}, {1, 1, 1}, {1, 2, 1}}, 3},
     {{{0, 3, 9}, {0, 2, 3}, {1, 3, 3}, {1, 2, 1}}, 4}},
    {{{{1, 0, 3}, {2, 0, 3}, {1, 1, 1}, {2, 1, 1}}, 3},
     {{{1, 1, 1}, {1, 2, 1}, {2, 1, 1}, {2, 2, 1}}, 2},
     {{{1, 3, 3}, {2, 3, 3}, {1, 2, 1}, {2, 2, 1}}, 3}},
    {{{{3, 0, 9}, {3, 1, 3}, {2, 0, 3}, {2, 1, 1}}, 4},
     {{{3, 1, 3}, {3, 2, 3}, {2, 1, 1}, {2, 2, 1}}, 3},
     {{{3, 3, 9}, {3, 2, 3}, {2, 3, 3}, {2, 2, 1}}, 4}},
};

std::optional<Plane> modelDownto3by3(const PlaneArgs &a, const Source &S)
{
    if (a.dstW < 3 || a.dstH < 3 || a.dstW % 3 || a.dstH % 3 || a.sourceWidth < a.dstW / 3 * 4 || a.srcX < 0 ||
        a.srcY < 0)
        return {};
    Plane out;
    for (int32_t y = 0; y < a.dstH; ++y)
        for (int32_t x = 0; x < a.dstW; ++x) {
            const BlockRule &rule = kThreeByThree[y % 3][x % 3];
            int32_t sum = 0;
            for (const Tap &t : rule.taps)
                sum += t.weight * S(y / 3 * 4 + t.r, x / 3 * 4 + t.c);
            out.push_back(uint8_t(sum >> rule.shift));
        }
    return out;
}

using Model = std::optional<Plane> (*)(const PlaneArgs &, const Source &);
using Export = void (*)(const Frame *, Frame *, uint32_t, uint32_t, uint32_t, uint32_t);

struct FrameCase {
    int32_t width, height, targetWidth, targetHeight;
    uint32_t srcX, srcY, srcW, srcH;
    unsigned nullPlanes; // bits 0-2: source y, u, v; bits 3-5: target y, u, v
};

// A source plane of exactly as many bytes as the model reads (at least one).
struct SourcePlane {
    Plane bytes;
    Source at(const PlaneArgs &a) const
    {
        return [this, a](int32_t r, int32_t c) {
            return int32_t(bytes.at(size_t(ptrdiff_t(a.srcY + r) * a.sourceWidth + a.srcX + c)));
        };
    }
    SourcePlane(const PlaneArgs &a, Model model, Random &rng)
    {
        ptrdiff_t reach = 0;
        model(a, [&](int32_t r, int32_t c) {
            reach = std::max(reach, ptrdiff_t(a.srcY + r) * a.sourceWidth + a.srcX + c);
            return 0;
        });
        bytes.resize(size_t(reach) + 1);
        for (auto &b : bytes)
            b = rng.byte();
    }
};

// Runs one export on one case and checks every plane against the model.
void checkFrame(Export run, Model model, const FrameCase &k, bool targetBySource, Random &rng)
{
    const PlaneArgs luma{k.width, k.height, k.targetWidth, k.targetHeight, int32_t(k.srcX), int32_t(k.srcY),
                         int32_t(k.srcW),   int32_t(k.srcH)};
    const PlaneArgs chroma{k.width >> 1,        k.height >> 1,      k.targetWidth >> 1, k.targetHeight >> 1,
                           int32_t(k.srcX >> 1), int32_t(k.srcY >> 1), int32_t(k.srcW >> 1), int32_t(k.srcH >> 1)};
    const PlaneArgs args[3] = {luma, chroma, chroma};
    std::vector<SourcePlane> src;
    for (const PlaneArgs &a : args)
        src.emplace_back(a, model, rng);
    const std::vector<SourcePlane> before = src;

    Frame source{src[0].bytes.data(), src[1].bytes.data(), src[2].bytes.data(), uint16_t(k.width),
                 uint16_t(k.height), rng.word()};
    // upby2 writes twice the source's size on both axes, whatever the target says.
    TestFrame t(targetBySource ? 2 * k.width : k.targetWidth, targetBySource ? 2 * k.height : k.targetHeight,
                Layout::Yuv420, rng);
    Frame target = t.frame();
    target.width = uint16_t(k.targetWidth);
    target.height = uint16_t(k.targetHeight);
    uint8_t **sp[3] = {&source.y, &source.u, &source.v}, **tp[3] = {&target.y, &target.u, &target.v};
    for (int p = 0; p < 3; ++p) {
        if (k.nullPlanes & (1u << p))
            *sp[p] = nullptr;
        if (k.nullPlanes & (8u << p))
            *tp[p] = nullptr;
    }
    run(&source, &target, k.srcX, k.srcY, k.srcW, k.srcH);

    Guarded<uint8_t> *out[3] = {&t.yPlane(), &t.uPlane(), &t.vPlane()};
    for (int p = 0; p < 3; ++p) {
        SCOPED_TRACE(::testing::Message() << "plane " << "yuv"[p]);
        ASSERT_EQ(src[size_t(p)].bytes, before[size_t(p)].bytes);
        ASSERT_TRUE(out[p]->intact());
        const bool nulls = (k.nullPlanes & (9u << p)) != 0;
        const std::optional<Plane> want = nulls ? std::nullopt : model(args[p], src[size_t(p)].at(args[p]));
        const size_t written = want ? want->size() : 0;
        ASSERT_LE(written, out[p]->size());
        for (size_t i = 0; i < out[p]->size(); ++i) {
            const int expected = i < written ? (*want)[i] : out[p]->before(i);
            ASSERT_EQ(int((*out[p])[i]), expected) << "at byte " << i;
        }
    }
}

constexpr int kCases = 1200;

int32_t anyOf(Random &rng, int32_t multiple, int32_t lo, int32_t hi, int32_t anyHi)
{
    return rng.range(0, 3) ? multiple * rng.range(lo, hi) : rng.range(0, anyHi);
}

FrameCase commonCase(Random &rng)
{
    FrameCase k{};
    k.srcX = uint32_t(rng.coin() ? 0 : rng.range(0, 9));
    k.srcY = uint32_t(rng.coin() ? 0 : rng.range(0, 9));
    k.srcW = rng.word();
    k.srcH = rng.word();
    k.nullPlanes = rng.range(0, 7) ? 0u : 1u << rng.range(0, 5);
    return k;
}

// Runs kCases random cases of one export; `sizes` sets the frame sizes.
template <class Sizes>
void checkRandomFrames(Export run, Model model, bool targetBySource, Sizes sizes)
{
    Random rng;
    for (int i = 0; i < kCases; ++i) {
        FrameCase k = commonCase(rng);
        sizes(rng, k);
        SCOPED_TRACE(::testing::Message() << "case " << i << ": source " << k.width << "x" << k.height << ", target "
                                          << k.targetWidth << "x" << k.targetHeight << ", corner " << k.srcX << ","
                                          << k.srcY << ", null planes " << k.nullPlanes);
        checkFrame(run, model, k, targetBySource, rng);
        if (::testing::Test::HasFatalFailure())
            return;
    }
}

// Mostly sizes in the kernel's forms, now and then any size; the source is
// now and then narrower than a target row consumes.
TEST(FixedRatioFrames, Downby2MatchesModel)
{
    checkRandomFrames(gScaleCroppedFrame_downby2, modelDownby2, false, [](Random &rng, FrameCase &k) {
        k.targetWidth = anyOf(rng, 4, 1, 10, 24);
        k.targetHeight = anyOf(rng, 2, 1, 8, 20);
        k.width = std::max(0, 2 * k.targetWidth + (rng.range(0, 7) ? rng.range(0, 5) : -rng.range(1, 3)));
        k.height = rng.range(1, 40);
    });
}

TEST(FixedRatioFrames, Upby2MatchesModel)
{
    checkRandomFrames(gScaleCroppedFrame_upby2, modelUpby2, true, [](Random &rng, FrameCase &k) {
        k.width = rng.range(0, 24);
        k.height = rng.range(0, 16);
        k.targetWidth = rng.range(0, 60); // not read
        k.targetHeight = rng.range(0, 60);
    });
}

TEST(FixedRatioFrames, Upby4MatchesModel)
{
    checkRandomFrames(gScaleCroppedFrame_upby4, modelUpby4, false, [](Random &rng, FrameCase &k) {
        k.targetWidth = anyOf(rng, 8, 2, 8, 40);
        k.targetHeight = anyOf(rng, 8, 2, 6, 40);
        k.width = int32_t(k.srcX) + (k.targetWidth >> 2) + rng.range(0, 6);
        k.height = rng.range(1, 40);
    });
}

TEST(FixedRatioFrames, Downto3by3MatchesModel)
{
    checkRandomFrames(gScaleCroppedFrame_downto3by3, modelDownto3by3, false, [](Random &rng, FrameCase &k) {
        k.targetWidth = anyOf(rng, 6, 1, 8, 40);
        k.targetHeight = anyOf(rng, 6, 1, 5, 30);
        k.width = std::max(0, k.targetWidth / 3 * 4 + (rng.range(0, 7) ? rng.range(0, 5) : -rng.range(1, 3)));
        k.height = rng.range(1, 40);
    });
}

TEST(FixedRatioPlanes, NegativeCornerWritesNothing)
{
    using Kernel = void (*)(const uint8_t *, uint8_t *, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                            int32_t, int32_t);
    const Kernel kernels[4] = {pixmill::gScalePlane_downby2, pixmill::gScalePlane_upby2, pixmill::gScalePlane_upby4,
                               pixmill::gScalePlane_downto3by3};
    Plane src(64 * 64, 9);
    for (Kernel kernel : kernels)
        for (auto [x, y] : {std::pair{-1, 8}, {8, -1}}) {
            Guarded<uint8_t> out(48 * 48);
            kernel(src.data() + 32 * 64, out.data(), 64, 32, 24, 24, x, y, 24, 24);
            EXPECT_TRUE(out.untouched());
        }
}

// ---- Worked examples on single planes ----------------------------------------

TEST(FixedRatioPlanes, Upby4BlocksOfTwoByTwo)
{
    const uint8_t src[4] = {10, 20, 30, 40};
    uint8_t out[64];
    pixmill::gScalePlane_upby4(src, out, 2, 2, 8, 8, 0, 0, 0, 0);
    const uint8_t rows[4][4] = {{10, 12, 15, 17}, {15, 17, 20, 22}, {20, 22, 25, 27}, {25, 27, 30, 32}};
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(out[y * 8 + x], rows[y % 4][x % 4]) << x << "," << y;
}

TEST(FixedRatioPlanes, Upby4ReadsOnlyItsRectangle)
{
    // Plane 100 wide, corner (10, 20), 32 x 8 target: 8 x 2 samples are read,
    // and the buffer ends right after the last of them.
    Plane src(21 * 100 + 18, 255);
    for (int r = 20; r < 22; ++r)
        std::fill_n(src.begin() + r * 100 + 10, 8, uint8_t(7));
    Guarded<uint8_t> out(32 * 8);
    pixmill::gScalePlane_upby4(src.data(), out.data(), 100, 22, 32, 8, 10, 20, 0, 0);
    EXPECT_TRUE(out.intact());
    for (size_t i = 0; i < out.size(); ++i)
        ASSERT_EQ(out[i], 7) << i;
}

TEST(FixedRatioPlanes, Upby2TruncatesTwice)
{
    const uint8_t src[4] = {1, 2, 2, 3};
    uint8_t out[16];
    pixmill::gScalePlane_upby2(src, out, 2, 2, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(out[4 + 1], 1); // the plain mean of the four would be 2
    EXPECT_EQ(out[2], out[3]); // the last two columns of an even row
    EXPECT_EQ(std::vector<uint8_t>(out + 8, out + 12), std::vector<uint8_t>(out + 12, out + 16));
}

TEST(FixedRatioPlanes, Downto3by3CornersAndCentre)
{
    uint8_t src[16];
    for (int i = 0; i < 16; ++i)
        src[i] = uint8_t(16 * i);
    uint8_t out[9];
    pixmill::gScalePlane_downto3by3(src, out, 4, 4, 3, 3, 0, 0, 0, 0);
    EXPECT_EQ(out[0], 20);  // (9*0 + 3*16 + 3*64 + 80) >> 4
    EXPECT_EQ(out[4], 120); // (80 + 96 + 144 + 160) >> 2
    EXPECT_EQ(out[8], 220); // (9*240 + 3*224 + 3*176 + 160) >> 4
}

} // namespace
