// A thread's use of Kest, from its first call to its last.

#ifndef CENSUS_THREAD_SCOPE_H
#define CENSUS_THREAD_SCOPE_H

namespace census {

// Every thread but the first holds one while it runs. Leaving releases the thread's blocks in the
// thread-local registry. The library counts its users without a lock, so the scopes take turns.
class ThreadScope {
 public:
  // Called by the first thread, after its own KestInitialize and before its KestUninitialize.
  static void Setup();
  static void Teardown();

  ThreadScope();
  ~ThreadScope();
  ThreadScope(const ThreadScope&) = delete;
  ThreadScope& operator=(const ThreadScope&) = delete;
};

}  // namespace census

#endif  // CENSUS_THREAD_SCOPE_H
