// A start, no stop. All bytes of an int are returned, of which the loader looks at the lowest.

#include "report.h"

extern "C" int SharedLibInit(const char* path) { return ModuleStarts(MODULE, path); }
