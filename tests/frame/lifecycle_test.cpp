#include "kest/digest.h"
#include "kest/frame.h"
#include "kest/message.h"
#include "kest/thread.h"
#include "support/test_allocator.h"

namespace {

// The library runs while it has a message queue.
bool IsRunning() { return KestPostMessage(1, nullptr, nullptr); }

TEST(Lifecycle, RunsFromTheFirstInitializeToTheLastUninitialize) {
  EXPECT_FALSE(IsRunning());
  EXPECT_EQ(1, KestInitialize(nullptr));
  EXPECT_TRUE(IsRunning());
  EXPECT_EQ(1, KestInitialize(nullptr));
  KestUninitialize();
  EXPECT_TRUE(IsRunning());
  KestUninitialize();
  EXPECT_FALSE(IsRunning());
}

TEST(Lifecycle, IgnoresAnUninitializeThatNothingBalances) {
  KestUninitialize();
  EXPECT_EQ(1, KestInitialize(nullptr));
  KestUninitialize();
  KestUninitialize();
  KestUninitialize();
  EXPECT_EQ(1, KestInitialize(nullptr));
  EXPECT_TRUE(IsRunning()) << "the surplus calls were not counted";
  KestUninitialize();
  EXPECT_FALSE(IsRunning());
}

TEST(Lifecycle, StartsAgainAfterAFullStop) {
  for (int round = 0; round < 3; ++round) {
    SCOPED_TRACE(round);
    ASSERT_EQ(1, KestInitialize(nullptr));
    EXPECT_TRUE(IsRunning());
    EXPECT_NE(nullptr, KestTlsAddData(5, 16));
    KestUninitialize();
    EXPECT_FALSE(IsRunning());
    EXPECT_EQ(nullptr, KestTlsGetData(5));
  }
}

TEST(Lifecycle, AnUninitializeThatIsNotTheLastFreesTheThreadsData) {
  ASSERT_EQ(1, KestInitialize(nullptr));
  ASSERT_EQ(1, KestInitialize(nullptr));
  ASSERT_NE(nullptr, KestTlsAddData(5, 16));
  KestUninitialize();
  EXPECT_EQ(nullptr, KestTlsGetData(5));
  KestUninitialize();
}

TEST(Lifecycle, UsesTheHostsAllocatorFromTheFirstStartToTheLastStop) {
  kest_test::TestAllocator counting;
  KEST::MemTerm();  // TestAllocator's hooks are to come in through KestInitialize
  KEST::SAllocator hooks = counting.Hooks();
  ASSERT_EQ(1, KestInitialize(&hooks));
  const int atStart = counting.Requests();
  EXPECT_GT(atStart, 0) << "the queue and the generator come from the hooks";
  KestMemFree(KestMemAlloc(1));
  EXPECT_EQ(atStart + 1, counting.Requests());
  KestUninitialize();
  EXPECT_EQ(0, counting.Live());
  KestMemFree(KestMemAlloc(1));
  EXPECT_EQ(atStart + 1, counting.Requests()) << "malloc serves again";
}

TEST(Lifecycle, ReadsTheAllocatorOnlyWhenItStartsTheLibrary) {
  kest_test::TestAllocator counting;
  KEST::MemTerm();
  ASSERT_EQ(1, KestInitialize(nullptr));
  KEST::SAllocator hooks = counting.Hooks();
  ASSERT_EQ(1, KestInitialize(&hooks));
  KestMemFree(KestMemAlloc(1));
  EXPECT_EQ(0, counting.Requests());
  KestUninitialize();
  KestUninitialize();
}

TEST(Lifecycle, AnIncompleteAllocatorIsIgnoredAsAWhole) {
  kest_test::TestAllocator counting;
  KEST::MemTerm();
  for (int missing = 0; missing < 3; ++missing) {
    SCOPED_TRACE(missing);
    KEST::SAllocator hooks = counting.Hooks();
    if (missing == 0) hooks.alloc = nullptr;
    if (missing == 1) hooks.realloc = nullptr;
    if (missing == 2) hooks.free = nullptr;
    EXPECT_EQ(1, KestInitialize(&hooks));
    KestMemFree(KestMemAlloc(1));
    EXPECT_EQ(0, counting.Requests());
    KestUninitialize();
  }
}

// Nothing is undone, the hooks least of all.
TEST(Lifecycle, AFailedStartLeavesItsHooksInForce) {
  kest_test::TestAllocator counting;
  KEST::MemTerm();
  KEST::SAllocator hooks = counting.Hooks();
  counting.Refuse(1, kest_test::TestAllocator::kFromThereOn);
  ASSERT_EQ(0, KestInitialize(&hooks));
  counting.Reset();
  ASSERT_EQ(1, KestInitialize(nullptr));
  EXPECT_GT(counting.Requests(), 0);
  KestUninitialize();
  EXPECT_EQ(0, counting.Live());
}

TEST(Lifecycle, AFailedStartCanBeTriedAgainWithoutALeak) {
  kest_test::TestAllocator counting;
  KEST::MemTerm();
  KEST::SAllocator hooks = counting.Hooks();
  for (int n = 1;; ++n) {
    SCOPED_TRACE(n);
    counting.Reset();
    counting.Refuse(n, kest_test::TestAllocator::kOnlyOne);
    if (KestInitialize(&hooks) == 1) {
      EXPECT_GT(n, 1) << "nothing was asked for";
      break;
    }
    EXPECT_EQ(1, counting.Refused());
    counting.RefuseNone();
    ASSERT_EQ(1, KestInitialize(&hooks));
    EXPECT_TRUE(IsRunning());
    KestUninitialize();
    EXPECT_FALSE(IsRunning()) << "the failed start was not counted";
    EXPECT_EQ(0, counting.Live());
  }
  KestUninitialize();
  EXPECT_EQ(0, counting.Live());
}

}  // namespace
