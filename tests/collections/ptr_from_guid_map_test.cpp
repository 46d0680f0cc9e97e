#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>

#include "collections/element.h"
#include "kest/collections.h"

using KEST::_GUID;
using KEST::TPtrFromGuidMap;
using kest_test::Element;

namespace {

constexpr _GUID kGuid = {0x6B29FC40, 0xCA47, 0x1067, {0xB3, 0x1D, 0, 0xDD, 1, 6, 0x62, 0xDA}};

// kGuid with one bit of one byte changed.
_GUID Changed(size_t byte, int bit) {
  unsigned char bytes[sizeof(_GUID)];
  memcpy(bytes, &kGuid, sizeof(bytes));
  bytes[byte] = static_cast<unsigned char>(bytes[byte] ^ (1 << bit));
  _GUID guid;
  memcpy(&guid, bytes, sizeof(bytes));
  return guid;
}

TEST(PtrFromGuidMap, TheHashIsTheFirstWordAlone) {
  // Columns: first word, its bucket of 17, of 1000.
  constexpr unsigned int kRows[][3] = {
      {0, 0, 0},
      {1, 1, 1},
      {18, 1, 18},
      {1000, 14, 0},
      {0x7FFFFFFF, 8, 647},
      {0x80000000, 9, 648},
      {0xFFFFFFFF, 0, 295},
  };
  TPtrFromGuidMap of17, of1000;
  of1000.InitHashTable(1000, false);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row[0]);
    for (_GUID guid :
         {_GUID{row[0], 0, 0, {}}, _GUID{row[0], 0xFFFF, 7, {1, 2, 3, 4, 5, 6, 7, 8}}}) {
      unsigned int bucket;
      of17.GetAssocAt(guid, bucket);
      EXPECT_EQ(row[1], bucket);
      of1000.GetAssocAt(guid, bucket);
      EXPECT_EQ(row[2], bucket);
    }
  }
}

TEST(PtrFromGuidMap, EveryBitTellsKeysApart) {
  TPtrFromGuidMap map;
  map[kGuid] = Element(1);
  for (size_t byte = 0; byte < sizeof(_GUID); ++byte) {
    for (int bit = 0; bit < 8; ++bit) {
      SCOPED_TRACE(testing::Message() << "byte " << byte << ", bit " << bit);
      void* value = nullptr;
      EXPECT_FALSE(map.Lookup(Changed(byte, bit), value));
      map[Changed(byte, bit)] = Element(100 + byte * 8 + static_cast<size_t>(bit));
    }
  }
  EXPECT_EQ(129, map.GetCount());
  EXPECT_EQ(Element(1), map[kGuid]);
  EXPECT_EQ(Element(100 + 5 * 8 + 3), map[Changed(5, 3)]);
}

TEST(PtrFromGuidMap, KeysThatDifferBehindTheFirstWordShareABucket) {
  TPtrFromGuidMap map;
  for (size_t byte = 4; byte < sizeof(_GUID); ++byte) {
    map[Changed(byte, 0)] = Element(byte);
  }
  unsigned int bucket;
  TPtrFromGuidMap::SAssoc* assoc = map.GetAssocAt(Changed(15, 0), bucket);
  for (size_t byte = sizeof(_GUID); byte-- > 4; assoc = assoc->next) {
    ASSERT_NE(nullptr, assoc);
    EXPECT_EQ(Element(byte), assoc->value);
    EXPECT_EQ(kGuid.data1, assoc->key.data1);
  }
  EXPECT_EQ(nullptr, assoc);
}

TEST(PtrFromGuidMap, KeysAreGivenWhole) {
  TPtrFromGuidMap map;
  map[kGuid] = Element(7);
  KEST::__POSITION* at = map.GetStartPosition();
  _GUID key = {};
  void* value = nullptr;
  map.GetNextAssoc(at, key, value);
  EXPECT_EQ(0, memcmp(&kGuid, &key, sizeof(key)));
  EXPECT_EQ(Element(7), value);
  EXPECT_EQ(nullptr, at);
}

TEST(PtrFromGuidMap, AKeyMayLieInTheMapItself) {
  TPtrFromGuidMap map;
  map[kGuid] = Element(1);
  map[Changed(9, 2)] = Element(2);
  unsigned int bucket;
  const TPtrFromGuidMap::SAssoc* assoc = map.GetAssocAt(kGuid, bucket);
  EXPECT_EQ(Element(1), map[assoc->key]);
  EXPECT_TRUE(map.RemoveKey(assoc->key));
  assoc = map.GetAssocAt(Changed(9, 2), bucket);
  EXPECT_TRUE(map.RemoveKey(assoc->key)) << "the last one";
  EXPECT_TRUE(map.IsEmpty());
}

}  // namespace
