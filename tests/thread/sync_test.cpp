#include <limits.h>

#include "kest/thread.h"
#include "support/test_allocator.h"

namespace {

TEST(Sync, CountersAddAndSubtractOne) {
  // Columns: the value before, after an increment, after a decrement. They wrap.
  struct Row {
    int before, incremented, decremented;
  };
  const Row rows[] = {
      {41, 42, 40},
      {0, 1, -1},
      {-1, 0, -2},
      {1, 2, 0},
      {INT_MAX, INT_MIN, INT_MAX - 1},
      {INT_MIN, INT_MIN + 1, INT_MAX},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.before);
    int value = row.before;
    EXPECT_EQ(row.incremented, KestAtomicIncrement(&value));
    EXPECT_EQ(row.incremented, value);
    value = row.before;
    EXPECT_EQ(row.decremented, KestAtomicDecrement(&value));
    EXPECT_EQ(row.decremented, value);
  }
}

// Callers serialise their calls. Those that do not lose counts, and thread sanitizer sees no race.
TEST(Sync, CallersWithoutALockLoseCountsAtMost) {
  int value = 0;
  const auto count = [](void* counter) {
    for (int i = 0; i < 1000; ++i) KestAtomicIncrement(static_cast<int*>(counter));
    return 0;
  };
  KEST::TThread first, second;
  ASSERT_TRUE(first.Create(count, &value, false));
  ASSERT_TRUE(second.Create(count, &value, false));
  EXPECT_TRUE(first.WaitForExit(nullptr));
  EXPECT_TRUE(second.WaitForExit(nullptr));
  EXPECT_LT(0, value);
  EXPECT_GE(2000, value);
}

TEST(Sync, StartAndStopHaveNothingToDo) {
  kest_test::TestAllocator allocator;
  EXPECT_TRUE(KEST::SyncInit());
  EXPECT_TRUE(KEST::SyncInit());
  KEST::SyncTerm();
  KEST::SyncTerm();
  EXPECT_EQ(0, allocator.Requests());
}

}  // namespace
