// One run: threads that find and read, and the main thread's loop that gathers what they post.

#ifndef CENSUS_CENSUS_H
#define CENSUS_CENSUS_H

#include "kest/bridge/eventfd.h"
#include "kest/string.h"
#include "manifests.h"
#include "news.h"
#include "options.h"
#include "posix.h"
#include "progress.h"
#include "walker.h"
#include "work_queue.h"
#include "worker.h"

namespace census {

class Census {
 public:
  // hidden is a folder that is not entered, or empty. The result is filled by Run.
  Census(const Options& options, const KEST::TBstr& hidden, SResult* result);
  ~Census();
  Census(const Census&) = delete;
  Census& operator=(const Census&) = delete;

  // Counts everything. False when that was impossible, with the reason in GetError.
  bool Run();

  const KEST::TBstr& GetError() const { return error; }
  // The signal that ended the run early; 0 when none did.
  int GetSignal() const { return signal; }
  unsigned int GetMilliseconds() const { return progress.GetMilliseconds(); }

 private:
  static void OnEntry(unsigned int id, void* census, void* entry);
  static void OnBytes(unsigned int id, void* census, void* bytes);
  static void OnEnded(unsigned int id, void* census, void* unused);
  static void OnInterrupt(unsigned int id, void* census, void* signal);
  static void ReceiveSignal(void* census, int signal);

  bool StartThreads();
  void WaitForThreads();
  void Fail(const KEST::TBstr& why);

  KEST::TBstr hidden;
  int workerCount;
  SResult* result;
  WorkQueue queue;
  SNews news;
  KEST::TMessageEvent messages;
  Interrupts interrupts;
  Walker walker;
  Worker workers[Options::kMaxWorkers];
  Progress progress;
  int running;  // walker and workers that have not posted their end
  int signal;
  KEST::TBstr error;
};

}  // namespace census

#endif  // CENSUS_CENSUS_H
