// What a source file of vector kernels needs around Highway. Such a file is
// compiled once per target by Highway's foreach_target and looks like this:
//
//   #undef HWY_TARGET_INCLUDE
//   #define HWY_TARGET_INCLUDE "family/foo_kernels.cpp"   // its own path
//   #include "frame/simd.h"                 // foreach_target and highway.h
//
//   #if PIXMILL_VECTOR_TARGET
//   HWY_BEFORE_NAMESPACE();
//   namespace pixmill::HWY_NAMESPACE {
//   namespace hn = hwy::HWY_NAMESPACE;
//   size_t fooRow(const uint8_t *in, uint8_t *out, size_t n) { ... }
//   constexpr FooKernels kFoo{&fooRow};                 // one set per target
//   } // namespace pixmill::HWY_NAMESPACE
//   HWY_AFTER_NAMESPACE();
//   #endif
//
//   #if PIXMILL_KERNELS_ONCE
//   namespace pixmill {
//   PIXMILL_KERNEL_SET(FooKernels, kFoo, fooKernels)  // const FooKernels *fooKernels()
//   }
//   #endif
//
// The getter returns the set of the target that cpu::target() chose, or
// nullptr when the plain code is to run (PIXMILL_CPU=scalar, a CPU without
// any built target, or a build without PIXMILL_SIMD). The x86 instructions
// that Highway has no operation for (pair multiply-adds, saturating packs)
// are in frame/x86-inl.h, for a kernel file to include under PIXMILL_SIMD.
//
// Rules for every kernel:
//  - it gives exactly the bytes of the plain code, for every input;
//  - it is a row (or row pair, or block row) kernel beside a plain walker
//    that keeps edges, odd columns and tails: it handles a prefix of the
//    units it is given, in whole vectors, and returns how many units it
//    handled; the walker does the rest with the plain code;
//  - it reads and writes nothing outside the units it is given: no load or
//    store past the end of a row, however the row is aligned;
//  - no allocation, no floating point, no globals.
#ifndef PIXMILL_SIMD_H_ONCE
#define PIXMILL_SIMD_H_ONCE
#  include <cstddef>
#  include <cstdint>

#  include "frame/cpu.h"
#  include "frame/platform.h"
#endif

// PIXMILL_VECTOR_TARGET: this pass compiles kernels. Highway's emulated
// fallback targets get none, since the plain code serves there.
#undef PIXMILL_VECTOR_TARGET
#if PIXMILL_SIMD
#  include <hwy/foreach_target.h> // re-includes HWY_TARGET_INCLUDE per target
#  include <hwy/highway.h>
#  define PIXMILL_KERNELS_ONCE HWY_ONCE
#  define PIXMILL_VECTOR_TARGET (HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128)
#else
#  define PIXMILL_KERNELS_ONCE 1
#  define PIXMILL_VECTOR_TARGET 0
#endif

#ifndef PIXMILL_SIMD_H_TABLE
#define PIXMILL_SIMD_H_TABLE
#  if PIXMILL_SIMD
namespace pixmill::cpu {
// Index of the chosen target in a table laid out like Highway's dispatch
// tables: slot 0, then one slot per dynamic target, then the fallback.
inline size_t tableIndex()
{
    const int64_t slot = HWY_CHOSEN_TARGET_SHIFT(target());
    return slot ? hwy::Num0BitsBelowLS1Bit_Nonzero64(uint64_t(slot)) : 0;
}
} // namespace pixmill::cpu

// Slot 0 and the emulated fallback stay empty: the plain code serves there.
#    define PIXMILL_KERNEL_SET(Type, object, getter)                                                \
        const Type *getter()                                                                        \
        {                                                                                           \
            static constexpr const Type *kTable[HWY_MAX_DYNAMIC_TARGETS + 2] = {                    \
                nullptr, HWY_CHOOSE_TARGET_LIST(object), nullptr};                                  \
            return kTable[cpu::tableIndex()];                                                       \
        }
#  else
#    define PIXMILL_KERNEL_SET(Type, object, getter)                                                \
        const Type *getter() { return nullptr; }
#  endif
#endif
