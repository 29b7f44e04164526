// Frame scaling: three plane scalings per call, y then u then v. The chroma
// sizes and rectangle are the luma ones halved on the axes the layout
// subsamples, taken from the requested rectangle, not the limited one.
#include "frame/frame.h"
#include "scale/scale_plane.h"

namespace pixmill {
namespace {

// A rectangle in samples of one plane.
struct Crop {
    int32_t x, y, w, h;
};

// Scales the three planes of `s` into those of `t`. Chroma halves the
// horizontal quantities always and the vertical ones for 4:2:0 only.
void scalePlanes(const Frame &s, const Frame &t, Crop luma, bool chromaHalvesRows)
{
    const int32_t W = s.width, H = s.height, TW = t.width, TH = t.height;
    gScalePlane(s.y, t.y, W, H, TW, TH, luma.x, luma.y, luma.w, luma.h);

    const int32_t rs = chromaHalvesRows ? 1 : 0;
    const Crop c{luma.x >> 1, luma.y >> rs, luma.w >> 1, luma.h >> rs};
    gScalePlane(s.u, t.u, W >> 1, H >> rs, TW >> 1, TH >> rs, c.x, c.y, c.w, c.h);
    gScalePlane(s.v, t.v, W >> 1, H >> rs, TW >> 1, TH >> rs, c.x, c.y, c.w, c.h);
}

// Corners above 2^31 cannot lie in a frame; they pass on as negative values,
// which the plane scaler turns down.
constexpr Crop requested(uint32_t srcX, uint32_t srcY, uint16_t srcW, uint16_t srcH)
{
    return {static_cast<int32_t>(srcX), static_cast<int32_t>(srcY), srcW, srcH};
}

} // namespace
} // namespace pixmill

extern "C" PIXMILL_API void gScaleFrame(const Frame *source, Frame *target)
{
    pixmill::scalePlanes(*source, *target, {0, 0, source->width, source->height}, true);
}

extern "C" PIXMILL_API void gScaleCroppedFrame(const Frame *source, Frame *target, uint32_t srcX, uint32_t srcY,
                                               uint16_t srcW, uint16_t srcH)
{
    pixmill::scalePlanes(*source, *target, pixmill::requested(srcX, srcY, srcW, srcH), true);
}

extern "C" PIXMILL_API void gScaleCroppedFrameYUV422(const Frame *source, Frame *target, uint32_t srcX,
                                                     uint32_t srcY, uint16_t srcW, uint16_t srcH)
{
    pixmill::scalePlanes(*source, *target, pixmill::requested(srcX, srcY, srcW, srcH), false);
}
