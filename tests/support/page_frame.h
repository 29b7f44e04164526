// Frames and targets whose memory sits right against an inaccessible page
// (after its end, or before its start), so that a vector load or store that
// strays by one byte faults at once.
//
// PageFrame: a Frame record over three fresh planes, with the same accessors
// as TestFrame, so that checks can take either.
#ifndef PIXMILL_TEST_PAGE_FRAME_H
#define PIXMILL_TEST_PAGE_FRAME_H

#include <algorithm>
#include <cstdint>
#include <vector>

#include "pixmill.h"
#include "support/frames.h"
#include "support/page_buffer.h"

namespace pixmill::test {

class PageFrame {
public:
    PageFrame(int32_t width, int32_t height, Layout layout, PageSide side, uint32_t seed)
        : layout_(layout), y_(size_t(width) * size_t(height), side, seed),
          u_(TestFrame::chromaSize(width, height, layout), side, seed + 1),
          v_(TestFrame::chromaSize(width, height, layout), side, seed + 2),
          frame_{y_.data(), u_.data(), v_.data(), uint16_t(width), uint16_t(height), seed}
    {
    }

    Frame &frame() { return frame_; }
    int32_t width() const { return frame_.width; }
    int32_t height() const { return frame_.height; }
    int32_t chromaStride() const { return frame_.width >> 1; }

    uint8_t Y(int32_t x, int32_t row) const { return y_.data()[size_t(row) * size_t(width()) + size_t(x)]; }
    uint8_t U(int32_t x, int32_t row) const { return u_.data()[size_t(row) * size_t(chromaStride()) + size_t(x)]; }
    uint8_t V(int32_t x, int32_t row) const { return v_.data()[size_t(row) * size_t(chromaStride()) + size_t(x)]; }
    uint8_t Ufor(int32_t x, int32_t row) const { return U(x >> 1, layout_ == Layout::Yuv420 ? row >> 1 : row); }
    uint8_t Vfor(int32_t x, int32_t row) const { return V(x >> 1, layout_ == Layout::Yuv420 ? row >> 1 : row); }

    // A stray write would have faulted: nothing beside the planes can change.
    bool intact() const { return true; }

private:
    Layout layout_;
    PageBuffer<uint8_t> y_, u_, v_;
    Frame frame_;
};

// A copy of a test frame whose planes end (or start) at an inaccessible page.
// The record keeps the width and height of the original.
class PageFrameCopy {
public:
    PageFrameCopy(TestFrame &from, PageSide side)
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
