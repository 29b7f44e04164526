// RGB565 scaler against a per-pixel model on random images, rectangles and
// null buffers: positions n * step + 1 over the whole extent, the bottom
// limit, unlimited right taps that read on in memory, channels blended
// apart, last column and row repeated. Sources are exactly as large as the
// image and end (or start) at an inaccessible page, so any read past the
// image faults.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "pixmill.h"
#include "support/bilinear_model.h"

namespace {

using namespace pixmill::test;

int channel(uint16_t p, int c) { return c == 0 ? p / 2048 * 8 : c == 1 ? p / 32 % 64 * 4 : p % 32 * 8; }

// The pixel past the image's end is the scaler's own choice; it uses the
// image's last pixel there.
std::vector<uint16_t> modelRgb565(const uint16_t *src, ScaleCase k)
{
    if (!src || !modelLimit(k) || k.h < 2 || k.dw < 2 || k.dh < 2)
        return {};
    const int64_t stepX = int64_t(k.w) * 262144 / k.dw, stepY = int64_t(k.h) * 262144 / k.dh;
    std::vector<uint16_t> out;
    for (int j = 0; j < k.dh; ++j)
        for (int i = 0; i < k.dw; ++i) {
            ModelPos py = modelPos(1 + std::min(j, k.dh - 2) * stepY);
            if (py.index == k.h - 1)
                --py.index;
            const ModelPos px = modelPos(1 + std::min(i, k.dw - 2) * stepX);
            int v[3];
            for (int c = 0; c < 3; ++c)
                v[c] = modelBlend(py.phase, px.phase, [&](int tx, int ty) {
                    const size_t at = size_t(k.y + py.index + ty) * size_t(k.sw) + size_t(k.x + px.index + tx);
                    return channel(src[std::min(at, size_t(k.sw) * size_t(k.sh) - 1)], c);
                });
            out.push_back(uint16_t(v[0] / 8 * 2048 + v[1] / 4 * 32 + v[2] / 8));
        }
    return out;
}

TEST(ScaleRGB565, MatchesModelOnRandomImages)
{
    Random rng;
    for (const bool cropped : {false, true})
        for (int i = 0; i < 2000; ++i) {
            ScaleCase k = randomScaleCase(rng, i);
            if (!cropped)
                k = {k.sw, k.sh, k.dw, k.dh, 0, 0, k.sw, k.sh};
            SCOPED_TRACE(::testing::Message() << (cropped ? "cropped" : "whole") << " case " << i << ": " << k);
            const Guarded<uint16_t> src(size_t(k.sw) * size_t(k.sh), 0, rng.word(),
                                        i % 2 ? Placement::PageStart : Placement::PageEnd);
            Guarded<uint16_t> dst(size_t(k.dw) * size_t(k.dh), size_t(rng.range(0, 3)), rng.word());
            const uint16_t *from = i % 50 == 1 ? nullptr : src.data();
            uint16_t *to = i % 50 == 2 ? nullptr : dst.begin();
            if (cropped)
                gScaleRGB565CroppedFrame(from, to, k.sw, k.sh, k.dw, k.dh, k.x, k.y, k.w, k.h);
            else
                gScaleRGB565Frame(from, to, k.sw, k.sh, k.dw, k.dh);
            ASSERT_TRUE(written(dst, to ? modelRgb565(from, k) : std::vector<uint16_t>(), k.dw));
            ASSERT_TRUE(src.untouched());
        }
}

// Half way between white and black, each channel's top value halved; srcW 3
// into dstW 9, where the + 1 puts column 3 on source column 1 at phase 0.
TEST(ScaleRGB565, WorkedExamples)
{
    const uint16_t pair[4] = {0xFFFF, 0x0000, 0xFFFF, 0x0000};
    const uint16_t row[6] = {0x0001, 0x0003, 0x0007, 0x0001, 0x0003, 0x0007};
    uint16_t out[18] = {};
    gScaleRGB565Frame(pair, out, 2, 2, 4, 2);
    EXPECT_EQ(out[1], (15 << 11) | (31 << 5) | 15);
    gScaleRGB565Frame(row, out, 3, 2, 9, 2);
    EXPECT_EQ(out[3], 0x0003);
}

} // namespace
