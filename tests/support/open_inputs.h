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
#include <memory>
#include <vector>

#include "pixmill.h"
#include "support/buffers.h"

namespace pixmill::test {

class ExactBuffers {
public:
    explicit ExactBuffers(Random &rng) : rng_(rng) {}

    // `count` elements of random contents, against a page at the end (or,
    // one time in four, at the start).
    template <class T = uint8_t>
    T *get(size_t count)
    {
        const Placement side = rng_.range(0, 3) ? Placement::PageEnd : Placement::PageStart;
        blocks_.push_back(std::make_unique<Guarded<uint8_t>>(count * sizeof(T), 0, rng_.word(), side));
        return reinterpret_cast<T *>(blocks_.back()->data());
    }

    // A record of w x h (cut to 16 bits) over planes of `luma` (by default
    // w * h) and `chroma` samples; the record is a buffer of its own.
    Frame *frame(int64_t w, int64_t h, size_t chroma, int64_t luma = -1)
    {
        uint8_t *y = get(size_t(luma < 0 ? w * h : luma)), *u = get(chroma), *v = get(chroma);
        Frame *f = get<Frame>(1);
        *f = Frame{y, u, v, uint16_t(w), uint16_t(h), rng_.word()};
        blocks_.back()->snapshot();
        return f;
    }

    bool guardsIntact() const
    {
        for (const auto &b : blocks_)
            if (!b->intact())
                return false;
        return true;
    }
    // Nothing changed in the buffer that starts at p, or in any buffer.
    bool unchanged(const void *p) const
    {
        for (const auto &b : blocks_)
            if (b->data() == p)
                return b->untouched();
        return false;
    }
    bool unchanged() const
    {
        for (const auto &b : blocks_)
            if (!b->untouched())
                return false;
        return true;
    }

private:
    Random &rng_;
    std::vector<std::unique_ptr<Guarded<uint8_t>>> blocks_;
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
