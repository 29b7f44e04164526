#include "test_frame.h"

#include <cstddef>

using std::size_t;

namespace pixmill::tools {
namespace {

// BT.601 full-range Y, Cb, Cr of the eight classic bars (white to black).
struct Ycc {
    uint8_t y, cb, cr;
};
constexpr Ycc kBars[8] = {{255, 128, 128}, {226, 0, 149},  {179, 171, 0},   {150, 43, 21},
                          {105, 213, 235}, {76, 85, 255}, {29, 255, 107}, {0, 128, 128}};

} // namespace

OwnedFrame makeTestFrame(int32_t width, int32_t height, bool chroma422)
{
    OwnedFrame f;
    const int32_t cw = width / 2;
    const int32_t chRows = chroma422 ? height : height / 2;
    f.y.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
    f.u.resize(static_cast<size_t>(cw) * static_cast<size_t>(chRows));
    f.v.resize(f.u.size());
    auto region = [height](int32_t row) { return row < height / 2 ? 0 : row < height * 3 / 4 ? 1 : 2; };
    for (int32_t r = 0; r < height; ++r)
        for (int32_t c = 0; c < width; ++c) {
            uint8_t y = 0;
            switch (region(r)) {
            case 0: y = kBars[c * 8 / width].y; break;
            case 1: y = static_cast<uint8_t>(c * 255 / (width > 1 ? width - 1 : 1)); break;
            default: y = static_cast<uint8_t>(((c / 8 + r / 8) & 1) ? 235 : 16); break;
            }
            f.y[static_cast<size_t>(r) * static_cast<size_t>(width) + static_cast<size_t>(c)] = y;
        }
    for (int32_t r = 0; r < chRows; ++r) {
        const int32_t lumaRow = chroma422 ? r : r * 2;
        for (int32_t c = 0; c < cw; ++c) {
            uint8_t cb = 128, cr = 128;
            switch (region(lumaRow)) {
            case 0:
                cb = kBars[c * 2 * 8 / width].cb;
                cr = kBars[c * 2 * 8 / width].cr;
                break;
            case 1:
                cb = static_cast<uint8_t>(c * 255 / (cw > 1 ? cw - 1 : 1));
                cr = static_cast<uint8_t>(255 - cb);
                break;
            default: break;
            }
            const size_t i = static_cast<size_t>(r) * static_cast<size_t>(cw) + static_cast<size_t>(c);
            f.u[i] = cb;
            f.v[i] = cr;
        }
    }
    f.frame = Frame{f.y.data(), f.u.data(), f.v.data(), static_cast<uint16_t>(width),
                    static_cast<uint16_t>(height), 0};
    return f;
}

} // namespace pixmill::tools
