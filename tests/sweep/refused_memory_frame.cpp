// Operations of kest/frame.h that ask for memory.

#include "kest/frame.h"

#include <dlfcn.h>
#include <string.h>

#include "sweep/refused_memory.h"

using namespace KEST;

namespace kest_test {

namespace {

// A block taken and given back.
auto Taken(void* (*take)(unsigned int size)) {
  return [take](Attempts& attempts) {
    attempts([&] {
      void* const block = take(100);
      KestMemFree(block);
      return Said(block);
    });
  };
}

// A block that was to be made larger, and what is still in it.
auto Grown(void* (*grow)(void* block, unsigned int size)) {
  return [grow](Attempts& attempts) {
    void* block = nullptr;
    attempts(
        [&] {
          KestMemFree(block);
          block = KestMemAlloc(3);
          memcpy(block, "ab", 3);
        },
        [&] {
          void* const larger = grow(block, 100);
          if (larger != nullptr) block = larger;
          return Said(larger, static_cast<const char*>(block));
        });
    KestMemFree(block);
  };
}

// The operator that the library exports; this program's own is the standard library's. Where the
// library was built without, what it would call.
auto Operator(const char* name) {
  void* const library = dlopen("libKest.so.1", RTLD_LAZY | RTLD_NOLOAD);
  void* const address = dlsym(library, name);
  Dl_info owner = {}, self = {};
  dladdr(address, &owner);
  dladdr(dlsym(library, "KestMemAlloc"), &self);
  dlclose(library);
  using New = void* (*)(size_t);
  return [take = reinterpret_cast<New>(owner.dli_fbase == self.dli_fbase ? address : nullptr)](
             Attempts& attempts) {
    attempts([&] {
      void* const block = take != nullptr ? take(100) : KestMemAlloc(100);
      KestMemFree(block);
      return Said(block);
    });
  };
}

}  // namespace

std::vector<RefusedMemoryRow> FrameRows() {
  const bool wide = sizeof(size_t) != 4;
  return {
      {{"KestInitialize"},
       "1",
       {"0"},
       [](Attempts& attempts) {
         SAllocator hooks = attempts.allocator.Hooks();
         int started = 0;
         attempts(
             [&] {
               if (started != 0) KestUninitialize();
             },
             [&] {
               started = KestInitialize(&hooks);
               return Said(started);
             });
         KestUninitialize();
       }},
      {{"SharedLibInit", "KEST::ModuleGetFileSpec()"},
       "true /m.so",
       {"true "},
       [](Attempts& attempts) {
         attempts([] {
           const bool started = SharedLibInit("/m.so");
           const std::string said = Said(started, ModuleGetFileSpec());
           SharedLibTerm();
           return said;
         });
       }},

      {{"KestMemAlloc"}, "there", {"null"}, Taken(KestMemAlloc)},
      {{"KestMemDebugAlloc"}, "there", {"null"}, Taken([](unsigned int size) {
         return KestMemDebugAlloc(size, "file", 1);
       })},
      {{"KestMemRealloc"}, "there ab", {"null ab"}, Grown(KestMemRealloc)},
      {{"KestMemDebugRealloc"}, "there ab", {"null ab"}, Grown([](void* block, unsigned int size) {
         return KestMemDebugRealloc(block, size, "file", 1);
       })},
      {{"operator new(unsigned int)"}, "there", {"null"}, Operator(wide ? "_Znwm" : "_Znwj")},
      {{"operator new[](unsigned int)"}, "there", {"null"}, Operator(wide ? "_Znam" : "_Znaj")},
  };
}

}  // namespace kest_test
