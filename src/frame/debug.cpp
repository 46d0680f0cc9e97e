// The debugging entry points. They are part of the interface so that one application source serves
// every build of the library; in this build they accept their arguments and do nothing.

#include "kest/frame.h"

extern "C" {

void KestSetAssertProc(void (*)(const char*, const char*, int)) {}
void KestSetDebugStringProc(void (*)(const char*)) {}
void KestAssert(const char*, const char*, int) {}
void KestTrace(const char*, ...) {}
void KestTraceEx(unsigned int, const char*, ...) {}
void KestDumpMem(const void*, unsigned int) {}
void KestDebugBreak(void) {}

int KestIsValidAddress(const void*) { return 1; }

int KestGetDebugSetting(const void*, int defaultValue) { return defaultValue; }

}  // extern "C"

namespace KEST {

bool DebugInit() { return true; }
void DebugTerm() {}

}  // namespace KEST
