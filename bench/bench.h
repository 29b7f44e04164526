// Shared pieces of the benchmark suite: sizes, source images made once,
// jobs named job/size/implementation with their memcpy floor, and swscale
// glue. Each family registers its jobs from a file of its own.
#ifndef PIXMILL_BENCH_H
#define PIXMILL_BENCH_H

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

namespace pixmill::bench {

struct Size {
    int w, h;
    std::string name() const { return std::to_string(w) + "x" + std::to_string(h); }
    int64_t pixels() const { return int64_t(w) * h; }
};

inline const Size kSizes[] = {{640, 480}, {1920, 1080}};

using Bytes = std::vector<uint8_t>;

inline Bytes noise(int64_t n, uint32_t seed)
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

inline const Sources &sources(Size s)
{
    static std::map<int64_t, std::unique_ptr<Sources>> cache;
    auto &slot = cache[int64_t(s.w) << 32 | s.h];
    if (!slot)
        slot = std::make_unique<Sources>(s);
    return *slot;
}

// Runs `step` for the benchmark's iterations and counts `bytes` per call.
inline void loop(benchmark::State &state, int64_t bytes, const std::function<void()> &step)
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

// Registration of each family's jobs.
void yuvToRgb(Size s);
void packedToYuv(Size s);
void rotate(Size s);
void scaling();

} // namespace pixmill::bench

#endif
