// A module: the entry pair, and a function for its host.

#include <stdio.h>

#include "kest/file.h"
#include "kest/frame.h"

using KEST::TBstr;

extern "C" {

// The path belongs to the loader; a module that wants it later copies it. Without memory this one
// is not ready.
KEST_API bool SharedLibInit(const char* path) {
  const TBstr name = KEST::TFile::FileNameFromFullSpec(path);
  return !name.IsEmpty() && printf("%s starts\n", name.GetMultibyteString()) >= 0;
}

KEST_API void SharedLibTerm(void) { puts("the module stops"); }

KEST_API int Greet(const char* name) { return printf("Hello, %s\n", name); }

}  // extern "C"
