// Benchmarks of rotation and mirroring.
#include "bench.h"

namespace pixmill::bench {
namespace {

const char *const kTurnNames[] = {"0", "90", "180", "270"};

#if PIXMILL_BENCH_LIBYUV
libyuv::RotationMode libyuvMode(int quarter)
{
    static const libyuv::RotationMode modes[] = {libyuv::kRotate0, libyuv::kRotate90, libyuv::kRotate180,
                                                 libyuv::kRotate270};
    return modes[quarter];
}
#endif

// ---- Whole frames: 4:2:0, 4:2:2 and luma alone ------------------------------
void frames(Size s)
{
    using Turn = void (*)(const Frame *, const Frame *, Rotation);
    struct Kind {
        const char *job, *who;
        Turn turn;
        bool yuv422, lumaOnly;
    };
    static const Kind kinds[] = {{"i420_rotate", "pixmill:gRotateFrame", gRotateFrame, false, false},
                                 {"i422_rotate", "pixmill:gRotate422Frame", gRotate422Frame, true, false},
                                 {"y_rotate", "pixmill:gRotateMonochromeFrame", gRotateMonochromeFrame, false, true}};
    for (const Kind &kind : kinds)
        for (int quarter : {1, 2}) {
            const Planes &in = kind.yuv422 ? sources(s).i422 : sources(s).i420;
            const Job job{kind.job + std::string(kTurnNames[quarter]), s.name(),
                          kind.lumaOnly ? s.pixels() : in.bytes()};
            job.addMemcpy();
            const Size turned = quarter == 1 ? Size{s.h, s.w} : s;
            job.add(kind.who, [s, turned, quarter, kind] {
                auto out = std::make_shared<Planes>(turned, kind.yuv422);
                return Step([s, out, quarter, kind] {
                    kind.turn(kind.yuv422 ? &sources(s).i422.frame : &sources(s).i420.frame, &out->frame,
                              Rotation(quarter));
                });
            });
#if PIXMILL_BENCH_LIBYUV
            job.add(kind.lumaOnly ? "libyuv:RotatePlane" : kind.yuv422 ? "libyuv:I422Rotate" : "libyuv:I420Rotate",
                    [s, turned, quarter, kind] {
                        auto out = std::make_shared<Planes>(turned, kind.yuv422);
                        return Step([s, out, quarter, kind] {
                            const Planes &p = kind.yuv422 ? sources(s).i422 : sources(s).i420;
                            auto &o = *out;
                            const auto m = libyuvMode(quarter);
                            if (kind.lumaOnly)
                                libyuv::RotatePlane(p.y.data(), s.w, o.y.data(), o.s.w, s.w, s.h, m);
                            else if (kind.yuv422)
                                libyuv::I422Rotate(p.y.data(), s.w, p.u.data(), p.cw, p.v.data(), p.cw, o.y.data(),
                                                   o.s.w, o.u.data(), o.cw, o.v.data(), o.cw, s.w, s.h, m);
                            else
                                libyuv::I420Rotate(p.y.data(), s.w, p.u.data(), p.cw, p.v.data(), p.cw, o.y.data(),
                                                   o.s.w, o.u.data(), o.cw, o.v.data(), o.cw, s.w, s.h, m);
                        });
                    });
#endif
        }
}

// ---- Rectangles of 16-bit images, moved whole and expanded to B,G,R ----------
void rectangles(Size s)
{
    const auto *rgb565 = reinterpret_cast<const uint16_t *>(sources(s).rgb565.data());
    for (int quarter : {1, 2}) {
        const Size turned = quarter == 1 ? Size{s.h, s.w} : s;
        const Job job{"rgb16_rotate" + std::string(kTurnNames[quarter]), s.name(), s.pixels() * 2};
        job.addMemcpy();
        job.add("pixmill:gRotateRGB16", [s, turned, quarter, rgb565] {
            auto out = own(std::vector<uint16_t>(size_t(s.pixels())));
            return Step([s, turned, quarter, rgb565, out] {
                gRotateRGB16(rgb565, out->data(), s.w, s.h, 0, 0, s.w, s.h, 0, 0, turned.w, turned.h,
                             Rotation(quarter));
            });
        });
#if PIXMILL_BENCH_LIBYUV
        job.add("libyuv:RotatePlane_16", [s, turned, quarter, rgb565] {
            auto out = own(std::vector<uint16_t>(size_t(s.pixels())));
            return Step([s, turned, quarter, rgb565, out] {
                libyuv::RotatePlane_16(rgb565, s.w, out->data(), turned.w, s.w, s.h, libyuvMode(quarter));
            });
        });
#endif
    }
    for (int quarter : {0, 1}) {
        const Size turned = quarter == 1 ? Size{s.h, s.w} : s;
        const Job job{"rgb16_to_bgr24_rotate" + std::string(kTurnNames[quarter]), s.name(), s.pixels() * 3};
        job.addMemcpy();
        job.add("pixmill:gRotateRGB16toBGR24", [s, turned, quarter, rgb565] {
            auto out = own(Bytes(size_t(s.pixels() * 3)));
            return Step([s, turned, quarter, rgb565, out] {
                gRotateRGB16toBGR24(rgb565, out->data(), s.w, s.h, 0, 0, s.w, s.h, 0, 0, turned.h, turned.w * 3,
                                    Rotation(quarter));
            });
        });
#if PIXMILL_BENCH_LIBYUV
        // Through 32-bit pixels: expand, turn, pack.
        job.add("libyuv:RGB565ToARGB+ARGBRotate+ARGBToRGB24", [s, turned, quarter] {
            auto argb = own(Bytes(size_t(s.pixels() * 4)));
            auto argbTurned = own(Bytes(size_t(s.pixels() * 4)));
            auto out = own(Bytes(size_t(s.pixels() * 3)));
            return Step([s, turned, quarter, argb, argbTurned, out] {
                libyuv::RGB565ToARGB(sources(s).rgb565.data(), s.w * 2, argb->data(), s.w * 4, s.w, s.h);
                const uint8_t *from = argb->data();
                if (quarter != 0) {
                    libyuv::ARGBRotate(argb->data(), s.w * 4, argbTurned->data(), turned.w * 4, s.w, s.h,
                                       libyuvMode(quarter));
                    from = argbTurned->data();
                }
                libyuv::ARGBToRGB24(from, turned.w * 4, out->data(), turned.w * 3, turned.w, turned.h);
            });
        });
#endif
#if PIXMILL_BENCH_SWSCALE
        if (quarter == 0)
            job.add("swscale:rgb565le>bgr24", [s] {
                auto out = own(Bytes(size_t(s.pixels() * 3)));
                auto sws = own(Sws(s, AV_PIX_FMT_RGB565LE, s, AV_PIX_FMT_BGR24));
                return Step([s, out, sws] {
                    const uint8_t *src[4] = {sources(s).rgb565.data(), nullptr, nullptr, nullptr};
                    const int srcStride[4] = {s.w * 2, 0, 0, 0};
                    uint8_t *dst[4] = {out->data(), nullptr, nullptr, nullptr};
                    const int dstStride[4] = {s.w * 3, 0, 0, 0};
                    (*sws)(src, srcStride, s.h, dst, dstStride);
                });
            });
#endif
    }
}

// ---- Mirrors ---------------------------------------------------------------
void mirrors(Size s)
{
    static const char *const modeNames[] = {"lr", "tb"};
    for (uint32_t mode : {0u, 1u}) {
        const Job job{std::string("rgb565_mirror_") + modeNames[mode], s.name(), s.pixels() * 2};
        job.addMemcpy();
        job.add("pixmill:gMirrorImageRGB565", [s, mode] {
            auto out = own(std::vector<uint16_t>(size_t(s.pixels())));
            return Step([s, mode, out] {
                gMirrorImageRGB565(reinterpret_cast<const uint16_t *>(sources(s).rgb565.data()), out->data(), s.w, s.h,
                                   mode);
            });
        });
    }
    for (bool yuv422 : {false, true})
        for (uint32_t mode : {0u, 1u})
            for (bool inPlace : {false, true}) {
                const Planes &in = yuv422 ? sources(s).i422 : sources(s).i420;
                const Job job{std::string(yuv422 ? "i422" : "i420") + "_mirror_" + modeNames[mode] +
                                  (inPlace ? "_inplace" : ""),
                              s.name(), in.bytes()};
                job.addMemcpy();
                job.add("pixmill:gMirrorImageYUV", [s, yuv422, mode, inPlace] {
                    auto src = std::make_shared<Planes>(s, yuv422);
                    auto out = std::make_shared<Planes>(s, yuv422);
                    return Step([src, out, yuv422, mode, inPlace] {
                        gMirrorImageYUV(&src->frame, &out->frame, yuv422 ? 1 : 0, mode, inPlace ? 0 : 1);
                    });
                });
#if PIXMILL_BENCH_LIBYUV
                // A negative height reads the source bottom up: a top-bottom flip.
                job.add(mode == 0 ? "libyuv:MirrorPlane" : "libyuv:CopyPlane(flipped)", [s, yuv422, mode] {
                    auto out = std::make_shared<Planes>(s, yuv422);
                    return Step([s, out, yuv422, mode] {
                        const Planes &p = yuv422 ? sources(s).i422 : sources(s).i420;
                        auto &o = *out;
                        const std::pair<const Bytes *, Bytes *> planes[3] = {{&p.y, &o.y}, {&p.u, &o.u}, {&p.v, &o.v}};
                        for (int i = 0; i < 3; ++i) {
                            const int w = i == 0 ? s.w : p.cw, h = i == 0 ? s.h : p.ch;
                            if (mode == 0)
                                libyuv::MirrorPlane(planes[i].first->data(), w, planes[i].second->data(), w, w, h);
                            else
                                libyuv::CopyPlane(planes[i].first->data(), w, planes[i].second->data(), w, w, -h);
                        }
                    });
                });
#endif
            }
}

} // namespace

void rotate(Size s)
{
    frames(s);
    rectangles(s);
    mirrors(s);
}

} // namespace pixmill::bench
