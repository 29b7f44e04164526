// Choice of the vector target; see cpu.h.
#include "frame/cpu.h"

#include <atomic>
#include <cstdlib>

#if PIXMILL_SIMD
#  include <hwy/highway.h>
#endif

namespace pixmill::cpu {
namespace {

#if PIXMILL_SIMD
// Highway's emulated fallback targets are slower than the plain code: the
// plain code takes their place.
constexpr int64_t kKernelTargets = HWY_TARGETS & ~int64_t(HWY_EMU128 | HWY_SCALAR);

bool sameName(const char *a, const char *b)
{
    for (; *a && *b; ++a, ++b) {
        const char x = *a >= 'a' && *a <= 'z' ? char(*a - 'a' + 'A') : *a;
        if (x != *b)
            return false;
    }
    return *a == *b;
}
#endif

int64_t choose()
{
#if PIXMILL_SIMD
    int64_t usable = runnableTargets();
    if (const char *cap = std::getenv("PIXMILL_CPU"); cap != nullptr && *cap != '\0') {
        int64_t named = 0;
        for (int64_t bits = kKernelTargets; bits != 0; bits &= bits - 1)
            if (sameName(cap, targetName(bits & -bits)))
                named = bits & -bits;
        // A lower bit is a better target: keep the named one and those below it.
        usable = named ? usable & ~(named - 1) : 0;
    }
    return usable & -usable;
#else
    return 0;
#endif
}

} // namespace

int64_t target()
{
    // The choice is kept as the target's bit number plus one (0: the plain
    // code; -1: not made yet) in one atomic word, so no thread can see it
    // half written. Threads that find it unmade all make the same choice and
    // store the same value; it never changes after that. The word needs no
    // run-time initialisation and no lock.
    static std::atomic<int32_t> chosen{-1};
    int32_t bit = chosen.load(std::memory_order_relaxed);
    if (bit < 0) {
        const int64_t t = choose();
        bit = 0;
        while (t != 0 && (t >> bit) != 1)
            ++bit;
        bit = t != 0 ? bit + 1 : 0;
        chosen.store(bit, std::memory_order_relaxed);
    }
    return bit == 0 ? 0 : int64_t(1) << (bit - 1);
}

int64_t builtTargets()
{
#if PIXMILL_SIMD
    return kKernelTargets;
#else
    return 0;
#endif
}

int64_t runnableTargets()
{
#if PIXMILL_SIMD && defined(HWY_COMPILE_ONLY_STATIC)
    return kKernelTargets; // the compiler flags guarantee the static target
#elif PIXMILL_SIMD
    return kKernelTargets & hwy::SupportedTargets();
#else
    return 0;
#endif
}

const char *targetName(int64_t target)
{
#if PIXMILL_SIMD
    if (target != 0)
        return hwy::TargetName(target);
#else
    (void)target;
#endif
    return "scalar";
}

} // namespace pixmill::cpu
