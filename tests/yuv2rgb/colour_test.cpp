// The shared colour arithmetic against the model, exhaustively over every
// chroma pair, plus the worked values the rules give.
#include <gtest/gtest.h>

#include "support/colour_model.h"
#include "yuv2rgb/colour.h"

namespace {

using namespace pixmill;
using namespace pixmill::test;

template <Terms form>
void expectTermsMatchModel(const Coeffs &k, const ModelCoeffs &m)
{
    for (int u = 0; u < 256; ++u)
        for (int v = 0; v < 256; ++v) {
            const ChromaTerms t = chromaTerms<form>(k, u, v);
            for (int y : {0, 1, 16, 81, 124, 200, 254, 255})
                for (int row = 0; row < 2; ++row)
                    for (int col = 0; col < 2; ++col) {
                        const Offsets &d = Dither2x2[row][col];
                        const Rgb got = pixel(y, t, d);
                        const ModelRgb want = modelPixel(y, u, v, m, form == Terms::Rounding, modelDither(row, col));
                        ASSERT_EQ(got.r, want.r) << "u=" << u << " v=" << v << " y=" << y;
                        ASSERT_EQ(got.g, want.g) << "u=" << u << " v=" << v << " y=" << y;
                        ASSERT_EQ(got.b, want.b) << "u=" << u << " v=" << v << " y=" << y;
                        ASSERT_EQ(packRgb565(got), modelRgb565(want));
                    }
        }
}

TEST(Colour, AllChromaPairsMatchModel)
{
    expectTermsMatchModel<Terms::Truncating>(Coeff601, kModel601);
    expectTermsMatchModel<Terms::Truncating>(Coeff709, kModel709);
    expectTermsMatchModel<Terms::Rounding>(Coeff601, kModel601);
    expectTermsMatchModel<Terms::Rounding>(Coeff709, kModel709);
}

TEST(Colour, WorkedExample601)
{
    const ChromaTerms t = chromaTerms<Terms::Truncating>(Coeff601, 90, 240);
    EXPECT_EQ(t.r, 157);
    EXPECT_EQ(t.g, 66);
    EXPECT_EQ(t.b, -68);
    const int luma[4] = {81, 82, 83, 84};
    const Rgb plain[4] = {{238, 15, 13}, {239, 16, 14}, {240, 17, 15}, {241, 18, 16}};
    const uint16_t words[4] = {0xF081, 0xF082, 0xF082, 0xF0A2};
    for (int i = 0; i < 4; ++i) {
        const Rgb p = pixel(luma[i], t, NoOffsets);
        EXPECT_EQ(p.r, plain[i].r);
        EXPECT_EQ(p.g, plain[i].g);
        EXPECT_EQ(p.b, plain[i].b);
        EXPECT_EQ(packRgb565(pixel(luma[i], t, Dither2x2[i / 2][i % 2])), words[i]);
    }
}

TEST(Colour, NeutralGreysAndExtremes)
{
    const ChromaTerms neutral = chromaTerms<Terms::Truncating>(Coeff601, 128, 128);
    const uint16_t grey124[4] = {0x7BEF, 0x83F0, 0x83F0, 0x7BEF};
    for (int i = 0; i < 4; ++i) {
        const Offsets &d = Dither2x2[i / 2][i % 2];
        EXPECT_EQ(packRgb565(pixel(255, neutral, d)), 0xFFFF);
        EXPECT_EQ(packRgb565(pixel(0, neutral, d)), 0x0000);
        EXPECT_EQ(packRgb565(pixel(124, neutral, d)), grey124[i]);
    }
    const ChromaTerms low = chromaTerms<Terms::Truncating>(Coeff601, 0, 0);
    EXPECT_EQ(low.r, -180);
    EXPECT_EQ(low.g, -136);
    EXPECT_EQ(low.b, -227);
    const ChromaTerms high = chromaTerms<Terms::Truncating>(Coeff601, 255, 255);
    EXPECT_EQ(high.r, 178);
    EXPECT_EQ(high.g, 134);
    EXPECT_EQ(high.b, 225);
    // The shift rounds towards minus infinity.
    EXPECT_EQ((chromaTerms<Terms::Truncating>(Coeff709, 0, 128).b), -238);
    EXPECT_EQ((chromaTerms<Terms::Rounding>(Coeff709, 0, 128).b), -237);
}

// The tables are compile-time constants: usable in constant expressions.
static_assert(packRgb565(pixel(255, chromaTerms<Terms::Truncating>(Coeff601, 128, 128), Dither2x2[1][0])) == 0xFFFF);

} // namespace
