// Buffers of one test case, placed where a stray access shows: between
// random guard bytes at a chosen misalignment from a 64-byte boundary, or
// right against an inaccessible page after the end or before the start (then
// with guard bytes on the other side), so that a vector load or store one
// byte astray faults at once. Contents are random and remembered: intact()
// says nothing was written outside the buffer, untouched() nothing at all.
// Under AddressSanitizer the guard bytes are poisoned, so reads show too.
// A TestFrame is a Frame record over three such planes.
#ifndef PIXMILL_TEST_BUFFERS_H
#define PIXMILL_TEST_BUFFERS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#if defined(__unix__) || defined(__APPLE__)
#  include <sys/mman.h>
#  include <unistd.h>
#  define PIXMILL_TEST_PAGES 1
#else
#  define PIXMILL_TEST_PAGES 0
#endif
#if defined(__SANITIZE_ADDRESS__)
#  define PIXMILL_TEST_ASAN 1
#elif defined(__has_feature)
#  if __has_feature(address_sanitizer)
#    define PIXMILL_TEST_ASAN 1
#  endif
#endif
#ifdef PIXMILL_TEST_ASAN
#  include <sanitizer/asan_interface.h>
#endif

#include "pixmill.h"
#include "support/random.h"

namespace pixmill::test {

enum class PageSide { End, Start };

// `bytes` usable bytes whose end (or start) touches an inaccessible page;
// elsewhere than on POSIX systems, ordinary memory.
class PageBuffer {
public:
    PageBuffer(size_t bytes, PageSide side)
    {
#if PIXMILL_TEST_PAGES
        const size_t page = size_t(sysconf(_SC_PAGESIZE)), usable = (bytes + page - 1) / page * page;
        mapped_ = usable + page;
        void *m = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        base_ = m == MAP_FAILED ? nullptr : static_cast<uint8_t *>(m);
        if (base_ == nullptr)
            return;
        mprotect(side == PageSide::End ? base_ + usable : base_, page, PROT_NONE);
        data_ = side == PageSide::End ? base_ + usable - bytes : base_ + page;
#else
        (void)side;
        storage_.resize(bytes + 1);
        data_ = storage_.data();
#endif
    }
    ~PageBuffer()
    {
#if PIXMILL_TEST_PAGES
        if (base_ != nullptr)
            munmap(base_, mapped_);
#endif
    }
    PageBuffer(const PageBuffer &) = delete;
    PageBuffer &operator=(const PageBuffer &) = delete;
    uint8_t *data() const { return data_; }

private:
    uint8_t *data_ = nullptr;
#if PIXMILL_TEST_PAGES
    uint8_t *base_ = nullptr;
    size_t mapped_ = 0;
#else
    std::vector<uint8_t> storage_;
#endif
};

enum class Placement { Guarded, PageEnd, PageStart };

// Mostly between guards, one in four against a page.
inline Placement randomPlacement(Random &rng)
{
    const int32_t pick = rng.range(0, 7);
    return pick == 0 ? Placement::PageEnd : pick == 1 ? Placement::PageStart : Placement::Guarded;
}

template <class T>
class Guarded {
public:
    static constexpr size_t kGuard = 64; // bytes on each side

    // `misalign` elements from a 64-byte boundary (between guards only).
    explicit Guarded(size_t count = 0, size_t misalign = 0, uint32_t seed = 0x9A7Du,
                     Placement where = Placement::Guarded)
        : count_(count)
    {
        const size_t bytes = count * sizeof(T);
        if (where == Placement::Guarded) {
            off_ = kGuard + misalign * sizeof(T);
            len_ = off_ + bytes + kGuard;
            heap_.resize(len_ + 64);
            mem_ = heap_.data() + (64 - reinterpret_cast<uintptr_t>(heap_.data()) % 64) % 64;
        } else {
            off_ = where == Placement::PageEnd ? kGuard : 0;
            len_ = bytes + kGuard;
            pages_ = std::make_unique<PageBuffer>(len_, where == Placement::PageEnd ? PageSide::End : PageSide::Start);
            mem_ = pages_->data();
        }
        Random rng(seed ^ static_cast<uint32_t>(count));
        for (size_t i = 0; i < len_; ++i)
            mem_[i] = rng.byte();
        snapshot();
    }
    // Placed at random, at a random misalignment.
    Guarded(size_t count, Random &rng) : Guarded(count, size_t(rng.range(0, 3)), rng.word(), randomPlacement(rng)) {}
    ~Guarded() { poison(false); }
    Guarded(const Guarded &) = delete;
    Guarded &operator=(const Guarded &) = delete;

    // Valid even for an empty buffer (it points at a guard or the page).
    T *data() const { return reinterpret_cast<T *>(mem_ + off_); }
    T *begin() const { return data(); }
    size_t size() const { return count_; }
    T &operator[](size_t i) const { return data()[i]; }
    std::vector<T> contents() const { return std::vector<T>(data(), data() + count_); }

    // Element i, and all of them, as they were at construction or the last snapshot().
    T before(size_t i) const
    {
        T v;
        std::memcpy(&v, pristine_.data() + off_ + i * sizeof(T), sizeof(T));
        return v;
    }
    std::vector<T> initial() const
    {
        std::vector<T> v(count_);
        if (count_ > 0)
            std::memcpy(v.data(), pristine_.data() + off_, count_ * sizeof(T));
        return v;
    }
    void snapshot()
    {
        poison(false);
        pristine_.assign(mem_, mem_ + len_);
        poison(true);
    }

    // Nothing outside [data(), data() + size()) has changed.
    bool intact() const { return same(0, off_) && same(off_ + count_ * sizeof(T), len_); }
    // Nothing at all has changed.
    bool untouched() const { return same(0, len_); }

private:
    bool same(size_t from, size_t to) const
    {
        poison(false);
        const bool equal = std::memcmp(mem_ + from, pristine_.data() + from, to - from) == 0;
        poison(true);
        return equal;
    }
    void poison(bool on) const
    {
#ifdef PIXMILL_TEST_ASAN
        const size_t end = off_ + count_ * sizeof(T);
        for (const auto &[from, to] : {std::pair{size_t(0), off_}, std::pair{end, len_}})
            on ? ASAN_POISON_MEMORY_REGION(mem_ + from, to - from) : ASAN_UNPOISON_MEMORY_REGION(mem_ + from, to - from);
#else
        (void)on;
#endif
    }

    size_t count_, off_ = 0, len_ = 0;
    std::vector<uint8_t> heap_;
    std::unique_ptr<PageBuffer> pages_;
    uint8_t *mem_ = nullptr;
    std::vector<uint8_t> pristine_;
};

enum class Layout { Yuv420, Yuv422 };

inline size_t chromaSize(int32_t width, int32_t height, Layout layout)
{
    return size_t(width >> 1) * size_t(layout == Layout::Yuv420 ? height >> 1 : height);
}

// A Frame record over three planes of random samples.
class TestFrame {
public:
    // Planes of the layout's sizes.
    TestFrame(int32_t width, int32_t height, Layout layout, Random &rng, size_t misalign = 0,
              Placement where = Placement::Guarded)
        : layout_(layout), planes{Guarded<uint8_t>(size_t(width) * size_t(height), misalign, rng.word(), where),
                                  Guarded<uint8_t>(chromaSize(width, height, layout), misalign, rng.word(), where),
                                  Guarded<uint8_t>(chromaSize(width, height, layout), misalign, rng.word(), where)}
    {
        frame_ = {planes[0].data(), planes[1].data(), planes[2].data(), uint16_t(width), uint16_t(height), rng.word()};
    }
    // Chroma planes of `chroma` samples; each plane placed at random.
    TestFrame(int32_t width, int32_t height, size_t chroma, Random &rng)
        : layout_(Layout::Yuv420), planes{Guarded<uint8_t>(size_t(width) * size_t(height), rng),
                                          Guarded<uint8_t>(chroma, rng), Guarded<uint8_t>(chroma, rng)}
    {
        frame_ = {planes[0].data(), planes[1].data(), planes[2].data(), uint16_t(width), uint16_t(height), rng.word()};
    }

    Frame &frame() { return frame_; }
    const Frame *get() const { return &frame_; }
    int32_t width() const { return frame_.width; }
    int32_t height() const { return frame_.height; }
    int32_t chromaStride() const { return frame_.width >> 1; }

    // Samples by plane coordinates, and the chroma that serves luma pixel (x, row).
    uint8_t Y(int32_t x, int32_t row) const { return planes[0][size_t(row) * size_t(width()) + size_t(x)]; }
    uint8_t U(int32_t x, int32_t row) const { return planes[1][size_t(row) * size_t(chromaStride()) + size_t(x)]; }
    uint8_t V(int32_t x, int32_t row) const { return planes[2][size_t(row) * size_t(chromaStride()) + size_t(x)]; }
    uint8_t Ufor(int32_t x, int32_t row) const { return U(x >> 1, layout_ == Layout::Yuv420 ? row >> 1 : row); }
    uint8_t Vfor(int32_t x, int32_t row) const { return V(x >> 1, layout_ == Layout::Yuv420 ? row >> 1 : row); }

    bool intact() const { return planes[0].intact() && planes[1].intact() && planes[2].intact(); }
    bool untouched() const { return planes[0].untouched() && planes[1].untouched() && planes[2].untouched(); }

private:
    Layout layout_;
    Frame frame_{};

public:
    Guarded<uint8_t> planes[3];
};

// Chroma sample (x, row) of a frame at least 512 by 512 becomes u = x and
// v = row, both modulo 256: every (u, v) pair serves some pixel, in 4:2:0 and
// 4:2:2 alike.
inline void everyChromaPair(TestFrame &f)
{
    const int32_t rows = int32_t(f.planes[1].size()) / f.chromaStride();
    for (int32_t row = 0; row < rows; ++row)
        for (int32_t x = 0; x < f.chromaStride(); ++x) {
            f.planes[1][size_t(row * f.chromaStride() + x)] = uint8_t(x);
            f.planes[2][size_t(row * f.chromaStride() + x)] = uint8_t(row);
        }
    f.planes[1].snapshot();
    f.planes[2].snapshot();
}

// Samples in a w x h plane; none for a negative side.
inline size_t area(int64_t w, int64_t h) { return size_t(std::max<int64_t>(w, 0)) * size_t(std::max<int64_t>(h, 0)); }

// x >> bits on a signed value, rounding towards minus infinity, without >>.
inline int floorShift(int64_t x, int bits)
{
    const int64_t d = int64_t(1) << bits;
    return int(x >= 0 ? x / d : -((-x + d - 1) / d));
}

} // namespace pixmill::test

#endif
