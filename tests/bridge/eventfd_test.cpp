// eventfd.h: messages as a readable descriptor. The two races run as often as KEST_TEST_CASES says.

#include "kest/bridge/eventfd.h"

#include <fcntl.h>
#include <sys/epoll.h>

#include <thread>
#include <vector>

#include "kest/bridge/session.h"
#include "support/random.h"
#include "support/thread_sanitizer.h"

namespace {

using namespace KEST;
using namespace std::chrono_literals;
using kest_test::Random;
using EResult = TMessageEvent::EResult;

#if defined(KEST_TESTS_UNDER_TSAN) || defined(__SANITIZE_ADDRESS__)
constexpr int kPosts = 100000;
#else
constexpr int kPosts = 1000000;
#endif
constexpr int kRounds = 20000;
constexpr auto kLost = 20s;  // a wake-up that has not come by then is lost

void* P(uintptr_t value) { return reinterpret_cast<void*>(value); }

// Counted by the callback of one identifier, on the consumer's thread.
struct SGiven {
  uintptr_t count, sum;
};
SGiven s_given;
TMessageEvent* s_event;

class MessageEvent : public testing::Test {
 protected:
  void SetUp() override {
    s_given = {};
    ASSERT_TRUE(session);
    id = KestRequestMessageId();
    closeId = KestRequestMessageId();
    againId = KestRequestMessageId();
    ASSERT_TRUE(KestRegisterMessageCallback(id, [](unsigned int, void* number, void*) {
      ++s_given.count;
      s_given.sum += reinterpret_cast<uintptr_t>(number);
    }));
    KestRegisterMessageCallback(closeId, [](unsigned int, void*, void*) { s_event->Close(); });
    KestRegisterMessageCallback(againId, [](unsigned int again, void* left, void*) {
      ++s_given.count;
      const auto number = reinterpret_cast<uintptr_t>(left);
      if (number > 0) KestPostMessage(again, P(number - 1), nullptr);
    });
  }
  void TearDown() override {
    for (unsigned int used : {id, closeId, againId}) KestUnregisterMessageCallback(used);
  }

  void Post(int count = 1) {
    for (int i = 0; i < count; ++i) ASSERT_TRUE(KestPostMessage(id, P(1), nullptr));
  }
  static bool IsReadable(const TMessageEvent& event) { return event.Wait(0ms); }

  TSession session;
  unsigned int id, closeId, againId;
};

TEST_F(MessageEvent, IsReadableAsLongAsThereAreMessages) {
  TMessageEvent event;
  ASSERT_TRUE(event);
  EXPECT_TRUE(IsReadable(event)) << "messages may wait already";
  EXPECT_EQ(EResult::kDrained, event.Dispatch());
  for (int round = 0; round < 3; ++round) {
    EXPECT_FALSE(IsReadable(event));
    Post(5);
    EXPECT_TRUE(IsReadable(event));
    EXPECT_TRUE(IsReadable(event));
    EXPECT_EQ(EResult::kDrained, event.Dispatch());
  }
  EXPECT_EQ(15u, s_given.count);
  EXPECT_EQ(EResult::kDrained, event.Dispatch()) << "without being readable";
  EXPECT_FALSE(IsReadable(event));
}

TEST_F(MessageEvent, DoesNotOverlookMessagesThatAlreadyWait) {
  Post(3);
  TMessageEvent event;
  EXPECT_TRUE(IsReadable(event));
  EXPECT_EQ(EResult::kDrained, event.Dispatch());
  EXPECT_EQ(3u, s_given.count);
}

TEST_F(MessageEvent, ThereIsOneAtATime) {
  {
    TMessageEvent first;
    TMessageEvent second;
    ASSERT_TRUE(first);
    EXPECT_FALSE(second);
    EXPECT_EQ(-1, second.GetDescriptor());
    EXPECT_EQ(EResult::kClosed, second.Dispatch());
    EXPECT_TRUE(second.IsClosed());
    EXPECT_TRUE(second.Wait());
    second.Close();
    EXPECT_FALSE(first.IsClosed());
  }
  TMessageEvent third;
  EXPECT_TRUE(third);
  Post();
  EXPECT_EQ(EResult::kDrained, third.Dispatch());
  EXPECT_EQ(1u, s_given.count);
}

TEST_F(MessageEvent, ItsDescriptorIsNotInherited) {
  int descriptor;
  {
    TMessageEvent event;
    descriptor = event.GetDescriptor();
    EXPECT_EQ(FD_CLOEXEC, fcntl(descriptor, F_GETFD));
    EXPECT_NE(0, fcntl(descriptor, F_GETFL) & O_NONBLOCK);
  }
  EXPECT_EQ(-1, fcntl(descriptor, F_GETFD)) << "closed by the destructor";
}

TEST_F(MessageEvent, AfterItTheQueueWakesItsLoopAgain) {
  { TMessageEvent event; }
  std::thread poster([] {
    TThreadSession thread;
    KestPostQuitMessage(P(7));
  });
  void* result;
  do {
    result = KestMessageLoop();  // may end for no reason
  } while (result != P(7));
  poster.join();
}

TEST_F(MessageEvent, AQuitMessageLeavesWhatFollows) {
  TMessageEvent event;
  Post(2);
  KestPostQuitMessage(P(42));
  Post(3);
  void* quit = nullptr;
  EXPECT_EQ(EResult::kQuit, event.Dispatch(INT_MAX, &quit));
  EXPECT_EQ(P(42), quit);
  EXPECT_EQ(2u, s_given.count);
  EXPECT_TRUE(IsReadable(event)) << "no edge will tell of the rest";
  EXPECT_EQ(EResult::kDrained, event.Dispatch());
  EXPECT_EQ(5u, s_given.count);
  EXPECT_FALSE(IsReadable(event));
  KestPostQuitMessage(nullptr);
  EXPECT_EQ(EResult::kQuit, event.Dispatch());
}

TEST_F(MessageEvent, ALimitLeavesTheRest) {
  TMessageEvent event;
  Post(5);
  EXPECT_EQ(EResult::kMore, event.Dispatch(2));
  EXPECT_EQ(2u, s_given.count);
  EXPECT_TRUE(IsReadable(event));
  EXPECT_EQ(EResult::kMore, event.Dispatch(3));
  EXPECT_TRUE(IsReadable(event));
  EXPECT_EQ(EResult::kDrained, event.Dispatch(3));
  EXPECT_EQ(5u, s_given.count);
  EXPECT_FALSE(IsReadable(event));
}

TEST_F(MessageEvent, GivesWhatCallbacksPostAndDropsWhatHasNone) {
  TMessageEvent event;
  KestPostMessage(againId, P(10), nullptr);
  KestPostMessage(KestRequestMessageId(), nullptr, nullptr);
  EXPECT_EQ(EResult::kDrained, event.Dispatch());
  EXPECT_EQ(11u, s_given.count);
  EXPECT_EQ(1, KestPostMessage(id, nullptr, nullptr));
  EXPECT_TRUE(IsReadable(event));
  EXPECT_EQ(EResult::kDrained, event.Dispatch());
}

TEST_F(MessageEvent, CloseIsAState) {
  TMessageEvent event;
  EXPECT_EQ(EResult::kDrained, event.Dispatch());
  EXPECT_FALSE(event.IsClosed());
  event.Close();
  event.Close();
  Post();
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(event.IsClosed());
    EXPECT_TRUE(IsReadable(event));
    EXPECT_TRUE(event.Wait());
    EXPECT_EQ(EResult::kClosed, event.Dispatch());
  }
  EXPECT_EQ(0u, s_given.count) << "nothing is given";
  KestDispatchMessages();
  EXPECT_EQ(1u, s_given.count) << "nothing is lost";
}

TEST_F(MessageEvent, ACallbackMayClose) {
  TMessageEvent event;
  s_event = &event;
  Post(2);
  KestPostMessage(closeId, nullptr, nullptr);
  Post(2);
  EXPECT_EQ(EResult::kClosed, event.Dispatch());
  EXPECT_EQ(2u, s_given.count);
  EXPECT_TRUE(IsReadable(event));
  EXPECT_TRUE(IsReadable(event));
}

TEST_F(MessageEvent, AWaitEndsInTime) {
  TMessageEvent event;
  event.Dispatch();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(event.Wait(20ms));
  EXPECT_LE(20ms, std::chrono::steady_clock::now() - start);
}

// Edge-triggered epoll forgets what it has told once, so each edge has to be a write.
TEST_F(MessageEvent, ServesEdgeTriggeredEpoll) {
  TMessageEvent event;
  const int poll = epoll_create1(EPOLL_CLOEXEC);
  epoll_event wanted = {};
  wanted.events = EPOLLIN | EPOLLET;
  ASSERT_EQ(0, epoll_ctl(poll, EPOLL_CTL_ADD, event.GetDescriptor(), &wanted));
  epoll_event told;
  EXPECT_EQ(1, epoll_wait(poll, &told, 1, 0));
  EXPECT_EQ(EResult::kDrained, event.Dispatch());
  EXPECT_EQ(0, epoll_wait(poll, &told, 1, 0));
  Post(5);
  EXPECT_EQ(1, epoll_wait(poll, &told, 1, 0));
  EXPECT_EQ(EResult::kMore, event.Dispatch(2));
  EXPECT_EQ(1, epoll_wait(poll, &told, 1, 0)) << "the rest";
  EXPECT_EQ(EResult::kDrained, event.Dispatch());
  EXPECT_EQ(0, epoll_wait(poll, &told, 1, 0));
  event.Close();
  EXPECT_EQ(1, epoll_wait(poll, &told, 1, 0));
  close(poll);
}

// Several threads post, and every now and then stop until all that they have posted was given, so
// that the queue runs empty at any moment. A wait that sees nothing has lost its wake-up.
TEST_F(MessageEvent, NoWakeUpIsLost) {
  constexpr int kPosters = 2, kInARow = 500;
  const int posts = Random::Cases(kPosts) / kPosters;  // of each poster
  TMessageEvent event;
  std::atomic<bool> lost{false};
  std::atomic<int> given[kPosters] = {};
  const unsigned int countId = KestRequestMessageId();
  ASSERT_TRUE(KestRegisterMessageCallback(countId, [](unsigned int, void* number, void* count) {
    ++s_given.count;
    s_given.sum += reinterpret_cast<uintptr_t>(number);
    static_cast<std::atomic<int>*>(count)->fetch_add(1);
  }));
  std::vector<std::thread> posters;
  for (std::atomic<int>& count : given) {
    posters.emplace_back([&lost, &count, countId, posts] {
      TThreadSession thread;
      for (int n = 1; n <= posts && !lost.load(); ++n) {
        while (!KestPostMessage(countId, P(static_cast<uintptr_t>(n % 7)), &count)) sched_yield();
        if (n % kInARow != 0) continue;
        while (count.load() < n && !lost.load()) sched_yield();
      }
    });
  }
  int wakeUps = 0;
  while (s_given.count < static_cast<uintptr_t>(posts) * kPosters) {
    if (!event.Wait(kLost)) {
      ADD_FAILURE() << "lost after " << s_given.count << " messages";
      lost.store(true);
      break;
    }
    ++wakeUps;
    EXPECT_NE(EResult::kClosed, event.Dispatch(wakeUps % 5 == 0 ? 3 : INT_MAX));
  }
  for (std::thread& poster : posters) poster.join();
  KestUnregisterMessageCallback(countId);
  uintptr_t sum = 0;
  for (int n = 1; n <= posts; ++n) sum += static_cast<uintptr_t>(n % 7) * kPosters;
  EXPECT_EQ(static_cast<uintptr_t>(posts) * kPosters, s_given.count);
  EXPECT_EQ(sum, s_given.sum);
  EXPECT_GE(wakeUps, posts / kInARow);
}

// In each round the consumer waits and dispatches, a second thread only waits, and a third posts
// and closes while they do. All have to see the close, whoever took the descriptor's count.
TEST_F(MessageEvent, CloseAndWaitRace) {
  const int rounds = Random::Cases(kRounds);
  Random random;
  SCOPED_TRACE(random.Seed());
  std::atomic<TMessageEvent*> shared{nullptr};
  std::atomic<int> turn{0}, done{0}, lost{0};
  std::atomic<bool> closeFirst{false}, stop{false};
  // Each round once: what a helper does with the event of the round.
  const auto help = [&](auto work) {
    return std::thread([&, work] {
      TThreadSession thread;
      for (int seen = 0;;) {
        while (turn.load() == seen && !stop.load()) sched_yield();
        if (stop.load()) return;
        ++seen;
        work(*shared.load());
        done.fetch_add(1);
      }
    });
  };
  std::thread waiter = help([&](TMessageEvent& event) {
    while (!event.IsClosed()) {
      if (!event.Wait(kLost)) lost.fetch_add(1);
    }
    if (!event.Wait(kLost)) lost.fetch_add(1);
  });
  std::thread closer = help([&](TMessageEvent& event) {
    if (closeFirst.load()) event.Close();
    KestPostMessage(id, nullptr, nullptr);
    event.Close();
  });
  for (int round = 0; round < rounds && lost.load() == 0; ++round) {
    TMessageEvent event;
    ASSERT_TRUE(event);
    if (random.Between(0, 1) == 0) event.Dispatch();  // so that it is readable, or not, at first
    closeFirst.store(random.Between(0, 1) == 0);
    done.store(0);
    shared.store(&event);
    turn.fetch_add(1);
    do {
      if (!event.Wait(kLost)) lost.fetch_add(1);
    } while (event.Dispatch() != EResult::kClosed && lost.load() == 0);
    while (done.load() < 2) sched_yield();
    // A state: it is there for those who come late, too.
    if (!event.Wait(0ms) || event.Dispatch() != EResult::kClosed || !event.Wait(0ms)) ++lost;
  }
  stop.store(true);
  waiter.join();
  closer.join();
  EXPECT_EQ(0, lost.load());
}

// Objects come and go while others post: none writes to a descriptor that is gone. The pipe is
// likely to get the number of the descriptor that was just closed, and nobody but this test writes
// to it.
TEST_F(MessageEvent, PostersMayBeInTheCallbackAtTheEnd) {
  std::atomic<bool> stop{false};
  std::thread poster([&] {
    TThreadSession thread;
    while (!stop.load()) {
      KestPostMessage(id, nullptr, nullptr);
      sched_yield();
    }
  });
  int hits = 0;
  for (int round = Random::Cases(kRounds) / 5; round > 0; --round) {
    {
      TMessageEvent event;
      ASSERT_TRUE(event);
      event.Dispatch(10);
    }
    int ends[2];
    ASSERT_EQ(0, pipe2(ends, O_NONBLOCK | O_CLOEXEC));
    sched_yield();
    char bytes[8];
    if (read(ends[0], bytes, sizeof(bytes)) > 0) ++hits;
    close(ends[0]);
    close(ends[1]);
  }
  stop.store(true);
  poster.join();
  EXPECT_EQ(0, hits);
}

}  // namespace
