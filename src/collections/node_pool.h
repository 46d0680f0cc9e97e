// The supply of nodes behind the list and the maps: blocks of raw memory, carved into nodes that
// are kept on a free list through their next field. Only next has a value while a node is free.

#ifndef KEST_SRC_COLLECTIONS_NODE_POOL_H
#define KEST_SRC_COLLECTIONS_NODE_POOL_H

#include <algorithm>

#include "kest/collections.h"

namespace KEST {

// Pushed last to first, so that a block's nodes are handed out in address order.
template <typename TNode>
void AddBlock(TNode*& freeList, SPlex*& blocks, int blockSize) {
  static_assert(alignof(TNode) <= sizeof(SPlex), "nodes follow the block's header at once");
  const unsigned int count = static_cast<unsigned int>(std::max(blockSize, 1));
  SPlex* block = SPlex::Create(blocks, count, sizeof(TNode));
  if (block == nullptr) return;
  TNode* nodes = static_cast<TNode*>(block->GetData());
  for (unsigned int i = count; i-- > 0;) {
    nodes[i].next = freeList;
    freeList = &nodes[i];
  }
}

// A free node, from a new block when there is none; null when there is no memory for the block.
template <typename TNode>
TNode* TakeNode(TNode*& freeList, SPlex*& blocks, int blockSize) {
  if (freeList == nullptr) AddBlock(freeList, blocks, blockSize);
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
  if (blocks != nullptr) blocks->FreeDataChain();
  blocks = nullptr;
}

}  // namespace KEST

#endif  // KEST_SRC_COLLECTIONS_NODE_POOL_H
