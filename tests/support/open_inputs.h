// Calls past the contract: every buffer holds exactly the bytes that the
// call's arguments describe and lies against an inaccessible page, at its
// end or (now and then) at its start, so that a stray load or store there
// faults at once in any build. On its other side lie guard bytes that must
// come back unchanged, and that AddressSanitizer is told are off limits.
// Contents are random and remembered, so a test tells a call that was turned
// down (nothing changed anywhere) from one that was served.
#ifndef PIXMILL_TEST_OPEN_INPUTS_H
#define PIXMILL_TEST_OPEN_INPUTS_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "pixmill.h"
#include "support/page_buffer.h"
#include "support/random.h"

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

namespace pixmill::test {

class ExactBuffers {
public:
    static constexpr size_t kGuard = 64;

    explicit ExactBuffers(Random &rng) : rng_(rng) {}
    ExactBuffers(const ExactBuffers &) = delete;
    ExactBuffers &operator=(const ExactBuffers &) = delete;
    ~ExactBuffers()
    {
        for (const Block &b : blocks_)
            fence(b, false);
    }

    // `count` elements of random contents.
    template <class T = uint8_t>
    T *get(size_t count)
    {
        const size_t size = count * sizeof(T);
        const bool atEnd = rng_.range(0, 3) != 0;
        Block b{size, atEnd ? kGuard : 0, atEnd ? 0 : size,
                std::make_unique<PageBuffer<uint8_t>>(size + kGuard, atEnd ? PageSide::End : PageSide::Start,
                                                      rng_.word()),
                {}};
        b.orig.assign(b.mem(), b.mem() + size + kGuard);
        blocks_.push_back(std::move(b));
        fence(blocks_.back(), true);
        return reinterpret_cast<T *>(blocks_.back().data());
    }

    // A record of w x h (cut to 16 bits) over planes of `luma` (by default
    // w * h) and `chroma` samples; the record is a buffer of its own.
    Frame *frame(int64_t w, int64_t h, size_t chroma, int64_t luma = -1)
    {
        uint8_t *y = get(size_t(luma < 0 ? w * h : luma)), *u = get(chroma), *v = get(chroma);
        Frame *f = get<Frame>(1);
        *f = Frame{y, u, v, uint16_t(w), uint16_t(h), rng_.word()};
        snapshot();
        return f;
    }

    // The current contents become the reference.
    void snapshot()
    {
        for (Block &b : blocks_)
            std::memcpy(b.orig.data() + b.offset, b.data(), b.size);
    }
    bool guardsIntact() const
    {
        for (const Block &b : blocks_)
            if (!same(b, b.guard, kGuard))
                return false;
        return true;
    }
    // Nothing changed in the buffer that starts at p, or in any buffer.
    bool unchanged(const void *p) const
    {
        for (const Block &b : blocks_)
            if (b.data() == p)
                return same(b, 0, b.size + kGuard);
        return false;
    }
    bool unchanged() const
    {
        for (const Block &b : blocks_)
            if (!same(b, 0, b.size + kGuard))
                return false;
        return true;
    }

private:
    // The usable bytes start at `offset` of the page buffer's and the guard
    // bytes at `guard`.
    struct Block {
        size_t size, offset, guard;
        std::unique_ptr<PageBuffer<uint8_t>> pages;
        std::vector<uint8_t> orig;
        uint8_t *mem() const { return pages->data(); }
        uint8_t *data() const { return mem() + offset; }
    };
    // Bytes [from, from + n) of the block, guards included, as remembered.
    static bool same(const Block &b, size_t from, size_t n)
    {
        fence(b, false);
        const bool equal = std::memcmp(b.mem() + from, b.orig.data() + from, n) == 0;
        fence(b, true);
        return equal;
    }
    static void fence(const Block &b, bool on)
    {
#ifdef PIXMILL_TEST_ASAN
        uint8_t *g = b.mem() + b.guard;
        on ? ASAN_POISON_MEMORY_REGION(g, kGuard) : ASAN_UNPOISON_MEMORY_REGION(g, kGuard);
#else
        (void)b, (void)on;
#endif
    }

    Random &rng_;
    std::vector<Block> blocks_;
};

// What one call past the contract must show: its result, the one expected,
// and whether it had to leave every buffer as it was.
struct Outcome {
    int32_t got = 0;
    int32_t want = 0;
    bool nothingWritten = true;
};

// One kind of input past the contract: draws a call of that kind with random
// sizes into the buffers, makes it, and says what must hold. Further checks
// of a served call go inside, as EXPECTs.
struct OpenInput {
    const char *what;
    Outcome (*call)(ExactBuffers &, Random &);
};

template <size_t N>
void walkOpenInputs(const OpenInput (&rows)[N], int callsPerRow = 300)
{
    Random rng;
    for (const OpenInput &row : rows)
        for (int i = 0; i < callsPerRow; ++i) {
            SCOPED_TRACE(::testing::Message() << row.what << ", call " << i);
            ExactBuffers b(rng);
            const Outcome o = row.call(b, rng);
            ASSERT_EQ(o.got, o.want);
            ASSERT_TRUE(b.guardsIntact());
            if (o.nothingWritten) {
                ASSERT_TRUE(b.unchanged());
            }
        }
}

} // namespace pixmill::test

#endif
