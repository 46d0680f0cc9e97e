// A token that goes round between threads, each of which waits for it on a condition of its own.

#include <gtest/gtest.h>

#include "stress/event.h"
#include "stress/repeats.h"

namespace {

using kest_test::Event;

constexpr int kMembers = 5;

struct Member {
  KEST::TThread thread;
  Event turn;
  Member* next = nullptr;
  int wait = -1;  // as TCondVar::Wait takes it
};

int s_rounds;
int s_token;  // handed over with the turn, so that it needs no lock of its own

int TakeTurns(void* argument) {
  Member& self = *static_cast<Member*>(argument);
  for (int round = 0; round < s_rounds; ++round) {
    self.turn.Take(self.wait);
    ++s_token;
    self.next->turn.Set();
  }
  return 0;
}

// The deadline is never meant to come: a lost signal shows as a test that does not end.
void HandOver(int wait) {
  s_rounds = kest_test::Repeats(100000, 50000) / kMembers;
  s_token = 0;
  Member members[kMembers];
  for (int i = 0; i < kMembers; ++i) {
    members[i].next = &members[(i + 1) % kMembers];
    members[i].wait = wait;
  }
  for (Member& member : members) ASSERT_TRUE(member.thread.Create(TakeTurns, &member, false));
  members[0].turn.Set();
  for (Member& member : members) EXPECT_TRUE(member.thread.WaitForExit(nullptr));
  EXPECT_EQ(s_rounds * kMembers, s_token);
}

TEST(Conditions, HandATokenRoundWithoutATimeLimit) { HandOver(-1); }

TEST(Conditions, HandATokenRoundBeforeADeadline) { HandOver(1000000000); }

}  // namespace
