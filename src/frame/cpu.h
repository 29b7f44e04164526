// The vector target of this process. Every fast path of the library runs the
// kernels compiled for one Highway target: the best one that the build has
// and this CPU runs, chosen once, on first use, and constant from then on.
// The environment can lower the choice, never raise it:
//
//   PIXMILL_CPU=scalar   the plain per-pixel code alone, no kernel at all;
//   PIXMILL_CPU=AVX2     at most that target (any name that targetName()
//                        gives; case does not matter); a target this CPU
//                        cannot run leaves the next lower one;
//   any other value      the plain code, as for scalar.
//
// Kernels produce the bytes of the plain code bit for bit, so the choice
// changes speed only.
#ifndef PIXMILL_CPU_H
#define PIXMILL_CPU_H

#include <cstdint>

namespace pixmill::cpu {

// Highway's bit of the chosen target, or 0 for the plain code.
int64_t target();

// Highway's bits of the targets this build has kernels for, and of those
// that this CPU runs.
int64_t builtTargets();
int64_t runnableTargets();

// "AVX2", "NEON", ... for one target bit; "scalar" for 0.
const char *targetName(int64_t target);

} // namespace pixmill::cpu

#endif
