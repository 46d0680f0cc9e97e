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

TEST(Sync, StartAndStopHaveNothingToDo) {
  kest_test::TestAllocator allocator;
  EXPECT_TRUE(KEST::SyncInit());
  EXPECT_TRUE(KEST::SyncInit());
  KEST::SyncTerm();
  KEST::SyncTerm();
  EXPECT_EQ(0, allocator.Requests());
}

}  // namespace
