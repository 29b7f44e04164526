// Benchmarks of scaling.
#include "bench.h"

namespace pixmill::bench {

// ---- Scaling of a 4:2:0 frame ---------------------------------------------
// Frame scaling from `from` to `to` by pixmill's `scalers`, libyuv's bilinear
// I420Scale and swscale's bilinear filter.
using FrameScaler = std::function<void(const Frame *, Frame *)>;
void scale(const char *name, Size from, Size to, std::initializer_list<std::pair<const char *, FrameScaler>> scalers)
{
    const Job job{name, from.name() + "-" + to.name(),
                  std::max(from.pixels(), to.pixels()) * 3 / 2};
    job.addMemcpy();
    for (const auto &scaler : scalers)
        job.add(std::string("pixmill:") + scaler.first, [from, to, fn = scaler.second] {
            auto out = std::make_shared<Planes>(to, false);
            return Step([from, out, fn] { fn(&sources(from).i420.frame, &out->frame); });
        });
#if PIXMILL_BENCH_LIBYUV
    job.add("libyuv:I420Scale(bilinear)", [from, to] {
        auto out = std::make_shared<Planes>(to, false);
        return Step([from, out] {
            const Planes &p = sources(from).i420;
            libyuv::I420Scale(p.y.data(), from.w, p.u.data(), p.cw, p.v.data(), p.cw, from.w, from.h, out->y.data(),
                              out->s.w, out->u.data(), out->cw, out->v.data(), out->cw, out->s.w, out->s.h,
                              libyuv::kFilterBilinear);
        });
    });
#endif
#if PIXMILL_BENCH_SWSCALE
    job.add("swscale:bilinear", [from, to] {
        auto out = std::make_shared<Planes>(to, false);
        Sws sws(from, AV_PIX_FMT_YUV420P, to, AV_PIX_FMT_YUV420P);
        return Step([from, out, sws] {
            SwsPlanes in(const_cast<Planes &>(sources(from).i420)), dst(*out);
            sws(in.ptr, in.stride, from.h, dst.mut, dst.stride);
        });
    });
#endif
}

// An export of the fixed-ratio family as a FrameScaler.
using CroppedScale = void (*)(const Frame *, Frame *, uint32_t, uint32_t, uint32_t, uint32_t);
FrameScaler fixed(CroppedScale fn)
{
    return [fn](const Frame *in, Frame *out) { fn(in, out, 0, 0, in->width, in->height); };
}

void scaling()
{
    scale("i420_scale", {1920, 1080}, {1280, 720}, {{"gScaleFrame", gScaleFrame}});
    scale("i420_scale", {640, 480}, {1280, 960},
          {{"gScaleFrame", gScaleFrame}, {"gScaleCroppedFrame_upby2", fixed(gScaleCroppedFrame_upby2)}});
    for (Size s : kSizes)
        scale("i420_half", s, {s.w / 2, s.h / 2},
              {{"gScaleCroppedFrame_downby2", fixed(gScaleCroppedFrame_downby2)}, {"gScaleFrame", gScaleFrame}});
    scale("i420_three_quarters", {1920, 1080}, {1440, 810},
          {{"gScaleCroppedFrame_downto3by3", fixed(gScaleCroppedFrame_downto3by3)}, {"gScaleFrame", gScaleFrame}});

    // RGB565 images: swscale is the only peer with a 16-bit scaler.
    const std::pair<Size, Size> rgbCases[] = {{{1920, 1080}, {1280, 720}}, {{640, 480}, {1280, 960}}};
    for (const auto &c : rgbCases) {
        const Size from = c.first, to = c.second;
        const Job job{"rgb565_scale", from.name() + "-" + to.name(), std::max(from.pixels(), to.pixels()) * 2};
        job.addMemcpy();
        job.add("pixmill:gScaleRGB565Frame", [from, to] {
            auto out = own(std::vector<uint16_t>(size_t(to.pixels())));
            return Step([from, to, out] {
                gScaleRGB565Frame(reinterpret_cast<const uint16_t *>(sources(from).rgb565.data()), out->data(), from.w,
                                  from.h, to.w, to.h);
            });
        });
#if PIXMILL_BENCH_SWSCALE
        job.add("swscale:bilinear", [from, to] {
            auto out = own(Bytes(size_t(to.pixels() * 2)));
            Sws sws(from, AV_PIX_FMT_RGB565, to, AV_PIX_FMT_RGB565);
            return Step([from, to, out, sws] {
                const uint8_t *src[4] = {sources(from).rgb565.data()};
                const int srcStride[4] = {from.w * 2};
                uint8_t *dst[4] = {out->data()};
                const int dstStride[4] = {to.w * 2};
                sws(src, srcStride, from.h, dst, dstStride);
            });
        });
#endif
    }
}

} // namespace pixmill::bench
