// Packed 4:2:2 -> planar 4:2:0 against a per-pixel model built from the
// byte-offset table of each operation: lumas in place, chroma of the even
// source rows only. The Frame forms also against the record fields they set
// (odd widths refused after that); the contiguous form with its odd-size walk.
#include <gtest/gtest.h>

#include <cstring>

#include "support/planar_buffer.h"

namespace {

using namespace pixmill::test;

// Offsets within a 4-byte group: first and second pixel's luma, the byte
// that goes to `u` (the first chroma plane) and the byte that goes to `v`.
struct Form {
    const char *name;
    int32_t (*op)(const uint8_t *, Frame *, uint32_t, uint32_t); // none: YUY2toYUV420
    int luma0, luma1, toU, toV;
};
const Form kForms[] = {{"gY1UY2VToYUV420", gY1UY2VToYUV420, 0, 2, 3, 1}, {"gY1UY2VToYV12", gY1UY2VToYV12, 0, 2, 1, 3},
                       {"gUY1VY2ToYUV420", gUY1VY2ToYUV420, 1, 3, 0, 2}, {"YUY2toYUV420", nullptr, 0, 2, 1, 3}};

// Source rows of w pixels without a gap: the lumas of the first `rows` rows
// in place at y, the chroma of source row 2j into chroma row j < chromaRows of
// the planes at y + u and y + v.
void model(const Form &f, const uint8_t *src, size_t w, size_t rows, size_t chromaRows, uint8_t *y, size_t u, size_t v)
{
    for (size_t r = 0; r < rows; ++r)
        for (size_t c = 0; c < w; ++c)
            y[r * w + c] = src[r * 2 * w + c / 2 * 4 + size_t(c & 1 ? f.luma1 : f.luma0)];
    for (size_t j = 0; j < chromaRows; ++j)
        for (size_t k = 0; k < w / 2; ++k) {
            y[u + j * (w / 2) + k] = src[4 * j * w + 4 * k + size_t(f.toU)];
            y[v + j * (w / 2) + k] = src[4 * j * w + 4 * k + size_t(f.toV)];
        }
}

// All four write into one guarded buffer: the Frame forms through a record
// whose planes lie there one after the other, (h + 1) / 2 chroma rows of an
// even width, and whose sizes they set, cut to 16 bits, whatever it said
// before. YUY2toYUV420 walks h / 2 row pairs of floor(w / 2) groups; its
// chroma planes start where the full w x h puts them. Sizes without pixels
// sometimes carry a bit above 16.
TEST(PackedTo420, MatchesModelOnRandomSizes)
{
    Random rng;
    for (const Form &form : kForms)
        for (int i = 0; i < 1200; ++i) {
            uint32_t w = uint32_t(rng.range(0, i < 1000 ? 14 : 50)), h = uint32_t(rng.range(0, i < 1000 ? 14 : 50));
            if (w * h == 0 && rng.coin())
                (w ? w : h) += 0x10000u * uint32_t(rng.range(1, 2));
            SCOPED_TRACE(::testing::Message() << form.name << " case " << i << ": " << w << "x" << h);
            Guarded<uint8_t> src(2 * size_t(w) * h, form.op ? size_t(rng.range(0, 3)) : 0, rng.word());
            const size_t luma = size_t(w) * h, halfRows = form.op ? (h + 1) / 2 : h / 2, chroma = w / 2 * halfRows;
            const size_t second = form.op ? luma + chroma : luma + luma / 4;
            Guarded<uint8_t> out(second + chroma, 0, rng.word());
            std::vector<uint8_t> want = out.contents();
            model(form, src.begin(), form.op ? (w % 2 ? 0 : w) : w & ~1u, form.op ? h : h & ~1u, halfRows, want.data(),
                  luma, second);
            if (form.op) {
                Frame f{out.begin(), out.begin() + luma, out.begin() + second, uint16_t(rng.word()),
                        uint16_t(rng.word()), rng.word()};
                const Frame record{f.y, f.u, f.v, uint16_t(w), uint16_t(h), f.tag};
                ASSERT_EQ(form.op(src.begin(), &f, w, h), 0);
                ASSERT_EQ(0, std::memcmp(&record, &f, sizeof f)) << f.width << "x" << f.height;
            } else {
                YUY2toYUV420(src.begin(), out.begin(), w, h);
            }
            ASSERT_EQ(out.contents(), want);
            ASSERT_TRUE(out.intact() && src.untouched());
        }
}

} // namespace
