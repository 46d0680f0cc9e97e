// Messages in records of their own, for a client's hooks: on a list with ten nodes a block, of
// which an empty one holds none.
//
// Posters hold the queue's lock. Taking needs it as well where the message is the last one, because
// the nodes then go; for one list of the process it can do without for the others. That list's
// front lies apart, so that one core takes while another one posts.

#ifndef KEST_SRC_PLATFORM_POSIX_MESSAGE_LIST_H
#define KEST_SRC_PLATFORM_POSIX_MESSAGE_LIST_H

#include <atomic>

#include "collections/node_pool.h"
#include "platform/posix/cores.h"
#include "platform/posix/message_lane.h"

namespace KEST {

class TMessageList {
  using SNode = TPtrList::SNode;
  using Front = std::atomic<SNode*>;

 public:
  // Nodes that were never used, and the block that they lie in.
  struct SNodes {
    SNode* free = nullptr;
    SPlex* block = nullptr;

    // Without memory there are none.
    void Get() { AddBlock(free, block, 10); }
  };

  TMessageList() = default;
  TMessageList(const TMessageList&) = delete;
  TMessageList& operator=(const TMessageList&) = delete;

  // Moves the front of an empty list apart, if no other list's is, and back.
  void MoveFront();
  void MoveFrontBack();

  // ---- From any thread

  bool IsFrontApart() const { return s_owner.load(std::memory_order_relaxed) == this; }

  // A hint only, except on the thread that has changed it.
  bool SeemsEmpty() const { return TheFront().load(std::memory_order_relaxed) == nullptr; }

  // Takes the oldest message if it is not the last one; null otherwise. Only with the front apart.
  SMessage* TakeUnlessLast();

  // ---- Under the lock

  bool IsEmpty() const { return newest == nullptr; }

  // Makes room for one message, with the nodes of fresh, if any, and those that were used before.
  // Where there are none and mayGet is set, it gets a block. False without memory.
  bool MakeRoom(SNodes fresh, bool mayGet);

  // Appends, once there is room.
  void Append(SMessage* message);

  // Takes the oldest message, or null. emptied gets the blocks of a list that is now empty: freeing
  // them can wait until the lock has been given back.
  SMessage* Take(SPlex*& emptied);

 private:
  Front& TheFront() { return IsFrontApart() ? s_front : front; }
  const Front& TheFront() const { return IsFrontApart() ? s_front : front; }

  static SNode* BeginTaking(Front& front);
  static SMessage* EndTaking(Front& front, const SNode* node, SNode* next);

  bool HasRoom() const { return free != nullptr && free != used; }
  void AddNodes(const SNodes& fresh);
  void ReuseNodes();

  // Taken nodes stay in the chain in front of the oldest one until a poster uses them again: so
  // taking writes to no node.
  SNode* newest = nullptr;
  SNode* used = nullptr;  // from here to the oldest one nodes were used before
  SNode* free = nullptr;  // from here to the end of the chain, or to used, nodes can be used
  SPlex* blocks = nullptr;
  Front front{nullptr};  // the oldest node; null when empty, and a mark while a thread takes it

  alignas(kCacheLine) static inline Front s_front{nullptr};
  alignas(kCacheLine) static inline std::atomic<const TMessageList*> s_owner{nullptr};
  static inline SNode s_taking;  // the mark
};

inline void TMessageList::MoveFront() {
  const TMessageList* none = nullptr;
  s_owner.compare_exchange_strong(none, this);
}

inline void TMessageList::MoveFrontBack() {
  if (IsFrontApart()) s_owner.store(nullptr, std::memory_order_release);
}

// The oldest node, which is then nobody else's; null when there is none.
inline TMessageList::SNode* TMessageList::BeginTaking(Front& front) {
  for (int looks = 0;; ++looks) {
    SNode* node = front.load(std::memory_order_relaxed);
    if (node == nullptr) return nullptr;
    if (node != &s_taking &&
        front.compare_exchange_strong(node, &s_taking, std::memory_order_acquire)) {
      return node;
    }
    PauseOrSleep(looks);
  }
}

inline SMessage* TMessageList::EndTaking(Front& front, const SNode* node, SNode* next) {
  SMessage* const message = static_cast<SMessage*>(node->data);
  front.store(next, std::memory_order_release);
  return message;
}

inline SMessage* TMessageList::TakeUnlessLast() {
  SNode* const node = BeginTaking(s_front);
  if (node == nullptr) return nullptr;
  SNode* const next = __atomic_load_n(&node->next, __ATOMIC_ACQUIRE);
  if (next != nullptr) return EndTaking(s_front, node, next);
  s_front.store(node, std::memory_order_release);
  return nullptr;
}

inline SMessage* TMessageList::Take(SPlex*& emptied) {
  Front& from = TheFront();
  SNode* const node = BeginTaking(from);
  if (node == nullptr) return nullptr;
  SNode* const next = __atomic_load_n(&node->next, __ATOMIC_ACQUIRE);
  if (next == nullptr) {
    emptied = blocks;
    newest = used = free = nullptr;
    blocks = nullptr;
  }
  return EndTaking(from, node, next);
}

inline bool TMessageList::MakeRoom(SNodes fresh, bool mayGet) {
  AddNodes(fresh);
  if (!HasRoom()) ReuseNodes();
  if (!HasRoom() && mayGet) {
    fresh = SNodes();
    fresh.Get();
    AddNodes(fresh);
  }
  return HasRoom();
}

inline void TMessageList::AddNodes(const SNodes& fresh) {
  if (fresh.block == nullptr) return;
  fresh.block->next = blocks;
  blocks = fresh.block;
  if (HasRoom()) {
    SNode* last = fresh.free;
    while (last->next != nullptr) last = last->next;
    last->next = free;
  }
  free = fresh.free;
}

// Those that have been taken since it was called last.
inline void TMessageList::ReuseNodes() {
  const Front& from = TheFront();
  SNode* oldest = from.load(std::memory_order_acquire);
  for (int looks = 0; oldest == &s_taking; ++looks) {
    PauseOrSleep(looks);
    oldest = from.load(std::memory_order_acquire);
  }
  free = used;
  used = oldest;
}

inline void TMessageList::Append(SMessage* message) {
  SNode* const node = free;
  free = node->next;
  node->data = message;
  __atomic_store_n(&node->next, nullptr, __ATOMIC_RELAXED);
  if (newest == nullptr) {
    used = node;
    TheFront().store(node, std::memory_order_release);
  } else {
    __atomic_store_n(&newest->next, node, __ATOMIC_RELEASE);
  }
  newest = node;
}

}  // namespace KEST

#endif  // KEST_SRC_PLATFORM_POSIX_MESSAGE_LIST_H
