// Threads on different cores.

#ifndef KEST_SRC_PLATFORM_POSIX_CORES_H
#define KEST_SRC_PLATFORM_POSIX_CORES_H

#include <stddef.h>

#include "kest/thread.h"

namespace KEST {

// Whether the calling thread may run on more than one core. Where it may not, whatever it waits for
// needs the core that it would look from.
bool HasSeveralCores();

// What one core writes while another one reads something else lies this far apart.
constexpr size_t kCacheLine = 64;

// Between two looks at what another core is about to write.
inline void Pause() { __builtin_ia32_pause(); }

// Between two looks at what another thread holds for some instructions, the first with 0. A thread
// that was interrupted meanwhile goes on in the end, whatever the priorities.
inline void PauseOrSleep(int looks) {
  if (looks < 100) {
    Pause();
  } else {
    TThread::ThreadSleep(1);
  }
}

}  // namespace KEST

#endif  // KEST_SRC_PLATFORM_POSIX_CORES_H
