// What the modules that the tests load tell the test program, which defines these functions.
// MODULE is the name that the build gave to the module: one source makes several.

#ifndef KEST_TESTS_FILE_MODULES_REPORT_H
#define KEST_TESTS_FILE_MODULES_REPORT_H

extern "C" {

// The result is what SharedLibInit returns.
int ModuleStarts(const char* module, const char* path);
void ModuleStops(const char* module);
void ModuleIsUnloaded(const char* module);

// Something to look up.
const char* ModuleName(void) { return MODULE; }

}  // extern "C"

__attribute__((destructor)) static void Unload() { ModuleIsUnloaded(MODULE); }

#endif  // KEST_TESTS_FILE_MODULES_REPORT_H
