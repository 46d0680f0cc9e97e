#include <gtest/gtest.h>
#include <stdint.h>

#include "collections/element.h"
#include "kest/collections.h"

using KEST::TPtrFromPtrMap;
using kest_test::Element;

namespace {

unsigned int BucketOf(const TPtrFromPtrMap& map, uintptr_t key) {
  unsigned int bucket = UINT32_MAX;
  map.GetAssocAt(Element(key), bucket);
  return bucket;
}

TEST(PtrFromPtrMap, TheHashIsTheAddressItself) {
  // Columns: key, its bucket of 17, of 256, of 1000.
  struct Row {
    unsigned int key, of17, of256, of1000;
  };
  constexpr Row kRows[] = {
      {0, 0, 0, 0},
      {1, 1, 1, 1},
      {4, 4, 4, 4},  // no shift for the alignment
      {16, 16, 16, 16},
      {17, 0, 17, 17},
      {18, 1, 18, 18},
      {35, 1, 35, 35},
      {1000, 14, 232, 0},
      {0x7FFFFFFF, 8, 255, 647},
      {0x80000000, 9, 0, 648},  // unsigned
      {0xFFFFFFFE, 16, 254, 294},
      {0xFFFFFFFF, 0, 255, 295},
  };
  TPtrFromPtrMap of17, of256, of1000;
  of256.InitHashTable(256, false);
  of1000.InitHashTable(1000, false);
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.key);
    EXPECT_EQ(row.of17, BucketOf(of17, row.key));
    EXPECT_EQ(row.of256, BucketOf(of256, row.key));
    EXPECT_EQ(row.of1000, BucketOf(of1000, row.key));
  }
}

TEST(PtrFromPtrMap, NullIsAKeyLikeAnyOther) {
  TPtrFromPtrMap map;
  void* value = nullptr;
  EXPECT_FALSE(map.Lookup(nullptr, value));
  map[nullptr] = Element(7);
  EXPECT_TRUE(map.Lookup(nullptr, value));
  EXPECT_EQ(Element(7), value);
  EXPECT_EQ(1, map.GetCount());
  EXPECT_TRUE(map.RemoveKey(nullptr));
  EXPECT_TRUE(map.IsEmpty());
}

TEST(PtrFromPtrMap, AKeyOfAllOnesIsNotTheStartPosition) {
  TPtrFromPtrMap map;
  map[Element(UINTPTR_MAX)] = Element(7);
  KEST::__POSITION* at = map.GetStartPosition();
  void* key = nullptr;
  void* value = nullptr;
  map.GetNextAssoc(at, key, value);
  EXPECT_EQ(Element(UINTPTR_MAX), key);
  EXPECT_EQ(Element(7), value);
  EXPECT_EQ(nullptr, at);
}

// Where an address is wider than the hash.
TEST(PtrFromPtrMap, HashesTheLow32BitsAndComparesTheWholeAddress) {
  constexpr int kHalf = sizeof(uintptr_t) * 4;
  const uintptr_t high = uintptr_t{1} << kHalf;
  TPtrFromPtrMap map;
  map[Element(5)] = Element(50);
  map[Element(high + 5)] = Element(51);
  EXPECT_EQ(2, map.GetCount());
  EXPECT_EQ(Element(50), map[Element(5)]);
  EXPECT_EQ(Element(51), map[Element(high + 5)]);
  const uintptr_t hash = (high + 5) & UINT32_MAX;
  EXPECT_EQ(hash % 17, BucketOf(map, high + 5));
}

TEST(PtrFromPtrMap, AnIterationMayGiveKeyAndValueInOneVariable) {
  TPtrFromPtrMap map;
  for (uintptr_t n = 1; n <= 40; ++n) map[Element(n)] = Element(1000 + n);
  int seen = 0;
  void* both = nullptr;
  for (KEST::__POSITION* at = map.GetStartPosition(); at != nullptr; ++seen) {
    map.GetNextAssoc(at, both, both);
    EXPECT_LT(1000u, reinterpret_cast<uintptr_t>(both));
  }
  EXPECT_EQ(40, seen);
}

}  // namespace
