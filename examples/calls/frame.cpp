// The calls of kest/frame.h, and KestGetVersion.

#include "kest/frame.h"

#include <string.h>

#include "check.h"
#include "kest/kest.h"

//! [hooks]
// Hooks of a host that counts its blocks.
static int s_blocks = 0;
static void* Take(unsigned int size) {
  void* block = malloc(size);
  if (block != nullptr) ++s_blocks;
  return block;
}
static void* Change(void* block, unsigned int size) {
  if (block == nullptr) return Take(size);
  return realloc(block, size);
}
static void Give(void* block) {
  if (block != nullptr) --s_blocks;
  free(block);
}

static bool RunWithHooks() {
  KEST::SAllocator hooks = {Take, Change, Give};
  if (!KestInitialize(&hooks)) return false;
  // The program. Every block that the library takes comes from Take.
  KestUninitialize();
  return s_blocks == 0;
}
//! [hooks]

//! [debugging]
static void OnAssert(const char*, const char*, int) { Check(false); }  // never called
static void OnText(const char*) { Check(false); }                      // never called
//! [debugging]

int main() {
  Check(RunWithHooks());

  //! [start-stop]
  if (!KestInitialize(nullptr)) return 1;  // with malloc, realloc and free
  Check(strcmp(KestGetVersion(), KEST_VERSION_STRING) == 0);
  //! [start-stop]

  //! [memory]
  char* block = static_cast<char*>(KestMemAlloc(16));
  Check(block != nullptr);
  block = static_cast<char*>(KestMemRealloc(block, 32));
  KestMemFree(block);
  block = static_cast<char*>(KestMemDebugAlloc(16, __FILE__, __LINE__));
  block = static_cast<char*>(KestMemDebugRealloc(block, 32, __FILE__, __LINE__));
  KestMemFree(block);
  Check(KestMemGetTotalSize() == 0);  // nothing is counted
  //! [memory]

  //! [debugging]
  KestSetAssertProc(OnAssert);
  KestSetDebugStringProc(OnText);
  KestAssert("size > 0", __FILE__, __LINE__);  // nothing happens in any of these
  KestTrace("%d blocks\n", 3);
  KestTraceEx(1, "%d blocks\n", 3);
  KestDumpMem("abc", 3);
  KestDebugBreak();
  Check(KestIsValidAddress(nullptr) == 1);
  Check(KestGetDebugSetting("level", 5) == 5);
  //! [debugging]

  //! [module]
  Check(KEST::ModuleInit(nullptr));
  Check(KEST::ModuleGetInstance() == nullptr);
  Check(KEST::ModuleGetFileSpec().IsEmpty());  // SharedLibInit has not been called
  KEST::ModuleTerm();
  //! [module]

  //! [stop]
  KestUninitialize();  // one for each KestInitialize
  //! [stop]
  puts("as shown");
  return 0;
}
