#include "collections/node_pool.h"
#include "frame/layout.h"
#include "kest/collections.h"

namespace KEST {

KEST_SIZE_IS(TPtrList::SNode, 12, 24);
KEST_FIELD_AT(TPtrList::SNode, next, 0, 0);
KEST_FIELD_AT(TPtrList::SNode, prev, 4, 8);
KEST_FIELD_AT(TPtrList::SNode, data, 8, 16);
KEST_SIZE_IS(TPtrList, 24, 48);

TPtrList::TPtrList(int nodesPerBlock)
    : head(nullptr),
      tail(nullptr),
      count(0),
      freeList(nullptr),
      blocks(nullptr),
      blockSize(nodesPerBlock) {
  KEST_FIELD_AT(TPtrList, head, 0, 0);
  KEST_FIELD_AT(TPtrList, tail, 4, 8);
  KEST_FIELD_AT(TPtrList, count, 8, 16);
  KEST_FIELD_AT(TPtrList, freeList, 12, 24);
  KEST_FIELD_AT(TPtrList, blocks, 16, 32);
  KEST_FIELD_AT(TPtrList, blockSize, 20, 40);
}

TPtrList::~TPtrList() { RemoveAll(); }

__POSITION* TPtrList::AddHead(void* element) {
  SNode* node = NewNode(nullptr, head);
  if (node == nullptr) return nullptr;
  node->data = element;
  (head != nullptr ? head->prev : tail) = node;
  head = node;
  return ToPosition(node);
}

__POSITION* TPtrList::AddTail(void* element) {
  SNode* node = NewNode(tail, nullptr);
  if (node == nullptr) return nullptr;
  node->data = element;
  (tail != nullptr ? tail->next : head) = node;
  tail = node;
  return ToPosition(node);
}

void TPtrList::AddHead(const TPtrList& other) {
  // Counted beforehand: a list added to itself grows under the walk.
  const int added = other.count;
  const SNode* source = other.tail;
  for (int i = 0; i < added; ++i, source = source->prev) {
    if (AddHead(source->data) != nullptr) continue;
    while (i-- > 0) RemoveHead();
    return;
  }
}

void TPtrList::AddTail(const TPtrList& other) {
  const int added = other.count;
  const SNode* source = other.head;
  for (int i = 0; i < added; ++i, source = source->next) {
    if (AddTail(source->data) != nullptr) continue;
    while (i-- > 0) RemoveTail();
    return;
  }
}

void* TPtrList::RemoveHead() {
  SNode* node = head;
  if (node == nullptr) return nullptr;
  void* element = node->data;
  head = node->next;
  (head != nullptr ? head->prev : tail) = nullptr;
  FreeNode(node);
  return element;
}

void* TPtrList::RemoveTail() {
  SNode* node = tail;
  if (node == nullptr) return nullptr;
  void* element = node->data;
  tail = node->prev;
  (tail != nullptr ? tail->next : head) = nullptr;
  FreeNode(node);
  return element;
}

__POSITION* TPtrList::InsertBefore(__POSITION* position, void* element) {
  SNode* following = ToNode(position);
  if (following == nullptr || following == head) return AddHead(element);
  return InsertAfter(ToPosition(following->prev), element);
}

__POSITION* TPtrList::InsertAfter(__POSITION* position, void* element) {
  SNode* previous = ToNode(position);
  if (previous == nullptr || previous == tail) return AddTail(element);
  SNode* node = NewNode(previous, previous->next);
  if (node == nullptr) return nullptr;
  node->data = element;
  node->next->prev = node;
  previous->next = node;
  return ToPosition(node);
}

void TPtrList::RemoveAt(__POSITION* position) {
  if (position == nullptr) return;
  SNode* node = ToNode(position);
  (node->prev != nullptr ? node->prev->next : head) = node->next;
  (node->next != nullptr ? node->next->prev : tail) = node->prev;
  FreeNode(node);
}

// Not inline in what removes one element, which is shorter without it.
__attribute__((noinline)) void TPtrList::RemoveAll() {
  head = nullptr;
  tail = nullptr;
  count = 0;
  FreeNodes(freeList, blocks);
}

__POSITION* TPtrList::FindIndex(int index) const {
  if (index < 0 || index >= count) return nullptr;
  SNode* node = head;
  while (index-- > 0) node = node->next;
  return ToPosition(node);
}

__POSITION* TPtrList::Find(void* element, __POSITION* startAfter) const {
  SNode* node = startAfter != nullptr ? ToNode(startAfter)->next : head;
  while (node != nullptr && node->data != element) node = node->next;
  return ToPosition(node);
}

TPtrList::SNode* TPtrList::NewNode(SNode* prev, SNode* next) {
  SNode* node = TakeNode(freeList, blocks, blockSize, count);
  if (node == nullptr) return nullptr;
  *node = {next, prev, nullptr};
  ++count;
  return node;
}

void TPtrList::FreeNode(SNode* node) {
  ReturnNode(freeList, node);
  // An emptied list holds no memory, on purpose; the next add takes a new block.
  if (--count == 0) RemoveAll();
}

}  // namespace KEST
