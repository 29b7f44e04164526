// Plane kernels of the fixed-ratio frame scalers. They take the same ten
// arguments as the bilinear plane scaler, in the same order, and each reads
// only the ones its comment names. Sources are read from the corner
// (srcX, srcY) on, as plain offsets with the row stride sourceWidth; a null
// source or target ends the call without writing.
#ifndef PIXMILL_SCALE_FIXED_RATIO_H
#define PIXMILL_SCALE_FIXED_RATIO_H

#include <cstdint>

namespace pixmill {

// 2:1 on both axes into dstW x dstH (stride dstW). Needs an even dstW and
// sourceWidth >= 2 * dstW; reads 2 * dstH source rows.
void gScalePlane_downby2(const uint8_t *source, uint8_t *target, int32_t sourceWidth, int32_t sourceHeight,
                         int32_t dstW, int32_t dstH, int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH);

// 1:2 on both axes: sourceWidth x sourceHeight samples into 2 * sourceWidth
// by 2 * sourceHeight (stride 2 * sourceWidth). dstW and dstH are not read.
void gScalePlane_upby2(const uint8_t *source, uint8_t *target, int32_t sourceWidth, int32_t sourceHeight,
                       int32_t dstW, int32_t dstH, int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH);

// 1:4 on both axes from a dstW / 4 by dstH / 4 source rectangle into dstW x
// dstH (stride dstW). Needs dstW and dstH multiples of 4 and at least 8.
void gScalePlane_upby4(const uint8_t *source, uint8_t *target, int32_t sourceWidth, int32_t sourceHeight,
                       int32_t dstW, int32_t dstH, int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH);

// 4x4 source blocks to 3x3 target blocks into dstW x dstH (stride dstW).
// Needs dstW and dstH multiples of 3 and sourceWidth >= dstW * 4 / 3.
void gScalePlane_downto3by3(const uint8_t *source, uint8_t *target, int32_t sourceWidth, int32_t sourceHeight,
                            int32_t dstW, int32_t dstH, int32_t srcX, int32_t srcY, int32_t srcW, int32_t srcH);

} // namespace pixmill

#endif
