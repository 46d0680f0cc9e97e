// POSIX side of TThread: a handle is an SThreadRecord. TThread has already refused null handles and
// gives an exit code to fill in.

#include <execinfo.h>
#include <pthread.h>
#include <semaphore.h>
#include <stdint.h>
#include <sys/select.h>

#include "frame/object.h"
#include "kest/thread.h"

namespace {

// What starts a thread lives here, not in the client's TThread, which may be gone before the new
// thread runs. Once the thread has opened the gate it never touches its record again, so the owner
// alone frees it.
struct SThreadRecord {
  pthread_t thread;
  bool joined = false;
  sem_t taken;  // the gate: 0 until the new thread has taken proc and arg, then 1
  int (*proc)(void*) = nullptr;
  void* arg = nullptr;
  KEST::TThread start;  // given to the start routine; runs TakeAndRun with the record

  SThreadRecord() { sem_init(&taken, 0, 0); }
  ~SThreadRecord() { sem_destroy(&taken); }
};

SThreadRecord* ToRecord(void* handle) { return static_cast<SThreadRecord*>(handle); }

int TakeAndRun(void* argument) {
  SThreadRecord* const record = ToRecord(argument);
  int (*const proc)(void*) = record->proc;
  void* const arg = record->arg;
  sem_post(&record->taken);
  return proc(arg);
}

// Returns when the new thread has opened the gate, and leaves it open. Closing and cancelling go
// through it: the record is not freed under the thread, and no cancel ends the thread before it has
// opened the gate for the other call.
void PassGate(SThreadRecord* record) {
  while (sem_wait(&record->taken) != 0) {
  }
  sem_post(&record->taken);
}

// Whether the C library has its unwinder. It loads that when it is asked to cancel a thread first,
// and ends the process when it cannot; asked for a frame, it loads it too and gives none instead.
bool HasUnwinder() {
  void* frame;
  return backtrace(&frame, 1) > 0;
}

}  // namespace

namespace KEST {

void* TThread::ThreadCreate(void* thread, bool) {
  SThreadRecord* const record = CreateObject<SThreadRecord>();
  if (record == nullptr) return nullptr;
  record->proc = static_cast<TThread*>(thread)->proc;
  record->arg = static_cast<TThread*>(thread)->arg;
  record->start.proc = TakeAndRun;
  record->start.arg = record;
  if (pthread_create(&record->thread, nullptr, _ThreadProc, &record->start) == 0) return record;
  DestroyObject(record);
  return nullptr;
}

bool TThread::ThreadClose(void* handle) {
  SThreadRecord* const record = ToRecord(handle);
  if (!record->joined) {
    PassGate(record);
    pthread_detach(record->thread);
  }
  DestroyObject(record);
  return true;
}

int TThread::ThreadSuspend(void*) { return -1; }

int TThread::ThreadResume(void*) { return -1; }

bool TThread::ThreadCancel(void* handle) {
  SThreadRecord* const record = ToRecord(handle);
  if (record->joined) return false;  // the id may belong to another thread by now
  PassGate(record);
  return HasUnwinder() && pthread_cancel(record->thread) == 0;
}

bool TThread::ThreadWaitForExit(void* handle, int* exitCode) {
  SThreadRecord* const record = ToRecord(handle);
  void* value;
  if (record->joined || pthread_join(record->thread, &value) != 0) return false;
  record->joined = true;
  *exitCode = static_cast<int>(reinterpret_cast<intptr_t>(value));  // -1 for a cancelled thread
  return true;
}

int TThread::ThreadSleep(unsigned int ms) {
  timeval span;
  span.tv_sec = static_cast<time_t>(ms / 1000);
  span.tv_usec = static_cast<suseconds_t>(ms % 1000 * 1000);
  return select(0, nullptr, nullptr, nullptr, &span);
}

void* _ThreadProc(void* thread) {
  // The former type goes nowhere: a frame that a cancel abandons keeps nothing on its stack.
  pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
  return reinterpret_cast<void*>(static_cast<intptr_t>(TThread::ThreadProc(thread)));
}

}  // namespace KEST
