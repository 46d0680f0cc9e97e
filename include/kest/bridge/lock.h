// The library's locks and conditions for std::lock_guard and std::unique_lock, and waits that say
// what they wait for.
//
//   Failure    A lock that cannot be taken ends the program with abort, because what follows relies
//              on it: that takes a lock that was never initialised. Nothing throws.
//   Trying     TCritSec cannot be tried, so these are BasicLockable: no std::try_lock, and no
//              std::scoped_lock of several.
//   Threads    Any; that is what they are for.
//   Example    examples/event_loop/event_loop.cpp

#ifndef KEST_BRIDGE_LOCK_H
#define KEST_BRIDGE_LOCK_H

#include <limits.h>
#include <stdlib.h>

#include <chrono>
#include <mutex>

#include "kest/thread.h"

namespace KEST {

// An initialised TCritSec or TCondVar under the names that the standard guards call. It refers to
// the lock and owns nothing:
//
//   KEST::TLockable lockable(critSec);
//   std::lock_guard<KEST::TLockable> guard(lockable);
class TLockable {
 public:
  explicit TLockable(TCritSec& lock) : critSec(&lock) {}

  void lock() {
    if (critSec->Lock() != 0) abort();
  }
  void unlock() { critSec->Unlock(); }

 private:
  TCritSec* critSec;
};

// The two lines above in one: holds the lock from here to the end of the block.
class TLockGuard {
 public:
  explicit TLockGuard(TCritSec& critSec) : lockable(critSec), guard(lockable) {}
  TLockGuard(const TLockGuard&) = delete;
  TLockGuard& operator=(const TLockGuard&) = delete;

 private:
  TLockable lockable;
  std::lock_guard<TLockable> guard;
};

// A TCritSec that is initialised and ended with the object, and a mutex for the standard guards. An
// Init that fails ends the program: the system has no memory for a lock.
class TMutex : public TCritSec {
 public:
  TMutex() {
    if (Init() != 0) abort();
  }
  ~TMutex() { Term(); }
  TMutex(const TMutex&) = delete;
  TMutex& operator=(const TMutex&) = delete;

  void lock() {
    if (Lock() != 0) abort();
  }
  void unlock() { Unlock(); }
};

// The same of a TCondVar.
class TCondition : public TCondVar {
 public:
  TCondition() {
    if (Init() != 0) abort();
  }
  ~TCondition() { Term(); }
  TCondition(const TCondition&) = delete;
  TCondition& operator=(const TCondition&) = delete;

  void lock() {
    if (Lock() != 0) abort();
  }
  void unlock() { Unlock(); }
};

// Waits until ready() is true. The caller holds the condition's lock, under which ready() is
// called; the wait gives it up. Whoever makes ready() true signals the condition.
template <typename TReady>
void WaitUntil(TCondVar& condition, TReady ready) {
  while (!ready()) condition.Wait(-1);
}

// The same for so long at most; the result is that of the last ready(). A negative time is none.
// The end is set by the steady clock, but each wait by wall clock time: when that is set back
// meanwhile, the wait is longer.
template <typename TRep, typename TPeriod, typename TReady>
bool WaitFor(TCondVar& condition, std::chrono::duration<TRep, TPeriod> time, TReady ready) {
  using Clock = std::chrono::steady_clock;
  using Seconds = std::chrono::duration<double>;
  // A hundred years stand for any longer time, so that the sum stays in range.
  const Seconds most(std::chrono::hours(24 * 365 * 100));
  const Seconds wish = time > time.zero() ? Seconds(time) : Seconds::zero();
  const Clock::time_point end =
      Clock::now() + std::chrono::duration_cast<Clock::duration>(wish < most ? wish : most);
  while (!ready()) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    if (left.count() <= 0) return false;
    condition.Wait(left.count() < INT_MAX ? static_cast<int>(left.count()) : INT_MAX);
  }
  return true;
}

}  // namespace KEST

#endif  // KEST_BRIDGE_LOCK_H
