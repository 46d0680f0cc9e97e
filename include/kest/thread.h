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
class KEST_API TTime {
 public:
  TTime(int year, int month, int day, int hour, int minute, int second, int isDst);
  TTime(const unsigned short* text);
  void GetGmtTm(tm* result) const;
  void GetLocalTm(tm* result) const;
  static TTime GetCurrentTime();
  time_t time;

 private:
  TTime();
};
struct KEST_API SSystemInfo {
  unsigned short name[32];
  int majorVersion;
  int minorVersion;
  int buildNumber;
  int reserved;
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
KEST_API unsigned int KestGetMilliseconds(void);
KEST_API unsigned int KestGetMicroseconds(void);
KEST_API long long KestGetMicroseconds64(void);
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
KEST_API bool SystemInit();
KEST_API void SystemTerm();
KEST_API void* _ThreadProc(void* thread);
extern KEST_API pthread_key_t s_tlsKey;
KEST_API bool InternalTlsInit();
KEST_API void InternalTlsTerm();
KEST_API void* InternalTlsGetValue();
KEST_API bool InternalTlsSetValue(void* value);
KEST_API void InternalGetSystemInfo(SSystemInfo& info);
}  // namespace KEST

#endif  // KEST_THREAD_H
