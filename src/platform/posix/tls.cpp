// POSIX side of the thread-local data registry: one thread-specific key. It has no destructor
// function, so nothing is freed behind the registry's back when a thread ends.

#include <pthread.h>

#include "kest/thread.h"

namespace {

// No key that the system hands out.
constexpr pthread_key_t kNoKey = static_cast<pthread_key_t>(-1);

}  // namespace

namespace KEST {

pthread_key_t s_tlsKey = kNoKey;

bool InternalTlsInit() {
  if (s_tlsKey != kNoKey) return true;
  pthread_key_t key;
  if (pthread_key_create(&key, nullptr) != 0) return false;
  s_tlsKey = key;
  return true;
}

void InternalTlsTerm() {
  if (s_tlsKey == kNoKey) return;
  pthread_key_delete(s_tlsKey);
  s_tlsKey = kNoKey;
}

void* InternalTlsGetValue() { return s_tlsKey != kNoKey ? pthread_getspecific(s_tlsKey) : nullptr; }

bool InternalTlsSetValue(void* value) {
  return s_tlsKey != kNoKey && pthread_setspecific(s_tlsKey, value) == 0;
}

}  // namespace KEST
