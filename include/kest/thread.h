#ifndef KEST_THREAD_H
#define KEST_THREAD_H

#include <pthread.h>
#include <time.h>
#include "kest/export.h"
namespace KEST {
class KEST_API TThread {
 public:
  TThread();
  TThread(const TThread&) = delete;
  TThread& operator=(const TThread&) = delete;
  ~TThread();
  bool Create(int (*proc)(void*), void* arg, bool flag);
  int Suspend();
  int Resume();
  bool Cancel();
  bool WaitForExit(int* exitCode);
  static int Sleep(unsigned int ms);
  static int ThreadProc(void* thread);
  // Platform layer.
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
class KEST_API TCritSec {
 public:
  int Init();
  int Term();
  int Lock();
  int Unlock();

 protected:
  pthread_mutex_t mutex;
};
class KEST_API TCondVar : public TCritSec {
 public:
  int Init();
  int Term();
  bool Wait(int ms);
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
KEST_API KEST::TThread* KestCreateThread(int (*proc)(void*), void* arg, bool flag);
KEST_API void KestDestroyThread(KEST::TThread* thread, bool wait);
KEST_API int KestAtomicIncrement(int* value);
KEST_API int KestAtomicDecrement(int* value);
KEST_API void* KestTlsAddData(int key, unsigned int size);
KEST_API void* KestTlsGetData(int key);
KEST_API void* KestTlsGetAddData(int key, unsigned int size);
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
}
// Called by the library frame and the platform layer.
namespace KEST {
KEST_API bool SyncInit();
KEST_API void SyncTerm();
KEST_API bool TlsInit();
KEST_API void TlsTerm();
KEST_API bool TlsThreadInit();
KEST_API void TlsThreadTerm();

// Nothing to start or stop on this platform. True.
KEST_API bool SystemInit();
KEST_API void SystemTerm();

KEST_API void* _ThreadProc(void* thread);
extern KEST_API pthread_key_t s_tlsKey;
KEST_API bool InternalTlsInit();
KEST_API void InternalTlsTerm();
KEST_API void* InternalTlsGetValue();
KEST_API bool InternalTlsSetValue(void* value);

// Asks the platform and fills info. When the version has no dot, buildNumber stays as it is.
KEST_API void InternalGetSystemInfo(SSystemInfo& info);
}  // namespace KEST

#endif  // KEST_THREAD_H
