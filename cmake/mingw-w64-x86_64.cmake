# Cross build for 64-bit Windows with Debian's MinGW-w64 toolchain
# (g++-mingw-w64-x86-64): cmake -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(PIXMILL_MINGW_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${PIXMILL_MINGW_PREFIX}-gcc)
set(CMAKE_CXX_COMPILER ${PIXMILL_MINGW_PREFIX}-g++)
set(CMAKE_RC_COMPILER ${PIXMILL_MINGW_PREFIX}-windres)
set(CMAKE_OBJDUMP ${PIXMILL_MINGW_PREFIX}-objdump)
set(CMAKE_FIND_ROOT_PATH /usr/${PIXMILL_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# The DLL stands alone: whatever it needs of the compiler's runtime is
# linked in, so that it imports only KERNEL32 and the C runtime (msvcrt).
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static-libgcc -static-libstdc++")
