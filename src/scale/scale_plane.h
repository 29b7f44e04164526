// The free-ratio plane scaler behind the frame scalers.
#ifndef PIXMILL_SCALE_PLANE_H
#define PIXMILL_SCALE_PLANE_H

#include <cstdint>

namespace pixmill {

// Scales the rectangle (srcX, srcY, srcW, srcH) of a plane sourceWidth wide
// (its stride) and sourceHeight high into a whole dstW x dstH plane with
// stride dstW. A null plane, a zero-size target or a rectangle that holds no
// sample writes nothing.
void gScalePlane(const uint8_t *source, uint8_t *target, int32_t sourceWidth, int32_t sourceHeight, int32_t dstW,
                 int32_t dstH, int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH);

} // namespace pixmill

#endif
