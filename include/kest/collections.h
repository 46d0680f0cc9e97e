// Pointer containers: the array TPtrArray, the list TPtrList, the maps TPtrFrom...Map; the byte
// queue TFifoBuffer; and SPlex, the chain of memory blocks that list and maps take their nodes
// from.
//
// True of all of them:
//   Ownership  A container frees its own storage, never what an element points to. None is copied;
//              one may be added to itself, with the elements it held before the call.
//   Threads    No locking. Use one from one thread at a time, or under a lock of yours.
//   Failure    Memory comes from the allocator hooks. When there is none, the call leaves the
//              container as it was and says so in its result, or in a size or count that has not
//              changed.
//   Blocking   Never, save for what the allocator hooks do.
//   Cost       Constant, where nothing else is said.
//   Arguments  A negative size, index or count changes nothing, save where its call says otherwise;
//              a count of elements to remove that reaches past the end is cut to what is there.
//              Inline element access checks nothing.
//   Example    examples/containers/containers.cpp
//   See        docs/collections.md

#ifndef KEST_COLLECTIONS_H
#define KEST_COLLECTIONS_H

#include <stdint.h>
#include "kest/frame.h"
#include "kest/string.h"

namespace KEST {

// A place in a list or a map; never looked into. A null position means none: before the first, past
// the last, not found.
struct __POSITION;

// A 16-byte identifier. Equal when all bytes are.
struct KEST_API _GUID {
  unsigned int data1;           // The first word, which is all that a map hashes.
  unsigned short data2, data3;  // The next two half-words.
  unsigned char data4[8];       // The last eight bytes.
};

// The header of a memory block; the payload follows it at once. Blocks form a chain, newest first,
// so that nodes can be taken many at a time and given back all together.
struct KEST_API SPlex {
  // The next older block, null in the oldest.
  SPlex* next;

  // The first byte of the payload, aligned as a pointer is.
  void* GetData() { return this + 1; }

  // Puts a block with room for count elements of elementSize bytes, uninitialised, before head and
  // makes it the new head.
  //   head         the chain, null while it is empty
  //   count        how many elements
  //   elementSize  bytes in an element
  //   Result       the block; null, with head unchanged, when there is no memory or the size does
  //                not fit 32 bits
  //   Ownership    the chain is the caller's, who frees it with FreeDataChain
  //   Cost         one request for memory
  static SPlex* Create(SPlex*& head, unsigned int count, unsigned int elementSize);

  // Frees this block and all older ones. Called on a chain's head; a null head is allowed.
  //   Cost  a call of the allocator's free for each block
  void FreeDataChain();
};

// A growable array of pointers. The capacity grows by a fixed step or, by default, by an eighth of
// the size, at least 4 and at most 1024 elements; it shrinks in FreeExtra and at size 0 alone.
// Where no other allocator hooks have been set the block behind it grows in larger steps, so that
// appending is cheap at any size; with a client's hooks each step is an allocation, a copy and a
// release.
//
// There is room for (2^32 - 1) / sizeof(void*) elements at most: a larger size is a failed
// allocation.
//
//   index      counts elements from 0
//   element    the pointer to store; null is an element like any other
//   count      how many elements
//   source     the array to take elements from; it may be this one
//   Width      The limit is 2^30 - 1 elements in the 32-bit target, 2^29 - 1 in the 64-bit one.
class KEST_API TPtrArray {
 public:
  // Empty, without storage, growing automatically.
  TPtrArray();
  TPtrArray(const TPtrArray&) = delete;
  TPtrArray& operator=(const TPtrArray&) = delete;

  // Frees the storage, not what the elements point to.
  ~TPtrArray();

  // Makes the array newSize long; new elements are null. Size 0 frees the storage, and any other
  // smaller size keeps the capacity. A first allocation is exact, later ones add growBy elements or
  // what newSize needs, whichever is more.
  //   newSize  how many elements; a negative number changes nothing
  //   growBy   the step for this call and later ones, in elements: 0 stands for automatic growth,
  //            -1 for the step set before, anything below for growth to exactly what is needed
  //   Cost     linear in the elements that are new or move
  void SetSize(int newSize, int growBy = -1);

  // Makes the capacity equal to the size.
  //   Cost  one request for memory and a copy
  void FreeExtra();

  // Stores element at index, growing the array to index + 1 when it is shorter.
  //   index  counts elements from 0; a negative one changes nothing
  //   Cost   constant; linear in the elements when the array grows
  void SetAtGrow(int index, void* element);

  // Inserts element count times before index. Past the end the array is extended first, with nulls
  // up to index; so a count of 0 there sets the size to index.
  //   count  how many elements; a negative number changes nothing
  //   Cost   linear in the elements behind index and the new ones
  void InsertAt(int index, void* element, int count = 1);

  // Inserts the elements of source before startIndex, in order.
  //   startIndex  counts elements from 0; past the end, the array is extended with nulls first
  //   source      the array to take elements from, which may be this one; null and an empty one
  //               insert nothing
  //   Cost        linear in the elements behind startIndex and the new ones
  void InsertAt(int startIndex, TPtrArray* source);

  // Removes count elements from index on. The capacity stays.
  //   index  counts elements from 0; outside the array nothing is removed
  //   count  how many elements, cut to what there is
  //   Cost   linear in the elements behind those
  void RemoveAt(int index, int count = 1);

  // Adds the elements of source at the end. Returns the index of the first one, which is the size
  // before the call; the size does not change when there is no memory.
  //   Cost  linear in the elements of source, and in all when the array grows
  int Append(const TPtrArray& source);

  // Makes the elements those of source.
  //   Cost  linear in the elements of source
  void Copy(const TPtrArray& source);

  // The number of elements.
  int GetSize() const { return size; }

  // The capacity in elements.
  int GetMaxSize() const { return maxSize; }

  // Whether there are no elements, whatever the capacity.
  bool IsEmpty() const { return size == 0; }

  // The element at index, which is not checked.
  //   index    0 <= index < size, in elements
  //   Failure  none
  void* GetAt(int index) const { return data[index]; }

  // Stores element at index, which is not checked.
  //   index    0 <= index < size, in elements
  //   Failure  none
  void SetAt(int index, void* element) { data[index] = element; }

  // The place of the element at index, which is not checked.
  //   index    0 <= index < size, in elements
  //   Result   the place, valid until the size or the capacity changes
  //   Failure  none
  void*& ElementAt(int index) { return data[index]; }

  // The element at index, or its place, which is not checked.
  //   index    0 <= index < size, in elements
  //   Failure  none
  void* operator[](int index) const { return data[index]; }
  void*& operator[](int index) { return data[index]; }

  // The storage, null while the capacity is 0. Valid until the size or the capacity changes.
  void** GetData() { return data; }

  // Stores element at the end. Returns its index, or -1 when there is no memory.
  //   Cost  constant; linear in the elements when the array grows
  int Add(void* element) {
    int index = size;
    if (index < maxSize) {
      data[index] = element;
      return size++;
    }
    SetAtGrow(index, element);
    return size > index ? index : -1;
  }

  // Empties the array and frees its storage.
  //   Failure  none
  void RemoveAll() { SetSize(0); }

 private:
  void** data;
  int size;
  int maxSize;
  int growBy;
};

// A doubly linked list of pointers. Nodes are allocated blockSize at a time and used again before
// another block is made; a list that becomes empty frees all its memory. While the allocator hooks
// are the library's own, a longer list allocates more nodes at a time.
//
// A position is valid until its element is removed or the list is emptied. Positions are not
// checked: they must be the list's own.
//
//   element    the pointer to store; null is an element like any other
//   position   a position of this list
//   other      the list to take elements from; it may be this one
class KEST_API TPtrList {
 public:
  // What a position stands for.
  struct SNode {
    SNode* next;  // Towards the tail, null at the tail.
    SNode* prev;  // Towards the head, null at the head.
    void* data;   // The element.
  };

  // An empty list, without memory.
  //   blockSize  nodes a block; below 1 counts as 1
  explicit TPtrList(int blockSize = 10);
  TPtrList(const TPtrList&) = delete;
  TPtrList& operator=(const TPtrList&) = delete;

  // Frees the list's memory, not what the elements point to.
  //   Cost  a call of the allocator's free for each block
  ~TPtrList();

  // Adds element at the head. Returns its position, or null when there is no memory.
  //   Cost  constant; a request for memory when no node is free
  __POSITION* AddHead(void* element);

  // Adds element at the tail. Returns its position, or null when there is no memory.
  //   Cost  constant; a request for memory when no node is free
  __POSITION* AddTail(void* element);

  // Adds the elements of other at the head, in their order there: all of them, or none when there
  // is no memory.
  //   Cost  linear in the elements of other
  void AddHead(const TPtrList& other);

  // Adds the elements of other at the tail, in their order there: all of them, or none when there
  // is no memory.
  //   Cost  linear in the elements of other
  void AddTail(const TPtrList& other);

  // Removes the element at the head and returns it.
  //   Result   the element; null when the list is empty
  //   Failure  none
  void* RemoveHead();

  // Removes the element at the tail and returns it.
  //   Result   the element; null when the list is empty
  //   Failure  none
  void* RemoveTail();

  // Adds element before position. Returns its position, or null when there is no memory.
  //   position  a position of this list; null stands for the head
  //   Cost      constant; a request for memory when no node is free
  __POSITION* InsertBefore(__POSITION* position, void* element);

  // Adds element behind position. Returns its position, or null when there is no memory.
  //   position  a position of this list; null stands for the tail
  //   Cost      constant; a request for memory when no node is free
  __POSITION* InsertAfter(__POSITION* position, void* element);

  // Removes the element at position.
  //   position  a position of this list, which ends; null is ignored
  //   Failure   none
  void RemoveAt(__POSITION* position);

  // Empties the list and frees its memory.
  //   Failure  none
  //   Cost     a call of the allocator's free for each block
  void RemoveAll();

  // The position index steps behind the head's; null unless 0 <= index < count.
  //   index    counts elements from 0
  //   Failure  none
  //   Cost     linear in index
  __POSITION* FindIndex(int index) const;

  // The first position that holds element, from the head on or after startAfter; null if none.
  //   element     the pointer to look for, null included
  //   startAfter  the position behind which the search begins; null for the head
  //   Failure     none
  //   Cost        linear in the elements that are passed
  __POSITION* Find(void* element, __POSITION* startAfter = nullptr) const;

  // The position of the head; null when the list is empty.
  __POSITION* GetHeadPosition() const { return ToPosition(head); }

  // The position of the tail; null when the list is empty.
  __POSITION* GetTailPosition() const { return ToPosition(tail); }

  // The number of elements.
  int GetCount() const { return count; }

  // Whether there are no elements.
  bool IsEmpty() const { return count == 0; }

  // The element at the head; null when the list is empty.
  void* GetHead() const { return head != nullptr ? head->data : nullptr; }

  // The element at the tail; null when the list is empty.
  void* GetTail() const { return tail != nullptr ? tail->data : nullptr; }

  // The element at position, which then moves on: to null behind the last one.
  //   position  a position of this list, not null
  //   Failure   none
  void*& GetNext(__POSITION*& position) {
    SNode* node = ToNode(position);
    position = ToPosition(node->next);
    return node->data;
  }
  void* GetNext(__POSITION*& position) const {
    SNode* node = ToNode(position);
    position = ToPosition(node->next);
    return node->data;
  }

  // The element at position, which then moves back: to null before the first one.
  //   position  a position of this list, not null
  //   Failure   none
  void*& GetPrev(__POSITION*& position) {
    SNode* node = ToNode(position);
    position = ToPosition(node->prev);
    return node->data;
  }
  void* GetPrev(__POSITION*& position) const {
    SNode* node = ToNode(position);
    position = ToPosition(node->prev);
    return node->data;
  }

  // The element at position, or its place.
  //   position  a position of this list, not null
  //   Failure   none
  void*& GetAt(__POSITION* position) { return ToNode(position)->data; }
  void* GetAt(__POSITION* position) const { return ToNode(position)->data; }

  // Stores element at position.
  //   position  a position of this list, not null
  //   Failure   none
  void SetAt(__POSITION* position, void* element) { ToNode(position)->data = element; }

 private:
  static SNode* ToNode(__POSITION* position) { return reinterpret_cast<SNode*>(position); }
  static __POSITION* ToPosition(SNode* node) { return reinterpret_cast<__POSITION*>(node); }

  // A node with the given links, counted but not yet linked to; null when there is no memory.
  SNode* NewNode(SNode* prev, SNode* next);
  // Takes back a node that has been unlinked.
  void FreeNode(SNode* node);

  SNode* head;
  SNode* tail;
  int count;
  SNode* freeList;
  SPlex* blocks;
  int blockSize;
};

// A hash map from void* to void*. The two maps below differ in nothing but the key.
//
//   Buckets    17, made at the first insertion. Their number never grows by itself: a map that will
//              hold many keys is given its size with InitHashTable while it is empty.
//   Entries    Are allocated blockSize at a time, or more by a larger map with the library's own
//              allocator hooks, and used again before another block is made. A map that loses its
//              last entry frees all its memory, the buckets included; it keeps the number of
//              buckets for the next insertion.
//   Order      Iteration goes by bucket, and in a bucket from the newest entry to the oldest.
//   Positions  Valid until their entry is removed or the buckets are made anew.
//
// The hash is the key's address itself, its low 32 bits, modulo the number of buckets.
//
//   key        the key: a pointer that is not followed; null is one like any other
//   Cost       Linear in the entries of one bucket, and constant when there are enough buckets; a
//              first insertion makes the buckets.
//   Width      Of a 64-bit key the low 32 bits are hashed; all are compared.
class KEST_API TPtrFromPtrMap {
 public:
  // An entry.
  struct SAssoc {
    SAssoc* next;  // The next one in the bucket.
    void* key;     // The key.
    void* value;   // The value.
  };

  // An empty map, without memory.
  //   blockSize  entries a block; below 1 counts as 1
  //   Failure    none
  explicit TPtrFromPtrMap(int blockSize = 10);
  TPtrFromPtrMap(const TPtrFromPtrMap&) = delete;
  TPtrFromPtrMap& operator=(const TPtrFromPtrMap&) = delete;

  // Frees the map's memory, not what the values point to.
  //   Failure  none
  //   Cost     linear in the buckets and the blocks
  ~TPtrFromPtrMap();

  // Sets the number of buckets. Meant for an empty map: entries that the map holds stay counted,
  // but are in no bucket any more and not found again.
  //   size      the number of buckets; 0 is ignored
  //   allocNow  whether they are made now; otherwise, or without memory, at the next insertion
  //   Cost      linear in the buckets
  void InitHashTable(unsigned int size, bool allocNow = true);

  // Looks up a key.
  //   value    receives the key's value
  //   Result   true when the key is there; otherwise false, with value as it was
  //   Failure  none
  bool Lookup(void* key, void*& value) const;

  // The key's value, added as null when it is not there.
  //   Result   the place of the value, valid until its entry is removed
  //   Failure  when there is no memory nothing is added, and the reference is to a null pointer of
  //            the calling thread that no map looks at
  void*& operator[](void* key);

  // Sets the key's value.
  //   value   the pointer to store, null included; it stays the caller's
  //   Result  true; false when there is no memory, and nothing is added then
  bool SetAt(void* key, void* value);

  // Removes the key.
  //   Result   true; false when it is not there
  //   Failure  none
  bool RemoveKey(void* key);

  // Empties the map and frees its memory. The number of buckets is kept.
  //   Failure  none
  //   Cost     linear in the buckets and the entries
  void RemoveAll();

  // Gives the entry at position and moves position to the next one.
  //   position  from GetStartPosition or an earlier call; null gives nothing, and is what position
  //             becomes behind the last entry
  //   key       receives the entry's key
  //   value     receives the entry's value
  //   Failure   none
  //   Cost      constant, and linear in the empty buckets that are passed
  void GetNextAssoc(__POSITION*& position, void*& key, void*& value) const;

  // The key's entry, and the number of its bucket.
  //   bucket   receives the number of the key's bucket, whether it is there or not
  //   Result   the entry, which stays the map's; null when the key is not there
  //   Failure  none
  SAssoc* GetAssocAt(void* key, unsigned int& bucket) const;

  // An entry with an empty key and a null value, counted but in no bucket; null when there is no
  // memory. For the map's own use.
  //   Result     the entry; null when there is no memory
  //   Ownership  the entry is the map's, and given back with FreeAssoc
  //   Cost       constant; a request for memory when no entry is free
  SAssoc* NewAssoc();

  // Takes back an entry that is in no bucket. For the map's own use.
  //   assoc    from NewAssoc, not null; it ends
  //   Failure  none
  void FreeAssoc(SAssoc* assoc);

  // The position before the first entry, for GetNextAssoc; null when the map is empty.
  //   Failure  none
  __POSITION* GetStartPosition() const {
    return count != 0 ? reinterpret_cast<__POSITION*>(UINTPTR_MAX) : nullptr;
  }

  // The number of entries.
  int GetCount() const { return count; }

  // Whether there are no entries.
  bool IsEmpty() const { return count == 0; }

  // The number of buckets, made or not.
  unsigned int GetHashTableSize() const { return hashTableSize; }

 private:
  SAssoc** hashTable;
  unsigned int hashTableSize;
  int count;
  SAssoc* freeList;
  SPlex* blocks;
  int blockSize;
};

// A hash map from UTF-16 text to void*, as TPtrFromPtrMap is from void*. Keys are compared unit by
// unit up to their terminator, and copied on insertion; null is the empty text.
//
// The hash is h = 0, then h = h * 33 + unit for each unit, in 32 bits, modulo the number of
// buckets.
//
//   key        text up to its terminator, copied on insertion; null is the empty text
//   Cost       Linear in the key and in the entries of one bucket; a first insertion makes the
//              buckets, and each takes a copy of its key.
class KEST_API TPtrFromBstrMap {
 public:
  // An entry.
  struct SAssoc {
    SAssoc* next;         // The next one in the bucket.
    unsigned int bucket;  // The number of its bucket.
    TBstr key;            // The map's copy of the key.
    void* value;          // The value.
  };

  // An empty map, without memory.
  //   blockSize  entries a block; below 1 counts as 1
  //   Failure    none
  explicit TPtrFromBstrMap(int blockSize = 10);
  TPtrFromBstrMap(const TPtrFromBstrMap&) = delete;
  TPtrFromBstrMap& operator=(const TPtrFromBstrMap&) = delete;

  // Frees the map's memory, not what the values point to.
  //   Failure  none
  //   Cost     linear in the buckets and the entries, whose key texts are freed
  ~TPtrFromBstrMap();

  // Sets the number of buckets. Meant for an empty map: entries that the map holds stay counted,
  // but are in no bucket any more and not found again; their key texts are not freed.
  //   size      the number of buckets; 0 is ignored
  //   allocNow  whether they are made now; otherwise, or without memory, at the next insertion
  //   Cost      linear in the buckets
  void InitHashTable(unsigned int size, bool allocNow = true);

  // Looks up a key.
  //   value    receives the key's value
  //   Result   true when the key is there; otherwise false, with value as it was
  //   Failure  none
  bool Lookup(const unsigned short* key, void*& value) const;

  // The key's value, added as null when it is not there.
  //   Result   the place of the value, valid until its entry is removed
  //   Failure  when there is no memory nothing is added, and the reference is to a null pointer of
  //            the calling thread that no map looks at
  void*& operator[](const unsigned short* key);

  // Sets the key's value.
  //   value   the pointer to store, null included; it stays the caller's
  //   Result  true; false when there is no memory, and nothing is added then
  bool SetAt(const unsigned short* key, void* value);

  // Removes the key.
  //   Result   true; false when it is not there
  //   Failure  none
  bool RemoveKey(const unsigned short* key);

  // Empties the map and frees its memory. The number of buckets is kept.
  //   Failure  none
  //   Cost     linear in the buckets and the entries
  void RemoveAll();

  // Gives the entry at position and moves position to the next one.
  //   position  from GetStartPosition or an earlier call; null gives nothing, and is what position
  //             becomes behind the last entry
  //   key       receives a copy of the entry's key
  //   value     receives the entry's value
  //   Failure   a key that there is no memory to copy comes out empty
  //   Cost      a copy of the key, and linear in the empty buckets that are passed
  void GetNextAssoc(__POSITION*& position, TBstr& key, void*& value) const;

  // The key's entry, and the number of its bucket.
  //   bucket   receives the number of the key's bucket, whether it is there or not
  //   Result   the entry, which stays the map's; null when the key is not there
  //   Failure  none
  SAssoc* GetAssocAt(const unsigned short* key, unsigned int& bucket) const;

  // An entry with an empty key and a null value, counted but in no bucket; null when there is no
  // memory. For the map's own use.
  //   Result     the entry; null when there is no memory
  //   Ownership  the entry is the map's, and given back with FreeAssoc
  //   Cost       constant; a request for memory when no entry is free
  SAssoc* NewAssoc();

  // Takes back an entry that is in no bucket. For the map's own use.
  //   assoc    from NewAssoc, not null; it ends
  //   Failure  none
  void FreeAssoc(SAssoc* assoc);

  // The position before the first entry, for GetNextAssoc; null when the map is empty.
  //   Failure  none
  __POSITION* GetStartPosition() const {
    return count != 0 ? reinterpret_cast<__POSITION*>(UINTPTR_MAX) : nullptr;
  }

  // The number of entries.
  int GetCount() const { return count; }

  // Whether there are no entries.
  bool IsEmpty() const { return count == 0; }

  // The number of buckets, made or not.
  unsigned int GetHashTableSize() const { return hashTableSize; }

 private:
  SAssoc** hashTable;
  unsigned int hashTableSize;
  int count;
  SAssoc* freeList;
  SPlex* blocks;
  int blockSize;
};

// A hash map from _GUID to void*, as TPtrFromPtrMap is from void*. The hash is the first 32-bit
// word alone, modulo the number of buckets.
//
//   key        the identifier, copied on insertion
//   Cost       Linear in the entries of one bucket, and constant when there are enough buckets; a
//              first insertion makes the buckets.
class KEST_API TPtrFromGuidMap {
 public:
  // An entry.
  struct SAssoc {
    SAssoc* next;  // The next one in the bucket.
    _GUID key;     // The key.
    void* value;   // The value.
  };

  // An empty map, without memory.
  //   blockSize  entries a block; below 1 counts as 1
  //   Failure    none
  explicit TPtrFromGuidMap(int blockSize = 10);
  TPtrFromGuidMap(const TPtrFromGuidMap&) = delete;
  TPtrFromGuidMap& operator=(const TPtrFromGuidMap&) = delete;

  // Frees the map's memory, not what the values point to.
  //   Failure  none
  //   Cost     linear in the buckets and the blocks
  ~TPtrFromGuidMap();

  // Sets the number of buckets. Meant for an empty map: entries that the map holds stay counted,
  // but are in no bucket any more and not found again.
  //   size      the number of buckets; 0 is ignored
  //   allocNow  whether they are made now; otherwise, or without memory, at the next insertion
  //   Cost      linear in the buckets
  void InitHashTable(unsigned int size, bool allocNow = true);

  // Looks up a key.
  //   value    receives the key's value
  //   Result   true when the key is there; otherwise false, with value as it was
  //   Failure  none
  bool Lookup(const _GUID& key, void*& value) const;

  // The key's value, added as null when it is not there.
  //   Result   the place of the value, valid until its entry is removed
  //   Failure  when there is no memory nothing is added, and the reference is to a null pointer of
  //            the calling thread that no map looks at
  void*& operator[](const _GUID& key);

  // Sets the key's value.
  //   value   the pointer to store, null included; it stays the caller's
  //   Result  true; false when there is no memory, and nothing is added then
  bool SetAt(const _GUID& key, void* value);

  // Removes the key.
  //   Result   true; false when it is not there
  //   Failure  none
  bool RemoveKey(const _GUID& key);

  // Empties the map and frees its memory. The number of buckets is kept.
  //   Failure  none
  //   Cost     linear in the buckets and the entries
  void RemoveAll();

  // Gives the entry at position and moves position to the next one.
  //   position  from GetStartPosition or an earlier call; null gives nothing, and is what position
  //             becomes behind the last entry
  //   key       receives the entry's key
  //   value     receives the entry's value
  //   Failure   none
  //   Cost      constant, and linear in the empty buckets that are passed
  void GetNextAssoc(__POSITION*& position, _GUID& key, void*& value) const;

  // The key's entry, and the number of its bucket.
  //   bucket   receives the number of the key's bucket, whether it is there or not
  //   Result   the entry, which stays the map's; null when the key is not there
  //   Failure  none
  SAssoc* GetAssocAt(const _GUID& key, unsigned int& bucket) const;

  // An entry with an empty key and a null value, counted but in no bucket; null when there is no
  // memory. For the map's own use.
  //   Result     the entry; null when there is no memory
  //   Ownership  the entry is the map's, and given back with FreeAssoc
  //   Cost       constant; a request for memory when no entry is free
  SAssoc* NewAssoc();

  // Takes back an entry that is in no bucket. For the map's own use.
  //   assoc    from NewAssoc, not null; it ends
  //   Failure  none
  void FreeAssoc(SAssoc* assoc);

  // The position before the first entry, for GetNextAssoc; null when the map is empty.
  //   Failure  none
  __POSITION* GetStartPosition() const {
    return count != 0 ? reinterpret_cast<__POSITION*>(UINTPTR_MAX) : nullptr;
  }

  // The number of entries.
  int GetCount() const { return count; }

  // Whether there are no entries.
  bool IsEmpty() const { return count == 0; }

  // The number of buckets, made or not.
  unsigned int GetHashTableSize() const { return hashTableSize; }

 private:
  SAssoc** hashTable;
  unsigned int hashTableSize;
  int count;
  SAssoc* freeList;
  SPlex* blocks;
  int blockSize;
};

// A byte queue in one block that grows to exactly what is needed and never shrinks. Reading moves
// the bytes behind to the block's start, so the room of read bytes is used again.
class KEST_API TFifoBuffer {
 public:
  // Empty, without a block.
  TFifoBuffer() : buffer(nullptr), capacity(0), length(0) {}
  TFifoBuffer(const TFifoBuffer&) = delete;
  TFifoBuffer& operator=(const TFifoBuffer&) = delete;

  // Frees the block.
  //   Cost  one call of the allocator's free
  ~TFifoBuffer() { KestMemFree(buffer); }

  // Takes up to count bytes from the front. Returns how many; 0 for a count of 0 or less.
  //   destination  room for count bytes; may be null when count is below 1
  //   count        in bytes
  //   Failure      none
  //   Cost         linear in the bytes that the queue holds
  int Read(unsigned char* destination, int count);

  // Appends count bytes. Returns count; 0 for a count of 0 or less, and when the block cannot grow
  // (to INT_MAX bytes at most), with the queue as before.
  //   source  the bytes, which are copied; may be null when count is below 1
  //   count   in bytes
  //   Cost    linear in count, and in the bytes that the queue holds when the block grows
  int Write(const unsigned char* source, int count);

  // The number of unread bytes.
  int GetLength() const { return length; }

  // The size of the block in bytes.
  int GetCapacity() const { return capacity; }

 private:
  unsigned char* buffer;
  int capacity;
  int length;
};

}  // namespace KEST

#endif  // KEST_COLLECTIONS_H
