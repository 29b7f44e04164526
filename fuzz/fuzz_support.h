// Shared pieces of the fuzz targets. Sources are exact-size heap buffers, so
// that AddressSanitizer sees any read past their ends, and their contents are
// checked to be unchanged after the call. Targets are Guarded buffers with
// random guard bytes; a target check also names the area that may change and
// aborts when anything else did.
#ifndef PIXMILL_FUZZ_SUPPORT_H
#define PIXMILL_FUZZ_SUPPORT_H

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <vector>

#include "support/guarded.h"
#include "support/random.h"
#include "weak_exports.h"

namespace fuzz {

using pixmill::test::Guarded;
using pixmill::test::Random;

inline void require(bool ok, const char *what)
{
    if (!ok) {
        std::fprintf(stderr, "pixmill fuzz: %s\n", what);
        std::abort();
    }
}

inline int32_t pick(FuzzedDataProvider &in, int32_t lo, int32_t hi)
{
    return in.ConsumeIntegralInRange<int32_t>(lo, hi);
}

// Read-only source buffer of exactly `count` elements (at least one, so that
// the pointer is never null), filled with random values.
template <class T>
struct Source {
    std::vector<T> data, copy;
    Source(size_t count, Random &rng) : data(std::max<size_t>(count, 1))
    {
        for (auto &x : data)
            x = static_cast<T>(rng.word());
        copy = data;
    }
    T *ptr() { return data.data(); }
    void check() const { require(data == copy, "a source buffer was written"); }
};

// Planes of a source Frame, with chroma planes of `chroma` samples each.
struct SourceFrame {
    Source<uint8_t> y, u, v;
    Frame frame;
    SourceFrame(int32_t w, int32_t h, size_t chroma, Random &rng, size_t luma = 0)
        : y(std::max(luma, size_t(w) * size_t(h)), rng), u(chroma, rng), v(chroma, rng),
          frame{y.ptr(), u.ptr(), v.ptr(), uint16_t(w), uint16_t(h), rng.word()}
    {
    }
    void check() const
    {
        y.check();
        u.check();
        v.check();
    }
};

// A target buffer with guards: `check` requires that only elements inside
// the rectangle (x, y, w, h) of a surface `stride` elements wide changed.
template <class T>
struct Target : Guarded<T> {
    Target(size_t count, Random &rng) : Guarded<T>(count, size_t(rng.range(0, 3)), rng.word())
    {
        this->randomize(rng);
    }
    void check() const { require(this->intact(), "a guard byte around a target was written"); }
    void checkOutside(int64_t stride, int64_t x, int64_t y, int64_t w, int64_t h) const
    {
        check();
        for (size_t i = 0; i < this->size(); ++i) {
            const int64_t col = int64_t(i) % stride, row = int64_t(i) / stride;
            if (col < x || col >= x + std::max<int64_t>(w, 0) || row < y || row >= y + std::max<int64_t>(h, 0))
                require((*this)[i] == this->before(i), "a target element outside the written area changed");
        }
    }
    void checkUntouched() const { require(this->untouched(), "a refused call wrote to its target"); }
};

// Planes of a target Frame, each guarded.
struct TargetFrame {
    Target<uint8_t> y, u, v;
    Frame frame;
    TargetFrame(int32_t w, int32_t h, size_t luma, size_t chroma, Random &rng)
        : y(luma, rng), u(chroma, rng), v(chroma, rng),
          frame{y.begin(), u.begin(), v.begin(), uint16_t(w), uint16_t(h), rng.word()}
    {
    }
    void check() const
    {
        y.check();
        u.check();
        v.check();
    }
    void checkUntouched() const
    {
        y.checkUntouched();
        u.checkUntouched();
        v.checkUntouched();
    }
};

// The body of a fuzz target: seeds the buffers' contents from the input and
// runs the case that the next input byte picks.
using Case = void (*)(FuzzedDataProvider &, Random &);
inline int run(const uint8_t *data, size_t size, std::initializer_list<Case> cases)
{
    FuzzedDataProvider in(data, size);
    Random rng(in.ConsumeIntegral<uint32_t>());
    cases.begin()[pick(in, 0, int32_t(cases.size()) - 1)](in, rng);
    return 0;
}

} // namespace fuzz

#endif
