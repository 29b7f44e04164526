// Scaling: the free-ratio bilinear scalers of frames and RGB565 images, and
// the fixed-ratio kernels 2:1, 1:2, 1:4 and 4:3.
#include "checks.h"
#include "ops.h"

namespace pixmill::tools {
namespace {

[[noreturn]] void needSize(const OpSpec *op)
{
    usageError(std::string(op->name) + " needs the target size: --size WxH");
}

// Tap distance of the plane scaler for an integer reduction ratio.
int32_t tapShift(int32_t ratio)
{
    return ratio <= 2 ? 0 : ratio <= 4 ? 1 : ratio <= 8 ? 2 : ratio <= 16 ? 3 : 4;
}

// One axis of one plane of the plane scaler: the span between the first and
// the last tap, (extent - 1) >> shift, must stay below 8192.
void checkSpan(const Checker &check, int32_t extent, int32_t target, const char *what)
{
    const int32_t span = (extent - 1) >> tapShift(extent / target);
    check.require(span < 8192, std::string(what) + " extent " + std::to_string(extent) + " into " +
                                   std::to_string(target) + " spans " + std::to_string(span) +
                                   " taps; the scaler allows at most 8191");
}

// ---- Free-ratio frames -----------------------------------------------------

void planScaleFrame(Plan &p, int32_t w, int32_t h, const Options &opt, const std::string &file)
{
    const Checker check(file, p.op->name);
    const bool is422 = p.op->in == Fmt::Yuv422p;
    if (!opt.size.set)
        needSize(p.op);
    const Rect r = sourceRect(opt, w, h);
    check.fits16(r.w, "rectangle width");
    check.fits16(r.h, "rectangle height");
    check.require(r.x < w && r.y < h, "rectangle corner " + std::to_string(r.x) + "," + std::to_string(r.y) +
                                          " is not inside the " + sizeText(w, h) + " frame");
    check.atLeast(r.w, 2, "rectangle width");
    check.atLeast(r.h, is422 ? 1 : 2, "rectangle height");
    p.tw = opt.size.w;
    p.th = opt.size.h;
    check.even(p.tw, "target width");
    if (!is422)
        check.even(p.th, "target height");
    // Luma, then chroma with the horizontal (and for 4:2:0 the vertical)
    // quantities halved, each rectangle limited against its own plane.
    const int32_t vs = is422 ? 0 : 1;
    checkSpan(check, std::min(r.w, w - r.x), p.tw, "luma width");
    checkSpan(check, std::min(r.h, h - r.y), p.th, "luma height");
    checkSpan(check, std::min(r.w >> 1, (w >> 1) - (r.x >> 1)), p.tw >> 1, "chroma width");
    checkSpan(check, std::min(r.h >> vs, (h >> vs) - (r.y >> vs)), p.th >> vs, "chroma height");
    p.source(r);
    p.target(p.tw, p.th);
}

void runScaleFrame(const Plan &p, Picture &in, Picture &out)
{
    const Frame src = in.frame();
    Frame dst = out.frame();
    const auto x = static_cast<uint32_t>(p.x), y = static_cast<uint32_t>(p.y);
    const auto w = static_cast<uint16_t>(p.w), h = static_cast<uint16_t>(p.h);
    const std::string name = p.op->name;
    if (name == "gScaleFrame")
        gScaleFrame(&src, &dst);
    else if (name == "gScaleCroppedFrame")
        gScaleCroppedFrame(&src, &dst, x, y, w, h);
    else
        gScaleCroppedFrameYUV422(&src, &dst, x, y, w, h);
}

// ---- Free-ratio RGB565 -----------------------------------------------------

void planScale565(Plan &p, int32_t w, int32_t h, const Options &opt, const std::string &file)
{
    const Checker check(file, p.op->name);
    if (!opt.size.set)
        needSize(p.op);
    const Rect r = sourceRect(opt, w, h);
    check.require(r.x < w && r.y < h, "rectangle corner " + std::to_string(r.x) + "," + std::to_string(r.y) +
                                          " is not inside the " + sizeText(w, h) + " image");
    const int32_t cw = std::min(r.w, w - r.x), ch = std::min(r.h, h - r.y);
    check.atLeast(ch, 2, "rectangle height");
    check.atMost(cw, 8191, "rectangle width", "the scaler's extent");
    check.atMost(ch, 8191, "rectangle height", "the scaler's extent");
    p.tw = opt.size.w;
    p.th = opt.size.h;
    check.atLeast(p.tw, 2, "target width");
    check.atLeast(p.th, 2, "target height");
    p.source(r);
    p.target(p.tw, p.th);
}

void runScale565(const Plan &p, Picture &in, Picture &out)
{
    if (std::string(p.op->name) == "gScaleRGB565Frame")
        gScaleRGB565Frame(in.words(), out.words(), in.w, in.h, p.tw, p.th);
    else
        gScaleRGB565CroppedFrame(in.words(), out.words(), in.w, in.h, p.tw, p.th, p.x, p.y, p.w, p.h);
}

// ---- Fixed ratios ----------------------------------------------------------

// One plane of a fixed-ratio call: source size, target size, corner.
struct PlaneCall {
    const char *name;
    int64_t sw, sh, dw, dh, x, y;
};

// The kernels read a run from the corner; the last offset each one reads must
// lie inside the plane.
void checkPlane(const Checker &check, const std::string &ratio, const PlaneCall &c)
{
    int64_t last = 0;
    if (ratio == "2:1")
        last = (c.y + 2 * c.dh) * c.sw + c.x - 1;
    else if (ratio == "1:2")
        last = (c.y + c.sh) * c.sw + c.x - 1;
    else if (ratio == "1:4")
        last = (c.y + c.dh / 4 - 1) * c.sw + c.x + c.dw / 4 - 1;
    else
        last = (c.y + c.dh * 4 / 3) * c.sw + c.x - 1;
    check.require(last < c.sw * c.sh, std::string("from corner ") + std::to_string(c.x) + "," + std::to_string(c.y) +
                                          " the " + c.name + " plane would be read to offset " + std::to_string(last) +
                                          ", past its " + std::to_string(c.sw * c.sh) + " samples");
}

void planFixed(Plan &p, int32_t w, int32_t h, const Options &opt, const std::string &file)
{
    const Checker check(file, p.op->name);
    const std::string ratio = p.op->variant;
    const Rect r = sourceRect(opt, w, h);
    check.require(r.x < w && r.y < h, "rectangle corner " + std::to_string(r.x) + "," + std::to_string(r.y) +
                                          " is not inside the " + sizeText(w, h) + " frame");
    const int32_t aw = w - r.x, ah = h - r.y; // what lies right of and below the corner
    int32_t tw = 0, th = 0;
    if (ratio == "2:1") {
        tw = w / 2;
        th = ((ah - (r.x > 0 ? 1 : 0)) / 2) & ~1;
    } else if (ratio == "1:2") {
        tw = 2 * w;
        th = 2 * h;
    } else if (ratio == "1:4") {
        tw = std::min(4 * aw, 65528) & ~7;
        th = std::min(4 * ah, 65528) & ~7;
    } else {
        tw = w * 3 / 4;
        th = (ah - (r.x > 0 ? 1 : 0)) * 3 / 4 / 6 * 6;
    }
    if (opt.size.set) {
        check.require(ratio != "1:2", "the target is always twice the source; --size does not apply");
        tw = opt.size.w;
        th = opt.size.h;
    }
    if (ratio == "2:1") {
        check.require(tw % 4 == 0, "target width " + std::to_string(tw) + " is not a multiple of 4");
        check.require(w == 2 * tw, "source width " + std::to_string(w) + " is not twice the target width " +
                                       std::to_string(tw));
        check.atLeast(th, 2, "target height");
    } else if (ratio == "1:2") {
        check.atLeast(w, 2, "source width");
        check.atLeast(h, 2, "source height");
        check.fits16(tw, "target width");
        check.fits16(th, "target height");
    } else if (ratio == "1:4") {
        check.require(tw % 8 == 0 && th % 8 == 0,
                      "target size " + sizeText(tw, th) + " is not made of multiples of 8");
        check.atLeast(tw, 16, "target width");
        check.atLeast(th, 16, "target height");
        check.require(r.x + tw / 4 <= w && r.y + th / 4 <= h,
                      "the " + sizeText(tw / 4, th / 4) + " source rectangle at " + std::to_string(r.x) + "," +
                          std::to_string(r.y) + " is not inside the " + sizeText(w, h) + " frame");
    } else {
        check.require(tw % 6 == 0 && th % 6 == 0,
                      "target size " + sizeText(tw, th) + " is not made of multiples of 6");
        check.atLeast(th, 6, "target height");
        check.require(w * 3 == tw * 4, "source width " + std::to_string(w) + " is not 4/3 of the target width " +
                                           std::to_string(tw));
    }
    const PlaneCall luma{"y", w, h, tw, th, r.x, r.y};
    const PlaneCall chroma{"u and v", w >> 1, h >> 1, tw >> 1, th >> 1, r.x >> 1, r.y >> 1};
    checkPlane(check, ratio, luma);
    checkPlane(check, ratio, chroma);
    p.source(r);
    p.target(tw, th);
}

void runFixed(const Plan &p, Picture &in, Picture &out)
{
    const Frame src = in.frame();
    Frame dst = out.frame();
    const auto x = static_cast<uint32_t>(p.x), y = static_cast<uint32_t>(p.y);
    const auto w = static_cast<uint32_t>(p.w), h = static_cast<uint32_t>(p.h);
    const std::string ratio = p.op->variant;
    if (ratio == "2:1")
        gScaleCroppedFrame_downby2(&src, &dst, x, y, w, h);
    else if (ratio == "1:2")
        gScaleCroppedFrame_upby2(&src, &dst, x, y, w, h);
    else if (ratio == "1:4")
        gScaleCroppedFrame_upby4(&src, &dst, x, y, w, h);
    else
        gScaleCroppedFrame_downto3by3(&src, &dst, x, y, w, h);
}

} // namespace

void addScaleOps(std::vector<OpSpec> &ops)
{
    const Fmt yuv = Fmt::Yuv420p;
    ops.push_back({"gScaleFrame", "scale", yuv, yuv, 0, "", kUseSize, "4:2:0 frame to --size WxH, bilinear",
                   planScaleFrame, runScaleFrame});
    ops.push_back({"gScaleCroppedFrame", "scale", yuv, yuv, 0, "", kUseSize | kUseRect,
                   "4:2:0 --rect to --size WxH, bilinear", planScaleFrame, runScaleFrame});
    ops.push_back({"gScaleCroppedFrameYUV422", "scale", Fmt::Yuv422p, Fmt::Yuv422p, 0, "", kUseSize | kUseRect,
                   "4:2:2 planar --rect to --size WxH, bilinear", planScaleFrame, runScaleFrame});
    ops.push_back({"gScaleRGB565Frame", "scale", Fmt::Rgb565, Fmt::Rgb565, 0, "", kUseSize,
                   "RGB565 image to --size WxH, bilinear", planScale565, runScale565});
    ops.push_back({"gScaleRGB565CroppedFrame", "scale", Fmt::Rgb565, Fmt::Rgb565, 0, "", kUseSize | kUseRect,
                   "RGB565 --rect to --size WxH, bilinear", planScale565, runScale565});
    const unsigned fixed = kUseSize | kUseRect;
    ops.push_back({"gScaleCroppedFrame_downby2", "scale", yuv, yuv, 0, "2:1", fixed,
                   "--ratio 2:1: 4:2:0 halved from the --rect corner, (9a+3b+3c+d)/16", planFixed, runFixed});
    ops.push_back({"gScaleCroppedFrame_upby2", "scale", yuv, yuv, 0, "1:2", fixed,
                   "--ratio 1:2: 4:2:0 doubled, averages between samples", planFixed, runFixed});
    ops.push_back({"gScaleCroppedFrame_upby4", "scale", yuv, yuv, 0, "1:4", fixed,
                   "--ratio 1:4: 4:2:0 times four from the --rect corner", planFixed, runFixed});
    ops.push_back({"gScaleCroppedFrame_downto3by3", "scale", yuv, yuv, 0, "4:3", fixed,
                   "--ratio 4:3: 4:2:0 to three quarters, 4x4 blocks to 3x3", planFixed, runFixed});
}

} // namespace pixmill::tools
