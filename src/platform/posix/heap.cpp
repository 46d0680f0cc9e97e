// What the C library's heap tells of its blocks.

#include <dlfcn.h>
#include <link.h>
#include <malloc.h>

#include "frame/default_hooks.h"

namespace {

// The module that a function is in, or null.
const void* ModuleOf(void* function) {
  void* module = nullptr;
  Dl_info info;
  return dladdr1(function, &info, &module, RTLD_DL_LINKMAP) != 0 ? module : nullptr;
}

size_t NoRoom(void*) { return 0; }

}  // namespace

namespace KEST {

RoomFunction* InternalRoomFunction(void (*release)(void* block)) {
  const void* const module = ModuleOf(reinterpret_cast<void*>(release));
  const bool knows = module == ModuleOf(reinterpret_cast<void*>(malloc_usable_size));
  return module != nullptr && knows ? malloc_usable_size : NoRoom;
}

}  // namespace KEST
