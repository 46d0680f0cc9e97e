#ifndef KEST_COLLECTIONS_H
#define KEST_COLLECTIONS_H

#include <stdint.h>
#include "kest/frame.h"
#include "kest/string.h"
namespace KEST {
struct __POSITION;
struct KEST_API _GUID {
  unsigned int data1;
  unsigned short data2, data3;
  unsigned char data4[8];
};
struct KEST_API SPlex {
  SPlex* next;
  void* GetData() { return this + 1; }
  static SPlex* Create(SPlex*& head, unsigned int count, unsigned int elementSize);
  void FreeDataChain();
};
class KEST_API TPtrArray {
 public:
  TPtrArray();
  TPtrArray(const TPtrArray&) = delete;
  TPtrArray& operator=(const TPtrArray&) = delete;
  ~TPtrArray();
  void SetSize(int newSize, int growBy = -1);
  void FreeExtra();
  void SetAtGrow(int index, void* element);
  void InsertAt(int index, void* element, int count = 1);
  void InsertAt(int startIndex, TPtrArray* source);
  void RemoveAt(int index, int count = 1);
  int Append(const TPtrArray& source);
  void Copy(const TPtrArray& source);
  int GetSize() const { return size; }
  int GetMaxSize() const { return maxSize; }
  bool IsEmpty() const { return size == 0; }
  void* GetAt(int index) const { return data[index]; }
  void SetAt(int index, void* element) { data[index] = element; }
  void*& ElementAt(int index) { return data[index]; }
  void* operator[](int index) const { return data[index]; }
  void*& operator[](int index) { return data[index]; }
  void** GetData() { return data; }
  int Add(void* element) {
    int index = size;
    SetAtGrow(index, element);
    return size > index ? index : -1;
  }
  void RemoveAll() { SetSize(0); }

 private:
  void** data;
  int size;
  int maxSize;
  int growBy;
};
class KEST_API TPtrList {
 public:
  struct SNode {
    SNode* next;
    SNode* prev;
    void* data;
  };
  explicit TPtrList(int blockSize = 10);
  TPtrList(const TPtrList&) = delete;
  TPtrList& operator=(const TPtrList&) = delete;
  ~TPtrList();
  __POSITION* AddHead(void* element);
  __POSITION* AddTail(void* element);
  void AddHead(const TPtrList& other);
  void AddTail(const TPtrList& other);
  void* RemoveHead();
  void* RemoveTail();
  __POSITION* InsertBefore(__POSITION* position, void* element);
  __POSITION* InsertAfter(__POSITION* position, void* element);
  void RemoveAt(__POSITION* position);
  void RemoveAll();
  __POSITION* FindIndex(int index) const;
  __POSITION* Find(void* element, __POSITION* startAfter = nullptr) const;
  __POSITION* GetHeadPosition() const { return ToPosition(head); }
  __POSITION* GetTailPosition() const { return ToPosition(tail); }
  int GetCount() const { return count; }
  bool IsEmpty() const { return count == 0; }
  void* GetHead() const { return head != nullptr ? head->data : nullptr; }
  void* GetTail() const { return tail != nullptr ? tail->data : nullptr; }
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
  void*& GetAt(__POSITION* position) { return ToNode(position)->data; }
  void* GetAt(__POSITION* position) const { return ToNode(position)->data; }
  void SetAt(__POSITION* position, void* element) { ToNode(position)->data = element; }

 private:
  static SNode* ToNode(__POSITION* position) { return reinterpret_cast<SNode*>(position); }
  static __POSITION* ToPosition(SNode* node) { return reinterpret_cast<__POSITION*>(node); }
  SNode* NewNode(SNode* prev, SNode* next);
  void FreeNode(SNode* node);
  SNode* head;
  SNode* tail;
  int count;
  SNode* freeList;
  SPlex* blocks;
  int blockSize;
};
class KEST_API TPtrFromPtrMap {
 public:
  struct SAssoc {
    SAssoc* next;
    void* key;
    void* value;
  };
  explicit TPtrFromPtrMap(int blockSize = 10);
  TPtrFromPtrMap(const TPtrFromPtrMap&) = delete;
  TPtrFromPtrMap& operator=(const TPtrFromPtrMap&) = delete;
  ~TPtrFromPtrMap();
  void InitHashTable(unsigned int size, bool allocNow = true);
  bool Lookup(void* key, void*& value) const;
  void*& operator[](void* key);
  bool SetAt(void* key, void* value);
  bool RemoveKey(void* key);
  void RemoveAll();
  void GetNextAssoc(__POSITION*& position, void*& key, void*& value) const;
  SAssoc* GetAssocAt(void* key, unsigned int& bucket) const;
  SAssoc* NewAssoc();
  void FreeAssoc(SAssoc* assoc);
  __POSITION* GetStartPosition() const {
    return count != 0 ? reinterpret_cast<__POSITION*>(UINTPTR_MAX) : nullptr;
  }
  int GetCount() const { return count; }
  bool IsEmpty() const { return count == 0; }
  unsigned int GetHashTableSize() const { return hashTableSize; }

 private:
  SAssoc** hashTable;
  unsigned int hashTableSize;
  int count;
  SAssoc* freeList;
  SPlex* blocks;
  int blockSize;
};
class KEST_API TPtrFromBstrMap {
 public:
  struct SAssoc {
    SAssoc* next;
    unsigned int bucket;
    TBstr key;
    void* value;
  };
  explicit TPtrFromBstrMap(int blockSize = 10);
  TPtrFromBstrMap(const TPtrFromBstrMap&) = delete;
  TPtrFromBstrMap& operator=(const TPtrFromBstrMap&) = delete;
  ~TPtrFromBstrMap();
  void InitHashTable(unsigned int size, bool allocNow = true);
  bool Lookup(const unsigned short* key, void*& value) const;
  void*& operator[](const unsigned short* key);
  bool SetAt(const unsigned short* key, void* value);
  bool RemoveKey(const unsigned short* key);
  void RemoveAll();
  void GetNextAssoc(__POSITION*& position, TBstr& key, void*& value) const;
  SAssoc* GetAssocAt(const unsigned short* key, unsigned int& bucket) const;
  SAssoc* NewAssoc();
  void FreeAssoc(SAssoc* assoc);
  __POSITION* GetStartPosition() const {
    return count != 0 ? reinterpret_cast<__POSITION*>(UINTPTR_MAX) : nullptr;
  }
  int GetCount() const { return count; }
  bool IsEmpty() const { return count == 0; }
  unsigned int GetHashTableSize() const { return hashTableSize; }

 private:
  SAssoc** hashTable;
  unsigned int hashTableSize;
  int count;
  SAssoc* freeList;
  SPlex* blocks;
  int blockSize;
};
class KEST_API TPtrFromGuidMap {
 public:
  struct SAssoc {
    SAssoc* next;
    _GUID key;
    void* value;
  };
  explicit TPtrFromGuidMap(int blockSize = 10);
  TPtrFromGuidMap(const TPtrFromGuidMap&) = delete;
  TPtrFromGuidMap& operator=(const TPtrFromGuidMap&) = delete;
  ~TPtrFromGuidMap();
  void InitHashTable(unsigned int size, bool allocNow = true);
  bool Lookup(const _GUID& key, void*& value) const;
  void*& operator[](const _GUID& key);
  bool SetAt(const _GUID& key, void* value);
  bool RemoveKey(const _GUID& key);
  void RemoveAll();
  void GetNextAssoc(__POSITION*& position, _GUID& key, void*& value) const;
  SAssoc* GetAssocAt(const _GUID& key, unsigned int& bucket) const;
  SAssoc* NewAssoc();
  void FreeAssoc(SAssoc* assoc);
  __POSITION* GetStartPosition() const {
    return count != 0 ? reinterpret_cast<__POSITION*>(UINTPTR_MAX) : nullptr;
  }
  int GetCount() const { return count; }
  bool IsEmpty() const { return count == 0; }
  unsigned int GetHashTableSize() const { return hashTableSize; }

 private:
  SAssoc** hashTable;
  unsigned int hashTableSize;
  int count;
  SAssoc* freeList;
  SPlex* blocks;
  int blockSize;
};
class KEST_API TFifoBuffer {
 public:
  TFifoBuffer() : buffer(nullptr), capacity(0), length(0) {}
  TFifoBuffer(const TFifoBuffer&) = delete;
  TFifoBuffer& operator=(const TFifoBuffer&) = delete;
  ~TFifoBuffer() { KestMemFree(buffer); }
  int Read(unsigned char* destination, int count);
  int Write(const unsigned char* source, int count);
  int GetLength() const { return length; }
  int GetCapacity() const { return capacity; }

 private:
  unsigned char* buffer;
  int capacity;
  int length;
};
}  // namespace KEST

#endif  // KEST_COLLECTIONS_H
