// Buffers of one random test case, placed where a stray vector access shows:
// between random guard bytes at a chosen misalignment, or right against an
// inaccessible page after the end or before the start. Random contents; the
// checks say whether anything was written outside the buffer, or at all.
// A CaseFrame is a Frame record over three such planes.
#ifndef PIXMILL_TEST_CASE_BUFFER_H
#define PIXMILL_TEST_CASE_BUFFER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "pixmill.h"
#include "support/guarded.h"
#include "support/page_buffer.h"
#include "support/random.h"

namespace pixmill::test {

enum class Placement { Guarded, PageEnd, PageStart };

// Mostly guarded buffers, one in four against a page.
inline Placement randomPlacement(Random &rng)
{
    const int32_t pick = rng.range(0, 7);
    return pick == 0 ? Placement::PageEnd : pick == 1 ? Placement::PageStart : Placement::Guarded;
}

template <class T>
class CaseBuffer {
public:
    CaseBuffer() : CaseBuffer(0, Placement::Guarded, 0, 0) {}
    CaseBuffer(size_t count, Placement where, size_t misalign, uint32_t seed)
    {
        if (where == Placement::Guarded) {
            guarded_ = std::make_unique<Guarded<T>>(count, misalign, seed);
            data_ = guarded_->begin();
        } else {
            paged_ = std::make_unique<PageBuffer<T>>(count, where == Placement::PageEnd ? PageSide::End : PageSide::Start,
                                                     seed);
            data_ = paged_->data();
        }
        count_ = count;
        initial_ = contents();
    }
    CaseBuffer(size_t count, Random &rng) : CaseBuffer(count, randomPlacement(rng), size_t(rng.range(0, 3)), rng.word())
    {
    }

    T *data() const { return data_; }
    size_t size() const { return count_; }
    const T &operator[](size_t i) const { return data_[i]; }
    std::vector<T> contents() const { return std::vector<T>(data_, data_ + count_); }
    std::vector<T> initial() const { return initial_; }

    // Nothing written outside the buffer (a page-bound buffer would have faulted).
    bool intact() const { return guarded_ == nullptr || guarded_->intact(); }
    // Nothing written at all.
    bool untouched() const { return intact() && contents() == initial_; }

private:
    std::unique_ptr<Guarded<T>> guarded_;
    std::unique_ptr<PageBuffer<T>> paged_;
    T *data_ = nullptr;
    size_t count_ = 0;
    std::vector<T> initial_;
};

// Three planes of one frame, each placed at random, with a record over them.
struct CaseFrame {
    CaseBuffer<uint8_t> planes[3];
    Frame frame;

    CaseFrame(int32_t w, int32_t h, size_t chromaCount, Random &rng)
        : planes{{size_t(w) * size_t(h), rng}, {chromaCount, rng}, {chromaCount, rng}},
          frame{planes[0].data(), planes[1].data(), planes[2].data(), uint16_t(w), uint16_t(h), rng.word()}
    {
    }
    bool intact() const { return planes[0].intact() && planes[1].intact() && planes[2].intact(); }
    bool untouched() const { return planes[0].untouched() && planes[1].untouched() && planes[2].untouched(); }
};

} // namespace pixmill::test

#endif
