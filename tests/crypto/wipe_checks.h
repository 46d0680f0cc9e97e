// Allocator hooks that look into every block that comes back, for memory that held a secret.

#ifndef KEST_TESTS_CRYPTO_WIPE_CHECKS_H
#define KEST_TESTS_CRYPTO_WIPE_CHECKS_H

#include <stdlib.h>
#include <string.h>

#include <map>

#include "kest/frame.h"

namespace kest_test {

// Installs the hooks for its lifetime. Blocks have to come and go within it, and are not resized.
class WipeChecker {
 public:
  WipeChecker() {
    KEST::SAllocator hooks = {Alloc, Realloc, Free};
    KEST::MemInit(&hooks);
  }
  ~WipeChecker() { KEST::MemTerm(); }
  WipeChecker(const WipeChecker&) = delete;
  WipeChecker& operator=(const WipeChecker&) = delete;

  int Freed() const { return s_freed; }
  // Blocks that were freed with anything but zeros in them.
  int Dirty() const { return s_dirty; }

 private:
  static void* Alloc(unsigned int size) {
    void* block = malloc(size);
    memset(block, 0xCC, size);
    s_sizes[block] = size;
    return block;
  }
  static void* Realloc(void*, unsigned int) { return nullptr; }
  static void Free(void* block) {
    if (block == nullptr) return;
    const unsigned char* bytes = static_cast<unsigned char*>(block);
    const size_t size = s_sizes[block];
    size_t zeros = 0;
    while (zeros < size && bytes[zeros] == 0) ++zeros;
    s_dirty += zeros < size ? 1 : 0;
    ++s_freed;
    s_sizes.erase(block);
    free(block);
  }

  static inline std::map<void*, size_t> s_sizes;
  static inline int s_freed, s_dirty;
};

}  // namespace kest_test

#endif  // KEST_TESTS_CRYPTO_WIPE_CHECKS_H
