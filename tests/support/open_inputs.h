// Calls past the contract: every buffer holds exactly the bytes that the
// call's arguments describe, between guard bytes that AddressSanitizer is
// told are off limits (a stray read or write is reported where it happens)
// and that must come back unchanged in any build. Contents are random and
// remembered, so a test tells a call that was turned down (nothing changed
// anywhere) from one that was served.
#ifndef PIXMILL_TEST_OPEN_INPUTS_H
#define PIXMILL_TEST_OPEN_INPUTS_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "pixmill.h"
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
        for (Block &b : blocks_)
            fence(b, false);
    }

    // `count` elements of random contents.
    template <class T = uint8_t>
    T *get(size_t count)
    {
        Block b{count * sizeof(T), std::make_unique<uint8_t[]>(count * sizeof(T) + 2 * kGuard), {}};
        for (size_t i = 0; i < b.size + 2 * kGuard; ++i)
            b.mem[i] = rng_.byte();
        b.orig.assign(b.mem.get(), b.mem.get() + b.size + 2 * kGuard);
        blocks_.push_back(std::move(b));
        fence(blocks_.back(), true);
        return reinterpret_cast<T *>(blocks_.back().mem.get() + kGuard);
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
            std::memcpy(b.orig.data() + kGuard, b.mem.get() + kGuard, b.size);
    }
    bool guardsIntact() const
    {
        for (const Block &b : blocks_)
            if (!same(b, 0, kGuard) || !same(b, kGuard + b.size, kGuard))
                return false;
        return true;
    }
    // Nothing changed in the buffer that starts at p, or in any buffer.
    bool unchanged(const void *p) const
    {
        for (const Block &b : blocks_)
            if (b.mem.get() + kGuard == p)
                return same(b, 0, b.size + 2 * kGuard);
        return false;
    }
    bool unchanged() const
    {
        for (const Block &b : blocks_)
            if (!unchanged(b.mem.get() + kGuard))
                return false;
        return true;
    }

private:
    struct Block {
        size_t size;
        std::unique_ptr<uint8_t[]> mem;
        std::vector<uint8_t> orig;
    };
    // Bytes [from, from + n) of the block, guards included, as remembered.
    static bool same(const Block &b, size_t from, size_t n)
    {
        fence(b, false);
        const bool equal = std::memcmp(b.mem.get() + from, b.orig.data() + from, n) == 0;
        fence(b, true);
        return equal;
    }
    static void fence(const Block &b, bool on)
    {
#ifdef PIXMILL_TEST_ASAN
        uint8_t *ends[2] = {b.mem.get(), b.mem.get() + kGuard + b.size};
        for (uint8_t *g : ends)
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
