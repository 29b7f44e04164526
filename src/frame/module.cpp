// Module entry point. As a Windows DLL the library asks not to be told about
// threads starting and ending; it has no per-thread (or any other) state.
// Elsewhere there is nothing to do on load or unload.
#include "frame/platform.h"

#if defined(_WIN32) && defined(PIXMILL_SHARED_BUILD)
#  define WIN32_LEAN_AND_MEAN
#  include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/)
{
    if (reason == DLL_PROCESS_ATTACH)
        DisableThreadLibraryCalls(module);
    return TRUE;
}
#endif
