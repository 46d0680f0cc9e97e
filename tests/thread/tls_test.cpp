#include <limits.h>
#include <stdlib.h>
#include <string.h>

#include <mutex>
#include <thread>
#include <vector>

#include "kest/collections.h"
#include "kest/frame.h"
#include "kest/thread.h"
#include "support/test_allocator.h"

namespace {

using KEST::TPtrFromPtrMap;
using kest_test::TestAllocator;

constexpr pthread_key_t kNoKey = static_cast<pthread_key_t>(-1);

// Hooks that log what they are asked, hand out dirty memory, and give every map the same place.
struct Log {
  static inline std::vector<unsigned int> sizes;
  static inline std::vector<void*> freed;
  alignas(8) static inline unsigned char mapPlace[sizeof(TPtrFromPtrMap)];

  static void* Alloc(unsigned int size) {
    sizes.push_back(size);
    if (size == 0) return nullptr;
    if (size == sizeof(TPtrFromPtrMap)) return mapPlace;
    return memset(malloc(size), 0xA5, size);
  }
  static void* Realloc(void* block, unsigned int size) { return realloc(block, size); }
  static void Free(void* block) {
    freed.push_back(block);
    if (block != mapPlace) free(block);
  }

  Log() {
    KEST::SAllocator hooks = {Alloc, Realloc, Free};
    KEST::MemInit(&hooks);
    sizes.clear();
    freed.clear();
  }
  ~Log() { KEST::MemTerm(); }
};

bool IsZero(const void* block, size_t size) {
  const unsigned char* const bytes = static_cast<const unsigned char*>(block);
  for (size_t i = 0; i < size; ++i) {
    if (bytes[i] != 0) return false;
  }
  return true;
}

// Runs function on another thread, to its end.
template <typename Function>
void OnAnotherThread(Function function) {
  std::thread(function).join();
}

// The registry started for the test's own thread.
class Tls : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(KEST::TlsInit());
    ASSERT_TRUE(KEST::TlsThreadInit());
  }
  void TearDown() override {
    KEST::TlsThreadTerm();
    KEST::TlsTerm();
  }
};

TEST(TlsKey, IsInvalidOutsideStartAndStop) {
  TestAllocator allocator;
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(kNoKey, KEST::s_tlsKey);
    EXPECT_EQ(nullptr, KestTlsGetData(5));
    EXPECT_EQ(nullptr, KestTlsAddData(5, 16));
    EXPECT_EQ(nullptr, KestTlsGetAddData(5, 16));
    EXPECT_FALSE(KestTlsRemoveData(5));
    EXPECT_EQ(nullptr, KEST::InternalTlsGetValue());
    EXPECT_FALSE(KEST::InternalTlsSetValue(&allocator));
    KEST::TlsThreadTerm();
    KEST::TlsTerm();
    EXPECT_EQ(0, allocator.Live());

    ASSERT_TRUE(KEST::TlsInit());
    EXPECT_NE(kNoKey, KEST::s_tlsKey);
    EXPECT_NE(nullptr, KestTlsAddData(5, 16));
    KEST::TlsThreadTerm();
    KEST::TlsTerm();
  }
}

TEST(TlsKey, ASecondStartKeepsTheKeyAndTheData) {
  ASSERT_TRUE(KEST::InternalTlsInit());
  const pthread_key_t key = KEST::s_tlsKey;
  void* const block = KestTlsAddData(5, 16);
  EXPECT_TRUE(KEST::InternalTlsInit());
  EXPECT_TRUE(KEST::TlsInit());
  EXPECT_EQ(key, KEST::s_tlsKey);
  EXPECT_EQ(block, KestTlsGetData(5));
  KEST::TlsThreadTerm();
  KEST::InternalTlsTerm();
  EXPECT_EQ(kNoKey, KEST::s_tlsKey);
}

TEST(TlsKey, EachStopGivesItBack) {
  for (int i = 0; i <= PTHREAD_KEYS_MAX; ++i) {
    ASSERT_TRUE(KEST::TlsInit()) << i;
    KEST::TlsTerm();
  }
}

TEST(TlsKey, HoldsAValueAThread) {
  ASSERT_TRUE(KEST::InternalTlsInit());
  EXPECT_EQ(nullptr, KEST::InternalTlsGetValue());
  int here = 0;
  EXPECT_TRUE(KEST::InternalTlsSetValue(&here));
  EXPECT_EQ(&here, KEST::InternalTlsGetValue());
  EXPECT_EQ(&here, pthread_getspecific(KEST::s_tlsKey));
  OnAnotherThread([] { EXPECT_EQ(nullptr, KEST::InternalTlsGetValue()); });
  EXPECT_TRUE(KEST::InternalTlsSetValue(nullptr));
  EXPECT_EQ(nullptr, KEST::InternalTlsGetValue());
  KEST::InternalTlsTerm();
}

TEST(TlsKey, ANewKeyStartsWithoutData) {
  ASSERT_TRUE(KEST::TlsInit());
  EXPECT_NE(nullptr, KestTlsAddData(5, 16));
  KEST::TlsThreadTerm();
  KEST::TlsTerm();
  ASSERT_TRUE(KEST::TlsInit());
  EXPECT_EQ(nullptr, KEST::InternalTlsGetValue());
  EXPECT_EQ(nullptr, KestTlsGetData(5));
  KEST::TlsTerm();
}

TEST_F(Tls, GetInAFreshThreadCreatesNothing) {
  TestAllocator allocator;
  EXPECT_EQ(nullptr, KestTlsGetData(5));
  EXPECT_FALSE(KestTlsRemoveData(5));
  EXPECT_EQ(nullptr, KEST::InternalTlsGetValue());
  EXPECT_EQ(0, allocator.Requests());
}

TEST_F(Tls, BlocksStartAsZeroBytes) {
  Log log;
  for (unsigned int size : {1u, 7u, 16u, 4096u}) {
    void* const block = KestTlsAddData(static_cast<int>(size), size);
    ASSERT_NE(nullptr, block);
    EXPECT_TRUE(IsZero(block, size));
  }
  KEST::TlsThreadTerm();
}

TEST_F(Tls, AsksForTheMapTheBlockAndTheMapsFirstEntries) {
  Log log;
  EXPECT_NE(nullptr, KestTlsAddData(5, 16));
  const unsigned int pointer = sizeof(void*);
  // The map, the client's block, 17 buckets, a block of ten entries.
  std::vector<unsigned int> expected = {sizeof(TPtrFromPtrMap), 16, 17 * pointer,
                                        pointer + 10 * 3 * pointer};
  EXPECT_EQ(expected, log.sizes);
  EXPECT_EQ(log.mapPlace, KEST::InternalTlsGetValue());
  for (int key = 100; key < 109; ++key) EXPECT_NE(nullptr, KestTlsAddData(key, 16));
  expected.insert(expected.end(), 9, 16u);
  EXPECT_EQ(expected, log.sizes);
  KEST::TlsThreadTerm();
}

TEST_F(Tls, GetAddCreatesOnceAndThenIgnoresTheSize) {
  TestAllocator allocator;
  void* const block = KestTlsGetAddData(5, 16);
  ASSERT_NE(nullptr, block);
  EXPECT_TRUE(IsZero(block, 16));
  memset(block, 1, 16);
  const int requests = allocator.Requests();
  EXPECT_EQ(block, KestTlsGetAddData(5, 16));
  EXPECT_EQ(block, KestTlsGetAddData(5, 0));
  EXPECT_EQ(block, KestTlsGetAddData(5, UINT_MAX));
  EXPECT_EQ(block, KestTlsGetData(5));
  EXPECT_EQ(requests, allocator.Requests());
  EXPECT_EQ(1, *static_cast<unsigned char*>(block)) << "not cleared again";
  KEST::TlsThreadTerm();
}

TEST_F(Tls, EachThreadHasItsOwnBlock) {
  void* const mine = KestTlsGetAddData(5, 16);
  OnAnotherThread([mine] {
    EXPECT_EQ(nullptr, KestTlsGetData(5));
    EXPECT_FALSE(KestTlsRemoveData(5));
    void* const theirs = KestTlsGetAddData(5, 16);
    EXPECT_NE(mine, theirs);
    EXPECT_EQ(theirs, KestTlsGetData(5));
    KEST::TlsThreadTerm();
    EXPECT_EQ(nullptr, KestTlsGetData(5));
  });
  EXPECT_EQ(mine, KestTlsGetData(5));
}

TEST_F(Tls, AddReplacesABlockWithoutFreeingIt) {
  TestAllocator allocator;
  void* const first = KestTlsAddData(5, 16);
  const int live = allocator.Live();
  void* const second = KestTlsAddData(5, 16);
  EXPECT_NE(first, second);
  EXPECT_EQ(second, KestTlsGetData(5));
  EXPECT_EQ(live + 1, allocator.Live());
  KestMemFree(first);
  KEST::TlsThreadTerm();
  EXPECT_EQ(0, allocator.Live());
}

TEST_F(Tls, RemoveSucceedsOnce) {
  TestAllocator allocator;
  EXPECT_NE(nullptr, KestTlsAddData(5, 16));
  EXPECT_NE(nullptr, KestTlsAddData(6, 16));
  const int live = allocator.Live();
  EXPECT_TRUE(KestTlsRemoveData(5));
  EXPECT_EQ(live - 1, allocator.Live());
  EXPECT_EQ(nullptr, KestTlsGetData(5));
  EXPECT_FALSE(KestTlsRemoveData(5));
  EXPECT_NE(nullptr, KestTlsGetData(6));
  KEST::TlsThreadTerm();
  EXPECT_EQ(0, allocator.Live());
}

TEST_F(Tls, RemoveOfAMissingKeyPassesNullToTheFreeHook) {
  Log log;
  EXPECT_NE(nullptr, KestTlsAddData(5, 16));
  log.freed.clear();
  EXPECT_FALSE(KestTlsRemoveData(6));
  EXPECT_EQ(std::vector<void*>{nullptr}, log.freed);
  KEST::TlsThreadTerm();
}

TEST_F(Tls, TheMapStaysWhenItBecomesEmpty) {
  TestAllocator allocator;
  EXPECT_NE(nullptr, KestTlsAddData(5, 16));
  void* const map = KEST::InternalTlsGetValue();
  EXPECT_TRUE(KestTlsRemoveData(5));
  EXPECT_EQ(map, KEST::InternalTlsGetValue());
  EXPECT_EQ(1, allocator.Live()) << "the map alone";
  EXPECT_FALSE(KestTlsRemoveData(5));
  EXPECT_NE(nullptr, KestTlsAddData(5, 16));
  EXPECT_EQ(map, KEST::InternalTlsGetValue());
  KEST::TlsThreadTerm();
  EXPECT_EQ(0, allocator.Live());
}

TEST_F(Tls, EveryIntIsAKey) {
  const int keys[] = {0, 1, -1, 5, 18, 35, -17, INT_MAX, INT_MIN, INT_MIN + 1, 0x1234};
  std::vector<void*> blocks;
  for (int key : keys) blocks.push_back(KestTlsAddData(key, 4));
  for (size_t i = 0; i < blocks.size(); ++i) {
    SCOPED_TRACE(keys[i]);
    ASSERT_NE(nullptr, blocks[i]);
    EXPECT_EQ(blocks[i], KestTlsGetData(keys[i]));
  }
  for (int key : keys) {
    EXPECT_TRUE(KestTlsRemoveData(key));
    EXPECT_EQ(nullptr, KestTlsGetData(key));
  }
}

TEST_F(Tls, ABlockOfSizeZeroIsWhatTheAllocatorGives) {
  EXPECT_NE(nullptr, KestTlsAddData(5, 0));
  EXPECT_NE(nullptr, KestTlsGetData(5));
  EXPECT_TRUE(KestTlsRemoveData(5));
  Log log;  // gives null
  EXPECT_EQ(nullptr, KestTlsAddData(5, 0));
  EXPECT_EQ(nullptr, KestTlsGetAddData(5, 0));
  EXPECT_FALSE(KestTlsRemoveData(5));
}

TEST_F(Tls, ThreadStopFreesEverythingAndLeavesTheSlot) {
  TestAllocator allocator;
  for (int key = 0; key < 50; ++key) EXPECT_NE(nullptr, KestTlsAddData(key, 16));
  void* const map = KEST::InternalTlsGetValue();
  KEST::TlsThreadTerm();
  EXPECT_EQ(0, allocator.Live());
  EXPECT_EQ(map, KEST::InternalTlsGetValue());
  EXPECT_EQ(nullptr, KestTlsGetData(5));
  EXPECT_FALSE(KestTlsRemoveData(5));
  KEST::TlsThreadTerm();  // frees nothing twice
  EXPECT_EQ(0, allocator.Live());
}

TEST_F(Tls, ThreadStopFreesInTheMapsOrder) {
  Log log;
  std::vector<void*> expected;
  for (int key : {1, 18, 35}) expected.insert(expected.begin(), KestTlsAddData(key, 16));
  log.freed.clear();
  KEST::TlsThreadTerm();
  ASSERT_GE(log.freed.size(), 4u);
  EXPECT_EQ(log.mapPlace, log.freed.back());
  log.freed.resize(3);
  EXPECT_EQ(expected, log.freed);
}

TEST_F(Tls, ThreadStopWithoutDataDoesNothing) {
  TestAllocator allocator;
  KEST::TlsThreadTerm();
  OnAnotherThread([] { KEST::TlsThreadTerm(); });
  EXPECT_EQ(0, allocator.Requests());
}

// Log puts every map in the same place: the released map and the new one have one address.
TEST_F(Tls, AnAddAfterTheThreadStopStartsAfresh) {
  Log log;
  for (int round = 0; round < 4; ++round) {
    EXPECT_EQ(nullptr, KestTlsGetData(5));
    void* const block = KestTlsAddData(5, 16);
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(block, KestTlsGetData(5));
    EXPECT_EQ(block, KestTlsGetAddData(5, 16));
    EXPECT_EQ(nullptr, KestTlsGetData(6));
    EXPECT_TRUE(KestTlsRemoveData(5));
    EXPECT_NE(nullptr, KestTlsAddData(5, 16));
    KEST::TlsThreadTerm();
  }
}

TEST_F(Tls, AFailedAddAfterTheThreadStopLeavesNoMap) {
  TestAllocator allocator;
  EXPECT_NE(nullptr, KestTlsAddData(5, 16));
  KEST::TlsThreadTerm();
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_EQ(nullptr, KestTlsAddData(5, 16));
  EXPECT_EQ(nullptr, KestTlsGetData(5));
  KEST::TlsThreadTerm();
  EXPECT_NE(nullptr, KestTlsAddData(5, 16));
  KEST::TlsThreadTerm();
  EXPECT_EQ(0, allocator.Live());
}

TEST_F(Tls, ARefusedRequestGivesNullAndKeepsTheOtherBlocks) {
  kest_test::ForEachRefusedRequest([](TestAllocator& allocator) {
    void* blocks[25];
    for (int key = 0; key < 25; ++key) {
      const int before = allocator.Refused();
      blocks[key] = key % 2 == 0 ? KestTlsAddData(key, 16) : KestTlsGetAddData(key, 16);
      EXPECT_EQ(allocator.Refused() > before, blocks[key] == nullptr);
    }
    for (int key = 0; key < 25; ++key) EXPECT_EQ(blocks[key], KestTlsGetData(key));
    for (int key = 0; key < 25; ++key) EXPECT_EQ(blocks[key] != nullptr, KestTlsRemoveData(key));
    KEST::TlsThreadTerm();
  });
}

TEST_F(Tls, AFailedInsertionFreesTheBlock) {
  TestAllocator allocator;
  allocator.Refuse(3, TestAllocator::kOnlyOne);  // after the map and the block
  EXPECT_EQ(nullptr, KestTlsAddData(5, 16));
  EXPECT_EQ(1, allocator.Live()) << "the map stays";
  EXPECT_NE(nullptr, KEST::InternalTlsGetValue());
  EXPECT_EQ(nullptr, KestTlsGetData(5));
  KEST::TlsThreadTerm();
  EXPECT_EQ(0, allocator.Live());
}

TEST_F(Tls, NothingIsFreedWhenAThreadSimplyEnds) {
  TestAllocator allocator;
  void* block = nullptr;
  TPtrFromPtrMap* map = nullptr;
  OnAnotherThread([&] {
    block = KestTlsAddData(5, 16);
    map = static_cast<TPtrFromPtrMap*>(KEST::InternalTlsGetValue());
  });
  ASSERT_NE(nullptr, block);
  EXPECT_EQ(4, allocator.Live());
  void* found = nullptr;
  EXPECT_TRUE(map->Lookup(reinterpret_cast<void*>(5), found));
  EXPECT_EQ(block, found);
  KestMemFree(block);
  map->~TPtrFromPtrMap();
  KestMemFree(map);
  EXPECT_EQ(0, allocator.Live());
}

TEST_F(Tls, ThreadsDoNotMeet) {
  TestAllocator allocator;
  std::vector<std::thread> threads;
  for (int number = 0; number < 8; ++number) {
    threads.emplace_back([number] {
      for (int round = 0; round < 50; ++round) {
        for (int key = -20; key < 20; ++key) {
          int* const block = static_cast<int*>(KestTlsGetAddData(key, sizeof(int)));
          ASSERT_NE(nullptr, block);
          ASSERT_EQ(0, *block);
          *block = number * 1000 + key;
        }
        for (int key = -20; key < 20; ++key) {
          ASSERT_EQ(number * 1000 + key, *static_cast<int*>(KestTlsGetData(key)));
          ASSERT_EQ(key % 3 == 0, key % 3 == 0 && KestTlsRemoveData(key));
        }
        KEST::TlsThreadTerm();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(0, allocator.Live());
}

// Every thread that uses the library pairs start and stop; the calls are serialised.
TEST(TlsLifecycle, StartAndStopCyclesKeepMemoryFlat) {
  TestAllocator allocator;
  KEST::SAllocator hooks = allocator.Hooks();
  std::mutex lifecycle;
  for (int cycle = 0; cycle < 50; ++cycle) {
    ASSERT_EQ(1, KestInitialize(&hooks));
    ASSERT_NE(nullptr, KestTlsAddData(-1, 100));
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
      threads.emplace_back([&lifecycle] {
        {
          std::lock_guard<std::mutex> lock(lifecycle);
          ASSERT_EQ(1, KestInitialize(nullptr));
        }
        for (int key = 0; key < 12; ++key) ASSERT_NE(nullptr, KestTlsAddData(key, 100));
        std::lock_guard<std::mutex> lock(lifecycle);
        KestUninitialize();
        ASSERT_EQ(nullptr, KestTlsGetData(0));
      });
    }
    for (std::thread& thread : threads) thread.join();
    ASSERT_NE(nullptr, KestTlsGetData(-1)) << "the other threads' stops leave this one's";
    KestUninitialize();
    ASSERT_EQ(0, allocator.Live());
  }
}

}  // namespace
