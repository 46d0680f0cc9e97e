// The module that file.cpp loads.

#include "kest/frame.h"

extern "C" {

KEST_API bool SharedLibInit(const char* path) { return path[0] == '/'; }

KEST_API void SharedLibTerm(void) {}

}  // extern "C"
