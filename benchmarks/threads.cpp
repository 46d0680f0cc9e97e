// Locks and threads beside those of the system that they are made of.

#include <pthread.h>

#include <mutex>
#include <thread>

#include "kest/thread.h"
#include "support/row.h"

namespace {

constexpr char kLock[] = "lock and unlock";
constexpr char kThread[] = "thread, create and join";

void KestLock(benchmark::State& state) {
  KEST::TCritSec lock;
  lock.Init();
  for (auto _ : state) {
    lock.Lock();
    benchmark::ClobberMemory();
    lock.Unlock();
  }
  lock.Term();
}

void PthreadLock(benchmark::State& state) {
  pthread_mutex_t lock;
  pthread_mutex_init(&lock, nullptr);
  for (auto _ : state) {
    pthread_mutex_lock(&lock);
    benchmark::ClobberMemory();
    pthread_mutex_unlock(&lock);
  }
  pthread_mutex_destroy(&lock);
}

void StdLock(benchmark::State& state) {
  std::mutex lock;
  for (auto _ : state) {
    lock.lock();
    benchmark::ClobberMemory();
    lock.unlock();
  }
}

int Nothing(void*) { return 0; }

void KestThread(benchmark::State& state) {
  for (auto _ : state) {
    KEST::TThread thread;
    thread.Create(Nothing, nullptr, false);
    thread.WaitForExit(nullptr);
  }
}

void PthreadThread(benchmark::State& state) {
  for (auto _ : state) {
    pthread_t thread;
    pthread_create(
        &thread, nullptr, [](void*) -> void* { return nullptr; }, nullptr);
    pthread_join(thread, nullptr);
  }
}

void StdThread(benchmark::State& state) {
  for (auto _ : state) std::thread([] { Nothing(nullptr); }).join();
}

}  // namespace

void RegisterRows() {
  std::thread([] {}).join();  // locks are cheaper in a process that has had one thread only
  Row(kLock, "kest", KestLock);
  Row(kLock, "pthread", PthreadLock);
  Row(kLock, "std", StdLock);
  Row(kThread, "kest", KestThread)->MeasureProcessCPUTime();
  Row(kThread, "pthread", PthreadThread)->MeasureProcessCPUTime();
  Row(kThread, "std", StdThread)->MeasureProcessCPUTime();
}
