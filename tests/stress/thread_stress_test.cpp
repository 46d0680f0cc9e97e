// Lives of threads, in every order in which an owner can end them, from several owners at once.

#include <pthread.h>
#include <string.h>

#include <new>
#include <vector>

#include "kest/thread.h"
#include "stress/repeats.h"
#include "support/gate.h"

namespace {

using KEST::TThread;
using kest_test::Counter;

// Threads of an owner that run on by themselves, at most.
constexpr int kDetached = 64;

// What a thread is given. It stays; the thread object may not.
struct Owner {
  TThread thread;
  Counter detached;  // that have run
  int lives = 0;
};

int ReturnPointedTo(void* arg) { return *static_cast<int*>(arg); }

int CountDetached(void* owner) {
  static_cast<Owner*>(owner)->detached.Add();
  return 0;
}

// One way of living: true when it went as it should.
using Way = bool (*)(Owner& owner, int number);

bool CreateAndWait(Owner&, int number) {
  TThread thread;
  int code = ~number;
  return thread.Create(ReturnPointedTo, &number, false) && thread.WaitForExit(&code) &&
         code == number;
}

bool WaitInDestroy(Owner&, int number) {
  TThread* const thread = KestCreateThread(ReturnPointedTo, &number, true);
  KestDestroyThread(thread, true);
  return thread != nullptr;
}

bool WaitAndDestroy(Owner&, int number) {
  TThread* const thread = KestCreateThread(ReturnPointedTo, &number, false);
  int code = ~number;
  const bool joined = thread != nullptr && thread->WaitForExit(&code);
  KestDestroyThread(thread, true);
  return joined && code == number;
}

bool DestroyRightAfterCreate(Owner& owner, int) {
  TThread* const thread = KestCreateThread(CountDetached, &owner, false);
  KestDestroyThread(thread, false);
  return thread != nullptr;
}

// The object's memory is used for something else at once.
bool LeaveRightAfterCreate(Owner& owner, int) {
  alignas(TThread) unsigned char place[sizeof(TThread)];
  TThread* const thread = new (place) TThread;
  const bool created = thread->Create(CountDetached, &owner, false);
  thread->~TThread();
  memset(place, 0x5A, sizeof place);
  return created;
}

bool CreateOverARunningThread(Owner& owner, int number) {
  TThread thread;
  int code = ~number;
  return thread.Create(CountDetached, &owner, false) &&
         thread.Create(ReturnPointedTo, &number, false) && thread.WaitForExit(&code) &&
         code == number;
}

struct {
  Way way;
  bool detaches;
} const kWays[] = {
    {CreateAndWait, false},  {DestroyRightAfterCreate, true},
    {WaitInDestroy, false},  {LeaveRightAfterCreate, true},
    {WaitAndDestroy, false}, {CreateOverARunningThread, true},
};

// Gives the number of lives that went wrong.
int Own(void* argument) {
  Owner& self = *static_cast<Owner*>(argument);
  int wrong = 0;
  int detached = 0;
  for (int i = 0; i < self.lives; ++i) {
    const auto& [way, detaches] = kWays[i % 6];
    if (!way(self, i)) {
      ++wrong;
    } else if (detaches) {
      self.detached.WaitFor(++detached - kDetached);
    }
  }
  self.detached.WaitFor(detached);
  return wrong;
}

// Lives of threads with so many owners at once.
void LiveAndEnd(int count) {
  // Small stacks: a detached thread's goes some time after its last word.
  pthread_attr_t attributes;
  ASSERT_EQ(0, pthread_attr_init(&attributes));
  ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, 256 * 1024));
  ASSERT_EQ(0, pthread_setattr_default_np(&attributes));
  ASSERT_EQ(0, pthread_attr_destroy(&attributes));

  std::vector<Owner> owners(static_cast<size_t>(count));
  for (Owner& owner : owners) {
    owner.lives = kest_test::Repeats(250000, 25000) / count;
    ASSERT_TRUE(owner.thread.Create(Own, &owner, false));
  }
  for (Owner& owner : owners) {
    int wrong = -1;
    EXPECT_TRUE(owner.thread.WaitForExit(&wrong));
    EXPECT_EQ(0, wrong);
  }
}

TEST(Threads, LiveAndEndWithOneOwner) { LiveAndEnd(1); }
TEST(Threads, LiveAndEndWithTwoOwners) { LiveAndEnd(2); }
TEST(Threads, LiveAndEndWithFourOwners) { LiveAndEnd(4); }
TEST(Threads, LiveAndEndWithEightOwners) { LiveAndEnd(8); }

}  // namespace
