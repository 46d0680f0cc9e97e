// POSIX side of TCritSec: a mutex with default attributes.

#include <pthread.h>

#include "frame/layout.h"
#include "kest/thread.h"

namespace KEST {

int TCritSec::Init() {
  KEST_SIZE_IS(TCritSec, 24, 40);
  KEST_FIELD_AT(TCritSec, mutex, 0, 0);
  return pthread_mutex_init(&mutex, nullptr);
}

int TCritSec::Term() { return pthread_mutex_destroy(&mutex); }

int TCritSec::Lock() { return pthread_mutex_lock(&mutex); }

int TCritSec::Unlock() { return pthread_mutex_unlock(&mutex); }

}  // namespace KEST
