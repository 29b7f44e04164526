// RGB565 scaler against a per-pixel model: positions n * step + 1 over the
// whole extent, the bottom limit, unlimited right taps that read on in
// memory, channels blended apart, last column and row repeated.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "pixmill.h"
#include "support/bilinear_model.h"
#include "support/guarded.h"

namespace {

using namespace pixmill::test;

int channel(uint16_t p, int c) { return c == 0 ? p / 2048 * 8 : c == 1 ? p / 32 % 64 * 4 : p % 32 * 8; }

// The pixel past the image's end is the scaler's own choice; it uses the
// image's last pixel there.
std::vector<uint16_t> modelRgb565(const uint16_t *src, int sw, int sh, int dw, int dh, int x, int y, int w, int h)
{
    w = std::min(w, sw - x);
    h = std::min(h, sh - y);
    const int64_t stepX = int64_t(w) * 262144 / dw, stepY = int64_t(h) * 262144 / dh;
    std::vector<uint16_t> out(size_t(dw) * size_t(dh));
    for (int j = 0; j + 1 < dh; ++j) {
        ModelPos py = modelPos(j ? j * stepY + 1 : 0);
        if (j && py.index == h - 1)
            --py.index;
        for (int i = 0; i + 1 < dw; ++i) {
            const ModelPos px = modelPos(i ? i * stepX + 1 : 0);
            auto tap = [&](int c, int tx, int ty) {
                size_t at = size_t(y + py.index + ty) * size_t(sw) + size_t(x + px.index + tx);
                if (at == size_t(sw) * size_t(sh))
                    at -= 1;
                return channel(src[at], c);
            };
            int v[3];
            for (int c = 0; c < 3; ++c)
                v[c] = modelBlend(py.phase, px.phase, [&](int tx, int ty) { return tap(c, tx, ty); });
            out[size_t(j) * size_t(dw) + size_t(i)] = uint16_t(v[0] / 8 * 2048 + v[1] / 4 * 32 + v[2] / 8);
        }
        out[size_t(j) * size_t(dw) + size_t(dw) - 1] = out[size_t(j) * size_t(dw) + size_t(dw) - 2];
    }
    std::copy_n(out.end() - 2 * dw, dw, out.end() - dw);
    return out;
}

struct Case {
    int sw, sh, dw, dh, x, y, w, h;
};

Case randomCase(Random &rng, int i, bool cropped)
{
    Case k{};
    switch (i % 3) {
    case 0:
        k = {rng.range(1, 30), rng.range(2, 30), rng.range(2, 30), rng.range(2, 30), 0, 0, 0, 0};
        break;
    case 1: // strong reduction
        k = {rng.range(30, 400), rng.range(2, 60), rng.range(2, 10), rng.range(2, 20), 0, 0, 0, 0};
        break;
    default: // enlargement past twice, where the bottom limit and the right taps act
        k = {rng.range(1, 8), rng.range(2, 8), rng.range(8, 80), rng.range(8, 60), 0, 0, 0, 0};
    }
    if (!cropped)
        return {k.sw, k.sh, k.dw, k.dh, 0, 0, k.sw, k.sh};
    k.x = rng.coin() ? 0 : rng.range(0, k.sw - 1);
    k.y = rng.coin() ? 0 : rng.range(0, k.sh - 2);
    k.w = rng.coin() ? k.sw - k.x : rng.range(1, k.sw + 5);
    k.h = rng.coin() ? k.sh - k.y : rng.range(2, k.sh + 5);
    return k;
}

void run(const Case &k, const uint16_t *src, uint16_t *dst, bool cropped)
{
    if (cropped)
        gScaleRGB565CroppedFrame(src, dst, k.sw, k.sh, k.dw, k.dh, k.x, k.y, k.w, k.h);
    else
        gScaleRGB565Frame(src, dst, k.sw, k.sh, k.dw, k.dh);
}

TEST(ScaleRGB565, MatchesModelOnRandomImages)
{
    Random rng;
    for (const bool cropped : {false, true})
        for (int i = 0; i < 1500; ++i) {
            const Case k = randomCase(rng, i, cropped);
            SCOPED_TRACE((cropped ? "cropped " : "whole ") + scaleCase(i, k.sw, k.sh, k.x, k.y, k.w, k.h, k.dw, k.dh));
            Guarded<uint16_t> src(size_t(k.sw) * size_t(k.sh), size_t(rng.range(0, 3)), rng.word());
            Guarded<uint16_t> dst(size_t(k.dw) * size_t(k.dh), size_t(rng.range(0, 3)), rng.word());
            src.randomize(rng);
            run(k, src.data(), dst.data(), cropped);
            ASSERT_TRUE(sameSamples(dst.contents(),
                                    modelRgb565(src.data(), k.sw, k.sh, k.dw, k.dh, k.x, k.y, k.w, k.h), k.dw));
            ASSERT_TRUE(dst.intact());
            ASSERT_TRUE(src.untouched());
        }
}

TEST(ScaleRGB565, WorkedExamples)
{
    // Half way between white and black: each channel's top value halved.
    const uint16_t pair[4] = {0xFFFF, 0x0000, 0xFFFF, 0x0000};
    uint16_t out[8] = {};
    gScaleRGB565Frame(pair, out, 2, 2, 4, 2);
    EXPECT_EQ(out[1], (15 << 11) | (31 << 5) | 15);

    // srcW 3 into dstW 9: the + 1 puts column 3 on col 1 at phase 0.
    const uint16_t row[6] = {0x0001, 0x0003, 0x0007, 0x0001, 0x0003, 0x0007};
    uint16_t wide[18] = {};
    gScaleRGB565Frame(row, wide, 3, 2, 9, 2);
    EXPECT_EQ(wide[3], 0x0003);
}

TEST(ScaleRGB565, NullBuffersWriteNothing)
{
    Random rng;
    Guarded<uint16_t> src(64, 0, rng.word()), dst(64, 0, rng.word());
    gScaleRGB565Frame(nullptr, dst.data(), 8, 8, 8, 8);
    gScaleRGB565CroppedFrame(src.data(), nullptr, 8, 8, 8, 8, 0, 0, 8, 8);
    gScaleRGB565CroppedFrame(nullptr, dst.data(), 8, 8, 8, 8, 0, 0, 8, 8);
    gScaleRGB565Frame(src.data(), dst.data(), 8, 8, 0, 8);
    EXPECT_TRUE(dst.untouched());
}

} // namespace
