// Operations from planar YUV to RGB: whole images and rectangles with a turn.
#include "checks.h"
#include "ops.h"

namespace pixmill::tools {
namespace {

// ---- Whole images from the top-left corner ---------------------------------

// sourceWidth x sourceHeight from the corner: both at least 2 and inside the
// frame. The tool refuses an empty size as there would be nothing to write.
void planCorner(Plan &p, int32_t w, int32_t h, const Options &opt, const std::string &file)
{
    const Checker check(file, p.op->name);
    const Rect r = sourceRect(opt, w, h);
    check.require(r.x == 0 && r.y == 0, "converts from the top-left corner; give --rect WxH without +X+Y");
    check.atMost(r.w, w, "width", "the frame width");
    check.atMost(r.h, h, "height", "the frame height");
    check.atLeast(r.w, 2, "width");
    check.atLeast(r.h, 2, "height");
    p.w = p.outW = r.w;
    p.h = p.outH = r.h;
    p.flag = opt.bottomUp ? 0 : 1;
}

void run888(const Plan &p, Picture &in, Picture &out)
{
    const Frame f = in.frame();
    gEmYUV420toRGB888TopDown(&f, out.data.data(), p.w, p.h, p.flag);
}

void run565(const Plan &p, Picture &in, Picture &out)
{
    const Frame f = in.frame();
    gEmYUV420toRGB565TopDown(&f, out.words(), p.w, p.h, p.flag);
}

void run422to888(const Plan &p, Picture &in, Picture &out)
{
    const Frame f = in.frame();
    gYUV422HPlanartoBGR888TopDown(&f, out.data.data(), p.w, p.h, p.flag);
}

void run422toRgb888Name(const Plan &p, Picture &in, Picture &out)
{
    const Frame f = in.frame();
    gYUV422HPlanartoRGB888TopDown(&f, out.data.data(), p.w, p.h, p.flag);
}

// gYUV420toBGR24: the whole frame, even sizes, tightly packed rows.
void planBgr24(Plan &p, int32_t w, int32_t h, const Options &, const std::string &file)
{
    const Checker check(file, p.op->name);
    check.even(w, "width");
    check.even(h, "height");
    p.outW = w;
    p.outH = h;
}

void runBgr24(const Plan &p, Picture &in, Picture &out)
{
    const Frame f = in.frame();
    requireRan(gYUV420toBGR24(&f, out.data.data(), 3 * p.outW), p.op->name);
}

// ---- Rectangles onto an RGB565 surface, turned -----------------------------

// How each of the four rectangle conversions treats corner and size.
enum class Walk {
    Blocks420, // corner made even; whole 2x2 blocks, tail repeats under code 0
    Pixels420, // corner made even; every pixel converted
    Pairs422,  // corner and size made even; pixel pairs; odd ch kept unless code 0
    Blocks422, // corner as given; whole 2x2 blocks, tail repeats under code 0
};

Walk walkOf(const OpSpec *op)
{
    const std::string name = op->name;
    if (name == "gYUV420toBGR565TopDown_Rotate")
        return Walk::Blocks420;
    if (name == "gYUV420toRGB16Rotate")
        return Walk::Pixels420;
    if (name == "gYUV422toRGB16Rotate")
        return Walk::Pairs422;
    return Walk::Blocks422;
}

// Area written, in source orientation, for a clipped cw x ch.
void writtenArea(Walk walk, uint32_t code, int32_t cw, int32_t ch, int32_t &aw, int32_t &ah)
{
    aw = cw;
    ah = ch;
    if ((walk == Walk::Blocks420 || walk == Walk::Blocks422) && code != ROTATE_NONE) {
        aw &= ~1;
        ah &= ~1;
    }
    if (walk == Walk::Pairs422) {
        aw &= ~1;
        if (code == ROTATE_NONE)
            ah &= ~1;
    }
}

void planRect565(Plan &p, int32_t w, int32_t h, const Options &opt, const std::string &file)
{
    const Checker check(file, p.op->name);
    const Walk walk = walkOf(p.op);
    const bool narrow = walk == Walk::Blocks420 || walk == Walk::Blocks422; // 16-bit arguments
    const Rect r = sourceRect(opt, w, h);
    p.code = opt.rotate < 0 ? 0u : static_cast<uint32_t>(opt.rotate);
    if (narrow) {
        check.fits16(r.x, "rectangle x");
        check.fits16(r.y, "rectangle y");
        check.fits16(r.w, "rectangle width");
        check.fits16(r.h, "rectangle height");
    }
    p.source(r);
    int32_t x0 = r.x, y0 = r.y, rw = r.w, rh = r.h;
    if (walk != Walk::Blocks422) {
        x0 &= ~1;
        y0 &= ~1;
    }
    if (walk == Walk::Pairs422) {
        rw &= ~1;
        rh &= ~1;
    }
    check.require(x0 <= w, "rectangle x " + std::to_string(x0) + " lies beyond the frame width " + std::to_string(w));
    check.require(y0 <= h, "rectangle y " + std::to_string(y0) + " lies beyond the frame height " + std::to_string(h));
    const bool turn = quarterTurn(p.code);
    int32_t cw = std::min(rw, w - x0), ch = std::min(rh, h - y0);

    // The surface: as given, or just large enough for the turned rectangle.
    p.dx = opt.at.x;
    p.dy = opt.at.y;
    int32_t aw = 0, ah = 0;
    writtenArea(walk, p.code, cw, ch, aw, ah);
    p.tw = opt.canvas.set ? opt.canvas.w : p.dx + (turn ? ah : aw);
    p.th = opt.canvas.set ? opt.canvas.h : p.dy + (turn ? aw : ah);
    check.fits16(p.tw, "canvas width");
    check.fits16(p.th, "canvas height");
    check.require(p.dx <= p.tw, "--at x " + std::to_string(p.dx) + " lies beyond the canvas width " +
                                    std::to_string(p.tw));
    check.require(p.dy <= p.th, "--at y " + std::to_string(p.dy) + " lies beyond the canvas height " +
                                    std::to_string(p.th));
    cw = std::min(cw, turn ? p.th - p.dy : p.tw - p.dx);
    ch = std::min(ch, turn ? p.tw - p.dx : p.th - p.dy);
    writtenArea(walk, p.code, cw, ch, aw, ah);
    check.require(aw > 0 && ah > 0, "the rectangle is empty once limited by frame and canvas");
    if (walk == Walk::Blocks420 || walk == Walk::Blocks422)
        check.require(p.code != ROTATE_NONE || (cw >= 2 && ch >= 2),
                      "a limited size of " + sizeText(cw, ch) + " leaves no 2x2 block to convert");
    p.target(p.tw, p.th);
}

void runRect565(const Plan &p, Picture &in, Picture &out)
{
    const Frame f = in.frame();
    const auto u = [](int32_t v) { return static_cast<uint16_t>(v); };
    int32_t result = -1;
    switch (walkOf(p.op)) {
    case Walk::Blocks420:
        result = gYUV420toBGR565TopDown_Rotate(&f, out.words(), static_cast<uint32_t>(p.x), static_cast<uint32_t>(p.y),
                                               u(p.w), u(p.h), u(p.dx), u(p.dy), u(p.tw), u(p.th), p.code);
        break;
    case Walk::Pixels420:
        result = gYUV420toRGB16Rotate(&f, out.words(), p.tw, p.th, p.dx, p.dy, p.x, p.y, p.w, p.h, p.code);
        break;
    case Walk::Pairs422:
        result = gYUV422toRGB16Rotate(&f, out.words(), p.tw, p.th, p.dx, p.dy, p.x, p.y, p.w, p.h, p.code);
        break;
    case Walk::Blocks422: {
        // This one takes the target's size before the turn.
        const bool turn = quarterTurn(p.code);
        result = gYUV422HPlanartoBGR565TopDown_Rotate(&f, out.words(), static_cast<uint32_t>(p.x),
                                                      static_cast<uint32_t>(p.y), u(p.w), u(p.h), u(p.dx), u(p.dy),
                                                      u(turn ? p.th : p.tw), u(turn ? p.tw : p.th), p.code);
        break;
    }
    }
    requireRan(result, p.op->name);
}

constexpr unsigned kCorner = kUseRect | kUseBottomUp;
constexpr unsigned kSurface = kUseRect | kUseRotate | kUseCanvas;

} // namespace

void addRgbOps(std::vector<OpSpec> &ops)
{
    ops.push_back({"gEmYUV420toRGB888TopDown", "convert", Fmt::Yuv420p, Fmt::Rgb24, 601, "", kCorner,
                   "4:2:0 to R,G,B bytes, BT.601, no dither; --rect WxH from the corner, --bottom-up", planCorner,
                   run888});
    ops.push_back({"gYUV420toBGR24", "convert", Fmt::Yuv420p, Fmt::Bgr24, 709, "", 0,
                   "4:2:0 to B,G,R bytes, BT.709 with rounded terms, odd columns' luma + 1", planBgr24, runBgr24});
    ops.push_back({"gEmYUV420toRGB565TopDown", "convert", Fmt::Yuv420p, Fmt::Rgb565, 601, "", kCorner,
                   "4:2:0 to RGB565, BT.601, 2x2 dither; --rect WxH from the corner, --bottom-up", planCorner,
                   run565});
    ops.push_back({"gYUV420toRGB16Rotate", "convert rotate", Fmt::Yuv420p, Fmt::Rgb565, 709, "", kSurface,
                   "4:2:0 rectangle to RGB565 canvas, BT.709, dither, rows top-down, turned", planRect565,
                   runRect565});
    ops.push_back({"gYUV422HPlanartoBGR888TopDown", "convert", Fmt::Yuv422p, Fmt::Bgr24, 601, "", kCorner,
                   "4:2:2 planar to B,G,R bytes, BT.601, dither added; --rect WxH, --bottom-up", planCorner,
                   run422to888});
    ops.push_back({"gYUV422HPlanartoRGB888TopDown", "convert", Fmt::Yuv422p, Fmt::Bgr24, 601, "", kCorner,
                   "the same function under its second name: also B,G,R bytes", planCorner, run422toRgb888Name});
    ops.push_back({"gYUV422HPlanartoBGR565TopDown_Rotate", "convert rotate", Fmt::Yuv422p, Fmt::Rgb565, 601, "", kSurface,
                   "4:2:2 rectangle to RGB565 canvas, BT.601, dither, rows bottom-up, turned", planRect565,
                   runRect565});
    ops.push_back({"gYUV422toRGB16Rotate", "convert rotate", Fmt::Yuv422p, Fmt::Rgb565, 709, "", kSurface,
                   "4:2:2 rectangle to RGB565 canvas, BT.709, even-row dither, rows top-down, turned", planRect565,
                   runRect565});
    ops.push_back({"gYUV420toBGR565TopDown_Rotate", "rotate", Fmt::Yuv420p, Fmt::Rgb565, 601, "", kSurface,
                   "4:2:0 rectangle to RGB565 canvas, BT.601, dither, rows bottom-up, turned", planRect565,
                   runRect565});
}

} // namespace pixmill::tools
