#include "kest/thread.h"
#include "frame/layout.h"
#include "frame/object.h"

namespace KEST {

TThread::TThread() : handle(nullptr), proc(nullptr), arg(nullptr) {
  KEST_SIZE_IS(TThread, 12, 24);
  KEST_FIELD_AT(TThread, handle, 0, 0);
  KEST_FIELD_AT(TThread, proc, 4, 8);
  KEST_FIELD_AT(TThread, arg, 8, 16);
}

TThread::~TThread() {
  if (handle != nullptr) ThreadClose(handle);
}

bool TThread::Create(int (*function)(void*), void* argument, bool flag) {
  if (function == nullptr) return false;
  proc = function;
  arg = argument;
  void* const created = ThreadCreate(this, flag);
  if (created == nullptr) return false;
  // A thread that this object started before runs on by itself.
  if (handle != nullptr) ThreadClose(handle);
  handle = created;
  return true;
}

int TThread::Suspend() { return handle != nullptr ? ThreadSuspend(handle) : -1; }

int TThread::Resume() { return handle != nullptr ? ThreadResume(handle) : -1; }

bool TThread::Cancel() { return handle != nullptr && ThreadCancel(handle); }

bool TThread::WaitForExit(int* exitCode) {
  if (handle == nullptr) return false;
  int unused;
  return ThreadWaitForExit(handle, exitCode != nullptr ? exitCode : &unused);
}

int TThread::Sleep(unsigned int ms) { return ThreadSleep(ms); }

int TThread::ThreadProc(void* thread) {
  const TThread* const self = static_cast<const TThread*>(thread);
  return self->proc(self->arg);
}

}  // namespace KEST

extern "C" {

KEST::TThread* KestCreateThread(int (*proc)(void*), void* arg, bool flag) {
  KEST::TThread* const thread = KEST::CreateObject<KEST::TThread>();
  if (thread == nullptr || thread->Create(proc, arg, flag)) return thread;
  KEST::DestroyObject(thread);
  return nullptr;
}

void KestDestroyThread(KEST::TThread* thread, bool wait) {
  if (thread == nullptr) return;
  if (wait) thread->WaitForExit(nullptr);
  KEST::DestroyObject(thread);
}

}  // extern "C"
