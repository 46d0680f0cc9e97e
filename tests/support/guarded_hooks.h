// Allocator hooks for tests whose blocks end where a page begins that cannot be touched: a write
// behind a block ends the test.

#ifndef KEST_TESTS_SUPPORT_GUARDED_HOOKS_H
#define KEST_TESTS_SUPPORT_GUARDED_HOOKS_H

#include <string.h>

#include <algorithm>
#include <map>
#include <memory>

#include "kest/frame.h"
#include "support/guarded_block.h"

namespace kest_test {

// Installs the hooks for its lifetime, then the defaults again. One at a time, in one thread;
// blocks are not to outlive it.
class GuardedHooks {
 public:
  GuardedHooks() {
    KEST::SAllocator hooks = {Alloc, Realloc, Free};
    KEST::MemInit(&hooks);
  }
  ~GuardedHooks() {
    KEST::MemTerm();
    EXPECT_TRUE(s_blocks.empty()) << "not freed";
    s_blocks.clear();
  }
  GuardedHooks(const GuardedHooks&) = delete;
  GuardedHooks& operator=(const GuardedHooks&) = delete;

 private:
  struct Block {
    std::unique_ptr<GuardedBlock<char>> bytes;
    unsigned int size;
  };

  static void* Alloc(unsigned int size) {
    Block block = {std::make_unique<GuardedBlock<char>>(size), size};
    void* place = block.bytes->Get();
    memset(place, 0xA5, size);
    s_blocks[place] = std::move(block);
    return place;
  }
  static void* Realloc(void* block, unsigned int size) {
    void* fresh = Alloc(size);
    if (block != nullptr) memcpy(fresh, block, std::min(size, s_blocks.at(block).size));
    Free(block);
    return fresh;
  }
  static void Free(void* block) {
    if (block == nullptr) return;
    EXPECT_EQ(1u, s_blocks.erase(block));
  }

  static inline std::map<void*, Block> s_blocks;
};

}  // namespace kest_test

#endif  // KEST_TESTS_SUPPORT_GUARDED_HOOKS_H
