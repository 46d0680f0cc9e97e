#include <limits.h>
#include <pthread.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <new>
#include <thread>
#include <vector>

#include "kest/thread.h"
#include "support/gate.h"
#include "support/test_allocator.h"
#include "support/thread_sanitizer.h"

namespace {

using KEST::TThread;
using kest_test::Counter;
using kest_test::Gate;
using kest_test::TestAllocator;

int ReturnPointedTo(void* arg) { return *static_cast<int*>(arg); }

int WaitForGate(void* arg) {
  static_cast<Gate*>(arg)->Wait();
  return 0;
}

int AddToCounter(void* arg) {
  static_cast<Counter*>(arg)->Add();
  return 0;
}

int Nothing(void*) { return 0; }

TEST(Thread, IsNeverCopied) {
  static_assert(!std::is_copy_constructible_v<TThread> && !std::is_copy_assignable_v<TThread>);
}

TEST(Thread, CreateRefusesANullFunction) {
  TestAllocator allocator;
  TThread thread;
  EXPECT_FALSE(thread.Create(nullptr, nullptr, false));
  EXPECT_EQ(0, allocator.Requests());
  int code = 5;
  EXPECT_FALSE(thread.WaitForExit(&code));
  EXPECT_EQ(5, code);
}

TEST(Thread, WaitForExitGivesTheFunctionsResult) {
  for (int result : {7, 0, 1, -1, -2, INT_MAX, INT_MIN}) {
    SCOPED_TRACE(result);
    TThread thread;
    ASSERT_TRUE(thread.Create(ReturnPointedTo, &result, false));
    int code = ~result;
    EXPECT_TRUE(thread.WaitForExit(&code));
    EXPECT_EQ(result, code);
  }
}

TEST(Thread, WaitForExitTakesANullExitCode) {
  Counter runs;
  TThread thread;
  ASSERT_TRUE(thread.Create(AddToCounter, &runs, false));
  EXPECT_TRUE(thread.WaitForExit(nullptr));
  EXPECT_EQ(1, runs.Value());
  EXPECT_FALSE(thread.WaitForExit(nullptr));
}

TEST(Thread, ASecondWaitForExitFailsAndLeavesTheExitCode) {
  int result = 7;
  TThread thread;
  ASSERT_TRUE(thread.Create(ReturnPointedTo, &result, false));
  EXPECT_TRUE(thread.WaitForExit(nullptr));
  int code = 5;
  EXPECT_FALSE(thread.WaitForExit(&code));
  EXPECT_EQ(5, code);
}

TEST(Thread, AnEmptyObjectRefusesEverything) {
  TThread thread;
  int code = 5;
  EXPECT_EQ(-1, thread.Suspend());
  EXPECT_EQ(-1, thread.Resume());
  EXPECT_FALSE(thread.Cancel());
  EXPECT_FALSE(thread.WaitForExit(&code));
  EXPECT_EQ(5, code);
}

TEST(Thread, SuspendAndResumeAreNotSupported) {
  Gate gate;
  TThread thread;
  ASSERT_TRUE(thread.Create(WaitForGate, &gate, false));
  EXPECT_EQ(-1, thread.Suspend());
  EXPECT_EQ(-1, thread.Resume());
  gate.Open();
  EXPECT_TRUE(thread.WaitForExit(nullptr));
  EXPECT_EQ(-1, thread.Suspend());
  EXPECT_EQ(-1, thread.Resume());
  EXPECT_EQ(-1, TThread::ThreadSuspend(nullptr));
  EXPECT_EQ(-1, TThread::ThreadResume(nullptr));
}

TEST(Thread, TheFlagMakesNoDifference) {
  for (bool flag : {false, true}) {
    SCOPED_TRACE(flag);
    int result = 3;
    int code = 0;
    TThread thread;
    ASSERT_TRUE(thread.Create(ReturnPointedTo, &result, flag));
    EXPECT_TRUE(thread.WaitForExit(&code));
    EXPECT_EQ(3, code);
  }
}

TEST(Thread, RunsOnAThreadOfItsOwn) {
  pthread_t self = pthread_self();
  TThread thread;
  ASSERT_TRUE(thread.Create(
      [](void* creator) {
        return pthread_equal(*static_cast<pthread_t*>(creator), pthread_self());
      },
      &self, false));
  int same = 1;
  EXPECT_TRUE(thread.WaitForExit(&same));
  EXPECT_EQ(0, same);
}

TEST(Thread, RunsWithAsynchronousCancellation) {
  TThread thread;
  ASSERT_TRUE(thread.Create(
      [](void*) {
        int type = -1;
        pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &type);
        return type;
      },
      nullptr, false));
  int type = -1;
  EXPECT_TRUE(thread.WaitForExit(&type));
  EXPECT_EQ(PTHREAD_CANCEL_ASYNCHRONOUS, type);
}

TEST(Thread, ThreadProcRunsTheObjectsFunctionWhereItIsCalled) {
  int result = 7;
  TThread thread;
  ASSERT_TRUE(thread.Create(ReturnPointedTo, &result, false));
  EXPECT_TRUE(thread.WaitForExit(nullptr));
  result = 9;
  EXPECT_EQ(9, TThread::ThreadProc(&thread));
}

TEST(Thread, TheStartRoutineMakesTheResultTheExitValue) {
  int result = -7;
  TThread thread;
  ASSERT_TRUE(thread.Create(ReturnPointedTo, &result, false));
  EXPECT_TRUE(thread.WaitForExit(nullptr));
  pthread_t plain;
  ASSERT_EQ(0, pthread_create(&plain, nullptr, KEST::_ThreadProc, &thread));
  void* value;
  ASSERT_EQ(0, pthread_join(plain, &value));
  EXPECT_EQ(reinterpret_cast<void*>(intptr_t{-7}), value);
}

TEST(Thread, ThePlatformFunctionsWorkOnAHandleAlone) {
  int result = 7;
  TThread thread;
  ASSERT_TRUE(thread.Create(ReturnPointedTo, &result, false));
  EXPECT_TRUE(thread.WaitForExit(nullptr));
  for (int next : {8, 9}) {
    result = next;
    void* const handle = TThread::ThreadCreate(&thread, false);
    ASSERT_NE(nullptr, handle);
    int code = 0;
    EXPECT_TRUE(TThread::ThreadWaitForExit(handle, &code));
    EXPECT_EQ(next, code);
    EXPECT_FALSE(TThread::ThreadWaitForExit(handle, &code));
    EXPECT_FALSE(TThread::ThreadCancel(handle));
    EXPECT_TRUE(TThread::ThreadClose(handle));
  }
}

TEST(Thread, SleepLastsAtLeastTheTimeAsked) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(0, TThread::Sleep(20));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
  EXPECT_EQ(0, TThread::Sleep(0));
}

TEST(Thread, CancelFailsAfterTheJoin) {
  TThread thread;
  ASSERT_TRUE(thread.Create(Nothing, nullptr, false));
  EXPECT_TRUE(thread.WaitForExit(nullptr));
  EXPECT_FALSE(thread.Cancel());
}

TEST(Thread, CannotWaitForItself) {
  KEST_SKIP_UNDER_TSAN("takes any join for a success");
  struct Self {
    TThread thread;
    Gate created;
  } self;
  ASSERT_TRUE(self.thread.Create(
      [](void* arg) {
        Self* const own = static_cast<Self*>(arg);
        own->created.Wait();
        return own->thread.WaitForExit(nullptr) ? 1 : 2;
      },
      &self, false));
  self.created.Open();
  int code = 0;
  EXPECT_TRUE(self.thread.WaitForExit(&code)) << "the failed wait joined nothing";
  EXPECT_EQ(2, code);
}

TEST(Thread, AnObjectMayGoAsSoonAsCreateHasReturned) {
  constexpr int kThreads = 2000;
  Counter runs;
  alignas(TThread) unsigned char storage[sizeof(TThread)];
  for (int i = 0; i < kThreads; ++i) {
    TThread* const thread = new (storage) TThread;
    ASSERT_TRUE(thread->Create(AddToCounter, &runs, false));
    thread->~TThread();
    memset(storage, 0x5A, sizeof storage);
    runs.WaitFor(i + 1);
  }
}

TEST(Thread, DestroyingWithoutWaitingLeavesTheThreadRunning) {
  struct Talk {
    Gate go, done;
  } talk;
  TThread* const thread = KestCreateThread(
      [](void* arg) {
        static_cast<Talk*>(arg)->go.Wait();
        static_cast<Talk*>(arg)->done.Open();
        return 0;
      },
      &talk, false);
  ASSERT_NE(nullptr, thread);
  KestDestroyThread(thread, false);  // returns, although the thread waits for what follows
  talk.go.Open();
  talk.done.Wait();
}

TEST(Thread, DestroyingWithWaitingComesAfterTheEnd) {
  for (int i = 0; i < 100; ++i) {
    std::atomic<bool> ended{false};
    TThread* const thread = KestCreateThread(
        [](void* arg) {
          sched_yield();
          *static_cast<std::atomic<bool>*>(arg) = true;
          return 0;
        },
        &ended, false);
    ASSERT_NE(nullptr, thread);
    KestDestroyThread(thread, true);
    EXPECT_TRUE(ended);
  }
}

TEST(Thread, DestroyingAJoinedThreadOnlyFreesIt) {
  TestAllocator allocator;
  for (bool wait : {false, true}) {
    TThread* const thread = KestCreateThread(Nothing, nullptr, false);
    ASSERT_NE(nullptr, thread);
    EXPECT_TRUE(thread->WaitForExit(nullptr));
    KestDestroyThread(thread, wait);
    EXPECT_EQ(0, allocator.Live());
  }
}

TEST(Thread, DestroyingNullDoesNothing) {
  KestDestroyThread(nullptr, false);
  KestDestroyThread(nullptr, true);
}

TEST(Thread, AThreadMayDestroyItsOwnObject) {
  struct Self {
    TThread* thread;
    Gate created, done;
  } self;
  self.thread = KestCreateThread(
      [](void* arg) {
        Self* const own = static_cast<Self*>(arg);
        own->created.Wait();
        KestDestroyThread(own->thread, false);
        own->done.Open();
        return 0;
      },
      &self, false);
  ASSERT_NE(nullptr, self.thread);
  self.created.Open();
  self.done.Wait();
}

TEST(Thread, KestCreateThreadRefusesANullFunction) {
  TestAllocator allocator;
  EXPECT_EQ(nullptr, KestCreateThread(nullptr, nullptr, false));
  EXPECT_EQ(0, allocator.Live());
}

TEST(Thread, CreatesNothingWithoutMemory) {
  kest_test::ForEachRefusedRequest([](TestAllocator& allocator) {
    Counter runs;
    TThread* const thread = KestCreateThread(AddToCounter, &runs, false);
    EXPECT_EQ(allocator.Refused() > 0, thread == nullptr);
    KestDestroyThread(thread, true);
    EXPECT_EQ(allocator.Refused() > 0 ? 0 : 1, runs.Value());
  });
}

TEST(Thread, ASecondCreateLetsTheFirstThreadRunOn) {
  TestAllocator allocator;
  struct Talk {
    Gate go, done;
  } talk;
  {
    TThread thread;
    ASSERT_TRUE(thread.Create(
        [](void* arg) {
          static_cast<Talk*>(arg)->go.Wait();
          static_cast<Talk*>(arg)->done.Open();
          return 1;
        },
        &talk, false));
    int result = 2;
    int code = 0;
    ASSERT_TRUE(thread.Create(ReturnPointedTo, &result, false));
    EXPECT_TRUE(thread.WaitForExit(&code));
    EXPECT_EQ(2, code);
    talk.go.Open();
    talk.done.Wait();
    result = 3;
    ASSERT_TRUE(thread.Create(ReturnPointedTo, &result, false)) << "after a join too";
    EXPECT_TRUE(thread.WaitForExit(&code));
    EXPECT_EQ(3, code);
  }
  EXPECT_EQ(0, allocator.Live());
}

TEST(Thread, AFailedSecondCreateKeepsTheFirstThread) {
  TestAllocator allocator;
  int result = 7;
  TThread thread;
  ASSERT_TRUE(thread.Create(ReturnPointedTo, &result, false));
  EXPECT_FALSE(thread.Create(nullptr, nullptr, false));
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_FALSE(thread.Create(Nothing, nullptr, false));
  int code = 0;
  EXPECT_TRUE(thread.WaitForExit(&code));
  EXPECT_EQ(7, code);
}

// Creates from many threads at once, joining, detaching and waiting in turn.
TEST(Thread, CreatesJoinsAndDetachesUnderLoad) {
  TestAllocator allocator;
  constexpr int kOwners = 4;
  constexpr int kRounds = 300;
  Counter runs;
  {
    std::vector<std::thread> owners;
    for (int owner = 0; owner < kOwners; ++owner) {
      owners.emplace_back([&runs] {
        for (int i = 0; i < kRounds; ++i) {
          TThread* const thread = KestCreateThread(AddToCounter, &runs, i % 2 != 0);
          ASSERT_NE(nullptr, thread);
          const bool joined = i % 3 == 0 && thread->WaitForExit(nullptr);
          ASSERT_EQ(i % 3 == 0, joined);
          KestDestroyThread(thread, i % 3 == 1);
        }
      });
    }
    for (std::thread& owner : owners) owner.join();
  }
  runs.WaitFor(kOwners * kRounds);
  EXPECT_EQ(0, allocator.Live());
}

}  // namespace
