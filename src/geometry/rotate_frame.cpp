// Whole-frame turns of planar images: 4:2:0, 4:2:2 and a luma plane alone.
// A turn is one pass over the source in which all planes move together;
// no turn at all is a block copy of each plane.
#include <cstring>

#include "geometry/turn.h"

namespace pixmill {
namespace {

// How chroma rides along with each 2x2 luma block.
enum class Chroma {
    None,       // luma plane alone: the chroma fields of neither record are read
    Planar420,  // one sample of each plane, turned like luma on the half-size plane
    Doubled422, // 4:2:2 quarter turn: one sample from the even source row, stored
                // in two adjacent destination rows; odd source rows are skipped
};

// Quarter and half turns by 2x2 luma blocks, two source rows per outer step.
// The walk has no single-pixel tail, so odd and empty sizes write nothing.
template <uint32_t R, Chroma C>
void turnPairs(const Frame &src, const Frame &dst)
{
    const ptrdiff_t w = src.width;
    const ptrdiff_t h = src.height;
    if (((w | h) & 1) != 0 || w == 0 || h == 0)
        return;
    const TurnSteps luma = turnPlane<R>(w, h);
    const ptrdiff_t lumaStep = 2 * luma.col;
    const ptrdiff_t lumaDiagonal = luma.row + luma.col;
    // 4:2:2 chroma is placed as a plane w wide, each sample covering two
    // columns, with one row for each pair of source rows.
    const TurnSteps chroma = C == Chroma::Doubled422 ? turnPlane<R>(w, h >> 1) : turnPlane<R>(w >> 1, h >> 1);
    const ptrdiff_t chromaStep = C == Chroma::Doubled422 ? 2 * chroma.col : chroma.col;
    const ptrdiff_t chromaSkip = C == Chroma::Doubled422 ? w >> 1 : 0;

    const uint8_t *ys = src.y;
    const uint8_t *us = nullptr;
    const uint8_t *vs = nullptr;
    uint8_t *yRow = dst.y + luma.start;
    uint8_t *uRow = nullptr;
    uint8_t *vRow = nullptr;
    if constexpr (C != Chroma::None) {
        us = src.u;
        vs = src.v;
        uRow = dst.u + chroma.start;
        vRow = dst.v + chroma.start;
    }
    for (ptrdiff_t r = 0; r < h; r += 2) {
        const uint8_t *ys1 = ys + w;
        uint8_t *yd = yRow;
        uint8_t *ud = uRow;
        uint8_t *vd = vRow;
        for (ptrdiff_t c = 0; c < w; c += 2) {
            yd[0] = ys[0];
            yd[luma.col] = ys[1];
            yd[luma.row] = ys1[0];
            yd[lumaDiagonal] = ys1[1];
            ys += 2;
            ys1 += 2;
            yd += lumaStep;
            if constexpr (C != Chroma::None) {
                const uint8_t u = *us++;
                const uint8_t v = *vs++;
                ud[0] = u;
                vd[0] = v;
                if constexpr (C == Chroma::Doubled422) {
                    ud[chroma.col] = u;
                    vd[chroma.col] = v;
                }
                ud += chromaStep;
                vd += chromaStep;
            }
        }
        ys = ys1;
        yRow += 2 * luma.row;
        if constexpr (C != Chroma::None) {
            us += chromaSkip;
            vs += chromaSkip;
            uRow += chroma.row;
            vRow += chroma.row;
        }
    }
}

// 4:2:2 half turn, one row at a time: every plane is reversed sample by
// sample, so one backward cursor per plane runs through all rows. Odd heights
// are served; an odd or empty width writes nothing.
void gRotate422FrameBy180(const Frame &src, const Frame &dst)
{
    const ptrdiff_t w = src.width;
    const ptrdiff_t h = src.height;
    if ((w & 1) != 0 || w == 0 || h == 0)
        return;
    uint8_t *yd = dst.y + turnPlane<ROTATE_180>(w, h).start;
    uint8_t *ud = dst.u + turnPlane<ROTATE_180>(w >> 1, h).start;
    uint8_t *vd = dst.v + turnPlane<ROTATE_180>(w >> 1, h).start;
    const uint8_t *ys = src.y;
    const uint8_t *us = src.u;
    const uint8_t *vs = src.v;
    for (ptrdiff_t r = 0; r < h; ++r)
        for (ptrdiff_t c = 0; c < w; c += 2) {
            yd[0] = ys[0];
            yd[-1] = ys[1];
            ys += 2;
            yd -= 2;
            *ud-- = *us++;
            *vd-- = *vs++;
        }
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
