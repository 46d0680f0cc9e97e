#include <limits.h>
#include <stdint.h>
#include <string.h>

#include <new>

#include "collections/hash_map.h"
#include "collections/node_pool.h"
#include "collections/text_hash.h"
#include "cpu/dispatch.h"
#include "frame/layout.h"
#include "kest/collections.h"

namespace {

constexpr KEST::SVersions<KEST::TextHash(const unsigned short*)> kHashText = {KEST::HashTextPlain,
                                                                              KEST::HashTextSse2};
constexpr KEST::TDispatch<kHashText> HashText;

// A key with what one walk over it tells.
struct SText {
  const unsigned short* units;
  unsigned int hash;
  unsigned int length;
};

SText TextOf(const unsigned short* key) {
  if (key == nullptr) return {nullptr, 0, 0};
  const KEST::TextHash hash = HashText(key);
  return {key, KEST::HashOf(hash), KEST::LengthOf(hash)};
}

// The two things that a comparison looks at, without calls through the linkage table: a TBstr
// begins with its BSTR, and before that is the length in bytes.
const unsigned short* UnitsOf(const KEST::TBstr& text) {
  return *reinterpret_cast<const unsigned short* const*>(&text);
}
unsigned int CountedLength(const unsigned short* bstr) {
  if (bstr == nullptr) return 0;
  unsigned int bytes;
  memcpy(&bytes, reinterpret_cast<const char*>(bstr) - sizeof(bytes), sizeof(bytes));
  return bytes / 2;
}

struct SBstrKey {
  using SAssoc = KEST::TPtrFromBstrMap::SAssoc;
  using TKey = SText;

  static unsigned int Hash(TKey key) { return key.hash; }
  // Compare() == 0: a client may have put any text there, one with zero units too.
  static bool Equals(const SAssoc& assoc, TKey key) {
    const unsigned short* stored = UnitsOf(assoc.key);
    const unsigned int length = CountedLength(stored);
    if (stored == nullptr || key.units == nullptr) return length == key.length;
    return length >= key.length &&
           memcmp(stored, key.units, (key.length + size_t{1}) * sizeof(unsigned short)) == 0;
  }
  static unsigned int BucketOf(const SAssoc& assoc, unsigned int) { return assoc.bucket; }
  static bool StoreKey(SAssoc& assoc, TKey key, unsigned int bucket) {
    assoc.bucket = bucket;
    return key.length <= INT_MAX && assoc.key.InternalInit(key.units, static_cast<int>(key.length));
  }
};

// Keys live in the raw memory of the blocks: made and destroyed in place.
void DestroyKeys(SBstrKey::SAssoc* const* table, unsigned int tableSize) {
  if (table == nullptr) return;
  for (unsigned int i = 0; i < tableSize; ++i) {
    for (auto* assoc = table[i]; assoc != nullptr; assoc = assoc->next) assoc->key.~TBstr();
  }
}

}  // namespace

namespace KEST {

KEST_SIZE_IS(TPtrFromBstrMap::SAssoc, 20, 40);
KEST_FIELD_AT(TPtrFromBstrMap::SAssoc, next, 0, 0);
KEST_FIELD_AT(TPtrFromBstrMap::SAssoc, bucket, 4, 8);
KEST_FIELD_AT(TPtrFromBstrMap::SAssoc, key, 8, 16);
KEST_FIELD_AT(TPtrFromBstrMap::SAssoc, value, 16, 32);
KEST_SIZE_IS(TPtrFromBstrMap, 24, 40);

TPtrFromBstrMap::TPtrFromBstrMap(int assocsPerBlock)
    : hashTable(nullptr),
      hashTableSize(kDefaultHashTableSize),
      count(0),
      freeList(nullptr),
      blocks(nullptr),
      blockSize(assocsPerBlock) {
  KEST_FIELD_AT(TPtrFromBstrMap, hashTable, 0, 0);
  KEST_FIELD_AT(TPtrFromBstrMap, hashTableSize, 4, 8);
  KEST_FIELD_AT(TPtrFromBstrMap, count, 8, 12);
  KEST_FIELD_AT(TPtrFromBstrMap, freeList, 12, 16);
  KEST_FIELD_AT(TPtrFromBstrMap, blocks, 16, 24);
  KEST_FIELD_AT(TPtrFromBstrMap, blockSize, 20, 32);
}

TPtrFromBstrMap::~TPtrFromBstrMap() { RemoveAll(); }

void TPtrFromBstrMap::InitHashTable(unsigned int size, bool allocNow) {
  ReplaceHashTable(hashTable, hashTableSize, size, allocNow);
}

bool TPtrFromBstrMap::Lookup(const unsigned short* key, void*& value) const {
  return LookUpValue<SBstrKey>(hashTable, hashTableSize, TextOf(key), value);
}

void*& TPtrFromBstrMap::operator[](const unsigned short* key) {
  return ValueOf<SBstrKey>(*this, hashTable, TextOf(key));
}

bool TPtrFromBstrMap::SetAt(const unsigned short* key, void* value) {
  return SetValue<SBstrKey>(*this, hashTable, TextOf(key), value);
}

bool TPtrFromBstrMap::RemoveKey(const unsigned short* key) {
  return RemoveAssoc<SBstrKey>(*this, hashTable, TextOf(key));
}

void TPtrFromBstrMap::RemoveAll() {
  DestroyKeys(hashTable, hashTableSize);
  KestMemFree(hashTable);
  hashTable = nullptr;
  count = 0;
  FreeNodes(freeList, blocks);
}

void TPtrFromBstrMap::GetNextAssoc(__POSITION*& position, TBstr& key, void*& value) const {
  NextAssoc<SBstrKey>(hashTable, hashTableSize, position, key, value);
}

TPtrFromBstrMap::SAssoc* TPtrFromBstrMap::GetAssocAt(const unsigned short* key,
                                                     unsigned int& bucket) const {
  const SText text = TextOf(key);
  bucket = BucketOfKey<SBstrKey>(text, hashTableSize);
  return FindAssoc<SBstrKey>(hashTable, bucket, text);
}

TPtrFromBstrMap::SAssoc* TPtrFromBstrMap::NewAssoc() {
  SAssoc* assoc = TakeNode(freeList, blocks, blockSize, count);
  if (assoc == nullptr) return nullptr;
  assoc->next = nullptr;
  assoc->bucket = 0;
  ::new (&assoc->key) TBstr;
  assoc->value = nullptr;
  ++count;
  return assoc;
}

void TPtrFromBstrMap::FreeAssoc(SAssoc* assoc) {
  assoc->key.~TBstr();
  ReturnNode(freeList, assoc);
  // An emptied map holds no memory, on purpose; the next insertion makes a new table.
  if (--count == 0) RemoveAll();
}

}  // namespace KEST
