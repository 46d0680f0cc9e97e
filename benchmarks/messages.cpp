// The message queue beside other queues that block: on one thread, from one core to another, and
// there and back.
//
// A message is an identifier and two pointers for everyone. Queues of pointers carry a record from
// malloc, which the consumer frees.

#if KEST_PEER_GLIB
#include <glib.h>
#endif
#if KEST_PEER_MOODYCAMEL
#include <concurrentqueue/blockingconcurrentqueue.h>
#endif

#include <immintrin.h>
#include <stdlib.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "kest/frame.h"
#include "kest/message.h"
#include "support/row.h"

namespace {

struct Message {
  unsigned int id;
  void* param1;
  void* param2;
};

// Each kind of queue has Post, and Get, which waits for a message.

class Kest {
 public:
  Kest() : queue_(KEST::InternalCreateMessageQueue()) {}
  ~Kest() { KEST::InternalDestroyMessageQueue(queue_); }
  void Post(const Message& message) {
    KEST::InternalPostMessage(queue_, message.id, message.param1, message.param2);
  }
  Message Get() {
    Message message;
    while (!KEST::InternalGetMessage(queue_, message.id, message.param1, message.param2, true)) {
    }
    return message;
  }

 private:
  void* queue_;
};

// With allocator hooks of the client's, which make a queue ask for each message's memory.
class ClientHooks {
 public:
  ClientHooks() {
    KEST::SAllocator hooks = {[](unsigned int size) { return malloc(size); },
                              [](void* block, unsigned int size) { return realloc(block, size); },
                              [](void* block) { free(block); }};
    KEST::MemInit(&hooks);
  }
  ~ClientHooks() { KEST::MemTerm(); }
};

class KestWithHooks : ClientHooks, public Kest {};

class Deque {
 public:
  void Post(const Message& message) {
    const std::lock_guard<std::mutex> lock(mutex_);
    messages_.push_back(message);
    if (messages_.size() == 1) filled_.notify_one();
  }
  Message Get() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (messages_.empty()) filled_.wait(lock);
    const Message message = messages_.front();
    messages_.pop_front();
    return message;
  }

 private:
  std::mutex mutex_;
  std::condition_variable filled_;
  std::deque<Message> messages_;
};

#if KEST_PEER_GLIB
class GLib {
 public:
  ~GLib() { g_async_queue_unref(queue_); }
  void Post(const Message& message) {
    Message* const record = static_cast<Message*>(malloc(sizeof(Message)));
    *record = message;
    g_async_queue_push(queue_, record);
  }
  Message Get() {
    Message* const record = static_cast<Message*>(g_async_queue_pop(queue_));
    const Message message = *record;
    free(record);
    return message;
  }

 private:
  GAsyncQueue* const queue_ = g_async_queue_new();
};
#endif

#if KEST_PEER_MOODYCAMEL
class Moodycamel {
 public:
  void Post(const Message& message) { queue_.enqueue(message); }
  Message Get() {
    Message message;
    queue_.wait_dequeue(message);
    return message;
  }

 private:
  moodycamel::BlockingConcurrentQueue<Message> queue_;
};
#endif

const Message kMessage = {1, nullptr, nullptr};

template <typename Queue>
void OneThread(benchmark::State& state) {
  Queue queue;
  for (auto _ : state) {
    queue.Post(kMessage);
    benchmark::DoNotOptimize(queue.Get());
  }
}

// How many messages the producer runs ahead at most.
constexpr benchmark::IterationCount kBurst = 4096;

template <typename Queue>
void TwoCores(benchmark::State& state) {
  Queue queue;
  const benchmark::IterationCount count = state.max_iterations;
  std::atomic<benchmark::IterationCount> wanted{0};
  std::thread producer([&] {
    for (benchmark::IterationCount posted = 0; posted < count; ++posted) {
      while (posted == wanted.load(std::memory_order_acquire)) _mm_pause();
      queue.Post(kMessage);
    }
  });
  benchmark::IterationCount taken = 0;
  for (auto _ : state) {
    if (taken % kBurst == 0) wanted.store(std::min(taken + kBurst, count));
    benchmark::DoNotOptimize(queue.Get());
    ++taken;
  }
  producer.join();
}

template <typename Queue>
void RoundTrip(benchmark::State& state) {
  Queue there, back;
  const benchmark::IterationCount count = state.max_iterations;
  std::thread other([&] {
    for (benchmark::IterationCount i = 0; i < count; ++i) back.Post(there.Get());
  });
  for (auto _ : state) {
    there.Post(kMessage);
    benchmark::DoNotOptimize(back.Get());
  }
  other.join();
}

constexpr char kOneThread[] = "post and get, one thread";
constexpr char kTwoCores[] = "post and get, two cores";
constexpr char kTwoCoresHooks[] = "post and get, two cores, client's hooks";
constexpr char kRoundTrip[] = "round trip, two cores";
constexpr char kRoundTripLooking[] = "round trip, two cores, nobody sleeps";

// The rows that a queue of that kind is in. One that looks for messages before it sleeps has a row
// of its own for the round trip.
template <typename Queue>
void RegisterPeer(const char* who, const char* roundTrip) {
  Row(kOneThread, who, OneThread<Queue>)->UseRealTime();
  Row(kTwoCores, who, TwoCores<Queue>)->UseRealTime();
  Row(kTwoCoresHooks, who, TwoCores<Queue>)->UseRealTime();
  Row(roundTrip, who, RoundTrip<Queue>)->UseRealTime();
}

}  // namespace

void RegisterRows() {
  std::thread([] {}).join();  // locks are cheaper in a process that has had one thread only
  Row(kOneThread, "kest", OneThread<Kest>)->UseRealTime();
  Row(kTwoCores, "kest", TwoCores<Kest>)->UseRealTime();
  Row(kTwoCoresHooks, "kest", TwoCores<KestWithHooks>)->UseRealTime();
  Row(kRoundTrip, "kest", RoundTrip<Kest>)->UseRealTime();
  Row(kRoundTripLooking, "kest", RoundTrip<Kest>)->UseRealTime();
  RegisterPeer<Deque>("std", kRoundTrip);
#if KEST_PEER_GLIB
  RegisterPeer<GLib>("glib", kRoundTrip);
#endif
#if KEST_PEER_MOODYCAMEL
  RegisterPeer<Moodycamel>("moodycamel", kRoundTripLooking);
#endif
}
