// Routines with a version for each level of the processor. The version is chosen at the first call;
// from then on a call costs one jump through a pointer.

#ifndef KEST_SRC_CPU_DISPATCH_H
#define KEST_SRC_CPU_DISPATCH_H

#include <atomic>

#include "cpu/level.h"

namespace KEST {

// The versions of one routine. A null stands for the nearest one before it; but one for the SHA
// instructions comes before all others where the processor has them.
template <typename Routine>
struct SVersions {
  Routine* plain;
  Routine* sse2 = nullptr;
  Routine* ssse3 = nullptr;
  Routine* avx2 = nullptr;
  Routine* avx512 = nullptr;
  Routine* sha = nullptr;
};

template <typename Routine>
Routine* BestVersion(const SVersions<Routine>& versions) {
  if (versions.sha != nullptr && CpuHasSha()) return versions.sha;
  Routine* const each[] = {versions.plain, versions.sse2, versions.ssse3, versions.avx2,
                           versions.avx512};
  int level = CpuLevel();
  while (each[level] == nullptr) --level;
  return each[level];
}

// Called like the routine itself, from any thread:
//   constexpr SVersions<size_t(const unsigned short*)> kLength = {LengthPlain, LengthSse2};
//   constexpr TDispatch<kLength> Length;
template <const auto& kVersions, typename Routine = decltype(kVersions)>
class TDispatch;

template <const auto& kVersions, typename Result, typename... Arguments>
class TDispatch<kVersions, const SVersions<Result(Arguments...)>&> {
 public:
  Result operator()(Arguments... arguments) const {
    return s_routine.load(std::memory_order_relaxed)(arguments...);
  }

 private:
  // Stands in until the first call. Threads that come together store the same.
  static Result Choose(Arguments... arguments) {
    Result (*const best)(Arguments...) = BestVersion(kVersions);
    s_routine.store(best, std::memory_order_relaxed);
    return best(arguments...);
  }

  // Initialised statically, because constructors of other modules may call before ours have run.
  static inline std::atomic<Result (*)(Arguments...)> s_routine{Choose};
};

}  // namespace KEST

#endif  // KEST_SRC_CPU_DISPATCH_H
