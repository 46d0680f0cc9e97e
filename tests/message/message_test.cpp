// The process's own queue: posting, getting, dispatch and the loop.

#include <thread>
#include <vector>

#include "kest/frame.h"
#include "kest/message.h"
#include "kest/thread.h"
#include "support/gate.h"
#include "support/test_allocator.h"

namespace {

using kest_test::Counter;
using kest_test::TestAllocator;

void* Pointer(uintptr_t value) { return reinterpret_cast<void*>(value); }

std::vector<unsigned int> s_given;

void Record(unsigned int id, void*, void*) { s_given.push_back(id); }

void ExpectNoQueue() {
  unsigned int id = 77;
  void* param1 = Pointer(78);
  void* param2 = Pointer(79);
  EXPECT_FALSE(KestPostMessage(5, nullptr, nullptr));
  EXPECT_FALSE(KestPostQuitMessage(Pointer(42)));
  EXPECT_FALSE(KestGetMessage(&id, &param1, &param2));
  EXPECT_EQ(77u, id);
  EXPECT_EQ(Pointer(78), param1);
  EXPECT_EQ(Pointer(79), param2);
  EXPECT_EQ(nullptr, KestMessageLoop());
  KestDispatchMessages();
  KestSetMessageAvailableCallback([](void*) { ADD_FAILURE(); }, nullptr);
}

class Messages : public testing::Test {
 protected:
  void SetUp() override {
    s_given.clear();
    ASSERT_TRUE(KEST::MessageInit());
  }
  void TearDown() override {
    KEST::MessageTerm();
    for (unsigned int id : {5u, 6u, 7u, KEST::kQuitMessageId}) KestUnregisterMessageCallback(id);
  }

  // The identifier of the next message, or 0 when there is none.
  unsigned int Next() {
    unsigned int id = 0;
    KestGetMessage(&id, &param1, &param2);
    return id;
  }

  void* param1 = nullptr;
  void* param2 = nullptr;
};

TEST(MessagesLife, ThereIsNoQueueOutsideStartAndStop) {
  TestAllocator allocator;
  for (int round = 0; round < 3; ++round) {
    ExpectNoQueue();
    KEST::MessageTerm();
    EXPECT_EQ(0, allocator.Live());
    ASSERT_TRUE(KEST::MessageInit());
    EXPECT_TRUE(KestPostMessage(5, nullptr, nullptr));
    KEST::MessageTerm();
    EXPECT_EQ(0, allocator.Live()) << "pending messages are freed";
  }
}

TEST(MessagesLife, ASecondStartKeepsTheQueue) {
  TestAllocator allocator;
  ASSERT_TRUE(KEST::MessageInit());
  EXPECT_TRUE(KestPostMessage(5, nullptr, nullptr));
  const int requests = allocator.Requests();
  EXPECT_TRUE(KEST::MessageInit());
  EXPECT_EQ(requests, allocator.Requests());
  unsigned int id = 0;
  void* param1;
  void* param2;
  EXPECT_TRUE(KestGetMessage(&id, &param1, &param2));
  EXPECT_EQ(5u, id);
  KEST::MessageTerm();
  EXPECT_EQ(0, allocator.Live());
}

TEST(MessagesLife, StartFailsWithoutMemoryAndMayBeTriedAgain) {
  TestAllocator allocator;
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_FALSE(KEST::MessageInit());
  ExpectNoQueue();
  EXPECT_TRUE(KEST::MessageInit());
  EXPECT_TRUE(KestPostMessage(5, nullptr, nullptr));
  KEST::MessageTerm();
  EXPECT_EQ(0, allocator.Live());
}

TEST(MessagesLife, TheAvailableCallbackGoesWithTheQueue) {
  static int s_calls;
  ASSERT_TRUE(KEST::MessageInit());
  KestSetMessageAvailableCallback([](void*) { ++s_calls; }, nullptr);
  EXPECT_TRUE(KestPostMessage(5, nullptr, nullptr));
  EXPECT_EQ(1, s_calls);
  KEST::MessageTerm();
  ASSERT_TRUE(KEST::MessageInit());
  EXPECT_TRUE(KestPostMessage(5, nullptr, nullptr));
  EXPECT_EQ(1, s_calls);
  KEST::MessageTerm();
}

TEST(MessagesLife, CyclesOfTheWholeLibraryKeepMemoryFlat) {
  TestAllocator allocator;
  KEST::SAllocator hooks = allocator.Hooks();
  for (int cycle = 0; cycle < 100; ++cycle) {
    ASSERT_EQ(1, KestInitialize(&hooks));
    for (unsigned int id = 0; id < 25; ++id) ASSERT_TRUE(KestPostMessage(id, nullptr, nullptr));
    KestUninitialize();
    ASSERT_EQ(0, allocator.Live());
  }
}

TEST_F(Messages, GetDoesNotWait) {
  EXPECT_EQ(0u, Next());
  EXPECT_TRUE(KestPostMessage(5, Pointer(50), Pointer(51)));
  EXPECT_EQ(5u, Next());
  EXPECT_EQ(Pointer(50), param1);
  EXPECT_EQ(Pointer(51), param2);
  EXPECT_EQ(0u, Next());
}

TEST_F(Messages, TheQuitMessageHasOneParameter) {
  EXPECT_TRUE(KestPostQuitMessage(Pointer(42)));
  param2 = Pointer(1);
  EXPECT_EQ(KEST::kQuitMessageId, Next());
  EXPECT_EQ(Pointer(42), param1);
  EXPECT_EQ(nullptr, param2);
}

TEST_F(Messages, PostingFailsWithoutMemory) {
  TestAllocator allocator;
  for (int n : {1, 2}) {
    allocator.Refuse(n, TestAllocator::kOnlyOne);
    EXPECT_FALSE(KestPostMessage(5, nullptr, nullptr));
    allocator.Refuse(n, TestAllocator::kOnlyOne);
    EXPECT_FALSE(KestPostQuitMessage(nullptr));
  }
  EXPECT_EQ(0, allocator.Live());
  EXPECT_EQ(0u, Next());
}

TEST_F(Messages, DispatchStopsAtAQuitMessageAndDiscardsIt) {
  ASSERT_TRUE(KestRegisterMessageCallback(5, Record));
  ASSERT_TRUE(KestRegisterMessageCallback(6, Record));
  ASSERT_TRUE(KestRegisterMessageCallback(KEST::kQuitMessageId, Record));
  EXPECT_TRUE(KestPostMessage(5, nullptr, nullptr));
  EXPECT_TRUE(KestPostQuitMessage(nullptr));
  EXPECT_TRUE(KestPostMessage(6, nullptr, nullptr));
  KestDispatchMessages();
  EXPECT_EQ(std::vector<unsigned int>{5}, s_given);
  EXPECT_EQ(6u, Next()) << "is left pending";
  EXPECT_EQ(0u, Next());
}

TEST_F(Messages, DispatchDropsAMessageWithoutACallback) {
  ASSERT_TRUE(KestRegisterMessageCallback(6, Record));
  for (unsigned int id : {5u, 6u, 7u}) EXPECT_TRUE(KestPostMessage(id, nullptr, nullptr));
  KestDispatchMessages();
  EXPECT_EQ(std::vector<unsigned int>{6}, s_given);
  EXPECT_EQ(0u, Next());
}

TEST_F(Messages, DispatchOfAnEmptyQueueReturns) {
  KestDispatchMessages();
  EXPECT_TRUE(s_given.empty());
}

TEST_F(Messages, DispatchAlsoTakesWhatItsCallbacksPost) {
  ASSERT_TRUE(KestRegisterMessageCallback(5, [](unsigned int id, void* left, void*) {
    Record(id, nullptr, nullptr);
    const uintptr_t count = reinterpret_cast<uintptr_t>(left);
    if (count != 0) KestPostMessage(5, Pointer(count - 1), nullptr);
  }));
  EXPECT_TRUE(KestPostMessage(5, Pointer(9), nullptr));
  KestDispatchMessages();
  EXPECT_EQ(10u, s_given.size());
}

TEST_F(Messages, DispatchMayBeNested) {
  ASSERT_TRUE(KestRegisterMessageCallback(5, [](unsigned int id, void*, void*) {
    KestDispatchMessages();
    Record(id, nullptr, nullptr);
  }));
  ASSERT_TRUE(KestRegisterMessageCallback(6, Record));
  for (unsigned int id : {5u, 6u}) EXPECT_TRUE(KestPostMessage(id, nullptr, nullptr));
  KestDispatchMessages();
  EXPECT_EQ((std::vector<unsigned int>{6, 5}), s_given);
}

TEST_F(Messages, TheLoopReturnsTheQuitMessagesParameter) {
  ASSERT_TRUE(KestRegisterMessageCallback(5, Record));
  ASSERT_TRUE(KestRegisterMessageCallback(7, [](unsigned int id, void*, void*) {
    Record(id, nullptr, nullptr);
    EXPECT_TRUE(KestPostQuitMessage(Pointer(42)));
  }));
  for (unsigned int id : {5u, 7u, 5u}) EXPECT_TRUE(KestPostMessage(id, Pointer(1), nullptr));
  EXPECT_EQ(Pointer(42), KestMessageLoop());
  EXPECT_EQ((std::vector<unsigned int>{5, 7, 5}), s_given);
  EXPECT_TRUE(KestPostQuitMessage(nullptr));
  EXPECT_EQ(nullptr, KestMessageLoop());
}

TEST_F(Messages, CallbacksRunOnTheThreadOfTheLoop) {
  static std::thread::id s_thread;
  ASSERT_TRUE(KestRegisterMessageCallback(5, [](unsigned int, void*, void*) {
    s_thread = std::this_thread::get_id();
    EXPECT_TRUE(KestPostQuitMessage(nullptr));
  }));
  KEST::TThread poster;
  ASSERT_TRUE(poster.Create([](void*) { return KestPostMessage(5, nullptr, nullptr) ? 1 : 0; },
                            nullptr, false));
  KestMessageLoop();
  EXPECT_EQ(std::this_thread::get_id(), s_thread);
  int posted = 0;
  EXPECT_TRUE(poster.WaitForExit(&posted));
  EXPECT_EQ(1, posted);
}

TEST_F(Messages, AHostsOwnLoopDispatchesWhenTheCallbackWakesIt) {
  constexpr int kPosters = 4;
  constexpr int kMessages = 2000;
  static int s_count;
  Counter wakes;
  ASSERT_TRUE(KestRegisterMessageCallback(5, [](unsigned int, void*, void*) { ++s_count; }));
  KestSetMessageAvailableCallback([](void* data) { static_cast<Counter*>(data)->Add(); }, &wakes);
  std::vector<std::thread> posters;
  for (int i = 0; i < kPosters; ++i) {
    posters.emplace_back([] {
      for (int n = 0; n < kMessages; ++n) ASSERT_TRUE(KestPostMessage(5, nullptr, nullptr));
    });
  }
  for (int wake = 1; s_count < kPosters * kMessages; ++wake) {
    wakes.WaitFor(wake);
    KestDispatchMessages();
  }
  for (std::thread& poster : posters) poster.join();
  EXPECT_EQ(kPosters * kMessages, s_count);
}

// As a client writes it: a worker with the loop, told to quit, joined, and only then the stop.
TEST(MessagesLife, AWorkerRunsTheLoopUntilItIsToldToQuit) {
  static int s_sum;
  TestAllocator allocator;
  KEST::SAllocator hooks = allocator.Hooks();
  ASSERT_EQ(1, KestInitialize(&hooks));
  const unsigned int add = KestRequestMessageId();
  ASSERT_TRUE(KestRegisterMessageCallback(add, [](unsigned int, void* value, void*) {
    s_sum += static_cast<int>(reinterpret_cast<uintptr_t>(value));
  }));
  KEST::TThread* const worker = KestCreateThread(
      [](void*) { return static_cast<int>(reinterpret_cast<intptr_t>(KestMessageLoop())); },
      nullptr, false);
  ASSERT_NE(nullptr, worker);
  for (uintptr_t value = 1; value <= 100; ++value) {
    ASSERT_TRUE(KestPostMessage(add, Pointer(value), nullptr));
  }
  ASSERT_TRUE(KestPostQuitMessage(Pointer(3)));
  int code = 0;
  EXPECT_TRUE(worker->WaitForExit(&code));
  EXPECT_EQ(3, code);
  EXPECT_EQ(5050, s_sum);
  KestDestroyThread(worker, false);
  EXPECT_TRUE(KestUnregisterMessageCallback(add));
  KestUninitialize();
  EXPECT_EQ(0, allocator.Live());
}

}  // namespace
