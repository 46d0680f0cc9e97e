// What the files of TBstr share: lengths as int, and rebuilding a text in a fresh block.

#ifndef KEST_SRC_STRING_SPLICE_H
#define KEST_SRC_STRING_SPLICE_H

#include <limits.h>

#include "kest/string.h"

namespace KEST {

// The units before the terminator: 0 for null, and INT_MAX, which no buffer holds, for more.
inline int TextLength(const unsigned short* s) {
  if (s == nullptr) return 0;
  const unsigned int length = ucslen(s);
  return length <= INT_MAX ? static_cast<int>(length) : INT_MAX;
}

// Puts count units of src in the place of removed units from index on; both lie within the text.
// src may point into the text itself: the old block goes last. True when the text has its new
// length; false, and an empty text, when there is no memory for it. The 8-bit copy is the
// caller's to discard.
bool Splice(TBstr& text, int index, int removed, const unsigned short* src, int count);

}  // namespace KEST

#endif  // KEST_SRC_STRING_SPLICE_H
