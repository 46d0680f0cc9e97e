#include <vector>

#include "kest/message.h"
#include "support/test_allocator.h"

namespace {

using kest_test::TestAllocator;

void* Pointer(uintptr_t value) { return reinterpret_cast<void*>(value); }

struct Call {
  char callback;
  unsigned int id;
  void* param1;
  void* param2;

  bool operator==(const Call& other) const {
    return callback == other.callback && id == other.id && param1 == other.param1 &&
           param2 == other.param2;
  }
};

std::vector<Call> s_calls;

void A(unsigned int id, void* param1, void* param2) {
  s_calls.push_back({'A', id, param1, param2});
}
void B(unsigned int id, void* param1, void* param2) {
  s_calls.push_back({'B', id, param1, param2});
}

const unsigned int kIds[] = {0, 1, 5, 18, 35, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

class MessageCallback : public testing::Test {
 protected:
  void SetUp() override { s_calls.clear(); }
  void TearDown() override {
    for (unsigned int id : kIds) KestUnregisterMessageCallback(id);
    KestUnregisterMessageCallback(6);
  }
};

TEST_F(MessageCallback, NothingIsRegisteredAtFirst) {
  TestAllocator allocator;
  for (unsigned int id : kIds) {
    EXPECT_EQ(nullptr, KestLookupMessageCallback(id));
    EXPECT_FALSE(KestUnregisterMessageCallback(id));
    EXPECT_FALSE(KestGiveMessage(id, nullptr, nullptr));
  }
  EXPECT_EQ(0, allocator.Requests());
}

TEST_F(MessageCallback, IsCalledAtOnceWithTheMessage) {
  EXPECT_TRUE(KestRegisterMessageCallback(5, A));
  EXPECT_TRUE(KestRegisterMessageCallback(6, B));
  EXPECT_TRUE(KestGiveMessage(5, Pointer(50), Pointer(51)));
  EXPECT_TRUE(KestGiveMessage(6, Pointer(60), nullptr));
  EXPECT_FALSE(KestGiveMessage(7, nullptr, nullptr));
  const std::vector<Call> expected = {{'A', 5, Pointer(50), Pointer(51)},
                                      {'B', 6, Pointer(60), nullptr}};
  EXPECT_EQ(expected, s_calls);
}

TEST_F(MessageCallback, EveryIdentifierCanHaveOne) {
  for (unsigned int id : kIds) {
    SCOPED_TRACE(id);
    EXPECT_TRUE(KestRegisterMessageCallback(id, A));
    EXPECT_EQ(&A, KestLookupMessageCallback(id));
  }
  EXPECT_TRUE(KestGiveMessage(KEST::kQuitMessageId, Pointer(1), Pointer(2)))
      << "the quit message is special only in a queue";
  EXPECT_EQ((std::vector<Call>{{'A', KEST::kQuitMessageId, Pointer(1), Pointer(2)}}), s_calls);
  for (unsigned int id : kIds) {
    EXPECT_TRUE(KestUnregisterMessageCallback(id));
    EXPECT_EQ(nullptr, KestLookupMessageCallback(id));
  }
}

TEST_F(MessageCallback, TheFirstRegistrationWins) {
  EXPECT_TRUE(KestRegisterMessageCallback(5, A));
  EXPECT_FALSE(KestRegisterMessageCallback(5, B));
  EXPECT_FALSE(KestRegisterMessageCallback(5, A));
  EXPECT_FALSE(KestRegisterMessageCallback(5, nullptr));
  EXPECT_EQ(&A, KestLookupMessageCallback(5));
  EXPECT_TRUE(KestGiveMessage(5, nullptr, nullptr));
  EXPECT_EQ('A', s_calls.at(0).callback);
  EXPECT_TRUE(KestUnregisterMessageCallback(5));
  EXPECT_TRUE(KestRegisterMessageCallback(5, B));
  EXPECT_EQ(&B, KestLookupMessageCallback(5));
}

TEST_F(MessageCallback, UnregisteringTheLastFreesTheRegistry) {
  TestAllocator allocator;
  for (int round = 0; round < 3; ++round) {
    EXPECT_TRUE(KestRegisterMessageCallback(5, A));
    EXPECT_TRUE(KestRegisterMessageCallback(6, A));
    const int live = allocator.Live();
    EXPECT_TRUE(KestUnregisterMessageCallback(5));
    EXPECT_FALSE(KestUnregisterMessageCallback(5));
    EXPECT_EQ(live, allocator.Live());
    EXPECT_EQ(&A, KestLookupMessageCallback(6));
    EXPECT_TRUE(KestUnregisterMessageCallback(6));
    EXPECT_EQ(0, allocator.Live());
    EXPECT_EQ(nullptr, KestLookupMessageCallback(6));
    EXPECT_FALSE(KestUnregisterMessageCallback(6));
  }
}

TEST_F(MessageCallback, TheRegistryTakesEntriesTenABlock) {
  TestAllocator allocator;
  for (unsigned int id = 1; id <= 11; ++id) {
    EXPECT_TRUE(KestRegisterMessageCallback(id, A));
    EXPECT_EQ(id <= 10 ? 3 : 4, allocator.Requests()) << "the map, its buckets, and blocks";
    EXPECT_EQ(sizeof(void*) + 10 * 3 * sizeof(void*), allocator.LastSize());
  }
  for (unsigned int id = 1; id <= 11; ++id) EXPECT_TRUE(KestUnregisterMessageCallback(id));
  EXPECT_EQ(0, allocator.Live());
}

TEST_F(MessageCallback, ANullCallbackCountsAsNone) {
  TestAllocator allocator;
  for (bool alone : {true, false}) {
    EXPECT_TRUE(alone || KestRegisterMessageCallback(6, B));
    const int live = allocator.Live();
    EXPECT_TRUE(KestRegisterMessageCallback(5, nullptr));
    EXPECT_EQ(live, allocator.Live()) << "nothing is kept";
    EXPECT_EQ(nullptr, KestLookupMessageCallback(5));
    EXPECT_FALSE(KestGiveMessage(5, nullptr, nullptr));
    EXPECT_FALSE(KestUnregisterMessageCallback(5));
    EXPECT_TRUE(KestRegisterMessageCallback(5, nullptr));
    EXPECT_TRUE(KestRegisterMessageCallback(5, A));
    EXPECT_EQ(&A, KestLookupMessageCallback(5));
    EXPECT_TRUE(KestUnregisterMessageCallback(5));
  }
  EXPECT_TRUE(KestUnregisterMessageCallback(6));
  EXPECT_EQ(0, allocator.Live());
}

TEST_F(MessageCallback, StartAndStopLeaveTheRegistry) {
  EXPECT_TRUE(KestRegisterMessageCallback(5, A)) << "no queue is needed";
  ASSERT_TRUE(KEST::MessageInit());
  EXPECT_EQ(&A, KestLookupMessageCallback(5));
  KEST::MessageTerm();
  EXPECT_EQ(&A, KestLookupMessageCallback(5));
  EXPECT_TRUE(KestGiveMessage(5, nullptr, nullptr));
  EXPECT_TRUE(KestUnregisterMessageCallback(5));
}

TEST_F(MessageCallback, ACallbackMayChangeTheRegistry) {
  TestAllocator allocator;
  EXPECT_TRUE(KestRegisterMessageCallback(5, [](unsigned int id, void*, void*) {
    EXPECT_TRUE(KestUnregisterMessageCallback(id));
    EXPECT_TRUE(KestRegisterMessageCallback(id, A));
    EXPECT_TRUE(KestGiveMessage(id, Pointer(1), nullptr));
    EXPECT_TRUE(KestUnregisterMessageCallback(id));
  }));
  EXPECT_TRUE(KestGiveMessage(5, nullptr, nullptr));
  EXPECT_EQ((std::vector<Call>{{'A', 5, Pointer(1), nullptr}}), s_calls);
  EXPECT_EQ(0, allocator.Live());
}

TEST_F(MessageCallback, ARefusedRegistrationKeepsTheOthers) {
  kest_test::ForEachRefusedRequest([](TestAllocator& allocator) {
    bool registered[25];
    int count = 0;
    for (unsigned int id = 0; id < 25; ++id) {
      const int refused = allocator.Refused();
      registered[id] = KestRegisterMessageCallback(id, A);
      EXPECT_EQ(allocator.Refused() == refused, registered[id]);
      if (registered[id]) ++count;
      EXPECT_EQ(count == 0, allocator.Live() == 0) << "an empty registry does not stay";
    }
    for (unsigned int id = 0; id < 25; ++id) {
      EXPECT_EQ(registered[id], KestLookupMessageCallback(id) == &A);
      EXPECT_EQ(registered[id], KestUnregisterMessageCallback(id));
    }
  });
}

}  // namespace
