// Fixed-ratio frame scalers against per-sample models of their rules, on
// random frames, sizes (rows now and then far wider than a vector), corners
// and null planes. Source planes are sized to exactly the last offset the
// model reads and end at an inaccessible page, so any read beyond it faults;
// target planes are guarded and sized as the exports size them.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include "pixmill.h"
#include "scale/fixed_ratio.h"
#include "support/bilinear_model.h"

namespace {

using namespace pixmill::test;
using Plane = std::vector<uint8_t>;
// Sample at row r, column c counted from the corner, with the source stride.
using Source = std::function<int(int r, int c)>;

int avg(int a, int b) { return (a + b) >> 1; }

// Each model gives the plane a kernel call writes, from the call's sw, sh,
// dw, dh (x, y and the rest are the corner and unread), or nothing (empty)
// when the call must not write.

// Per axis, the taps and weights of each place in a target block: the outer
// places take 3/4 of the nearer and 1/4 of the next source sample, a middle
// place the two middle samples in equal parts.
struct AxisTaps {
    int at0, w0, at1, w1, shift;
};
constexpr AxisTaps kQuarter[1] = {{0, 3, 1, 1, 2}};
constexpr AxisTaps kThirds[3] = {{0, 3, 1, 1, 2}, {1, 1, 2, 1, 1}, {3, 3, 2, 1, 2}};

// Target blocks of n x n samples from source blocks of s x s.
Plane blocks(const ScaleCase &a, const Source &S, const AxisTaps *taps, int n, int s)
{
    Plane out;
    for (int y = 0; y < a.dh; ++y)
        for (int x = 0; x < a.dw; ++x) {
            const AxisTaps &v = taps[y % n], &h = taps[x % n];
            const int r = y / n * s, c = x / n * s;
            const int top = h.w0 * S(r + v.at0, c + h.at0) + h.w1 * S(r + v.at0, c + h.at1);
            const int bottom = h.w0 * S(r + v.at1, c + h.at0) + h.w1 * S(r + v.at1, c + h.at1);
            out.push_back(uint8_t((v.w0 * top + v.w1 * bottom) >> (v.shift + h.shift)));
        }
    return out;
}

Plane modelDownby2(const ScaleCase &a, const Source &S)
{
    return a.dw < 2 || a.dw % 2 || a.dh < 1 || a.sw < 2 * a.dw ? Plane() : blocks(a, S, kQuarter, 1, 2);
}

Plane modelDownto3by3(const ScaleCase &a, const Source &S)
{
    const bool refused = a.dw < 3 || a.dh < 3 || a.dw % 3 || a.dh % 3 || a.sw < a.dw / 3 * 4;
    return refused ? Plane() : blocks(a, S, kThirds, 3, 4);
}

// 2 sw x 2 sh: odd columns and rows the truncated mean of their neighbours,
// the last column and row repeating the one before.
Plane modelUpby2(const ScaleCase &a, const Source &S)
{
    Plane out;
    auto even = [&](int j, int x) { return avg(S(j, x / 2), S(j, std::min((x + 1) / 2, a.sw - 1))); };
    for (int y = 0; y < 2 * a.sh; ++y)
        for (int x = 0; x < 2 * a.sw; ++x)
            out.push_back(uint8_t(avg(even(y / 2, x), even(std::min((y + 1) / 2, a.sh - 1), x))));
    return out;
}

Plane modelUpby4(const ScaleCase &a, const Source &S)
{
    if (a.dw < 8 || a.dh < 8 || a.dw % 4 || a.dh % 4)
        return {};
    Plane out;
    for (int y = 0; y < a.dh; ++y)
        for (int x = 0; x < a.dw; ++x) {
            // The last four columns and rows repeat the block before them.
            const int k = std::min(x / 4, a.dw / 4 - 2), j = std::min(y / 4, a.dh / 4 - 2);
            const int P = S(j, k), Q = S(j, k + 1), R = S(j + 1, k), U = S(j + 1, k + 1);
            const int T = avg(P, Q), L = avg(P, R), M = avg(R, Q), E = avg(Q, U), B = avg(R, U);
            const int F = avg(M, T), G = avg(M, B);
            const int block[4][4] = {{P, avg(P, T), T, avg(Q, T)},
                                     {avg(P, L), avg(F, avg(P, L)), F, avg(F, avg(Q, E))},
                                     {L, avg(M, L), avg(L, E), avg(M, E)},
                                     {avg(R, L), avg(G, avg(R, L)), G, avg(G, avg(U, E))}};
            out.push_back(uint8_t(block[y % 4][x % 4]));
        }
    return out;
}

using Model = Plane (*)(const ScaleCase &, const Source &);

// A random source plane of exactly as many bytes as the model reads (at
// least one), ending at a page.
std::unique_ptr<Guarded<uint8_t>> sourcePlane(const ScaleCase &a, Model model, Random &rng)
{
    size_t reach = 0;
    model(a, [&](int r, int c) {
        reach = std::max(reach, size_t(a.y + r) * size_t(a.sw) + size_t(a.x + c));
        return 0;
    });
    return std::make_unique<Guarded<uint8_t>>(reach + 1, 0, rng.word(), Placement::PageEnd);
}

// An export, its model, and its sizes: targets mostly multiples of
// `multiple`, sources as wide as a target row consumes (num / den of its
// width) and now and then narrower. Without a multiple (upby2) the target's
// size is unread and the source's is free.
struct Kernel {
    void (*run)(const Frame *, Frame *, uint32_t, uint32_t, uint32_t, uint32_t);
    Model model;
    int multiple, num, den;
};

class FixedRatio : public ::testing::TestWithParam<Kernel> {};

TEST_P(FixedRatio, MatchesModelOnRandomFrames)
{
    const Kernel kk = GetParam();
    Random rng;
    for (int i = 0; i < 1000; ++i) {
        // One case in five has rows up to 1000 samples wide.
        const bool wide = i % 5 == 4;
        ScaleCase k{rng.range(0, wide ? 1000 : 24), rng.range(0, 16), rng.range(0, 60),      rng.range(0, 60),
                    rng.range(0, 9),  rng.range(0, 9),  rng.range(0, 1 << 30), rng.range(0, 1 << 30)};
        if (kk.multiple) {
            k.dw = rng.range(0, 3) ? kk.multiple * rng.range(1, wide ? 1000 / kk.multiple : 7) : rng.range(0, 40);
            k.dh = rng.range(0, 3) ? kk.multiple * rng.range(1, 7) : rng.range(0, 40);
            k.sw = std::max(0, k.dw * kk.num / kk.den + (rng.range(0, 7) ? rng.range(0, 5) : -rng.range(1, 3)));
        }
        const int nulled = rng.range(0, 7) ? -1 : rng.range(0, 5); // source y, u, v, target y, u, v
        SCOPED_TRACE(::testing::Message() << "case " << i << ": " << k << ", null plane " << nulled);
        const ScaleCase c{k.sw >> 1, k.sh >> 1, k.dw >> 1, k.dh >> 1, k.x >> 1, k.y >> 1, k.w >> 1, k.h >> 1};
        const ScaleCase args[3] = {k, c, c};
        const std::unique_ptr<Guarded<uint8_t>> src[3] = {
            sourcePlane(k, kk.model, rng), sourcePlane(c, kk.model, rng), sourcePlane(c, kk.model, rng)};
        Frame source{src[0]->data(), src[1]->data(), src[2]->data(), uint16_t(k.sw), uint16_t(k.sh), rng.word()};
        TestFrame t(kk.multiple ? k.dw : 2 * k.sw, kk.multiple ? k.dh : 2 * k.sh, Layout::Yuv420, rng);
        Frame target{t.frame().y, t.frame().u, t.frame().v, uint16_t(k.dw), uint16_t(k.dh), rng.word()};
        uint8_t **fields[6] = {&source.y, &source.u, &source.v, &target.y, &target.u, &target.v};
        if (nulled >= 0)
            *fields[nulled] = nullptr;
        kk.run(&source, &target, uint32_t(k.x), uint32_t(k.y), uint32_t(k.w), uint32_t(k.h));
        for (int p = 0; p < 3; ++p) {
            const ScaleCase &a = args[p];
            Plane want = nulled % 3 == p ? Plane() : kk.model(a, [&](int r, int col) {
                return int((*src[p])[size_t(a.y + r) * size_t(a.sw) + size_t(a.x + col)]);
            });
            // upby2 may write less than the target plane holds; the rest stays.
            for (size_t b = want.size(); !want.empty() && b < t.planes[p].size(); ++b)
                want.push_back(t.planes[p].before(b));
            ASSERT_TRUE(written(t.planes[p], want, kk.multiple ? a.dw : 2 * a.sw)) << "plane " << p;
            ASSERT_TRUE(src[p]->untouched());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Exports, FixedRatio,
                         ::testing::Values(Kernel{gScaleCroppedFrame_downby2, modelDownby2, 4, 2, 1},
                                           Kernel{gScaleCroppedFrame_upby2, modelUpby2, 0, 0, 1},
                                           Kernel{gScaleCroppedFrame_upby4, modelUpby4, 8, 1, 4},
                                           Kernel{gScaleCroppedFrame_downto3by3, modelDownto3by3, 6, 4, 3}));

// Worked examples: upby4 of 10, 20 above 30, 40 into 8 x 8 gives four equal
// blocks; upby2 of 1, 2 above 2, 3 truncates twice (1 between the four, whose
// plain mean is 2) and repeats its last columns and rows; downto3by3 of
// samples 16 * i puts 9/16 of the corner sample in each corner, and the mean
// of the middle four in the centre.
TEST(FixedRatioPlanes, WorkedExamples)
{
    const uint8_t quad[4] = {10, 20, 30, 40}, steps[4] = {1, 2, 2, 3};
    const uint8_t rows[4][4] = {{10, 12, 15, 17}, {15, 17, 20, 22}, {20, 22, 25, 27}, {25, 27, 30, 32}};
    uint8_t block[16], out[64];
    pixmill::gScalePlane_upby4(quad, out, 2, 2, 8, 8, 0, 0, 0, 0);
    for (int i = 0; i < 64; ++i)
        EXPECT_EQ(out[i], rows[i / 8 % 4][i % 4]) << i;
    pixmill::gScalePlane_upby2(steps, out, 2, 2, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(Plane(out, out + 16), (Plane{1, 1, 2, 2, 1, 1, 2, 2, 2, 2, 3, 3, 2, 2, 3, 3}));
    for (int i = 0; i < 16; ++i)
        block[i] = uint8_t(16 * i);
    pixmill::gScalePlane_downto3by3(block, out, 4, 4, 3, 3, 0, 0, 0, 0);
    EXPECT_EQ(out[0], 20);  // (9*0 + 3*16 + 3*64 + 80) >> 4
    EXPECT_EQ(out[4], 120); // (80 + 96 + 144 + 160) >> 2
    EXPECT_EQ(out[8], 220); // (9*240 + 3*224 + 3*176 + 160) >> 4
}

} // namespace
