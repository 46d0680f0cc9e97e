// Allocator hooks for tests: they count, remember sizes, and refuse requests on demand.

#ifndef KEST_TESTS_SUPPORT_TEST_ALLOCATOR_H
#define KEST_TESTS_SUPPORT_TEST_ALLOCATOR_H

#include <gtest/gtest.h>
#include <limits.h>
#include <stdlib.h>

#include <atomic>

#include "kest/frame.h"

namespace kest_test {

// Installs the hooks for its lifetime, then the defaults again. Blocks come from malloc, so one
// taken inside the scope may be freed outside and the other way round. One at a time; the hooks
// may be called from any thread.
class TestAllocator {
 public:
  enum Mode { kOnlyOne, kFromThereOn };

  TestAllocator() {
    Reset();
    KEST::SAllocator hooks = Hooks();
    KEST::MemInit(&hooks);
  }
  ~TestAllocator() { KEST::MemTerm(); }
  TestAllocator(const TestAllocator&) = delete;
  TestAllocator& operator=(const TestAllocator&) = delete;

  // The hooks themselves, for a test that installs them its own way.
  KEST::SAllocator Hooks() const { return {Alloc, Realloc, Free}; }

  // Counts start again at 0 and nothing is refused.
  void Reset() {
    s_requests = s_live = s_lastSize = s_refuseAt = s_refused = 0;
    s_largest = UINT_MAX;
  }

  // Refuses the n-th request from now on (1 is the next): only that one, or it and all later ones.
  void Refuse(int n, Mode mode) {
    s_refuseAt = s_requests + n;
    s_mode = mode;
  }
  void RefuseNone() { s_refuseAt = 0; }
  // Refuses every request for more bytes than this.
  void RefuseAbove(unsigned int size) { s_largest = size; }

  // Calls of alloc and realloc, refused ones included.
  int Requests() const { return s_requests; }
  int Refused() const { return s_refused; }
  // Blocks taken minus blocks given back.
  int Live() const { return s_live; }
  // Bytes that the latest request asked for.
  unsigned int LastSize() const { return static_cast<unsigned int>(s_lastSize.load()); }

 private:
  static bool Grant(unsigned int size) {
    const int n = ++s_requests;
    s_lastSize = static_cast<int>(size);
    const int at = s_refuseAt;
    const bool refuse = at != 0 && (s_mode == kOnlyOne ? n == at : n >= at);
    if (!refuse && size <= s_largest) return true;
    ++s_refused;
    return false;
  }
  static void* Alloc(unsigned int size) {
    if (!Grant(size)) return nullptr;
    ++s_live;
    return malloc(size);
  }
  static void* Realloc(void* block, unsigned int size) {
    if (!Grant(size)) return nullptr;
    if (block == nullptr) ++s_live;
    return realloc(block, size);
  }
  static void Free(void* block) {
    if (block != nullptr) --s_live;
    free(block);
  }

  static inline std::atomic<int> s_requests, s_live, s_lastSize, s_refuseAt, s_refused;
  static inline std::atomic<unsigned int> s_largest;
  static inline std::atomic<Mode> s_mode;
};

// Runs operation with the n-th request refused, n = 1, 2, ... until it completes without a refusal:
// first with that one request refused, then with it and all later ones. operation takes the
// allocator, checks its own results and leaves nothing behind, which is checked here.
template <typename Operation>
void ForEachRefusedRequest(Operation operation) {
  TestAllocator allocator;
  for (TestAllocator::Mode mode : {TestAllocator::kOnlyOne, TestAllocator::kFromThereOn}) {
    for (int n = 1;; ++n) {
      allocator.Reset();
      allocator.Refuse(n, mode);
      operation(allocator);
      const bool refused = allocator.Refused() > 0;
      EXPECT_EQ(0, allocator.Live()) << "leak when request " << n << " is refused";
      if (!refused) break;
      ASSERT_LT(n, 10000) << "the operation never completes";
    }
  }
}

}  // namespace kest_test

#endif  // KEST_TESTS_SUPPORT_TEST_ALLOCATOR_H
