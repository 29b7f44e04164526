// Packed 4:2:2 -> planar 4:2:0 against a per-pixel model built from the
// byte-offset table of each operation: lumas in place, chroma of the even
// source rows only. The Frame forms also against the record fields they set
// (odd widths refused after that); the contiguous form with its odd-size walk.
#include <gtest/gtest.h>

#include <cstring>

#include "support/buffers.h"

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
// the planes u and v.
void model(const Form &f, const uint8_t *src, size_t w, size_t rows, size_t chromaRows, uint8_t *y, uint8_t *u,
           uint8_t *v)
{
    for (size_t r = 0; r < rows; ++r)
        for (size_t c = 0; c < w; ++c)
            y[r * w + c] = src[r * 2 * w + c / 2 * 4 + size_t(c & 1 ? f.luma1 : f.luma0)];
    for (size_t j = 0; j < chromaRows; ++j)
        for (size_t k = 0; k < w / 2; ++k) {
            u[j * (w / 2) + k] = src[4 * j * w + 4 * k + size_t(f.toU)];
            v[j * (w / 2) + k] = src[4 * j * w + 4 * k + size_t(f.toV)];
        }
}

// What the model is given for a form: the width and height it walks (a Frame
// form refuses an odd width, YUY2toYUV420 walks one pixel narrower and an
// even number of rows) and its number of chroma rows.
struct Walk {
    size_t w, rows, chromaRows;
    Walk(const Form &form, uint32_t width, uint32_t h)
        : w(form.op ? (width % 2 ? 0 : width) : width & ~1u), rows(form.op ? h : h & ~1u),
          chromaRows(form.op ? (h + 1) / 2 : h / 2)
    {
    }
};

// Runs a form on planes y, u, v (for YUY2toYUV420 they must adjoin, from y),
// checking what a Frame form leaves in its record.
void run(const Form &form, const uint8_t *src, uint8_t *y, uint8_t *u, uint8_t *v, uint32_t w, uint32_t h,
         Random &rng)
{
    if (form.op) {
        Frame f{y, u, v, uint16_t(rng.word()), uint16_t(rng.word()), rng.word()};
        const Frame record{f.y, f.u, f.v, uint16_t(w), uint16_t(h), f.tag};
        ASSERT_EQ(form.op(src, &f, w, h), 0);
        ASSERT_EQ(0, std::memcmp(&record, &f, sizeof f)) << f.width << "x" << f.height;
    } else {
        YUY2toYUV420(src, y, w, h);
    }
}

// All four write into one guarded buffer: the Frame forms through a record
// whose planes lie there one after the other, (h + 1) / 2 chroma rows of an
// even width, and whose sizes they set, cut to 16 bits, whatever it said
// before. YUY2toYUV420 walks h / 2 row pairs of floor(w / 2) groups; its
// chroma planes start where the full w x h puts them. Every width up to 130
// (past the widest vector step), random ones up to 2000 on a few rows, and
// small random sizes; sizes without pixels sometimes carry a bit above 16.
// Two cases in three have source and target against an inaccessible page.
TEST(PackedTo420, MatchesModelOnRandomSizes)
{
    Random rng;
    for (const Form &form : kForms)
        for (int i = 0; i < 1400; ++i) {
            uint32_t w = uint32_t(rng.range(0, i < 1100 ? 14 : 50)), h = uint32_t(rng.range(0, i < 1100 ? 14 : 50));
            if (i <= 130)
                w = uint32_t(i), h = uint32_t(rng.range(1, 5));
            else if (i <= 230)
                w = uint32_t(rng.range(0, 2000)), h = uint32_t(rng.range(1, 4));
            if (w * h == 0 && rng.coin())
                (w ? w : h) += 0x10000u * uint32_t(rng.range(1, 2));
            SCOPED_TRACE(::testing::Message() << form.name << " case " << i << ": " << w << "x" << h);
            // YUY2toYUV420 reads words: its source is aligned to 4 bytes.
            const size_t misalign = size_t(rng.range(0, 3)) * (form.op ? 1 : 4);
            Placement where = Placement(rng.range(0, 2));
            if (!form.op && w * h % 2 && where == Placement::PageEnd)
                where = Placement::PageStart;
            Guarded<uint8_t> src(2 * size_t(w) * h, misalign, rng.word(), where);
            const size_t luma = size_t(w) * h, halfRows = form.op ? (h + 1) / 2 : h / 2, chroma = w / 2 * halfRows;
            const size_t second = form.op ? luma + chroma : luma + luma / 4;
            Guarded<uint8_t> out(second + chroma, size_t(rng.range(0, 63)), rng.word(), where);
            std::vector<uint8_t> want = out.contents();
            const Walk walk(form, w, h);
            model(form, src.begin(), walk.w, walk.rows, walk.chromaRows, want.data(), want.data() + luma,
                  want.data() + second);
            ASSERT_NO_FATAL_FAILURE(run(form, src.begin(), out.begin(), out.begin() + luma, out.begin() + second, w, h, rng));
            ASSERT_EQ(out.contents(), want);
            ASSERT_TRUE(out.intact() && src.untouched());
            if (!form.op || i % 4)
                continue;
            // In place: the luma plane over the source, the chroma planes after
            // it. The luma pass overwrites the source before the chroma pass
            // reads it.
            Guarded<uint8_t> both(2 * luma + 2 * chroma, size_t(rng.range(0, 3)), rng.word());
            want = both.contents();
            model(form, want.data(), walk.w, walk.rows, walk.chromaRows, want.data(), want.data() + 2 * luma,
                  want.data() + 2 * luma + chroma);
            uint8_t *at = both.begin();
            ASSERT_NO_FATAL_FAILURE(run(form, at, at, at + 2 * luma, at + 2 * luma + chroma, w, h, rng));
            ASSERT_EQ(both.contents(), want);
            ASSERT_TRUE(both.intact());
        }
}

} // namespace
