// Look-up tables of the RGB565 -> YUV 4:2:0 conversion: the Q14 terms of the
// BT.709 studio-range matrix, already scaled for 5- and 6-bit levels (by 8
// and by 4), so that a sample costs three table reads, two additions and one
// shift. Every table is linear, entry i = i * step; the eight lie together in
// one block of 352 words, a 5-bit table taking one run of 32 and a 6-bit
// table two runs in a row.
#ifndef PIXMILL_RGB565_TABLES_H
#define PIXMILL_RGB565_TABLES_H

#include <cstdint>

namespace pixmill {

struct Rgb565ToYuvTables {
    int32_t YFromR[32];
    int32_t YFromG[64];
    int32_t YFromB[32];
    int32_t UFromR[32];
    int32_t UFromG[64];
    int32_t ChromaFull5[32]; // blue term of U and red term of V
    int32_t VFromG[64];
    int32_t VFromB[32];
};
static_assert(sizeof(Rgb565ToYuvTables) == 352 * sizeof(int32_t), "the tables form one block of 352 words");

constexpr Rgb565ToYuvTables makeRgb565ToYuvTables()
{
    Rgb565ToYuvTables t{};
    for (int32_t i = 0; i < 32; ++i) {
        t.YFromR[i] = i * 23840;
        t.YFromB[i] = i * 8096;
        t.UFromR[i] = i * -13184;
        t.ChromaFull5[i] = i * 57344;
        t.VFromB[i] = i * -5272;
    }
    for (int32_t i = 0; i < 64; ++i) {
        t.YFromG[i] = i * 40092;
        t.UFromG[i] = i * -22116;
        t.VFromG[i] = i * -26028;
    }
    return t;
}

// The one instance, in the read-only CONSTANT section.
extern const Rgb565ToYuvTables Rgb565ToYuv;

} // namespace pixmill

#endif
