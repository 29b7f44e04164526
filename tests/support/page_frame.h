// A copy of a test frame whose three planes each end (or start) at an
// inaccessible page, so that a vector load past the last sample of a plane
// (or before the first) faults at once. The record keeps the width and
// height of the original.
#ifndef PIXMILL_TEST_PAGE_FRAME_H
#define PIXMILL_TEST_PAGE_FRAME_H

#include <algorithm>

#include "support/frames.h"
#include "support/page_buffer.h"

namespace pixmill::test {

class PageFrame {
public:
    PageFrame(TestFrame &from, PageSide side)
        : y_(from.yPlane().size(), side), u_(from.uPlane().size(), side), v_(from.vPlane().size(), side)
    {
        copy(from.yPlane(), y_);
        copy(from.uPlane(), u_);
        copy(from.vPlane(), v_);
        frame_ = from.frame();
        frame_.y = y_.data();
        frame_.u = u_.data();
        frame_.v = v_.data();
    }
    const Frame *get() const { return &frame_; }

private:
    static void copy(const Guarded<uint8_t> &from, PageBuffer<uint8_t> &to)
    {
        for (size_t i = 0; i < from.size(); ++i)
            to[i] = from[i];
    }
    PageBuffer<uint8_t> y_, u_, v_;
    Frame frame_{};
};

// A target of `initial`'s contents that ends (or starts) at an inaccessible
// page, for stores past either end.
template <class T>
struct PageTarget : PageBuffer<T> {
    PageTarget(const std::vector<T> &initial, PageSide side) : PageBuffer<T>(initial.size(), side)
    {
        std::copy(initial.begin(), initial.end(), this->data());
    }
};

} // namespace pixmill::test

#endif
