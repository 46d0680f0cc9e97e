// Threads, locks and conditions, counters, thread-local data, time and the system's version.
//
//   Results    Failure is false, null, -1 or, from locks and conditions, a POSIX error number.
//              Nothing throws.
//   Times      Waits and sleeps are in milliseconds.
//   Ownership  A TThread has one owner, who alone calls its members. Locks and conditions are for
//              sharing and have neither constructor nor destructor: Init before the first use, Term
//              after the last. So they fit static storage and plain records; once initialised they
//              are never copied.
//   Cancelling A thread started here may be cancelled anywhere, at once. The locks that it holds
//              stay locked and what it owns leaks; a lock of the allocator or of the message queue
//              is no exception. Let threads end by themselves wherever that is possible.
//   Example    examples/threads/threads.cpp

#ifndef KEST_THREAD_H
#define KEST_THREAD_H

#include <pthread.h>
#include <time.h>

#include "kest/export.h"

namespace KEST {

// One thread, started with a function of one argument and an int result.
class KEST_API TThread {
 public:
  // No thread yet.
  TThread();
  TThread(const TThread&) = delete;
  TThread& operator=(const TThread&) = delete;

  // A thread that nobody waited for runs on by itself. Where it has not yet taken its function and
  // argument, the destructor waits for that moment: the object may go as soon as Create has
  // returned.
  ~TThread();

  // Starts proc(arg) on a new thread. flag has no meaning on this platform. False, with nothing
  // started, when proc is null, without memory, or when the system refuses. A thread started before
  // by this object runs on by itself once the new one has started.
  bool Create(int (*proc)(void*), void* arg, bool flag);

  // Not supported on this platform: always -1.
  int Suspend();
  int Resume();

  // Ends the thread where it stands, without running anything of its own; see above. Its exit code
  // is then -1. False without a thread, after WaitForExit has succeeded, or when the system
  // refuses. The call does not wait for the end.
  bool Cancel();

  // Waits for the thread's end and stores what proc returned, or -1 after a cancel; exitCode may be
  // null. It succeeds once: false, with exitCode untouched, from then on, without a thread, and
  // when a thread waits for itself.
  bool WaitForExit(int* exitCode);

  // Lets the calling thread sleep. 0 after the whole time, -1 when a signal ended it early.
  static int Sleep(unsigned int ms);

  // Runs the function of a TThread with its argument on the calling thread.
  static int ThreadProc(void* thread);

  // Platform layer: thread is the TThread to start, a handle what ThreadCreate returned, never
  // null.
  static void* ThreadCreate(void* thread, bool flag);
  static bool ThreadClose(void* handle);
  static int ThreadSuspend(void* handle);
  static int ThreadResume(void* handle);
  static bool ThreadCancel(void* handle);
  static bool ThreadWaitForExit(void* handle, int* exitCode);
  static int ThreadSleep(unsigned int ms);

 private:
  void* handle;
  int (*proc)(void*);
  void* arg;
};

// A mutex. It is not recursive: a thread that locks it twice waits for ever. Results are POSIX
// error numbers, 0 for success. An Init that fails leaves nothing to Term.
class KEST_API TCritSec {
 public:
  int Init();
  int Term();  // not while it is locked
  int Lock();
  int Unlock();

 protected:
  pthread_mutex_t mutex;
};

// A condition with a mutex of its own: Lock and Unlock are the base's. A woken waiter looks again
// whether what it waits for is there, because a wait may also end for no reason.
class KEST_API TCondVar : public TCritSec {
 public:
  int Init();
  int Term();  // not while a thread waits

  // Called with the lock held, which is given up for the wait and held again on return. True when
  // woken, false when ms milliseconds have passed or the system refuses; a negative ms waits for
  // ever. The deadline is wall clock time, so setting the clock moves it. Once in a million the
  // clock and ms add up to a whole second exactly; the wait then fails at once, on purpose.
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
class KEST_API TTime {
 public:
  // The local time of these fields, as mktime takes them: numbers out of range run on into the next
  // unit. month 1 is January, year the full year. isDst says whether daylight saving is in force in
  // these fields: 0 no, positive yes, negative leave it to the zone. A time that does not fit gives
  // -1.
  TTime(int year, int month, int day, int hour, int minute, int second, int isDst);

  // Reads YYMMDDhhmmssZ (13 units; 50 to 99 is 19YY, 00 to 49 is 20YY) or YYYYMMDDhhmmssZ (15).
  // Null and text of any other length give time 0.
  //
  // On purpose, because stored values depend on it: MM counts from 00 for January, so "01" is
  // February and "12" January of the next year; the fields are local time, although the form ends
  // in Z, and whatever stands there is not looked at. A unit that is no digit ends the number of
  // its own field without an error.
  TTime(const unsigned short* text);

  // Broken down, in UTC and in local time. Nothing is written when result is null or the year does
  // not fit its field.
  void GetGmtTm(tm* result) const;
  void GetLocalTm(tm* result) const;

  // Now.
  static TTime GetCurrentTime();

  time_t time;

 private:
  TTime();
};

// The operating system's name, cut to 31 units and terminated, and its version. "5.15.0-8" is 5, 15
// and 0; a missing number is 0.
struct KEST_API SSystemInfo {
  unsigned short name[32];
  int majorVersion;
  int minorVersion;
  int buildNumber;
  int reserved;  // 0
};

}  // namespace KEST

extern "C" {

// A TThread on the heap, started as TThread::Create does it; null when that fails. It is given back
// to KestDestroyThread.
KEST_API KEST::TThread* KestCreateThread(int (*proc)(void*), void* arg, bool flag);

// Frees a thread object, after the thread's end when wait is true; otherwise the thread runs on by
// itself. Null is ignored.
KEST_API void KestDestroyThread(KEST::TThread* thread, bool wait);

// Add or subtract one and return the new value, which wraps at both ends. Despite their names they
// are no atomic step: two threads at once may lose a count, so callers hold a lock of theirs.
KEST_API int KestAtomicIncrement(int* value);
KEST_API int KestAtomicDecrement(int* value);

// Thread-local data: each thread keeps blocks of its own under keys that the client chooses; any
// int is a key. They work between KestInitialize and KestUninitialize, outside of which they give
// null or false. A thread's blocks are freed by its KestUninitialize or by KestTlsRemoveData, not
// by its end.

// A new block of size zero bytes under key, or null without memory. A block already there is
// replaced and not freed: that is the caller's. For size 0 it is up to the allocator whether there
// is a block.
KEST_API void* KestTlsAddData(int key, unsigned int size);

// The calling thread's block under key, or null.
KEST_API void* KestTlsGetData(int key);

// The same, with a block created when there is none. Only then size is looked at.
KEST_API void* KestTlsGetAddData(int key, unsigned int size);

// Frees the block under key. False when there was none.
KEST_API bool KestTlsRemoveData(int key);

// The wall clock, for intervals: subtract two readings as unsigned 32-bit numbers. The milliseconds
// wrap every 49.7 days, the microseconds every 71.6 minutes. The 64-bit form is the same 32-bit
// number with its sign extended: it wraps as often, and may be negative. A clock that is set in
// between shows. Safe from any thread.
KEST_API unsigned int KestGetMilliseconds(void);
KEST_API unsigned int KestGetMicroseconds(void);
KEST_API long long KestGetMicroseconds64(void);

// The operating system's name and version. Asked for once and kept; the record is the library's,
// neither freed nor changed by callers. As long as the major version is 0, every call asks again.
// Safe from any thread: the first calls may fill the record at the same time, with equal values.
KEST_API KEST::SSystemInfo* KestGetSystemInfo(void);

}  // extern "C"

// Called by the library frame and the platform layer.

namespace KEST {

// Nothing to start or stop. True.
KEST_API bool SyncInit();
KEST_API void SyncTerm();

// Creates and deletes the key. A second TlsInit keeps the key; false when the system has none left.
KEST_API bool TlsInit();
KEST_API void TlsTerm();

// Nothing to start for a thread: true. The stop frees the calling thread's blocks and its map. The
// thread's slot keeps the map's address, on purpose; the calls count it as no map, and a later
// KestTlsAddData starts afresh.
KEST_API bool TlsThreadInit();
KEST_API void TlsThreadTerm();

// Nothing to start or stop on this platform. True.
KEST_API bool SystemInit();
KEST_API void SystemTerm();

// The start routine of every thread: lets it be cancelled anywhere, then runs the TThread's
// function.
KEST_API void* _ThreadProc(void* thread);

// The one key, whose value in each thread is its map from key to block, or null. Outside start and
// stop it is all ones, which is no key.
extern KEST_API pthread_key_t s_tlsKey;
KEST_API bool InternalTlsInit();
KEST_API void InternalTlsTerm();
KEST_API void* InternalTlsGetValue();
KEST_API bool InternalTlsSetValue(void* value);

// Asks the platform and fills info. When the version has no dot, buildNumber stays as it is.
KEST_API void InternalGetSystemInfo(SSystemInfo& info);
}  // namespace KEST

#endif  // KEST_THREAD_H
