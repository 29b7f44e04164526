// The shared colour arithmetic at the worked values the rules give (every
// chroma pair meets the model through the exports' random cases).
#include <gtest/gtest.h>

#include "support/colour_model.h"
#include "yuv2rgb/colour.h"

namespace {

using namespace pixmill;
using namespace pixmill::test;

// Worked terms: the 601 example, the extreme chroma, and the shift that
// rounds towards minus infinity (709, u sample 0, truncating and rounding).
// Then neutral luma 255, 0 and 124 at the four offset positions.
TEST(Colour, WorkedValues)
{
    constexpr Terms T = Terms::Truncating;
    const ChromaTerms got[] = {chromaTerms<T>(Coeff601, 90, 240), chromaTerms<T>(Coeff601, 0, 0),
                               chromaTerms<T>(Coeff601, 255, 255), chromaTerms<T>(Coeff709, 0, 128),
                               chromaTerms<Terms::Rounding>(Coeff709, 0, 128)};
    const int want[][3] = {{157, 66, -68}, {-180, -136, -227}, {178, 134, 225}, {0, -24, -238}, {0, -24, -237}};
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(got[i].r == want[i][0] && got[i].g == want[i][1] && got[i].b == want[i][2]) << "case " << i;
    const ChromaTerms neutral = chromaTerms<T>(Coeff601, 128, 128);
    const uint16_t grey124[4] = {0x7BEF, 0x83F0, 0x83F0, 0x7BEF};
    for (int i = 0; i < 4; ++i) {
        const Offsets &d = Dither2x2[i / 2][i % 2];
        EXPECT_EQ(packRgb565(pixel(255, neutral, d)), 0xFFFF);
        EXPECT_EQ(packRgb565(pixel(0, neutral, d)), 0x0000);
        EXPECT_EQ(packRgb565(pixel(124, neutral, d)), grey124[i]);
    }
}

// The tables are compile-time constants: usable in constant expressions.
static_assert(packRgb565(pixel(255, chromaTerms<Terms::Truncating>(Coeff601, 128, 128), Dither2x2[1][0])) == 0xFFFF);

} // namespace
