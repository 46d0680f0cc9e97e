// A start, no stop. All bytes of an int are returned, of which the loader looks at the lowest.

#include "report.h"

// A variable to look up. In one module at a time: the address sanitizer takes two for one by
// mistake.
int moduleNumber = 42;

extern "C" int SharedLibInit(const char* path) { return ModuleStarts(MODULE, path); }
