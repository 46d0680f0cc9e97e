// A stop, no start.

#include "report.h"

extern "C" void SharedLibTerm(void) { ModuleStops(MODULE); }
