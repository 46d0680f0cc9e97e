// kest/collections.h at the edges of its arguments.

#include "collections/element.h"
#include "sweep/argument_text.h"

namespace kest_test {

namespace {

using namespace KEST;

constexpr int kCount = 3;
const Elements kOneToThree = Numbers(kCount);
void* const kNew = Element(0x99);

Elements Of(const TPtrList& list) {
  Elements elements;
  for (__POSITION* at = list.GetHeadPosition(); at != nullptr;)
    elements.push_back(list.GetNext(at));
  return elements;
}

// Whether the sweep's allocator has room for that many pointers.
bool HasRoom(long long count) {
  return count <= static_cast<long long>(kLargestBlock / sizeof(void*));
}

// The bytes of count elements behind a header, where 32 bits hold them.
void ExpectArrayRequested(unsigned long long count, size_t size, size_t header = 0) {
  if (count * size + header <= UINT_MAX) {
    ExpectRequested(count * size + header);
  }
}

// The elements after change has worked on 1, 2, 3.
template <typename Change>
void ExpectArray(Elements expected, Change change) {
  TPtrArray array;
  for (void* element : kOneToThree) array.Add(element);
  change(array);
  EXPECT_EQ(expected.size(), static_cast<size_t>(array.GetSize()));
  // Only the first of a very long array are compared.
  expected.resize(std::min<size_t>(expected.size(), 100));
  Elements elements(array.GetData(), array.GetData() + expected.size());
  EXPECT_EQ(expected, elements);
  array.RemoveAll();
  EXPECT_EQ(0, array.Add(kNew));
}

// The same for a list.
template <typename Change>
void ExpectList(Elements expected, Change change) {
  TPtrList list(2);
  for (void* element : kOneToThree) list.AddTail(element);
  change(list);
  EXPECT_EQ(expected, Of(list));
  list.AddTail(kNew);
  expected.push_back(kNew);
  EXPECT_EQ(expected, Of(list));
}

// The three maps differ in their keys. Each sweep runs with those that are given here.
struct PtrKeys {
  using Map = TPtrFromPtrMap;
  using Key = void*;
  static Key One() { return Element(1); }
};
struct BstrKeys {
  using Map = TPtrFromBstrMap;
  using Key = const unsigned short*;
  // Takes no memory: a map that drops its entries does not free the texts of their keys.
  static Key One() { return KEST_TEXT(""); }
};
struct GuidKeys {
  using Map = TPtrFromGuidMap;
  using Key = _GUID;
  static Key One() { return {1, 2, 3, {4}}; }
};

// The map holds what it is given, which for a text may be null.
template <typename Keys>
void ExpectMapWorks(typename Keys::Map& map, const typename Keys::Key& key, bool hasMemory = true) {
  void* value = nullptr;
  EXPECT_EQ(hasMemory, map.SetAt(key, kNew));
  EXPECT_EQ(hasMemory, map.Lookup(key, value));
  EXPECT_EQ(hasMemory ? kNew : nullptr, value);
  unsigned int bucket;
  EXPECT_EQ(hasMemory, map.GetAssocAt(key, bucket) != nullptr);
  EXPECT_LT(bucket, map.GetHashTableSize());
  EXPECT_EQ(value, map[key]);
  EXPECT_EQ(hasMemory, map.RemoveKey(key));
  EXPECT_FALSE(map.RemoveKey(key));
  EXPECT_EQ(0, map.GetCount());
}

template <typename Keys>
Sweep BlockSizes() {
  return Over(Around(kCount), [](int blockSize) {
    typename Keys::Map map(blockSize);
    // Below 1 counts as 1. A block that does not fit is a failed allocation.
    const unsigned long long nodes = static_cast<unsigned int>(std::max(blockSize, 1));
    const bool fits = nodes * sizeof(typename Keys::Map::SAssoc) <= kLargestBlock;
    auto* assoc = map.NewAssoc();
    EXPECT_EQ(fits, assoc != nullptr);
    ExpectArrayRequested(nodes, sizeof(typename Keys::Map::SAssoc), sizeof(SPlex));
    if (assoc != nullptr) map.FreeAssoc(assoc);
    ExpectMapWorks<Keys>(map, Keys::One(), fits);
  });
}

template <typename Keys>
Sweep TableSizes() {
  return Over(Around(17), [](unsigned int size, bool allocNow, bool filled) {
    typename Keys::Map map;
    if (filled) map.SetAt(Keys::One(), kNew);
    map.InitHashTable(size, allocNow);
    if (size != 0 && allocNow) ExpectArrayRequested(size, sizeof(void*));
    EXPECT_EQ(size != 0 ? size : 17, map.GetHashTableSize());
    // What it held stays counted and is not found again; iteration ends.
    EXPECT_EQ(filled ? 1 : 0, map.GetCount());
    void* value = nullptr;
    EXPECT_EQ(filled && size == 0, map.Lookup(Keys::One(), value));
    __POSITION* position = map.GetStartPosition();
    std::conditional_t<std::is_same_v<Keys, BstrKeys>, TBstr, typename Keys::Key> key = {};
    map.GetNextAssoc(position, key, value);
    EXPECT_EQ(nullptr, position);
    map.RemoveAll();
    ExpectMapWorks<Keys>(map, Keys::One(), HasRoom(size));
    map.InitHashTable(5);
    ExpectMapWorks<Keys>(map, Keys::One());
  });
}

// A null position gives nothing.
template <typename Keys>
Sweep NullPosition() {
  return Over([](bool filled) {
    typename Keys::Map map;
    if (filled) map.SetAt(Keys::One(), kNew);
    __POSITION* position = nullptr;
    std::conditional_t<std::is_same_v<Keys, BstrKeys>, TBstr, typename Keys::Key> key = {};
    void* value = kNew;
    map.GetNextAssoc(position, key, value);
    EXPECT_EQ(nullptr, position);
    EXPECT_EQ(kNew, value);
  });
}

// Any address is a key, null too.
Sweep PtrKey() {
  return Over([](unsigned int address) {
    TPtrFromPtrMap map;
    ExpectMapWorks<PtrKeys>(map, Element(address));
  });
}

Sweep BstrKey() {
  return Over([](bool given) {
    TPtrFromBstrMap map;
    ExpectMapWorks<BstrKeys>(map, Abc(given));
  });
}

// Keys are given by reference, and the value may be any.
Sweep GuidKey() {
  return Over([](unsigned int data1, unsigned int value) {
    TPtrFromGuidMap map;
    const _GUID key = {data1, 0, 0, {}};
    EXPECT_TRUE(map.SetAt(key, Element(value)));
    EXPECT_EQ(Element(value), map[key]);
    ExpectMapWorks<GuidKeys>(map, key);
  });
}

void AddCollectionsRows(Table& table) {
  table.Row("KEST::SPlex::Create(KEST::SPlex*&, unsigned int, unsigned int)", Around(kCount),
            [](bool hasHead, unsigned int count, unsigned int elementSize) {
              SPlex* head = nullptr;
              SPlex* first = hasHead ? SPlex::Create(head, 1, 1) : nullptr;
              const unsigned long long bytes = 1ull * count * elementSize + sizeof(SPlex);
              SPlex* block = SPlex::Create(head, count, elementSize);
              EXPECT_EQ(bytes <= kLargestBlock, block != nullptr);
              ExpectArrayRequested(count, elementSize, sizeof(SPlex));
              EXPECT_EQ(block != nullptr ? block : first, head);
              if (block != nullptr) {
                EXPECT_EQ(first, block->next);
              }
              if (head != nullptr) head->FreeDataChain();
            });
  table.Row(
      "KEST::TPtrArray::SetSize(int, int)", Around(kCount, 4, 5), [](int newSize, int growBy) {
        TPtrArray array;
        for (void* element : kOneToThree) array.Add(element);
        const int capacity = array.GetMaxSize();
        const int step = growBy == -1 || growBy == 0 ? 4 : growBy;
        const long long wanted =
            newSize <= capacity ? capacity : std::max<long long>(newSize, 1ll * capacity + step);
        const bool done = newSize >= 0 && HasRoom(wanted);
        array.SetSize(newSize, growBy);
        if (newSize > capacity)
          ExpectArrayRequested(static_cast<unsigned long long>(wanted), sizeof(void*));
        EXPECT_EQ(done ? newSize : kCount, array.GetSize());
        EXPECT_EQ(!done ? capacity : newSize == 0 ? 0 : wanted, array.GetMaxSize());
        for (int i = 0; i < std::min(array.GetSize(), 100); ++i) {
          EXPECT_EQ(i < kCount ? kOneToThree[static_cast<size_t>(i)] : nullptr, array.GetAt(i));
        }
        array.SetSize(0, 0);
        EXPECT_EQ(0, array.Add(kNew));
      });
  table.Row("KEST::TPtrArray::SetAtGrow(int, void*)", Around(kCount), [](int index, bool given) {
    Elements expected = kOneToThree;
    if (index >= 0 && HasRoom(1ll * index + 1)) {
      expected.resize(std::max(expected.size(), static_cast<size_t>(index) + 1));
      expected[static_cast<size_t>(index)] = given ? kNew : nullptr;
    }
    ExpectArray(expected,
                [=](TPtrArray& array) { array.SetAtGrow(index, given ? kNew : nullptr); });
  });
  table.Row("KEST::TPtrArray::InsertAt(int, void*, int)", Around(kCount), [](int index, int count) {
    Elements expected = kOneToThree;
    if (index >= 0 && count >= 0 && HasRoom(1ll * std::max(index, kCount) + count)) {
      expected.resize(static_cast<size_t>(std::max(index, kCount)));
      expected.insert(expected.begin() + index, static_cast<size_t>(count), kNew);
    }
    ExpectArray(expected, [=](TPtrArray& array) { array.InsertAt(index, kNew, count); });
  });
  table.Row("KEST::TPtrArray::InsertAt(int, KEST::TPtrArray*)", Around(kCount),
            [](int index, bool given, bool itself) {
              Elements expected = kOneToThree;
              if (given && index >= 0 && HasRoom(1ll * std::max(index, kCount) + kCount)) {
                expected.resize(static_cast<size_t>(std::max(index, kCount)));
                expected.insert(expected.begin() + index, kOneToThree.begin(), kOneToThree.end());
              }
              TPtrArray other;
              for (void* element : kOneToThree) other.Add(element);
              ExpectArray(expected, [&](TPtrArray& array) {
                array.InsertAt(index, !given ? nullptr : itself ? &array : &other);
              });
            });
  table.Row("KEST::TPtrArray::RemoveAt(int, int)", Around(kCount), [](int index, int count) {
    Elements expected = kOneToThree;
    if (index >= 0 && index < kCount && count > 0) {
      const auto first = expected.begin() + index;
      expected.erase(first, first + std::min(count, kCount - index));
    }
    ExpectArray(expected, [=](TPtrArray& array) { array.RemoveAt(index, count); });
    TPtrArray empty;
    empty.RemoveAt(index, count);
    EXPECT_TRUE(empty.IsEmpty());
  });
  table.Row("KEST::TPtrList::TPtrList(int)", Around(kCount), [](int blockSize) {
    TPtrList list(blockSize);
    const unsigned long long nodes = static_cast<unsigned int>(std::max(blockSize, 1));
    const bool fits = nodes * sizeof(TPtrList::SNode) <= kLargestBlock;
    EXPECT_EQ(fits, list.AddTail(kNew) != nullptr);
    ExpectArrayRequested(nodes, sizeof(TPtrList::SNode), sizeof(SPlex));
    EXPECT_EQ(fits, list.AddHead(kNew) != nullptr);
    EXPECT_EQ(fits ? 2 : 0, list.GetCount());
    EXPECT_EQ(fits ? kNew : nullptr, list.RemoveHead());
  });
  table.Row("KEST::TPtrList::AddHead(void*)", [](unsigned int element) {
    ExpectList(Elements{Element(element), kOneToThree[0], kOneToThree[1], kOneToThree[2]},
               [=](TPtrList& list) { list.AddHead(Element(element)); });
  });
  table.Row("KEST::TPtrList::AddTail(void*)", [](unsigned int element) {
    ExpectList(Elements{kOneToThree[0], kOneToThree[1], kOneToThree[2], Element(element)},
               [=](TPtrList& list) { list.AddTail(Element(element)); });
  });
  table.Row("KEST::TPtrList::InsertBefore(KEST::__POSITION*, void*)", [](bool given) {
    Elements expected = kOneToThree;
    expected.insert(expected.begin() + (given ? 2 : 0), kNew);
    ExpectList(expected, [=](TPtrList& list) {
      list.InsertBefore(given ? list.GetTailPosition() : nullptr, kNew);
    });
  });
  table.Row("KEST::TPtrList::InsertAfter(KEST::__POSITION*, void*)", [](bool given) {
    Elements expected = kOneToThree;
    expected.insert(expected.begin() + (given ? 1 : 3), kNew);
    ExpectList(expected, [=](TPtrList& list) {
      list.InsertAfter(given ? list.GetHeadPosition() : nullptr, kNew);
    });
  });
  table.Row("KEST::TPtrList::RemoveAt(KEST::__POSITION*)", [](bool given) {
    Elements expected = kOneToThree;
    if (given) expected.pop_back();
    ExpectList(expected,
               [=](TPtrList& list) { list.RemoveAt(given ? list.GetTailPosition() : nullptr); });
  });
  table.Row("KEST::TPtrList::FindIndex(int) const", Around(kCount), [](int index) {
    ExpectList(kOneToThree, [=](TPtrList& list) {
      __POSITION* position = list.FindIndex(index);
      const bool inside = index >= 0 && index < kCount;
      EXPECT_EQ(inside, position != nullptr);
      if (inside) {
        EXPECT_EQ(Element(static_cast<uintptr_t>(index) + 1), list.GetAt(position));
      }
    });
    EXPECT_EQ(nullptr, TPtrList().FindIndex(index));
  });
  table.Row("KEST::TPtrList::Find(void*, KEST::__POSITION*) const", Around(kCount),
            [](unsigned int element, bool given) {
              ExpectList(kOneToThree, [=](TPtrList& list) {
                __POSITION* found =
                    list.Find(Element(element), given ? list.GetHeadPosition() : nullptr);
                EXPECT_EQ(element >= (given ? 2u : 1u) && element <= kCount, found != nullptr);
                EXPECT_EQ(nullptr, list.Find(Element(element), list.GetTailPosition()));
              });
            });

  table.Row("KEST::TPtrFromPtrMap::TPtrFromPtrMap(int)", BlockSizes<PtrKeys>());
  table.Row("KEST::TPtrFromBstrMap::TPtrFromBstrMap(int)", BlockSizes<BstrKeys>());
  table.Row("KEST::TPtrFromGuidMap::TPtrFromGuidMap(int)", BlockSizes<GuidKeys>());
  table.Row("KEST::TPtrFromPtrMap::InitHashTable(unsigned int, bool)", TableSizes<PtrKeys>());
  table.Row("KEST::TPtrFromBstrMap::InitHashTable(unsigned int, bool)", TableSizes<BstrKeys>());
  table.Row("KEST::TPtrFromGuidMap::InitHashTable(unsigned int, bool)", TableSizes<GuidKeys>());
  table.Row("KEST::TPtrFromPtrMap::GetNextAssoc(KEST::__POSITION*&, void*&, void*&) const",
            NullPosition<PtrKeys>());
  table.Row("KEST::TPtrFromBstrMap::GetNextAssoc(KEST::__POSITION*&, KEST::TBstr&, void*&) const",
            NullPosition<BstrKeys>());
  table.Row("KEST::TPtrFromGuidMap::GetNextAssoc(KEST::__POSITION*&, KEST::_GUID&, void*&) const",
            NullPosition<GuidKeys>());
  table.Row("KEST::TPtrFromPtrMap::SetAt(void*, void*)", PtrKey());
  table.Row("KEST::TPtrFromPtrMap::Lookup(void*, void*&) const", PtrKey());
  table.Row("KEST::TPtrFromPtrMap::RemoveKey(void*)", PtrKey());
  table.Row("KEST::TPtrFromPtrMap::GetAssocAt(void*, unsigned int&) const", PtrKey());
  table.Row("KEST::TPtrFromPtrMap::operator[](void*)", PtrKey());
  table.Row("KEST::TPtrFromBstrMap::SetAt(unsigned short const*, void*)", BstrKey());
  table.Row("KEST::TPtrFromBstrMap::Lookup(unsigned short const*, void*&) const", BstrKey());
  table.Row("KEST::TPtrFromBstrMap::RemoveKey(unsigned short const*)", BstrKey());
  table.Row("KEST::TPtrFromBstrMap::GetAssocAt(unsigned short const*, unsigned int&) const",
            BstrKey());
  table.Row("KEST::TPtrFromBstrMap::operator[](unsigned short const*)", BstrKey());
  table.Row("KEST::TPtrFromGuidMap::SetAt(KEST::_GUID const&, void*)", GuidKey());
  table.Row("KEST::TPtrFromGuidMap::Lookup(KEST::_GUID const&, void*&) const", GuidKey());
  table.Row("KEST::TPtrFromGuidMap::GetAssocAt(KEST::_GUID const&, unsigned int&) const",
            GuidKey());

  table.Row("KEST::TFifoBuffer::Read(unsigned char*, int)", Around(kCount),
            [](int count, bool filled) {
              TFifoBuffer fifo;
              const unsigned char source[kCount] = {1, 2, 3};
              if (filled) fifo.Write(source, kCount);
              const int taken = filled ? std::clamp(count, 0, kCount) : 0;
              // No more is written than there is, however much was asked for.
              const GuardedBlock<unsigned char> out(taken);
              EXPECT_EQ(taken, fifo.Read(out.Get(), count));
              EXPECT_EQ(std::vector<unsigned char>(source, source + taken), out.Content());
              EXPECT_EQ((filled ? kCount : 0) - taken, fifo.GetLength());
              EXPECT_EQ(kCount, fifo.Write(source, kCount));
            });
  table.Row("KEST::TFifoBuffer::Write(unsigned char const*, int)", Around(kCount, kLargestBlock),
            [](int count, bool filled) {
              TFifoBuffer fifo;
              const unsigned char byte = 9;
              if (filled) fifo.Write(&byte, 1);
              const long long total = 1ll * count + filled;
              const int taken = count > 0 && total <= kLargestBlock ? count : 0;
              // Without memory the source is not read.
              const GuardedBlock<unsigned char> source(taken);
              EXPECT_EQ(taken, fifo.Write(source.Get(), count));
              if (count > 0 && total <= INT_MAX) {
                ExpectRequested(static_cast<unsigned long long>(total));
              }
              EXPECT_EQ(taken + filled, fifo.GetLength());
              unsigned char first = 1;
              EXPECT_EQ(taken + filled > 0 ? 1 : 0, fifo.Read(&first, 1));
              if (taken + filled > 0) {
                EXPECT_EQ(filled ? 9 : 0, first);
              }
            });

  // Inline element access checks nothing: the index has to be inside.
  table.Row("inline TPtrArray::GetAt, SetAt, ElementAt and operator[]", Around(kCount),
            [](int index) {
              if (index < 0 || index >= kCount) return LeaveOut();
              Elements expected = kOneToThree;
              expected[static_cast<size_t>(index)] = kNew;
              ExpectArray(expected, [=](TPtrArray& array) {
                array.SetAt(index, kNew);
                EXPECT_EQ(kNew, array.GetAt(index));
                EXPECT_EQ(kNew, array.ElementAt(index));
                EXPECT_EQ(kNew, array[index]);
                EXPECT_EQ(kNew, static_cast<const TPtrArray&>(array)[index]);
              });
            });
}

const Table kCollections(AddCollectionsRows);

TEST(ArgumentSweep, Collections) { kCollections.Run(); }

}  // namespace

}  // namespace kest_test
