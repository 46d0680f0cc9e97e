#include "platform/posix/cores.h"

#include <sched.h>

namespace KEST {

// A machine of more cores than the set holds counts as one of one core, as does a refusal.
bool HasSeveralCores() {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof(allowed), &allowed) != 0) return false;
  bool one = false;
  for (unsigned long cores : allowed.__bits) {
    if (cores == 0) continue;
    if (one || (cores & (cores - 1)) != 0) return true;
    one = true;
  }
  return false;
}

}  // namespace KEST
