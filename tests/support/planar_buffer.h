// Models shared by the conversions into planar 4:2:0: a shift that rounds
// towards minus infinity written out as a division, and the places of the
// three planes in one contiguous output buffer.
#ifndef PIXMILL_TEST_PLANAR_BUFFER_H
#define PIXMILL_TEST_PLANAR_BUFFER_H

#include <cstddef>
#include <cstdint>

namespace pixmill::test {

// x >> bits on a signed value, without using >>.
inline int64_t floorShift(int64_t x, int bits)
{
    const int64_t d = int64_t(1) << bits;
    return x >= 0 ? x / d : -((-x + d - 1) / d);
}

// Y at 0, the first chroma plane after width * height bytes, the second a
// quarter of that later; `size` covers the second plane's rows of width / 2.
struct PlanarBuffer {
    size_t first, second, size;
};
inline PlanarBuffer planarBuffer(uint32_t width, uint32_t height)
{
    const size_t luma = size_t(width) * height;
    return {luma, luma + luma / 4, luma + luma / 4 + size_t(width / 2) * (height / 2)};
}

} // namespace pixmill::test

#endif
