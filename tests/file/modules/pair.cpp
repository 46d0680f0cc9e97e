// The whole entry pair.

#include "report.h"

extern "C" int SharedLibInit(const char* path) { return ModuleStarts(MODULE, path); }

extern "C" void SharedLibTerm(void) { ModuleStops(MODULE); }
