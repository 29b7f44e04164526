// Left-right, top-bottom and combined flips: of a packed 16-bit image into a
// second buffer, and of a planar frame in place or into a second frame.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/platform.h"
#include "geometry/kernels.h"

namespace pixmill {
namespace {

// Which axes a mirror mode reverses. Only 1 and 2 are told apart: every
// other value is a left-right flip.
struct Flip {
    bool rows; // top and bottom exchange
    bool cols; // left and right exchange
};

constexpr Flip flipOf(uint32_t mode)
{
    return {mode == MIRROR_VERTICAL || mode == MIRROR_BOTH, mode != MIRROR_VERTICAL};
}

// Offset of the partner of column 0 in row r of a pc x pr plane, and the
// step of the partner per column.
constexpr ptrdiff_t partnerRow(Flip f, ptrdiff_t r, ptrdiff_t pc, ptrdiff_t pr)
{
    return (f.rows ? pr - 1 - r : r) * pc + (f.cols ? pc - 1 : 0);
}
constexpr ptrdiff_t partnerStep(Flip f) { return f.cols ? -1 : 1; }

// A plane that is read and the plane that is written; the same in place.
struct PlanePair {
    const uint8_t *in;
    uint8_t *out;
};

// Visits each position whose partner does not come before it, reads both
// samples, then stores each at the other's place: in place this exchanges
// them, into a second plane it writes both. A middle row or column (odd
// count on a flipped axis) is its own partner line: a middle column keeps its
// samples, a middle row of a combined flip is reversed, so every sample of
// the output is written at every size.
//
// The kernels exchange a prefix of a row's visited positions with their
// partners in whole vectors: straight runs for a top-bottom flip, reversed
// runs where columns flip too. On a row that is its own partner row they get
// only the columns left of the middle, so that the two runs never overlap.
template <size_t N>
void swapPass(const PlanePair (&planes)[N], ptrdiff_t pc, ptrdiff_t pr, Flip f, const GeometryKernels *k)
{
    const ptrdiff_t rows = f.rows ? (pr + 1) >> 1 : pr;
    const ptrdiff_t step = partnerStep(f);
    for (ptrdiff_t r = 0; r < rows; ++r) {
        const bool ownPartnerRow = !f.rows || 2 * r + 1 == pr;
        const ptrdiff_t cols = ownPartnerRow && f.cols ? (pc + 1) >> 1 : pc;
        ptrdiff_t i = r * pc;
        ptrdiff_t p = partnerRow(f, r, pc, pr);
        ptrdiff_t c = 0;
        if (k != nullptr) {
            const auto run = static_cast<size_t>(ownPartnerRow && f.cols ? pc >> 1 : cols);
            const auto swap = f.cols ? k->swapReverse8 : k->swap8;
            for (const PlanePair &plane : planes)
                c = static_cast<ptrdiff_t>(swap(plane.in + i, plane.in + p, plane.out + i, plane.out + p, run));
            i += c;
            p += c * step;
        }
        for (; c < cols; ++c, ++i, p += step)
            for (const PlanePair &plane : planes) {
                const uint8_t a = plane.in[i];
                const uint8_t b = plane.in[p];
                plane.out[i] = b;
                plane.out[p] = a;
            }
    }
}

// Into a second plane the pairs of the swap pass make up the whole flipped
// plane, so each source row can move whole to its partner row instead:
// reversed where columns flip, as it is where only rows do.
template <size_t N>
void flipInto(const PlanePair (&planes)[N], ptrdiff_t pc, ptrdiff_t pr, Flip f, const GeometryKernels *k)
{
    for (ptrdiff_t r = 0; r < pr; ++r)
        for (const PlanePair &plane : planes) {
            const uint8_t *s = plane.in + r * pc;
            uint8_t *d = plane.out + partnerRow(f, r, pc, pr);
            if (!f.cols) {
                if (pc != 0)
                    std::memcpy(d, s, size_t(pc));
                continue;
            }
            ptrdiff_t c = k != nullptr ? static_cast<ptrdiff_t>(k->reverse8(s, d, size_t(pc))) : 0;
            for (; c < pc; ++c)
                d[-c] = s[c];
        }
}

// The swap pass, or whole rows where the output is a second plane. An empty
// plane has no row to point into.
template <size_t N>
void flipPlanes(const PlanePair (&planes)[N], ptrdiff_t pc, ptrdiff_t pr, Flip f, const GeometryKernels *k)
{
    if (pc == 0 || pr == 0)
        return;
    if (planes[0].in != planes[0].out)
        flipInto(planes, pc, pr, f, k);
    else
        swapPass(planes, pc, pr, f, k);
}

} // namespace
} // namespace pixmill

extern "C" PIXMILL_API int32_t gMirrorImageRGB565(const uint16_t *source, uint16_t *destination,
                                                  int32_t sourceWidth, int32_t sourceHeight, uint32_t mirrorMode)
{
    using namespace pixmill;
    if (sourceWidth < 0 || sourceHeight < 0)
        return -1;
    const Flip f = flipOf(mirrorMode);
    const ptrdiff_t step = partnerStep(f);
    const GeometryKernels *k = geometryKernels();
    for (ptrdiff_t r = 0; r < sourceHeight; ++r) {
        uint16_t *d = destination + partnerRow(f, r, sourceWidth, sourceHeight);
        ptrdiff_t c = 0;
        if (!f.cols) {
            c = sourceWidth; // a whole row moves as it is
            if (c != 0)
                std::memcpy(d, source, size_t(c) * sizeof *d);
            source += c;
        } else if (k != nullptr) {
            c = static_cast<ptrdiff_t>(k->reverse16(source, d, static_cast<size_t>(sourceWidth)));
            source += c;
            d -= c;
        }
        for (; c < sourceWidth; ++c, d += step)
            *d = *source++;
    }
    return 0;
}

extern "C" PIXMILL_API int32_t gMirrorImageYUV(Frame *source, Frame *destination, int32_t chromaLayout,
                                               uint32_t mirrorMode, uint8_t toDestination)
{
    using namespace pixmill;
    if (chromaLayout != 0 && chromaLayout != 1)
        return -1;
    const Frame *out = source;
    if (toDestination == 1) {
        destination->width = source->width;
        destination->height = source->height;
        destination->tag = source->tag;
        out = destination;
    }
    const Flip f = flipOf(mirrorMode);
    const ptrdiff_t w = source->width;
    const ptrdiff_t h = source->height;
    const PlanePair luma[1] = {{source->y, out->y}};
    const GeometryKernels *k = geometryKernels();
    flipPlanes(luma, w, h, f, k);
    // 4:2:2 chroma is flipped as a plane of all h rows, like 4:2:0 chroma.
    const PlanePair chroma[2] = {{source->u, out->u}, {source->v, out->v}};
    flipPlanes(chroma, w >> 1, chromaLayout == 0 ? h >> 1 : h, f, k);
    return 0;
}
