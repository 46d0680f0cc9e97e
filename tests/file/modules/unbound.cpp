// Calls a function that exists nowhere, but not while it is loaded.

#include "report.h"

extern "C" {

void DefinedNowhere(void);

void CallsWhatIsMissing(void) { DefinedNowhere(); }

int SharedLibInit(const char* path) { return ModuleStarts(MODULE, path); }

}  // extern "C"
