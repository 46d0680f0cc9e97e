// Whether two places have bytes in common. Vector versions write what lies behind the element at
// hand, so that only the plain ones convert in place.

#ifndef KEST_SRC_STRING_OVERLAP_H
#define KEST_SRC_STRING_OVERLAP_H

#include <stddef.h>
#include <stdint.h>

namespace KEST {

inline bool Overlap(const void* a, size_t aSize, const void* b, size_t bSize) {
  const uintptr_t first = reinterpret_cast<uintptr_t>(a);
  const uintptr_t second = reinterpret_cast<uintptr_t>(b);
  return second - first < aSize || first - second < bSize;
}

}  // namespace KEST

#endif  // KEST_SRC_STRING_OVERLAP_H
