// The global operators, exported so that a host's objects and the library's buffers share one
// heap. They differ from the standard's on purpose: a failed allocation is null, nothing throws,
// and with -fcheck-new in the host no constructor then runs.

#include <limits.h>
#include <stddef.h>

#include "kest/frame.h"

#if defined(__clang__)
#pragma clang diagnostic ignored "-Wimplicit-exception-spec-mismatch"
#endif

namespace {

void* Allocate(size_t size) {
  return size <= UINT_MAX ? KestMemAlloc(static_cast<unsigned int>(size)) : nullptr;
}

}  // namespace

KEST_API void* operator new(size_t size) { return Allocate(size); }
KEST_API void* operator new[](size_t size) { return Allocate(size); }
KEST_API void operator delete(void* block) noexcept { KestMemFree(block); }
KEST_API void operator delete[](void* block) noexcept { KestMemFree(block); }
KEST_API void operator delete(void* block, size_t) noexcept { KestMemFree(block); }
KEST_API void operator delete[](void* block, size_t) noexcept { KestMemFree(block); }
