// Searching for text that repeats itself in text that does.

#ifndef KEST_SRC_STRING_TWO_WAY_H
#define KEST_SRC_STRING_TWO_WAY_H

#include <stddef.h>

namespace KEST {

// The first place of the length units at needle in the text at haystack, null when there is none.
// length is 2 or more, and no terminator comes before the last unit of a place at haystack. Takes
// time linear in both, and no memory.
const unsigned short* FindTwoWay(const unsigned short* haystack, const unsigned short* needle,
                                 size_t length);

}  // namespace KEST

#endif  // KEST_SRC_STRING_TWO_WAY_H
