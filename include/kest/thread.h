// Threads, locks and conditions, counters, thread-local data, time and the system's version.
//
//   Failure    False, null, -1 or, from locks and conditions, a POSIX error number. Nothing throws.
//   Times      Waits and sleeps are in milliseconds.
//   Ownership  A TThread has one owner, who alone calls its members. Locks and conditions are for
//              sharing and have neither constructor nor destructor: Init before the first use, Term
//              after the last. So they fit static storage and plain records; once initialised they
//              are never copied.
//   Cancelling  A thread started here may be cancelled anywhere, at once. The locks that it holds
//              stay locked and what it owns leaks; a lock of the allocator or of the message queue
//              is no exception. Let threads end by themselves wherever that is possible.
//   Threads    Any, where nothing else is said.
//   Blocking   Never, where nothing else is said.
//   Cost       Constant.
//   Example    examples/threads/threads.cpp
//   See        docs/threads.md

#ifndef KEST_THREAD_H
#define KEST_THREAD_H

#include <pthread.h>
#include <time.h>

#include "kest/export.h"

namespace KEST {

// One thread, started with a function of one argument and an int result.
//
//   proc       the function to run; not null
//   arg        passed to proc, any pointer, null included; what it points to stays the caller's
//   flag       without a meaning on this platform
//   thread     a TThread, not null
//   handle     what ThreadCreate returned, never null
//   ms         in milliseconds
//   exitCode   receives what proc returned, or -1 after a cancel; may be null
//   Threads    The owner's alone.
//   Example    thread
//   See        KestCreateThread, docs/threads.md
class KEST_API TThread {
 public:
  // An object without a thread.
  //   Failure  none
  TThread();
  TThread(const TThread&) = delete;
  TThread& operator=(const TThread&) = delete;

  // Lets go of the thread: one that nobody waited for runs on by itself.
  //   Failure   none
  //   Blocking  where the thread has not yet taken its function and argument, until it has: the
  //             object may go as soon as Create has returned
  ~TThread();

  // Starts proc(arg) on a new thread. A thread started before by this object runs on by itself once
  // the new one has started.
  //   Result  true; false, with nothing started, when proc is null, without memory, or when the
  //           system refuses
  //   Cost    a thread of the system
  bool Create(int (*proc)(void*), void* arg, bool flag);

  // Suspends the thread where that is supported, which is not so on this platform.
  //   Result  always -1
  int Suspend();

  // Resumes the thread where that is supported, which is not so on this platform.
  //   Result  always -1
  int Resume();

  // Ends the thread where it stands, without running anything of its own. Its exit code is then -1.
  // The locks that it holds stay locked and what it owns leaks.
  //   Result    true; false without a thread, after WaitForExit has succeeded, or when the system
  //             refuses
  //   Blocking  until the thread has taken its function and argument, not for its end
  //   See       KEST::TThread::WaitForExit
  bool Cancel();

  // Waits for the thread's end and stores what proc returned, or -1 after a cancel.
  //   Result    true once; false, with exitCode untouched, from then on, without a thread, and when
  //             a thread waits for itself
  //   Blocking  until the thread has ended
  bool WaitForExit(int* exitCode);

  // Lets the calling thread sleep.
  //   Result    0 after the whole time, -1 when a signal ended it early
  //   Threads   any
  //   Blocking  for the time given
  static int Sleep(unsigned int ms);

  // Runs the function of a TThread with its argument on the calling thread.
  //   Result    what the function returns
  //   Threads   the new thread's
  //   Blocking  as the function does
  //   Example   None: the library makes this call.
  static int ThreadProc(void* thread);

  // Platform layer, called by the members of the same name.
  //
  //   Example  None: the library makes these calls.
  //   See      docs/threads.md

  // Starts a thread that runs ThreadProc on a TThread.
  //   Result  a handle; null without memory or when the system refuses
  static void* ThreadCreate(void* thread, bool flag);

  // Lets go of a thread, which runs on by itself when nobody has waited for it.
  //   Result    true
  //   Failure   none
  //   Blocking  until the thread has taken its function and argument
  static bool ThreadClose(void* handle);

  // Suspends a thread where that is supported, which is not so on this platform.
  //   Result  always -1
  static int ThreadSuspend(void* handle);

  // Resumes a thread where that is supported, which is not so on this platform.
  //   Result  always -1
  static int ThreadResume(void* handle);

  // Ends a thread where it stands.
  //   Result    true; false when somebody has waited for it or the system refuses
  //   Blocking  until the thread has taken its function and argument
  static bool ThreadCancel(void* handle);

  // Waits for a thread's end.
  //   exitCode  receives what the function returned, or -1 after a cancel; not null
  //   Result    true once; false from then on and when a thread waits for itself
  //   Blocking  until the thread has ended
  static bool ThreadWaitForExit(void* handle, int* exitCode);

  // Lets the calling thread sleep.
  //   Result    0 after the whole time, -1 when a signal ended it early
  //   Threads   any
  //   Blocking  for the time given
  static int ThreadSleep(unsigned int ms);

 private:
  void* handle;
  int (*proc)(void*);
  void* arg;
};

// A mutex. It is not recursive: a thread that locks it twice waits for ever. Results are POSIX
// error numbers, 0 for success. An Init that fails leaves nothing to Term.
//
//   Result     0, or a POSIX error number
//   Failure    A POSIX error number, and nothing has changed.
//   See        TCondVar, docs/threads.md
class KEST_API TCritSec {
 public:
  // Makes the mutex, before its first use.
  int Init();

  // Ends the mutex, not while it is locked.
  int Term();

  // Takes the mutex. A thread that has it already waits for ever.
  //   Blocking  until no other thread has it
  int Lock();

  // Gives the mutex back, on the thread that has it.
  int Unlock();

 protected:
  pthread_mutex_t mutex;  // The system's mutex.
};

// A condition with a mutex of its own: Lock and Unlock are the base's. A woken waiter looks again
// whether what it waits for is there, because a wait may also end for no reason.
//
//   See        TCritSec, docs/threads.md
class KEST_API TCondVar : public TCritSec {
 public:
  // Makes mutex and condition, before their first use.
  int Init();

  // Ends mutex and condition, not while a thread waits.
  int Term();

  // Waits to be woken. Called with the lock held, which is given up for the wait and held again on
  // return. The deadline is wall clock time, so setting the clock moves it. Once in a million the
  // clock and ms add up to a whole second exactly; the wait then fails at once, on purpose.
  //   ms        in milliseconds; a negative number waits for ever
  //   Result    true when woken, false when ms milliseconds have passed or the system refuses
  //   Failure   false, with the lock held
  //   Blocking  until it is woken, at most ms milliseconds
  bool Wait(int ms);

  // Wakes one waiter, if there is one; the lock need not be held. A signal without a waiter is
  // lost.
  int Signal();

 private:
  pthread_cond_t condition;
};

// A point in time: seconds since 1 January 1970, 00:00:00 UTC. 0 also stands for no valid time.
// A plain value, copied freely.
//
// Where time_t has 32 bits, times end on 19 January 2038; what lies beyond becomes -1, as it does
// for mktime. Conversions from and to local time follow the environment variable TZ; changing it
// while another thread converts is not safe.
//
//   result     receives the fields; null does nothing
//   Ownership  A plain value. Nothing is kept.
//   Threads    Any, as long as none changes TZ.
//   Width      time_t has 32 bits in the 32-bit target, and times end on 19 January 2038; it has 64
//              in the other.
//   See        docs/time.md
class KEST_API TTime {
 public:
  // The local time of these fields, as mktime takes them: numbers out of range run on into the next
  // unit.
  //   year     the full year
  //   month    1 is January
  //   day      of the month, from 1
  //   hour     from 0
  //   minute   from 0
  //   second   from 0, in seconds
  //   isDst    whether daylight saving is in force in these fields: 0 no, positive yes, negative
  //            leave it to the zone
  //   Failure  a time that does not fit gives -1
  //   Width    beyond 19 January 2038 the time is -1 in the 32-bit target
  TTime(int year, int month, int day, int hour, int minute, int second, int isDst);

  // Reads YYMMDDhhmmssZ (13 units; 50 to 99 is 19YY, 00 to 49 is 20YY) or YYYYMMDDhhmmssZ (15).
  //
  // On purpose, because stored values depend on it: MM counts from 00 for January, so "01" is
  // February and "12" January of the next year; the fields are local time, although the form ends
  // in Z, and whatever stands there is not looked at. A unit that is no digit ends the number of
  // its own field without an error.
  //   text     up to its terminator, in 16-bit units; null gives time 0
  //   Failure  text of any other length gives time 0, and a time that does not fit -1
  //   Width    beyond 19 January 2038 the time is -1 in the 32-bit target
  TTime(const unsigned short* text);

  // Breaks the time down in UTC.
  //   Failure  nothing is written when the year does not fit its field
  void GetGmtTm(tm* result) const;

  // Breaks the time down in local time.
  //   Failure  nothing is written when the year does not fit its field
  void GetLocalTm(tm* result) const;

  // The present time.
  //   Failure  none
  static TTime GetCurrentTime();

  time_t time;  // Seconds since 1 January 1970, 00:00:00 UTC.

 private:
  TTime();
};

// The operating system's name, cut to 31 units and terminated, and its version. "5.15.0-8" is 5, 15
// and 0; a missing number is 0.
struct KEST_API SSystemInfo {
  unsigned short name[32];  // The name, with a terminator.
  int majorVersion;         // The first number of the version.
  int minorVersion;         // The second number of the version.
  int buildNumber;          // The third number of the version.
  int reserved;             // Always 0.
};

}  // namespace KEST

extern "C" {

// A TThread on the heap, started as TThread::Create does it.
//   proc       the function to run; null fails
//   arg        passed to proc, any pointer, null included; what it points to stays the caller's
//   flag       without a meaning on this platform
//   Result     the thread; null when proc is null, without memory, or when the system refuses
//   Ownership  the caller's, who gives it to KestDestroyThread
//   Cost       a request for memory and a thread of the system
//   See        KestDestroyThread, TThread
KEST_API KEST::TThread* KestCreateThread(int (*proc)(void*), void* arg, bool flag);

// Frees a thread object, after the thread's end when wait is true; otherwise the thread runs on by
// itself.
//   thread     from KestCreateThread; null is ignored
//   wait       whether to wait for the thread's end
//   Failure    none
//   Ownership  the object is gone afterwards
//   Threads    the owner's
//   Blocking   with wait until the thread has ended
//   See        KestCreateThread
KEST_API void KestDestroyThread(KEST::TThread* thread, bool wait);

// Counters, which wrap at both ends. Despite their names these are no atomic step: two threads at
// once may lose a count, so callers hold a lock of theirs.
//
//   value    the counter, of the caller's; not null
//   Failure  none
//   Threads  any, under a lock of the callers'
//   See      KestAtomicIncrement, KestAtomicDecrement, TCritSec

// Adds one to a counter. Returns the new value.
KEST_API int KestAtomicIncrement(int* value);

// Subtracts one from a counter. Returns the new value.
KEST_API int KestAtomicDecrement(int* value);

// Thread-local data: each thread keeps blocks of its own under keys that the client chooses; any
// int is a key. They work between KestInitialize and KestUninitialize, outside of which they give
// null or false. A thread's blocks are freed by its KestUninitialize or by KestTlsRemoveData, not
// by its end.
//
//   key        any int, chosen by the client
//   Failure    null or false, and nothing is changed
//   Ownership  the block is the thread's, freed by its KestUninitialize or by KestTlsRemoveData
//   Threads    any: each sees its own blocks
//   Cost       constant, as a look-up in a map of 17 buckets
//   See        KestTlsAddData, KestTlsGetData, KestTlsGetAddData, KestTlsRemoveData,
//              docs/threads.md

// A new block of size zero bytes under key. A block already there is replaced and not freed: that
// is the caller's.
//   size    in bytes; for 0 it is up to the allocator whether there is a block
//   Result  the block; null without memory, or outside start and stop
KEST_API void* KestTlsAddData(int key, unsigned int size);

// The calling thread's block under key, or null.
KEST_API void* KestTlsGetData(int key);

// The calling thread's block under key, created with zero bytes when there is none.
//   size    in bytes, looked at only when the block is created
//   Result  the block; null without memory, or outside start and stop
KEST_API void* KestTlsGetAddData(int key, unsigned int size);

// Frees the calling thread's block under key.
//   Result  true; false when there was none
KEST_API bool KestTlsRemoveData(int key);

// The wall clock, for intervals: subtract two readings as unsigned 32-bit numbers. A clock that is
// set in between shows.
//
//   Failure  none
//   Threads  any
//   See      KestGetMilliseconds, KestGetMicroseconds, KestGetMicroseconds64, TTime, docs/time.md

// The clock in milliseconds, which wrap every 49.7 days.
KEST_API unsigned int KestGetMilliseconds(void);

// The clock in microseconds, which wrap every 71.6 minutes.
KEST_API unsigned int KestGetMicroseconds(void);

// The 32-bit number of KestGetMicroseconds with its sign extended: it wraps as often, and may be
// negative.
KEST_API long long KestGetMicroseconds64(void);

// The system.
//
//   See  SSystemInfo

// The operating system's name and version. Asked for once and kept. As long as the major version is
// 0, every call asks again.
//   Result     the record, never null
//   Failure    none: what the system does not tell is 0
//   Ownership  the record is the library's, neither freed nor changed by callers
//   Threads    any: the first calls may fill the record at the same time, with equal values
KEST_API KEST::SSystemInfo* KestGetSystemInfo(void);

}  // extern "C"

namespace KEST {

// Called by the library frame and the platform layer.
//
//   Failure  None: the Inits return true.
//   Result   true
//   Threads  The one that starts or stops the library, while no other is inside it.
//   Example  None: the library makes these calls.
//   See      KestInitialize, KestUninitialize

// A step of the start: nothing to do for locks.
KEST_API bool SyncInit();

// A step of the stop: nothing to do for locks.
KEST_API void SyncTerm();

// Creates the key of thread-local data, or keeps it when there is one.
//   Result   true; false when the system has no key left
//   Failure  false, and there is no key
KEST_API bool TlsInit();

// Deletes the key of thread-local data.
KEST_API void TlsTerm();

// Prepares a thread for thread-local data: nothing to do.
//   Threads  any
KEST_API bool TlsThreadInit();

// Frees the calling thread's blocks and its map. The thread's slot keeps the map's address, on
// purpose; the calls count it as no map, and a later KestTlsAddData starts afresh.
//   Threads  any, for itself
//   Cost     linear in the thread's blocks
KEST_API void TlsThreadTerm();

// A step of the start: nothing to do on this platform.
KEST_API bool SystemInit();

// A step of the stop: nothing to do on this platform.
KEST_API void SystemTerm();

// The start routine of every thread: lets it be cancelled anywhere, then runs the TThread's
// function.
//   thread    the TThread, not null
//   Result    what the function returned, as a pointer
//   Threads   the new thread's
//   Blocking  as the function does
KEST_API void* _ThreadProc(void* thread);

// The one key, whose value in each thread is its map from key to block, or null. Outside start and
// stop it is all ones, which is no key.
extern KEST_API pthread_key_t s_tlsKey;

// Asks the system for the key.
//   Result   true; false when the system has none left
//   Failure  false, and there is no key
KEST_API bool InternalTlsInit();

// Gives the key back to the system.
KEST_API void InternalTlsTerm();

// The calling thread's value under the key, or null.
//   Threads  any
KEST_API void* InternalTlsGetValue();

// Sets the calling thread's value under the key.
//   value    a map, which stays the caller's, or null
//   Result   true; false without memory, or outside start and stop
//   Failure  false, and the value is as before
//   Threads  any
KEST_API bool InternalTlsSetValue(void* value);

// Asks the platform and fills info.
//   info     receives name and version; when the version has no dot, buildNumber stays as it is
//   Threads  any
KEST_API void InternalGetSystemInfo(SSystemInfo& info);
}  // namespace KEST

#endif  // KEST_THREAD_H
