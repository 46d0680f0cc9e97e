#include <errno.h>

#include <thread>
#include <vector>

#include "kest/thread.h"
#include "support/test_allocator.h"

namespace {

// Reaches the mutex, to ask without waiting.
struct OpenCritSec : KEST::TCritSec {
  int TryLock() { return pthread_mutex_trylock(&mutex); }
};

OpenCritSec s_static;  // no constructor to run

TEST(CritSec, LocksAndUnlocks) {
  EXPECT_EQ(0, s_static.Init());
  EXPECT_EQ(0, s_static.Lock());
  EXPECT_EQ(EBUSY, s_static.TryLock()) << "not recursive";
  EXPECT_EQ(0, s_static.Unlock());
  EXPECT_EQ(0, s_static.TryLock());
  EXPECT_EQ(0, s_static.Unlock());
  EXPECT_EQ(0, s_static.Term());
}

TEST(CritSec, StartsAgainAfterTerm) {
  KEST::TCritSec lock;
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(0, lock.Init());
    EXPECT_EQ(0, lock.Lock());
    EXPECT_EQ(0, lock.Unlock());
    EXPECT_EQ(0, lock.Term());
  }
}

TEST(CritSec, TakesNoMemory) {
  kest_test::TestAllocator allocator;
  KEST::TCritSec lock;
  lock.Init();
  lock.Lock();
  lock.Unlock();
  lock.Term();
  EXPECT_EQ(0, allocator.Requests());
}

// The counters are not atomic by themselves: under the lock no count is lost.
TEST(CritSec, KeepsThreadsApart) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 20000;
  KEST::TCritSec lock;
  ASSERT_EQ(0, lock.Init());
  int count = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) {
        lock.Lock();
        KestAtomicIncrement(&count);
        lock.Unlock();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(kThreads * kRounds, count);
  EXPECT_EQ(0, lock.Term());
}

}  // namespace
