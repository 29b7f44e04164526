# The vector fast paths: Highway, compiled per target in each kernel source.
#
# pixmill_simd carries what every library object needs to see:
#  - PIXMILL_SIMD=0/1;
#  - on a native build with Highway's runtime, dynamic dispatch over the x86
#    targets SSE4, AVX2 and AVX3 (AVX-512), linked to hwy::hwy, which tells
#    what this CPU runs (PIXMILL_HWY_RUNTIME is then ON);
#  - on a cross build (or without the runtime), Highway's headers alone and
#    its static target: whatever the compiler flags guarantee, such as NEON
#    on 64-bit ARM. Only /usr/include/hwy is put on the include path, through
#    a directory of its own, so that a cross compiler never sees the host's
#    other headers.
add_library(pixmill_simd INTERFACE)
set(PIXMILL_HWY_RUNTIME OFF)
set(PIXMILL_SIMD_TARGETS "")
if(NOT PIXMILL_SIMD)
  target_compile_definitions(pixmill_simd INTERFACE PIXMILL_SIMD=0)
  message(STATUS "pixmill: vector fast paths off (PIXMILL_SIMD=OFF)")
  return()
endif()

# Dynamic dispatch leaves out targets not worth their compile time: SSSE3
# (SSE4 covers every x86-64 CPU that has it in practice) and AVX3_DL (no
# kernel uses its extra instructions). A static build keeps whatever target
# its flags give.
set(PIXMILL_HWY_DISABLED "HWY_DISABLED_TARGETS=(HWY_SSSE3|HWY_AVX3_DL)")

if(NOT CMAKE_CROSSCOMPILING)
  find_package(hwy CONFIG QUIET)
endif()
if(TARGET hwy::hwy)
  set(PIXMILL_HWY_RUNTIME ON)
  target_link_libraries(pixmill_simd INTERFACE hwy::hwy)
  target_compile_definitions(pixmill_simd INTERFACE PIXMILL_SIMD=1 ${PIXMILL_HWY_DISABLED})
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
    set(PIXMILL_SIMD_TARGETS SSE4 AVX2 AVX3)
  elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    set(PIXMILL_SIMD_TARGETS NEON SVE SVE2)
  endif()
  message(STATUS "pixmill: vector fast paths with Highway ${hwy_VERSION}, chosen at run time")
else()
  find_path(PIXMILL_HWY_INCLUDE_DIR hwy/highway.h PATHS /usr/include /usr/local/include NO_CMAKE_FIND_ROOT_PATH)
  if(NOT PIXMILL_HWY_INCLUDE_DIR)
    message(FATAL_ERROR "pixmill: Highway not found. Install it (Debian: libhwy-dev) "
                        "or configure with -DPIXMILL_SIMD=OFF to build the plain code alone.")
  endif()
  set(shim ${PROJECT_BINARY_DIR}/hwy-include)
  file(MAKE_DIRECTORY ${shim})
  file(CREATE_LINK ${PIXMILL_HWY_INCLUDE_DIR}/hwy ${shim}/hwy SYMBOLIC)
  target_include_directories(pixmill_simd SYSTEM INTERFACE $<BUILD_INTERFACE:${shim}>)
  target_compile_definitions(pixmill_simd INTERFACE PIXMILL_SIMD=1 HWY_COMPILE_ONLY_STATIC=1)
  # The static target is the one the tests can run besides the plain code:
  # NEON on 64-bit ARM (baseline there). 32-bit ARM and x86 without extra
  # compiler flags get Highway's emulation, which the plain code replaces.
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    set(PIXMILL_SIMD_TARGETS NEON)
  endif()
  message(STATUS "pixmill: vector fast paths with Highway's headers, static target only")
endif()
