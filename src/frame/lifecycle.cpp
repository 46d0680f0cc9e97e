// Start and stop of all subsystems, by reference count.

#include "kest/digest.h"
#include "kest/frame.h"
#include "kest/message.h"
#include "kest/thread.h"
#include "string/bstr_block.h"

namespace {

// KestInitialize calls that no KestUninitialize has balanced yet. Changed without a lock: the
// first start and the last stop belong to one thread.
int s_initCount = 0;

int InitCount() { return __atomic_load_n(&s_initCount, __ATOMIC_RELAXED); }

bool StartAll(KEST::SAllocator* allocator) {
  return KEST::MemInit(allocator) && KEST::SyncInit() && KEST::TlsInit() && KEST::TlsThreadInit() &&
         KEST::SystemInit() && KEST::BstrInit() && KEST::DebugInit() && KEST::MessageInit() &&
         KEST::RandInit();
}

void StopAll() {
  KEST::RandTerm();
  KEST::MessageTerm();
  KEST::DebugTerm();
  KEST::BstrTerm();
  KEST::SystemTerm();
  KEST::TlsThreadTerm();
  KEST::TlsTerm();
  KEST::SyncTerm();
  KEST::StopKeepingBlocks();
  KEST::MemTerm();
  KEST::PSTerm();
}

}  // namespace

extern "C" {

int KestInitialize(KEST::SAllocator* allocator) {
  if (InitCount() != 0) {
    KEST::TlsThreadInit();
  } else if (!StartAll(allocator)) {
    return 0;  // what has started stays started; each step tolerates the next attempt
  }
  KestAtomicIncrement(&s_initCount);
  KEST::StartKeepingBlocks();
  return 1;
}

void KestUninitialize(void) {
  if (InitCount() <= 0) return;
  if (KestAtomicDecrement(&s_initCount) >= 1) {
    KEST::TlsThreadTerm();
    KEST::StopKeepingBlocks();
  } else {
    StopAll();
  }
}

}  // extern "C"
