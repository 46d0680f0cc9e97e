// What the files of TBstr share: lengths as int, and changing a text's length.

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

// These work on the BSTR of a string. They are true when the text has its new length; false, and
// the text empty, when there is no memory for it. The 8-bit copy is the caller's to discard.

// Puts count units of src in the place of removed units from index on; both lie within the text.
// src may point into the text itself: the old block goes last.
bool Splice(unsigned short*& string, int index, int removed, const unsigned short* src, int count);

// Appends count units of src, which may point into the text itself. A block of the default hooks
// grows in place where it can, and with room to spare for the next small piece.
bool AppendUnits(unsigned short*& string, const unsigned short* src, int count);

// Makes the text length units long, of which those that fit are kept. length is above 0.
bool Resize(unsigned short*& string, int length);

}  // namespace KEST

#endif  // KEST_SRC_STRING_SPLICE_H
