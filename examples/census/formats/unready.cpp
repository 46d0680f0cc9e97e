// An output format that is never ready: what the census must survive.

#include "kest/frame.h"

extern "C" {

KEST_API bool SharedLibInit(const char*) { return false; }
KEST_API void SharedLibTerm(void) {}

KEST_API const char* CensusFormatName(void) { return "never"; }

}  // extern "C"
