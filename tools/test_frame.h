// The built-in synthetic test frame: colour bars over the top half, a luma
// ramp and a chroma sweep below, a moving-edge checker at the bottom. Made
// in code so that the program needs no data file.
#ifndef PIXMILL_TOOLS_TEST_FRAME_H
#define PIXMILL_TOOLS_TEST_FRAME_H

#include <cstdint>
#include <vector>

#include "pixmill.h"

namespace pixmill::tools {

// Planes of one frame and a Frame record pointing into them.
struct OwnedFrame {
    std::vector<uint8_t> y, u, v;
    Frame frame{};
};

// 4:2:0 when chroma422 is false, 4:2:2 planar otherwise. width and height even.
OwnedFrame makeTestFrame(int32_t width, int32_t height, bool chroma422 = false);

} // namespace pixmill::tools

#endif
