// Messages on their way from posters to the consumer, in blocks that are used over and over. The
// two ends share no lock: posters hold the queue's, the consumer's end has a mark of its own. So
// one core posts while another takes, and they meet only where a message changes hands.
//
// It keeps memory while it is empty, and so is for the default hooks alone.

#ifndef KEST_SRC_PLATFORM_POSIX_MESSAGE_LANE_H
#define KEST_SRC_PLATFORM_POSIX_MESSAGE_LANE_H

#include <stddef.h>

#include <atomic>

#include "frame/object.h"
#include "platform/posix/cores.h"

namespace KEST {

struct SMessage {
  unsigned int id;
  void* param1;
  void* param2;
};

// Aligned like its members, which KestMemAlloc does not do.
class TMessageLane {
 public:
  TMessageLane() = default;
  TMessageLane(const TMessageLane&) = delete;
  TMessageLane& operator=(const TMessageLane&) = delete;

  // Drops the messages that are left.
  ~TMessageLane();

  // Takes the first block. False without memory.
  bool Init();

  // Appends. The posters' lock is held. False without memory, with everything as it was.
  bool Post(const SMessage& message);

  // Whether all that was posted has been taken. The posters' lock is held. While another thread
  // takes the last one, it may still say no.
  bool IsEmpty() const { return posted == taken.load(std::memory_order_acquire); }

  // Takes the oldest message, from any thread. False, with message as it was, when there is none.
  bool Take(SMessage& message);

 private:
  struct SSlot {
    SMessage message;
    std::atomic<bool> filled;  // until its block is used again
  };

  static constexpr unsigned int kSlots = 126;  // two kilobytes a block in the 32-bit target

  // The slots come first, so that in the 32-bit target none crosses cache lines.
  struct SBlock {
    SSlot slots[kSlots] = {};
    std::atomic<SBlock*> next{nullptr};
  };

  SBlock* FreshBlock();
  void Recycle(SBlock* block);
  SSlot* OldestFilled();
  void BeginTaking();
  void EndTaking() { taking.store(false, std::memory_order_release); }

  // The posters' end.
  alignas(kCacheLine) SBlock* postBlock = nullptr;
  unsigned int postSlot = 0;
  size_t posted = 0;

  // From the consumer's end to the posters': a block to use again, and how many messages were taken
  // when the lane was last found empty.
  alignas(kCacheLine) std::atomic<SBlock*> spare{nullptr};
  std::atomic<size_t> taken{0};

  // The consumer's end, which belongs to the thread that has set the mark.
  alignas(kCacheLine) std::atomic<bool> taking{false};
  SBlock* takeBlock = nullptr;
  unsigned int takeSlot = 0;
  size_t takes = 0;
};

inline TMessageLane::~TMessageLane() {
  DestroyObject(spare.load(std::memory_order_acquire));
  while (takeBlock != nullptr) {
    SBlock* const block = takeBlock;
    takeBlock = block->next.load(std::memory_order_acquire);
    DestroyObject(block);
  }
}

inline bool TMessageLane::Init() {
  postBlock = takeBlock = CreateObject<SBlock>();
  return postBlock != nullptr;
}

inline bool TMessageLane::Post(const SMessage& message) {
  if (postSlot == kSlots) {
    SBlock* const block = FreshBlock();
    if (block == nullptr) return false;
    postBlock->next.store(block, std::memory_order_release);
    postBlock = block;
    postSlot = 0;
  }
  SSlot& slot = postBlock->slots[postSlot++];
  slot.message = message;
  ++posted;
  slot.filled.store(true, std::memory_order_release);
  return true;
}

inline bool TMessageLane::Take(SMessage& message) {
  BeginTaking();
  const SSlot* const slot = OldestFilled();
  if (slot != nullptr) {
    message = slot->message;
    ++takeSlot;
    ++takes;
    if (OldestFilled() == nullptr) taken.store(takes, std::memory_order_release);
  }
  EndTaking();
  return slot != nullptr;
}

// The slots are cleared here, by the end that writes to them next, so that they change from core to
// core no more often than they have to.
inline TMessageLane::SBlock* TMessageLane::FreshBlock() {
  SBlock* const block = spare.exchange(nullptr, std::memory_order_acquire);
  if (block == nullptr) return CreateObject<SBlock>();
  block->next.store(nullptr, std::memory_order_relaxed);
  for (SSlot& slot : block->slots) slot.filled.store(false, std::memory_order_relaxed);
  return block;
}

// One is kept: in the steady state as many blocks are emptied as filled.
inline void TMessageLane::Recycle(SBlock* block) {
  DestroyObject(spare.exchange(block, std::memory_order_acq_rel));
}

// The slot of the oldest message, or null.
inline TMessageLane::SSlot* TMessageLane::OldestFilled() {
  if (takeSlot == kSlots) {
    SBlock* const next = takeBlock->next.load(std::memory_order_acquire);
    if (next == nullptr) return nullptr;
    Recycle(takeBlock);
    takeBlock = next;
    takeSlot = 0;
  }
  SSlot& slot = takeBlock->slots[takeSlot];
  return slot.filled.load(std::memory_order_acquire) ? &slot : nullptr;
}

// There is one consumer, so hardly anybody ever waits here.
inline void TMessageLane::BeginTaking() {
  for (int looks = 0; taking.exchange(true, std::memory_order_acquire); ++looks) {
    PauseOrSleep(looks);
  }
}

}  // namespace KEST

#endif  // KEST_SRC_PLATFORM_POSIX_MESSAGE_LANE_H
