// The calls of kest/thread.h.

#include "kest/thread.h"

#include "check.h"
#include "kest/frame.h"
#include "kest/string.h"

//! [thread]
// Runs on the new thread; what it returns is the exit code.
static int Double(void* arg) { return 2 * *static_cast<int*>(arg); }
//! [thread]

static int Forever(void*) {
  for (;;) KEST::TThread::Sleep(1000);
}

static void Threads() {
  //! [thread]
  int number = 21;
  KEST::TThread thread;
  Check(thread.Create(Double, &number, false));
  int code;
  Check(thread.WaitForExit(&code) && code == 42);
  Check(!thread.WaitForExit(&code));  // it succeeds once
  //! [thread]

  //! [thread-heap]
  KEST::TThread* worker = KestCreateThread(Double, &number, false);
  Check(worker != nullptr);
  KestDestroyThread(worker, true);  // waits for its end
  //! [thread-heap]

  //! [thread-cancel]
  KEST::TThread endless;
  Check(endless.Create(Forever, nullptr, false));
  Check(endless.Suspend() == -1 && endless.Resume() == -1);  // not on this platform
  Check(endless.Cancel());  // what it holds stays locked: a last resort
  Check(endless.WaitForExit(&code) && code == -1);
  //! [thread-cancel]

  //! [thread-sleep]
  Check(KEST::TThread::Sleep(1) == 0);  // -1 when a signal ended it early
  //! [thread-sleep]
}

static void Locks() {
  //! [lock]
  KEST::TCritSec lock;  // no constructor: Init before the first use
  Check(lock.Init() == 0);
  Check(lock.Lock() == 0);
  // What only one thread at a time may do.
  Check(lock.Unlock() == 0);
  Check(lock.Term() == 0);
  //! [lock]

  //! [condition]
  KEST::TCondVar ready;
  bool done = false;
  Check(ready.Init() == 0);
  ready.Lock();
  done = true;  // what another thread would do, under the lock
  ready.Signal();
  while (!done) ready.Wait(-1);   // for ever; look again after each
  Check(!ready.Wait(1) || done);  // false after a millisecond without a signal
  ready.Unlock();
  Check(ready.Term() == 0);
  //! [condition]

  //! [counter]
  int users = 0;  // under a lock when threads share it
  Check(KestAtomicIncrement(&users) == 1);
  Check(KestAtomicDecrement(&users) == 0);
  //! [counter]
}

static void ThreadData() {
  //! [thread-data]
  constexpr int kKey = 7;                                             // any int of the program's
  int* count = static_cast<int*>(KestTlsAddData(kKey, sizeof(int)));  // zero bytes
  Check(count != nullptr && *count == 0);
  *count = 3;
  Check(KestTlsGetData(kKey) == count);
  Check(KestTlsGetAddData(kKey, sizeof(int)) == count);  // made when there is none
  Check(KestTlsRemoveData(kKey) && KestTlsGetData(kKey) == nullptr);
  //! [thread-data]
}

static void Times() {
  //! [time]
  const KEST::TTime stamp(2024, 2, 29, 12, 30, 0, -1);  // local time
  tm fields;
  stamp.GetLocalTm(&fields);
  Check(fields.tm_hour == 12 && fields.tm_mday == 29);
  stamp.GetGmtTm(&fields);
  Check(fields.tm_min == 30 || stamp.time != -1);
  Check(KEST::TTime(KEST_TEXT("240129123000Z")).time == stamp.time);  // months from 00, local time
  Check(KEST::TTime::GetCurrentTime().time > stamp.time);
  //! [time]

  //! [clock]
  const unsigned int begin = KestGetMilliseconds();
  const unsigned int fine = KestGetMicroseconds();
  const long long wide = KestGetMicroseconds64();  // the same 32 bits with their sign
  Check(KestGetMilliseconds() - begin < 60000);    // as unsigned numbers
  Check(static_cast<unsigned int>(wide) - fine < 60000000);
  //! [clock]

  //! [system]
  const KEST::SSystemInfo* system = KestGetSystemInfo();  // the library's record
  Check(system->name[0] != 0 && system->majorVersion > 0);
  //! [system]
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  Threads();
  Locks();
  ThreadData();
  Times();
  KestUninitialize();
  puts("as shown");
  return 0;
}
