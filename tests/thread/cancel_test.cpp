// Cancellation of threads, also while they are inside the library. The functions that are cancelled
// have nothing to unwind: no destructors, no locks.

#include <semaphore.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "kest/message.h"
#include "kest/thread.h"
#include "support/test_allocator.h"
#include "support/thread_sanitizer.h"

namespace {

using KEST::TThread;
using kest_test::TestAllocator;

// An asynchronous cancel unwinds out of whatever runs, the sanitizer's own functions and their
// locks included.
#define KEST_SKIP_CANCEL_UNDER_TSAN() KEST_SKIP_UNDER_TSAN("cannot follow an asynchronous cancel")

// Never reaches a cancellation point.
int Spin(void* started) {
  sem_post(static_cast<sem_t*>(started));
  for (volatile unsigned int i = 0;; i = i + 1) {
  }
}

int Pause(void*) {
  for (;;) pause();
}

TEST(Cancel, EndsAFunctionThatNeverStopsByItself) {
  KEST_SKIP_CANCEL_UNDER_TSAN();
  sem_t started;
  ASSERT_EQ(0, sem_init(&started, 0, 0));
  TThread thread;
  ASSERT_TRUE(thread.Create(Spin, &started, false));
  ASSERT_EQ(0, sem_wait(&started));
  EXPECT_TRUE(thread.Cancel());
  int code = 5;
  EXPECT_TRUE(thread.WaitForExit(&code));
  EXPECT_EQ(-1, code);
  EXPECT_FALSE(thread.Cancel());
}

TEST(Cancel, AfterTheEndLeavesTheExitValue) {
  KEST_SKIP_CANCEL_UNDER_TSAN();
  sem_t ended;
  ASSERT_EQ(0, sem_init(&ended, 0, 0));
  TThread thread;
  ASSERT_TRUE(thread.Create(
      [](void* ending) {
        int type;  // no cancel between here and the end
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &type);
        sem_post(static_cast<sem_t*>(ending));
        return 7;
      },
      &ended, false));
  ASSERT_EQ(0, sem_wait(&ended));
  thread.Cancel();
  int code = 5;
  EXPECT_TRUE(thread.WaitForExit(&code));
  EXPECT_EQ(7, code);
}

// Calls of the library that block: its frames let the unwinding through. Whatever takes memory is
// made ready before, because a cancel inside an allocator leaves that locked.
KEST::TCritSec s_lock;
KEST::TCondVar s_conditions[2];
TThread* s_other;

struct Blocked {
  const char* name;
  int (*proc)(void*);
};

const Blocked kBlocked[] = {
    {"sleep", [](void*) { return TThread::Sleep(1000000000); }},
    {"lock", [](void*) { return s_lock.Lock(); }},
    {"condition",
     [](void*) {
       s_conditions[0].Lock();
       return s_conditions[0].Wait(-1) ? 1 : 0;
     }},
    {"timed condition",
     [](void*) {
       s_conditions[1].Lock();
       return s_conditions[1].Wait(1000000000) ? 1 : 0;
     }},
    {"callback of a message", [](void*) { return KestGiveMessage(7, nullptr, nullptr) ? 1 : 0; }},
    {"waiting for another thread", [](void*) { return s_other->WaitForExit(nullptr) ? 1 : 0; }},
    {"message loop", [](void*) { return KestMessageLoop() != nullptr ? 1 : 0; }},
};

TEST(Cancel, ReachesAThreadThatTheLibraryBlocks) {
  KEST_SKIP_CANCEL_UNDER_TSAN();
  ASSERT_TRUE(KEST::MessageInit());
  ASSERT_TRUE(KestRegisterMessageCallback(7, [](unsigned int, void*, void*) { Pause(nullptr); }));
  ASSERT_EQ(0, s_lock.Init());
  ASSERT_EQ(0, s_lock.Lock());
  for (KEST::TCondVar& condition : s_conditions) ASSERT_EQ(0, condition.Init());
  s_other = KestCreateThread(Pause, nullptr, false);
  ASSERT_NE(nullptr, s_other);
  for (const Blocked& row : kBlocked) {
    SCOPED_TRACE(row.name);
    for (int yields : {0, 1, 10, 100}) {
      TThread thread;
      ASSERT_TRUE(thread.Create(row.proc, nullptr, false));
      for (int i = 0; i < yields; ++i) sched_yield();
      EXPECT_TRUE(thread.Cancel());
      int code = 5;
      EXPECT_TRUE(thread.WaitForExit(&code));
      EXPECT_EQ(-1, code);
    }
  }
  EXPECT_TRUE(s_other->Cancel());
  int code = 5;
  EXPECT_TRUE(s_other->WaitForExit(&code)) << "the cancelled waits joined nothing";
  EXPECT_EQ(-1, code);
  KestDestroyThread(s_other, false);
  EXPECT_EQ(0, s_lock.Unlock());
  EXPECT_TRUE(KestUnregisterMessageCallback(7));
}

// The cancel hits anywhere from the start routine on.
TEST(Cancel, AtAnyPointEndsTheThreadAndFreesEverything) {
  KEST_SKIP_CANCEL_UNDER_TSAN();
  TestAllocator allocator;
  for (int i = 0; i < 4000; ++i) {
    SCOPED_TRACE(i);
    TThread* const thread = KestCreateThread(Pause, nullptr, false);
    ASSERT_NE(nullptr, thread);
    // Not sched_yield, which on a busy machine gives a whole slice of time away.
    for (volatile int spin = i % 64 * 500; spin > 0;) spin = spin - 1;
    ASSERT_TRUE(thread->Cancel());
    if (i % 2 == 0) {
      int code = 5;
      ASSERT_TRUE(thread->WaitForExit(&code));
      ASSERT_EQ(-1, code);
    }
    KestDestroyThread(thread, i % 4 == 1);
    ASSERT_EQ(0, allocator.Live());
  }
}

TEST(Cancel, OfAThreadThatEndsMeanwhileGivesOneResultOrTheOther) {
  KEST_SKIP_CANCEL_UNDER_TSAN();
  int cancelled = 0;
  for (int i = 0; i < 2000; ++i) {
    TThread thread;
    ASSERT_TRUE(thread.Create([](void*) { return 7; }, nullptr, false));
    thread.Cancel();
    int code = 5;
    ASSERT_TRUE(thread.WaitForExit(&code));
    ASSERT_TRUE(code == 7 || code == -1) << code;
    if (code == -1) ++cancelled;
  }
  RecordProperty("cancelled", cancelled);
}

TEST(Cancel, TwiceIsAsGoodAsOnce) {
  KEST_SKIP_CANCEL_UNDER_TSAN();
  for (int i = 0; i < 200; ++i) {
    TThread thread;
    ASSERT_TRUE(thread.Create(Pause, nullptr, false));
    EXPECT_TRUE(thread.Cancel());
    thread.Cancel();  // the thread may have ended: either result
    int code = 5;
    EXPECT_TRUE(thread.WaitForExit(&code));
    EXPECT_EQ(-1, code);
  }
}

// The C library loads its unwinder when a thread is cancelled first, and ended the process when
// there was no memory for that. A process of its own runs out of memory here.
TEST(FormerBug, TheFirstCancelWithoutMemoryEndedTheProcess) {
  KEST_SKIP_CANCEL_UNDER_TSAN();
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "address sanitizer ends a process without memory itself";
#endif
  const pid_t child = fork();
  ASSERT_NE(-1, child);
  if (child == 0) {
    TThread thread;
    if (!thread.Create(Pause, nullptr, false)) _exit(1);
    rlimit space;
    getrlimit(RLIMIT_AS, &space);
    const rlimit none = {0, space.rlim_max};
    setrlimit(RLIMIT_AS, &none);
    void* volatile kept = nullptr;
    for (size_t size = 1 << 20; size >= sizeof(void*); size /= 2) {
      do kept = malloc(size);
      while (kept != nullptr);
    }
    const bool cancelled = thread.Cancel();
    setrlimit(RLIMIT_AS, &space);
    if (!cancelled && !thread.Cancel()) _exit(2);
    int code = 5;
    _exit(thread.WaitForExit(&code) && code == -1 ? 0 : 3);
  }
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_EQ(0, status);
}

}  // namespace
