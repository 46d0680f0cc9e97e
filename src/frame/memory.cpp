#include "frame/default_hooks.h"
#include "frame/layout.h"
#include "kest/frame.h"

#include <stdlib.h>

#include <type_traits>

namespace {

// The C library's functions themselves where their sizes are unsigned int, which saves a call.
template <typename Size>
constexpr KEST::SAllocator DefaultHooks() {
  if constexpr (std::is_same_v<Size, unsigned int>) {
    void* (*const alloc)(Size) = malloc;
    void* (*const resize)(void*, Size) = realloc;
    return {alloc, resize, free};
  } else {
    return {[](unsigned int size) { return malloc(size); },
            [](void* block, unsigned int size) { return realloc(block, size); }, free};
  }
}

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

constexpr SHooks kDefaults = {DefaultHooks<size_t>(), {nullptr, nullptr}};

// Initialised statically: a module's entry function allocates before KestInitialize has run.
SHooks s_current = kDefaults;

size_t NoRoom(void*) { return 0; }

// Stands in until it is asked for the first time. Threads that come together find the same.
size_t FindRoom(void* block) {
  KEST::RoomFunction* const found = KEST::InternalRoomFunction(kDefaults.hooks.free);
  KEST::roomFunction.store(found, std::memory_order_relaxed);
  return found(block);
}

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
    usesDefaultHooks = false;
    hadClientHooks = true;
    roomFunction = NoRoom;
  }
  return true;
}

void MemTerm() {
  s_current = kDefaults;
  usesDefaultHooks = true;
  roomFunction = FindRoom;
}

bool usesDefaultHooks = true;
bool hadClientHooks = false;
std::atomic<RoomFunction*> roomFunction{FindRoom};

void FreeByDefault(void* block) { kDefaults.hooks.free(block); }

}  // namespace KEST
