// Whole-frame turns of planar images: 4:2:0, 4:2:2 and a luma plane alone.
// A turn moves one plane after the other; no turn at all is a block copy of
// each plane.
#include <cstring>

#include "geometry/kernels.h"
#include "geometry/turn.h"

namespace pixmill {
namespace {

// How chroma rides along with luma.
enum class Chroma {
    None,       // luma plane alone: the chroma fields of neither record are read
    Planar420,  // each plane turned like luma, as a half-size plane
    Doubled422, // 4:2:2 quarter turn: the even source rows alone, each sample
                // stored in two adjacent destination rows
};

// A plane of cols x rows samples, row j at s + j * sStride, turned by R into
// d as `to` places it; with `again` each sample is stored a second time that
// far on. Half turns reverse row by row; quarter turns go through tiles
// transposed in registers. The kernels do a prefix of each row or band, the
// plain placement the rest.
template <uint32_t R>
void turnBytes(const uint8_t *s, ptrdiff_t sStride, ptrdiff_t cols, ptrdiff_t rows, uint8_t *d, TurnSteps to,
               ptrdiff_t again, const GeometryKernels *k)
{
    d += to.start;
    if constexpr (R == ROTATE_180) {
        for (ptrdiff_t j = 0; j < rows; ++j, s += sStride, d += to.row) {
            const ptrdiff_t n = k != nullptr ? static_cast<ptrdiff_t>(k->reverse8(s, d, static_cast<size_t>(cols))) : 0;
            placeSamples(s + n, sStride, cols - n, 1, d - n, to, again);
        }
    } else {
        turnBands(s, sStride, cols, rows, d, to, again, kTransposeRows8,
                  [k, again](const uint8_t *in, ptrdiff_t inStride, uint8_t *out, ptrdiff_t outStride, size_t n) {
                      return k != nullptr ? k->transpose8(in, inStride, out, outStride, again, n) : 0;
                  });
    }
}

// Quarter and half turns of whole frames. The workers have no single-pixel
// tail, so odd and empty sizes write nothing.
template <uint32_t R, Chroma C>
void turnPairs(const Frame &src, const Frame &dst)
{
    const ptrdiff_t w = src.width;
    const ptrdiff_t h = src.height;
    if (((w | h) & 1) != 0 || w == 0 || h == 0)
        return;
    const GeometryKernels *k = geometryKernels();
    turnBytes<R>(src.y, w, w, h, dst.y, turnPlane<R>(w, h), 0, k);
    if constexpr (C == Chroma::Planar420) {
        const TurnSteps to = turnPlane<R>(w >> 1, h >> 1);
        turnBytes<R>(src.u, w >> 1, w >> 1, h >> 1, dst.u, to, 0, k);
        turnBytes<R>(src.v, w >> 1, w >> 1, h >> 1, dst.v, to, 0, k);
    } else if constexpr (C == Chroma::Doubled422) {
        // Placed as a plane w wide with one row per pair of source rows, each
        // sample covering two columns: source row 2j, column c lands where
        // luma pixel (2c, j) of that plane would, and again one column on.
        const TurnSteps wide = turnPlane<R>(w, h >> 1);
        const TurnSteps to{wide.start, 2 * wide.col, wide.row};
        turnBytes<R>(src.u, w, w >> 1, h >> 1, dst.u, to, wide.col, k);
        turnBytes<R>(src.v, w, w >> 1, h >> 1, dst.v, to, wide.col, k);
    }
}

// 4:2:2 half turn, one row at a time: every plane is reversed sample by
// sample. Odd heights are served; an odd or empty width writes nothing.
void gRotate422FrameBy180(const Frame &src, const Frame &dst)
{
    const ptrdiff_t w = src.width;
    const ptrdiff_t h = src.height;
    if ((w & 1) != 0 || w == 0 || h == 0)
        return;
    const GeometryKernels *k = geometryKernels();
    turnBytes<ROTATE_180>(src.y, w, w, h, dst.y, turnPlane<ROTATE_180>(w, h), 0, k);
    const TurnSteps to = turnPlane<ROTATE_180>(w >> 1, h);
    turnBytes<ROTATE_180>(src.u, w >> 1, w >> 1, h, dst.u, to, 0, k);
    turnBytes<ROTATE_180>(src.v, w >> 1, w >> 1, h, dst.v, to, 0, k);
}

using Worker = void (*)(const Frame &, const Frame &);

constexpr Worker gRotateFrameBy90 = turnPairs<ROTATE_90, Chroma::Planar420>;
constexpr Worker gRotateFrameBy180 = turnPairs<ROTATE_180, Chroma::Planar420>;
constexpr Worker gRotateFrameBy270 = turnPairs<ROTATE_270, Chroma::Planar420>;
constexpr Worker gRotate422FrameBy90 = turnPairs<ROTATE_90, Chroma::Doubled422>;
constexpr Worker gRotate422FrameBy270 = turnPairs<ROTATE_270, Chroma::Doubled422>;
constexpr Worker gRotateMonochromeFrameBy90 = turnPairs<ROTATE_90, Chroma::None>;
constexpr Worker gRotateMonochromeFrameBy180 = turnPairs<ROTATE_180, Chroma::None>;
constexpr Worker gRotateMonochromeFrameBy270 = turnPairs<ROTATE_270, Chroma::None>;

// Workers for ROTATE_90, ROTATE_180, ROTATE_270, and the shift that gives
// each chroma copy's byte count from the luma count (none: no chroma).
struct FrameTurns {
    Worker by[3];
    int chromaShift;
};
constexpr int kNoChroma = -1;
constexpr FrameTurns Turns420{{gRotateFrameBy90, gRotateFrameBy180, gRotateFrameBy270}, 2};
constexpr FrameTurns Turns422{{gRotate422FrameBy90, gRotate422FrameBy180, gRotate422FrameBy270}, 1};
constexpr FrameTurns TurnsLuma{{gRotateMonochromeFrameBy90, gRotateMonochromeFrameBy180, gRotateMonochromeFrameBy270},
                               kNoChroma};

void copyPlane(uint8_t *dst, const uint8_t *src, size_t bytes)
{
    if (bytes != 0)
        std::memcpy(dst, src, bytes);
}

void rotateFrame(const Frame &src, const Frame &dst, Rotation rotation, const FrameTurns &turns)
{
    switch (rotation) {
    case ROTATE_NONE: {
        const size_t lumaBytes = size_t(src.width) * src.height;
        copyPlane(dst.y, src.y, lumaBytes);
        if (turns.chromaShift != kNoChroma) {
            copyPlane(dst.u, src.u, lumaBytes >> turns.chromaShift);
            copyPlane(dst.v, src.v, lumaBytes >> turns.chromaShift);
        }
        return;
    }
    case ROTATE_90:
    case ROTATE_180:
    case ROTATE_270:
        turns.by[rotation - 1](src, dst);
        return;
    default:
        return;
    }
}

} // namespace
} // namespace pixmill

extern "C" PIXMILL_API void gRotateFrame(const Frame *source, const Frame *destination, Rotation rotation)
{
    pixmill::rotateFrame(*source, *destination, rotation, pixmill::Turns420);
}

extern "C" PIXMILL_API void gRotate422Frame(const Frame *source, const Frame *destination, Rotation rotation)
{
    pixmill::rotateFrame(*source, *destination, rotation, pixmill::Turns422);
}

extern "C" PIXMILL_API void gRotateMonochromeFrame(const Frame *source, const Frame *destination, Rotation rotation)
{
    pixmill::rotateFrame(*source, *destination, rotation, pixmill::TurnsLuma);
}
