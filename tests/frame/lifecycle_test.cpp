#include <stdlib.h>

#include <thread>

#include "kest/digest.h"
#include "kest/frame.h"
#include "kest/message.h"
#include "kest/string.h"
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

// A thread's slot still holds the map that its stop has freed.
TEST(Lifecycle, AThreadThatStartsAgainStartsAfresh) {
  ASSERT_EQ(1, KestInitialize(nullptr));
  const auto rounds = [] {
    for (int round = 0; round < 3; ++round) {
      EXPECT_EQ(1, KestInitialize(nullptr));
      EXPECT_EQ(nullptr, KestTlsGetData(5));
      EXPECT_NE(nullptr, KestTlsAddData(5, 16));
      KestUninitialize();
      EXPECT_EQ(nullptr, KestTlsGetData(5));
    }
  };
  rounds();
  std::thread(rounds).join();
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

// Hooks that write their number before each block, and see it again when the block comes back.
template <int number>
struct Tagged {
  static constexpr size_t kHeader = 16;
  static inline int live = 0;

  static void* Alloc(unsigned int size) { return Tag(malloc(kHeader + size), 1); }
  static void* Realloc(void* block, unsigned int size) {
    return Tag(realloc(Untag(block), kHeader + size), block == nullptr ? 1 : 0);
  }
  static void Free(void* block) {
    if (block != nullptr) --live;
    free(Untag(block));
  }
  static KEST::SAllocator Hooks() { return {Alloc, Realloc, Free}; }

 private:
  static void* Tag(void* place, int added) {
    live += added;
    *static_cast<int*>(place) = number;
    return static_cast<char*>(place) + kHeader;
  }
  static void* Untag(void* block) {
    if (block == nullptr) return nullptr;
    void* const place = static_cast<char*>(block) - kHeader;
    EXPECT_EQ(number, *static_cast<int*>(place)) << "a block of other hooks";
    *static_cast<int*>(place) = 0;
    return place;
  }
};

void IgnoreMessage(unsigned int, void*, void*) {}

// All that outlives a call is made by one set of hooks and given back to it, when the host keeps to
// the order: unregister, stop each thread, then the last stop.
template <int number>
void RunUnderHooks() {
  SCOPED_TRACE(number);
  KEST::SAllocator hooks = Tagged<number>::Hooks(), others = Tagged<number + 1>::Hooks();
  ASSERT_EQ(1, KestInitialize(&hooks));
  EXPECT_TRUE(SharedLibInit("/a/b.so"));
  EXPECT_TRUE(KestRegisterMessageCallback(5, IgnoreMessage));
  std::thread([&] {
    ASSERT_EQ(1, KestInitialize(&others)) << "and the others are not even looked at";
    EXPECT_NE(nullptr, KestTlsAddData(5, 16));
    EXPECT_TRUE(KestPostMessage(5, nullptr, nullptr));
    KestUninitialize();
  }).join();
  EXPECT_NE(nullptr, KestTlsAddData(5, 16));
  EXPECT_TRUE(KestPostMessage(5, nullptr, nullptr));
  {
    KEST::TBstr text(KEST::ModuleGetFileSpec());
    text.Format(KEST_TEXT("%s %s"), text.GetString(), text.GetString());
    EXPECT_STREQ("/a/b.so /a/b.so", text.GetMultibyteString());
  }
  EXPECT_LT(0, Tagged<number>::live);
  SharedLibTerm();
  EXPECT_TRUE(KestUnregisterMessageCallback(5));
  KestUninitialize();
  EXPECT_EQ(0, Tagged<number>::live);
}

TEST(Lifecycle, EveryBlockGoesBackToTheHooksThatMadeIt) {
  for (int round = 0; round < 2; ++round) {
    RunUnderHooks<1>();
    RunUnderHooks<2>();
    RunUnderHooks<3>();
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

// More of them than the system has keys for thread-local data.
TEST(Lifecycle, FailedStartsUseUpNoKeys) {
  kest_test::TestAllocator counting;
  counting.Refuse(1, kest_test::TestAllocator::kFromThereOn);
  for (int n = 0; n < 2000; ++n) ASSERT_EQ(0, KestInitialize(nullptr));
  counting.RefuseNone();
  ASSERT_EQ(1, KestInitialize(nullptr));
  EXPECT_NE(nullptr, KestTlsAddData(5, 16));
  KestUninitialize();
  EXPECT_EQ(0, counting.Live());
}

}  // namespace
