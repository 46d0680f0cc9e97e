// POSIX side of TCondVar: a condition with default attributes, so its deadlines are wall clock
// time.

#include <pthread.h>
#include <sys/time.h>

#include <limits>

#include "frame/layout.h"
#include "kest/thread.h"

namespace {

constexpr long kNanosPerSecond = 1000000000;

time_t AddSaturating(time_t seconds, int more) {
  time_t sum;
  if (__builtin_add_overflow(seconds, more, &sum)) return std::numeric_limits<time_t>::max();
  return sum;
}

// The wall clock time ms milliseconds from now.
timespec Deadline(int ms) {
  timeval now = {};  // without a clock the deadline is long past, and the wait ends at once
  gettimeofday(&now, nullptr);
  timespec deadline;
  deadline.tv_sec = AddSaturating(now.tv_sec, ms / 1000);
  deadline.tv_nsec = ms % 1000 * 1000000L + now.tv_usec * 1000L;
  // Strictly above, on purpose: a sum of one whole second stays, and the wait then fails at once.
  if (deadline.tv_nsec > kNanosPerSecond) {
    deadline.tv_nsec -= kNanosPerSecond;
    deadline.tv_sec = AddSaturating(deadline.tv_sec, 1);
  }
  return deadline;
}

}  // namespace

namespace KEST {

int TCondVar::Init() {
  KEST_SIZE_IS(TCondVar, 72, 88);
  KEST_FIELD_AT(TCondVar, mutex, 0, 0);
  KEST_FIELD_AT(TCondVar, condition, 24, 40);
  const int mutexFailed = TCritSec::Init();
  if (mutexFailed != 0) return mutexFailed;
  const int conditionFailed = pthread_cond_init(&condition, nullptr);
  if (conditionFailed != 0) TCritSec::Term();
  return conditionFailed;
}

int TCondVar::Term() {
  const int conditionFailed = pthread_cond_destroy(&condition);
  const int mutexFailed = TCritSec::Term();
  return conditionFailed != 0 ? conditionFailed : mutexFailed;
}

bool TCondVar::Wait(int ms) {
  if (ms < 0) return pthread_cond_wait(&condition, &mutex) == 0;
  const timespec deadline = Deadline(ms);
  return pthread_cond_timedwait(&condition, &mutex, &deadline) == 0;
}

int TCondVar::Signal() { return pthread_cond_signal(&condition); }

}  // namespace KEST
