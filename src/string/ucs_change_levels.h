// The versions of changing the case of wide text.

#ifndef KEST_SRC_STRING_UCS_CHANGE_LEVELS_H
#define KEST_SRC_STRING_UCS_CHANGE_LEVELS_H

#include <stddef.h>

namespace KEST {

constexpr int kLetters = 26;

// Gives the letters from first on, which is 'a' or 'A', their other case, among count units at s.
using UcsChangeCaseRoutine = void(unsigned short* s, size_t count, unsigned short first);
UcsChangeCaseRoutine UcsChangeCasePlain, UcsChangeCaseSse2, UcsChangeCaseAvx2, UcsChangeCaseAvx512;

}  // namespace KEST

#endif  // KEST_SRC_STRING_UCS_CHANGE_LEVELS_H
