// Modules: greeter.so, a shared object built beside this program, is loaded and called.
// usage: modules DIRECTORY

#include <stdio.h>

#include "kest/file.h"
#include "kest/frame.h"

using KEST::TBstr;
using KEST::TLibrary;

using GreetProc = int (*)(const char* name);

static bool Run(const TBstr& directory) {
  // With its directory: a bare name would be loaded from wherever the program was started.
  TBstr name("greeter.");
  name += TLibrary::kLibraryExtension;
  const TBstr spec = KEST::TFile::AppendFileNameToSpec(directory, name);

  TLibrary library;
  if (!library.Load(spec)) {
    printf("%s is missing, or is no module, or is not ready\n", spec.GetMultibyteString());
    return false;
  }
  // The caller knows the function's type; the loader does not.
  const GreetProc greet = reinterpret_cast<GreetProc>(library.GetProcAddress("Greet"));
  if (greet == nullptr || greet("world") < 0) return false;

  return library.Free();  // the destructor would do, but could not tell of a failure
}

int main(int argc, char** argv) {
  if (argc != 2 || !KestInitialize(nullptr)) return 1;
  const bool done = Run(argv[1]);
  KestUninitialize();
  return done ? 0 : 1;
}
