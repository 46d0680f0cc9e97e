// Threads: four of them add up the squares of 1 to 1000, a quarter each, into one total.

#include <stdio.h>

#include "kest/frame.h"
#include "kest/thread.h"

struct SRange {
  int first, last;
};

static KEST::TCritSec s_lock;
static int s_total = 0;  // guarded by s_lock

// Runs on each thread. Returns how many numbers it has added. A thread that uses more of the
// library than locks pairs KestInitialize and KestUninitialize as well, and each under the lock.
static int AddSquares(void* arg) {
  const SRange& range = *static_cast<SRange*>(arg);
  int sum = 0;
  for (int i = range.first; i <= range.last; ++i) sum += i * i;
  s_lock.Lock();
  s_total += sum;
  s_lock.Unlock();
  return range.last - range.first + 1;
}

static bool Run() {
  SRange ranges[4] = {{1, 250}, {251, 500}, {501, 750}, {751, 1000}};
  KEST::TThread threads[4];
  bool started = true;
  for (int i = 0; i < 4; ++i) started = threads[i].Create(AddSquares, &ranges[i], false) && started;

  // All that run are waited for, whatever else has failed: they use the ranges above.
  int added = 0;
  for (KEST::TThread& thread : threads) {
    int count;
    if (thread.WaitForExit(&count)) added += count;
  }
  if (!started || added != 1000) return false;
  printf("the squares of 1 to %d add up to %d\n", added, s_total);
  return true;
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  bool done = false;
  if (s_lock.Init() == 0) {  // a lock has no constructor
    done = Run();
    done = s_lock.Term() == 0 && done;
  }
  KestUninitialize();
  return done ? 0 : 1;
}
