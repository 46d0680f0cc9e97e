// Changing text in place. A file includes this after one of vector_LEVEL.h.

#ifndef KEST_SRC_STRING_CHANGE_KERNEL_H
#define KEST_SRC_STRING_CHANGE_KERNEL_H

#include "string/place.h"
#include "string/ucs_change_levels.h"

namespace KEST::KEST_KERNELS {

// Gives the letters from first on among count units at s their other case. A vector that overlaps
// the one before finds none there.
KEST_FOR_KERNEL inline void ChangeCase(unsigned short* s, size_t count, unsigned short first) {
  if (count < kVectorUnits) {
    UcsChangeCasePlain(s, count, first);
    return;
  }
  unsigned short* const last = s + count - kVectorUnits;
  for (; s < last; s += kVectorUnits) Store(s, WithOtherCase(Load(s), first));
  Store(last, WithOtherCase(Load(last), first));
}

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_STRING_CHANGE_KERNEL_H
