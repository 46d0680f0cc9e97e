#include <stdint.h>
#include <string.h>

#include "collections/hash_map.h"
#include "collections/node_pool.h"
#include "frame/layout.h"
#include "kest/collections.h"

namespace {

struct SGuidKey {
  using SAssoc = KEST::TPtrFromGuidMap::SAssoc;
  using TKey = const KEST::_GUID&;

  // The first 32 bits alone.
  static unsigned int Hash(TKey key) { return key.data1; }
  static bool Equals(const SAssoc& assoc, TKey key) {
    return memcmp(&assoc.key, &key, sizeof(key)) == 0;
  }
  static unsigned int BucketOf(const SAssoc& assoc, unsigned int tableSize) {
    return Hash(assoc.key) % tableSize;
  }
  static bool StoreKey(SAssoc& assoc, TKey key, unsigned int) {
    assoc.key = key;
    return true;
  }
};

}  // namespace

namespace KEST {

KEST_SIZE_IS(_GUID, 16, 16);
KEST_FIELD_AT(_GUID, data1, 0, 0);
KEST_FIELD_AT(_GUID, data2, 4, 4);
KEST_FIELD_AT(_GUID, data3, 6, 6);
KEST_FIELD_AT(_GUID, data4, 8, 8);
KEST_SIZE_IS(TPtrFromGuidMap::SAssoc, 24, 32);
KEST_FIELD_AT(TPtrFromGuidMap::SAssoc, next, 0, 0);
KEST_FIELD_AT(TPtrFromGuidMap::SAssoc, key, 4, 8);
KEST_FIELD_AT(TPtrFromGuidMap::SAssoc, value, 20, 24);
KEST_SIZE_IS(TPtrFromGuidMap, 24, 40);

TPtrFromGuidMap::TPtrFromGuidMap(int assocsPerBlock)
    : hashTable(nullptr),
      hashTableSize(kDefaultHashTableSize),
      count(0),
      freeList(nullptr),
      blocks(nullptr),
      blockSize(assocsPerBlock) {
  KEST_FIELD_AT(TPtrFromGuidMap, hashTable, 0, 0);
  KEST_FIELD_AT(TPtrFromGuidMap, hashTableSize, 4, 8);
  KEST_FIELD_AT(TPtrFromGuidMap, count, 8, 12);
  KEST_FIELD_AT(TPtrFromGuidMap, freeList, 12, 16);
  KEST_FIELD_AT(TPtrFromGuidMap, blocks, 16, 24);
  KEST_FIELD_AT(TPtrFromGuidMap, blockSize, 20, 32);
}

TPtrFromGuidMap::~TPtrFromGuidMap() { RemoveAll(); }

void TPtrFromGuidMap::InitHashTable(unsigned int size, bool allocNow) {
  ReplaceHashTable(hashTable, hashTableSize, size, allocNow);
}

bool TPtrFromGuidMap::Lookup(const _GUID& key, void*& value) const {
  return LookUpValue<SGuidKey>(hashTable, hashTableSize, key, value);
}

void*& TPtrFromGuidMap::operator[](const _GUID& key) {
  return ValueOf<SGuidKey>(*this, hashTable, key);
}

bool TPtrFromGuidMap::SetAt(const _GUID& key, void* value) {
  return SetValue<SGuidKey>(*this, hashTable, key, value);
}

bool TPtrFromGuidMap::RemoveKey(const _GUID& key) {
  return RemoveAssoc<SGuidKey>(*this, hashTable, key);
}

void TPtrFromGuidMap::RemoveAll() {
  KestMemFree(hashTable);
  hashTable = nullptr;
  count = 0;
  FreeNodes(freeList, blocks);
}

void TPtrFromGuidMap::GetNextAssoc(__POSITION*& position, _GUID& key, void*& value) const {
  NextAssoc<SGuidKey>(hashTable, hashTableSize, position, key, value);
}

TPtrFromGuidMap::SAssoc* TPtrFromGuidMap::GetAssocAt(const _GUID& key, unsigned int& bucket) const {
  bucket = BucketOfKey<SGuidKey>(key, hashTableSize);
  return FindAssoc<SGuidKey>(hashTable, bucket, key);
}

TPtrFromGuidMap::SAssoc* TPtrFromGuidMap::NewAssoc() {
  SAssoc* assoc = TakeNode(freeList, blocks, blockSize, count);
  if (assoc == nullptr) return nullptr;
  assoc->next = nullptr;
  assoc->key = {};
  assoc->value = nullptr;
  ++count;
  return assoc;
}

void TPtrFromGuidMap::FreeAssoc(SAssoc* assoc) {
  ReturnNode(freeList, assoc);
  // An emptied map holds no memory, on purpose; the next insertion makes a new table.
  if (--count == 0) RemoveAll();
}

}  // namespace KEST
