// session.h: what is held is given back, once.

#include "kest/bridge/session.h"

#include <stdlib.h>

#include <thread>
#include <vector>

#include "kest/message.h"
#include "kest/thread.h"
#include "support/gate.h"
#include "support/test_allocator.h"
#include "support/text.h"

namespace {

using namespace KEST;
using kest_test::Gate;
using kest_test::TestAllocator;
using kest_test::TextOf;

static_assert(!std::is_copy_constructible_v<TSession> && !std::is_move_constructible_v<TSession>);
static_assert(!std::is_copy_constructible_v<TBstrOwner> && !std::is_copy_assignable_v<TBstrOwner>);
static_assert(std::is_nothrow_move_constructible_v<TBstrOwner> &&
              std::is_nothrow_move_assignable_v<TBstrOwner>);
static_assert(!std::is_copy_constructible_v<TModule> && std::is_move_constructible_v<TModule>);
static_assert(!std::is_convertible_v<unsigned short*, TBstrOwner>);

bool Runs() { return KestTlsGetAddData(1, 8) != nullptr; }

TEST(Session, StartsAndStopsTheLibrary) {
  EXPECT_FALSE(Runs());
  {
    TSession session;
    EXPECT_TRUE(session);
    EXPECT_TRUE(Runs());
    {
      TSession plugIn;
      EXPECT_TRUE(plugIn);
    }
    EXPECT_TRUE(KestPostMessage(1, nullptr, nullptr)) << "the first session keeps it running";
  }
  EXPECT_FALSE(Runs());
}

int s_requests = 0;
void* CountedAlloc(unsigned int size) {
  ++s_requests;
  return malloc(size);
}
void* Nothing(unsigned int) { return nullptr; }

TEST(Session, TakesHooksAndTellsOfFailure) {
  SAllocator hooks = {CountedAlloc, [](void* p, unsigned int size) { return realloc(p, size); },
                      [](void* p) { free(p); }};
  {
    TSession session(&hooks);
    EXPECT_TRUE(session);
    EXPECT_GT(s_requests, 0);
  }
  SAllocator refusing = hooks;
  refusing.alloc = Nothing;
  {
    TSession session(&refusing);
    EXPECT_FALSE(session);
  }
  TSession session(&hooks);
  EXPECT_TRUE(session) << "a session that failed stops nothing";
  EXPECT_TRUE(KestPostMessage(1, nullptr, nullptr));
}

// Whether another thread could begin or end a session now.
bool IsTurnFree() {
  bool isFree = false;
  std::thread([&] {
    isFree = bridge_detail::sessionTurn.try_lock();
    if (isFree) bridge_detail::sessionTurn.unlock();
  }).join();
  return isFree;
}

int s_checks = 0, s_intruders = 0;
void CheckTurn() {
  ++s_checks;
  if (IsTurnFree()) ++s_intruders;
}

TEST(Session, StartAndStopAreTurns) {
  SAllocator hooks = {[](unsigned int size) {
                        CheckTurn();
                        return malloc(size);
                      },
                      [](void* p, unsigned int size) { return realloc(p, size); },
                      [](void* p) {
                        CheckTurn();
                        free(p);
                      }};
  {
    TSession session(&hooks);
    EXPECT_GT(s_checks, 0);
    EXPECT_TRUE(IsTurnFree());
    s_checks = 0;
  }
  EXPECT_GT(s_checks, 0);
  EXPECT_EQ(0, s_intruders);
}

// Without turns the count of users goes wrong, and the library is stopped early or never.
TEST(Session, ThreadsComeAndGo) {
  constexpr int kThreads = 4, kRounds = 20000;
  kest_test::Counter ready;
  Gate start;
  {
    TSession session;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&] {
        ready.Add();
        start.Wait();
        for (int round = 0; round < kRounds; ++round) {
          TThreadSession thread;
          int* const block = static_cast<int*>(KestTlsGetAddData(1, sizeof(int)));
          ASSERT_NE(nullptr, block);
          ASSERT_EQ(0, *block) << "the round before has left its block";
          *block = round + 1;
        }
      });
    }
    ready.WaitFor(kThreads);
    start.Open();
    for (std::thread& thread : threads) thread.join();
    EXPECT_TRUE(Runs());
  }
  EXPECT_FALSE(Runs());
}

TEST(BstrOwner, FreesWhatItOwns) {
  TestAllocator allocator;
  {
    TBstrOwner none;
    EXPECT_FALSE(none);
    EXPECT_EQ(0u, none.GetLength());
    EXPECT_EQ(nullptr, none.Get());
    TBstrOwner one(KestAllocString(KEST_TEXT("one")));
    EXPECT_TRUE(one);
    EXPECT_EQ(3u, one.GetLength());
    TBstrOwner moved(std::move(one));
    EXPECT_FALSE(one);  // NOLINT: a moved one is empty
    one = TBstrOwner(KestAllocString(KEST_TEXT("two")));
    moved = std::move(one);
    EXPECT_EQ(0, ucscmp(KEST_TEXT("two"), moved.Get()));
    moved.Reset(moved.Get());
    EXPECT_EQ(3u, moved.GetLength());
    *moved.GetAddress() = KestAllocString(KEST_TEXT("four"));
    EXPECT_EQ(4u, moved.GetLength());
    moved.Reset(KestAllocString(KEST_TEXT("x")));
    EXPECT_EQ(1u, static_cast<const TBstrOwner&>(moved).GetLength());
    EXPECT_EQ(1, allocator.Live());
  }
  EXPECT_EQ(0, allocator.Live());
}

TEST(BstrOwner, PassesTextWithoutACopy) {
  TestAllocator allocator;
  {
    TBstr text("some text");
    const unsigned short* const units = text.GetString();
    TBstrOwner owner(std::move(text));
    EXPECT_TRUE(text.IsEmpty());  // NOLINT: a moved one is empty
    EXPECT_EQ(units, owner.Get());
    const TBstr back = std::move(owner).ToBstr();
    EXPECT_EQ(units, back.GetString());
    EXPECT_FALSE(owner);  // NOLINT
    TBstrOwner last(back.Copy());
    unsigned short* const released = last.Release();
    EXPECT_EQ(2, allocator.Live());
    KestFreeString(released);
  }
  EXPECT_EQ(0, allocator.Live());
}

TEST(Module, LoadsFindsAndFrees) {
  const TBstr spec(KEST_BRIDGE_MODULE);
  TModule none;
  EXPECT_FALSE(none);
  EXPECT_EQ(nullptr, none.Find<int(int)>("Twice"));
  EXPECT_FALSE(none.Free());
  EXPECT_FALSE(TModule(TBstr("/no/such/module.so")));
  TModule module(spec);
  ASSERT_TRUE(module);
  const auto twice = module.Find<int(int)>("Twice");
  ASSERT_NE(nullptr, twice);
  EXPECT_EQ(42, twice(21));
  int* const stops = module.Find<int>("g_stops");
  ASSERT_NE(nullptr, stops);
  int told = 0;
  *module.Find<int*>("g_tell") = &told;
  EXPECT_EQ(nullptr, module.Find<int>("no such name"));
  TModule moved(std::move(module));
  EXPECT_FALSE(module);  // NOLINT
  EXPECT_TRUE(moved);
  EXPECT_EQ(0, told);
  EXPECT_TRUE(moved.Free());
  EXPECT_EQ(1, told) << "stopped once";
  EXPECT_FALSE(moved);
  {
    TModule again(spec);
    ASSERT_TRUE(again);
    *again.Find<int*>("g_tell") = &told;
  }
  EXPECT_EQ(2, told) << "the destructor stops it";
}

}  // namespace
