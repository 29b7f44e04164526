// Benchmarks of scaling: every scaling operation from 640x480 and 1920x1080
// sources into three target sizes (two thirds, half, double; the fixed
// ratios at their own), beside libyuv's and swscale's bilinear scalers and
// the memcpy floor.
#include "bench.h"

namespace pixmill::bench {

// A planar frame scaler: source frame, target frame (its size set), and the
// source rectangle in luma pixels.
struct Rect {
    int x, y, w, h;
};
using FrameScaler = std::function<void(const Frame *, Frame *, Rect)>;

// Pointer and size of a rectangle of one plane of `p`, for the peers.
struct PlaneRect {
    const uint8_t *at;
    int stride, w, h;
};
PlaneRect planeRect(const Planes &p, int plane, Rect r, bool yuv422)
{
    if (plane == 0)
        return {p.y.data() + r.y * p.s.w + r.x, p.s.w, r.w, r.h};
    const int ry = yuv422 ? r.y : r.y / 2, rh = yuv422 ? r.h : r.h / 2;
    const uint8_t *base = plane == 1 ? p.u.data() : p.v.data();
    return {base + ry * p.cw + r.x / 2, p.cw, r.w / 2, rh};
}

// One job: the rectangle `r` of a `from` frame (4:2:0, or 4:2:2 for
// `yuv422`) into a `to` frame (4:2:0 for `to420`, else the source's layout).
void scale(const char *name, Size from, Rect r, Size to, bool yuv422, bool to420,
           std::initializer_list<std::pair<const char *, FrameScaler>> scalers)
{
    const bool toYuv422 = yuv422 && !to420;
    const Job job{name, from.name() + "-" + to.name(),
                  std::max(int64_t(r.w) * r.h, to.pixels()) * (yuv422 ? 2 : 3) / 2};
    job.addMemcpy();
    for (const auto &scaler : scalers)
        job.add(std::string("pixmill:") + scaler.first, [=, fn = scaler.second] {
            auto out = std::make_shared<Planes>(to, toYuv422);
            return Step([=] {
                const Planes &in = yuv422 ? sources(from).i422 : sources(from).i420;
                fn(&in.frame, &out->frame, r);
            });
        });
#if PIXMILL_BENCH_LIBYUV
    // For 4:2:2 into 4:2:0, libyuv scales the planes as I422 first, then drops
    // chroma rows with I422ToI420 at the target size.
    const char *peer = to420 && yuv422 ? "libyuv:I422Scale+I422ToI420(bilinear)"
                       : yuv422        ? "libyuv:I422Scale(bilinear)"
                                       : "libyuv:I420Scale(bilinear)";
    job.add(peer, [=] {
        auto out = std::make_shared<Planes>(to, yuv422);
        auto out420 = std::make_shared<Planes>(to, false);
        return Step([=] {
            const Planes &p = yuv422 ? sources(from).i422 : sources(from).i420;
            const PlaneRect y = planeRect(p, 0, r, yuv422), u = planeRect(p, 1, r, yuv422),
                            v = planeRect(p, 2, r, yuv422);
            auto fn = yuv422 ? libyuv::I422Scale : libyuv::I420Scale;
            fn(y.at, y.stride, u.at, u.stride, v.at, v.stride, r.w, r.h, out->y.data(), out->s.w, out->u.data(),
               out->cw, out->v.data(), out->cw, to.w, to.h, libyuv::kFilterBilinear);
            if (to420 && yuv422)
                libyuv::I422ToI420(out->y.data(), to.w, out->u.data(), out->cw, out->v.data(), out->cw,
                                   out420->y.data(), to.w, out420->u.data(), out420->cw, out420->v.data(),
                                   out420->cw, to.w, to.h);
        });
    });
#endif
#if PIXMILL_BENCH_SWSCALE
    job.add("swscale:bilinear", [=] {
        auto out = std::make_shared<Planes>(to, toYuv422);
        Sws sws({r.w, r.h}, yuv422 ? AV_PIX_FMT_YUV422P : AV_PIX_FMT_YUV420P, to,
                toYuv422 ? AV_PIX_FMT_YUV422P : AV_PIX_FMT_YUV420P);
        return Step([=] {
            const Planes &p = yuv422 ? sources(from).i422 : sources(from).i420;
            const PlaneRect y = planeRect(p, 0, r, yuv422), u = planeRect(p, 1, r, yuv422),
                            v = planeRect(p, 2, r, yuv422);
            const uint8_t *in[4] = {y.at, u.at, v.at, nullptr};
            const int inStride[4] = {y.stride, u.stride, v.stride, 0};
            SwsPlanes dst(*out);
            sws(in, inStride, r.h, dst.mut, dst.stride);
        });
    });
#endif
}

// An export of the fixed-ratio family as a FrameScaler.
using CroppedScale = void (*)(const Frame *, Frame *, uint32_t, uint32_t, uint32_t, uint32_t);
FrameScaler fixed(CroppedScale fn)
{
    return [fn](const Frame *in, Frame *out, Rect r) { fn(in, out, uint32_t(r.x), uint32_t(r.y), uint32_t(r.w), uint32_t(r.h)); };
}

void scaleFrame(const Frame *in, Frame *out, Rect) { gScaleFrame(in, out); }
void scaleCropped(const Frame *in, Frame *out, Rect r)
{
    gScaleCroppedFrame(in, out, uint32_t(r.x), uint32_t(r.y), uint16_t(r.w), uint16_t(r.h));
}
void scaleCropped422(const Frame *in, Frame *out, Rect r)
{
    gScaleCroppedFrameYUV422(in, out, uint32_t(r.x), uint32_t(r.y), uint16_t(r.w), uint16_t(r.h));
}
void yuv422to420(const Frame *in, Frame *out, Rect r)
{
    gYUV422toYUV420(in, out, uint32_t(r.x), uint32_t(r.y), uint16_t(r.w), uint16_t(r.h));
}

void rgb565(Size from, Rect r, Size to)
{
    const Job job{"rgb565_scale", from.name() + "-" + to.name(), std::max(int64_t(r.w) * r.h, to.pixels()) * 2};
    job.addMemcpy();
    const bool whole = r.w == from.w && r.h == from.h;
    job.add(whole ? "pixmill:gScaleRGB565Frame" : "pixmill:gScaleRGB565CroppedFrame", [=] {
        auto out = own(std::vector<uint16_t>(size_t(to.pixels())));
        return Step([=] {
            const auto *in = reinterpret_cast<const uint16_t *>(sources(from).rgb565.data());
            if (whole)
                gScaleRGB565Frame(in, out->data(), from.w, from.h, to.w, to.h);
            else
                gScaleRGB565CroppedFrame(in, out->data(), from.w, from.h, to.w, to.h, r.x, r.y, r.w, r.h);
        });
    });
#if PIXMILL_BENCH_SWSCALE
    // swscale is the only peer with a 16-bit scaler.
    job.add("swscale:bilinear", [=] {
        auto out = own(Bytes(size_t(to.pixels() * 2)));
        Sws sws({r.w, r.h}, AV_PIX_FMT_RGB565, to, AV_PIX_FMT_RGB565);
        return Step([=] {
            const uint8_t *src[4] = {sources(from).rgb565.data() + 2 * (r.y * from.w + r.x)};
            const int srcStride[4] = {from.w * 2};
            uint8_t *dst[4] = {out->data()};
            const int dstStride[4] = {to.w * 2};
            sws(src, srcStride, r.h, dst, dstStride);
        });
    });
#endif
}

void scaling()
{
    for (Size s : kSizes) {
        const Rect all{0, 0, s.w, s.h};
        // A quarter of the frame from its centre, zoomed to the whole size.
        const Rect quarter{s.w / 4, s.h / 4, s.w / 2, s.h / 2};
        const Size twoThirds{s.w * 2 / 3 & ~1, s.h * 2 / 3 & ~1}, half{s.w / 2, s.h / 2}, twice{s.w * 2, s.h * 2};
        scale("i420_scale", s, all, twoThirds, false, false,
              {{"gScaleFrame", scaleFrame}, {"gScaleCroppedFrame", scaleCropped}});
        scale("i420_scale", s, all, half, false, false,
              {{"gScaleFrame", scaleFrame},
               {"gScaleCroppedFrame", scaleCropped},
               {"gScaleCroppedFrame_downby2", fixed(gScaleCroppedFrame_downby2)}});
        scale("i420_scale", s, all, twice, false, false,
              {{"gScaleFrame", scaleFrame},
               {"gScaleCroppedFrame", scaleCropped},
               {"gScaleCroppedFrame_upby2", fixed(gScaleCroppedFrame_upby2)}});
        scale("i420_three_quarters", s, all, {s.w * 3 / 4, s.h * 3 / 4}, false, false,
              {{"gScaleCroppedFrame_downto3by3", fixed(gScaleCroppedFrame_downto3by3)},
               {"gScaleFrame", scaleFrame}});
        scale("i420_zoom", s, quarter, s, false, false, {{"gScaleCroppedFrame", scaleCropped}});
        // upby4 reads the quarter-size rectangle at the corner.
        scale("i420_zoom4", s, {0, 0, s.w / 4, s.h / 4}, s, false, false,
              {{"gScaleCroppedFrame_upby4", fixed(gScaleCroppedFrame_upby4)}, {"gScaleCroppedFrame", scaleCropped}});
        for (Size to : {twoThirds, half, twice})
            scale("i422_scale", s, all, to, true, false, {{"gScaleCroppedFrameYUV422", scaleCropped422}});
        for (Size to : {s, twoThirds, half})
            scale("i422_to_i420_scale", s, all, to, true, true, {{"gYUV422toYUV420", yuv422to420}});
        for (Size to : {twoThirds, half, twice})
            rgb565(s, all, to);
        rgb565(s, quarter, s);
    }
}

} // namespace pixmill::bench
