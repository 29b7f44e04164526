// Operations into planar YUV 4:2:0: from RGB565, BGR24, packed 4:2:2 and
// planar 4:2:2 (with crop and scale).
#include "checks.h"
#include "ops.h"

namespace pixmill::tools {
namespace {

// gEmRGB565toYUV420: the image lands upside down in a frame of --canvas size
// (default: the image rounded up to even sizes), the rest filled by repeats.
void planFromRgb565(Plan &p, int32_t w, int32_t h, const Options &opt, const std::string &file)
{
    const Checker check(file, p.op->name);
    p.tw = opt.canvas.set ? opt.canvas.w : w + (w & 1);
    p.th = opt.canvas.set ? opt.canvas.h : h + (h & 1);
    check.even(p.tw, "frame width");
    check.even(p.th, "frame height");
    check.fits16(p.tw, "frame width");
    check.fits16(p.th, "frame height");
    check.atLeast(w, 2, "image width");
    check.atMost(w, p.tw, "image width", "the frame width");
    check.atMost(h, p.th, "image height", "the frame height");
    p.w = w;
    p.h = h;
    p.target(p.tw, p.th);
}

void runFromRgb565(const Plan &p, Picture &in, Picture &out)
{
    Frame f = out.frame();
    gEmRGB565toYUV420(in.words(), &f, static_cast<uint32_t>(p.w), static_cast<uint32_t>(p.h));
}

// gBGR24INTtoYUV420Planar: even sizes; --bottom-up walks the rows from the
// last one with a negative stride.
void planFromBgr24(Plan &p, int32_t w, int32_t h, const Options &opt, const std::string &file)
{
    const Checker check(file, p.op->name);
    check.even(w, "width");
    check.even(h, "height");
    p.outW = w;
    p.outH = h;
    p.flag = opt.bottomUp ? 1 : 0;
}

void runFromBgr24(const Plan &p, Picture &in, Picture &out)
{
    const int32_t pitch = 3 * p.outW;
    const uint8_t *first = in.data.data() + (p.flag ? static_cast<size_t>(pitch) * (static_cast<size_t>(p.outH) - 1) : 0);
    gBGR24INTtoYUV420Planar(first, out.data.data(), static_cast<uint32_t>(p.outW), static_cast<uint32_t>(p.outH),
                            p.flag ? -pitch : pitch);
}

// Packed 4:2:2: even width (whole groups) and even height (whole 4:2:0 rows).
void planPacked(Plan &p, int32_t w, int32_t h, const Options &, const std::string &file)
{
    const Checker check(file, p.op->name);
    check.even(w, "width");
    check.even(h, "height");
    check.atLeast(w, 2, "width");
    p.outW = w;
    p.outH = h;
}

uint32_t u32(int32_t v) { return static_cast<uint32_t>(v); }

// The Frame forms write the planes in memory order: which plane receives
// which byte of a group is the operation's own rule.
void runY1UY2VToYUV420(const Plan &p, Picture &in, Picture &out)
{
    Frame f = out.memFrame();
    requireRan(gY1UY2VToYUV420(in.data.data(), &f, u32(p.outW), u32(p.outH)), p.op->name);
}

void runY1UY2VToYV12(const Plan &p, Picture &in, Picture &out)
{
    Frame f = out.memFrame();
    requireRan(gY1UY2VToYV12(in.data.data(), &f, u32(p.outW), u32(p.outH)), p.op->name);
}

void runUY1VY2ToYUV420(const Plan &p, Picture &in, Picture &out)
{
    Frame f = out.memFrame();
    requireRan(gUY1VY2ToYUV420(in.data.data(), &f, u32(p.outW), u32(p.outH)), p.op->name);
}

void runYUY2toYUV420(const Plan &p, Picture &in, Picture &out)
{
    YUY2toYUV420(in.data.data(), out.data.data(), u32(p.outW), u32(p.outH));
}

// gYUV422toYUV420: rectangle inside the frame, limited extents 1..8191,
// target (--size, default the rectangle's size) even and at least 4.
void planYuv422to420(Plan &p, int32_t w, int32_t h, const Options &opt, const std::string &file)
{
    const Checker check(file, p.op->name);
    const Rect r = sourceRect(opt, w, h);
    check.even(w, "source width");
    check.fits16(r.w, "rectangle width");
    check.fits16(r.h, "rectangle height");
    check.require(r.x < w, "rectangle x " + std::to_string(r.x) + " is not inside the frame width " + std::to_string(w));
    check.require(r.y < h, "rectangle y " + std::to_string(r.y) + " is not inside the frame height " + std::to_string(h));
    const int32_t cw = std::min(r.w, w - r.x), ch = std::min(r.h, h - r.y);
    check.atMost(cw, 8191, "limited rectangle width", "the scaler's extent");
    check.atMost(ch, 8191, "limited rectangle height", "the scaler's extent");
    p.tw = opt.size.set ? opt.size.w : cw & ~1;
    p.th = opt.size.set ? opt.size.h : ch & ~1;
    check.even(p.tw, "target width");
    check.even(p.th, "target height");
    check.atLeast(p.tw, 4, "target width");
    check.atLeast(p.th, 4, "target height");
    check.fits16(p.tw, "target width");
    check.fits16(p.th, "target height");
    p.source(r);
    p.target(p.tw, p.th);
}

void runYuv422to420(const Plan &p, Picture &in, Picture &out)
{
    const Frame src = in.frame();
    Frame dst = out.frame();
    requireRan(gYUV422toYUV420(&src, &dst, u32(p.x), u32(p.y), static_cast<uint16_t>(p.w), static_cast<uint16_t>(p.h)),
               p.op->name);
}

} // namespace

void addYuvOps(std::vector<OpSpec> &ops)
{
    ops.push_back({"gBGR24INTtoYUV420Planar", "convert", Fmt::Bgr24, Fmt::Yuv420p, 601, "", kUseBottomUp,
                   "B,G,R bytes to 4:2:0, BT.601 full range, chroma averaged over 2x2; --bottom-up", planFromBgr24,
                   runFromBgr24});
    ops.push_back({"gEmRGB565toYUV420", "convert", Fmt::Rgb565, Fmt::Yuv420p, 709, "", kUseCanvas,
                   "RGB565 to 4:2:0, BT.709 studio range, image lands upside down in a --canvas WxH frame",
                   planFromRgb565, runFromRgb565});
    ops.push_back({"YUY2toYUV420", "convert", Fmt::Yuyv, Fmt::Yuv420p, 0, "", 0,
                   "packed Y0 U Y1 V to 4:2:0 (one buffer), odd rows' chroma dropped", planPacked, runYUY2toYUV420});
    ops.push_back({"gY1UY2VToYV12", "convert", Fmt::Yuyv, Fmt::Yuv420p, 0, "", 0,
                   "packed Y0 U Y1 V to 4:2:0: U (byte 1) to the u plane", planPacked, runY1UY2VToYV12});
    ops.push_back({"gY1UY2VToYUV420", "convert", Fmt::Yuyv, Fmt::Yv12, 0, "", 0,
                   "packed Y0 U Y1 V to 4:2:0 with V (byte 3) in the u plane: the file comes out as yv12",
                   planPacked, runY1UY2VToYUV420});
    ops.push_back({"gUY1VY2ToYUV420", "convert", Fmt::Uyvy, Fmt::Yuv420p, 0, "", 0,
                   "packed U Y0 V Y1 to 4:2:0, odd rows' chroma dropped", planPacked, runUY1VY2ToYUV420});
    ops.push_back({"gYUV422toYUV420", "convert scale", Fmt::Yuv422p, Fmt::Yuv420p, 0, "", kUseRect | kUseSize,
                   "4:2:2 planar rectangle to a 4:2:0 frame of --size WxH, bilinear", planYuv422to420,
                   runYuv422to420});
}

} // namespace pixmill::tools
