#include <gtest/gtest.h>
#include <malloc.h>
#include <string.h>

#include "kest/string.h"
#include "support/test_allocator.h"

using kest_test::TestAllocator;

namespace {

unsigned int PrefixOf(const unsigned short* bstr) {
  unsigned int prefix;
  memcpy(&prefix, reinterpret_cast<const char*>(bstr) - 4, sizeof(prefix));
  return prefix;
}

// A buffer with any prefix at all, which no allocation could have.
class FakeBstr {
 public:
  explicit FakeBstr(unsigned int prefix) { memcpy(units, &prefix, sizeof(prefix)); }
  const unsigned short* Get() const { return units + 2; }

 private:
  unsigned short units[4] = {};
};

// Hooks that note what they are told to free.
int s_freeCalls;
void* s_freed;
void NoteFree(void* block) {
  ++s_freeCalls;
  s_freed = block;
  free(block);
}
void* PlainAlloc(unsigned int size) { return malloc(size); }
void* PlainRealloc(void* block, unsigned int size) { return realloc(block, size); }

}  // namespace

TEST(StringBuffer, EmptyTextIsNullWithoutARequest) {
  TestAllocator allocator;
  EXPECT_EQ(nullptr, KestAllocString(nullptr));
  EXPECT_EQ(nullptr, KestAllocString(KEST_TEXT("")));
  EXPECT_EQ(nullptr, KestAllocStringLen(KEST_TEXT("abc"), 0));
  EXPECT_EQ(nullptr, KestAllocStringLen(nullptr, 0));
  EXPECT_EQ(0, allocator.Requests());
}

TEST(StringBuffer, IsOneBlockOfPrefixUnitsAndTerminator) {
  TestAllocator allocator;
  unsigned short* bstr = KestAllocString(KEST_TEXT("hello"));
  ASSERT_NE(nullptr, bstr);
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ(16u, allocator.LastSize());
  EXPECT_EQ(10u, PrefixOf(bstr));
  EXPECT_EQ(0, memcmp(bstr, u"hello", 12));
  EXPECT_EQ(5u, KestStringLen(bstr));
  EXPECT_EQ(10u, KestStringByteLen(bstr));
  KestFreeString(bstr);
  EXPECT_EQ(0, allocator.Live());
}

TEST(StringBuffer, TakesTwiceTheLengthAndSixBytes) {
  mallopt(M_PERTURB, 0x55);  // fresh blocks are not zero
  TestAllocator allocator;
  for (unsigned int length = 1; length < 300; ++length) {
    unsigned short* bstr = KestAllocStringLen(nullptr, length);
    ASSERT_NE(nullptr, bstr);
    EXPECT_EQ(2 * length + 6, allocator.LastSize());
    EXPECT_EQ(2 * length, PrefixOf(bstr));
    EXPECT_EQ(0, bstr[length]);
    KestFreeString(bstr);
  }
}

TEST(StringBuffer, CopiesTheCountedUnitsZeroOnesToo) {
  const unsigned short text[] = {'a', 0, 0xFFFF, 'b', 'c'};
  unsigned short* bstr = KestAllocStringLen(text, 4);
  EXPECT_EQ(4u, KestStringLen(bstr));
  EXPECT_EQ(0, memcmp(bstr, text, 8));
  EXPECT_EQ(0, bstr[4]);
  KestFreeString(bstr);

  bstr = KestAllocString(text);
  EXPECT_EQ(1u, KestStringLen(bstr));
  KestFreeString(bstr);
}

TEST(StringBuffer, TheLongestTextFillsThe32BitsOfABlockSize) {
  TestAllocator allocator;
  allocator.Refuse(1, TestAllocator::kFromThereOn);
  EXPECT_EQ(nullptr, KestAllocStringLen(nullptr, 0x7FFFFFFC));
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ(0xFFFFFFFEu, allocator.LastSize());

  // From here on the size would wrap; at 0x80000000 twice the length is 0.
  for (unsigned int length : {0x7FFFFFFDu, 0x7FFFFFFEu, 0x7FFFFFFFu, 0x80000000u, 0x80000001u,
                              0xFFFFFFFDu, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
    EXPECT_EQ(nullptr, KestAllocStringLen(nullptr, length)) << length;
  }
  EXPECT_EQ(1, allocator.Requests());
}

TEST(StringBuffer, ARefusedRequestGivesNull) {
  kest_test::ForEachRefusedRequest([](TestAllocator& allocator) {
    unsigned short* bstr = KestAllocString(KEST_TEXT("abc"));
    EXPECT_EQ(allocator.Refused() == 0, bstr != nullptr);
    KestFreeString(bstr);
  });
}

TEST(StringBuffer, FreesTheStartOfTheBlockAndIgnoresNull) {
  KEST::SAllocator hooks = {PlainAlloc, PlainRealloc, NoteFree};
  KEST::MemInit(&hooks);
  KestFreeString(nullptr);
  EXPECT_EQ(0, s_freeCalls);
  unsigned short* bstr = KestAllocString(KEST_TEXT("x"));
  void* block = reinterpret_cast<char*>(bstr) - 4;
  KestFreeString(bstr);
  EXPECT_EQ(1, s_freeCalls);
  EXPECT_EQ(block, s_freed);
  KEST::MemTerm();
}

TEST(StringBuffer, LengthIsThePrefixShiftedRight) {
  struct {
    unsigned int prefix, length, bytes;
  } constexpr kRows[] = {
      {0, 0, 0},
      {2, 1, 2},
      {10, 5, 10},
      {7, 3, 6},                             // odd prefixes do not occur
      {0xFFFFFFF8, 0x7FFFFFFC, 0xFFFFFFF8},  // unsigned: no sign comes in
  };
  for (const auto& row : kRows) {
    const FakeBstr fake(row.prefix);
    EXPECT_EQ(row.length, KestStringLen(fake.Get())) << row.prefix;
    EXPECT_EQ(row.bytes, KestStringByteLen(fake.Get())) << row.prefix;
  }
  EXPECT_EQ(0u, KestStringLen(nullptr));
  EXPECT_EQ(0u, KestStringByteLen(nullptr));
}
