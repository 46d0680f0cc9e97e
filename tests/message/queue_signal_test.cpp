// When the queue signals, and what a wake-up without a message does. The condition's functions are
// defined here: the program exports them, so the library's calls land in this file.

#include <errno.h>
#include <pthread.h>
#include <sched.h>

#include <thread>
#include <vector>

#include "kest/message.h"
#include "support/test_allocator.h"

namespace {

int s_signals = 0, s_waits = 0, s_ended = 0, s_initResult = 0;

// The cores that the process may run on, how often that was asked, and the answer.
cpu_set_t s_cores;
int s_asked = 0, s_coresResult = 0;

// Runs inside a wait, which then reports a wake-up.
void (*s_duringWait)() = nullptr;

}  // namespace

extern "C" {

int pthread_cond_init(pthread_cond_t*, const pthread_condattr_t*) noexcept { return s_initResult; }

int pthread_cond_destroy(pthread_cond_t*) noexcept {
  ++s_ended;
  return 0;
}

int pthread_cond_signal(pthread_cond_t*) noexcept {
  ++s_signals;
  return 0;
}

int pthread_cond_wait(pthread_cond_t*, pthread_mutex_t* mutex) {
  ++s_waits;
  pthread_mutex_unlock(mutex);
  if (s_duringWait != nullptr) s_duringWait();
  pthread_mutex_lock(mutex);
  return 0;
}

int sched_getaffinity(pid_t, size_t size, cpu_set_t* cores) noexcept {
  EXPECT_EQ(sizeof(cpu_set_t), size);
  ++s_asked;
  *cores = s_cores;
  return s_coresResult;
}

}  // extern "C"

namespace {

void* Pointer(uintptr_t value) { return reinterpret_cast<void*>(value); }

class QueueSignal : public testing::Test {
 protected:
  void SetUp() override {
    s_initResult = 0;
    s_duringWait = nullptr;
    ASSERT_TRUE(KEST::MessageInit());
    s_signals = s_waits = 0;
  }
  void TearDown() override { KEST::MessageTerm(); }
};

TEST_F(QueueSignal, OnlyAPostToAnEmptyQueueSignals) {
  for (int round = 1; round <= 3; ++round) {
    for (unsigned int i = 1; i <= 3; ++i) EXPECT_TRUE(KestPostMessage(i, nullptr, nullptr));
    EXPECT_EQ(round, s_signals);
    for (unsigned int i = 1; i <= 3; ++i) {
      unsigned int id = 0;
      void* param1;
      void* param2;
      EXPECT_TRUE(KestGetMessage(&id, &param1, &param2));
      EXPECT_EQ(i, id);
    }
  }
  EXPECT_EQ(0, s_waits);
}

TEST_F(QueueSignal, WithACallbackNothingIsSignalled) {
  static int s_calls;
  s_calls = 0;
  KestSetMessageAvailableCallback([](void*) { ++s_calls; }, nullptr);
  EXPECT_TRUE(KestPostMessage(1, nullptr, nullptr));
  EXPECT_EQ(1, s_calls);
  EXPECT_EQ(0, s_signals);
}

TEST_F(QueueSignal, ARefusedPostDoesNotSignal) {
  kest_test::TestAllocator allocator;
  for (int n : {1, 2}) {
    allocator.Refuse(n, kest_test::TestAllocator::kOnlyOne);
    EXPECT_FALSE(KestPostMessage(1, nullptr, nullptr));
  }
  EXPECT_EQ(0, s_signals);
  EXPECT_EQ(0, allocator.Live());
}

TEST_F(QueueSignal, AGetThatWakesToAnEmptyQueueFailsAfterOneWait) {
  void* const queue = KEST::InternalCreateMessageQueue();
  unsigned int id = 77;
  void* param1 = Pointer(78);
  void* param2 = Pointer(79);
  EXPECT_FALSE(KEST::InternalGetMessage(queue, id, param1, param2, true));
  EXPECT_EQ(1, s_waits);
  EXPECT_EQ(77u, id);
  EXPECT_EQ(Pointer(78), param1);
  EXPECT_EQ(Pointer(79), param2);
  EXPECT_TRUE(KEST::InternalPostMessage(queue, 5, Pointer(6), Pointer(7)));
  EXPECT_TRUE(KEST::InternalGetMessage(queue, id, param1, param2, true));
  EXPECT_EQ(1, s_waits) << "no wait when a message is there";
  EXPECT_EQ(5u, id);
  KEST::InternalDestroyMessageQueue(queue);
}

TEST_F(QueueSignal, AGetWakesToAMessage) {
  s_duringWait = [] { KestPostQuitMessage(Pointer(42)); };
  EXPECT_EQ(Pointer(42), KestMessageLoop());
  EXPECT_EQ(1, s_waits);
  EXPECT_EQ(1, s_signals);
}

TEST_F(QueueSignal, ALoopThatWakesToNothingEndsWithThePreviousParameter) {
  EXPECT_EQ(nullptr, KestMessageLoop()) << "there was no previous message";
  EXPECT_EQ(1, s_waits);
  EXPECT_TRUE(KestPostMessage(5, Pointer(50), Pointer(51)));
  EXPECT_TRUE(KestPostMessage(6, Pointer(60), Pointer(61)));
  EXPECT_EQ(Pointer(60), KestMessageLoop());
  EXPECT_EQ(2, s_waits);
}

// A consumer looks for a while before it waits, if it has more than one core. Either way it waits
// once and gets the message that comes then. Each round is a thread of its own, as what a consumer
// has learnt is kept for each.
TEST_F(QueueSignal, AConsumerWaitsOnceOnAnyNumberOfCores) {
  struct {
    std::vector<int> cores;
    int result;
  } const kRows[] = {{{}, 0}, {{0}, 0}, {{70}, 0}, {{0, 1}, 0}, {{3, 900}, 0}, {{0, 1}, -1}};
  static void* s_queue;
  s_duringWait = [] { KEST::InternalPostMessage(s_queue, 5, nullptr, nullptr); };
  for (const auto& row : kRows) {
    CPU_ZERO(&s_cores);
    for (int core : row.cores) CPU_SET(static_cast<size_t>(core), &s_cores);
    s_coresResult = row.result;
    s_asked = s_waits = 0;
    std::thread([] {
      void* const queue = KEST::InternalCreateMessageQueue();
      s_queue = queue;
      for (int wait = 1; wait <= 150; ++wait) {
        unsigned int id = 0;
        void *param1, *param2;
        EXPECT_TRUE(KEST::InternalGetMessage(queue, id, param1, param2, true));
        EXPECT_EQ(5u, id);
        EXPECT_EQ(wait, s_waits);
        EXPECT_LE(wait, s_asked);
      }
      KEST::InternalDestroyMessageQueue(queue);
    }).join();
  }
}

TEST_F(QueueSignal, DestroyingAQueueEndsItsCondition) {
  void* const queue = KEST::InternalCreateMessageQueue();
  const int before = s_ended;
  KEST::InternalDestroyMessageQueue(queue);
  EXPECT_EQ(before + 1, s_ended);
}

TEST_F(QueueSignal, AQueueWhoseConditionFailsIsNotCreated) {
  KEST::MessageTerm();
  kest_test::TestAllocator allocator;
  s_initResult = ENOMEM;
  EXPECT_EQ(nullptr, KEST::InternalCreateMessageQueue());
  EXPECT_FALSE(KEST::MessageInit());
  EXPECT_EQ(0, allocator.Live());
  EXPECT_FALSE(KestPostMessage(1, nullptr, nullptr));
  s_initResult = 0;
  EXPECT_TRUE(KEST::MessageInit());
  KEST::MessageTerm();
}

}  // namespace
