// Whole-frame turns against a per-sample model of the placement table, on
// random sizes and codes, with guards around every plane.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "pixmill.h"
#include "support/geometry_model.h"
#include "support/guarded.h"

namespace {

using namespace pixmill::test;

enum class Op { Yuv420, Yuv422, Luma };

const char *name(Op op) { return op == Op::Yuv420 ? "4:2:0" : op == Op::Yuv422 ? "4:2:2" : "luma"; }

void rotate(Op op, const Frame *src, const Frame *dst, uint32_t code)
{
    if (op == Op::Yuv420)
        gRotateFrame(src, dst, code);
    else if (op == Op::Yuv422)
        gRotate422Frame(src, dst, code);
    else
        gRotateMonochromeFrame(src, dst, code);
}

// Chroma plane bytes: the block-copy counts, which at the served sizes are
// exactly (w >> 1) * (h >> 1) for 4:2:0 and (w >> 1) * h for 4:2:2.
size_t chromaBytes(Op op, int32_t w, int32_t h)
{
    const size_t n = size_t(w) * size_t(h);
    return op == Op::Luma ? 0 : op == Op::Yuv420 ? n >> 2 : n >> 1;
}

// Three guarded planes behind a Frame record. For luma alone the record has
// no chroma planes: its u and v are null.
struct Planes {
    Guarded<uint8_t> y, u, v;
    Frame f{};
    Planes(Op op, int32_t w, int32_t h, Random &rng)
        : y(size_t(w) * size_t(h), 0, rng.word()), u(chromaBytes(op, w, h), 0, rng.word()),
          v(chromaBytes(op, w, h), 0, rng.word())
    {
        y.randomize(rng);
        u.randomize(rng);
        v.randomize(rng);
        const bool chroma = op != Op::Luma;
        f = Frame{y.begin(), chroma ? u.begin() : nullptr, chroma ? v.begin() : nullptr, uint16_t(w), uint16_t(h),
                  rng.word()};
    }
    bool untouched() const { return y.untouched() && u.untouched() && v.untouched(); }
};

using Plane = std::vector<uint8_t>;

Plane pristine(const Guarded<uint8_t> &g)
{
    Plane p(g.size());
    for (size_t i = 0; i < p.size(); ++i)
        p[i] = g.before(i);
    return p;
}

// out[turned position] = in, for a packed w x h plane.
void turnPlane(const Guarded<uint8_t> &in, int32_t w, int32_t h, uint32_t code, Plane &out)
{
    const int32_t outWidth = quarterTurn(code) ? h : w;
    for (int32_t r = 0; r < h; ++r)
        for (int32_t c = 0; c < w; ++c) {
            const Pos p = turned(code, c, r, w, h);
            out[size_t(p.r) * size_t(outWidth) + size_t(p.c)] = in[size_t(r) * size_t(w) + size_t(c)];
        }
}

// 4:2:2 chroma under a quarter turn: sample (c, 2k) lands in column
// (h >> 1) - 1 - k of rows 2c and 2c + 1 (ROTATE_90), or in column k of rows
// w - 1 - 2c and w - 2 - 2c (ROTATE_270); odd source rows are not used.
void turn422Chroma(const Guarded<uint8_t> &in, int32_t w, int32_t h, uint32_t code, Plane &out)
{
    const int32_t cw = w >> 1, outWidth = h >> 1;
    for (int32_t k = 0; k < h / 2; ++k)
        for (int32_t c = 0; c < cw; ++c) {
            const uint8_t s = in[size_t(2 * k) * size_t(cw) + size_t(c)];
            const int32_t col = code == 1 ? outWidth - 1 - k : k;
            const int32_t row0 = code == 1 ? 2 * c : w - 1 - 2 * c;
            const int32_t row1 = code == 1 ? 2 * c + 1 : w - 2 - 2 * c;
            out[size_t(row0) * size_t(outWidth) + size_t(col)] = s;
            out[size_t(row1) * size_t(outWidth) + size_t(col)] = s;
        }
}

// Sizes that the turns serve: even sides, or for the 4:2:2 half turn an even
// width and any height. Anything else is left alone.
bool served(Op op, uint32_t code, int32_t w, int32_t h)
{
    if (code == 0)
        return true;
    if (op == Op::Yuv422 && code == 2)
        return w % 2 == 0;
    return w % 2 == 0 && h % 2 == 0;
}

TEST(RotateFrame, MatchesModelOnRandomFrames)
{
    Random rng;
    for (Op op : {Op::Yuv420, Op::Yuv422, Op::Luma})
        for (int i = 0; i < 1200; ++i) {
            const uint32_t code = randomRotation(rng);
            int32_t w = rng.range(0, i < 1000 ? 12 : 48), h = rng.range(0, i < 1000 ? 12 : 48);
            if (code != 0 && rng.range(0, 5) != 0) { // mostly served sizes
                w &= ~1;
                h &= op == Op::Yuv422 && code == 2 ? ~0 : ~1;
            }
            SCOPED_TRACE(::testing::Message() << name(op) << " case " << i << ": " << w << "x" << h << ", code "
                                              << code);
            Planes src(op, w, h, rng);
            const bool turn = quarterTurn(code);
            Planes dst(op, turn ? h : w, turn ? w : h, rng);
            const Frame record = dst.f;
            // Luma alone gets a destination record that holds nothing but y.
            std::unique_ptr<uint8_t *> lumaOnly(new uint8_t *(dst.f.y));
            const Frame *target = op == Op::Luma ? reinterpret_cast<const Frame *>(lumaOnly.get()) : &dst.f;

            rotate(op, &src.f, target, code);

            ASSERT_TRUE(src.untouched());
            ASSERT_TRUE(dst.y.intact() && dst.u.intact() && dst.v.intact());
            ASSERT_EQ(std::memcmp(&record, &dst.f, sizeof record), 0);
            if (code > 3 || !served(op, code, w, h)) {
                ASSERT_TRUE(dst.untouched());
                continue;
            }
            if (code == 0) { // block copies of the byte counts that size the planes here
                ASSERT_EQ(dst.y.contents(), src.y.contents());
                ASSERT_EQ(dst.u.contents(), src.u.contents());
                ASSERT_EQ(dst.v.contents(), src.v.contents());
                continue;
            }
            Plane y = pristine(dst.y), u = pristine(dst.u), v = pristine(dst.v);
            turnPlane(src.y, w, h, code, y);
            const int32_t chromaRows = op == Op::Yuv420 ? h >> 1 : h;
            for (auto [in, out] : {std::pair{&src.u, &u}, {&src.v, &v}})
                if (op == Op::Yuv422 && turn)
                    turn422Chroma(*in, w, h, code, *out);
                else if (op != Op::Luma)
                    turnPlane(*in, w >> 1, chromaRows, code, *out);
            ASSERT_EQ(dst.y.contents(), y);
            ASSERT_EQ(dst.u.contents(), u);
            ASSERT_EQ(dst.v.contents(), v);
        }
}

TEST(RotateFrame, TwoByTwoQuarterTurn)
{
    uint8_t y[4] = {1, 2, 3, 4}, u[1] = {5}, v[1] = {6};
    uint8_t ty[4] = {}, tu[1] = {}, tv[1] = {};
    const Frame src{y, u, v, 2, 2, 0}, dst{ty, tu, tv, 0, 0, 0};
    gRotateFrame(&src, &dst, ROTATE_90);
    EXPECT_EQ(Plane(ty, ty + 4), (Plane{3, 1, 4, 2}));
    EXPECT_EQ(tu[0], 5);
    EXPECT_EQ(tv[0], 6);
    gRotateFrame(&src, &dst, ROTATE_270);
    EXPECT_EQ(Plane(ty, ty + 4), (Plane{2, 4, 1, 3}));
}

// Four quarter turns, or two half turns, give back the frame; 4:2:2 chroma
// survives two half turns.
TEST(RotateFrame, FullCircleRestoresTheFrame)
{
    Random rng;
    for (int i = 0; i < 40; ++i) {
        const int32_t w = 2 * rng.range(1, 20), h = 2 * rng.range(1, 20);
        const Op op = i % 2 ? Op::Yuv420 : Op::Luma;
        Planes a(op, w, h, rng), b(op, h, w, rng);
        const Plane y = a.y.contents(), u = a.u.contents();
        for (int k = 0; k < 2; ++k) {
            rotate(op, &a.f, &b.f, ROTATE_90);
            b.f.width = uint16_t(h);
            b.f.height = uint16_t(w);
            rotate(op, &b.f, &a.f, ROTATE_90);
        }
        EXPECT_EQ(a.y.contents(), y);
        EXPECT_EQ(a.u.contents(), u);
        Planes c(Op::Yuv422, w, h + 1, rng), d(Op::Yuv422, w, h + 1, rng);
        const Plane cu = c.u.contents();
        gRotate422Frame(&c.f, &d.f, ROTATE_180);
        gRotate422Frame(&d.f, &c.f, ROTATE_180);
        EXPECT_EQ(c.u.contents(), cu);
    }
}

} // namespace
