#include "kest/thread.h"

#include "frame/layout.h"

namespace {

using KEST::SSystemInfo;

KEST_SIZE_IS(SSystemInfo, 80, 80);
KEST_FIELD_AT(SSystemInfo, name, 0, 0);
KEST_FIELD_AT(SSystemInfo, majorVersion, 64, 64);
KEST_FIELD_AT(SSystemInfo, minorVersion, 68, 68);
KEST_FIELD_AT(SSystemInfo, buildNumber, 72, 72);
KEST_FIELD_AT(SSystemInfo, reserved, 76, 76);

// Filled without a lock. It counts as filled when majorVersion is not 0, so that is stored last.
SSystemInfo s_info;

// Stores a value that has changed, unless another thread was first: what a caller may be reading
// already is not written again.
template <typename T>
void Publish(T& field, T before, T now) {
  if (before == now) return;
  __atomic_compare_exchange_n(&field, &before, now, false, __ATOMIC_RELEASE, __ATOMIC_RELAXED);
}

template <typename T>
T Peek(const T& field) {
  return __atomic_load_n(&field, __ATOMIC_RELAXED);
}

SSystemInfo Snapshot() {
  SSystemInfo info;
  for (int i = 0; i < 32; ++i) info.name[i] = Peek(s_info.name[i]);
  info.minorVersion = Peek(s_info.minorVersion);
  info.buildNumber = Peek(s_info.buildNumber);
  info.reserved = Peek(s_info.reserved);
  info.majorVersion = Peek(s_info.majorVersion);
  return info;
}

void Fill() {
  const SSystemInfo before = Snapshot();
  SSystemInfo now = before;
  KEST::InternalGetSystemInfo(now);
  for (int i = 0; i < 32; ++i) Publish(s_info.name[i], before.name[i], now.name[i]);
  Publish(s_info.minorVersion, before.minorVersion, now.minorVersion);
  Publish(s_info.buildNumber, before.buildNumber, now.buildNumber);
  Publish(s_info.reserved, before.reserved, now.reserved);
  Publish(s_info.majorVersion, before.majorVersion, now.majorVersion);
}

}  // namespace

extern "C" KEST::SSystemInfo* KestGetSystemInfo(void) {
  if (__atomic_load_n(&s_info.majorVersion, __ATOMIC_ACQUIRE) == 0) Fill();
  return &s_info;
}

namespace KEST {

// uname needs no preparation.
bool SystemInit() { return true; }
void SystemTerm() {}

}  // namespace KEST
