// Eight producers against the one consumer, through the public calls. A message carries its
// producer's identifier and a running number; the consumer has to see each number once and in
// order.
//
// No allocator hooks here: their counting would order the threads, and so hide a race from thread
// sanitizer.

#include <gtest/gtest.h>
#include <stdint.h>

#include "kest/frame.h"
#include "kest/message.h"
#include "stress/event.h"
#include "stress/repeats.h"

namespace {

using kest_test::Event;

constexpr unsigned int kProducers = 8;

// Whether a producer that has posted so many messages waits until they are taken: after 1, 2, 4,
// ..., 4096 more, over and over. So the queue runs empty every now and then, and its memory stays
// bounded.
bool Pauses(uintptr_t posted) {
  const uintptr_t phase = posted % 8191 + 1;
  return posted > 0 && (phase & (phase - 1)) == 0;
}

void* Pointer(uintptr_t value) { return reinterpret_cast<void*>(value); }

struct Producer {
  KEST::TThread thread;
  unsigned int id = 0;
  Event taken;         // all it has posted
  uintptr_t next = 0;  // the number that the consumer expects
};

Producer s_producers[kProducers];
uintptr_t s_share;  // messages of one producer
uintptr_t s_wrong;  // messages out of order or damaged

int Produce(void* argument) {
  Producer& self = *static_cast<Producer*>(argument);
  for (uintptr_t i = 0; i < s_share; ++i) {
    if (Pauses(i)) self.taken.Take();
    if (!KestPostMessage(self.id, Pointer(i), Pointer(~i))) return 1;
  }
  return 0;
}

bool AllTaken() {
  for (const Producer& producer : s_producers) {
    if (producer.next < s_share) return false;
  }
  return true;
}

// The callback of all eight, on the consumer's thread.
void Consume(unsigned int id, void* number, void* complement) {
  Producer& from = s_producers[id - s_producers[0].id];
  if (number != Pointer(from.next) || complement != Pointer(~from.next)) ++s_wrong;
  ++from.next;
  if (Pauses(from.next)) from.taken.Set();
  if (from.next == s_share && AllTaken()) KestPostQuitMessage(nullptr);
}

class Messages : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(1, KestInitialize(nullptr));
    s_share = static_cast<uintptr_t>(kest_test::Repeats(5000000, 5000000)) / kProducers;
    ASSERT_GT(s_share, 0u);
    for (Producer& producer : s_producers) {
      producer.id = KestRequestMessageId();
      producer.next = 0;
      ASSERT_TRUE(KestRegisterMessageCallback(producer.id, Consume));
    }
  }

  void Start() {
    for (Producer& producer : s_producers) {
      ASSERT_TRUE(producer.thread.Create(Produce, &producer, false));
    }
  }

  void TearDown() override {
    for (Producer& producer : s_producers) {
      int failed = 1;
      EXPECT_TRUE(producer.thread.WaitForExit(&failed));
      EXPECT_EQ(0, failed) << "a post failed";
      EXPECT_EQ(s_share, producer.next);
      EXPECT_TRUE(KestUnregisterMessageCallback(producer.id));
    }
    EXPECT_EQ(0u, s_wrong);
    unsigned int id;
    void* rest[2];
    EXPECT_FALSE(KestGetMessage(&id, &rest[0], &rest[1])) << "more than was posted";
    KestUninitialize();
  }
};

TEST_F(Messages, OfEightProducersReachTheLoopOnceAndInOrder) {
  Start();
  while (!AllTaken()) KestMessageLoop();  // a wake-up for no reason ends the loop too
}

TEST_F(Messages, OfEightProducersReachAHostsLoopOnceAndInOrder) {
  Event available;
  KestSetMessageAvailableCallback([](void* event) { static_cast<Event*>(event)->Set(); },
                                  &available);
  Start();
  while (!AllTaken()) {
    available.Take();
    KestDispatchMessages();
  }
  KestSetMessageAvailableCallback(nullptr, nullptr);
}

}  // namespace
