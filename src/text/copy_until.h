// Copying text up to a unit that means something.

#ifndef KEST_SRC_TEXT_COPY_UNTIL_H
#define KEST_SRC_TEXT_COPY_UNTIL_H

#include "string/find_units.h"
#include "string/units.h"

namespace KEST {

// Copies the units from text up to stop, or up to end, where the text is terminated. Moves dest on
// and returns where it stopped.
inline const unsigned short* CopyUntil(unsigned short stop, const unsigned short* text,
                                       const unsigned short* end, unsigned short*& dest) {
  // Searching and moving cost a call each, so they are for long pieces.
  constexpr ptrdiff_t kFewUnits = 16;
  const unsigned short* const near = end - text > kFewUnits ? text + kFewUnits : end;
  for (; text != near; ++text) {
    if (*text == stop) return text;
    *dest++ = *text;
  }
  if (text == end) return end;
  const unsigned short* const found = FindUnit(text, stop);
  const unsigned short* const until = found != nullptr ? found : end;
  MoveUnits(dest, text, static_cast<size_t>(until - text));
  dest += until - text;
  return until;
}

}  // namespace KEST

#endif  // KEST_SRC_TEXT_COPY_UNTIL_H
