// Speed of the main jobs of pixmill next to libyuv, libswscale and a memcpy
// of the same number of bytes, all measured in one run. Benchmarks are named
// job/size/implementation; bench/ratios.sh turns a run into a ratio table.
// A peer that was not found at configure time is left out with a message.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "pixmill.h"

#if PIXMILL_BENCH_LIBYUV
#include <libyuv.h>
#endif
#if PIXMILL_BENCH_SWSCALE
extern "C" {
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}
#endif

namespace {

struct Size {
    int w, h;
    std::string name() const { return std::to_string(w) + "x" + std::to_string(h); }
    int64_t pixels() const { return int64_t(w) * h; }
};

const Size kSizes[] = {{640, 480}, {1920, 1080}};

using Bytes = std::vector<uint8_t>;

Bytes noise(int64_t n, uint32_t seed)
{
    Bytes b(static_cast<size_t>(n));
    for (auto &x : b) {
        seed = seed * 1664525u + 1013904223u;
        x = uint8_t(seed >> 24);
    }
    return b;
}

// Planes of one frame, 4:2:0 or 4:2:2, owned together with their Frame.
struct Planes {
    Size s;
    int cw, ch;
    Bytes y, u, v;
    Frame frame;
    Planes(Size size, bool yuv422, uint32_t seed = 1)
        : s(size), cw(size.w / 2), ch(yuv422 ? size.h : size.h / 2),
          y(noise(size.pixels(), seed)), u(noise(int64_t(cw) * ch, seed + 1)), v(noise(int64_t(cw) * ch, seed + 2)),
          frame{y.data(), u.data(), v.data(), uint16_t(size.w), uint16_t(size.h), 0}
    {
    }
    int64_t bytes() const { return int64_t(y.size() + u.size() + v.size()); }
};

// Source images, made once per size and shared by every benchmark.
struct Sources {
    Planes i420, i422;
    Bytes bgr24, rgb565, yuy2, uyvy;
    explicit Sources(Size s)
        : i420(s, false, 11), i422(s, true, 21), bgr24(noise(s.pixels() * 3, 31)), rgb565(noise(s.pixels() * 2, 41)),
          yuy2(noise(s.pixels() * 2, 51)), uyvy(noise(s.pixels() * 2, 61))
    {
    }
};

const Sources &sources(Size s)
{
    static std::map<int64_t, std::unique_ptr<Sources>> cache;
    auto &slot = cache[int64_t(s.w) << 32 | s.h];
    if (!slot)
        slot = std::make_unique<Sources>(s);
    return *slot;
}

// Runs `step` for the benchmark's iterations and counts `bytes` per call.
void loop(benchmark::State &state, int64_t bytes, const std::function<void()> &step)
{
    for (auto _ : state) {
        step();
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * bytes);
}

// One benchmark: job/size/who. `bytes` is what the job moves (the larger of
// its input and output); the memcpy floor copies that many bytes.
struct Job {
    std::string job, size;
    int64_t bytes;

    template <class Setup>
    void add(const std::string &who, Setup setup) const
    {
        const std::string name = job + "/" + size + "/" + who;
        const int64_t n = bytes;
        benchmark::RegisterBenchmark(name.c_str(), [n, setup](benchmark::State &state) {
            auto step = setup(); // buffers live as long as this run
            loop(state, n, step);
        })->Unit(benchmark::kMicrosecond);
    }

    void addMemcpy() const
    {
        add("memcpy", [n = bytes] {
            auto from = std::make_shared<Bytes>(noise(n, 7));
            auto to = std::make_shared<Bytes>(size_t(n));
            return std::function<void()>([from, to] { std::memcpy(to->data(), from->data(), from->size()); });
        });
    }
};

#if PIXMILL_BENCH_SWSCALE
// A swscale conversion between two packed or planar images, made once.
struct Sws {
    std::shared_ptr<SwsContext> ctx;
    Sws(Size from, AVPixelFormat fromFormat, Size to, AVPixelFormat toFormat)
        : ctx(sws_getContext(from.w, from.h, fromFormat, to.w, to.h, toFormat, SWS_BILINEAR, nullptr, nullptr, nullptr),
              sws_freeContext)
    {
    }
    void operator()(const uint8_t *const src[], const int srcStride[], int srcH, uint8_t *const dst[],
                    const int dstStride[]) const
    {
        sws_scale(ctx.get(), src, srcStride, 0, srcH, dst, dstStride);
    }
};

// Plane pointers and strides of a Planes, as swscale wants them.
struct SwsPlanes {
    const uint8_t *ptr[4];
    uint8_t *mut[4];
    int stride[4];
    explicit SwsPlanes(Planes &p)
        : ptr{p.y.data(), p.u.data(), p.v.data(), nullptr}, mut{p.y.data(), p.u.data(), p.v.data(), nullptr},
          stride{p.s.w, p.cw, p.cw, 0}
    {
    }
};
#endif

using Step = std::function<void()>;
template <class T>
std::shared_ptr<T> own(T value)
{
    return std::make_shared<T>(std::move(value));
}

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

// ---- Rotation of a 4:2:0 frame --------------------------------------------
void rotate(Size s)
{
    const Planes &in = sources(s).i420;
    for (int quarter : {1, 2}) {
        const Job job{quarter == 1 ? "i420_rotate90" : "i420_rotate180", s.name(), in.bytes()};
        job.addMemcpy();
        const Size turned = quarter == 1 ? Size{s.h, s.w} : s;
        job.add("pixmill:gRotateFrame", [s, turned, quarter] {
            auto out = std::make_shared<Planes>(turned, false);
            return Step([s, out, quarter] { gRotateFrame(&sources(s).i420.frame, &out->frame, Rotation(quarter)); });
        });
#if PIXMILL_BENCH_LIBYUV
        job.add("libyuv:I420Rotate", [s, turned, quarter] {
            auto out = std::make_shared<Planes>(turned, false);
            return Step([s, out, quarter] {
                const Planes &p = sources(s).i420;
                libyuv::I420Rotate(p.y.data(), s.w, p.u.data(), p.cw, p.v.data(), p.cw, out->y.data(), out->s.w,
                                   out->u.data(), out->cw, out->v.data(), out->cw, s.w, s.h,
                                   quarter == 1 ? libyuv::kRotate90 : libyuv::kRotate180);
            });
        });
#endif
    }
}

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

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
#if PIXMILL_BENCH_SWSCALE
    av_log_set_level(AV_LOG_ERROR);
#else
    std::fprintf(stderr, "libswscale was not found at configure time: its benchmarks are left out\n");
#endif
#if !PIXMILL_BENCH_LIBYUV
    std::fprintf(stderr, "libyuv was not found at configure time: its benchmarks are left out\n");
#endif
    for (Size s : kSizes) {
        yuvToRgb(s);
        packedToYuv(s);
        rotate(s);
    }
    scaling();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
