#include "frame/default_hooks.h"
#include "frame/layout.h"
#include "kest/frame.h"

#include <stdlib.h>

namespace {

void* DefaultAlloc(unsigned int size) { return malloc(size); }
void* DefaultRealloc(void* block, unsigned int size) { return realloc(block, size); }
void DefaultFree(void* block) { free(block); }

// The client's three hooks and two reserved words, which stay null.
struct SHooks {
  KEST::SAllocator hooks;
  void* reserved[2];
};

KEST_SIZE_IS(KEST::SAllocator, 12, 24);
KEST_FIELD_AT(KEST::SAllocator, alloc, 0, 0);
KEST_FIELD_AT(KEST::SAllocator, realloc, 4, 8);
KEST_FIELD_AT(KEST::SAllocator, free, 8, 16);
KEST_SIZE_IS(SHooks, 20, 40);

constexpr SHooks kDefaults = {{DefaultAlloc, DefaultRealloc, DefaultFree}, {nullptr, nullptr}};

// Initialised statically: a module's entry function allocates before KestInitialize has run.
SHooks s_current = kDefaults;

}  // namespace

extern "C" {

void* KestMemAlloc(unsigned int size) { return s_current.hooks.alloc(size); }

void* KestMemRealloc(void* block, unsigned int size) {
  return s_current.hooks.realloc(block, size);
}

void KestMemFree(void* block) { s_current.hooks.free(block); }

void* KestMemDebugAlloc(unsigned int size, ...) { return KestMemAlloc(size); }

void* KestMemDebugRealloc(void* block, unsigned int size, ...) {
  return KestMemRealloc(block, size);
}

unsigned int KestMemGetTotalSize(void) { return 0; }

}  // extern "C"

namespace KEST {

bool MemInit(SAllocator* allocator) {
  if (allocator != nullptr && allocator->alloc != nullptr && allocator->realloc != nullptr &&
      allocator->free != nullptr) {
    s_current.hooks = *allocator;
  }
  return true;
}

void MemTerm() { s_current = kDefaults; }

bool UsesDefaultHooks() { return s_current.hooks.alloc == DefaultAlloc; }

}  // namespace KEST
