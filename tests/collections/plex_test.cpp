#include <gtest/gtest.h>
#include <limits.h>
#include <stdint.h>
#include <string.h>

#include "kest/collections.h"
#include "support/test_allocator.h"

using KEST::SPlex;
using kest_test::TestAllocator;

// The member function as the plain function that it is to a caller: a null object can be handed to
// it without a null pointer being dereferenced here.
extern "C" void FreeChain(SPlex* head) __asm__("_ZN4KEST5SPlex13FreeDataChainEv");

namespace {

constexpr unsigned int kHeader = sizeof(SPlex);

TEST(Plex, CreatePutsTheNewBlockInFront) {
  TestAllocator allocator;
  SPlex* head = nullptr;
  SPlex* first = SPlex::Create(head, 1, 8);
  ASSERT_NE(nullptr, first);
  EXPECT_EQ(first, head);
  EXPECT_EQ(nullptr, first->next);
  SPlex* second = SPlex::Create(head, 2, 8);
  EXPECT_EQ(second, head);
  EXPECT_EQ(first, second->next);
  SPlex* third = SPlex::Create(head, 3, 8);
  EXPECT_EQ(third, head);
  EXPECT_EQ(second, third->next);
  EXPECT_EQ(3, allocator.Live());
  head->FreeDataChain();
  EXPECT_EQ(0, allocator.Live());
}

TEST(Plex, PayloadFollowsTheHeaderAtOnce) {
  SPlex* head = nullptr;
  SPlex* block = SPlex::Create(head, 4, sizeof(void*));
  ASSERT_NE(nullptr, block);
  EXPECT_EQ(reinterpret_cast<char*>(block) + kHeader, block->GetData());
  EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(block->GetData()) % alignof(void*));
  memset(block->GetData(), 0xAA, 4 * sizeof(void*));
  EXPECT_EQ(nullptr, block->next);
  block->FreeDataChain();
}

TEST(Plex, AsksForHeaderAndPayloadInOneRequest) {
  struct Row {
    unsigned int count, elementSize, payload;
  };
  constexpr Row kRows[] = {
      {1, 1, 1}, {10, 12, 120}, {3, 7, 21}, {0, 8, 0}, {8, 0, 0}, {0, 0, 0}, {UINT_MAX, 0, 0},
  };
  TestAllocator allocator;
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.count << " of " << row.elementSize);
    allocator.Reset();
    SPlex* head = nullptr;
    ASSERT_NE(nullptr, SPlex::Create(head, row.count, row.elementSize));
    EXPECT_EQ(1, allocator.Requests());
    EXPECT_EQ(kHeader + row.payload, allocator.LastSize());
    head->FreeDataChain();
  }
}

TEST(Plex, SizesThatDoNotFit32BitsFailWithoutARequest) {
  struct Row {
    unsigned int count, elementSize;
  };
  constexpr Row kRows[] = {
      {UINT_MAX, 1},
      {UINT_MAX - kHeader + 1, 1},
      {1, UINT_MAX},
      {0x80000000, 2},
      {0x40000000, 4},
      {2, 0x80000000},
      {0x10000, 0x10000},
      {0x10001, 0xFFFF},
      {0x15555556, 12},  // 8 in 32 bits
      {UINT_MAX, 2},
      {UINT_MAX, UINT_MAX},
      {0x80000001, 0x80000001},
  };
  TestAllocator allocator;
  SPlex* head = nullptr;
  SPlex* block = SPlex::Create(head, 1, 1);
  allocator.Reset();
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.count << " of " << row.elementSize);
    EXPECT_EQ(nullptr, SPlex::Create(head, row.count, row.elementSize));
    EXPECT_EQ(block, head);
    EXPECT_EQ(0, allocator.Requests());
  }
  head->FreeDataChain();
}

TEST(Plex, AFailedAllocationLeavesTheHead) {
  TestAllocator allocator;
  SPlex* head = nullptr;
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_EQ(nullptr, SPlex::Create(head, 10, 12));
  EXPECT_EQ(nullptr, head);

  SPlex* block = SPlex::Create(head, 10, 12);
  // The largest size there is, refused here.
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_EQ(nullptr, SPlex::Create(head, UINT_MAX - kHeader, 1));
  EXPECT_EQ(UINT_MAX, allocator.LastSize());
  EXPECT_EQ(block, head);
  EXPECT_EQ(nullptr, block->next);
  head->FreeDataChain();
}

TEST(Plex, FreesTheBlockItIsCalledOnAndAllOlderOnes) {
  TestAllocator allocator;
  SPlex* head = nullptr;
  for (int i = 0; i < 5; ++i) ASSERT_NE(nullptr, SPlex::Create(head, 3, 12));
  SPlex* second = head->next;
  head->next = nullptr;
  second->FreeDataChain();
  EXPECT_EQ(1, allocator.Live());
  head->FreeDataChain();
  EXPECT_EQ(0, allocator.Live());
}

TEST(Plex, FreesALongChain) {
  TestAllocator allocator;
  SPlex* head = nullptr;
  for (int i = 0; i < 100000; ++i) ASSERT_NE(nullptr, SPlex::Create(head, 1, 4));
  head->FreeDataChain();
  EXPECT_EQ(0, allocator.Live());
}

TEST(Plex, ANullHeadHasNothingToFree) {
  TestAllocator allocator;
  FreeChain(nullptr);
  EXPECT_EQ(0, allocator.Live());
  SPlex* head = nullptr;
  SPlex::Create(head, 1, 1);
  FreeChain(head);
  EXPECT_EQ(0, allocator.Live());
}

}  // namespace
