// Rotation and mirroring: whole frames, 16-bit rectangles, flips.
#include <cstring>

#include "checks.h"
#include "ops.h"

namespace pixmill::tools {
namespace {

uint32_t codeOf(const Options &opt) { return opt.rotate < 0 ? 0u : static_cast<uint32_t>(opt.rotate); }

// ---- Whole frames ----------------------------------------------------------

// The workers move 2x2 blocks: turns need even sizes, except the 4:2:2 half
// turn, which goes row by row and needs an even width only.
void planFrameTurn(Plan &p, int32_t w, int32_t h, const Options &opt, const std::string &file)
{
    const Checker check(file, p.op->name);
    p.code = codeOf(opt);
    if (p.code != ROTATE_NONE) {
        check.even(w, "width");
        if (!(p.op->in == Fmt::Yuv422p && p.code == ROTATE_180))
            check.even(h, "height");
    }
    p.outW = quarterTurn(p.code) ? h : w;
    p.outH = quarterTurn(p.code) ? w : h;
}

void runFrameTurn(const Plan &p, Picture &in, Picture &out)
{
    const Frame src = in.frame(), dst = out.frame();
    switch (p.op->in) {
    case Fmt::Yuv422p: gRotate422Frame(&src, &dst, p.code); break;
    case Fmt::Gray: gRotateMonochromeFrame(&src, &dst, p.code); break;
    default: gRotateFrame(&src, &dst, p.code); break;
    }
}

// ---- Rectangles of 16-bit images -------------------------------------------

// The clamp steps of the rectangle rotations: positions limited to their
// surfaces, then the size cut from its far end. Returns the clipped size.
void clampRect(const Plan &p, int32_t sw, int32_t sh, int32_t dw, int32_t &cw, int32_t &ch)
{
    const int32_t x = std::min(p.x, sw), y = std::min(p.y, sh);
    const int32_t dx = std::min(p.dx, dw), dy = std::min(p.dy, p.th);
    cw = std::min(p.w, sw - x);
    ch = std::min(p.h, sh - y);
    if (quarterTurn(p.code)) {
        ch = std::min(ch, dw - dx);
        cw = std::min(cw, p.th - dy);
    } else {
        cw = std::min(cw, dw - dx);
        ch = std::min(ch, p.th - dy);
    }
}

void planRgb16Turn(Plan &p, int32_t w, int32_t h, const Options &opt, const std::string &file)
{
    const Checker check(file, p.op->name);
    const Rect r = sourceRect(opt, w, h);
    p.code = codeOf(opt);
    p.source(r);
    p.dx = opt.at.x;
    p.dy = opt.at.y;
    check.require(r.x < w && r.y < h, "rectangle corner " + std::to_string(r.x) + "," + std::to_string(r.y) +
                                          " is not inside the " + sizeText(w, h) + " image");
    const int32_t cw = std::min(r.w, w - r.x), ch = std::min(r.h, h - r.y);
    const bool turn = quarterTurn(p.code);
    p.tw = opt.canvas.set ? opt.canvas.w : p.dx + (turn ? ch : cw);
    p.th = opt.canvas.set ? opt.canvas.h : p.dy + (turn ? cw : ch);
    check.fits16(p.tw, "canvas width");
    check.fits16(p.th, "canvas height");
    int32_t lw = 0, lh = 0;
    clampRect(p, w, h, p.tw, lw, lh);
    check.require(lw > 0 && lh > 0, "the rectangle is empty once limited by image and canvas");
    p.target(p.tw, p.th);
}

void runRgb16Turn(const Plan &p, Picture &in, Picture &out)
{
    const int32_t r = p.op->out == Fmt::Rgb565
                          ? gRotateRGB16(in.words(), out.words(), in.w, in.h, p.x, p.y, p.w, p.h, p.dx, p.dy, p.tw,
                                         p.th, p.code)
                          : gRotateRGB16toBGR24(in.words(), out.data.data(), in.w, in.h, p.x, p.y, p.w, p.h, p.dx,
                                                p.dy, p.th, 3 * p.tw, p.code);
    requireRan(r, p.op->name);
}

// ---- Mirroring -------------------------------------------------------------

void planMirror(Plan &p, int32_t w, int32_t h, const Options &opt, const std::string &)
{
    p.code = opt.mirror < 0 ? static_cast<uint32_t>(MIRROR_HORIZONTAL) : static_cast<uint32_t>(opt.mirror);
    p.flag = opt.inPlace ? 0 : 1;
    p.outW = w;
    p.outH = h;
}

void runMirror565(const Plan &p, Picture &in, Picture &out)
{
    requireRan(gMirrorImageRGB565(in.words(), out.words(), in.w, in.h, p.code), p.op->name);
}

// Into a second frame the middle line of an odd-sized plane is not stored,
// so the target starts as a copy of the source and keeps it there.
void runMirrorYuv(const Plan &p, Picture &in, Picture &out)
{
    const int32_t layout = p.op->in == Fmt::Yuv422p ? 1 : 0;
    Frame src = in.frame();
    if (p.flag == 0) {
        requireRan(gMirrorImageYUV(&src, nullptr, layout, p.code, 0), p.op->name);
        out.data.swap(in.data);
        return;
    }
    std::memcpy(out.data.data(), in.data.data(), in.data.size());
    Frame dst = out.frame();
    requireRan(gMirrorImageYUV(&src, &dst, layout, p.code, 1), p.op->name);
}

constexpr unsigned kRectTurn = kUseRect | kUseRotate | kUseCanvas;

} // namespace

void addGeometryOps(std::vector<OpSpec> &ops)
{
    ops.push_back({"gRotateFrame", "rotate", Fmt::Yuv420p, Fmt::Yuv420p, 0, "", kUseRotate,
                   "turns a 4:2:0 frame by quarter turns", planFrameTurn, runFrameTurn});
    ops.push_back({"gRotate422Frame", "rotate", Fmt::Yuv422p, Fmt::Yuv422p, 0, "", kUseRotate,
                   "turns a 4:2:2 planar frame; quarter turns keep the even chroma rows", planFrameTurn,
                   runFrameTurn});
    ops.push_back({"gRotateMonochromeFrame", "rotate", Fmt::Gray, Fmt::Gray, 0, "", kUseRotate,
                   "turns a luma plane", planFrameTurn, runFrameTurn});
    ops.push_back({"gRotateRGB16", "rotate", Fmt::Rgb565, Fmt::Rgb565, 0, "", kRectTurn,
                   "16-bit rectangle onto a --canvas at --at, turned", planRgb16Turn, runRgb16Turn});
    ops.push_back({"gRotateRGB16toBGR24", "rotate convert", Fmt::Rgb565, Fmt::Bgr24, 0, "", kRectTurn,
                   "RGB565 rectangle onto a B,G,R canvas, turned, low bits filled by a 2x2 pattern",
                   planRgb16Turn, runRgb16Turn});
    ops.push_back({"gMirrorImageRGB565", "mirror", Fmt::Rgb565, Fmt::Rgb565, 0, "", kUseMirror,
                   "flips a 16-bit image", planMirror, runMirror565});
    ops.push_back({"gMirrorImageYUV", "mirror", Fmt::Yuv420p, Fmt::Yuv420p, 0, "", kUseMirror,
                   "flips a 4:2:0 frame, into a copy or --in-place", planMirror, runMirrorYuv});
    ops.push_back({"gMirrorImageYUV", "mirror", Fmt::Yuv422p, Fmt::Yuv422p, 0, "", kUseMirror,
                   "flips a 4:2:2 planar frame (chroma layout 1: chroma flipped as a plane of full height)",
                   planMirror, runMirrorYuv});
}

} // namespace pixmill::tools
