// The queue by its handle; the process's own queue is in message_test.cpp.

#include <errno.h>

#include <thread>
#include <vector>

#include "kest/message.h"
#include "kest/thread.h"
#include "support/gate.h"
#include "support/test_allocator.h"

namespace {

using kest_test::Counter;
using kest_test::TestAllocator;

void* Pointer(uintptr_t value) { return reinterpret_cast<void*>(value); }

struct Message {
  unsigned int id = 77;
  void* param1 = Pointer(78);
  void* param2 = Pointer(79);

  bool operator==(const Message& other) const {
    return id == other.id && param1 == other.param1 && param2 == other.param2;
  }
};

const Message kUntouched;

// Reaches the queue's lock, which lies at a fixed place, to ask without waiting.
struct OpenCondVar : KEST::TCondVar {
  int TryLock() { return pthread_mutex_trylock(&mutex); }
};

OpenCondVar& LockOf(void* queue) {
  return *reinterpret_cast<OpenCondVar*>(static_cast<char*>(queue) + 6 * sizeof(void*));
}

bool IsLocked(void* queue) {
  const int result = LockOf(queue).TryLock();
  if (result == 0) LockOf(queue).Unlock();
  return result == EBUSY;
}

// What the callbacks of a loop were given.
std::vector<Message> s_given;

void Record(unsigned int id, void* param1, void* param2) {
  s_given.push_back({id, param1, param2});
}

class MessageQueue : public testing::Test {
 protected:
  void SetUp() override {
    s_given.clear();
    queue = KEST::InternalCreateMessageQueue();
    ASSERT_NE(nullptr, queue);
  }
  void TearDown() override {
    KEST::InternalDestroyMessageQueue(queue);
    for (unsigned int id : {5u, 7u, KEST::kQuitMessageId}) KestUnregisterMessageCallback(id);
  }

  bool Post(unsigned int id, uintptr_t param1 = 0, uintptr_t param2 = 0) {
    return KEST::InternalPostMessage(queue, id, Pointer(param1), Pointer(param2));
  }
  bool Get(Message& message, bool wait = false) {
    return KEST::InternalGetMessage(queue, message.id, message.param1, message.param2, wait);
  }

  void* queue = nullptr;
};

// Counts its calls, and keeps what it saw in the latest.
struct Available {
  explicit Available(void* watched) : queue(watched) {}

  static void Call(void* data) {
    Available* const self = static_cast<Available*>(data);
    ++self->calls;
    self->locked = IsLocked(self->queue);
    self->thread = std::this_thread::get_id();
    if (self->wakes != nullptr) self->wakes->Add();
  }

  void* queue;
  int calls = 0;
  bool locked = false;
  std::thread::id thread;
  Counter* wakes = nullptr;
};

TEST_F(MessageQueue, GivesMessagesInTheOrderPosted) {
  EXPECT_TRUE(Post(5, 50, 51));
  EXPECT_TRUE(Post(7, 70, 71));
  EXPECT_TRUE(Post(6, 60, 61));
  Message message;
  for (unsigned int id : {5u, 7u, 6u}) {
    EXPECT_TRUE(Get(message));
    EXPECT_EQ((Message{id, Pointer(id * 10), Pointer(id * 10 + 1)}), message);
  }
  EXPECT_FALSE(Get(message));
}

TEST_F(MessageQueue, CarriesAnyIdentifierAndParameters) {
  const Message rows[] = {{0, nullptr, nullptr},
                          {KEST::kQuitMessageId, Pointer(42), nullptr},
                          {1, Pointer(UINTPTR_MAX), Pointer(UINTPTR_MAX - 1)},
                          {0x80000000, nullptr, Pointer(1)}};
  for (const Message& row : rows) {
    EXPECT_TRUE(KEST::InternalPostMessage(queue, row.id, row.param1, row.param2));
    Message message;
    EXPECT_TRUE(Get(message));
    EXPECT_EQ(row, message);
  }
}

TEST_F(MessageQueue, GetOnAnEmptyQueueFailsAtOnceAndLeavesTheOutputs) {
  Message message;
  EXPECT_FALSE(Get(message));
  EXPECT_EQ(kUntouched, message);
  EXPECT_FALSE(IsLocked(queue));
}

TEST_F(MessageQueue, AWaitingGetTakesWhatIsThere) {
  EXPECT_TRUE(Post(5, 50));
  Message message;
  EXPECT_TRUE(Get(message, true));
  EXPECT_EQ(5u, message.id);
  EXPECT_FALSE(IsLocked(queue));
}

TEST_F(MessageQueue, ABlockedGetReturnsAnotherThreadsMessage) {
  for (unsigned int id = 1; id <= 200; ++id) {
    std::thread poster([&] { EXPECT_TRUE(Post(id, id * 10, id * 10 + 1)); });
    Message message;
    while (!Get(message, true)) {
    }
    poster.join();
    EXPECT_EQ((Message{id, Pointer(id * 10), Pointer(id * 10 + 1)}), message);
  }
}

TEST_F(MessageQueue, TheCallbackRunsOnceForEachTimeTheQueueFills) {
  Available available(queue);
  KEST::InternalSetMessageAvailableCallback(queue, Available::Call, &available);
  Message message;
  for (int round = 1; round <= 3; ++round) {
    EXPECT_TRUE(Post(1));
    EXPECT_TRUE(Post(2));
    EXPECT_TRUE(Post(3));
    EXPECT_EQ(round, available.calls);
    EXPECT_TRUE(Get(message));
    EXPECT_TRUE(Post(4));
    EXPECT_EQ(round, available.calls) << "the queue was not empty";
    while (Get(message)) {
    }
  }
}

TEST_F(MessageQueue, TheCallbackRunsOnThePostingThreadUnderTheLock) {
  Available available(queue);
  KEST::InternalSetMessageAvailableCallback(queue, Available::Call, &available);
  std::thread::id poster;
  std::thread([&] {
    poster = std::this_thread::get_id();
    EXPECT_TRUE(Post(1));
  }).join();
  EXPECT_EQ(1, available.calls);
  EXPECT_TRUE(available.locked);
  EXPECT_EQ(poster, available.thread);
  EXPECT_FALSE(IsLocked(queue)) << "after the post";
}

TEST_F(MessageQueue, ANullCallbackReturnsToSignalling) {
  Available available(queue);
  KEST::InternalSetMessageAvailableCallback(queue, Available::Call, &available);
  KEST::InternalSetMessageAvailableCallback(queue, nullptr, &available);
  std::thread poster([&] { EXPECT_TRUE(Post(5)); });
  Message message;
  while (!Get(message, true)) {
  }
  poster.join();
  EXPECT_EQ(5u, message.id);
  EXPECT_EQ(0, available.calls);
}

TEST_F(MessageQueue, SettingTheCallbackDoesNotTakeTheLock) {
  Available available(queue);
  ASSERT_EQ(0, LockOf(queue).Lock());
  KEST::InternalSetMessageAvailableCallback(queue, Available::Call, &available);
  ASSERT_EQ(0, LockOf(queue).Unlock());
  EXPECT_TRUE(Post(1));
  EXPECT_EQ(1, available.calls);
}

// Thread sanitizer sees no race.
TEST_F(MessageQueue, TheCallbackMayBeSetWhileAnotherThreadPosts) {
  KEST::TThread poster;
  const auto postAndGet = [](void* target) {
    unsigned int id;
    void *param1, *param2;
    for (int i = 0; i < 1000; ++i) {
      KEST::InternalPostMessage(target, 1, nullptr, nullptr);
      KEST::InternalGetMessage(target, id, param1, param2, false);
    }
    return 0;
  };
  ASSERT_TRUE(poster.Create(postAndGet, queue, false));
  void (*const callbacks[])(void*) = {[](void*) {}, nullptr};
  for (int i = 0; i < 1000; ++i) {
    KEST::InternalSetMessageAvailableCallback(queue, callbacks[i % 2], nullptr);
  }
  EXPECT_TRUE(poster.WaitForExit(nullptr));
}

TEST_F(MessageQueue, ANewCallbackIsNotToldOfMessagesThatWait) {
  EXPECT_TRUE(Post(1));
  Available available(queue);
  KEST::InternalSetMessageAvailableCallback(queue, Available::Call, &available);
  EXPECT_TRUE(Post(2));
  EXPECT_EQ(0, available.calls);
}

TEST_F(MessageQueue, APostTakesOneRecordAndAListNode) {
  TestAllocator allocator;
  EXPECT_TRUE(Post(1));
  EXPECT_EQ(2, allocator.Requests()) << "the record, and ten nodes";
  EXPECT_EQ(sizeof(void*) + 10 * 3 * sizeof(void*), allocator.LastSize());
  EXPECT_TRUE(Post(2));
  EXPECT_EQ(3, allocator.Requests());
  EXPECT_EQ(sizeof(void*) == 4 ? 12u : 24u, allocator.LastSize());
  Message message;
  EXPECT_TRUE(Get(message));
  EXPECT_EQ(2, allocator.Live());
  EXPECT_TRUE(Get(message));
  EXPECT_EQ(0, allocator.Live()) << "an empty queue holds no memory";
}

TEST_F(MessageQueue, ARefusedPostChangesNothing) {
  Available available(queue);
  KEST::InternalSetMessageAvailableCallback(queue, Available::Call, &available);
  kest_test::ForEachRefusedRequest([&](TestAllocator& allocator) {
    std::vector<unsigned int> posted;
    available.calls = 0;
    for (unsigned int id = 1; id <= 25; ++id) {
      const int refused = allocator.Refused();
      const bool done = Post(id);
      EXPECT_EQ(allocator.Refused() == refused, done);
      if (done) posted.push_back(id);
      EXPECT_EQ(posted.empty() ? 0 : 1, available.calls) << "only for a message that is there";
    }
    Message message;
    for (unsigned int id : posted) {
      EXPECT_TRUE(Get(message));
      EXPECT_EQ(id, message.id);
    }
    EXPECT_FALSE(Get(message));
  });
}

TEST(MessageQueueLife, CreationWithoutMemoryGivesNull) {
  kest_test::ForEachRefusedRequest([](TestAllocator& allocator) {
    void* const queue = KEST::InternalCreateMessageQueue();
    EXPECT_EQ(allocator.Refused() > 0, queue == nullptr);
    EXPECT_EQ(sizeof(void*) == 4 ? 104u : 152u, allocator.LastSize());
    KEST::InternalDestroyMessageQueue(queue);
  });
}

TEST(MessageQueueLife, DestroyingNullDoesNothing) { KEST::InternalDestroyMessageQueue(nullptr); }

TEST(MessageQueueLife, DestroyingFreesPendingRecordsAndCallsNothing) {
  static int s_called;
  TestAllocator allocator;
  ASSERT_TRUE(KestRegisterMessageCallback(5, [](unsigned int, void*, void*) { ++s_called; }));
  const int before = allocator.Live();
  void* const queue = KEST::InternalCreateMessageQueue();
  Available available(queue);
  int param = 5;  // not freed
  for (int i = 0; i < 25; ++i) {
    EXPECT_TRUE(KEST::InternalPostMessage(queue, 5, &param, Pointer(3)));
  }
  KEST::InternalSetMessageAvailableCallback(queue, Available::Call, &available);
  KEST::InternalDestroyMessageQueue(queue);
  EXPECT_EQ(before, allocator.Live());
  EXPECT_EQ(0, s_called);
  EXPECT_EQ(0, available.calls);
  EXPECT_TRUE(KestUnregisterMessageCallback(5));
}

TEST_F(MessageQueue, TheLoopHandsMessagesOutUntilTheQuit) {
  ASSERT_TRUE(KestRegisterMessageCallback(5, Record));
  ASSERT_TRUE(KestRegisterMessageCallback(7, Record));
  ASSERT_TRUE(KestRegisterMessageCallback(KEST::kQuitMessageId, Record));
  EXPECT_TRUE(Post(5, 50, 51));
  EXPECT_TRUE(Post(6, 60, 61));  // nobody's: dropped
  EXPECT_TRUE(Post(7, 70, 71));
  EXPECT_TRUE(Post(KEST::kQuitMessageId, 42, 43));
  EXPECT_TRUE(Post(5, 52, 53));
  EXPECT_EQ(Pointer(42), KEST::InternalMessageLoop(queue));
  const std::vector<Message> expected = {{5, Pointer(50), Pointer(51)},
                                         {7, Pointer(70), Pointer(71)}};
  EXPECT_EQ(expected, s_given);
  Message message;
  EXPECT_TRUE(Get(message));
  EXPECT_EQ((Message{5, Pointer(52), Pointer(53)}), message) << "is left pending";
}

TEST_F(MessageQueue, TheLoopRunsWhatAnotherThreadPosts) {
  ASSERT_TRUE(KestRegisterMessageCallback(5, Record));
  std::thread poster([&] {
    for (uintptr_t i = 0; i < 1000; ++i) ASSERT_TRUE(Post(5, i));
    ASSERT_TRUE(Post(KEST::kQuitMessageId, 42));
  });
  EXPECT_EQ(Pointer(42), KEST::InternalMessageLoop(queue));
  poster.join();
  ASSERT_EQ(1000u, s_given.size());
  for (uintptr_t i = 0; i < 1000; ++i) ASSERT_EQ(Pointer(i), s_given[i].param1);
}

// Producers against one consumer. A message carries its producer's number and a running number.
class Flood : public MessageQueue {
 protected:
  static constexpr unsigned int kProducers = 8;
  static constexpr uintptr_t kMessages = 10000;

  void Start() {
    for (unsigned int number = 0; number < kProducers; ++number) {
      producers.emplace_back([this, number] {
        for (uintptr_t i = 0; i < kMessages; ++i) ASSERT_TRUE(Post(number, i, ~i));
      });
    }
  }
  void Check(const Message& message) {
    ++received;
    ASSERT_LT(message.id, kProducers);
    const uintptr_t expected = next[message.id]++;
    ASSERT_EQ(Pointer(expected), message.param1) << "in order for each producer";
    ASSERT_EQ(Pointer(~expected), message.param2);
  }
  void Finish() {
    for (std::thread& producer : producers) producer.join();
    Message message;
    EXPECT_FALSE(Get(message));
    for (uintptr_t count : next) EXPECT_EQ(kMessages, count);
  }

  std::vector<std::thread> producers;
  uintptr_t next[kProducers] = {};
  uintptr_t received = 0;
};

TEST_F(Flood, ABlockingConsumerGetsEverything) {
  TestAllocator allocator;
  Start();
  Message message;
  while (received < kProducers * kMessages) {
    if (Get(message, true)) Check(message);
  }
  Finish();
  EXPECT_EQ(0, allocator.Live());
}

TEST_F(Flood, AConsumerThatTheCallbackWakesGetsEverything) {
  TestAllocator allocator;
  Counter wakes;
  Available available(queue);
  available.wakes = &wakes;
  KEST::InternalSetMessageAvailableCallback(queue, Available::Call, &available);
  Start();
  Message message;
  for (int wake = 1; received < kProducers * kMessages; ++wake) {
    wakes.WaitFor(wake);
    while (Get(message)) Check(message);
  }
  Finish();
  EXPECT_EQ(0, allocator.Live());
}

}  // namespace
