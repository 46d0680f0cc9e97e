// The module that session_test loads.

#include "kest/frame.h"

extern "C" {

KEST_API int g_stops = 0;
KEST_API int* g_tell = nullptr;

KEST_API bool SharedLibInit(const char*) { return true; }
KEST_API void SharedLibTerm(void) {
  ++g_stops;
  if (g_tell != nullptr) ++*g_tell;
}

KEST_API int Twice(int number) { return 2 * number; }

}  // extern "C"
