#include "work_queue.h"

namespace census {

namespace {

constexpr int kEntriesPerBlock = 64;

}  // namespace

WorkQueue::WorkQueue(int capacity) : room(capacity), filled(0), entries(kEntriesPerBlock) {
  lock.Init();
}

WorkQueue::~WorkQueue() {
  while (!entries.IsEmpty()) delete static_cast<Entry*>(entries.RemoveHead());
  lock.Term();
}

bool WorkQueue::Put(Entry* entry) {
  if (!room.Take()) return false;
  lock.Lock();
  const bool added = entries.AddTail(entry) != nullptr;
  lock.Unlock();
  if (!added) return false;
  filled.Give();
  return true;
}

Entry* WorkQueue::Take() {
  if (!filled.Take()) return nullptr;
  lock.Lock();
  Entry* entry = static_cast<Entry*>(entries.RemoveHead());
  lock.Unlock();
  room.Give();
  return entry;
}

void WorkQueue::Abandon() {
  room.Revoke();
  filled.Revoke();
}

}  // namespace census
