// What the system loader calls when the library is loaded. Only Windows has such an entry: there
// the library asks not to be told of threads that begin and end. Elsewhere nothing is needed, and
// no state of the library is set up at load time on any platform.

#if defined(_WIN32)

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(library);
  return TRUE;
}

#endif
