// The steps that the three maps are taken through, against buckets of plain entries.

#ifndef KEST_TESTS_FUZZ_MAP_STEPS_H
#define KEST_TESTS_FUZZ_MAP_STEPS_H

#include <map>
#include <utility>

#include "collections/element.h"
#include "fuzz/steps.h"
#include "kest/collections.h"

namespace kest_fuzz {

// TTraits has Map; Key, the model's; TakeKey(in); Hash(key); Argument, as the map takes a key, from
// Given(key) or, the map's own, from Own(assoc); Out, what iteration writes to, and IsKey(out, key,
// refused); kOwnsKeys, whether a key has memory of its own.
template <typename TTraits>
class MapSteps {
 public:
  using Key = typename TTraits::Key;

  MapSteps(StepInput& in, Memory& all) : memory(all), blockSize(in.Number(6)), map(blockSize) {}

  void Step(int step, StepInput& in) {
    const Key key = TTraits::TakeKey(in);
    void* const value = kest_test::Element(in.Byte());
    void** const place = Find(key);
    typename TTraits::Argument argument = Given(key, step / 9 % 2 != 0);
    switch (step % 9) {
      case 0: {
        const bool set = map.SetAt(argument, value);
        FUZZ_CHECK(set || place == nullptr);
        if (place != nullptr) *place = value;
        if (place == nullptr) Inserted(key, value, set);
        break;
      }
      case 1: {
        const int before = map.GetCount();
        void*& reference = map[argument];
        FUZZ_CHECK(reference == (place != nullptr ? *place : nullptr));
        if (place == nullptr) Inserted(key, value, map.GetCount() > before);
        if (place != nullptr) *place = value;
        reference = value;
        break;
      }
      case 2: {
        void* found = nullptr;
        FUZZ_CHECK(map.Lookup(argument, found) == (place != nullptr));
        FUZZ_CHECK(found == (place != nullptr ? *place : nullptr));
        break;
      }
      case 3:
        FUZZ_CHECK(map.RemoveKey(argument) == (place != nullptr));
        if (place != nullptr) Remove(key);
        break;
      case 4:
        map.RemoveAll();
        buckets.clear();
        count = 0;
        FUZZ_CHECK(memory.Live() == 0);
        break;
      case 5: {
        unsigned int bucket = ~0u;
        const auto* assoc = map.GetAssocAt(argument, bucket);
        FUZZ_CHECK(bucket == TTraits::Hash(key) % tableSize);
        FUZZ_CHECK((assoc != nullptr) == (place != nullptr));
        FUZZ_CHECK(assoc == nullptr || assoc->value == *place);
        break;
      }
      case 6:
        NewAssoc();
        break;
      case 7:
        InitHashTable(static_cast<unsigned int>(in.Number(40)), in.Bool());
        break;
      default:
        Walk();
    }
    FUZZ_CHECK(map.GetCount() == count);
    FUZZ_CHECK(map.IsEmpty() == (count == 0));
    FUZZ_CHECK(map.GetHashTableSize() == tableSize);
  }

 private:
  using Entries = std::vector<std::pair<Key, void*>>;  // of a bucket, the newest first

  static constexpr int kMostOfABlock = 100;          // larger blocks find no memory,
  static constexpr unsigned int kMostBuckets = 100;  // nor do more buckets

  // The key, in the map's own memory if it is there and that is asked for.
  typename TTraits::Argument Given(const Key& key, bool own) const {
    unsigned int bucket;
    const auto* assoc = own ? map.GetAssocAt(TTraits::Given(key), bucket) : nullptr;
    return assoc != nullptr ? TTraits::Own(*assoc) : TTraits::Given(key);
  }

  Entries& BucketOf(const Key& key) { return buckets[TTraits::Hash(key) % tableSize]; }

  // The place of the key's value, or null.
  void** Find(const Key& key) {
    for (auto& entry : BucketOf(key)) {
      if (entry.first == key) return &entry.second;
    }
    return nullptr;
  }

  void Inserted(const Key& key, void* value, bool inserted) {
    if (!inserted) return FailedForWantOfMemory();
    FUZZ_CHECK(!memory.Refused());
    Entries& bucket = BucketOf(key);
    bucket.insert(bucket.begin(), {key, value});
    ++count;
  }
  void FailedForWantOfMemory() const {
    FUZZ_CHECK(memory.Refused() || blockSize > kMostOfABlock || tableSize > kMostBuckets);
  }

  void Remove(const Key& key) {
    Entries& bucket = BucketOf(key);
    bucket.erase(std::find_if(bucket.begin(), bucket.end(),
                              [&](const auto& entry) { return entry.first == key; }));
    // A map without entries holds no memory.
    if (--count == 0) FUZZ_CHECK(memory.Live() == 0);
  }

  void NewAssoc() {
    auto* assoc = map.NewAssoc();
    if (assoc == nullptr) return FailedForWantOfMemory();
    FUZZ_CHECK(map.GetCount() == count + 1 && assoc->value == nullptr);
    map.FreeAssoc(assoc);
    if (count == 0) FUZZ_CHECK(memory.Live() == 0);
  }

  // Entries that the map holds are counted and found no more; their keys' memory would be lost.
  void InitHashTable(unsigned int size, bool allocNow) {
    if (TTraits::kOwnsKeys && count != 0) return;
    map.InitHashTable(size, allocNow);
    if (size == 0) return;
    tableSize = size;
    buckets.clear();
  }

  // By bucket, which is the order of the model too.
  void Walk() {
    KEST::__POSITION* position = map.GetStartPosition();
    FUZZ_CHECK((position == nullptr) == (count == 0));
    typename TTraits::Out key{};
    void* value = &key;
    bool first = true;
    for (const auto& bucket : buckets) {
      for (const auto& entry : bucket.second) {
        FUZZ_CHECK(position != nullptr);
        map.GetNextAssoc(position, key, value);
        FUZZ_CHECK(TTraits::IsKey(key, entry.first, memory.Refused()));
        FUZZ_CHECK(value == entry.second);
        first = false;
      }
    }
    // Of entries in no bucket, the start is all there is.
    if (first) map.GetNextAssoc(position, key, value);
    FUZZ_CHECK(position == nullptr && (!first || value == &key));
  }

  Memory& memory;
  const int blockSize;
  typename TTraits::Map map;
  std::map<unsigned int, Entries> buckets;
  unsigned int tableSize = 17;
  int count = 0;
};

}  // namespace kest_fuzz

#endif  // KEST_TESTS_FUZZ_MAP_STEPS_H
