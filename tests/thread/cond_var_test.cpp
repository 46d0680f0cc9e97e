#include <errno.h>

#include <chrono>
#include <thread>
#include <type_traits>
#include <vector>

#include "kest/thread.h"
#include "support/test_allocator.h"

namespace {

static_assert(std::is_base_of_v<KEST::TCritSec, KEST::TCondVar>);
static_assert(std::is_trivially_default_constructible_v<KEST::TCondVar>, "fits static storage");

// Reaches the mutex, to ask without waiting.
struct OpenCondVar : KEST::TCondVar {
  int TryLock() { return pthread_mutex_trylock(&mutex); }
};

class CondVar : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(0, signal.Init()); }
  void TearDown() override { EXPECT_EQ(0, signal.Term()); }
  OpenCondVar signal;
};

TEST_F(CondVar, LocksItsOwnMutex) {
  EXPECT_EQ(0, signal.Lock());
  EXPECT_EQ(EBUSY, signal.TryLock());
  EXPECT_EQ(0, signal.Unlock());
  EXPECT_EQ(0, signal.TryLock());
  EXPECT_EQ(0, signal.Unlock());
}

TEST_F(CondVar, StartsAgainAfterTerm) {
  EXPECT_EQ(0, signal.Term());
  EXPECT_EQ(0, signal.Init());
}

TEST_F(CondVar, WaitOfZeroFailsAtOnce) {
  ASSERT_EQ(0, signal.Lock());
  EXPECT_FALSE(signal.Wait(0));
  EXPECT_EQ(EBUSY, signal.TryLock()) << "the lock is held again";
  EXPECT_EQ(0, signal.Unlock());
}

TEST_F(CondVar, TimedWaitFailsAfterItsTime) {
  ASSERT_EQ(0, signal.Lock());
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(signal.Wait(30));
  // The deadline is wall clock time, which is slewed now and then.
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(25));
  EXPECT_EQ(EBUSY, signal.TryLock());
  EXPECT_EQ(0, signal.Unlock());
}

TEST_F(CondVar, ASignalWithoutAWaiterIsLost) {
  EXPECT_EQ(0, signal.Signal());
  ASSERT_EQ(0, signal.Lock());
  EXPECT_FALSE(signal.Wait(0));
  EXPECT_EQ(0, signal.Unlock());
}

// The signaller gets the lock only because the wait gives it up.
TEST_F(CondVar, WaitEndsWithAnotherThreadsSignal) {
  for (int ms : {-1, -1000, 100000000}) {
    for (bool lockHeld : {true, false}) {
      SCOPED_TRACE(ms);
      bool ready = false;
      ASSERT_EQ(0, signal.Lock());
      std::thread other([&] {
        signal.Lock();
        ready = true;
        EXPECT_EQ(0, lockHeld ? signal.Signal() : 0);
        signal.Unlock();
        EXPECT_EQ(0, lockHeld ? 0 : signal.Signal());
      });
      while (!ready) EXPECT_TRUE(signal.Wait(ms));
      EXPECT_EQ(EBUSY, signal.TryLock());
      EXPECT_EQ(0, signal.Unlock());
      other.join();
    }
  }
}

TEST_F(CondVar, ASignalWakesOneWaiter) {
  constexpr int kWaiters = 3;
  int waiting = 0, woken = 0, allowed = 0;
  std::vector<std::thread> waiters;
  for (int i = 0; i < kWaiters; ++i) {
    waiters.emplace_back([&] {
      signal.Lock();
      ++waiting;
      while (allowed == 0) signal.Wait(-1);
      --allowed;
      ++woken;
      signal.Unlock();
    });
  }
  const auto read = [&](const int& value) {
    signal.Lock();
    const int result = value;
    signal.Unlock();
    return result;
  };
  while (read(waiting) != kWaiters) sched_yield();
  for (int n = 1; n <= kWaiters; ++n) {
    signal.Lock();
    allowed = 1;
    EXPECT_EQ(0, signal.Signal());
    signal.Unlock();
    while (read(woken) != n) sched_yield();
    EXPECT_EQ(0, read(allowed));
  }
  for (std::thread& waiter : waiters) waiter.join();
}

TEST_F(CondVar, HandsOverBackAndForth) {
  constexpr int kRounds = 3000;
  KEST::TCondVar reply;
  ASSERT_EQ(0, reply.Init());
  int turn = 0;  // guarded by signal's mutex; reply only wakes
  std::thread other([&] {
    for (int i = 0; i < kRounds; ++i) {
      signal.Lock();
      while (turn != 2 * i + 1) signal.Wait(-1);
      ++turn;
      signal.Unlock();
      reply.Lock();
      reply.Signal();
      reply.Unlock();
    }
  });
  const auto done = [&](int i) {
    signal.Lock();
    const bool result = turn == 2 * i + 2;
    signal.Unlock();
    return result;
  };
  for (int i = 0; i < kRounds; ++i) {
    signal.Lock();
    ++turn;
    signal.Signal();
    signal.Unlock();
    reply.Lock();
    while (!done(i)) reply.Wait(-1);
    reply.Unlock();
  }
  other.join();
  EXPECT_EQ(2 * kRounds, turn);
  EXPECT_EQ(0, reply.Term());
}

TEST_F(CondVar, TakesNoMemory) {
  kest_test::TestAllocator allocator;
  KEST::TCondVar other;
  other.Init();
  other.Lock();
  other.Wait(0);
  other.Signal();
  other.Unlock();
  other.Term();
  EXPECT_EQ(0, allocator.Requests());
}

}  // namespace
