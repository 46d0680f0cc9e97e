// lock.h: the library's locks under the standard guards.

#include "kest/bridge/lock.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using namespace KEST;
using namespace std::chrono_literals;

// Lockable by std::scoped_lock of several, which tries?
template <typename T, typename = void>
constexpr bool kCanTry = false;
template <typename T>
constexpr bool kCanTry<T, std::void_t<decltype(std::declval<T&>().try_lock())>> = true;
static_assert(!kCanTry<TLockable> && !kCanTry<TMutex>);
static_assert(!std::is_copy_constructible_v<TMutex> && !std::is_copy_constructible_v<TCondition>);

constexpr int kThreads = 4, kRounds = 20000;

// Adds under a guard from several threads; without exclusion counts are lost.
template <typename TAdd>
int CountWith(TAdd add) {
  int count = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) add(count);
    });
  }
  for (std::thread& thread : threads) thread.join();
  return count;
}

TEST(Lock, StandardGuardsExclude) {
  TCritSec critSec;
  ASSERT_EQ(0, critSec.Init());
  TCondVar condVar;
  ASSERT_EQ(0, condVar.Init());
  TMutex mutex;
  TCondition condition;
  EXPECT_EQ(kThreads * kRounds, CountWith([&](int& count) {
              TLockable lockable(critSec);
              std::lock_guard<TLockable> guard(lockable);
              ++count;
            }));
  EXPECT_EQ(kThreads * kRounds, CountWith([&](int& count) {
              TLockable lockable(condVar);
              std::unique_lock<TLockable> guard(lockable);
              ++count;
            }));
  EXPECT_EQ(kThreads * kRounds, CountWith([&](int& count) {
              TLockGuard guard(critSec);
              ++count;
            }));
  EXPECT_EQ(kThreads * kRounds, CountWith([&](int& count) {
              std::lock_guard guard(mutex);
              ++count;
            }));
  EXPECT_EQ(kThreads * kRounds, CountWith([&](int& count) {
              std::scoped_lock guard(condition);
              ++count;
            }));
  EXPECT_EQ(0, condVar.Term());
  EXPECT_EQ(0, critSec.Term());
}

TEST(Lock, WaitUntilLooksAgain) {
  TCondition condition;
  int step = 0;
  std::thread other([&] {
    for (int i = 0; i < 1000; ++i) {
      std::unique_lock<TCondition> lock(condition);
      WaitUntil(condition, [&] { return step % 2 == 1; });
      ++step;
      condition.Signal();
    }
  });
  for (int i = 0; i < 1000; ++i) {
    TLockGuard lock(condition);
    ++step;
    condition.Signal();
    WaitUntil(condition, [&] { return step % 2 == 0; });
  }
  other.join();
  EXPECT_EQ(2000, step);
}

// Signals that change nothing are reasons to look, not to go on.
TEST(Lock, WaitUntilIsNotTakenInBySignals) {
  TCondition condition;
  int looks = 0;
  bool ready = false, over = false;
  std::unique_lock<TCondition> lock(condition);
  std::thread other([&] {
    for (bool done = false; !done;) {
      TLockGuard guard(condition);
      ready = looks >= 5;
      done = ready || over;
      condition.Signal();
    }
  });
  WaitUntil(condition, [&] {
    ++looks;
    return ready;
  });
  EXPECT_TRUE(ready);
  over = true;
  lock.unlock();
  other.join();
}

TEST(Lock, WaitForEndsInTime) {
  TCondition condition;
  std::lock_guard<TCondition> lock(condition);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(WaitFor(condition, 30ms, [] { return false; }));
  EXPECT_LE(30ms, std::chrono::steady_clock::now() - start);
  // None of these waits; a time that is no number is none either.
  EXPECT_TRUE(WaitFor(condition, 24h * 365 * 300000, [] { return true; }));
  EXPECT_FALSE(WaitFor(condition, 0s, [] { return false; }));
  EXPECT_FALSE(WaitFor(condition, -1h, [] { return false; }));
  EXPECT_FALSE(WaitFor(condition, std::chrono::duration<double>(-1e300), [] { return false; }));
  EXPECT_FALSE(
      WaitFor(condition, std::chrono::duration<double>(0.0 / 1e-300 * 0), [] { return false; }));
}

TEST(Lock, WaitForSeesWhatAnotherThreadDoes) {
  TCondition condition;
  bool ready = false;
  std::thread other;
  {
    std::unique_lock<TCondition> lock(condition);
    other = std::thread([&] {
      TLockGuard guard(condition);
      ready = true;
      condition.Signal();
    });
    EXPECT_TRUE(WaitFor(condition, std::chrono::duration<double>(1e300), [&] { return ready; }));
  }
  other.join();
}

}  // namespace
