// Test frames: a Frame record over three guarded planes, in the 4:2:0 or the
// 4:2:2 planar layout, filled with random samples.
#ifndef PIXMILL_TEST_FRAMES_H
#define PIXMILL_TEST_FRAMES_H

#include <cstdint>

#include "pixmill.h"
#include "support/guarded.h"
#include "support/random.h"

namespace pixmill::test {

enum class Layout { Yuv420, Yuv422 };

class TestFrame {
public:
    TestFrame(int32_t width, int32_t height, Layout layout, Random &rng, size_t misalign = 0)
        : layout_(layout), y_(size_t(width) * size_t(height), misalign, rng.word()),
          u_(chromaSize(width, height, layout), misalign, rng.word()),
          v_(chromaSize(width, height, layout), misalign, rng.word())
    {
        y_.randomize(rng);
        u_.randomize(rng);
        v_.randomize(rng);
        frame_.y = y_.begin();
        frame_.u = u_.begin();
        frame_.v = v_.begin();
        frame_.width = static_cast<uint16_t>(width);
        frame_.height = static_cast<uint16_t>(height);
        frame_.tag = rng.word();
    }

    static size_t chromaSize(int32_t width, int32_t height, Layout layout)
    {
        const size_t rows = layout == Layout::Yuv420 ? size_t(height >> 1) : size_t(height);
        return size_t(width >> 1) * rows;
    }

    Frame &frame() { return frame_; }
    const Frame *get() const { return &frame_; }
    int32_t width() const { return frame_.width; }
    int32_t height() const { return frame_.height; }
    int32_t chromaStride() const { return frame_.width >> 1; }

    // Sample accessors by plane coordinates.
    uint8_t Y(int32_t x, int32_t row) const { return y_[size_t(row) * size_t(width()) + size_t(x)]; }
    uint8_t U(int32_t x, int32_t row) const { return u_[size_t(row) * size_t(chromaStride()) + size_t(x)]; }
    uint8_t V(int32_t x, int32_t row) const { return v_[size_t(row) * size_t(chromaStride()) + size_t(x)]; }
    // Chroma that serves luma pixel (x, row) in this frame's layout.
    uint8_t Ufor(int32_t x, int32_t row) const { return U(x >> 1, layout_ == Layout::Yuv420 ? row >> 1 : row); }
    uint8_t Vfor(int32_t x, int32_t row) const { return V(x >> 1, layout_ == Layout::Yuv420 ? row >> 1 : row); }

    Guarded<uint8_t> &yPlane() { return y_; }
    Guarded<uint8_t> &uPlane() { return u_; }
    Guarded<uint8_t> &vPlane() { return v_; }

    // All planes and guards as they were after construction (or snapshot).
    bool untouched() const { return y_.untouched() && u_.untouched() && v_.untouched(); }
    bool intact() const { return y_.intact() && u_.intact() && v_.intact(); }
    void snapshot()
    {
        y_.snapshot();
        u_.snapshot();
        v_.snapshot();
    }

private:
    Layout layout_;
    Guarded<uint8_t> y_, u_, v_;
    Frame frame_{};
};

// Chroma sample (x, row) of a frame at least 512 by 512 becomes u = x and
// v = row, both modulo 256: every (u, v) pair serves some pixel, in 4:2:0 and
// 4:2:2 alike.
inline void everyChromaPair(TestFrame &f)
{
    const int32_t rows = int32_t(f.uPlane().size()) / f.chromaStride();
    for (int32_t row = 0; row < rows; ++row)
        for (int32_t x = 0; x < f.chromaStride(); ++x) {
            f.uPlane()[size_t(row * f.chromaStride() + x)] = uint8_t(x);
            f.vPlane()[size_t(row * f.chromaStride() + x)] = uint8_t(row);
        }
    f.snapshot();
}

} // namespace pixmill::test

#endif
