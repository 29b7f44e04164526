// Compiler glue shared by every source file of the library: where code and
// tables are placed, forced inlining, and a second export name for one
// function. Nothing here depends on anything but the compiler.
#ifndef PIXMILL_PLATFORM_H
#define PIXMILL_PLATFORM_H

#include "pixmill.h"

// PIXMILL_CODE(name): put a function body into code section `name`.
// PIXMILL_CONST(name): put a constant table into read-only section `name`.
// Section names are at most eight characters so that they survive as-is in
// PE images. On ELF an undotted name becomes an output section of its own.
#if defined(_MSC_VER) && !defined(__clang__)
#  pragma section("CONSTANT", read)
#  define PIXMILL_CODE(name) __declspec(code_seg(name))
#  define PIXMILL_CONST(name) __declspec(allocate(name))
#  define PIXMILL_INLINE __forceinline
#elif defined(__APPLE__)
#  define PIXMILL_CODE(name) __attribute__((section("__TEXT," name)))
#  define PIXMILL_CONST(name) __attribute__((section("__TEXT," name)))
#  define PIXMILL_INLINE inline __attribute__((always_inline))
#else
#  define PIXMILL_CODE(name) __attribute__((section(name)))
#  define PIXMILL_CONST(name) __attribute__((section(name)))
#  define PIXMILL_INLINE inline __attribute__((always_inline))
#endif

// The section names the library uses.
#define PIXMILL_SECTION_COLORCON "COLORCON"
#define PIXMILL_SECTION_YUV420_LOWER "YUV420to"
#define PIXMILL_SECTION_YUV420_UPPER "YUV420TO"
#define PIXMILL_SECTION_CONSTANT "CONSTANT"

// PIXMILL_ALIAS(target): declares a second name for the function `target`,
// at the same address. MSVC gets the alias from the generated .def file
// instead, where the second name is listed as `alias=target`.
#if defined(_MSC_VER) && !defined(__clang__)
#  define PIXMILL_ALIAS(target)
#  define PIXMILL_HAS_ALIAS_ATTRIBUTE 0
#else
#  define PIXMILL_ALIAS(target) __attribute__((alias(#target)))
#  define PIXMILL_HAS_ALIAS_ATTRIBUTE 1
#endif

#endif
