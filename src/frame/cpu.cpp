// Choice of the vector target; see cpu.h.
#include "frame/cpu.h"

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
    // Initialised once under the language's own guard: concurrent first calls
    // wait for one another and all see the same whole value.
    static const int64_t chosen = choose();
    return chosen;
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
