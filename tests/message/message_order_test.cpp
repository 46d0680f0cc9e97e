// That each message comes out once and in order, whatever way it takes through the queue: with the
// default hooks through blocks that are used again, with a client's through records of its own.

#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <deque>
#include <functional>
#include <optional>
#include <thread>
#include <vector>

#include "kest/message.h"
#include "support/gate.h"
#include "support/random.h"
#include "support/test_allocator.h"

namespace {

using kest_test::Random;
using kest_test::TestAllocator;

void* Pointer(uintptr_t value) { return reinterpret_cast<void*>(value); }

class MessageOrder : public testing::Test {
 protected:
  void SetUp() override {
    queue = KEST::InternalCreateMessageQueue();
    ASSERT_NE(nullptr, queue);
  }
  void TearDown() override { KEST::InternalDestroyMessageQueue(queue); }

  // A queue of the hooks that are in force now.
  void Renew() {
    TearDown();
    SetUp();
  }

  // Messages are numbers. Each carries its own twice more.
  bool Post(unsigned int number) {
    return KEST::InternalPostMessage(queue, number, Pointer(number), Pointer(~number));
  }
  // The number of the next message, or none.
  std::optional<unsigned int> Get(bool wait = false) {
    unsigned int number = 0;
    void *same = nullptr, *complement = nullptr;
    if (!KEST::InternalGetMessage(queue, number, same, complement, wait)) return {};
    EXPECT_EQ(Pointer(number), same);
    EXPECT_EQ(Pointer(~number), complement);
    return number;
  }

  void* queue = nullptr;
};

// Posts and gets up to a given number each, in turn, against a plain queue.
void Mix(int most, const std::function<bool(unsigned int)>& post,
         const std::function<std::optional<unsigned int>()>& get) {
  Random random;
  std::deque<unsigned int> expected;
  unsigned int posted = 0;
  const int turns = Random::Cases(20000) / most;
  for (int turn = 0; turn < turns; ++turn) {
    SCOPED_TRACE(random.Seed());
    for (int i = random.Between(0, most); i > 0; --i) {
      ASSERT_TRUE(post(posted));
      expected.push_back(posted++);
    }
    for (int i = random.Between(0, most); i > 0; --i) {
      const std::optional<unsigned int> got = get();
      ASSERT_EQ(!expected.empty(), got.has_value());
      if (!got) break;
      ASSERT_EQ(expected.front(), *got);
      expected.pop_front();
    }
  }
  for (unsigned int number : expected) ASSERT_EQ(number, get());
  ASSERT_EQ(std::nullopt, get());
}

TEST_F(MessageOrder, HoldsForAnyMixOfPostsAndGets) {
  for (int most : {1, 2, 3, 10, 130, 700}) {
    SCOPED_TRACE(most);
    Mix(
        most, [&](unsigned int number) { return Post(number); }, [&] { return Get(); });
  }
}

TEST_F(MessageOrder, HoldsWithHooksOfAClient) {
  TestAllocator allocator;
  for (bool renewed : {false, true}) {
    SCOPED_TRACE(renewed);
    if (renewed) Renew();
    allocator.Reset();
    for (int most : {1, 2, 3, 10, 130, 700}) {
      SCOPED_TRACE(most);
      Mix(
          most, [&](unsigned int number) { return Post(number); }, [&] { return Get(); });
      EXPECT_EQ(0, allocator.Live());
    }
  }
}

// What a client's hooks are asked for: a record a message, ten nodes whenever none is free, and all
// nodes back once the queue is empty.
class Memory {
 public:
  void Post() {
    ++requests;
    ++messages;
    if (messages <= 10 * blocks) return;
    ++blocks;
    ++requests;
  }
  void Get() {
    if (--messages == 0) blocks = 0;
  }
  int Live() const { return messages + blocks; }

  int requests = 0;

 private:
  int messages = 0, blocks = 0;
};

TEST_F(MessageOrder, TheMemoryIsThatOfAListOfRecords) {
  TestAllocator allocator;
  // The queue that is there, the first one of these hooks, and a second one.
  std::vector<void*> queues = {queue};
  for (int i = 0; i < 2; ++i) queues.push_back(KEST::InternalCreateMessageQueue());
  for (void* each : queues) {
    queue = each;
    for (int most : {1, 3, 9, 12, 60}) {
      SCOPED_TRACE(most);
      allocator.Reset();
      Memory memory;
      Mix(
          most,
          [&](unsigned int number) {
            const bool posted = Post(number);
            memory.Post();
            EXPECT_EQ(memory.requests, allocator.Requests());
            EXPECT_EQ(memory.Live(), allocator.Live());
            return posted;
          },
          [&] {
            const std::optional<unsigned int> got = Get();
            if (got) memory.Get();
            EXPECT_EQ(memory.Live(), allocator.Live());
            return got;
          });
    }
  }
  KEST::InternalDestroyMessageQueue(queues[1]);
  KEST::InternalDestroyMessageQueue(queues[2]);
  queue = queues[0];
}

TEST_F(MessageOrder, HoldsWhenTheHooksChange) {
  std::optional<TestAllocator> allocator;
  Random random;
  const auto change = [&] {
    if (random.Between(0, 20) != 0) return;
    if (allocator.has_value()) {
      allocator.reset();
    } else {
      allocator.emplace();
    }
  };
  for (int most : {1, 3, 40, 700}) {
    SCOPED_TRACE(most);
    Mix(
        most,
        [&](unsigned int number) {
          change();
          return Post(number);
        },
        [&] {
          change();
          return Get();
        });
  }
}

// Each message of a row of posts that another turn of the queue follows: the blocks begin anew at
// every place.
TEST_F(MessageOrder, OnlyTheFirstOfARowIsAnnounced) {
  int announced = 0;
  KEST::InternalSetMessageAvailableCallback(
      queue, [](void* count) { ++*static_cast<int*>(count); }, &announced);
  int rows = 0;
  for (int length : {1, 2, 7, 125, 126, 127, 252, 300}) {
    SCOPED_TRACE(length);
    for (int row = 0; row < 130; ++row) {
      for (int i = 0; i < length; ++i) ASSERT_TRUE(Post(static_cast<unsigned int>(i)));
      ASSERT_EQ(++rows, announced);
      for (int i = 0; i < length; ++i) ASSERT_EQ(static_cast<unsigned int>(i), Get());
    }
  }
}

TEST_F(MessageOrder, AQueueIsDestroyedWithAnyNumberOfMessages) {
  for (unsigned int count = 0; count <= 400; ++count) {
    void* const other = KEST::InternalCreateMessageQueue();
    ASSERT_NE(nullptr, other);
    unsigned int id;
    void *param1, *param2;
    for (unsigned int i = 0; i < count; ++i) {
      ASSERT_TRUE(KEST::InternalPostMessage(other, i, nullptr, nullptr));
    }
    for (unsigned int i = 0; i < count / 2; ++i) {
      ASSERT_TRUE(KEST::InternalGetMessage(other, id, param1, param2, false));
      ASSERT_EQ(i, id);
    }
    KEST::InternalDestroyMessageQueue(other);
  }
}

// The callback runs with the queue locked: nobody gets the message while it does, and it needs no
// lock of its own against the consumer.
TEST_F(MessageOrder, TheMessageComesAfterItsCallback) {
  struct Shared {
    kest_test::Gate running, asking;
    int calls = 0;
  };
  for (int round = 0; round < 50; ++round) {
    Shared shared;
    KEST::InternalSetMessageAvailableCallback(
        queue,
        [](void* data) {
          Shared* const self = static_cast<Shared*>(data);
          self->running.Open();
          self->asking.Wait();
          for (int i = 0; i < 100; ++i) sched_yield();
          ++self->calls;
        },
        &shared);
    std::thread poster([&] { EXPECT_TRUE(Post(7)); });
    shared.running.Wait();
    shared.asking.Open();
    while (!Get()) {
    }
    EXPECT_EQ(1, shared.calls);
    poster.join();
  }
}

// One consumer is foreseen, but whoever asks without waiting gets a message of its own.
TEST_F(MessageOrder, SeveralGettersShareTheMessages) {
  constexpr unsigned int kPosters = 2, kGetters = 3, kShare = 20000;
  for (bool hooks : {false, true}) {
    SCOPED_TRACE(hooks);
    std::optional<TestAllocator> allocator;
    if (hooks) allocator.emplace();
    Renew();
    std::vector<std::atomic<int>> seen(kPosters * kShare);
    std::atomic<unsigned int> taken{0};
    std::vector<std::thread> threads;
    for (unsigned int poster = 0; poster < kPosters; ++poster) {
      threads.emplace_back([&, poster] {
        for (unsigned int i = 0; i < kShare; ++i) ASSERT_TRUE(Post(poster * kShare + i));
      });
    }
    for (unsigned int getter = 0; getter < kGetters; ++getter) {
      threads.emplace_back([&] {
        unsigned int last[kPosters] = {};
        while (taken < kPosters * kShare) {
          const std::optional<unsigned int> number = Get();
          if (!number) {
            sched_yield();
            continue;
          }
          ++taken;
          ++seen[*number];
          const unsigned int next = *number % kShare + 1;
          ASSERT_LT(last[*number / kShare], next) << "each poster's come in order";
          last[*number / kShare] = next;
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::atomic<int>& count : seen) ASSERT_EQ(1, count);
    EXPECT_EQ(std::nullopt, Get());
  }
}

// A consumer that waits, and so looks, rests and sleeps in turn, while the poster stops every now
// and then.
TEST_F(MessageOrder, AWaitingConsumerMissesNothing) {
  for (bool hooks : {false, true}) {
    SCOPED_TRACE(hooks);
    std::optional<TestAllocator> allocator;
    if (hooks) allocator.emplace();
    Renew();
    constexpr unsigned int kMessages = 30000;
    std::atomic<unsigned int> taken{0};
    std::thread poster([&] {
      Random random;
      for (unsigned int i = 0; i < kMessages; ++i) {
        ASSERT_TRUE(Post(i));
        if (random.Between(0, 300) != 0) continue;
        while (taken <= i) sched_yield();
        if (random.Between(0, 3) == 0) usleep(50);
      }
    });
    while (taken < kMessages) {
      const std::optional<unsigned int> number = Get(true);
      if (!number) continue;
      ASSERT_EQ(taken, *number);
      ++taken;
    }
    poster.join();
  }
}

}  // namespace
