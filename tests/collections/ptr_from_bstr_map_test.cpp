#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <vector>

#include "collections/element.h"
#include "kest/collections.h"
#include "support/guarded_block.h"
#include "support/random.h"
#include "support/test_allocator.h"

using KEST::TBstr;
using KEST::TPtrFromBstrMap;
using kest_test::Element;
using kest_test::TestAllocator;

namespace {

const unsigned short* Units(const std::u16string& text) {
  return reinterpret_cast<const unsigned short*>(text.c_str());
}

unsigned int BucketOf(const TPtrFromBstrMap& map, const unsigned short* key) {
  unsigned int bucket = UINT32_MAX;
  map.GetAssocAt(key, bucket);
  return bucket;
}

TEST(PtrFromBstrMap, TheHashIsTimes33PlusTheUnit) {
  // Columns: key, its bucket of 17, of 1000. Worked with a few lines of Python.
  struct Row {
    std::u16string key;
    unsigned int of17, of1000;
  };
  const Row kRows[] = {
      {u"", 0, 0},
      {u"a", 12, 97},
      {u"ab", 1, 299},  // 97 * 33 + 98 = 3299
      {u"ba", 16, 331},
      {u"`\u0083", 1, 299},  // 96 * 33 + 131: the hash of "ab"
      {u"A", 14, 65},
      {u"abc", 13, 966},
      {u"\u00e9", 12, 233},
      {u"\uffff", 0, 535},
      {u"\uffff\uffff", 0, 190},
      {u"the quick brown fox", 9, 411},  // wraps
      {u"KestInitialize", 8, 473},
      {std::u16string(40, u'z'), 14, 336},
  };
  TPtrFromBstrMap of17, of1000;
  of1000.InitHashTable(1000, false);
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::PrintToString(row.key));
    EXPECT_EQ(row.of17, BucketOf(of17, Units(row.key)));
    EXPECT_EQ(row.of1000, BucketOf(of1000, Units(row.key)));
    of17[Units(row.key)] = Element(row.of1000);
    unsigned int bucket;
    EXPECT_EQ(row.of17, of17.GetAssocAt(Units(row.key), bucket)->bucket) << "kept in the entry";
  }
  EXPECT_EQ(static_cast<int>(std::size(kRows)), of17.GetCount());
  for (const Row& row : kRows) EXPECT_EQ(Element(row.of1000), of17[Units(row.key)]);
}

// The bucket of the insertion, whatever the size of the table is by now.
TEST(PtrFromBstrMap, AnIterationGoesOnFromTheBucketKeptInTheEntry) {
  TPtrFromBstrMap map;
  map[KEST_TEXT("c")] = Element(1);
  unsigned int bucket;
  TPtrFromBstrMap::SAssoc* const dropped = map.GetAssocAt(KEST_TEXT("c"), bucket);
  ASSERT_EQ(14u, dropped->bucket);
  map.InitHashTable(20);
  EXPECT_EQ(19u, BucketOf(map, KEST_TEXT("c")));
  map[KEST_TEXT("\x0F")] = Element(2);
  KEST::__POSITION* at = reinterpret_cast<KEST::__POSITION*>(dropped);
  for (uintptr_t value : {1u, 2u}) {
    ASSERT_NE(nullptr, at);
    TBstr key;
    void* given = nullptr;
    map.GetNextAssoc(at, key, given);
    EXPECT_EQ(Element(value), given);
  }
  EXPECT_EQ(nullptr, at);
  map.FreeAssoc(dropped);
}

TEST(PtrFromBstrMap, NullIsTheEmptyText) {
  TestAllocator allocator;
  TPtrFromBstrMap map;
  void* value = nullptr;
  EXPECT_FALSE(map.Lookup(nullptr, value));
  EXPECT_FALSE(map.RemoveKey(nullptr));
  map[nullptr] = Element(7);
  EXPECT_EQ(Element(7), map[KEST_TEXT("")]);
  EXPECT_EQ(1, map.GetCount());
  EXPECT_EQ(2, allocator.Requests()) << "the table and the block: an empty key takes nothing";
  EXPECT_EQ(0u, BucketOf(map, nullptr));
  EXPECT_TRUE(map.RemoveKey(nullptr));
  EXPECT_FALSE(map.RemoveKey(KEST_TEXT("")));
  map[KEST_TEXT("")] = Element(8);
  EXPECT_TRUE(map.Lookup(nullptr, value));
  EXPECT_EQ(Element(8), value);
}

TEST(PtrFromBstrMap, KeysAreEqualUnitByUnit) {
  const std::vector<std::u16string> keys = {u"key", u"Key",  u"kex",      u"ke",       u"keyy",
                                            u"ke ", u" key", u"k\u00e9y", u"\u212aey", u""};
  TPtrFromBstrMap map;
  for (size_t i = 0; i < keys.size(); ++i) map[Units(keys[i])] = Element(i + 1);
  EXPECT_EQ(static_cast<int>(keys.size()), map.GetCount());
  for (size_t i = 0; i < keys.size(); ++i) {
    SCOPED_TRACE(i);
    void* value = nullptr;
    EXPECT_TRUE(map.Lookup(Units(keys[i]), value));
    EXPECT_EQ(Element(i + 1), value);
  }
}

TEST(PtrFromBstrMap, AKeyEndsAtItsTerminator) {
  TPtrFromBstrMap map;
  map[KEST_TEXT("ab\0cd")] = Element(1);
  EXPECT_EQ(Element(1), map[KEST_TEXT("ab")]);
  EXPECT_EQ(1, map.GetCount());
}

TEST(PtrFromBstrMap, KeysAreCopied) {
  TPtrFromBstrMap map;
  unsigned short key[] = {'a', 'b', 0};
  map[key] = Element(1);
  key[0] = 'x';
  void* value = nullptr;
  EXPECT_FALSE(map.Lookup(key, value));
  EXPECT_TRUE(map.Lookup(KEST_TEXT("ab"), value));
}

TEST(PtrFromBstrMap, AKeyMayLieInTheMapItself) {
  TestAllocator allocator;
  {
    TPtrFromBstrMap map;
    map[KEST_TEXT("prefix")] = Element(1);
    map[KEST_TEXT("other")] = Element(2);
    unsigned int bucket;
    auto* assoc = map.GetAssocAt(KEST_TEXT("prefix"), bucket);
    map[assoc->key.GetString() + 3] = Element(3);
    EXPECT_EQ(Element(3), map[KEST_TEXT("fix")]);
    EXPECT_TRUE(map.RemoveKey(assoc->key.GetString()));
    EXPECT_EQ(2, map.GetCount());
    assoc = map.GetAssocAt(KEST_TEXT("fix"), bucket);
    KEST::__POSITION* at = reinterpret_cast<KEST::__POSITION*>(assoc);
    map.GetNextAssoc(at, assoc->key, assoc->value);
    EXPECT_EQ(Element(3), map[KEST_TEXT("fix")]);
    EXPECT_TRUE(map.RemoveKey(KEST_TEXT("other")));
    EXPECT_TRUE(map.RemoveKey(assoc->key.GetString())) << "the last one";
  }
  EXPECT_EQ(0, allocator.Live());
}

TEST(PtrFromBstrMap, KeyTextsAreFreedWithTheirEntries) {
  TestAllocator allocator;
  TPtrFromBstrMap map;
  const std::vector<std::u16string> keys = {u"one", u"two", u"three", u"four"};
  for (const auto& key : keys) map[Units(key)] = nullptr;
  EXPECT_EQ(2 + 4, allocator.Live());
  EXPECT_TRUE(map.RemoveKey(Units(keys[1])));
  EXPECT_EQ(2 + 3, allocator.Live());
  map[Units(keys[1])] = nullptr;
  EXPECT_EQ(2 + 4, allocator.Live());
  map.RemoveAll();
  EXPECT_EQ(0, allocator.Live());
  map[Units(keys[0])] = nullptr;
  EXPECT_TRUE(map.RemoveKey(Units(keys[0])));
  EXPECT_EQ(0, allocator.Live());
}

TEST(PtrFromBstrMap, RemoveAllFreesTheReachableKeysAlone) {
  TestAllocator allocator;
  TPtrFromBstrMap map;
  map[KEST_TEXT("lost")] = nullptr;
  unsigned int bucket;
  unsigned short* text = *map.GetAssocAt(KEST_TEXT("lost"), bucket)->key.GetRawBstrPtr();
  map.InitHashTable(5);
  map[KEST_TEXT("kept")] = nullptr;
  map.RemoveAll();
  EXPECT_EQ(1, allocator.Live()) << "the text of the key that was in no bucket any more";
  KestFreeString(text);
}

TEST(PtrFromBstrMap, NewAssocForgetsTheBucketItWasIn) {
  TPtrFromBstrMap map;
  auto* kept = map.NewAssoc();
  auto* assoc = map.NewAssoc();
  assoc->bucket = 5;
  map.FreeAssoc(assoc);
  EXPECT_EQ(assoc, map.NewAssoc());
  EXPECT_EQ(0u, assoc->bucket);
  map.FreeAssoc(assoc);
  map.FreeAssoc(kept);
}

TEST(PtrFromBstrMap, AKeyThatCannotBeCopiedIsNotAdded) {
  TestAllocator allocator;
  TPtrFromBstrMap map;
  map[KEST_TEXT("first")] = Element(1);
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_FALSE(map.SetAt(KEST_TEXT("second"), Element(2)));
  EXPECT_EQ(1, map.GetCount());
  void* value = Element(99);
  EXPECT_FALSE(map.Lookup(KEST_TEXT("second"), value));
  EXPECT_FALSE(map.Lookup(nullptr, value)) << "nor is an empty one in its place";
  KEST::__POSITION* at = map.GetStartPosition();
  TBstr key;
  map.GetNextAssoc(at, key, value);
  EXPECT_EQ(key, KEST_TEXT("first"));
  EXPECT_EQ(nullptr, at);

  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_EQ(nullptr, map[KEST_TEXT("second")]);
  const int requests = allocator.Requests();
  map[KEST_TEXT("second")] = Element(2);
  EXPECT_EQ(requests + 1, allocator.Requests()) << "the entry was put back";
}

TEST(PtrFromBstrMap, AKeyThatCannotBeGivenComesOutEmpty) {
  TestAllocator allocator;
  TPtrFromBstrMap map;
  map[KEST_TEXT("first")] = Element(1);
  KEST::__POSITION* at = map.GetStartPosition();
  TBstr key(KEST_TEXT("old"));
  void* value = nullptr;
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  map.GetNextAssoc(at, key, value);
  EXPECT_TRUE(key.IsEmpty());
  EXPECT_EQ(Element(1), value);
  EXPECT_EQ(nullptr, at);
}

TEST(PtrFromBstrMap, TakesLongKeys) {
  TPtrFromBstrMap map;
  std::u16string key(100000, u'k');
  map[Units(key)] = Element(1);
  key.back() = u'l';
  map[Units(key)] = Element(2);
  key.back() = u'k';
  EXPECT_EQ(Element(1), map[Units(key)]);
  EXPECT_EQ(2, map.GetCount());
}

// The hash, as far as two numbers of buckets tell it.
struct Buckets {
  unsigned int ofMany, ofOthers;
  bool operator==(const Buckets& other) const {
    return ofMany == other.ofMany && ofOthers == other.ofOthers;
  }
};
void PrintTo(const Buckets& buckets, std::ostream* out) {
  *out << buckets.ofMany << ", " << buckets.ofOthers;
}

constexpr unsigned int kMany = UINT32_MAX;
constexpr unsigned int kOthers = 4294967291u;

Buckets ModelOf(const std::vector<unsigned short>& key) {
  unsigned int hash = 0;
  for (unsigned short unit : key) hash = hash * 33 + unit;
  return {hash % kMany, hash % kOthers};
}

Buckets BucketsOf(const unsigned short* key) {
  TPtrFromBstrMap many, others;
  many.InitHashTable(kMany, false);
  others.InitHashTable(kOthers, false);
  return {BucketOf(many, key), BucketOf(others, key)};
}

std::vector<unsigned short> RandomKey(kest_test::Random& random, int length) {
  std::vector<unsigned short> key;
  while (static_cast<int>(key.size()) < length) {
    key.push_back(static_cast<unsigned short>(
        random.Next() % 4 != 0 ? random.Between(1, 0xFFFF) : random.Between(0xFFF0, 0xFFFF)));
  }
  return key;
}

// Sanitizers object to units at odd addresses in the plain version.
#ifdef __SANITIZE_ADDRESS__
constexpr size_t kOffsetStep = 2;
#else
constexpr size_t kOffsetStep = 1;
#endif

TEST(PtrFromBstrMap, TheHashOfEveryLengthAtEveryPlace) {
  kest_test::Random random;
  SCOPED_TRACE(random.Seed());
  alignas(64) static unsigned char bytes[1024];
  for (int length = 0; length <= 300; ++length) {
    const std::vector<unsigned short> key = RandomKey(random, length);
    const size_t size = key.size() * sizeof(unsigned short);
    for (size_t offset = 0; offset < 33; offset += kOffsetStep) {
      SCOPED_TRACE(testing::Message() << length << " units at byte " << offset);
      memset(bytes, 0x55, sizeof(bytes));
      if (size != 0) memcpy(bytes + offset, key.data(), size);
      memset(bytes + offset + size, 0, sizeof(unsigned short));
      ASSERT_EQ(ModelOf(key), BucketsOf(reinterpret_cast<const unsigned short*>(bytes + offset)));
    }
  }
}

TEST(PtrFromBstrMap, AKeyMayEndWithItsPage) {
  kest_test::Random random;
  SCOPED_TRACE(random.Seed());
  for (int length = 0; length <= 100; ++length) {
    SCOPED_TRACE(length);
    std::vector<unsigned short> key = RandomKey(random, length);
    const Buckets model = ModelOf(key);
    key.push_back(0);
    const kest_test::GuardedBlock<unsigned short> block(key);
    ASSERT_EQ(model, BucketsOf(block.Get()));
    TPtrFromBstrMap map;
    map[block.Get()] = Element(1);
    EXPECT_EQ(Element(1), map[block.Get()]);
    EXPECT_EQ(1, map.GetCount());
    EXPECT_TRUE(map.RemoveKey(block.Get()));
  }
  // Across the end of a page that another one follows.
  constexpr int kPage = 4096 / sizeof(unsigned short);
  for (int start = kPage - 20; start <= kPage; ++start) {
    for (int length = 0; length <= 40; ++length) {
      SCOPED_TRACE(testing::Message() << length << " from " << start);
      const kest_test::GuardedBlock<unsigned short> block(2 * kPage);
      const std::vector<unsigned short> key = RandomKey(random, length);
      std::copy(key.begin(), key.end(), block.Get() + start);
      ASSERT_EQ(ModelOf(key), BucketsOf(block.Get() + start));
    }
  }
}

TEST(PtrFromBstrMap, TellsKeysApartThatDifferInOneUnit) {
  kest_test::Random random;
  SCOPED_TRACE(random.Seed());
  TPtrFromBstrMap map;
  map.InitHashTable(1);  // all in one bucket
  for (int length = 1; length <= 40; ++length) {
    SCOPED_TRACE(length);
    std::vector<unsigned short> key = RandomKey(random, length);
    key.push_back(0);
    map[key.data()] = Element(static_cast<uintptr_t>(length));
    void* value = nullptr;
    EXPECT_TRUE(map.Lookup(key.data(), value));
    EXPECT_EQ(Element(static_cast<uintptr_t>(length)), value);
    for (int i = 0; i < length; ++i) {
      std::vector<unsigned short> other = key;
      unsigned short& unit = other[static_cast<size_t>(i)];
      unit = static_cast<unsigned short>(unit ^ 1 << random.Between(0, 15));
      EXPECT_FALSE(map.Lookup(other.data(), value)) << "unit " << i;
    }
    std::vector<unsigned short> extended(key.begin(), key.end() - 1);
    extended.insert(extended.end(), {7, 0});
    EXPECT_FALSE(map.Lookup(extended.data(), value)) << "a key that begins with it";
  }
}

}  // namespace
