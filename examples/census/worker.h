// Digests files, one thread's worth.

#ifndef CENSUS_WORKER_H
#define CENSUS_WORKER_H

#include "entry.h"
#include "kest/string.h"
#include "kest/thread.h"
#include "news.h"
#include "work_queue.h"

namespace census {

class Worker {
 public:
  Worker() : queue(nullptr), news() {}
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  // Starts the thread. queue must outlive it; root is copied, since no TBstr is shared by threads.
  bool Start(const KEST::TBstr& root, WorkQueue* queue, const SNews& news);
  void WaitForExit() { thread.WaitForExit(nullptr); }

 private:
  static int ThreadProc(void* self);
  void Work();
  bool Examine(Entry* entry);
  bool Digest(const KEST::TBstr& spec, Entry* entry);
  bool Read(const KEST::TBstr& spec, Entry* entry);
  void Announce(Entry* entry, long long read);

  KEST::TBstr root;
  WorkQueue* queue;
  SNews news;
  KEST::TThread thread;
};

}  // namespace census

#endif  // CENSUS_WORKER_H
