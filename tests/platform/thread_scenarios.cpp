// Threads, locks, conditions, thread-local data and messages while the system refuses.

#include <errno.h>
#include <limits.h>
#include <unistd.h>

#include <optional>
#include <thread>

#include "kest/frame.h"
#include "kest/message.h"
#include "kest/thread.h"
#include "platform/scenario.h"

namespace {

using namespace kest_test;
using KEST::TCondVar;
using KEST::TCritSec;
using KEST::TThread;

// ---- Threads

int Seven(void*) { return 7; }

std::string CreateThread() {
  TThread thread;
  const bool created = Refusing([&] { return thread.Create(Seven, nullptr, false); });
  EXPECT_TRUE(created || thread.Create(Seven, nullptr, false));
  int code = 0;
  EXPECT_TRUE(thread.WaitForExit(&code));
  EXPECT_EQ(7, code);
  return Say(created);
}

// The object has run a thread before, which is not joined and goes its own way.
std::string CreateAnotherThread() {
  TThread thread;
  EXPECT_TRUE(thread.Create(Seven, nullptr, false));
  const bool created = Refusing([&] { return thread.Create(Seven, nullptr, false); });
  EXPECT_TRUE(thread.WaitForExit(nullptr)) << "the new thread, or still the first";
  EXPECT_TRUE(thread.Create(Seven, nullptr, false));
  EXPECT_TRUE(thread.WaitForExit(nullptr));
  return Say(created);
}

std::string CreateThreadObject() {
  TThread* thread = Refusing([&] { return KestCreateThread(Seven, nullptr, false); });
  const bool created = thread != nullptr;
  if (!created) thread = KestCreateThread(Seven, nullptr, false);
  KestDestroyThread(thread, true);
  return Say(created);
}

std::string DestroyThreadObject() {
  TThread* const thread = KestCreateThread(Seven, nullptr, false);
  Refusing([&] { KestDestroyThread(thread, true); });
  return "";
}

// How often it waits for the thread to have taken its argument: again after a signal.
std::string DetachThread() {
  std::optional<TThread> thread(std::in_place);
  EXPECT_TRUE(thread->Create(Seven, nullptr, false));
  Refusing([&] { thread.reset(); });
  return Say(CallsOf("sem_wait"));
}

std::string JoinThread() {
  TThread thread;
  EXPECT_TRUE(thread.Create(Seven, nullptr, false));
  int code = 5;
  const bool joined = Refusing([&] { return thread.WaitForExit(&code); });
  EXPECT_EQ(joined ? 7 : 5, code);
  EXPECT_EQ(!joined, thread.WaitForExit(&code));
  EXPECT_EQ(7, code);
  return Say(joined);
}

std::string CancelThread() {
  TThread thread;
  EXPECT_TRUE(thread.Create(
      [](void*) {
        for (;;) pause();
        return 0;
      },
      nullptr, false));
  const bool cancelled = Refusing([&] { return thread.Cancel(); });
  EXPECT_TRUE(cancelled || thread.Cancel());
  int code = 0;
  EXPECT_TRUE(thread.WaitForExit(&code));
  EXPECT_EQ(-1, code);
  return Say(cancelled);
}

std::string Sleep() {
  const int slept = Refusing([] { return TThread::Sleep(1); });
  EXPECT_EQ(0, TThread::Sleep(0));
  return Say(slept);
}

// ---- Locks and conditions

template <typename Lock>
std::string InitLock() {
  Lock lock;
  const int result = Refusing([&] { return lock.Init(); });
  EXPECT_TRUE(result == 0 || lock.Init() == 0);
  EXPECT_EQ(0, lock.Lock());
  EXPECT_EQ(0, lock.Unlock());
  EXPECT_EQ(0, lock.Term());
  return Say(result);
}

template <typename Lock>
std::string TermLock() {
  Lock lock;
  EXPECT_EQ(0, lock.Init());
  const int result = Refusing([&] { return lock.Term(); });
  EXPECT_EQ(0, lock.Init());
  EXPECT_EQ(0, lock.Term());
  return Say(result);
}

std::string UseLock() {
  TCritSec lock;
  EXPECT_EQ(0, lock.Init());
  const int locked = Refusing([&] { return lock.Lock(); });
  EXPECT_TRUE(locked == 0 || lock.Lock() == 0);
  const int unlocked = Refusing([&] { return lock.Unlock(); });
  EXPECT_TRUE(unlocked == 0 || lock.Unlock() == 0);
  EXPECT_EQ(0, lock.Term());
  return Say(locked, unlocked);
}

std::string SignalCondition() {
  TCondVar condition;
  EXPECT_EQ(0, condition.Init());
  const int result = Refusing([&] { return condition.Signal(); });
  EXPECT_EQ(0, condition.Signal());
  EXPECT_EQ(0, condition.Term());
  return Say(result);
}

// While it lives, whoever begins to wait for a condition has another thread call wake, which gets
// the lock when the waiter has given it up. From then on nothing is refused. Where something has
// been refused before, nobody wakes: the wait has to end by itself. How many cores there are is
// none of its concern.
class Waker {
 public:
  explicit Waker(void (*wake)()) {
    s_wake = wake;
    TheRefusals().beforeWait = [] {
      const bool concerned = TheRefusals().way != WayOf("sched_getaffinity");
      if (TheRefusals().refused != 0 && TheRefusals().on && concerned) return;
      TheRefusals().on = false;
      TheRefusals().beforeWait = nullptr;
      s_thread = std::thread(s_wake);
    };
  }
  ~Waker() {
    TheRefusals().beforeWait = nullptr;
    if (s_thread.joinable()) s_thread.join();
  }
  Waker(const Waker&) = delete;
  Waker& operator=(const Waker&) = delete;

 private:
  static inline void (*s_wake)();
  static inline std::thread s_thread;
};

TCondVar s_condition;

void SignalUnderLock() {
  s_condition.Lock();
  s_condition.Signal();
  s_condition.Unlock();
}

template <int ms>
std::string WaitForCondition() {
  EXPECT_EQ(0, s_condition.Init());
  EXPECT_EQ(0, s_condition.Lock());
  bool woken;
  {
    const Waker waker(SignalUnderLock);
    woken = Refusing([] { return s_condition.Wait(ms); });
  }
  {
    const Waker waker(SignalUnderLock);
    EXPECT_TRUE(s_condition.Wait(ms));
  }
  EXPECT_EQ(0, s_condition.Unlock());
  EXPECT_EQ(0, s_condition.Term());
  return Say(woken);
}

// ---- Thread-local data

template <void* (*add)(int, unsigned int)>
std::string AddData() {
  EXPECT_EQ(1, KestInitialize(nullptr));
  const bool added = Refusing([] { return add(5, 16); }) != nullptr;
  EXPECT_EQ(added, KestTlsGetData(5) != nullptr);
  EXPECT_NE(nullptr, KestTlsGetAddData(5, 16));
  EXPECT_TRUE(Refusing([] { return KestTlsGetData(5); }));
  EXPECT_TRUE(Refusing([] { return KestTlsRemoveData(5); }));
  KestUninitialize();
  return Say(added);
}

// ---- Messages

void Count(unsigned int, void* count, void*) { ++*static_cast<int*>(count); }

std::string CreateQueue() {
  void* queue = Refusing([] { return KEST::InternalCreateMessageQueue(); });
  const bool created = queue != nullptr;
  if (!created) queue = KEST::InternalCreateMessageQueue();
  EXPECT_TRUE(KEST::InternalPostMessage(queue, 1, nullptr, nullptr));
  KEST::InternalDestroyMessageQueue(queue);
  return Say(created);
}

std::string DestroyQueue() {
  void* const queue = KEST::InternalCreateMessageQueue();
  EXPECT_TRUE(KEST::InternalPostMessage(queue, 1, nullptr, nullptr));
  Refusing([=] { KEST::InternalDestroyMessageQueue(queue); });
  return "";
}

std::string PassMessages() {
  EXPECT_EQ(1, KestInitialize(nullptr));
  int given = 0;
  unsigned int id = 0;
  void *param1 = nullptr, *param2 = nullptr;
  EXPECT_TRUE(KestRegisterMessageCallback(7, Count));
  const bool passed = Refusing([&] {
    return KestPostMessage(7, &given, nullptr) && KestGetMessage(&id, &param1, &param2) &&
           KestGiveMessage(id, param1, param2) && KestPostMessage(7, &given, nullptr) &&
           KestPostQuitMessage(nullptr);
  });
  Refusing([] { KestDispatchMessages(); });
  EXPECT_TRUE(KestUnregisterMessageCallback(7));
  KestUninitialize();
  return Say(passed, given);
}

// The consumer waits once: the quit message comes meanwhile.
std::string WaitForMessage() {
  static int result;
  EXPECT_EQ(1, KestInitialize(nullptr));
  void* received;
  {
    const Waker waker([] { EXPECT_TRUE(KestPostQuitMessage(&result)); });
    received = Refusing([] { return KestMessageLoop(); });
  }
  EXPECT_TRUE(KestPostQuitMessage(&result));
  EXPECT_EQ(&result, KestMessageLoop());
  KestUninitialize();
  return Say(received == &result);
}

}  // namespace

namespace kest_test {

std::vector<Scenario> ThreadScenarios() {
  return {
      {"CreateThread", CreateThread, "true", {{"pthread_create", "false"}}},
      {"CreateAnotherThread",
       CreateAnotherThread,
       "true",
       {{"pthread_create", "false"}, {"sem_wait", "true"}}},
      {"CreateThreadObject", CreateThreadObject, "true", {{"pthread_create", "false"}}},
      // A thread that cannot be joined runs on by itself.
      {"DestroyThreadObject", DestroyThreadObject, "", {{"pthread_join", ""}}},
      {"DetachThread", DetachThread, "1", {{"sem_wait", "2"}}},
      {"JoinThread", JoinThread, "true", {{"pthread_join", "false"}}},
      {"CancelThread",
       CancelThread,
       "true",
       {{"backtrace", "false"}, {"pthread_cancel", "false"}, {"sem_wait", "true"}}},
      {"Sleep", Sleep, "0", {{"select", "-1"}}},

      {"InitLock", InitLock<TCritSec>, "0", {{"pthread_mutex_init", Say(ENOMEM)}}},
      {"InitCondition",
       InitLock<TCondVar>,
       "0",
       {{"pthread_mutex_init", Say(ENOMEM)}, {"pthread_cond_init", Say(EAGAIN)}}},
      {"TermLock", TermLock<TCritSec>, "0", {{"pthread_mutex_destroy", Say(EBUSY)}}},
      {"TermCondition",
       TermLock<TCondVar>,
       "0",
       {{"pthread_mutex_destroy", Say(EBUSY)}, {"pthread_cond_destroy", Say(EBUSY)}}},
      {"UseLock",
       UseLock,
       "0 0",
       {{"pthread_mutex_lock", Say(EINVAL, 0)}, {"pthread_mutex_unlock", Say(0, EPERM)}}},
      {"SignalCondition", SignalCondition, "0", {{"pthread_cond_signal", Say(EINVAL)}}},
      {"WaitForCondition",
       WaitForCondition<-1>,
       "true",
       {{"pthread_cond_wait", "false"}, {"pthread_cond_wait for no reason", "true"}}},
      // Without a clock the deadline is long past.
      {"WaitForConditionWithDeadline",
       WaitForCondition<INT_MAX>,
       "true",
       {{"pthread_cond_timedwait", "false"}, {"gettimeofday", "false"}}},

      {"AddData", AddData<KestTlsAddData>, "true", {{"pthread_setspecific", "false"}}},
      {"GetAddData", AddData<KestTlsGetAddData>, "true", {{"pthread_setspecific", "false"}}},

      {"CreateQueue",
       CreateQueue,
       "true",
       {{"pthread_mutex_init", "false"}, {"pthread_cond_init", "false"}}},
      {"DestroyQueue",
       DestroyQueue,
       "",
       {{"pthread_mutex_destroy", ""}, {"pthread_cond_destroy", ""}}},
      {"PassMessages",
       PassMessages,
       "true 2",
       {{"pthread_mutex_lock", kPlainMutex},
        {"pthread_mutex_unlock", kPlainMutex},
        {"pthread_cond_signal", kPlainMutex}}},
      // A wait that fails, or ends for no reason, ends the loop.
      {"WaitForMessage",
       WaitForMessage,
       "true",
       {{"pthread_cond_wait", "false"},
        {"pthread_mutex_lock", kPlainMutex},
        {"sched_getaffinity", "true"}}},
  };
}

}  // namespace kest_test
