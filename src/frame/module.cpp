// The entry pair that a module loader calls, and what a module knows of itself.

#include <limits.h>

#include "kest/frame.h"
#include "kest/string.h"

namespace {

// From KestMemAlloc. SharedLibTerm frees it and leaves the pointer.
char* s_modulePath = nullptr;

// Never written: ModuleInit ignores the handle that it is given.
void* const s_moduleInstance = nullptr;

// Through the slots, so that a host that replaced them decides how a path is measured and copied.
char* CopyPath(const char* path) {
  if (path == nullptr) return nullptr;
  const size_t length = kest_strlen(path);
  if (length >= UINT_MAX) return nullptr;
  char* copy = static_cast<char*>(KestMemAlloc(static_cast<unsigned int>(length) + 1));
  if (copy != nullptr) kest_strcpy(copy, path);
  return copy;
}

}  // namespace

extern "C" {

bool SharedLibInit(const char* path) {
  s_modulePath = CopyPath(path);
  return KEST::ModuleInit(reinterpret_cast<void*>(1));
}

void SharedLibTerm(void) {
  KEST::ModuleTerm();
  KestMemFree(s_modulePath);
}

}  // extern "C"

namespace KEST {

bool ModuleInit(void*) { return true; }

void ModuleTerm() {}

void* ModuleGetInstance() { return s_moduleInstance; }

TBstr ModuleGetFileSpec() { return TBstr(s_modulePath); }

}  // namespace KEST
