// Allocator hooks that tell how much memory is in use at once.

#ifndef KEST_TESTS_CRYPTO_MEMORY_METER_H
#define KEST_TESTS_CRYPTO_MEMORY_METER_H

#include <stddef.h>
#include <stdlib.h>

#include <algorithm>
#include <map>

#include "kest/frame.h"

namespace kest_test {

// Installs the hooks for its lifetime. Blocks have to come and go within it, and are not resized.
class MemoryMeter {
 public:
  MemoryMeter() {
    s_bytes = s_most = 0;
    KEST::SAllocator hooks = {Alloc, Realloc, Free};
    KEST::MemInit(&hooks);
  }
  ~MemoryMeter() { KEST::MemTerm(); }
  MemoryMeter(const MemoryMeter&) = delete;
  MemoryMeter& operator=(const MemoryMeter&) = delete;

  // The most bytes that were asked for and not yet given back.
  size_t Most() const { return s_most; }

 private:
  static void* Alloc(unsigned int size) {
    void* block = malloc(size);
    s_sizes[block] = size;
    s_bytes += size;
    s_most = std::max(s_most, s_bytes);
    return block;
  }
  static void* Realloc(void*, unsigned int) { return nullptr; }
  static void Free(void* block) {
    if (block == nullptr) return;
    s_bytes -= s_sizes[block];
    s_sizes.erase(block);
    free(block);
  }

  static inline std::map<void*, size_t> s_sizes;
  static inline size_t s_bytes, s_most;
};

}  // namespace kest_test

#endif  // KEST_TESTS_CRYPTO_MEMORY_METER_H
