// Benchmarks of the conversions to RGB.
#include "bench.h"

namespace pixmill::bench {

// ---- Planar 4:2:0 to 24-bit and to RGB565 ---------------------------------
void yuvToRgb(Size s)
{
    const Job rgb24{"i420_to_rgb24", s.name(), s.pixels() * 3};
    rgb24.addMemcpy();
    rgb24.add("pixmill:gEmYUV420toRGB888TopDown", [s] {
        auto out = own(Bytes(size_t(s.pixels() * 3)));
        return Step([s, out] { gEmYUV420toRGB888TopDown(&sources(s).i420.frame, out->data(), s.w, s.h, 1); });
    });
    rgb24.add("pixmill:gYUV420toBGR24", [s] {
        auto out = own(Bytes(size_t(s.pixels() * 3)));
        return Step([s, out] { gYUV420toBGR24(&sources(s).i420.frame, out->data(), s.w * 3); });
    });
    rgb24.add("pixmill:gYUV422HPlanartoBGR888TopDown(422)", [s] {
        auto out = own(Bytes(size_t(s.pixels() * 3)));
        return Step([s, out] { gYUV422HPlanartoBGR888TopDown(&sources(s).i422.frame, out->data(), s.w, s.h, 1); });
    });
#if PIXMILL_BENCH_LIBYUV
    rgb24.add("libyuv:I420ToRAW", [s] {
        auto out = own(Bytes(size_t(s.pixels() * 3)));
        return Step([s, out] {
            const Planes &p = sources(s).i420;
            libyuv::I420ToRAW(p.y.data(), s.w, p.u.data(), p.cw, p.v.data(), p.cw, out->data(), s.w * 3, s.w, s.h);
        });
    });
#endif
#if PIXMILL_BENCH_SWSCALE
    rgb24.add("swscale:yuv420p>rgb24", [s] {
        auto out = own(Bytes(size_t(s.pixels() * 3)));
        Sws sws(s, AV_PIX_FMT_YUV420P, s, AV_PIX_FMT_RGB24);
        return Step([s, out, sws] {
            SwsPlanes in(const_cast<Planes &>(sources(s).i420));
            uint8_t *dst[4] = {out->data()};
            const int stride[4] = {s.w * 3};
            sws(in.ptr, in.stride, s.h, dst, stride);
        });
    });
#endif

    const Job rgb565{"i420_to_rgb565", s.name(), s.pixels() * 2};
    rgb565.addMemcpy();
    rgb565.add("pixmill:gEmYUV420toRGB565TopDown", [s] {
        auto out = own(std::vector<uint16_t>(size_t(s.pixels())));
        return Step([s, out] { gEmYUV420toRGB565TopDown(&sources(s).i420.frame, out->data(), s.w, s.h, 1); });
    });
    rgb565.add("pixmill:gYUV420toBGR565TopDown_Rotate", [s] {
        auto out = own(std::vector<uint16_t>(size_t(s.pixels())));
        return Step([s, out] {
            gYUV420toBGR565TopDown_Rotate(&sources(s).i420.frame, out->data(), 0, 0, uint16_t(s.w), uint16_t(s.h), 0, 0,
                                          uint16_t(s.w), uint16_t(s.h), ROTATE_NONE);
        });
    });
    rgb565.add("pixmill:gYUV420toRGB16Rotate", [s] {
        auto out = own(std::vector<uint16_t>(size_t(s.pixels())));
        return Step([s, out] {
            gYUV420toRGB16Rotate(&sources(s).i420.frame, out->data(), s.w, s.h, 0, 0, 0, 0, s.w, s.h, ROTATE_NONE);
        });
    });
    rgb565.add("pixmill:gYUV422toRGB16Rotate(422)", [s] {
        auto out = own(std::vector<uint16_t>(size_t(s.pixels())));
        return Step([s, out] {
            gYUV422toRGB16Rotate(&sources(s).i422.frame, out->data(), s.w, s.h, 0, 0, 0, 0, s.w, s.h, ROTATE_NONE);
        });
    });
#if PIXMILL_BENCH_LIBYUV
    rgb565.add("libyuv:I420ToRGB565", [s] {
        auto out = own(Bytes(size_t(s.pixels() * 2)));
        return Step([s, out] {
            const Planes &p = sources(s).i420;
            libyuv::I420ToRGB565(p.y.data(), s.w, p.u.data(), p.cw, p.v.data(), p.cw, out->data(), s.w * 2, s.w, s.h);
        });
    });
    rgb565.add("libyuv:I420ToRGB565Dither", [s] {
        auto out = own(Bytes(size_t(s.pixels() * 2)));
        return Step([s, out] {
            const Planes &p = sources(s).i420;
            libyuv::I420ToRGB565Dither(p.y.data(), s.w, p.u.data(), p.cw, p.v.data(), p.cw, out->data(), s.w * 2,
                                       nullptr, s.w, s.h);
        });
    });
#endif
#if PIXMILL_BENCH_SWSCALE
    rgb565.add("swscale:yuv420p>rgb565", [s] {
        auto out = own(Bytes(size_t(s.pixels() * 2)));
        Sws sws(s, AV_PIX_FMT_YUV420P, s, AV_PIX_FMT_RGB565);
        return Step([s, out, sws] {
            SwsPlanes in(const_cast<Planes &>(sources(s).i420));
            uint8_t *dst[4] = {out->data()};
            const int stride[4] = {s.w * 2};
            sws(in.ptr, in.stride, s.h, dst, stride);
        });
    });
#endif
}

} // namespace pixmill::bench
