// The versions of the length of a wide C string.

#ifndef KEST_SRC_STRING_UCS_LENGTH_LEVELS_H
#define KEST_SRC_STRING_UCS_LENGTH_LEVELS_H

#include <stddef.h>

namespace KEST {

size_t UcsLengthPlain(const unsigned short* s);
size_t UcsLengthSse2(const unsigned short* s);
size_t UcsLengthAvx2(const unsigned short* s);
size_t UcsLengthAvx512(const unsigned short* s);

}  // namespace KEST

#endif  // KEST_SRC_STRING_UCS_LENGTH_LEVELS_H
