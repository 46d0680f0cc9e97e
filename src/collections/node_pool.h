// The supply of nodes behind the list and the maps: blocks of raw memory, carved into nodes that
// are kept on a free list through their next field. Only next has a value while a node is free.

#ifndef KEST_SRC_COLLECTIONS_NODE_POOL_H
#define KEST_SRC_COLLECTIONS_NODE_POOL_H

#include <algorithm>

#include "frame/default_hooks.h"
#include "frame/object.h"
#include "kest/collections.h"

namespace KEST {

// SPlex::Create and SPlex::FreeDataChain, for the pool to inline.
inline SPlex* CreatePlex(SPlex*& head, unsigned int count, unsigned int elementSize) {
  void* memory = AllocateArray(count, elementSize, sizeof(SPlex));
  if (memory == nullptr) return nullptr;
  head = ::new (memory) SPlex{head};
  return head;
}
inline void FreePlexes(SPlex* block) {
  while (block != nullptr) {
    SPlex* following = block->next;
    KestMemFree(block);
    block = following;
  }
}

// The memory of a block that grew with its container, at most.
constexpr unsigned int kLargeBlock = 4096 - 4 * static_cast<unsigned int>(sizeof(void*));

// A new block, with count set to the nodes it has room for; null when there is no memory. Blocks
// from the C library's heap hold as many nodes as there are already, within a page, so that there
// are few of them; a client's hooks are asked for blockSize nodes each time.
template <typename TNode>
SPlex* CreateBlock(SPlex*& blocks, unsigned int& count, int nodesInUse) {
  const unsigned int wanted = std::min(static_cast<unsigned int>(nodesInUse),
                                       kLargeBlock / static_cast<unsigned int>(sizeof(TNode)));
  if (wanted > count && UsesDefaultHooks()) {
    SPlex* block = CreatePlex(blocks, wanted, sizeof(TNode));
    if (block != nullptr) {
      count = wanted;
      return block;
    }
  }
  return CreatePlex(blocks, count, sizeof(TNode));
}

// Puts the nodes of a new block before the free ones, the first in memory in front; none when there
// is no memory. nodesInUse: how many a container has, when it wants blocks that grow with it.
template <typename TNode>
__attribute__((noinline)) void AddBlock(TNode*& freeList, SPlex*& blocks, int blockSize,
                                        int nodesInUse = 0) {
  static_assert(alignof(TNode) <= sizeof(SPlex), "nodes follow the block's header at once");
  unsigned int count = static_cast<unsigned int>(std::max(blockSize, 1));
  SPlex* block = CreateBlock<TNode>(blocks, count, nodesInUse);
  if (block == nullptr) return;
  TNode* const first = static_cast<TNode*>(block->GetData());
  TNode* const last = first + (count - 1);
  for (TNode* node = first; node != last; ++node) node->next = node + 1;
  last->next = freeList;
  freeList = first;
}

// A free node, from a new block when there is none; null when there is no memory for the block.
template <typename TNode>
TNode* TakeNode(TNode*& freeList, SPlex*& blocks, int blockSize, int nodesInUse) {
  if (freeList == nullptr) AddBlock(freeList, blocks, blockSize, nodesInUse);
  TNode* node = freeList;
  if (node != nullptr) freeList = node->next;
  return node;
}

template <typename TNode>
void ReturnNode(TNode*& freeList, TNode* node) {
  node->next = freeList;
  freeList = node;
}

// Frees every block at once, and with them all nodes, in use or not.
template <typename TNode>
void FreeNodes(TNode*& freeList, SPlex*& blocks) {
  freeList = nullptr;
  FreePlexes(blocks);
  blocks = nullptr;
}

}  // namespace KEST

#endif  // KEST_SRC_COLLECTIONS_NODE_POOL_H
