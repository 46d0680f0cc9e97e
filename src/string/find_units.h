// Searching text for text.

#ifndef KEST_SRC_STRING_FIND_UNITS_H
#define KEST_SRC_STRING_FIND_UNITS_H

#include <stddef.h>

namespace KEST {

// The first place of the length units at needle, none of which is 0, in the text at haystack; null
// when there is none. No units are found at the start of any text but the empty one. Takes time
// linear in what is looked at, whatever that holds, and reads nothing behind the place found but
// what a vector reads.
const unsigned short* FindUnits(const unsigned short* haystack, const unsigned short* needle,
                                size_t length);

// The first ch in s, null when there is none. A ch of 0 finds the terminator.
const unsigned short* FindUnit(const unsigned short* s, unsigned short ch);

}  // namespace KEST

#endif  // KEST_SRC_STRING_FIND_UNITS_H
