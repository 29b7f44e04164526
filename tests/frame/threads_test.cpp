// Every export from many threads at once, each thread on buffers of its own,
// and these are the first calls the process makes: the vector target is
// chosen while the threads race for it. Each thread's bytes must equal
// those of the same calls made again one after another. Run under
// ThreadSanitizer (preset tsan), any shared write shows up as a race.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <deque>
#include <random>
#include <thread>
#include <vector>

#include "pixmill.h"

namespace {

constexpr int32_t W = 96, H = 64;

// The buffers of one run of a job: random contents from the run's seed. What
// a run leaves behind is every buffer's bytes, the size fields of every
// record and every result.
struct Calls {
    explicit Calls(uint32_t seed) : rng(seed) {}
    std::mt19937 rng;
    std::deque<std::vector<uint8_t>> bufs;
    std::deque<Frame> frames;
    std::vector<int32_t> results;

    template <class T = uint8_t>
    T *get(size_t count)
    {
        bufs.emplace_back(count * sizeof(T) + 1);
        for (uint8_t &b : bufs.back())
            b = uint8_t(rng());
        return reinterpret_cast<T *>(bufs.back().data());
    }
    // 4:2:0 when chromaRows is h / 2, 4:2:2 when it is h.
    Frame *frame(int32_t w, int32_t h, int32_t chromaRows)
    {
        const size_t chroma = size_t(w / 2) * size_t(chromaRows);
        frames.push_back(Frame{get(size_t(w) * size_t(h)), get(chroma), get(chroma), uint16_t(w), uint16_t(h), 7});
        return &frames.back();
    }
    Frame *yuv420(int32_t w = W, int32_t h = H) { return frame(w, h, h / 2); }
    Frame *yuv422(int32_t w = W, int32_t h = H) { return frame(w, h, h); }
    uint32_t code() { return uint32_t(rng() % 4); }

    std::vector<uint8_t> leftBehind() const
    {
        std::vector<uint8_t> all;
        for (const auto &b : bufs)
            all.insert(all.end(), b.begin(), b.end());
        for (const Frame &f : frames)
            for (uint32_t v : {uint32_t(f.width), uint32_t(f.height), f.tag})
                all.push_back(uint8_t(v));
        for (int32_t r : results)
            all.push_back(uint8_t(r));
        return all;
    }
};

using Job = void (*)(Calls &);

// All 32 exports, grouped by family, at sizes where the vector paths run.
const Job kJobs[] = {
    [](Calls &r) { gEmYUV420toRGB888TopDown(r.yuv420(), r.get(3 * W * H), W - 1, H - 1, int32_t(r.rng() & 1)); },
    [](Calls &r) { gEmYUV420toRGB565TopDown(r.yuv420(), r.get<uint16_t>(W * H), W, H, 1); },
    [](Calls &r) { r.results.push_back(gYUV420toBGR24(r.yuv420(), r.get(H * (3 * W + 4)), 3 * W + 4)); },
    [](Calls &r) { gYUV422HPlanartoBGR888TopDown(r.yuv422(), r.get(3 * W * H), W, H - 1, 0); },
    [](Calls &r) { gYUV422HPlanartoRGB888TopDown(r.yuv422(), r.get(3 * W * H), W - 1, H, 1); },
    [](Calls &r) {
        const uint32_t code = r.code();
        r.results.push_back(gYUV420toBGR565TopDown_Rotate(r.yuv420(), r.get<uint16_t>(W * W), 2, 4, W, H, 3, 1,
                                                          W, W, code));
        r.results.push_back(gYUV420toRGB16Rotate(r.yuv420(), r.get<uint16_t>(W * W), W, W, 1, 3, 2, 2, W, H, code));
        r.results.push_back(gYUV422toRGB16Rotate(r.yuv422(), r.get<uint16_t>(W * W), W, W, 0, 2, 4, 0, W, H, code));
        r.results.push_back(gYUV422HPlanartoBGR565TopDown_Rotate(r.yuv422(), r.get<uint16_t>(W * W), 1, 1, W, H,
                                                                 2, 0, W, W, code));
    },
    [](Calls &r) { gEmRGB565toYUV420(r.get<uint16_t>(W * H), r.yuv420(), W - 3, H - 5); },
    [](Calls &r) { gBGR24INTtoYUV420Planar(r.get(3 * W * H), r.get(W * H * 3 / 2), W, H, 3 * W); },
    [](Calls &r) {
        const uint8_t *packed = r.get(2 * W * H);
        r.results.push_back(gY1UY2VToYUV420(packed, r.yuv420(), W, H));
        r.results.push_back(gY1UY2VToYV12(packed, r.yuv420(), W, H));
        r.results.push_back(gUY1VY2ToYUV420(packed, r.yuv420(), W, H));
        YUY2toYUV420(packed, r.get(W * H * 3 / 2), W, H);
    },
    [](Calls &r) { r.results.push_back(gYUV422toYUV420(r.yuv422(), r.yuv420(W / 2 + 6, H + 10), 3, 5, W - 8, H - 7)); },
    [](Calls &r) {
        const uint32_t code = r.code();
        gRotateFrame(r.yuv420(), r.yuv420(), code);
        gRotate422Frame(r.yuv422(), r.yuv422(), code);
        gRotateMonochromeFrame(r.yuv420(), r.yuv420(), code);
    },
    [](Calls &r) {
        const uint32_t code = r.code();
        const uint16_t *image = r.get<uint16_t>(W * H);
        r.results.push_back(gRotateRGB16(image, r.get<uint16_t>(W * W), W, H, 3, 2, W, H, 1, 0, W, W, code));
        r.results.push_back(gRotateRGB16toBGR24(image, r.get(3 * W * W), W, H, 0, 1, W, H, 2, 2, W, 3 * W, code));
    },
    [](Calls &r) {
        const uint32_t mode = uint32_t(r.rng() % 3);
        r.results.push_back(gMirrorImageRGB565(r.get<uint16_t>(W * H), r.get<uint16_t>(W * H), W, H, mode));
        r.results.push_back(gMirrorImageYUV(r.yuv420(), r.yuv420(), 0, mode, 1));
        r.results.push_back(gMirrorImageYUV(r.yuv422(), nullptr, 1, mode, 0));
    },
    [](Calls &r) {
        gScaleFrame(r.yuv420(), r.yuv420(W / 2 + 10, H / 2 + 4));
        gScaleCroppedFrame(r.yuv420(), r.yuv420(W + 20, H + 6), 5, 3, W - 9, H - 4);
        gScaleCroppedFrameYUV422(r.yuv422(), r.yuv422(W / 3 * 2, H / 3), 2, 1, W, H);
    },
    [](Calls &r) {
        const uint16_t *image = r.get<uint16_t>(W * H);
        gScaleRGB565Frame(image, r.get<uint16_t>(W * H / 2), W, H, W / 2, H);
        gScaleRGB565CroppedFrame(image, r.get<uint16_t>(2 * W * H), W, H, 2 * W, H, 4, 6, W - 4, H - 6);
    },
    [](Calls &r) {
        gScaleCroppedFrame_downby2(r.yuv420(W, H + 2), r.yuv420(W / 2, H / 2), 0, 0, 0, 0);
        // 1:2 writes twice the source's size whatever the target says.
        gScaleCroppedFrame_upby2(r.yuv420(W / 2, H / 2), r.yuv420(), 0, 0, 0, 0);
        gScaleCroppedFrame_upby4(r.yuv420(), r.yuv420(W, H), 4, 2, 0, 0);
        gScaleCroppedFrame_downto3by3(r.yuv420(W, H), r.yuv420(W * 3 / 4, H * 3 / 4 / 6 * 6), 0, 0, 0, 0);
    },
};
constexpr size_t kJobCount = sizeof(kJobs) / sizeof(kJobs[0]);

uint32_t seedOf(size_t thread, size_t job) { return uint32_t(1000 * thread + job + 1); }

TEST(Threads, EveryFamilyAtOnceFromTheFirstCallGivesTheBytesOfOneThread)
{
    const size_t threads = std::max(8u, std::thread::hardware_concurrency());
    std::vector<std::vector<std::vector<uint8_t>>> got(threads, std::vector<std::vector<uint8_t>>(kJobCount));
    std::atomic<size_t> ready{0};
    std::vector<std::thread> pool;
    for (size_t t = 0; t < threads; ++t)
        pool.emplace_back([&, t] {
            // Everyone starts together; each thread walks the jobs from a
            // different one, so that every family is entered by several at once.
            ready.fetch_add(1);
            while (ready.load() < threads)
                std::this_thread::yield();
            for (size_t i = 0; i < kJobCount; ++i) {
                const size_t job = (i + t) % kJobCount;
                Calls run(seedOf(t, job));
                kJobs[job](run);
                got[t][job] = run.leftBehind();
            }
        });
    for (std::thread &th : pool)
        th.join();

    for (size_t t = 0; t < threads; ++t)
        for (size_t job = 0; job < kJobCount; ++job) {
            Calls run(seedOf(t, job));
            kJobs[job](run);
            ASSERT_EQ(got[t][job], run.leftBehind()) << "thread " << t << ", job " << job;
        }
}

} // namespace
