// Pointer containers: the array TPtrArray, the list TPtrList, the maps TPtrFrom...Map; the byte
// queue TFifoBuffer; and SPlex, the chain of memory blocks that list and maps take their nodes
// from.
//
// True of all of them:
//   Ownership  A container frees its own storage, never what an element points to. None is copied;
//              one may be added to itself, with the elements it held before the call.
//   Threads    No locking. Use one from one thread at a time, or under a lock of yours.
//   Memory     Comes from the allocator hooks. When there is none, the call leaves the container as
//              it was and says so in its result, or in a size or count that has not changed.
//   Arguments  A negative size, index or count changes nothing, save where its call says otherwise;
//              a count of elements to remove that reaches past the end is cut to what is there.
//              Inline element access checks nothing.
//   Example    examples/containers/containers.cpp

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
  unsigned int data1;
  unsigned short data2, data3;
  unsigned char data4[8];
};

// The header of a memory block; the payload follows it at once. Blocks form a chain, newest first,
// so that nodes can be taken many at a time and given back all together.
struct KEST_API SPlex {
  // The next older block, null in the oldest.
  SPlex* next;

  // The first byte of the payload, aligned as a pointer is.
  void* GetData() { return this + 1; }

  // Puts a block with room for count elements of elementSize bytes, uninitialised, before head and
  // makes it the new head. Returns it; null, with head unchanged, when there is no memory or the
  // size does not fit 32 bits.
  static SPlex* Create(SPlex*& head, unsigned int count, unsigned int elementSize);

  // Frees this block and all older ones. Called on a chain's head; a null head is allowed.
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
class KEST_API TPtrArray {
 public:
  // Empty, without storage, growing automatically.
  TPtrArray();
  TPtrArray(const TPtrArray&) = delete;
  TPtrArray& operator=(const TPtrArray&) = delete;
  ~TPtrArray();

  // Makes the array newSize long; new elements are null. Size 0 frees the storage, and any other
  // smaller size keeps the capacity. A first allocation is exact, later ones add growBy elements or
  // what newSize needs, whichever is more. growBy is kept for later calls; 0 stands for automatic
  // growth, -1 for the step set before, anything below for growth to exactly what is needed.
  void SetSize(int newSize, int growBy = -1);

  // Makes the capacity equal to the size.
  void FreeExtra();

  // Stores element at index, growing the array to index + 1 when it is shorter.
  void SetAtGrow(int index, void* element);

  // Inserts element count times before index. Past the end the array is extended first, with nulls
  // up to index; so a count of 0 there sets the size to index.
  void InsertAt(int index, void* element, int count = 1);

  // Inserts the elements of source before startIndex, in order. A null or empty source inserts
  // nothing.
  void InsertAt(int startIndex, TPtrArray* source);

  // Removes count elements from index on. The capacity stays.
  void RemoveAt(int index, int count = 1);

  // Adds the elements of source at the end. Returns the index of the first one, which is the size
  // before the call; the size does not change when there is no memory.
  int Append(const TPtrArray& source);

  // Makes the elements those of source.
  void Copy(const TPtrArray& source);

  // The number of elements.
  int GetSize() const { return size; }

  // The capacity in elements.
  int GetMaxSize() const { return maxSize; }

  // Whether there are no elements, whatever the capacity.
  bool IsEmpty() const { return size == 0; }

  // Access to an element, by 0 <= index < size.
  void* GetAt(int index) const { return data[index]; }
  void SetAt(int index, void* element) { data[index] = element; }
  void*& ElementAt(int index) { return data[index]; }
  void* operator[](int index) const { return data[index]; }
  void*& operator[](int index) { return data[index]; }

  // The storage, null while the capacity is 0. Valid until the size or the capacity changes.
  void** GetData() { return data; }

  // Stores element at the end. Returns its index, or -1 when there is no memory.
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
class KEST_API TPtrList {
 public:
  struct SNode {
    SNode* next;
    SNode* prev;
    void* data;
  };

  // blockSize: nodes a block; below 1 counts as 1.
  explicit TPtrList(int blockSize = 10);
  TPtrList(const TPtrList&) = delete;
  TPtrList& operator=(const TPtrList&) = delete;
  ~TPtrList();

  // Adds element at an end. Returns its position, or null when there is no memory.
  __POSITION* AddHead(void* element);
  __POSITION* AddTail(void* element);

  // Adds the elements of other at an end, in their order there: all of them, or none when there is
  // no memory.
  void AddHead(const TPtrList& other);
  void AddTail(const TPtrList& other);

  // Removes the element at an end and returns it; null when the list is empty.
  void* RemoveHead();
  void* RemoveTail();

  // Adds element next to position; at the head or the tail, respectively, when position is null.
  // Returns its position, or null when there is no memory.
  __POSITION* InsertBefore(__POSITION* position, void* element);
  __POSITION* InsertAfter(__POSITION* position, void* element);

  // Removes the element at position; a null position is ignored.
  void RemoveAt(__POSITION* position);

  // Empties the list and frees its memory.
  void RemoveAll();

  // The position index steps behind the head's; null unless 0 <= index < count.
  __POSITION* FindIndex(int index) const;

  // The first position that holds element, from the head on or after startAfter; null if none.
  __POSITION* Find(void* element, __POSITION* startAfter = nullptr) const;

  // The ends, null when the list is empty.
  __POSITION* GetHeadPosition() const { return ToPosition(head); }
  __POSITION* GetTailPosition() const { return ToPosition(tail); }

  // The number of elements.
  int GetCount() const { return count; }
  bool IsEmpty() const { return count == 0; }

  // The elements at the ends, null when the list is empty.
  void* GetHead() const { return head != nullptr ? head->data : nullptr; }
  void* GetTail() const { return tail != nullptr ? tail->data : nullptr; }

  // The element at position, which then moves on: to null behind the last one.
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

  // The element at position, which must not be null.
  void*& GetAt(__POSITION* position) { return ToNode(position)->data; }
  void* GetAt(__POSITION* position) const { return ToNode(position)->data; }
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
class KEST_API TPtrFromPtrMap {
 public:
  // An entry.
  struct SAssoc {
    SAssoc* next;
    void* key;
    void* value;
  };

  // Empty. blockSize: entries a block; below 1 counts as 1.
  explicit TPtrFromPtrMap(int blockSize = 10);
  TPtrFromPtrMap(const TPtrFromPtrMap&) = delete;
  TPtrFromPtrMap& operator=(const TPtrFromPtrMap&) = delete;
  ~TPtrFromPtrMap();

  // Sets the number of buckets; 0 is ignored. They are made now, or at the next insertion when
  // allocNow is false or there is no memory. Meant for an empty map: entries that the map holds
  // stay counted, but are in no bucket any more and not found again.
  void InitHashTable(unsigned int size, bool allocNow = true);

  // True and the value when the key is there; otherwise false, with value as it was.
  bool Lookup(void* key, void*& value) const;

  // The key's value, added as null when it is not there. When there is no memory nothing is added,
  // and the reference is to a null pointer of the calling thread that no map looks at.
  void*& operator[](void* key);

  // Sets the key's value. False when there is no memory; nothing is added then.
  bool SetAt(void* key, void* value);

  // Removes the key; false when it is not there.
  bool RemoveKey(void* key);

  // Empties the map and frees its memory. The number of buckets is kept.
  void RemoveAll();

  // Gives the entry at position and moves position to the next one, null behind the last. A null
  // position gives nothing.
  void GetNextAssoc(__POSITION*& position, void*& key, void*& value) const;

  // The key's entry or null, and in either case the number of its bucket.
  SAssoc* GetAssocAt(void* key, unsigned int& bucket) const;

  // An entry with an empty key and a null value, counted but in no bucket; null when there is no
  // memory.
  SAssoc* NewAssoc();

  // Takes back an entry that is in no bucket.
  void FreeAssoc(SAssoc* assoc);

  // The position before the first entry, for GetNextAssoc; null when the map is empty.
  __POSITION* GetStartPosition() const {
    return count != 0 ? reinterpret_cast<__POSITION*>(UINTPTR_MAX) : nullptr;
  }

  // The number of entries.
  int GetCount() const { return count; }
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
class KEST_API TPtrFromBstrMap {
 public:
  // An entry.
  struct SAssoc {
    SAssoc* next;
    unsigned int bucket;
    TBstr key;
    void* value;
  };

  // Empty. blockSize: entries a block; below 1 counts as 1.
  explicit TPtrFromBstrMap(int blockSize = 10);
  TPtrFromBstrMap(const TPtrFromBstrMap&) = delete;
  TPtrFromBstrMap& operator=(const TPtrFromBstrMap&) = delete;
  ~TPtrFromBstrMap();

  // Sets the number of buckets; 0 is ignored. They are made now, or at the next insertion when
  // allocNow is false or there is no memory. Meant for an empty map: entries that the map holds
  // stay counted, but are in no bucket any more and not found again; their key texts are not freed.
  void InitHashTable(unsigned int size, bool allocNow = true);

  // True and the value when the key is there; otherwise false, with value as it was.
  bool Lookup(const unsigned short* key, void*& value) const;

  // The key's value, added as null when it is not there. When there is no memory nothing is added,
  // and the reference is to a null pointer of the calling thread that no map looks at.
  void*& operator[](const unsigned short* key);

  // Sets the key's value. False when there is no memory; nothing is added then.
  bool SetAt(const unsigned short* key, void* value);

  // Removes the key; false when it is not there.
  bool RemoveKey(const unsigned short* key);

  // Empties the map and frees its memory. The number of buckets is kept.
  void RemoveAll();

  // Gives the entry at position and moves position to the next one, null behind the last. A null
  // position gives nothing. A key that there is no memory to copy comes out empty.
  void GetNextAssoc(__POSITION*& position, TBstr& key, void*& value) const;

  // The key's entry or null, and in either case the number of its bucket.
  SAssoc* GetAssocAt(const unsigned short* key, unsigned int& bucket) const;

  // An entry with an empty key and a null value, counted but in no bucket; null when there is no
  // memory.
  SAssoc* NewAssoc();

  // Takes back an entry that is in no bucket.
  void FreeAssoc(SAssoc* assoc);

  // The position before the first entry, for GetNextAssoc; null when the map is empty.
  __POSITION* GetStartPosition() const {
    return count != 0 ? reinterpret_cast<__POSITION*>(UINTPTR_MAX) : nullptr;
  }

  // The number of entries.
  int GetCount() const { return count; }
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
class KEST_API TPtrFromGuidMap {
 public:
  // An entry.
  struct SAssoc {
    SAssoc* next;
    _GUID key;
    void* value;
  };

  // Empty. blockSize: entries a block; below 1 counts as 1.
  explicit TPtrFromGuidMap(int blockSize = 10);
  TPtrFromGuidMap(const TPtrFromGuidMap&) = delete;
  TPtrFromGuidMap& operator=(const TPtrFromGuidMap&) = delete;
  ~TPtrFromGuidMap();

  // Sets the number of buckets; 0 is ignored. They are made now, or at the next insertion when
  // allocNow is false or there is no memory. Meant for an empty map: entries that the map holds
  // stay counted, but are in no bucket any more and not found again.
  void InitHashTable(unsigned int size, bool allocNow = true);

  // True and the value when the key is there; otherwise false, with value as it was.
  bool Lookup(const _GUID& key, void*& value) const;

  // The key's value, added as null when it is not there. When there is no memory nothing is added,
  // and the reference is to a null pointer of the calling thread that no map looks at.
  void*& operator[](const _GUID& key);

  // Sets the key's value. False when there is no memory; nothing is added then.
  bool SetAt(const _GUID& key, void* value);

  // Removes the key; false when it is not there.
  bool RemoveKey(const _GUID& key);

  // Empties the map and frees its memory. The number of buckets is kept.
  void RemoveAll();

  // Gives the entry at position and moves position to the next one, null behind the last. A null
  // position gives nothing.
  void GetNextAssoc(__POSITION*& position, _GUID& key, void*& value) const;

  // The key's entry or null, and in either case the number of its bucket.
  SAssoc* GetAssocAt(const _GUID& key, unsigned int& bucket) const;

  // An entry with an empty key and a null value, counted but in no bucket; null when there is no
  // memory.
  SAssoc* NewAssoc();

  // Takes back an entry that is in no bucket.
  void FreeAssoc(SAssoc* assoc);

  // The position before the first entry, for GetNextAssoc; null when the map is empty.
  __POSITION* GetStartPosition() const {
    return count != 0 ? reinterpret_cast<__POSITION*>(UINTPTR_MAX) : nullptr;
  }

  // The number of entries.
  int GetCount() const { return count; }
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
  TFifoBuffer() : buffer(nullptr), capacity(0), length(0) {}
  TFifoBuffer(const TFifoBuffer&) = delete;
  TFifoBuffer& operator=(const TFifoBuffer&) = delete;
  ~TFifoBuffer() { KestMemFree(buffer); }

  // Takes up to count bytes from the front. Returns how many; 0 for a count of 0 or less.
  int Read(unsigned char* destination, int count);

  // Appends count bytes. Returns count; 0 for a count of 0 or less, and when the block cannot grow
  // (to INT_MAX bytes at most), with the queue as before.
  int Write(const unsigned char* source, int count);

  // Unread bytes, and the size of the block in bytes.
  int GetLength() const { return length; }
  int GetCapacity() const { return capacity; }

 private:
  unsigned char* buffer;
  int capacity;
  int length;
};

}  // namespace KEST

#endif  // KEST_COLLECTIONS_H
