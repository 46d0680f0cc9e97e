#include "work_queue.h"

namespace census {

namespace {

constexpr int kEntriesPerBlock = 64;

}  // namespace

WorkQueue::WorkQueue(int capacity) : room(capacity), filled(0), entries(kEntriesPerBlock) {}

WorkQueue::~WorkQueue() {
  while (!entries.IsEmpty()) delete static_cast<Entry*>(entries.RemoveHead());
}

bool WorkQueue::Put(Entry* entry) {
  if (!room.Take()) return false;
  {
    KEST::TLockGuard guard(lock);
    if (entries.AddTail(entry) == nullptr) return false;
  }
  filled.Give();
  return true;
}

Entry* WorkQueue::Take() {
  if (!filled.Take()) return nullptr;
  Entry* entry;
  {
    KEST::TLockGuard guard(lock);
    entry = static_cast<Entry*>(entries.RemoveHead());
  }
  room.Give();
  return entry;
}

void WorkQueue::Abandon() {
  room.Revoke();
  filled.Revoke();
}

}  // namespace census
