#include <stdint.h>

#include "collections/hash_map.h"
#include "collections/node_pool.h"
#include "frame/layout.h"
#include "kest/collections.h"

namespace {

struct SPtrKey {
  using SAssoc = KEST::TPtrFromPtrMap::SAssoc;
  using TKey = void*;

  // The low 32 bits of the address, without a shift.
  static unsigned int Hash(const void* key) {
    return static_cast<unsigned int>(reinterpret_cast<uintptr_t>(key));
  }
  static bool Equals(const SAssoc& assoc, const void* key) { return assoc.key == key; }
  static unsigned int BucketOf(const SAssoc& assoc, unsigned int tableSize) {
    return Hash(assoc.key) % tableSize;
  }
  static bool StoreKey(SAssoc& assoc, void* key, unsigned int) {
    assoc.key = key;
    return true;
  }
};

}  // namespace

namespace KEST {

KEST_SIZE_IS(TPtrFromPtrMap::SAssoc, 12, 24);
KEST_FIELD_AT(TPtrFromPtrMap::SAssoc, next, 0, 0);
KEST_FIELD_AT(TPtrFromPtrMap::SAssoc, key, 4, 8);
KEST_FIELD_AT(TPtrFromPtrMap::SAssoc, value, 8, 16);
KEST_SIZE_IS(TPtrFromPtrMap, 24, 40);

TPtrFromPtrMap::TPtrFromPtrMap(int assocsPerBlock)
    : hashTable(nullptr),
      hashTableSize(kDefaultHashTableSize),
      count(0),
      freeList(nullptr),
      blocks(nullptr),
      blockSize(assocsPerBlock) {
  KEST_FIELD_AT(TPtrFromPtrMap, hashTable, 0, 0);
  KEST_FIELD_AT(TPtrFromPtrMap, hashTableSize, 4, 8);
  KEST_FIELD_AT(TPtrFromPtrMap, count, 8, 12);
  KEST_FIELD_AT(TPtrFromPtrMap, freeList, 12, 16);
  KEST_FIELD_AT(TPtrFromPtrMap, blocks, 16, 24);
  KEST_FIELD_AT(TPtrFromPtrMap, blockSize, 20, 32);
}

TPtrFromPtrMap::~TPtrFromPtrMap() { RemoveAll(); }

void TPtrFromPtrMap::InitHashTable(unsigned int size, bool allocNow) {
  ReplaceHashTable(hashTable, hashTableSize, size, allocNow);
}

bool TPtrFromPtrMap::Lookup(void* key, void*& value) const {
  return LookUpValue<SPtrKey>(hashTable, hashTableSize, key, value);
}

void*& TPtrFromPtrMap::operator[](void* key) { return ValueOf<SPtrKey>(*this, hashTable, key); }

bool TPtrFromPtrMap::SetAt(void* key, void* value) {
  return SetValue<SPtrKey>(*this, hashTable, key, value);
}

bool TPtrFromPtrMap::RemoveKey(void* key) { return RemoveAssoc<SPtrKey>(*this, hashTable, key); }

void TPtrFromPtrMap::RemoveAll() {
  KestMemFree(hashTable);
  hashTable = nullptr;
  count = 0;
  FreeNodes(freeList, blocks);
}

void TPtrFromPtrMap::GetNextAssoc(__POSITION*& position, void*& key, void*& value) const {
  NextAssoc<SPtrKey>(hashTable, hashTableSize, position, key, value);
}

TPtrFromPtrMap::SAssoc* TPtrFromPtrMap::GetAssocAt(void* key, unsigned int& bucket) const {
  bucket = BucketOfKey<SPtrKey>(key, hashTableSize);
  return FindAssoc<SPtrKey>(hashTable, bucket, key);
}

TPtrFromPtrMap::SAssoc* TPtrFromPtrMap::NewAssoc() {
  SAssoc* assoc = TakeNode(freeList, blocks, blockSize, count);
  if (assoc == nullptr) return nullptr;
  assoc->next = nullptr;
  assoc->key = nullptr;
  assoc->value = nullptr;
  ++count;
  return assoc;
}

void TPtrFromPtrMap::FreeAssoc(SAssoc* assoc) {
  ReturnNode(freeList, assoc);
  // An emptied map holds no memory, on purpose; the next insertion makes a new table.
  if (--count == 0) RemoveAll();
}

}  // namespace KEST
