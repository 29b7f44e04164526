// libFuzzer target for every operation. The input picks an entry of the table below, which derives sizes,
// rectangles and codes from the rest, and makes one call: mostly within what include/pixmill.h asks of the caller,
// and in a quarter of the cases (`past`) also past it, where the header says what the operation turns down (nothing
// may change) and what it serves; the buffers then hold exactly the bytes the arguments describe.
// Sources, Frame records included, are exact-size buffers that may not change: on the heap (AddressSanitizer sees
// any read past them), or one time in four right against an inaccessible page (a vector load past the end faults
// even where it would leap over a red zone). Targets lie between random guard bytes. After the call every byte
// outside the area the operation may write, and after a refused call every byte at all, must be as it was; anything
// else aborts. The tests also run the table on random cases (tests/frame/open_inputs_test.cpp).
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <vector>

#if __has_include(<fuzzer/FuzzedDataProvider.h>)
#  include <fuzzer/FuzzedDataProvider.h>
#else
// What this target uses of libFuzzer's input reader (whose header only clang has): integers from the input's end.
class FuzzedDataProvider {
public:
    FuzzedDataProvider(const uint8_t *data, size_t size) : data_(data), size_(size) {}
    size_t remaining_bytes() const { return size_; }
    template <class T> T ConsumeIntegralInRange(T lo, T hi)
    {
        const uint64_t range = uint64_t(hi) - uint64_t(lo);
        uint64_t v = 0;
        for (size_t n = 0; n < sizeof(T) && size_ > 0; ++n)
            v = v << 8 | data_[--size_];
        return T(uint64_t(lo) + (range == UINT64_MAX ? v : v % (range + 1)));
    }
    template <class T> T ConsumeIntegral()
    {
        return ConsumeIntegralInRange(std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
    }

private:
    const uint8_t *data_;
    size_t size_;
};
#endif

#include "pixmill.h"
#include "support/buffers.h"

namespace {

using pixmill::test::area;

// In bytes: the usable area is [off, off + size) of `mem`, which holds orig.size() bytes on the heap or in `pages`;
// of it, columns [x, x + w) of rows [y, y + h) may change, counted from `off` in rows of `stride` bytes.
struct Buf {
    std::shared_ptr<pixmill::test::PageBuffer> pages;
    std::vector<uint8_t> heap, orig;
    uint8_t *mem;
    int64_t off, size, stride, w, x = 0, y = 0, h = 1;
};

using Pick = std::uniform_int_distribution<int32_t>;

struct Case {
    FuzzedDataProvider in;
    std::minstd_rand rng;
    std::vector<Buf> bufs; // the buffers' storage stays where it is when this grows
    bool refused = false;
    bool past = false;

    Case(const uint8_t *bytes, size_t size) : in(bytes, size), rng(in.ConsumeIntegral<uint32_t>())
    {
        past = pick(0, 3) == 0;
    }
    // A value in [a, b] from the input; once that is used up, from the generator it seeded, so that a short input
    // still makes a case of some size.
    int32_t pick(int32_t a, int32_t b)
    {
        return in.remaining_bytes() ? in.ConsumeIntegralInRange(a, b) : Pick(a, b)(rng);
    }
    uint32_t code() { return uint32_t(pick(0, 3) ? pick(0, 3) : pick(INT32_MIN, INT32_MAX)); }
    static void fail(const char *what) { std::fprintf(stderr, "pixmill fuzz: %s\n", what), std::abort(); }

    // Random contents. A target has 16 to 19 elements of guard before it and 16 after, and may change whole (one
    // row); a source has neither and may not change.
    template <class T = uint8_t>
    T *buf(size_t n, bool target)
    {
        const int64_t off = target ? int64_t((16 + rng() % 4) * sizeof(T)) : 0, size = int64_t(n * sizeof(T));
        const auto len = size_t(off + size + (target ? 16 * int64_t(sizeof(T)) : 0));
        Buf b{nullptr, {}, {}, nullptr, off, size, size + 1, size * target};
        if (!target && rng() % 4 == 0) {
            b.pages = std::make_shared<pixmill::test::PageBuffer>(len, pixmill::test::PageSide::End);
            b.mem = b.pages->data();
        } else {
            b.heap.resize(std::max<size_t>(len, 1));
            b.mem = b.heap.data();
        }
        std::generate(b.mem, b.mem + len, [this] { return uint8_t(rng()); });
        b.orig.assign(b.mem, b.mem + len);
        bufs.push_back(std::move(b));
        return reinterpret_cast<T *>(bufs.back().mem + off);
    }
    template <class T = uint8_t> T *src(size_t n) { return buf<T>(n, false); }
    template <class T = uint8_t> T *dst(size_t n) { return buf<T>(n, true); }
    // A read-only record with planes of `luma` (by default width * height) and `chroma` samples.
    Frame *frame(bool target, int32_t w, int32_t h, size_t chroma, int64_t luma = -1)
    {
        uint8_t *y = buf(size_t(luma < 0 ? w * h : luma), target), *u = buf(chroma, target), *v = buf(chroma, target);
        Frame *f = new (src(sizeof(Frame))) Frame{y, u, v, uint16_t(w), uint16_t(h), uint32_t(rng())};
        std::memcpy(bufs.back().orig.data(), bufs.back().mem, sizeof(Frame));
        return f;
    }
    // What may change in the buffer at `p`, in bytes; a size of 0 or below allows nothing.
    void allow(const void *p, int64_t stride, int64_t x, int64_t y, int64_t w, int64_t h)
    {
        for (Buf &b : bufs)
            if (b.mem + b.off == p)
                b.stride = std::max<int64_t>(stride, 1), b.w = w, b.x = x, b.y = y, b.h = h;
    }
    void result(int32_t r, bool refuse) { r == -int32_t(refuse) ? void(refused |= refuse) : fail("unexpected result"); }
    // A call the header says writes nothing.
    void untouched(bool yes) { refused = refused || yes; }
    void check() const
    {
        for (const Buf &b : bufs)
            for (size_t i = 0; i < b.orig.size(); ++i) { // a guard byte before `off` has a negative row or column
                const int64_t e = int64_t(i) - b.off, col = e % b.stride, row = e / b.stride;
                if (b.mem[i] != b.orig[i] &&
                    (refused || e >= b.size || col < b.x || col >= b.x + b.w || row < b.y || row >= b.y + b.h))
                    fail(refused ? "a refused call wrote" : "a byte outside the writable area changed");
            }
    }
};

const std::vector<void (*)(Case &)> kOps = {
    // Whole images, sizes both at least 2 or one of them 0. op 0, 1: 4:2:0 to R,G,B and RGB565; 2, 3: 4:2:2.
    [](Case &c) {
        const int32_t op = c.pick(0, 3), w = c.pick(0, 40), h = c.pick(0, 40), pw = c.pick(0, w), ph = c.pick(0, h);
        // Past: parts of 1 pixel, negative or beyond the frame, which write nothing.
        const int32_t sw = c.past ? c.pick(-2, w + 3) : pw == 1 || ph == 1 ? 0 : pw;
        const int32_t sh = c.past ? c.pick(-2, h + 3) : sw ? ph : 0, topDown = c.pick(INT32_MIN, INT32_MAX);
        c.untouched(sw < 2 || sh < 2 || sw > w || sh > h);
        const Frame *f = c.frame(false, w, h, area(w >> 1, op >= 2 ? h : h >> 1));
        op == 1 ? gEmYUV420toRGB565TopDown(f, c.dst<uint16_t>(area(sw, sh)), sw, sh, topDown)
                : (op == 0   ? gEmYUV420toRGB888TopDown
                   : op == 2 ? gYUV422HPlanartoBGR888TopDown
                             : gYUV422HPlanartoRGB888TopDown)(f, c.dst(3 * area(sw, sh)), sw, sh, topDown);
    },
    // Even frame to B,G,R rows `stride` bytes apart; the padding of each row stays.
    [](Case &c) {
        // Past: odd sizes, whose last column and row repeat; a width or height of 1 writes nothing.
        const int32_t w = c.past ? c.pick(0, 40) : 2 * c.pick(0, 20), h = c.past ? c.pick(0, 40) : 2 * c.pick(0, 20);
        const int32_t stride = 3 * w + c.pick(-4, 9);
        uint8_t *out = c.dst(h && stride >= 3 * w ? area(h - 1, stride) + size_t(3 * w) : 0);
        c.allow(out, stride, 0, 0, 3 * w, h);
        c.result(gYUV420toBGR24(c.frame(false, w, h, area(w / 2, h / 2)), out, stride), stride < 3 * w);
        c.untouched(w < 2 || h < 2);
    },
    // Rectangles with rotation: only the image of the clipped rectangle on the surface may change. op 0: 4:2:0
    // BT.601, 1: 4:2:0 BT.709, 2: 4:2:2 BT.709, 3: 4:2:2 BT.601 with the surface size given before the turn. BT.709
    // 4:2:0 at odd sizes reaches a chroma column and row past the layout; BT.601 4:2:2 rounds an odd corner's chroma
    // position up. Bits that are not read are set: the high 16 of the first form's corner, the high 24 of the code.
    [](Case &c) {
        const int32_t op = c.pick(0, 3), w = c.pick(0, 40), h = c.pick(0, 40), dw = c.pick(0, 40), dh = c.pick(0, 40);
        const size_t chroma = op == 1 ? area(w >> 1, (h >> 1) + 1) + 1 : area((w + (op == 3)) >> 1, h >> (op < 2));
        const Frame *f = c.frame(false, w, h, chroma);
        uint16_t *out = c.dst<uint16_t>(area(dw, dh));
        // The surface's layout: dw x dh, or dh x dw for a quarter turn of the last form.
        const int32_t code = c.pick(0, 5), quarter = code & 1, sw = op == 3 && quarter ? dh : dw, sh = dw + dh - sw;
        // Past: corners beyond the frame or the surface (nothing to write), negative ones for the 32-bit forms.
        const int32_t more = c.past ? 6 : 0, less = c.past && op % 3 ? -3 : 0;
        const int32_t dstX = c.pick(less, sw + more), dstY = c.pick(less, sh + more);
        const int32_t srcW = c.pick(0, 60), srcH = c.pick(0, 60);
        const int32_t x = c.pick(less, w + more), y = c.pick(less, h + more);
        const int32_t high = c.pick(0, 0xffff), even = op == 3 ? ~0 : ~1;
        c.untouched(std::min({x, y, dstX, dstY}) < 0);
        const uint32_t hx = op == 0 ? uint32_t(high) << 16 : 0, code8 = uint32_t(code | (high & 0xff00) << 8);
        const int32_t r = op % 3 == 0 ? (op ? gYUV422HPlanartoBGR565TopDown_Rotate : gYUV420toBGR565TopDown_Rotate)(
                                            f, out, x | hx, y | hx, srcW, srcH, dstX, dstY, dw, dh, code8)
                                      : (op == 1 ? gYUV420toRGB16Rotate : gYUV422toRGB16Rotate)(
                                            f, out, dw, dh, dstX, dstY, x, y, srcW, srcH, code);
        const int32_t ex = x & even, ey = y & even, ew = srcW & (op == 2 ? ~1 : ~0), eh = srcH & (op == 2 ? ~1 : ~0);
        const int32_t cw = std::min({ew, w - ex, quarter ? sh - dstY : sw - dstX});
        const int32_t ch = std::min({eh, h - ey, quarter ? sw - dstX : sh - dstY});
        c.allow(out, 2 * sw, 2 * dstX, dstY, 2 * (quarter ? ch : cw), quarter ? cw : ch);
        c.result(r, code > 3);
    },
    // RGB565 image into an even frame.
    [](Case &c) {
        // Past: an odd frame, an image wider or taller than it, a width under 2, no rows: nothing is written.
        const int32_t w = c.past ? c.pick(0, 40) : 2 * c.pick(1, 20), h = c.past ? c.pick(0, 40) : 2 * c.pick(1, 20);
        const int32_t sw = c.past ? c.pick(0, w + 4) : c.pick(2, w), sh = c.past ? c.pick(0, h + 4) : c.pick(1, h);
        c.untouched(((w | h) & 1) || sw < 2 || sh < 1 || sw > w || sh > h);
        gEmRGB565toYUV420(c.src<uint16_t>(area(sw, sh)), c.frame(true, w, h, area(w >> 1, h >> 1)), sw, sh);
    },
    // B,G,R rows, top-down, or from the last row up with a negative stride.
    [](Case &c) {
        // Past: odd sizes, which write nothing.
        const int32_t w = c.past ? c.pick(0, 40) : 2 * c.pick(0, 20), h = c.past ? c.pick(0, 40) : 2 * c.pick(0, 20);
        const int32_t pitch = 3 * w + c.pick(0, 7);
        const size_t last = h && c.pick(0, 1) ? area(h - 1, pitch) : 0;
        const uint8_t *image = c.src(h ? area(h - 1, pitch) + size_t(3 * w) : 0);
        c.untouched((w | h) & 1);
        gBGR24INTtoYUV420Planar(image + last, c.dst(area(w, h) + area(w, h) / 4 * 2), w, h, last ? -pitch : pitch);
    },
    // Packed 4:2:2; the Frame forms store the size into the record.
    [](Case &c) {
        // Past: an odd width for the Frame forms, which set the record and write no plane.
        const int32_t op = c.pick(0, 3), w = op == 3 || c.past ? c.pick(0, 40) : 2 * c.pick(0, 20), h = c.pick(0, 40);
        const uint8_t *image = c.src(2 * area(w, h));
        if (op == 3)
            return YUY2toYUV420(image, c.dst(area(w, h) + area(w, h) / 4 + area(w / 2, h / 2)), w, h);
        Frame *f = c.frame(true, c.pick(0, 500), c.pick(0, 500), area(w / 2, (h + 1) / 2), area(w, h));
        c.allow(f, sizeof(Frame), offsetof(Frame, width), 0, 4, 1);
        for (uint8_t *plane : {f->y, f->u, f->v})
            if (w & 1)
                c.allow(plane, 1, 0, 0, 0, 0);
        c.result((op == 0 ? gY1UY2VToYUV420 : op == 1 ? gY1UY2VToYV12 : gUY1VY2ToYUV420)(image, f, w, h), false);
    },
    // Planar 4:2:2 rectangle cropped and scaled into an even target of at least 4 x 4.
    [](Case &c) {
        // Past: an odd source width, one row, a corner outside, an empty rectangle, an odd or small target.
        int32_t w = c.past ? c.pick(1, 48) : 2 * c.pick(1, 24), h = c.pick(1, 48);
        const int32_t tw = c.past ? c.pick(0, 80) : 2 * c.pick(2, 40), th = c.past ? c.pick(0, 80) : 2 * c.pick(2, 40);
        int32_t x = c.pick(0, w - 1 + 3 * c.past), y = c.pick(0, h - 1 + 3 * c.past);
        int32_t srcW = c.pick(!c.past, 100), srcH = c.pick(!c.past, 100);
        if (c.past && c.pick(0, 7) == 0) // an extent of 8192, whose positions overflow
            w = srcW = 8192 + 2 * c.pick(0, 4), h = srcH = 2, x = 0, y = c.pick(0, 1);
        c.untouched((w & 1) || h < 2 || x >= w || y >= h || !srcW || !srcH || tw < 4 || th < 4 || ((tw | th) & 1) ||
                    std::min(srcW, w - x) >= 8192);
        Frame *t = c.frame(true, tw, th, area(tw / 2, th / 2));
        c.result(gYUV422toYUV420(c.frame(false, w, h, area(w / 2, h)), t, x, y, srcW, srcH), false);
    },
    // Whole-frame turns of 4:2:0, 4:2:2 and luma: any size unturned, else even sizes (an even width for the 4:2:2
    // half turn). The plain copy moves (W * H) >> 2 or >> 1 chroma bytes, more than the plane at odd sizes.
    [](Case &c) {
        // Past: odd sizes for the turns, which write nothing.
        const uint32_t code = c.code();
        const int32_t kind = c.pick(0, 2);
        const bool halfTurn422 = kind == 1 && code == ROTATE_180;
        const int32_t w = c.pick(0, 40) & (code && !c.past ? ~1 : ~0);
        const int32_t h = c.pick(0, 40) & (code && !halfTurn422 && !c.past ? ~1 : ~0);
        c.untouched(code && ((w & 1) || ((h & 1) && !halfTurn422)));
        const size_t uv = kind == 2 ? 0 : std::max(area(w >> 1, kind ? h : h >> 1), area(w, h) >> (2 - kind));
        Frame *d = c.frame(true, c.pick(0, 100), c.pick(0, 100), uv, area(w, h));
        const Frame *s = c.frame(false, w, h, uv);
        (kind == 0 ? gRotateFrame : kind == 1 ? gRotate422Frame : gRotateMonochromeFrame)(s, d, code);
        c.untouched(code > 3);
    },
    // 16-bit rectangle turns, to 16 bits or to 24 (k bytes a pixel, `stride` bytes a row): positions at least 0, now
    // and then past their surfaces, sizes anything. Positions are limited to their surfaces, then the size is cut by
    // the source and by the room on the target.
    [](Case &c) {
        // Past: negative positions, surface sizes and strides, served as an empty rectangle.
        const int32_t less = c.past ? -3 : 0, rw = c.pick(-5, 50), rh = c.pick(-5, 50), k = c.pick(2, 3);
        const int32_t sw = c.pick(less, 40), sh = c.pick(less, 40), dw = c.pick(less, 40), dh = c.pick(less, 40);
        const int32_t stride = k * dw + (k == 3 ? c.pick(less, 2) : 0);
        const int32_t sx = c.pick(less, sw + 4), sy = c.pick(less, sh + 4), dx = c.pick(less, dw + 4);
        const int32_t dy = c.pick(less, dh + 4);
        c.untouched(std::min({sw, sh, k == 2 ? dw : stride, dh, sx, sy, dx, dy}) < 0);
        const int32_t code = c.pick(0, 4), turn = code & 1;
        const uint16_t *image = c.src<uint16_t>(area(sw, sh));
        uint8_t *out24 = k == 3 ? c.dst(area(stride, dh)) : nullptr;
        uint16_t *out16 = k == 2 ? c.dst<uint16_t>(area(dw, dh)) : nullptr;
        c.result(out24 ? gRotateRGB16toBGR24(image, out24, sw, sh, sx, sy, rw, rh, dx, dy, dh, stride, code)
                       : gRotateRGB16(image, out16, sw, sh, sx, sy, rw, rh, dx, dy, dw, dh, code), code > 3);
        const int32_t x = std::min(sx, sw), y = std::min(sy, sh), tx = std::min(dx, dw), ty = std::min(dy, dh);
        const int32_t cw = std::min({rw, sw - x, turn ? dh - ty : dw - tx});
        const int32_t ch = std::min({rh, sh - y, turn ? dw - tx : dh - ty});
        c.allow(out24 ? static_cast<void *>(out24) : out16, stride, k * tx, ty, k * (turn ? ch : cw), turn ? cw : ch);
    },
    // Mirrors: RGB565 into a second image; planar in place, or into a second frame (then the first is only read,
    // and the record's width, height and tag are set).
    [](Case &c) {
        const uint32_t mode = c.code();
        const int32_t w = c.pick(-2, 40), h = c.pick(-2, 40), fw = std::max(w, 0), fh = std::max(h, 0);
        const size_t n = area(fw, fh);
        if (c.pick(0, 1))
            return c.result(gMirrorImageRGB565(c.src<uint16_t>(n), c.dst<uint16_t>(n), w, h, mode), w < 0 || h < 0);
        const int32_t layout = c.pick(-1, 2), flag = c.pick(0, 1) ? c.pick(0, 2) : c.pick(0, 255);
        const size_t chroma = area(fw >> 1, layout == 1 ? fh : fh >> 1);
        Frame *s = c.frame(flag != 1, fw, fh, chroma);
        Frame *d = flag == 1 ? c.frame(true, c.pick(0, 100), c.pick(0, 100), chroma, n) : nullptr;
        c.allow(d, sizeof(Frame), offsetof(Frame, width), 0, 8, 1);
        c.result(gMirrorImageYUV(s, d, layout, mode, flag), layout != 0 && layout != 1);
    },
    // Free ratio, op 0: gScaleFrame, 1: gScaleCroppedFrame, 2: gScaleCroppedFrameYUV422. The corner lies inside
    // every plane and every rectangle keeps a sample.
    // Past: frames and targets 1 wide or high or empty, corners outside, empty rectangles, spans of 8192: such planes
    // are left.
    [](Case &c) {
        if (c.past && c.pick(0, 7) == 0) { // a span of 8192 samples or more leaves luma alone
            const int32_t op = c.pick(0, 2), w = 8193 + c.pick(0, 40), tw = w / 2 + c.pick(1, 40), rows = op == 2 ? 2 : 1;
            const Frame *s = c.frame(false, w, 2, area(w >> 1, rows));
            Frame *t = c.frame(true, tw, 2, area(tw >> 1, rows));
            c.allow(t->y, 1, 0, 0, 0, 0);
            return op == 0 ? gScaleFrame(s, t) : (op == 1 ? gScaleCroppedFrame : gScaleCroppedFrameYUV422)(s, t, 0, 0, w, 2);
        }
        const int32_t op = c.pick(0, 2), w = c.pick(c.past ? 1 : 2, 60), h = c.pick(op == 2 || c.past ? 1 : 2, 60);
        const int32_t tw = c.pick(!c.past, 60), th = c.pick(!c.past, 60);
        const int32_t x = c.past ? c.pick(0, w + 3) : 2 * c.pick(0, (w >> 1) - 1) + c.pick(0, 1) * (w > 2);
        const int32_t y = c.past         ? c.pick(0, h + 3)
                          : op == 2      ? c.pick(0, h - 1)
                                         : 2 * c.pick(0, (h >> 1) - 1) + c.pick(0, 1) * (h > 2);
        const Frame *s = c.frame(false, w, h, area(w >> 1, op == 2 ? h : h >> 1));
        Frame *t = c.frame(true, tw, th, area(tw >> 1, op == 2 ? th : th >> 1));
        const int32_t srcW = c.pick(c.past ? 0 : 2, 80), srcH = c.pick(c.past ? 0 : op == 2 ? 1 : 2, 80);
        op == 0 ? gScaleFrame(s, t) : (op == 1 ? gScaleCroppedFrame : gScaleCroppedFrameYUV422)(s, t, x, y, srcW, srcH);
    },
    // RGB565; a rectangle cut to the image keeps at least one column and two rows.
    // Past: a target under 2 x 2, a corner outside, a rectangle cut to under 1 x 2, negative values: nothing is
    // written.
    [](Case &c) {
        const int32_t p = c.past, dw = c.pick(2 - 3 * p, 80), dh = c.pick(2 - 3 * p, 80);
        int32_t sw = c.pick(1 - 2 * p, 60), sh = c.pick(2 - 3 * p, 60);
        int32_t x = c.pick(-p, sw - 1 + 2 * p), y = c.pick(-p, sh - 2 + 3 * p);
        int32_t srcW = c.pick(1 - 2 * p, 80), srcH = c.pick(2 - 3 * p, 80);
        if (p && c.pick(0, 7) == 0) // an extent of 8192 or more
            sw = srcW = 8192 + c.pick(0, 9), sh = srcH = 2, x = y = 0;
        const int32_t whole = c.pick(0, 1);
        const uint16_t *image = c.src<uint16_t>(area(sw, sh));
        uint16_t *out = c.dst<uint16_t>(area(dw, dh));
        whole ? gScaleRGB565Frame(image, out, sw, sh, dw, dh)
              : gScaleRGB565CroppedFrame(image, out, sw, sh, dw, dh, x, y, srcW, srcH);
        const int32_t rx = whole ? 0 : x, ry = whole ? 0 : y;
        const int32_t cw = std::min(whole ? sw : srcW, sw - rx), ch = std::min(whole ? sh : srcH, sh - ry);
        c.untouched(dw < 2 || dh < 2 || rx < 0 || ry < 0 || rx >= sw || ry >= sh || cw < 1 || ch < 2 || cw >= 8192);
    },
    // Fixed ratios at their fitting sizes, op 0: 2:1 (TW a multiple of 4, W = 2 TW), 1: 1:2 (writes twice the
    // source's even size), 2: 1:4 (multiples of 8 from 16, from the TW/4 x TH/4 rectangle), 3: 4:3 (multiples of 6,
    // W = TW * 4 / 3). The source planes reach as far as the run of rows read from the corner.
    [](Case &c) {
        const int32_t op = c.pick(0, 3), up = op == 1, x = c.pick(0, 6), y = c.pick(0, 6);
        int32_t w, h, tw, th, rows = 0;
        if (op == 0)
            tw = 4 * c.pick(1, 10), th = 2 * c.pick(1, 15), w = 2 * tw, rows = 2 * th, h = rows + c.pick(0, 3);
        else if (up)
            w = 2 * c.pick(1, 20), h = 2 * c.pick(1, 20), tw = c.pick(0, 100), th = c.pick(0, 100), rows = h;
        else if (op == 2)
            tw = 8 * c.pick(2, 8), th = 8 * c.pick(2, 8), w = x + tw / 4 + c.pick(0, 4), h = y + th / 4 + c.pick(0, 4);
        else
            tw = 6 * c.pick(1, 8), th = 6 * c.pick(1, 8), w = tw * 4 / 3, rows = th * 4 / 3, h = rows + c.pick(0, 3);
        // Past: a target width off the form (luma is left, chroma reads no further), or a corner of 2^31 or more
        // (every plane is left).
        tw += c.past && !up ? c.pick(0, 3) : 0;
        const uint32_t high = c.past && c.pick(0, 1) ? 0x80000000u : 0u;
        c.untouched(high != 0);
        const size_t chroma = std::max(area((y >> 1) + (rows >> 1), w >> 1) + size_t(x >> 1), area(w >> 1, h >> 1));
        const Frame *s = c.frame(false, w, h, chroma, std::max(area(y + rows, w) + size_t(x), area(w, h)));
        Frame *t = c.frame(true, tw, th, up ? area(w, h) : area(tw / 2, th / 2), up ? int64_t(4 * area(w, h)) : -1);
        (op == 0 ? gScaleCroppedFrame_downby2 : op == 1 ? gScaleCroppedFrame_upby2
                                              : op == 2 ? gScaleCroppedFrame_upby4 : gScaleCroppedFrame_downto3by3)(
            s, t, uint32_t(x) | high, y, c.rng(), c.rng());
    },
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    Case c(bytes, size);
    kOps[size_t(c.pick(0, int32_t(kOps.size()) - 1))](c);
    c.check();
    return 0;
}
