// What holds for all three maps, whatever the key. Keys are made from numbers, and the key of
// number n has the hash n.

#include <gtest/gtest.h>
#include <limits.h>
#include <stdint.h>

#include <algorithm>
#include <list>
#include <random>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "collections/element.h"
#include "kest/collections.h"
#include "support/test_allocator.h"

using KEST::__POSITION;
using kest_test::Element;
using kest_test::TestAllocator;

namespace {

// Keys<Map>: what GetNextAssoc gives one as, how many requests the map makes to store one, the key
// of a number and the number of a key.
template <typename TMap>
struct Keys;

template <>
struct Keys<KEST::TPtrFromPtrMap> {
  using Result = void*;
  static constexpr int kRequests = 0;

  static void* Make(unsigned int n) { return Element(n); }
  static unsigned int Number(void* key) {
    return static_cast<unsigned int>(reinterpret_cast<uintptr_t>(key));
  }
};

template <>
struct Keys<KEST::TPtrFromBstrMap> {
  using Result = KEST::TBstr;
  static constexpr int kRequests = 1;

  // The text of one unit, for 0 the empty text.
  struct Text {
    unsigned short units[2];
    operator const unsigned short*() const { return units; }
  };
  static Text Make(unsigned int n) { return {{static_cast<unsigned short>(n), 0}}; }
  static unsigned int Number(const KEST::TBstr& key) { return key.GetAt(0); }
};

template <>
struct Keys<KEST::TPtrFromGuidMap> {
  using Result = KEST::_GUID;
  static constexpr int kRequests = 0;

  static KEST::_GUID Make(unsigned int n) { return {n, 0x11CF, 0xA0B1, {1, 2, 3, 4, 5, 6, 7, 8}}; }
  static unsigned int Number(const KEST::_GUID& key) { return key.data1; }
};

template <typename TMap>
class HashMap : public testing::Test {};
using Maps = testing::Types<KEST::TPtrFromPtrMap, KEST::TPtrFromBstrMap, KEST::TPtrFromGuidMap>;
TYPED_TEST_SUITE(HashMap, Maps);

struct Entry {
  unsigned int number;
  void* value;
  bool operator==(const Entry& other) const {
    return number == other.number && value == other.value;
  }
};
void PrintTo(const Entry& entry, std::ostream* out) { *out << entry.number << "=" << entry.value; }

// The map's entries in the order of the iteration.
template <typename TMap>
std::vector<Entry> Of(const TMap& map) {
  std::vector<Entry> entries;
  for (__POSITION* at = map.GetStartPosition(); at != nullptr;) {
    typename Keys<TMap>::Result key = {};
    void* value = nullptr;
    map.GetNextAssoc(at, key, value);
    entries.push_back({Keys<TMap>::Number(key), value});
  }
  return entries;
}

template <typename TMap>
std::vector<unsigned int> NumbersOf(const TMap& map) {
  std::vector<unsigned int> numbers;
  for (const Entry& entry : Of(map)) numbers.push_back(entry.number);
  return numbers;
}

// Adds the keys of the numbers, each with its own number as value.
template <typename TMap>
void Add(TMap& map, const std::vector<unsigned int>& numbers) {
  for (unsigned int n : numbers) ASSERT_TRUE(map.SetAt(Keys<TMap>::Make(n), Element(n)));
}

template <typename TMap>
bool Has(const TMap& map, unsigned int number) {
  void* value = nullptr;
  return map.Lookup(Keys<TMap>::Make(number), value);
}

using Numbers = std::vector<unsigned int>;

TYPED_TEST(HashMap, StartsWith17BucketsAndNoTable) {
  static_assert(!std::is_convertible_v<int, TypeParam>);
  TestAllocator allocator;
  {
    TypeParam map;
    EXPECT_EQ(17u, map.GetHashTableSize());
    EXPECT_EQ(0, map.GetCount());
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(nullptr, map.GetStartPosition());
    EXPECT_FALSE(Has(map, 1));
    EXPECT_FALSE(map.RemoveKey(Keys<TypeParam>::Make(1)));
    map.RemoveAll();
  }
  EXPECT_EQ(0, allocator.Requests());
}

TYPED_TEST(HashMap, IsNeverCopied) {
  static_assert(!std::is_copy_constructible_v<TypeParam> && !std::is_copy_assignable_v<TypeParam>);
}

TYPED_TEST(HashMap, TheFirstInsertionMakesTheTable) {
  TestAllocator allocator;
  {
    TypeParam map;
    allocator.Refuse(1, TestAllocator::kOnlyOne);
    EXPECT_FALSE(map.SetAt(Keys<TypeParam>::Make(1), Element(1)));
    EXPECT_EQ(17 * sizeof(void*), allocator.LastSize()) << "the first request";

    allocator.Refuse(2, TestAllocator::kOnlyOne);
    EXPECT_FALSE(map.SetAt(Keys<TypeParam>::Make(1), Element(1)));
    EXPECT_EQ(sizeof(KEST::SPlex) + 10 * sizeof(typename TypeParam::SAssoc), allocator.LastSize())
        << "the second";

    map[Keys<TypeParam>::Make(1)] = Element(7);
    EXPECT_EQ(2 + Keys<TypeParam>::kRequests, allocator.Live());
    EXPECT_EQ((std::vector<Entry>{{1, Element(7)}}), Of(map));
  }
  EXPECT_EQ(0, allocator.Live());
}

TYPED_TEST(HashMap, ANewKeyHasANullValue) {
  TypeParam map;
  void*& value = map[Keys<TypeParam>::Make(5)];
  EXPECT_EQ(nullptr, value);
  EXPECT_EQ(1, map.GetCount());
  value = Element(50);
  EXPECT_EQ(&value, &map[Keys<TypeParam>::Make(5)]) << "the key's one slot";
  EXPECT_EQ(1, map.GetCount());
  void* found = nullptr;
  EXPECT_TRUE(map.Lookup(Keys<TypeParam>::Make(5), found));
  EXPECT_EQ(Element(50), found);
}

TYPED_TEST(HashMap, LookupOfAMissingKeyLeavesTheValue) {
  TypeParam map;
  void* value = Element(99);
  EXPECT_FALSE(map.Lookup(Keys<TypeParam>::Make(1), value));
  Add(map, {1});
  EXPECT_FALSE(map.Lookup(Keys<TypeParam>::Make(2), value));
  EXPECT_FALSE(map.Lookup(Keys<TypeParam>::Make(18), value)) << "in the bucket of 1";
  EXPECT_EQ(Element(99), value);
  EXPECT_EQ(1, map.GetCount()) << "and adds nothing";
}

TYPED_TEST(HashMap, SetAtAddsOrReplaces) {
  TypeParam map;
  EXPECT_TRUE(map.SetAt(Keys<TypeParam>::Make(3), Element(30)));
  EXPECT_TRUE(map.SetAt(Keys<TypeParam>::Make(3), Element(31)));
  EXPECT_TRUE(map.SetAt(Keys<TypeParam>::Make(20), nullptr));
  EXPECT_EQ((std::vector<Entry>{{20, nullptr}, {3, Element(31)}}), Of(map));
}

TYPED_TEST(HashMap, IteratesByBucketThenFromTheNewestOn) {
  {
    TypeParam map;
    Add(map, {1, 18, 35});
    EXPECT_EQ((Numbers{35, 18, 1}), NumbersOf(map));
  }
  {
    TypeParam map;
    Add(map, {16, 33, 2, 0, 17, 50, 8, 25, 3});
    EXPECT_EQ((Numbers{17, 0, 2, 3, 25, 8, 50, 33, 16}), NumbersOf(map));
    Add(map, {16, 2});
    EXPECT_EQ((Numbers{17, 0, 2, 3, 25, 8, 50, 33, 16}), NumbersOf(map))
        << "a key that is there keeps its place";
  }
}

TYPED_TEST(HashMap, StartsIteratingAtThePositionOfAllOnes) {
  TypeParam map;
  Add(map, {4});
  EXPECT_EQ(UINTPTR_MAX, reinterpret_cast<uintptr_t>(map.GetStartPosition()));
  map.RemoveAll();
  EXPECT_EQ(nullptr, map.GetStartPosition());
}

TYPED_TEST(HashMap, ANullPositionGivesNothing) {
  TypeParam map;
  Add(map, {4});
  __POSITION* at = nullptr;
  typename Keys<TypeParam>::Result key(Keys<TypeParam>::Make(9));
  void* value = Element(99);
  map.GetNextAssoc(at, key, value);
  EXPECT_EQ(nullptr, at);
  EXPECT_EQ(9u, Keys<TypeParam>::Number(key));
  EXPECT_EQ(Element(99), value);
}

TYPED_TEST(HashMap, IterationOverEmptyBucketsEndsWithANullPosition) {
  TypeParam map;
  auto* assoc = map.NewAssoc();  // counted, but in no bucket
  for (bool table : {false, true}) {
    SCOPED_TRACE(table);
    map.InitHashTable(17, table);
    __POSITION* at = map.GetStartPosition();
    ASSERT_NE(nullptr, at);
    typename Keys<TypeParam>::Result key(Keys<TypeParam>::Make(9));
    void* value = Element(99);
    map.GetNextAssoc(at, key, value);
    EXPECT_EQ(nullptr, at);
    EXPECT_EQ(9u, Keys<TypeParam>::Number(key));
    EXPECT_EQ(Element(99), value);
  }
  map.FreeAssoc(assoc);
}

TYPED_TEST(HashMap, TheEntryJustGivenMayBeRemoved) {
  TypeParam map;
  Numbers all;
  for (unsigned int n = 0; n < 60; ++n) all.push_back(n * 7 % 61);
  Add(map, all);
  size_t seen = 0;
  for (__POSITION* at = map.GetStartPosition(); at != nullptr; ++seen) {
    typename Keys<TypeParam>::Result key = {};
    void* value = nullptr;
    map.GetNextAssoc(at, key, value);
    EXPECT_TRUE(map.RemoveKey(Keys<TypeParam>::Make(Keys<TypeParam>::Number(key))));
  }
  EXPECT_EQ(all.size(), seen);
  EXPECT_TRUE(map.IsEmpty());
}

TYPED_TEST(HashMap, RemovesAnywhereInAChain) {
  for (unsigned int removed : {1u, 18u, 35u}) {
    SCOPED_TRACE(removed);
    TypeParam map;
    Add(map, {1, 18, 35, 5});
    EXPECT_TRUE(map.RemoveKey(Keys<TypeParam>::Make(removed)));
    EXPECT_FALSE(map.RemoveKey(Keys<TypeParam>::Make(removed)));
    EXPECT_FALSE(map.RemoveKey(Keys<TypeParam>::Make(52))) << "in the same bucket";
    EXPECT_FALSE(map.RemoveKey(Keys<TypeParam>::Make(9))) << "in an empty one";
    Numbers rest = {35, 18, 1, 5};
    rest.erase(std::find(rest.begin(), rest.end(), removed));
    EXPECT_EQ(rest, NumbersOf(map));
    EXPECT_EQ(3, map.GetCount());
  }
}

TYPED_TEST(HashMap, AnEmptiedMapHoldsNoMemoryAndKeepsItsSize) {
  TestAllocator allocator;
  TypeParam map;
  map.InitHashTable(101);
  for (bool byKey : {true, false}) {
    SCOPED_TRACE(byKey);
    Add(map, {3, 104});
    if (byKey) {
      EXPECT_TRUE(map.RemoveKey(Keys<TypeParam>::Make(3)));
      EXPECT_NE(0, allocator.Live());
      EXPECT_TRUE(map.RemoveKey(Keys<TypeParam>::Make(104)));
    } else {
      map.RemoveAll();
    }
    EXPECT_EQ(0, allocator.Live());
    EXPECT_EQ(0, map.GetCount());
    EXPECT_EQ(101u, map.GetHashTableSize());
    EXPECT_FALSE(Has(map, 3));
    EXPECT_FALSE(map.RemoveKey(Keys<TypeParam>::Make(3)));

    allocator.Refuse(1, TestAllocator::kOnlyOne);
    EXPECT_FALSE(map.SetAt(Keys<TypeParam>::Make(3), nullptr));
    EXPECT_EQ(101 * sizeof(void*), allocator.LastSize()) << "the table again";
  }
}

TYPED_TEST(HashMap, InitHashTableMakesTheBucketsNowOrLater) {
  TestAllocator allocator;
  TypeParam map;
  map.InitHashTable(101, false);
  EXPECT_EQ(0, allocator.Requests());
  EXPECT_EQ(101u, map.GetHashTableSize());
  map.InitHashTable(50);
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ(50 * sizeof(void*), allocator.LastSize());
  map.InitHashTable(101, true);
  EXPECT_EQ(101 * sizeof(void*), allocator.LastSize());
  EXPECT_EQ(1, allocator.Live()) << "the old one is freed";
  map.InitHashTable(101, false);
  EXPECT_EQ(0, allocator.Live());

  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_FALSE(map.SetAt(Keys<TypeParam>::Make(1), nullptr));
  EXPECT_EQ(101 * sizeof(void*), allocator.LastSize());
  Add(map, {1, 18, 102});
  EXPECT_EQ((Numbers{102, 1, 18}), NumbersOf(map));
}

TYPED_TEST(HashMap, OneBucketIsEnough) {
  TypeParam map;
  map.InitHashTable(1);
  Add(map, {5, 0, 9});
  EXPECT_EQ((Numbers{9, 0, 5}), NumbersOf(map));
  EXPECT_TRUE(Has(map, 0));
  EXPECT_FALSE(Has(map, 1));
}

TYPED_TEST(HashMap, ATableOfSizeZeroIsIgnored) {
  TypeParam map;
  for (bool allocNow : {false, true}) map.InitHashTable(0, allocNow);
  EXPECT_EQ(17u, map.GetHashTableSize());
  Add(map, {1, 18});
  for (bool allocNow : {false, true}) map.InitHashTable(0, allocNow);
  EXPECT_EQ((Numbers{18, 1}), NumbersOf(map));
}

TYPED_TEST(HashMap, InitHashTableDropsTheEntriesOutOfTheBuckets) {
  for (bool allocNow : {false, true}) {
    SCOPED_TRACE(allocNow);
    TestAllocator allocator;
    {
      TypeParam map;
      Add(map, {0});  // the one key that takes no memory of its own in any map
      map.InitHashTable(5, allocNow);
      EXPECT_EQ(1, map.GetCount()) << "still counted";
      EXPECT_FALSE(Has(map, 0));
      EXPECT_FALSE(map.RemoveKey(Keys<TypeParam>::Make(0)));
      __POSITION* at = map.GetStartPosition();
      ASSERT_NE(nullptr, at);
      typename Keys<TypeParam>::Result key = {};
      void* value = nullptr;
      map.GetNextAssoc(at, key, value);
      EXPECT_EQ(nullptr, at);

      Add(map, {7, 2});
      EXPECT_EQ(3, map.GetCount());
      EXPECT_EQ((Numbers{2, 7}), NumbersOf(map));
      EXPECT_TRUE(map.RemoveKey(Keys<TypeParam>::Make(7)));
      EXPECT_TRUE(map.RemoveKey(Keys<TypeParam>::Make(2)));
      EXPECT_EQ(1, map.GetCount());
    }
    EXPECT_EQ(0, allocator.Live());
  }
}

TYPED_TEST(HashMap, APositionOutlivesItsTable) {
  TypeParam map;
  Add(map, {0, 3});
  __POSITION* at = map.GetStartPosition();
  typename Keys<TypeParam>::Result key = {};
  void* value = nullptr;
  map.GetNextAssoc(at, key, value);
  ASSERT_NE(nullptr, at);
  map.RemoveKey(Keys<TypeParam>::Make(0));
  void* kept = at;
  map.GetNextAssoc(at, key, value);
  EXPECT_EQ(3u, Keys<TypeParam>::Number(key));
  EXPECT_EQ(nullptr, at);

  unsigned int bucket;
  auto* assoc = map.GetAssocAt(Keys<TypeParam>::Make(3), bucket);
  ASSERT_EQ(kept, assoc);
  for (bool allocNow : {false, true}) {
    map.InitHashTable(2, allocNow);
    at = reinterpret_cast<__POSITION*>(assoc);
    map.GetNextAssoc(at, key, value);
    EXPECT_EQ(nullptr, at);
  }
  map.FreeAssoc(assoc);
}

TYPED_TEST(HashMap, GetAssocAtGivesTheBucketInAnyCase) {
  TypeParam map;
  unsigned int bucket = 99;
  EXPECT_EQ(nullptr, map.GetAssocAt(Keys<TypeParam>::Make(40), bucket));
  EXPECT_EQ(6u, bucket) << "without a table";
  map.InitHashTable(7, false);
  EXPECT_EQ(nullptr, map.GetAssocAt(Keys<TypeParam>::Make(40), bucket));
  EXPECT_EQ(5u, bucket);
  Add(map, {40, 5});
  EXPECT_EQ(nullptr, map.GetAssocAt(Keys<TypeParam>::Make(13), bucket));
  EXPECT_EQ(6u, bucket);
  auto* assoc = map.GetAssocAt(Keys<TypeParam>::Make(5), bucket);
  ASSERT_NE(nullptr, assoc);
  EXPECT_EQ(5u, bucket);
  EXPECT_EQ(5u, Keys<TypeParam>::Number(assoc->key));
  EXPECT_EQ(Element(5), assoc->value);
  ASSERT_NE(nullptr, assoc->next);
  EXPECT_EQ(40u, Keys<TypeParam>::Number(assoc->next->key));
  EXPECT_EQ(nullptr, assoc->next->next);
}

TYPED_TEST(HashMap, NewAssocIsEmptyAndCounted) {
  TestAllocator allocator;
  TypeParam map(4);
  std::vector<typename TypeParam::SAssoc*> assocs;
  for (int i = 0; i < 6; ++i) {
    auto* assoc = map.NewAssoc();
    ASSERT_NE(nullptr, assoc);
    EXPECT_EQ(0u, Keys<TypeParam>::Number(assoc->key));
    EXPECT_EQ(nullptr, assoc->value);
    EXPECT_EQ(i + 1, map.GetCount());
    EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(assoc) % alignof(void*));
    assocs.push_back(assoc);
  }
  EXPECT_EQ(2, allocator.Requests());
  for (size_t i : {1u, 2u, 3u, 5u}) EXPECT_EQ(assocs[i - 1] + 1, assocs[i]) << "in address order";

  // Used before, and empty again.
  assocs[2]->value = Element(1);
  map.FreeAssoc(assocs[2]);
  assocs[0]->value = Element(1);
  map.FreeAssoc(assocs[0]);
  EXPECT_EQ(4, map.GetCount());
  EXPECT_EQ(assocs[0], map.NewAssoc()) << "the last one freed";
  EXPECT_EQ(nullptr, assocs[0]->value);
  EXPECT_EQ(nullptr, assocs[0]->next) << "not the next one that is free";
  EXPECT_EQ(assocs[2], map.NewAssoc());
  EXPECT_EQ(nullptr, assocs[2]->value);
  EXPECT_EQ(2, allocator.Requests());

  for (auto* assoc : assocs) map.FreeAssoc(assoc);
  EXPECT_EQ(0, map.GetCount());
  EXPECT_EQ(0, allocator.Live());
}

TYPED_TEST(HashMap, TakesEntriesABlockAtATime) {
  // Columns: block size given, entries a block.
  constexpr int kRows[][2] = {{10, 10}, {1, 1}, {3, 3}, {0, 1}, {-1, 1}, {INT_MIN, 1}};
  TestAllocator allocator;
  for (const auto& row : kRows) {
    SCOPED_TRACE(row[0]);
    TypeParam map(row[0]);
    map.InitHashTable(17);
    allocator.Reset();
    for (int i = 0; i < 5 * row[1]; ++i) {
      map[Keys<TypeParam>::Make(static_cast<unsigned int>(i + 1))] = nullptr;
      ASSERT_EQ(i / row[1] + 1 + (i + 1) * Keys<TypeParam>::kRequests, allocator.Requests());
    }
    EXPECT_TRUE(map.RemoveKey(Keys<TypeParam>::Make(1)));
    allocator.Reset();
    map[Keys<TypeParam>::Make(100)] = nullptr;
    EXPECT_EQ(Keys<TypeParam>::kRequests, allocator.Requests()) << "an entry is used again";
  }
}

TYPED_TEST(HashMap, SizesThatDoNotFit32BitsFailWithoutARequest) {
  constexpr unsigned int kEntrySize = sizeof(typename TypeParam::SAssoc);
  TestAllocator allocator;
  {
    TypeParam map;
    for (unsigned int size : {UINT_MAX, UINT_MAX - 1, UINT_MAX / unsigned{sizeof(void*)} + 1}) {
      SCOPED_TRACE(size);
      map.InitHashTable(size);
      EXPECT_EQ(size, map.GetHashTableSize());
      EXPECT_FALSE(map.SetAt(Keys<TypeParam>::Make(1), nullptr));
      EXPECT_EQ(0, map.GetCount());
    }
    EXPECT_EQ(0, allocator.Requests());
    map.InitHashTable(3);
    Add(map, {1});
    EXPECT_EQ(1, map.GetCount());
  }
  for (int blockSize : {INT_MAX, static_cast<int>(UINT_MAX / kEntrySize) + 1}) {
    SCOPED_TRACE(blockSize);
    TypeParam map(blockSize);
    map.InitHashTable(17);
    allocator.Reset();
    EXPECT_EQ(nullptr, map.NewAssoc());
    EXPECT_FALSE(map.SetAt(Keys<TypeParam>::Make(1), nullptr));
    EXPECT_EQ(0, map.GetCount());
    EXPECT_EQ(0, allocator.Requests());
  }
}

TYPED_TEST(HashMap, ATableThatCouldNotBeMadeIsMadeLater) {
  TestAllocator allocator;
  TypeParam map;
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  map.InitHashTable(101);
  EXPECT_EQ(101u, map.GetHashTableSize());
  EXPECT_FALSE(Has(map, 1));
  Add(map, {1, 102});
  EXPECT_EQ((Numbers{102, 1}), NumbersOf(map));
}

TYPED_TEST(HashMap, AFailedInsertionLeavesTheMap) {
  for (const Numbers& numbers : {Numbers{36}, Numbers{2, 36}, Numbers{2, 19, 36}}) {  // one bucket
    for (bool bySetAt : {false, true}) {
      SCOPED_TRACE(testing::Message() << numbers.size() << " keys, by SetAt: " << bySetAt);
      kest_test::ForEachRefusedRequest([&](TestAllocator& allocator) {
        TypeParam map(2);
        std::vector<Entry> expected;
        for (unsigned int n : numbers) {
          const int refused = allocator.Refused();
          if (bySetAt) {
            const bool added = map.SetAt(Keys<TypeParam>::Make(n), Element(n));
            EXPECT_EQ(allocator.Refused() == refused, added);
          } else {
            void*& value = map[Keys<TypeParam>::Make(n)];
            EXPECT_EQ(nullptr, value);
            value = Element(n);
          }
          const bool added = allocator.Refused() == refused;
          if (added) expected.insert(expected.begin(), {n, Element(n)});
          EXPECT_EQ(added, Has(map, n));
          EXPECT_EQ(expected.size(), static_cast<size_t>(map.GetCount()));
        }
        allocator.RefuseNone();
        EXPECT_EQ(expected, Of(map));
        Add(map, numbers);
        EXPECT_EQ(numbers.size(), static_cast<size_t>(map.GetCount()));
      });
    }
  }
}

TYPED_TEST(HashMap, AFailedInsertionGivesANullOfTheThreadsOwn) {
  TestAllocator allocator;
  TypeParam map;
  allocator.Refuse(1, TestAllocator::kFromThereOn);
  void*& first = map[Keys<TypeParam>::Make(1)];
  EXPECT_EQ(nullptr, first);
  first = Element(1);
  void*& second = map[Keys<TypeParam>::Make(2)];
  EXPECT_EQ(nullptr, second) << "null again each time";
  second = Element(2);
  void** other = nullptr;
  std::thread([&] {
    TypeParam own;
    other = &own[Keys<TypeParam>::Make(1)];
    EXPECT_EQ(nullptr, *other);
    *other = Element(3);
  }).join();
  EXPECT_NE(other, &second);
  EXPECT_EQ(Element(2), second);
  EXPECT_EQ(0, map.GetCount());
  EXPECT_EQ(nullptr, map.GetStartPosition());
}

// The buckets as lists, newest first.
struct Model {
  std::vector<std::list<Entry>> buckets = std::vector<std::list<Entry>>(17);
  int count = 0;

  std::list<Entry>& Bucket(unsigned int n) { return buckets[n % buckets.size()]; }
  Entry* Find(unsigned int n) {
    for (Entry& entry : Bucket(n)) {
      if (entry.number == n) return &entry;
    }
    return nullptr;
  }
  void Set(unsigned int n, void* value) {
    if (Entry* entry = Find(n)) {
      entry->value = value;
      return;
    }
    Bucket(n).push_front({n, value});
    ++count;
  }
  bool Remove(unsigned int n) {
    if (Find(n) == nullptr) return false;
    Bucket(n).remove_if([n](const Entry& entry) { return entry.number == n; });
    --count;
    return true;
  }
  void Clear(size_t size) {
    buckets.assign(size, {});
    count = 0;
  }
  std::vector<Entry> Entries() const {
    std::vector<Entry> entries;
    for (const auto& bucket : buckets) entries.insert(entries.end(), bucket.begin(), bucket.end());
    return entries;
  }
};

TYPED_TEST(HashMap, AgreesWithAVectorOfLists) {
  std::mt19937 engine(4301);
  const auto below = [&](unsigned int n) { return static_cast<unsigned int>(engine() % n); };
  TestAllocator allocator;
  {
    TypeParam map(3);
    Model model;
    for (int step = 0; step < 8000; ++step) {
      const unsigned int n = below(90);
      const auto key = Keys<TypeParam>::Make(n);
      void* value = Element(engine());
      switch (below(8)) {
        case 0:
        case 1:
          map[key] = value;
          model.Set(n, value);
          break;
        case 2:
          ASSERT_TRUE(map.SetAt(key, value));
          model.Set(n, value);
          break;
        case 3:
        case 4:
        case 5:
          ASSERT_EQ(model.Remove(n), map.RemoveKey(key));
          break;
        case 6: {
          const Entry* entry = model.Find(n);
          void* found = value;
          ASSERT_EQ(entry != nullptr, map.Lookup(key, found));
          ASSERT_EQ(entry != nullptr ? entry->value : value, found);
          break;
        }
        default:
          if (below(100) != 0) break;
          map.RemoveAll();
          map.InitHashTable(below(40) + 1, below(2) != 0);
          model.Clear(map.GetHashTableSize());
      }
      ASSERT_EQ(model.count, map.GetCount());
      ASSERT_EQ(model.Entries(), Of(map)) << "step " << step;
    }
  }
  EXPECT_EQ(0, allocator.Live());
}

// Blocks grow with the map then.
TYPED_TEST(HashMap, HoldsThousandsOverTheDefaultHooks) {
  for (unsigned int size : {17u, 1009u}) {
    SCOPED_TRACE(size);
    TypeParam map;
    map.InitHashTable(size);
    Model model;
    model.Clear(size);
    for (unsigned int round = 0; round < 3; ++round) {
      for (unsigned int i = 0; i < 3000; ++i) {
        const unsigned int n = i * 7919 % 30011;
        if (i % 3 == round) {
          ASSERT_EQ(model.Remove(n), map.RemoveKey(Keys<TypeParam>::Make(n)));
        } else {
          ASSERT_TRUE(map.SetAt(Keys<TypeParam>::Make(n), Element(i + round)));
          model.Set(n, Element(i + round));
        }
      }
      ASSERT_EQ(model.count, map.GetCount());
      ASSERT_EQ(model.Entries(), Of(map));
    }
  }
}

}  // namespace
