#include <limits.h>
#include <stdint.h>

#include <new>

#include "collections/hash_map.h"
#include "collections/node_pool.h"
#include "frame/layout.h"
#include "kest/collections.h"

namespace {

struct SBstrKey {
  using SAssoc = KEST::TPtrFromBstrMap::SAssoc;
  using TKey = const unsigned short*;

  static unsigned int Hash(TKey key) {
    unsigned int hash = 0;
    if (key == nullptr) return hash;
    for (; *key != 0; ++key) hash = hash * 33 + *key;
    return hash;
  }
  static bool Equals(const SAssoc& assoc, TKey key) { return assoc.key.Compare(key) == 0; }
  static unsigned int BucketOf(const SAssoc& assoc, unsigned int) { return assoc.bucket; }
  static bool StoreKey(SAssoc& assoc, TKey key, unsigned int bucket) {
    assoc.bucket = bucket;
    if (key == nullptr) return true;
    const unsigned int length = KEST::ucslen(key);
    return length <= INT_MAX && assoc.key.InternalInit(key, static_cast<int>(length));
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
  return LookUpValue<SBstrKey>(*this, key, value);
}

void*& TPtrFromBstrMap::operator[](const unsigned short* key) {
  return ValueOf<SBstrKey>(*this, hashTable, key);
}

bool TPtrFromBstrMap::SetAt(const unsigned short* key, void* value) {
  return SetValue<SBstrKey>(*this, hashTable, key, value);
}

bool TPtrFromBstrMap::RemoveKey(const unsigned short* key) {
  return RemoveAssoc<SBstrKey>(*this, hashTable, key);
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
  return FindAssoc<SBstrKey>(hashTable, hashTableSize, key, bucket);
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
