// The vector walk of the four-tap bilinear scalers on 8-bit planes, shared by
// the plane scaler and the 4:2:2 -> 4:2:0 scaler. Each blend is split in two
// passes: a horizontal one per source row,
//     h = (8 - px) * left + px * right,
// and a vertical one per target row,
//     ((8 - py) * upper h + py * lower h) >> 6.
// Multiplied out that is the four-tap sum w00 A + w01 B + w10 C + w11 D term
// by term, so the bytes are those of the plain walks. Target columns go in
// strips of a fixed count, so that the column tables have a fixed size on
// the stack whatever the width; the horizontal results of the last two
// source rows are kept, so that an enlargement filters each row once.
#ifndef PIXMILL_SCALE_BILINEAR_WALK_H
#define PIXMILL_SCALE_BILINEAR_WALK_H

#include <cstddef>
#include <cstdint>

#include "frame/frame.h"
#include "scale/bilinear.h"

namespace pixmill {

// Groups of up to eight neighbouring target samples of a row. The taps of
// group g all lie in the 16 source bytes from base[g] on; its lane t takes
// its near tap from byte taps[g][2t] and its far tap from byte
// taps[g][2t + 1] of those 16, weighted weights[g][2t] = 8 - px and
// weights[g][2t + 1] = px at its phase px; lanes past the group's size
// repeat lane 0. The tables of neighbouring groups lie side by side, so
// that a vector of two or more groups loads them at once.
//
// With neighbouring taps (far = 1) the first columns also come in blocks of
// 16, for targets that pick 16-bit lanes out of two 32-byte vectors: the 32
// source bytes from blockBase[b] and the 32 from blockBase[b] + 1 hold, as
// 16-bit lanes, the tap pairs (near, near + 1) of every even and every odd
// near - blockBase[b] below 32. Lane t of block b takes lane
// pairs[b][t] & 31 of the two (16 and up: of the second), weighted by
// 8 - px = pairs[b][t] >> 11 and px = (pairs[b][t] >> 8) & 7. The first
// `blocks` blocks cover the columns of the first groups; of them, the first
// `pairedBlocks` come in pairs with the same base.
struct ColumnGroups {
    static constexpr int32_t kCount = 512;
    static constexpr int32_t kBlockLanes = 16;
    static constexpr int32_t kBlocks = kCount * 8 / kBlockLanes;
    int32_t base[kCount];
    alignas(64) uint8_t taps[kCount][16];
    alignas(64) uint8_t weights[kCount][16];
    int32_t blocks, pairedBlocks;
    int32_t blockBase[kBlocks];
    alignas(64) uint16_t pairs[kBlocks][kBlockLanes];
};

// The two passes as row kernels (see frame/simd.h).
struct BilinearRowKernels {
    // Horizontal pass of one source row: for each group g and each of its
    // `size` lanes t, out[g * size + t] = (8 - px) * near + px * far. Writes
    // eight samples per group, so `out` has room for seven more than it
    // keeps; the lanes past `size` are overwritten by the next group.
    size_t (*filterColumns)(const uint8_t *row, const ColumnGroups &groups, size_t count, size_t size,
                            int16_t *out);
    // Vertical pass: out[i] = ((8 - py) * upper[i] + py * lower[i]) >> 6.
    size_t (*blendRows)(const int16_t *upper, const int16_t *lower, int32_t py, uint8_t *out, size_t n);
};

// The columns of a walk: target sample i stands at start + i * step, its
// near tap at (position index) << shift and its far tap `far` samples right
// of that, or on the near tap itself from column `edgeFrom` on. A source
// row has `readable` bytes from the rectangle's corner column to its end.
struct Columns {
    int32_t start, step, shift, far, edgeFrom, readable;
};

class BilinearStrip {
public:
    // Strips hold at most this many groups and columns, so that a strip
    // takes some 45 KiB of stack whatever the width, and a row of 4K video
    // is one strip (rows written in pieces are slower to write back).
    static constexpr int32_t kGroups = ColumnGroups::kCount;
    static constexpr int32_t kMaxWidth = 4096;

    // How many target columns of `c` a strip takes: as many as its groups
    // cover, or kMaxWidth when no group serves.
    static int32_t width(const Columns &c)
    {
        const int32_t size = groupSize(c);
        return size ? kGroups * size : kMaxWidth;
    }

    // The target columns [from, from + n) of `c`, n at most width(c).
    BilinearStrip(const BilinearRowKernels &k, const Columns &c, int32_t from, int32_t n)
        : k_(k), c_(c), from_(from), n_(n), size_(groupSize(c))
    {
        // Whole groups before the edge go to the kernel; the columns after
        // them are filtered here. A group's 16 bytes start at its first tap,
        // or end at the row's end where that leaves fewer than 16: its taps
        // all lie in the row, so they stay within the 16 bytes either way.
        // Locals throughout: the byte stores into the tables may alias anything.
        const int32_t start = c.start, step = c.step, shift = c.shift, far = c.far, size = size_;
        int32_t count = 0;
        while (size && (count + 1) * size <= n && from + (count + 1) * size <= c.edgeFrom && c.readable >= 16) {
            const int32_t first = start + (from + count * size) * step;
            int32_t base = min32(positionIndex(first) << shift, c.readable - 16);
            // An odd group whose taps lie in the 16 bytes of the group before
            // it shares them, so that a vector of two groups loads them once.
            if (count & 1) {
                const int32_t last = first + (size - 1) * step;
                if ((positionIndex(last) << shift) + far < groups_.base[count - 1] + 16)
                    base = groups_.base[count - 1];
            }
            groups_.base[count] = base;
            uint8_t *taps = groups_.taps[count], *weights = groups_.weights[count];
            for (int32_t t = 0, pos = first; t < 8; ++t, pos += step) {
                if (t == size) // past the size: lane 0
                    pos = first;
                const int32_t nearTap = (positionIndex(pos) << shift) - base, px = positionPhase(pos);
                taps[2 * t] = static_cast<uint8_t>(nearTap);
                taps[2 * t + 1] = static_cast<uint8_t>(nearTap + far);
                weights[2 * t] = static_cast<uint8_t>(8 - px);
                weights[2 * t + 1] = static_cast<uint8_t>(px);
            }
            ++count;
        }
        count_ = count;
        // Blocks over the columns of the groups (a block is a whole number of
        // groups of any size), while their taps lie in 2 * kLanes + 1 bytes
        // of the row from the first tap on, or ending at the row's end.
        constexpr int32_t kLanes = ColumnGroups::kBlockLanes;
        int32_t blocks = 0;
        while (far == 1 && c.readable >= 2 * kLanes + 1 && (blocks + 1) * kLanes <= count * size) {
            const int32_t first = start + (from + blocks * kLanes) * step;
            int32_t base = min32(positionIndex(first), c.readable - 2 * kLanes - 1);
            const int32_t last = positionIndex(first + (kLanes - 1) * step);
            if (last - base >= 2 * kLanes)
                break;
            // An odd block whose taps lie in the bytes of the block before it
            // shares them, so that one vector serves both.
            if ((blocks & 1) && last - groups_.blockBase[blocks - 1] < 2 * kLanes)
                base = groups_.blockBase[blocks - 1];
            groups_.blockBase[blocks] = base;
            uint16_t *pairs = groups_.pairs[blocks];
            for (int32_t t = 0, pos = first; t < kLanes; ++t, pos += step) {
                const int32_t rel = positionIndex(pos) - base, px = positionPhase(pos);
                const int32_t lane = (rel >> 1) + (rel & 1) * kLanes;
                pairs[t] = static_cast<uint16_t>(lane | px << 8 | (8 - px) << 11);
            }
            ++blocks;
        }
        groups_.blocks = blocks;
        int32_t paired = 0;
        while (paired + 1 < blocks && groups_.blockBase[paired + 1] == groups_.blockBase[paired])
            paired += 2;
        groups_.pairedBlocks = paired;
    }

    // One target row, from the source rows at `upper` and `lower` (a lower
    // row of weight 0 is not read) blended at phase py.
    void row(const uint8_t *upper, const uint8_t *lower, int32_t py, uint8_t *out)
    {
        const int32_t r0 = upper == held_[1] ? 1 : 0; // keep what the last row filtered
        const int16_t *u = filtered(upper, r0);
        const int16_t *l = py ? filtered(lower, 1 - r0) : u;
        for (auto i = static_cast<int32_t>(k_.blendRows(u, l, py, out, size_t(n_))); i < n_; ++i)
            out[i] = static_cast<uint8_t>(((8 - py) * u[i] + py * l[i]) >> 6);
    }

    // Blends two target rows at the phases py0 and py1 from the same two
    // source rows, out0[i] = ((8 - py0) * u[i] + py0 * l[i]) >> 6 and out1
    // likewise: a row-pair kernel, run on a prefix of the n columns.
    using PairKernel = size_t (*)(const int16_t *upper, const int16_t *lower, int32_t py0, int32_t py1,
                                  uint8_t *out0, uint8_t *out1, size_t n);

    // Two target rows from the same source rows, as row() twice.
    void rowPair(PairKernel blend, const uint8_t *upper, const uint8_t *lower, int32_t py0, int32_t py1, uint8_t *out0,
                 uint8_t *out1)
    {
        const int32_t r0 = upper == held_[1] ? 1 : 0;
        const int16_t *u = filtered(upper, r0);
        const int16_t *l = py0 | py1 ? filtered(lower, 1 - r0) : u;
        for (auto i = static_cast<int32_t>(blend(u, l, py0, py1, out0, out1, size_t(n_))); i < n_; ++i) {
            out0[i] = static_cast<uint8_t>(((8 - py0) * u[i] + py0 * l[i]) >> 6);
            out1[i] = static_cast<uint8_t>(((8 - py1) * u[i] + py1 * l[i]) >> 6);
        }
    }

private:
    // The most neighbouring target samples (8, 4 or 2) whose taps always lie
    // within 16 source bytes, or 0 when not even two do.
    static int32_t groupSize(const Columns &c)
    {
        for (int32_t size = 8; size >= 2; size >>= 1) {
            const int64_t lattice = ((int64_t(size - 1) * c.step) >> kPositionBits) + 1;
            if ((lattice << c.shift) + c.far <= 15)
                return size;
        }
        return 0;
    }

    // The horizontal pass of the source row at `src`, from the slot that
    // holds it or else into slot `s`.
    const int16_t *filtered(const uint8_t *src, int32_t s)
    {
        if (held_[s] == src)
            return h_[s];
        if (held_[1 - s] == src)
            return h_[1 - s];
        held_[s] = src;
        int16_t *h = h_[s];
        k_.filterColumns(src, groups_, size_t(count_), size_t(size_), h);
        int32_t i = count_ * size_;
        for (int32_t pos = c_.start + (from_ + i) * c_.step; i < n_; ++i, pos += c_.step) {
            const int32_t col = positionIndex(pos) << c_.shift, px = positionPhase(pos);
            const int32_t far = from_ + i < c_.edgeFrom ? c_.far : 0;
            h[i] = static_cast<int16_t>((8 - px) * src[col] + px * src[col + far]);
        }
        return h;
    }

    const BilinearRowKernels &k_;
    const Columns c_;
    const int32_t from_, n_, size_;
    int32_t count_ = 0;
    alignas(64) ColumnGroups groups_;
    const uint8_t *held_[2] = {nullptr, nullptr};
    alignas(64) int16_t h_[2][kMaxWidth + 8]; // a group stores eight lanes; vector stores stay in cache lines
};

} // namespace pixmill

#endif
