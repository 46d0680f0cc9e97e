// What the library asks of the system, call by call. The system's functions are defined here: the
// program exports them, so the library's calls land in this file.

#include <dlfcn.h>
#include <errno.h>
#include <limits.h>
#include <pthread.h>
#include <sys/select.h>
#include <sys/time.h>

#include <atomic>
#include <limits>
#include <vector>

#include "kest/message.h"
#include "kest/thread.h"
#include "support/test_allocator.h"

namespace {

using kest_test::TestAllocator;

template <typename Function>
Function* Real(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}
#define REAL(name) Real(&name, #name)

// What the system was asked, and what it answers.
struct System {
  int creates = 0, detaches = 0, joins = 0, cancels = 0, waits = 0, clockReads = 0;
  int createResult = 0, keyCreateResult = 0, setSpecificResult = 0;
  int mutexInitResult = 0, condInitResult = 0, waitResult = 0, timedWaitResult = ETIMEDOUT;
  int mutexes = 0, mutexDestroyResult = 0, condDestroyResult = 0, clockResult = 0, selectResult = 0;
  bool defaultAttributes = true;
  void* (*startRoutine)(void*) = nullptr;
  timeval now = {}, sleep = {};
  timespec deadline = {};
  // Between a thread's creation and its start routine.
  void (*beforeStart)() = nullptr;
} s_system;

struct Start {
  void* (*routine)(void*);
  void* arg;
};

void* DelayedStart(void* argument) {
  const Start start = *static_cast<Start*>(argument);
  delete static_cast<Start*>(argument);
  s_system.beforeStart();
  return start.routine(start.arg);
}

}  // namespace

extern "C" {

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*),
                   void* arg) noexcept {
  ++s_system.creates;
  if (attributes != nullptr) s_system.defaultAttributes = false;
  s_system.startRoutine = routine;
  if (s_system.createResult != 0) return s_system.createResult;
  if (s_system.beforeStart == nullptr) {
    return REAL(pthread_create)(thread, attributes, routine, arg);
  }
  return REAL(pthread_create)(thread, attributes, DelayedStart, new Start{routine, arg});
}

int pthread_detach(pthread_t thread) noexcept {
  ++s_system.detaches;
  return REAL(pthread_detach)(thread);
}

int pthread_join(pthread_t thread, void** value) {
  ++s_system.joins;
  return REAL(pthread_join)(thread, value);
}

int pthread_cancel(pthread_t thread) {
  ++s_system.cancels;
  return REAL(pthread_cancel)(thread);
}

int pthread_key_create(pthread_key_t* key, void (*destructor)(void*)) noexcept {
  if (destructor != nullptr) s_system.defaultAttributes = false;
  if (s_system.keyCreateResult != 0) return s_system.keyCreateResult;
  return REAL(pthread_key_create)(key, destructor);
}

int pthread_setspecific(pthread_key_t key, const void* value) noexcept {
  if (s_system.setSpecificResult != 0) return s_system.setSpecificResult;
  return REAL(pthread_setspecific)(key, value);
}

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) noexcept {
  if (attributes != nullptr) s_system.defaultAttributes = false;
  if (s_system.mutexInitResult != 0) return s_system.mutexInitResult;
  ++s_system.mutexes;
  return REAL(pthread_mutex_init)(mutex, attributes);
}

int pthread_mutex_destroy(pthread_mutex_t* mutex) noexcept {
  --s_system.mutexes;
  const int result = REAL(pthread_mutex_destroy)(mutex);
  return s_system.mutexDestroyResult != 0 ? s_system.mutexDestroyResult : result;
}

int pthread_cond_init(pthread_cond_t*, const pthread_condattr_t* attributes) noexcept {
  if (attributes != nullptr) s_system.defaultAttributes = false;
  return s_system.condInitResult;
}

int pthread_cond_destroy(pthread_cond_t*) noexcept { return s_system.condDestroyResult; }

int pthread_cond_wait(pthread_cond_t*, pthread_mutex_t*) {
  ++s_system.waits;
  return s_system.waitResult;
}

int pthread_cond_timedwait(pthread_cond_t*, pthread_mutex_t*, const timespec* deadline) {
  s_system.deadline = *deadline;
  return s_system.timedWaitResult;
}

int gettimeofday(timeval* now, void*) noexcept {
  ++s_system.clockReads;
  if (s_system.clockResult != 0) return s_system.clockResult;
  *now = s_system.now;
  return 0;
}

int select(int count, fd_set* readers, fd_set* writers, fd_set* exceptions, timeval* timeout) {
  EXPECT_EQ(0, count);
  EXPECT_EQ(nullptr, readers);
  EXPECT_EQ(nullptr, writers);
  EXPECT_EQ(nullptr, exceptions);
  s_system.sleep = *timeout;
  return s_system.selectResult;
}

}  // extern "C"

namespace {

using KEST::TThread;

class PosixCalls : public testing::Test {
 protected:
  void SetUp() override { s_system = System(); }
  void TearDown() override { s_system = System(); }  // the test framework calls the system too
};

int Seven(void*) { return 7; }

// The conditions of this program do not wait, so threads meet over flags.
using Flag = std::atomic<bool>;

void WaitUntil(const Flag& flag) {
  while (!flag) sched_yield();
}

int SetFlag(void* flag) {
  *static_cast<Flag*>(flag) = true;
  return 0;
}

TEST_F(PosixCalls, AThreadIsCreatedWithDefaultAttributesAndTheStartRoutine) {
  TThread thread;
  ASSERT_TRUE(thread.Create(Seven, nullptr, true));
  EXPECT_EQ(1, s_system.creates);
  EXPECT_TRUE(s_system.defaultAttributes);
  EXPECT_EQ(&KEST::_ThreadProc, s_system.startRoutine);
  EXPECT_TRUE(thread.WaitForExit(nullptr));
}

TEST_F(PosixCalls, AFailedCreationLeavesTheObjectEmpty) {
  TestAllocator allocator;
  s_system.createResult = EAGAIN;
  TThread thread;
  EXPECT_FALSE(thread.Create(Seven, nullptr, false));
  EXPECT_EQ(0, allocator.Live());
  EXPECT_FALSE(thread.Cancel());
  EXPECT_FALSE(thread.WaitForExit(nullptr));
  EXPECT_EQ(nullptr, KestCreateThread(Seven, nullptr, false));
  EXPECT_EQ(0, allocator.Live());
  s_system.createResult = 0;
  EXPECT_TRUE(thread.Create(Seven, nullptr, false));
  EXPECT_TRUE(thread.WaitForExit(nullptr));
}

TEST_F(PosixCalls, AJoinedThreadIsNeitherJoinedNorCancelledNorDetached) {
  {
    TThread thread;
    ASSERT_TRUE(thread.Create(Seven, nullptr, false));
    EXPECT_TRUE(thread.WaitForExit(nullptr));
    EXPECT_FALSE(thread.WaitForExit(nullptr));
    EXPECT_FALSE(thread.Cancel());
  }
  EXPECT_EQ(1, s_system.joins);
  EXPECT_EQ(0, s_system.cancels);
  EXPECT_EQ(0, s_system.detaches);
}

TEST_F(PosixCalls, AThreadThatWasNotJoinedIsDetached) {
  Flag done{false};
  {
    TThread thread;
    ASSERT_TRUE(thread.Create(SetFlag, &done, false));
  }
  EXPECT_EQ(1, s_system.detaches);
  EXPECT_EQ(0, s_system.joins);
  WaitUntil(done);
}

// The new thread stands still before its first step until the owner is in the call, and gives it
// ample occasion to return too early.
Flag s_calling{false}, s_returned{false}, s_early{false};

void HoldUntilTheOwnerCalls() {
  WaitUntil(s_calling);
  for (int i = 0; i < 1000; ++i) sched_yield();
  s_early = s_returned.load();
}

TEST_F(PosixCalls, TheDestructorWaitsUntilTheThreadHasTakenItsArgument) {
  TestAllocator allocator;
  Flag done{false};
  s_system.beforeStart = HoldUntilTheOwnerCalls;
  TThread* const thread = KestCreateThread(SetFlag, &done, false);
  ASSERT_NE(nullptr, thread);
  s_calling = true;
  KestDestroyThread(thread, false);
  s_returned = true;
  EXPECT_EQ(0, allocator.Live()) << "the owner frees, not the thread";
  WaitUntil(done);
  EXPECT_FALSE(s_early);
}

TEST_F(PosixCalls, ACancelBeforeTheStartRoutineStillLetsTheDestructorReturn) {
  for (bool join : {false, true}) {
    s_calling = s_returned = s_early = false;
    s_system.beforeStart = HoldUntilTheOwnerCalls;
    TThread thread;
    ASSERT_TRUE(thread.Create(
        [](void*) {
          for (volatile int i = 0;; i = i ^ 1) {
          }
          return 0;
        },
        nullptr, false));
    s_calling = true;
    EXPECT_TRUE(thread.Cancel());
    s_returned = true;
    int code = 5;
    EXPECT_EQ(join, join && thread.WaitForExit(&code));
    EXPECT_EQ(join ? -1 : 5, code);
  }
  EXPECT_FALSE(s_early);
}

TEST_F(PosixCalls, SleepSplitsTheTime) {
  struct Row {
    unsigned int ms;
    long seconds, microseconds;
  };
  const Row rows[] = {
      {0, 0, 0},
      {1, 0, 1000},
      {999, 0, 999000},
      {1000, 1, 0},
      {1500, 1, 500000},
      {INT_MAX, 2147483, 647000},
      {2147483648u, 2147483, 648000},
      {UINT_MAX, 4294967, 295000},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.ms);
    EXPECT_EQ(0, TThread::Sleep(row.ms));
    EXPECT_EQ(row.seconds, s_system.sleep.tv_sec);
    EXPECT_EQ(row.microseconds, s_system.sleep.tv_usec);
  }
  s_system.selectResult = -1;
  EXPECT_EQ(-1, TThread::Sleep(1));
}

TEST_F(PosixCalls, LocksAndConditionsHaveDefaultAttributes) {
  KEST::TCondVar condition;
  EXPECT_EQ(0, condition.Init());
  EXPECT_TRUE(s_system.defaultAttributes);
}

TEST_F(PosixCalls, InitPassesTheSystemsResultOn) {
  KEST::TCritSec lock;
  KEST::TCondVar condition;
  s_system.condInitResult = ENOMEM;
  EXPECT_EQ(ENOMEM, condition.Init());
  s_system.mutexInitResult = EAGAIN;
  EXPECT_EQ(EAGAIN, lock.Init());
  EXPECT_EQ(EAGAIN, condition.Init());
}

TEST_F(PosixCalls, TermEndsBothAndGivesTheFirstFailure) {
  struct {
    int condition, mutex, result;
  } constexpr kRows[] = {{0, 0, 0}, {EBUSY, 0, EBUSY}, {0, EINVAL, EINVAL}, {EBUSY, EINVAL, EBUSY}};
  for (const auto& row : kRows) {
    KEST::TCondVar condition;
    EXPECT_EQ(0, condition.Init());
    s_system.condDestroyResult = row.condition;
    s_system.mutexDestroyResult = row.mutex;
    EXPECT_EQ(row.result, condition.Term());
    EXPECT_EQ(0, s_system.mutexes);
  }
}

TEST_F(PosixCalls, TimedWaitBuildsTheDeadline) {
  constexpr time_t kEnd = std::numeric_limits<time_t>::max();
  // Columns: the clock (seconds, microseconds), the time to wait, the deadline (seconds,
  // nanoseconds). Worked by hand.
  struct Row {
    time_t seconds;
    int microseconds, ms;
    time_t deadline;
    long nanoseconds;
  };
  const Row rows[] = {
      {100, 0, 0, 100, 0},
      {100, 0, 1, 100, 1000000},
      {100, 0, 1500, 101, 500000000},
      {100, 999999, 0, 100, 999999000},
      {100, 499999, 500, 100, 999999000},
      {100, 500000, 500, 100, 1000000000},  // exactly one second is kept
      {100, 1000, 1999, 101, 1000000000},
      {100, 500001, 500, 101, 1000},
      {100, 999999, 999, 101, 998999000},
      {100, 999999, 1999, 102, 998999000},
      {100, 0, INT_MAX, 2147583, 647000000},
      {100, 353001, INT_MAX, 2147584, 1000},
      {kEnd - 1, 0, 1000, kEnd, 0},
      {kEnd, 0, 1000, kEnd, 0},
      {kEnd, 999999, 999, kEnd, 998999000},
      {kEnd - 1, 999999, 1999, kEnd, 998999000},
      {kEnd - 5, 0, INT_MAX, kEnd, 647000000},
  };
  KEST::TCondVar condition;
  ASSERT_EQ(0, condition.Init());
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.seconds << "." << row.microseconds << " + " << row.ms);
    s_system.now.tv_sec = row.seconds;
    s_system.now.tv_usec = row.microseconds;
    EXPECT_FALSE(condition.Wait(row.ms));
    EXPECT_EQ(row.deadline, s_system.deadline.tv_sec);
    EXPECT_EQ(row.nanoseconds, s_system.deadline.tv_nsec);
  }
  EXPECT_EQ(0, s_system.waits);
}

TEST_F(PosixCalls, WaitIsTrueWhenTheSystemGivesZero) {
  KEST::TCondVar condition;
  ASSERT_EQ(0, condition.Init());
  for (int result : {0, ETIMEDOUT, EINVAL}) {
    SCOPED_TRACE(result);
    s_system.waitResult = s_system.timedWaitResult = result;
    EXPECT_EQ(result == 0, condition.Wait(0));
    EXPECT_EQ(result == 0, condition.Wait(50));
    EXPECT_EQ(result == 0, condition.Wait(-1));
  }
}

TEST_F(PosixCalls, ANegativeWaitReadsNoClock) {
  KEST::TCondVar condition;
  ASSERT_EQ(0, condition.Init());
  const int before = s_system.clockReads;
  EXPECT_TRUE(condition.Wait(-1));
  EXPECT_TRUE(condition.Wait(INT_MIN));
  EXPECT_EQ(2, s_system.waits) << "one call each, whatever woke it";
  EXPECT_EQ(before, s_system.clockReads);
}

TEST_F(PosixCalls, TheKeyHasNoDestructor) {
  ASSERT_TRUE(KEST::TlsInit());
  EXPECT_TRUE(s_system.defaultAttributes);
  KEST::TlsTerm();
}

TEST_F(PosixCalls, WithoutAKeyTheRegistryDoesNotStart) {
  s_system.keyCreateResult = EAGAIN;
  EXPECT_FALSE(KEST::TlsInit());
  EXPECT_FALSE(KEST::InternalTlsInit());
  EXPECT_EQ(static_cast<pthread_key_t>(-1), KEST::s_tlsKey);
  EXPECT_EQ(nullptr, KestTlsAddData(5, 16));
  s_system.keyCreateResult = 0;
  EXPECT_TRUE(KEST::TlsInit());
  KEST::TlsTerm();
}

TEST_F(PosixCalls, AMapThatCannotBeStoredIsDestroyed) {
  TestAllocator allocator;
  ASSERT_TRUE(KEST::TlsInit());
  s_system.setSpecificResult = ENOMEM;
  EXPECT_EQ(nullptr, KestTlsAddData(5, 16));
  EXPECT_EQ(nullptr, KestTlsGetAddData(5, 16));
  EXPECT_EQ(0, allocator.Live());
  EXPECT_EQ(2, allocator.Requests()) << "the two maps, no block";
  s_system.setSpecificResult = 0;
  EXPECT_NE(nullptr, KestTlsAddData(5, 16));
  KEST::TlsThreadTerm();
  s_system.setSpecificResult = ENOMEM;
  EXPECT_EQ(nullptr, KestTlsAddData(5, 16));
  EXPECT_EQ(nullptr, KestTlsGetData(5)) << "the slot still holds the released map";
  s_system.setSpecificResult = 0;
  KEST::TlsThreadTerm();
  EXPECT_EQ(0, allocator.Live());
  KEST::TlsTerm();
}

using FormerBug = PosixCalls;

// The mutex stayed initialised when the condition's own start failed, and nobody could end it.
TEST_F(FormerBug, AConditionThatDoesNotStartKeptItsMutex) {
  KEST::TCondVar condition;
  s_system.condInitResult = EAGAIN;
  EXPECT_EQ(EAGAIN, condition.Init());
  EXPECT_EQ(0, s_system.mutexes);
  EXPECT_EQ(nullptr, KEST::InternalCreateMessageQueue());
  EXPECT_EQ(0, s_system.mutexes);
}

// What the stack below holds then is what a variable without a value gets.
__attribute__((noinline)) void FillTheStack() {
  volatile unsigned char bytes[4096];
  for (volatile unsigned char& byte : bytes) byte = 0x55;
}

// A clock that cannot be read, as in a 32-bit process from 2038 on, left the deadline to chance: a
// wait of a second might never end. It is in the past now, so the wait ends at once.
TEST_F(FormerBug, AWaitWithoutAClockHadNoDeadline) {
  KEST::TCondVar condition;
  ASSERT_EQ(0, condition.Init());
  s_system.clockResult = -1;
  FillTheStack();
  EXPECT_FALSE(condition.Wait(1500));
  EXPECT_EQ(1, s_system.deadline.tv_sec);
  EXPECT_EQ(500000000, s_system.deadline.tv_nsec);
}

}  // namespace
