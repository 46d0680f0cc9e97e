// The versions of searching for text the quick way, which compares at each place that looks like
// one. It gives up when that has cost more than it is worth.

#ifndef KEST_SRC_STRING_FIND_UNITS_LEVELS_H
#define KEST_SRC_STRING_FIND_UNITS_LEVELS_H

#include <stddef.h>

namespace KEST {

// How a search ended: at the first place, or with null at the text's end. Or it gave up: nothing
// starts before place, and no terminator comes before the last unit of what may start there.
struct SFound {
  const unsigned short* place;
  bool gaveUp;
};

// Whether it is time to give up, after so many units compared in vain and moved over.
inline bool CostsTooMuch(size_t vain, size_t moved) {
  constexpr size_t kAtFirst = 512;
  constexpr size_t kPerUnit = 2;
  return vain > kAtFirst && (vain - kAtFirst) / kPerUnit > moved;
}

// The haystack is not empty, length is 2 or more. A search for two units never gives up.
using FindUnitsRoutine = SFound(const unsigned short* haystack, const unsigned short* needle,
                                size_t length);
FindUnitsRoutine FindUnitsPlain, FindUnitsSse2, FindUnitsAvx2, FindUnitsAvx512;

}  // namespace KEST

#endif  // KEST_SRC_STRING_FIND_UNITS_LEVELS_H
