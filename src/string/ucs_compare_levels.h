// The versions of comparing wide C strings: the index of the first unit at which they differ or
// end, or limit when none comes before it. The folding ones compare upper-case ASCII.

#ifndef KEST_SRC_STRING_UCS_COMPARE_LEVELS_H
#define KEST_SRC_STRING_UCS_COMPARE_LEVELS_H

#include <stddef.h>

namespace KEST {

using UcsCompareRoutine = size_t(const unsigned short* a, const unsigned short* b, size_t limit);

UcsCompareRoutine UcsComparePlain, UcsCompareSse2, UcsCompareAvx2, UcsCompareAvx512;
UcsCompareRoutine UcsCompareFoldedPlain, UcsCompareFoldedSse2, UcsCompareFoldedAvx2,
    UcsCompareFoldedAvx512;

}  // namespace KEST

#endif  // KEST_SRC_STRING_UCS_COMPARE_LEVELS_H
