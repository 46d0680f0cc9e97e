// The versions of comparing wide C strings. The folded ones compare upper-case ASCII.

#ifndef KEST_SRC_STRING_UCS_COMPARE_LEVELS_H
#define KEST_SRC_STRING_UCS_COMPARE_LEVELS_H

#include <stddef.h>

namespace KEST {

// The difference of the first units that differ, 0 when none do.
using UcsCompareRoutine = int(const unsigned short* a, const unsigned short* b);
UcsCompareRoutine UcsComparePlain, UcsCompareSse2, UcsCompareAvx2, UcsCompareAvx512;
UcsCompareRoutine UcsCompareFoldedPlain, UcsCompareFoldedSse2, UcsCompareFoldedAvx2,
    UcsCompareFoldedAvx512;

// The same for no more than limit units.
using UcsCompareSomeRoutine = int(const unsigned short* a, const unsigned short* b,
                                  unsigned int limit);
UcsCompareSomeRoutine UcsCompareSomePlain, UcsCompareSomeSse2, UcsCompareSomeAvx2,
    UcsCompareSomeAvx512;
UcsCompareSomeRoutine UcsCompareSomeFoldedPlain, UcsCompareSomeFoldedSse2, UcsCompareSomeFoldedAvx2,
    UcsCompareSomeFoldedAvx512;

// The index of the first unit at which they differ or end, limit when that comes first.
using UcsCommonRoutine = size_t(const unsigned short* a, const unsigned short* b, size_t limit);
UcsCommonRoutine UcsCommonPlain, UcsCommonSse2, UcsCommonAvx2, UcsCommonAvx512;

}  // namespace KEST

#endif  // KEST_SRC_STRING_UCS_COMPARE_LEVELS_H
