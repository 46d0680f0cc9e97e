// The versions of searching wide C strings for single units.

#ifndef KEST_SRC_STRING_UCS_SEARCH_LEVELS_H
#define KEST_SRC_STRING_UCS_SEARCH_LEVELS_H

#include <stddef.h>

namespace KEST {

// The first unit of s that is ch; null when none is. A ch of 0 finds the terminator.
using UcsFindRoutine = const unsigned short*(const unsigned short* s, unsigned short ch);
UcsFindRoutine UcsFindPlain, UcsFindSse2, UcsFindAvx2, UcsFindAvx512;

// The last of count units at s, at least one, that is ch; null when none is.
using UcsFindLastRoutine = const unsigned short*(const unsigned short* s, size_t count,
                                                 unsigned short ch);
UcsFindLastRoutine UcsFindLastPlain, UcsFindLastSse2, UcsFindLastAvx2, UcsFindLastAvx512;

// The first unit of s that is in a short set, or its terminator.
constexpr size_t kMostInShortSet = 8;
using UcsFindOneOfRoutine = const unsigned short*(const unsigned short* s,
                                                  const unsigned short* set);
UcsFindOneOfRoutine UcsFindOneOfPlain, UcsFindOneOfSse2, UcsFindOneOfAvx2, UcsFindOneOfAvx512;

}  // namespace KEST

#endif  // KEST_SRC_STRING_UCS_SEARCH_LEVELS_H
