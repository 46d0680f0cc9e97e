// Waiting for another core without sleeping.

#ifndef KEST_SRC_PLATFORM_POSIX_CORES_H
#define KEST_SRC_PLATFORM_POSIX_CORES_H

namespace KEST {

// Whether the calling thread may run on more than one core. Where it may not, whatever it waits for
// needs the core that it would look from.
bool HasSeveralCores();

// Between two looks at what another core is about to write.
inline void Pause() { __builtin_ia32_pause(); }

}  // namespace KEST

#endif  // KEST_SRC_PLATFORM_POSIX_CORES_H
