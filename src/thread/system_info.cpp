#include "kest/thread.h"

#include <string.h>

#include "frame/layout.h"

namespace {

using KEST::SSystemInfo;

KEST_SIZE_IS(SSystemInfo, 80, 80);
KEST_FIELD_AT(SSystemInfo, name, 0, 0);
KEST_FIELD_AT(SSystemInfo, majorVersion, 64, 64);
KEST_FIELD_AT(SSystemInfo, minorVersion, 68, 68);
KEST_FIELD_AT(SSystemInfo, buildNumber, 72, 72);
KEST_FIELD_AT(SSystemInfo, reserved, 76, 76);

// The cache. It counts as filled when majorVersion is not 0, so that is stored last.
SSystemInfo s_info;

// True while one thread fills the cache; first calls that come meanwhile wait for it.
bool s_filling = false;

// What has not changed is not written: a caller may be reading it already.
void Fill() {
  SSystemInfo now = s_info;
  KEST::InternalGetSystemInfo(now);
  if (memcmp(&now, &s_info, sizeof(now)) == 0) return;
  memcpy(s_info.name, now.name, sizeof(now.name));
  s_info.minorVersion = now.minorVersion;
  s_info.buildNumber = now.buildNumber;
  s_info.reserved = now.reserved;
  __atomic_store_n(&s_info.majorVersion, now.majorVersion, __ATOMIC_RELEASE);
}

bool IsFilled() { return __atomic_load_n(&s_info.majorVersion, __ATOMIC_ACQUIRE) != 0; }

}  // namespace

extern "C" KEST::SSystemInfo* KestGetSystemInfo(void) {
  if (IsFilled()) return &s_info;
  while (__atomic_exchange_n(&s_filling, true, __ATOMIC_ACQUIRE)) {
  }
  if (!IsFilled()) Fill();
  __atomic_store_n(&s_filling, false, __ATOMIC_RELEASE);
  return &s_info;
}

namespace KEST {

// uname needs no preparation.
bool SystemInit() { return true; }
void SystemTerm() {}

}  // namespace KEST
