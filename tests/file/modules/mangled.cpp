// The entry pair with C++ linkage, which is none.

#include "report.h"

bool SharedLibInit(const char* path) { return ModuleStarts(MODULE, path) != 0; }

void SharedLibTerm() { ModuleStops(MODULE); }
