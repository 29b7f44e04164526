// Benchmarks of the conversions to RGB: every operation at each size, beside
// the nearest libyuv and swscale jobs and a memcpy of the bytes it moves.
// Turned rectangles stand beside libyuv converting and then rotating the
// 16-bit image (two passes), and beside the same rectangle unturned.
#include "bench.h"

namespace pixmill::bench {
namespace {

#if PIXMILL_BENCH_SWSCALE
// swscale converting a whole planar frame to a packed image of `unit` bytes
// per pixel.
void addSwscale(const Job &job, Size s, bool yuv422, AVPixelFormat to, const char *toName, int unit)
{
    job.add(std::string("swscale:") + (yuv422 ? "yuv422p>" : "yuv420p>") + toName, [=] {
        auto out = own(Bytes(size_t(s.pixels() * unit)));
        Sws sws(s, yuv422 ? AV_PIX_FMT_YUV422P : AV_PIX_FMT_YUV420P, s, to);
        return Step([=] {
            SwsPlanes in(const_cast<Planes &>(yuv422 ? sources(s).i422 : sources(s).i420));
            uint8_t *dst[4] = {out->data()};
            const int stride[4] = {s.w * unit};
            sws(in.ptr, in.stride, s.h, dst, stride);
        });
    });
}
#endif

#if PIXMILL_BENCH_LIBYUV
// A libyuv conversion of a whole frame (I420ToRAW, I422ToRGB565, ...) to a
// packed image of `unit` bytes per pixel.
using LibyuvConvert = int (*)(const uint8_t *, int, const uint8_t *, int, const uint8_t *, int, uint8_t *, int, int,
                              int);
void addLibyuv(const Job &job, Size s, bool yuv422, const char *name, LibyuvConvert convert, int unit)
{
    job.add(std::string("libyuv:") + name, [=] {
        auto out = own(Bytes(size_t(s.pixels() * unit)));
        return Step([=] {
            const Planes &p = yuv422 ? sources(s).i422 : sources(s).i420;
            convert(p.y.data(), s.w, p.u.data(), p.cw, p.v.data(), p.cw, out->data(), s.w * unit, s.w, s.h);
        });
    });
}
#endif

// The four rectangle conversions over the whole frame, by their source layout.
enum class Rect { Bgr565From420, Rgb16From420, Rgb16From422, Bgr565From422 };

void addRect(const Job &job, Size s, Rect op, Rotation code)
{
    static const char *const names[] = {"gYUV420toBGR565TopDown_Rotate", "gYUV420toRGB16Rotate",
                                        "gYUV422toRGB16Rotate(422)", "gYUV422HPlanartoBGR565TopDown_Rotate(422)"};
    job.add(std::string("pixmill:") + names[int(op)], [=] {
        auto out = own(std::vector<uint16_t>(size_t(s.pixels())));
        // The surface as it lies in memory; the 4:2:2 bottom-up form takes
        // its size before the turn.
        const bool quarter = code == ROTATE_90 || code == ROTATE_270;
        const int sw = quarter ? s.h : s.w, sh = quarter ? s.w : s.h;
        return Step([=] {
            const Frame *f = op == Rect::Bgr565From420 || op == Rect::Rgb16From420 ? &sources(s).i420.frame
                                                                                  : &sources(s).i422.frame;
            const auto u16 = [](int x) { return uint16_t(x); };
            switch (op) {
            case Rect::Bgr565From420:
                gYUV420toBGR565TopDown_Rotate(f, out->data(), 0, 0, u16(s.w), u16(s.h), 0, 0, u16(sw), u16(sh), code);
                break;
            case Rect::Rgb16From420: gYUV420toRGB16Rotate(f, out->data(), sw, sh, 0, 0, 0, 0, s.w, s.h, code); break;
            case Rect::Rgb16From422: gYUV422toRGB16Rotate(f, out->data(), sw, sh, 0, 0, 0, 0, s.w, s.h, code); break;
            case Rect::Bgr565From422:
                gYUV422HPlanartoBGR565TopDown_Rotate(f, out->data(), 0, 0, u16(s.w), u16(s.h), 0, 0, u16(s.w),
                                                     u16(s.h), code);
                break;
            }
        });
    });
}

// Turned jobs: the two rectangle conversions of one layout, and libyuv
// converting to RGB565 and then rotating the words as a 16-bit plane.
void turnedJobs(Size s, bool yuv422, Rotation code, const char *codeName)
{
    const Job job{std::string(yuv422 ? "i422" : "i420") + "_to_rgb565_" + codeName, s.name(), s.pixels() * 2};
    job.addMemcpy();
    addRect(job, s, yuv422 ? Rect::Rgb16From422 : Rect::Bgr565From420, code);
    addRect(job, s, yuv422 ? Rect::Bgr565From422 : Rect::Rgb16From420, code);
#if PIXMILL_BENCH_LIBYUV
    job.add(std::string("libyuv:") + (yuv422 ? "I422ToRGB565" : "I420ToRGB565Dither") + "+RotatePlane_16", [=] {
        auto rgb = own(std::vector<uint16_t>(size_t(s.pixels())));
        auto out = own(std::vector<uint16_t>(size_t(s.pixels())));
        const int outW = code == ROTATE_180 ? s.w : s.h;
        return Step([=] {
            const Planes &p = yuv422 ? sources(s).i422 : sources(s).i420;
            auto *bytes = reinterpret_cast<uint8_t *>(rgb->data());
            if (yuv422)
                libyuv::I422ToRGB565(p.y.data(), s.w, p.u.data(), p.cw, p.v.data(), p.cw, bytes, s.w * 2, s.w, s.h);
            else
                libyuv::I420ToRGB565Dither(p.y.data(), s.w, p.u.data(), p.cw, p.v.data(), p.cw, bytes, s.w * 2,
                                           nullptr, s.w, s.h);
            libyuv::RotatePlane_16(rgb->data(), s.w, out->data(), outW, s.w, s.h,
                                   code == ROTATE_180 ? libyuv::kRotate180
                                   : code == ROTATE_90 ? libyuv::kRotate90
                                                       : libyuv::kRotate270);
        });
    });
#endif
}

} // namespace

void yuvToRgb(Size s)
{
    // ---- Planar 4:2:0 and 4:2:2 to 24-bit -------------------------------------
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
    const Job rgb24From422{"i422_to_rgb24", s.name(), s.pixels() * 3};
    rgb24From422.addMemcpy();
    rgb24From422.add("pixmill:gYUV422HPlanartoBGR888TopDown(422)", [s] {
        auto out = own(Bytes(size_t(s.pixels() * 3)));
        return Step([s, out] { gYUV422HPlanartoBGR888TopDown(&sources(s).i422.frame, out->data(), s.w, s.h, 1); });
    });
#if PIXMILL_BENCH_LIBYUV
    addLibyuv(rgb24, s, false, "I420ToRAW", libyuv::I420ToRAW, 3);
    addLibyuv(rgb24, s, false, "I420ToRGB24", libyuv::I420ToRGB24, 3);
    addLibyuv(rgb24From422, s, true, "I422ToRGB24", libyuv::I422ToRGB24, 3);
#endif
#if PIXMILL_BENCH_SWSCALE
    addSwscale(rgb24, s, false, AV_PIX_FMT_RGB24, "rgb24", 3);
    addSwscale(rgb24From422, s, true, AV_PIX_FMT_BGR24, "bgr24", 3);
#endif

    // ---- Planar 4:2:0 and 4:2:2 to RGB565, unturned ------------------------------
    const Job rgb565{"i420_to_rgb565", s.name(), s.pixels() * 2};
    rgb565.addMemcpy();
    rgb565.add("pixmill:gEmYUV420toRGB565TopDown", [s] {
        auto out = own(std::vector<uint16_t>(size_t(s.pixels())));
        return Step([s, out] { gEmYUV420toRGB565TopDown(&sources(s).i420.frame, out->data(), s.w, s.h, 1); });
    });
    addRect(rgb565, s, Rect::Bgr565From420, ROTATE_NONE);
    addRect(rgb565, s, Rect::Rgb16From420, ROTATE_NONE);
    const Job rgb565From422{"i422_to_rgb565", s.name(), s.pixels() * 2};
    rgb565From422.addMemcpy();
    addRect(rgb565From422, s, Rect::Rgb16From422, ROTATE_NONE);
    addRect(rgb565From422, s, Rect::Bgr565From422, ROTATE_NONE);
#if PIXMILL_BENCH_LIBYUV
    addLibyuv(rgb565, s, false, "I420ToRGB565", libyuv::I420ToRGB565, 2);
    rgb565.add("libyuv:I420ToRGB565Dither", [s] {
        auto out = own(Bytes(size_t(s.pixels() * 2)));
        return Step([s, out] {
            const Planes &p = sources(s).i420;
            libyuv::I420ToRGB565Dither(p.y.data(), s.w, p.u.data(), p.cw, p.v.data(), p.cw, out->data(), s.w * 2,
                                       nullptr, s.w, s.h);
        });
    });
    addLibyuv(rgb565From422, s, true, "I422ToRGB565", libyuv::I422ToRGB565, 2);
#endif
#if PIXMILL_BENCH_SWSCALE
    addSwscale(rgb565, s, false, AV_PIX_FMT_RGB565, "rgb565", 2);
    addSwscale(rgb565From422, s, true, AV_PIX_FMT_RGB565, "rgb565", 2);
#endif

    // ---- Turned rectangles -----------------------------------------------------
    for (bool yuv422 : {false, true}) {
        turnedJobs(s, yuv422, ROTATE_90, "rot90");
        turnedJobs(s, yuv422, ROTATE_180, "rot180");
        turnedJobs(s, yuv422, ROTATE_270, "rot270");
    }
}

} // namespace pixmill::bench
