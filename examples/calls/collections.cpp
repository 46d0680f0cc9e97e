// The calls of kest/collections.h.

#include "kest/collections.h"

#include <string.h>

#include "check.h"

using KEST::TBstr;

static void Arrays() {
  int a = 1, b = 2, c = 3;
  //! [array]
  KEST::TPtrArray array;
  Check(array.Add(&a) == 0);  // the index, or -1 without memory
  array.SetAtGrow(2, &c);     // what lies between is null
  array.SetAt(1, &b);
  Check(array.GetSize() == 3 && !array.IsEmpty());
  Check(array.GetAt(0) == &a && array[2] == &c);
  array.ElementAt(0) = &b;
  array[1] = &a;
  Check(array.GetData()[0] == &b);
  //! [array]

  //! [array-change]
  KEST::TPtrArray list;
  list.InsertAt(0, &a, 2);  // a, a
  list.InsertAt(1, &b);     // a, b, a
  KEST::TPtrArray more;
  more.Add(&c);
  list.InsertAt(0, &more);        // c, a, b, a
  Check(list.Append(more) == 4);  // c, a, b, a, c
  list.RemoveAt(1, 3);            // c, c
  Check(list.GetSize() == 2);
  more.Copy(list);
  Check(more.GetSize() == 2);
  //! [array-change]

  //! [array-size]
  KEST::TPtrArray table;
  table.SetSize(100, 50);  // 100 nulls; grows by 50
  table.SetSize(10);
  Check(table.GetMaxSize() == 100);
  table.FreeExtra();
  Check(table.GetMaxSize() == 10);
  table.RemoveAll();
  Check(table.GetMaxSize() == 0);
  //! [array-size]
}

static void Lists() {
  int a = 1, b = 2, c = 3;
  //! [list]
  KEST::TPtrList list;
  KEST::__POSITION* first = list.AddHead(&a);  // null without memory
  list.AddTail(&c);
  list.InsertAfter(first, &b);
  list.InsertBefore(first, &c);  // c, a, b, c
  Check(list.GetCount() == 4 && !list.IsEmpty());
  Check(list.GetHead() == &c && list.GetTail() == &c);
  Check(list.RemoveHead() == &c && list.RemoveTail() == &c);
  list.RemoveAt(first);
  Check(list.GetCount() == 1);
  list.RemoveAll();
  //! [list]

  //! [list-walk]
  KEST::TPtrList numbers;
  numbers.AddTail(&a);
  numbers.AddTail(&b);
  numbers.AddTail(&c);
  int sum = 0;
  for (KEST::__POSITION* at = numbers.GetHeadPosition(); at != nullptr;) {
    sum += *static_cast<int*>(numbers.GetNext(at));  // moves on
  }
  Check(sum == 6);
  KEST::__POSITION* at = numbers.GetTailPosition();
  Check(numbers.GetPrev(at) == &c && numbers.GetAt(at) == &b);
  numbers.SetAt(at, &a);
  Check(numbers.Find(&a) == numbers.FindIndex(0));
  Check(numbers.Find(&a, numbers.FindIndex(0)) == at);
  //! [list-walk]

  //! [list-join]
  KEST::TPtrList all, others;
  others.AddTail(&a);
  others.AddTail(&b);
  all.AddTail(others);
  all.AddHead(others);  // a, b, a, b
  Check(all.GetCount() == 4);
  //! [list-join]
}

static void PointerMap() {
  int a = 1, b = 2;
  //! [ptr-map]
  KEST::TPtrFromPtrMap map;
  map.InitHashTable(1021);   // for many keys, while it is empty
  Check(map.SetAt(&a, &b));  // false without memory
  map[&b] = &a;
  void* value;
  Check(map.Lookup(&a, value) && value == &b);
  Check(map.GetCount() == 2 && !map.IsEmpty() && map.GetHashTableSize() == 1021);
  Check(map.RemoveKey(&a) && !map.RemoveKey(&a));
  //! [ptr-map]

  //! [ptr-map-walk]
  int found = 0;
  for (KEST::__POSITION* at = map.GetStartPosition(); at != nullptr; ++found) {
    void* key;
    map.GetNextAssoc(at, key, value);
    Check(key == &b && value == &a);
  }
  Check(found == 1);
  unsigned int bucket;
  const KEST::TPtrFromPtrMap::SAssoc* entry = map.GetAssocAt(&b, bucket);
  Check(entry != nullptr && entry->value == &a && bucket < map.GetHashTableSize());
  map.RemoveAll();
  //! [ptr-map-walk]

  //! [ptr-map-entry]
  KEST::TPtrFromPtrMap::SAssoc* spare = map.NewAssoc();  // counted, in no bucket
  Check(spare != nullptr && map.GetCount() == 1);
  map.FreeAssoc(spare);
  //! [ptr-map-entry]
}

static void TextMap() {
  int a = 1;
  //! [text-map]
  KEST::TPtrFromBstrMap map;
  map.InitHashTable(251);
  Check(map.SetAt(KEST_TEXT("one"), &a));  // the map copies the key
  map[KEST_TEXT("two")] = nullptr;
  void* value;
  Check(map.Lookup(KEST_TEXT("one"), value) && value == &a);
  Check(map.GetCount() == 2 && !map.IsEmpty() && map.GetHashTableSize() == 251);
  Check(map.RemoveKey(KEST_TEXT("two")));
  //! [text-map]

  //! [text-map-walk]
  for (KEST::__POSITION* at = map.GetStartPosition(); at != nullptr;) {
    TBstr key;
    map.GetNextAssoc(at, key, value);
    Check(key == KEST_TEXT("one"));
  }
  unsigned int bucket;
  const KEST::TPtrFromBstrMap::SAssoc* entry = map.GetAssocAt(KEST_TEXT("one"), bucket);
  Check(entry != nullptr && entry->bucket == bucket);
  map.RemoveAll();
  //! [text-map-walk]

  //! [text-map-entry]
  KEST::TPtrFromBstrMap::SAssoc* spare = map.NewAssoc();
  Check(spare != nullptr && spare->key.IsEmpty());
  map.FreeAssoc(spare);
  //! [text-map-entry]
}

static void GuidMap() {
  int a = 1;
  //! [guid-map]
  const KEST::_GUID id = {0x01020304, 5, 6, {7, 8, 9, 10, 11, 12, 13, 14}};
  KEST::TPtrFromGuidMap map;
  map.InitHashTable(61, false);  // made with the first entry
  Check(map.SetAt(id, &a) && map[id] == &a);
  void* value;
  Check(map.Lookup(id, value) && value == &a);
  Check(map.GetCount() == 1 && !map.IsEmpty() && map.GetHashTableSize() == 61);
  //! [guid-map]

  //! [guid-map-walk]
  for (KEST::__POSITION* at = map.GetStartPosition(); at != nullptr;) {
    KEST::_GUID key;
    map.GetNextAssoc(at, key, value);
    Check(key.data2 == 5);
  }
  unsigned int bucket;
  Check(map.GetAssocAt(id, bucket)->value == &a);
  Check(map.RemoveKey(id));
  map.RemoveAll();
  KEST::TPtrFromGuidMap::SAssoc* spare = map.NewAssoc();  // counted, in no bucket
  map.FreeAssoc(spare);
  //! [guid-map-walk]
}

static void Blocks() {
  //! [fifo]
  KEST::TFifoBuffer queue;
  const unsigned char bytes[] = {1, 2, 3, 4};
  Check(queue.Write(bytes, 4) == 4);  // 0 without memory
  unsigned char out[3];
  Check(queue.Read(out, 3) == 3 && out[2] == 3);
  Check(queue.GetLength() == 1 && queue.GetCapacity() == 4);
  //! [fifo]

  //! [plex]
  KEST::SPlex* chain = nullptr;
  KEST::SPlex* block = KEST::SPlex::Create(chain, 10, sizeof(int));  // room for ten numbers
  Check(block != nullptr && chain == block);
  memset(block->GetData(), 0, 10 * sizeof(int));
  chain->FreeDataChain();
  //! [plex]
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  Arrays();
  Lists();
  PointerMap();
  TextMap();
  GuidMap();
  Blocks();
  KestUninitialize();
  puts("as shown");
  return 0;
}
