// The counters. They are a read, an addition and a write, not one atomic step: callers serialise
// their use. The relaxed accesses cost nothing and keep a caller's mistake from being more than a
// lost count.

#include "kest/thread.h"

namespace {

// Wraps at both ends of the range.
int AddTo(int* value, int difference) {
  int sum;
  (void)__builtin_add_overflow(__atomic_load_n(value, __ATOMIC_RELAXED), difference, &sum);
  __atomic_store_n(value, sum, __ATOMIC_RELAXED);
  return sum;
}

}  // namespace

extern "C" {

int KestAtomicIncrement(int* value) { return AddTo(value, 1); }
int KestAtomicDecrement(int* value) { return AddTo(value, -1); }

}  // extern "C"

namespace KEST {

// Locks and conditions start one by one, each where it is used.
bool SyncInit() { return true; }
void SyncTerm() {}

}  // namespace KEST
