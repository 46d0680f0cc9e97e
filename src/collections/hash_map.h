// What the three maps share. They are chained hash maps that differ in their key alone, which each
// describes in a traits type:
//
//   SAssoc, TKey                    the association and the type a key is passed as
//   Hash(key)                       the bucket is the hash modulo the number of buckets
//   Equals(assoc, key)
//   BucketOf(assoc, tableSize)      the bucket that an association is in
//   StoreKey(assoc, key, bucket)    fills a new association; false when there is no memory
//
// The functions take the fields that they work on; the maps' members forward to them.

#ifndef KEST_SRC_COLLECTIONS_HASH_MAP_H
#define KEST_SRC_COLLECTIONS_HASH_MAP_H

#include <stdint.h>

#include <algorithm>

#include "frame/object.h"
#include "kest/collections.h"

namespace KEST {

constexpr unsigned int kDefaultHashTableSize = 17;

// The calling thread's stand-in for the value of an association that could not be made; null.
void*& ScratchValue();

template <typename TAssoc>
void ReplaceHashTable(TAssoc**& table, unsigned int& tableSize, unsigned int size, bool allocNow) {
  if (size == 0) return;
  KestMemFree(table);
  table = nullptr;
  tableSize = size;
  if (!allocNow) return;
  table = static_cast<TAssoc**>(AllocateArray(size, sizeof(TAssoc*)));
  if (table != nullptr) std::fill_n(table, size, nullptr);
}

// The link to the key's association: its bucket's head or the next field before it. The null link
// at the chain's end when there is none.
template <typename TTraits>
typename TTraits::SAssoc** FindLink(typename TTraits::SAssoc** table, unsigned int bucket,
                                    typename TTraits::TKey key) {
  auto** link = &table[bucket];
  while (*link != nullptr && !TTraits::Equals(**link, key)) link = &(*link)->next;
  return link;
}

template <typename TTraits>
unsigned int BucketOfKey(typename TTraits::TKey key, unsigned int tableSize) {
  return TTraits::Hash(key) % tableSize;
}

template <typename TTraits>
typename TTraits::SAssoc* FindAssoc(typename TTraits::SAssoc** table, unsigned int bucket,
                                    typename TTraits::TKey key) {
  return table != nullptr ? *FindLink<TTraits>(table, bucket, key) : nullptr;
}

// The table is a reference, to be read after the division: that needs most registers.
template <typename TTraits>
bool LookUpValue(typename TTraits::SAssoc** const& table, unsigned int tableSize,
                 typename TTraits::TKey key, void*& value) {
  const unsigned int bucket = BucketOfKey<TTraits>(key, tableSize);
  if (table == nullptr) return false;
  const auto* assoc = *FindLink<TTraits>(table, bucket, key);
  if (assoc == nullptr) return false;
  value = assoc->value;
  return true;
}

// The key's association, made with a null value when there is none. Null when there is no memory;
// the map then has no new entry.
template <typename TTraits, typename TMap>
typename TTraits::SAssoc* FindOrAddAssoc(TMap& map, typename TTraits::SAssoc**& table,
                                         typename TTraits::TKey key) {
  const unsigned int bucket = BucketOfKey<TTraits>(key, map.GetHashTableSize());
  auto* assoc = FindAssoc<TTraits>(table, bucket, key);
  if (assoc != nullptr) return assoc;
  if (table == nullptr) map.InitHashTable(map.GetHashTableSize(), true);
  if (table == nullptr) return nullptr;
  assoc = map.NewAssoc();
  if (assoc == nullptr) return nullptr;
  if (!TTraits::StoreKey(*assoc, key, bucket)) {
    map.FreeAssoc(assoc);
    return nullptr;
  }
  assoc->next = table[bucket];
  table[bucket] = assoc;
  return assoc;
}

template <typename TTraits, typename TMap>
bool SetValue(TMap& map, typename TTraits::SAssoc**& table, typename TTraits::TKey key,
              void* value) {
  auto* assoc = FindOrAddAssoc<TTraits>(map, table, key);
  if (assoc == nullptr) return false;
  assoc->value = value;
  return true;
}

template <typename TTraits, typename TMap>
void*& ValueOf(TMap& map, typename TTraits::SAssoc**& table, typename TTraits::TKey key) {
  auto* assoc = FindOrAddAssoc<TTraits>(map, table, key);
  return assoc != nullptr ? assoc->value : ScratchValue();
}

template <typename TTraits, typename TMap>
bool RemoveAssoc(TMap& map, typename TTraits::SAssoc** table, typename TTraits::TKey key) {
  if (table == nullptr) return false;
  const unsigned int bucket = BucketOfKey<TTraits>(key, map.GetHashTableSize());
  auto** link = FindLink<TTraits>(table, bucket, key);
  auto* assoc = *link;
  if (assoc == nullptr) return false;
  *link = assoc->next;
  map.FreeAssoc(assoc);
  return true;
}

// The first association in the buckets from the given one on, or null.
template <typename TAssoc>
TAssoc* FirstAssocFrom(TAssoc* const* table, unsigned int tableSize, unsigned int bucket) {
  if (table == nullptr || bucket >= tableSize) return nullptr;
  TAssoc* const* end = table + tableSize;
  TAssoc* const* found =
      std::find_if(table + bucket, end, [](const TAssoc* head) { return head != nullptr; });
  return found != end ? *found : nullptr;
}

template <typename TTraits, typename TKeyResult>
void NextAssoc(typename TTraits::SAssoc* const* table, unsigned int tableSize,
               __POSITION*& position, TKeyResult& key, void*& value) {
  const bool beforeStart = reinterpret_cast<uintptr_t>(position) == UINTPTR_MAX;
  auto* assoc = beforeStart ? FirstAssocFrom(table, tableSize, 0)
                            : reinterpret_cast<typename TTraits::SAssoc*>(position);
  auto* following = assoc;
  if (assoc != nullptr) {
    key = assoc->key;
    value = assoc->value;
    following = assoc->next != nullptr
                    ? assoc->next
                    : FirstAssocFrom(table, tableSize, TTraits::BucketOf(*assoc, tableSize) + 1);
  }
  position = reinterpret_cast<__POSITION*>(following);
}

}  // namespace KEST

#endif  // KEST_SRC_COLLECTIONS_HASH_MAP_H
