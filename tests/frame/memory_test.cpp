#include "kest/frame.h"

#include <limits.h>
#include <malloc.h>
#include <string.h>

#include <limits>

#include "support/test_allocator.h"

namespace {

// What the hooks were last called with, and the results they gave.
struct {
  unsigned int size;
  void* block;
  int allocs, reallocs, frees;
} s_seen;

char s_result;

void* RecordAlloc(unsigned int size) {
  s_seen.size = size;
  ++s_seen.allocs;
  return &s_result;
}
void* RecordRealloc(void* block, unsigned int size) {
  s_seen.block = block;
  s_seen.size = size;
  ++s_seen.reallocs;
  return &s_result;
}
void RecordFree(void* block) {
  s_seen.block = block;
  ++s_seen.frees;
}

class Memory : public testing::Test {
 protected:
  void SetUp() override { s_seen = {}; }
  void TearDown() override { KEST::MemTerm(); }
  KEST::SAllocator recorder = {RecordAlloc, RecordRealloc, RecordFree};
};

TEST_F(Memory, ComesFromMallocBeforeAnyStart) {
  char* block = static_cast<char*>(KestMemAlloc(100));
  ASSERT_NE(nullptr, block);
  EXPECT_GE(malloc_usable_size(block), 100u);
  memset(block, 'x', 100);
  block = static_cast<char*>(KestMemRealloc(block, 200));
  ASSERT_NE(nullptr, block);
  EXPECT_EQ('x', block[99]);
  KestMemFree(block);
  KestMemFree(nullptr);
}

TEST_F(Memory, EachCallIsTheHookWithTheSameArguments) {
  EXPECT_TRUE(KEST::MemInit(&recorder));
  for (unsigned int size : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, UINT_MAX}) {
    SCOPED_TRACE(size);
    EXPECT_EQ(&s_result, KestMemAlloc(size));
    EXPECT_EQ(size, s_seen.size);
    EXPECT_EQ(&s_result, KestMemRealloc(this, size));
    EXPECT_EQ(this, s_seen.block);
    EXPECT_EQ(size, s_seen.size);
  }
  KestMemFree(&s_seen);
  EXPECT_EQ(&s_seen, s_seen.block);
  KestMemFree(nullptr);
  EXPECT_EQ(nullptr, s_seen.block);
  EXPECT_EQ(5, s_seen.allocs);
  EXPECT_EQ(5, s_seen.reallocs);
  EXPECT_EQ(2, s_seen.frees);
}

TEST_F(Memory, DebugCallsIgnoreWhatFollowsTheSize) {
  KEST::MemInit(&recorder);
  EXPECT_EQ(&s_result, KestMemDebugAlloc(12, "file.cpp", 34));
  EXPECT_EQ(12u, s_seen.size);
  EXPECT_EQ(&s_result, KestMemDebugRealloc(this, 56, "file.cpp", 78));
  EXPECT_EQ(this, s_seen.block);
  EXPECT_EQ(56u, s_seen.size);
  EXPECT_EQ(1, s_seen.allocs);
  EXPECT_EQ(1, s_seen.reallocs);
}

TEST_F(Memory, KeepsTheCurrentHooksWhenARecordIsIncomplete) {
  KEST::MemInit(&recorder);
  KEST::SAllocator noAlloc = {nullptr, RecordRealloc, RecordFree};
  KEST::SAllocator noRealloc = {RecordAlloc, nullptr, RecordFree};
  KEST::SAllocator noFree = {RecordAlloc, RecordRealloc, nullptr};
  for (KEST::SAllocator* incomplete : {&noAlloc, &noRealloc, &noFree}) {
    EXPECT_TRUE(KEST::MemInit(incomplete));
    EXPECT_EQ(&s_result, KestMemAlloc(1));
  }
  EXPECT_TRUE(KEST::MemInit(nullptr));
  EXPECT_EQ(&s_result, KestMemAlloc(1));
}

TEST_F(Memory, ReadsThreeWordsOfTheHostsRecordAndKeepsACopy) {
  // The record ends where its block ends, which the address sanitizer watches.
  auto* record = static_cast<KEST::SAllocator*>(malloc(sizeof(KEST::SAllocator)));
  *record = recorder;
  KEST::MemInit(record);
  free(record);
  EXPECT_EQ(&s_result, KestMemAlloc(1));
}

TEST_F(Memory, TermBringsMallocBack) {
  KEST::MemInit(&recorder);
  KEST::MemTerm();
  void* block = KestMemAlloc(1);
  EXPECT_NE(&s_result, block);
  KestMemFree(block);
  EXPECT_EQ(0, s_seen.frees);
}

TEST_F(Memory, AFailedRequestIsTheHooksNull) {
  kest_test::TestAllocator allocator;
  allocator.Refuse(1, kest_test::TestAllocator::kFromThereOn);
  EXPECT_EQ(nullptr, KestMemAlloc(1));
  EXPECT_EQ(nullptr, KestMemRealloc(nullptr, 1));
  EXPECT_EQ(nullptr, KestMemDebugAlloc(1));
  EXPECT_EQ(nullptr, KestMemDebugRealloc(nullptr, 1));
}

TEST_F(Memory, KeepsNoAccount) {
  EXPECT_EQ(0u, KestMemGetTotalSize());
  void* block = KestMemAlloc(1000);
  EXPECT_EQ(0u, KestMemGetTotalSize());
  KestMemFree(block);
}

}  // namespace
