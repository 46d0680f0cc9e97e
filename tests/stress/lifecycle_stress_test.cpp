// Start and stop of the library, over and over: it takes what it needs, and gives all of it back.

#include <malloc.h>

#include "file/temp_tree.h"
#include "kest/digest.h"
#include "kest/message.h"
#include "kest/string.h"
#include "kest/thread.h"
#include "stress/repeats.h"
#include "support/test_allocator.h"

namespace {

using kest_test::TestAllocator;

void Ignore(unsigned int, void*, void*) {}

// Leaves to the stop what the stop has to clear away.
void Use() {
  EXPECT_NE(nullptr, KestTlsAddData(1, 100));
  EXPECT_NE(nullptr, KestTlsAddData(2, 0x1000));
  for (int i = 0; i < 12; ++i) EXPECT_TRUE(KestPostMessage(1, nullptr, nullptr));
  unsigned char bytes[40] = {};
  KestSeedRandom(bytes, sizeof bytes);
  KestGenerateRandom(bytes, sizeof bytes);
  EXPECT_TRUE(KestRegisterMessageCallback(1, Ignore));
  EXPECT_TRUE(KestUnregisterMessageCallback(1));
  EXPECT_NE(nullptr, KestGetSystemInfo());
}

// Another thread's share in a cycle.
int Join(void* allocator) {
  if (KestInitialize(static_cast<KEST::SAllocator*>(allocator)) != 1) return 1;
  const bool added = KestTlsAddData(1, 100) != nullptr;
  KestUninitialize();
  return added ? 0 : 1;
}

void Cycle(int number, KEST::SAllocator* hooks) {
  ASSERT_EQ(1, KestInitialize(hooks));
  Use();
  if (number % 16 == 0) {
    KEST::TThread thread;
    int failed = 1;
    ASSERT_TRUE(thread.Create(Join, hooks, false));
    EXPECT_TRUE(thread.WaitForExit(&failed));
    EXPECT_EQ(0, failed);
  }
  KestUninitialize();
}

// Bytes that malloc has handed out, the hooks' and any that went past them.
size_t BytesInUse() { return mallinfo2().uordblks; }

int FreeKeys() {
  std::vector<pthread_key_t> keys;
  pthread_key_t key;
  while (pthread_key_create(&key, nullptr) == 0) keys.push_back(key);
  for (pthread_key_t taken : keys) pthread_key_delete(taken);
  return static_cast<int>(keys.size());
}

// Runs cycle(0), cycle(1), ... and checks that they leave nothing behind. What is made once and
// kept, here or in the C library, is made by the first few.
template <typename Function>
void ExpectFlat(const TestAllocator& allocator, int cycles, Function cycle) {
  constexpr int kWarmUp = 32;
  size_t bytes = 0;
  int descriptors = 0;
  int keys = 0;
  for (int i = 0; i < kWarmUp + cycles; ++i) {
    SCOPED_TRACE(i);
    if (i == kWarmUp) {
      keys = FreeKeys();
      descriptors = kest_test::OpenDescriptors();
      bytes = BytesInUse();
    }
    cycle(i);
    ASSERT_EQ(0, allocator.Live());
    ASSERT_FALSE(testing::Test::HasFailure());
  }
  EXPECT_EQ(bytes, BytesInUse());
  EXPECT_EQ(descriptors, kest_test::OpenDescriptors());
  EXPECT_EQ(keys, FreeKeys());
}

TEST(Lifecycle, StartAndStopCyclesLeaveNothingBehind) {
  TestAllocator allocator;
  KEST::SAllocator hooks = allocator.Hooks();
  ExpectFlat(allocator, kest_test::Repeats(100000, 50000), [&](int i) { Cycle(i, &hooks); });
}

// The n-th request is refused, n = 1, 2, ...: nothing is undone then, and nothing taken twice by
// the start that follows.
TEST(Lifecycle, FailedStartsInBetweenLeaveNothingBehind) {
  TestAllocator allocator;
  KEST::SAllocator hooks = allocator.Hooks();
  int n = 0;
  int failed = 0;
  ExpectFlat(allocator, kest_test::Repeats(100000, 50000), [&](int i) {
    allocator.Refuse(++n, TestAllocator::kOnlyOne);
    if (KestInitialize(&hooks) == 1) {
      KestUninitialize();
      n = 0;
    } else {
      ++failed;
    }
    allocator.RefuseNone();
    Cycle(i, &hooks);
  });
  EXPECT_GT(failed, 0);
}

}  // namespace
