// Finds every name in the tree, on a thread of its own.

#ifndef CENSUS_WALKER_H
#define CENSUS_WALKER_H

#include "entry.h"
#include "kest/collections.h"
#include "kest/file.h"
#include "kest/string.h"
#include "kest/thread.h"
#include "news.h"
#include "work_queue.h"

namespace census {

// One folder after the other, never recursing: a folder's own names first, then the folders below
// it. Directories go straight to the census, everything else to the workers.
class Walker {
 public:
  Walker() : queue(nullptr), news(), failed(false) {}
  ~Walker();
  Walker(const Walker&) = delete;
  Walker& operator=(const Walker&) = delete;

  // Starts the thread. An empty pattern takes every name; hidden is a folder that is not entered.
  bool Start(const KEST::TBstr& root, const KEST::TBstr& pattern, const KEST::TBstr& hidden,
             WorkQueue* queue, const SNews& news);
  void WaitForExit() { thread.WaitForExit(nullptr); }
  // After the exit: the walk ended early for want of memory.
  bool HasFailed() const { return failed; }

 private:
  enum { kFolders = 1, kOthers = 2 };

  static int ThreadProc(void* self);
  void Walk();
  bool List(Entry* folder);
  bool Search(const KEST::TBstr& spec, const Entry& folder, int wanted, bool* listed);
  bool AddFolder(Entry* folder);
  bool AddOther(Entry* entry);
  void DivideShare(Entry* folder, int folders);

  KEST::TBstr root, pattern, hidden;
  WorkQueue* queue;
  SNews news;
  KEST::TPtrList pending;  // folders still to be listed
  KEST::TThread thread;
  bool failed;
};

}  // namespace census

#endif  // CENSUS_WALKER_H
