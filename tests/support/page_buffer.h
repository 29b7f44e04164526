// Buffers that sit right against an inaccessible page, so that a load or
// store one byte past the end (or, in the Start variant, before the start)
// faults at once, even where a sanitizer's red zone is too narrow to see a
// whole vector go astray. The usable area is filled with random bytes.
// Elsewhere than on POSIX systems the buffer is ordinary memory.
#ifndef PIXMILL_TEST_PAGE_BUFFER_H
#define PIXMILL_TEST_PAGE_BUFFER_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#if defined(__unix__) || defined(__APPLE__)
#  include <sys/mman.h>
#  include <unistd.h>
#  define PIXMILL_TEST_PAGES 1
#else
#  define PIXMILL_TEST_PAGES 0
#endif

#include "support/random.h"

namespace pixmill::test {

enum class PageSide { End, Start };

template <class T>
class PageBuffer {
public:
    explicit PageBuffer(size_t count, PageSide side = PageSide::End, uint32_t seed = 0x5EEDu) : count_(count)
    {
        const size_t bytes = count * sizeof(T);
#if PIXMILL_TEST_PAGES
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t usable = (bytes + page - 1) / page * page;
        mapped_ = usable + page;
        void *m = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        base_ = m == MAP_FAILED ? nullptr : static_cast<uint8_t *>(m);
        if (base_ == nullptr)
            return;
        if (side == PageSide::End) {
            mprotect(base_ + usable, page, PROT_NONE);
            data_ = base_ + usable - bytes;
        } else {
            mprotect(base_, page, PROT_NONE);
            data_ = base_ + page;
        }
#else
        (void)side;
        storage_.resize(bytes + 1);
        data_ = storage_.data();
#endif
        Random rng(seed ^ static_cast<uint32_t>(count));
        for (size_t i = 0; i < bytes; ++i)
            data_[i] = rng.byte();
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

    T *data() { return reinterpret_cast<T *>(data_); }
    const T *data() const { return reinterpret_cast<const T *>(data_); }
    size_t size() const { return count_; }
    T &operator[](size_t i) { return data()[i]; }
    // The contents as they are now, for comparisons.
    std::vector<T> copy() const { return std::vector<T>(data(), data() + count_); }

private:
    size_t count_;
    uint8_t *data_ = nullptr;
#if PIXMILL_TEST_PAGES
    uint8_t *base_ = nullptr;
    size_t mapped_ = 0;
#else
    std::vector<uint8_t> storage_;
#endif
};

} // namespace pixmill::test

#endif
