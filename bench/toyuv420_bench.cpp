// Benchmarks of the conversions into planar 4:2:0.
#include "bench.h"

namespace pixmill::bench {

// ---- Into planar 4:2:0 ------------------------------------------------------
void packedToYuv(Size s)
{
    const Job bgr{"bgr24_to_i420", s.name(), s.pixels() * 3};
    bgr.addMemcpy();
    bgr.add("pixmill:gBGR24INTtoYUV420Planar", [s] {
        auto out = own(Bytes(size_t(s.pixels() * 3 / 2)));
        return Step([s, out] {
            gBGR24INTtoYUV420Planar(sources(s).bgr24.data(), out->data(), uint32_t(s.w), uint32_t(s.h), s.w * 3);
        });
    });
    const Job rgb565{"rgb565_to_i420", s.name(), s.pixels() * 2};
    rgb565.addMemcpy();
    rgb565.add("pixmill:gEmRGB565toYUV420", [s] {
        auto out = std::make_shared<Planes>(s, false);
        return Step([s, out] {
            gEmRGB565toYUV420(reinterpret_cast<const uint16_t *>(sources(s).rgb565.data()), &out->frame, uint32_t(s.w),
                              uint32_t(s.h));
        });
    });
    const Job yuy2{"yuy2_to_i420", s.name(), s.pixels() * 2};
    yuy2.addMemcpy();
    yuy2.add("pixmill:YUY2toYUV420", [s] {
        auto out = own(Bytes(size_t(s.pixels() * 3 / 2)));
        return Step([s, out] { YUY2toYUV420(sources(s).yuy2.data(), out->data(), uint32_t(s.w), uint32_t(s.h)); });
    });
    yuy2.add("pixmill:gY1UY2VToYUV420", [s] {
        auto out = std::make_shared<Planes>(s, false);
        return Step([s, out] { gY1UY2VToYUV420(sources(s).yuy2.data(), &out->frame, uint32_t(s.w), uint32_t(s.h)); });
    });
    yuy2.add("pixmill:gY1UY2VToYV12", [s] {
        auto out = std::make_shared<Planes>(s, false);
        return Step([s, out] { gY1UY2VToYV12(sources(s).yuy2.data(), &out->frame, uint32_t(s.w), uint32_t(s.h)); });
    });
    const Job uyvy{"uyvy_to_i420", s.name(), s.pixels() * 2};
    uyvy.addMemcpy();
    uyvy.add("pixmill:gUY1VY2ToYUV420", [s] {
        auto out = std::make_shared<Planes>(s, false);
        return Step([s, out] { gUY1VY2ToYUV420(sources(s).uyvy.data(), &out->frame, uint32_t(s.w), uint32_t(s.h)); });
    });
#if PIXMILL_BENCH_LIBYUV
    using PackedToI420 = int (*)(const uint8_t *, int, uint8_t *, int, uint8_t *, int, uint8_t *, int, int, int);
    const struct {
        const Job &job;
        const char *who;
        PackedToI420 fn;
        Bytes Sources::*image;
        int bpp;
    } yuvPeers[] = {{bgr, "libyuv:RGB24ToI420", libyuv::RGB24ToI420, &Sources::bgr24, 3},
                    {bgr, "libyuv:RGB24ToJ420", libyuv::RGB24ToJ420, &Sources::bgr24, 3},
                    {rgb565, "libyuv:RGB565ToI420", libyuv::RGB565ToI420, &Sources::rgb565, 2},
                    {yuy2, "libyuv:YUY2ToI420", libyuv::YUY2ToI420, &Sources::yuy2, 2},
                    {uyvy, "libyuv:UYVYToI420", libyuv::UYVYToI420, &Sources::uyvy, 2}};
    for (const auto &peer : yuvPeers)
        peer.job.add(peer.who, [s, fn = peer.fn, image = peer.image, bpp = peer.bpp] {
            auto out = std::make_shared<Planes>(s, false);
            return Step([s, out, fn, image, bpp] {
                fn((sources(s).*image).data(), s.w * bpp, out->y.data(), s.w, out->u.data(), out->cw, out->v.data(),
                   out->cw, s.w, s.h);
            });
        });
#endif
#if PIXMILL_BENCH_SWSCALE
    const struct {
        const Job &job;
        const char *who;
        AVPixelFormat format;
        Bytes Sources::*image;
        int bpp;
    } swsPeers[] = {{bgr, "swscale:bgr24>yuv420p", AV_PIX_FMT_BGR24, &Sources::bgr24, 3},
                    {rgb565, "swscale:rgb565>yuv420p", AV_PIX_FMT_RGB565, &Sources::rgb565, 2},
                    {yuy2, "swscale:yuyv422>yuv420p", AV_PIX_FMT_YUYV422, &Sources::yuy2, 2},
                    {uyvy, "swscale:uyvy422>yuv420p", AV_PIX_FMT_UYVY422, &Sources::uyvy, 2}};
    for (const auto &peer : swsPeers)
        peer.job.add(peer.who, [s, format = peer.format, image = peer.image, bpp = peer.bpp] {
            auto out = std::make_shared<Planes>(s, false);
            Sws sws(s, format, s, AV_PIX_FMT_YUV420P);
            return Step([s, out, sws, image, bpp] {
                const uint8_t *src[4] = {(sources(s).*image).data()};
                const int stride[4] = {s.w * bpp};
                SwsPlanes dst(*out);
                sws(src, stride, s.h, dst.mut, dst.stride);
            });
        });
#endif
}

} // namespace pixmill::bench
