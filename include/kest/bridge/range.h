// begin and end of the containers, for range-for and the standard algorithms.
//
//   for (void* element : list) ...                        // TPtrArray, TPtrList
//   for (auto [key, value] : map) value = Changed(key);   // the maps; value is the entry's own
//   std::sort(begin(array), end(array));                  // found by the argument's type
//
//   Elements   An array or list gives void*&, a const one void* const&. A map gives a record of two
//              references, SMapEntry; its keys are never to be changed.
//   Category   TPtrArray: pointers, random access. TPtrList: bidirectional. The maps: each
//              element is made when it is asked for, which makes an input iterator for the
//              algorithms before C++20; it may be copied and gone over again, as C++20's forward
//              iterators.
//   Order      That of the members: by index, from head to tail, by bucket and then newest first.
//   Validity   An array's until its size or capacity changes; a list's or a map's until their
//   element
//              is removed or, for a map, the buckets are made anew. An iterator that has been moved
//              past the element on before its removal stays valid.
//   Failure    Nothing here takes memory or fails.
//   Threads    As the container: one thread at a time.
//
// TFifoBuffer has no elements to look at, only bytes to take out with Read, and no range.
//
//   Example    examples/event_loop/event_loop.cpp

#ifndef KEST_BRIDGE_RANGE_H
#define KEST_BRIDGE_RANGE_H

#include <stddef.h>

#include <iterator>
#include <type_traits>

#include "kest/collections.h"

namespace KEST {

// ---- TPtrArray

// Pointers to the first element and behind the last; null and null while there is no storage.
inline void** begin(TPtrArray& array) { return array.GetData(); }
inline void** end(TPtrArray& array) { return array.GetData() + array.GetSize(); }
// GetData is no const member, but it changes nothing.
inline void* const* begin(const TPtrArray& array) {
  return const_cast<TPtrArray&>(array).GetData();
}
inline void* const* end(const TPtrArray& array) { return begin(array) + array.GetSize(); }

inline std::reverse_iterator<void**> rbegin(TPtrArray& array) {
  return std::make_reverse_iterator(end(array));
}
inline std::reverse_iterator<void**> rend(TPtrArray& array) {
  return std::make_reverse_iterator(begin(array));
}
inline std::reverse_iterator<void* const*> rbegin(const TPtrArray& array) {
  return std::make_reverse_iterator(end(array));
}
inline std::reverse_iterator<void* const*> rend(const TPtrArray& array) {
  return std::make_reverse_iterator(begin(array));
}

// ---- TPtrList

// An element of a list. kConst: one that is not to be changed. A default one compares with its like
// alone.
template <bool kConst>
class TListIterator {
 public:
  using iterator_category = std::bidirectional_iterator_tag;
  using value_type = void*;
  using difference_type = ptrdiff_t;
  using reference = std::conditional_t<kConst, void* const&, void*&>;
  using pointer = std::conditional_t<kConst, void* const*, void**>;

  TListIterator() = default;
  // The element at position; behind the last one for null.
  TListIterator(std::conditional_t<kConst, const TPtrList, TPtrList>& ownList, __POSITION* at)
      : list(const_cast<TPtrList*>(&ownList)), position(at) {}
  // From one that changes elements to one that does not, never back.
  template <bool kOther, std::enable_if_t<kConst && !kOther, int> = 0>
  TListIterator(const TListIterator<kOther>& other) : list(other.list), position(other.position) {}

  reference operator*() const { return list->GetAt(position); }
  pointer operator->() const { return &list->GetAt(position); }
  TListIterator& operator++() {
    list->GetNext(position);
    return *this;
  }
  TListIterator operator++(int) {
    TListIterator before(*this);
    ++*this;
    return before;
  }
  TListIterator& operator--() {
    if (position == nullptr) {
      position = list->GetTailPosition();
    } else {
      list->GetPrev(position);
    }
    return *this;
  }
  TListIterator operator--(int) {
    TListIterator before(*this);
    --*this;
    return before;
  }

  // For the members of the list that take one; null behind the last element.
  __POSITION* GetPosition() const { return position; }

  friend bool operator==(const TListIterator& a, const TListIterator& b) {
    return a.position == b.position;
  }
  friend bool operator!=(const TListIterator& a, const TListIterator& b) {
    return a.position != b.position;
  }

 private:
  template <bool>
  friend class TListIterator;

  // Of a const list too: then operator* gives a reference to const.
  TPtrList* list = nullptr;
  __POSITION* position = nullptr;
};

inline TListIterator<false> begin(TPtrList& list) { return {list, list.GetHeadPosition()}; }
inline TListIterator<false> end(TPtrList& list) { return {list, nullptr}; }
inline TListIterator<true> begin(const TPtrList& list) { return {list, list.GetHeadPosition()}; }
inline TListIterator<true> end(const TPtrList& list) { return {list, nullptr}; }

inline std::reverse_iterator<TListIterator<false>> rbegin(TPtrList& list) {
  return std::make_reverse_iterator(end(list));
}
inline std::reverse_iterator<TListIterator<false>> rend(TPtrList& list) {
  return std::make_reverse_iterator(begin(list));
}
inline std::reverse_iterator<TListIterator<true>> rbegin(const TPtrList& list) {
  return std::make_reverse_iterator(end(list));
}
inline std::reverse_iterator<TListIterator<true>> rend(const TPtrList& list) {
  return std::make_reverse_iterator(begin(list));
}

// ---- The maps

// What a map gives for an entry: the key, and the value, which can be set in a map that is not
// const. A copy refers to the same entry.
template <typename TKey, typename TValue>
struct SMapEntry {
  const TKey& key;
  TValue& value;
};

// An entry of a map. kConst: one whose value is not to be changed.
template <typename TMap, bool kConst>
class TMapIterator {
  using SAssoc = typename TMap::SAssoc;
  using TValue = std::conditional_t<kConst, void* const, void*>;

 public:
#if __cplusplus > 201703L
  using iterator_concept = std::forward_iterator_tag;
#endif
  using iterator_category = std::input_iterator_tag;
  using value_type = SMapEntry<decltype(SAssoc::key), TValue>;
  using difference_type = ptrdiff_t;
  using reference = value_type;
  // Carries the record for operator->.
  class pointer {
   public:
    explicit pointer(const value_type& ownEntry) : entry(ownEntry) {}
    const value_type* operator->() const { return &entry; }

   private:
    value_type entry;
  };

  TMapIterator() = default;
  template <bool kOther, std::enable_if_t<kConst && !kOther, int> = 0>
  TMapIterator(const TMapIterator<TMap, kOther>& other)
      : bucket(other.bucket), tableEnd(other.tableEnd), assoc(other.assoc) {}

  // The first entry of a map.
  static TMapIterator First(const TMap& map) {
    // The buckets are the map's first field, and a pointer to an object of standard layout is one
    // to its first field. GetNextAssoc gives the same entries, but copies each key.
    static_assert(std::is_standard_layout_v<TMap>);
    TMapIterator first;
    first.bucket = *reinterpret_cast<SAssoc* const* const*>(&map);
    if (first.bucket == nullptr) return first;
    first.tableEnd = first.bucket + map.GetHashTableSize();
    first.assoc = *first.bucket;
    first.SkipEmptyBuckets();
    return first;
  }

  reference operator*() const { return {assoc->key, assoc->value}; }
  pointer operator->() const { return pointer(**this); }
  TMapIterator& operator++() {
    assoc = assoc->next;
    SkipEmptyBuckets();
    return *this;
  }
  TMapIterator operator++(int) {
    TMapIterator before(*this);
    ++*this;
    return before;
  }

  friend bool operator==(const TMapIterator& a, const TMapIterator& b) {
    return a.assoc == b.assoc;
  }
  friend bool operator!=(const TMapIterator& a, const TMapIterator& b) {
    return a.assoc != b.assoc;
  }

 private:
  template <typename, bool>
  friend class TMapIterator;

  void SkipEmptyBuckets() {
    while (assoc == nullptr && ++bucket != tableEnd) assoc = *bucket;
  }

  SAssoc* const* bucket = nullptr;
  SAssoc* const* tableEnd = nullptr;
  SAssoc* assoc = nullptr;  // null behind the last entry
};

inline TMapIterator<TPtrFromPtrMap, false> begin(TPtrFromPtrMap& map) {
  return TMapIterator<TPtrFromPtrMap, false>::First(map);
}
inline TMapIterator<TPtrFromPtrMap, false> end(TPtrFromPtrMap&) { return {}; }
inline TMapIterator<TPtrFromPtrMap, true> begin(const TPtrFromPtrMap& map) {
  return TMapIterator<TPtrFromPtrMap, true>::First(map);
}
inline TMapIterator<TPtrFromPtrMap, true> end(const TPtrFromPtrMap&) { return {}; }

inline TMapIterator<TPtrFromBstrMap, false> begin(TPtrFromBstrMap& map) {
  return TMapIterator<TPtrFromBstrMap, false>::First(map);
}
inline TMapIterator<TPtrFromBstrMap, false> end(TPtrFromBstrMap&) { return {}; }
inline TMapIterator<TPtrFromBstrMap, true> begin(const TPtrFromBstrMap& map) {
  return TMapIterator<TPtrFromBstrMap, true>::First(map);
}
inline TMapIterator<TPtrFromBstrMap, true> end(const TPtrFromBstrMap&) { return {}; }

inline TMapIterator<TPtrFromGuidMap, false> begin(TPtrFromGuidMap& map) {
  return TMapIterator<TPtrFromGuidMap, false>::First(map);
}
inline TMapIterator<TPtrFromGuidMap, false> end(TPtrFromGuidMap&) { return {}; }
inline TMapIterator<TPtrFromGuidMap, true> begin(const TPtrFromGuidMap& map) {
  return TMapIterator<TPtrFromGuidMap, true>::First(map);
}
inline TMapIterator<TPtrFromGuidMap, true> end(const TPtrFromGuidMap&) { return {}; }

}  // namespace KEST

#endif  // KEST_BRIDGE_RANGE_H
