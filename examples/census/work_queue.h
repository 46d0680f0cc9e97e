// The entries on their way from the walker to the workers.

#ifndef CENSUS_WORK_QUEUE_H
#define CENSUS_WORK_QUEUE_H

#include "entry.h"
#include "kest/bridge/lock.h"
#include "kest/collections.h"
#include "tokens.h"

namespace census {

// First in, first out, for any number of threads on both sides. The walker waits when the queue is
// full, a worker when it is empty; nobody polls.
class WorkQueue {
 public:
  explicit WorkQueue(int capacity);
  ~WorkQueue();
  WorkQueue(const WorkQueue&) = delete;
  WorkQueue& operator=(const WorkQueue&) = delete;

  // Hands an entry over, waiting for room. False when the queue is abandoned: it stays the
  // caller's.
  bool Put(Entry* entry);
  // The next entry, now the caller's, waiting for one; null when there will be none.
  Entry* Take();

  // Nothing more will be put.
  void Finish() { filled.Close(); }
  // Ends all waiting; what is still queued is dropped.
  void Abandon();
  bool IsAbandoned() { return room.IsRevoked(); }

 private:
  Tokens room;
  Tokens filled;
  KEST::TMutex lock;  // guards entries
  KEST::TPtrList entries;
};

}  // namespace census

#endif  // CENSUS_WORK_QUEUE_H
