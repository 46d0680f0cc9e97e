// The preload library that answers the library's calls of the system, and the switch that the test
// program has for it.

#ifndef KEST_TESTS_PLATFORM_REFUSALS_H
#define KEST_TESTS_PLATFORM_REFUSALS_H

#include <atomic>

namespace kest_test {

// One way in which one function of the system fails. One that may fail in several has several.
struct Way {
  const char* function;
  const char* how;  // what sets it apart from the function's other ways, or ""
  int error;        // errno, or the result where that is the error
};

constexpr int kMaxWays = 64;

// What the system has given out and has to get back.
enum Kind {
  kStreams,
  kGlobs,
  kModules,
  kThreads,
  kKeys,
  kMutexes,
  kConditions,
  kSemaphores,
  kKinds
};

// Between the preload library, which owns it, and the test program.
struct Refusals {
  const Way* ways;
  int wayCount;

  std::atomic<bool> on = false;            // only then calls are counted and refused
  std::atomic<int> way = 0;                // the way to refuse in, an index
  std::atomic<int> call = 0;               // the call to refuse, 1 is the first, or 0
  std::atomic<bool> allFromThere = false;  // that call and all later ones, not it alone
  std::atomic<int> refused = 0;            // calls refused so far
  std::atomic<int> calls[kMaxWays] = {};   // for each way, those of its function so far
  std::atomic<int> held[kKinds] = {};      // given out and not got back, on or not

  // Called before a true wait for a condition, with the lock held; it may be null.
  std::atomic<void (*)()> beforeWait = nullptr;

  // The module that the last refused dlclose was to unload, for as long as it is still there.
  std::atomic<void*> keptModule = nullptr;
};

}  // namespace kest_test

// The preload library's one own symbol: "kest_test_refusals".
extern "C" kest_test::Refusals kest_test_refusals;

#endif  // KEST_TESTS_PLATFORM_REFUSALS_H
