// Replacing text: matches collected and text copied in whole vectors. A file includes this after
// one of vector_LEVEL.h.

#ifndef KEST_SRC_STRING_REPLACE_KERNEL_H
#define KEST_SRC_STRING_REPLACE_KERNEL_H

#include <algorithm>

#include "string/find_units_levels.h"
#include "string/place.h"
#include "string/replace_levels.h"
#include "string/units.h"

namespace KEST::KEST_KERNELS {

// Of two texts that begin with the same unit, how many do, up to a limit.
inline size_t CommonUnits(const unsigned short* a, const unsigned short* b, size_t limit) {
  size_t common = 1;
  while (common < limit && a[common] == b[common]) ++common;
  return common;
}

// A place is worth comparing when the first and the last unit are there. What costs too much is
// left to the plain version, which takes linear time, and so is the end of the text.
KEST_FOR_KERNEL inline size_t CollectMatches(const SMatchSearch& search, size_t start,
                                             unsigned int* places, size_t room) {
  const size_t span = search.needleLength - 1;
  const Vector first = Broadcast(search.needle[0]);
  const Vector last = Broadcast(search.needle[span]);
  size_t found = 0;
  size_t vain = 0;
  size_t at = start;    // what starts before is decided
  size_t free = start;  // the end of the last match
  while (at + span + kVectorUnits <= search.textLength) {
    const unsigned short* const p = search.text + at;
    unsigned int bits =
        Zeros(Either(Differences(Load(p), first), Differences(Load(p + span), last)));
    const size_t next = at + kVectorUnits;
    for (; bits != 0; bits = WithoutUnit(bits, FirstOf(bits))) {
      const size_t place = at + FirstOf(bits);
      if (place < free) continue;
      const size_t common = CommonUnits(search.text + place, search.needle, span);
      if (common >= span) {
        places[found++] = static_cast<unsigned int>(place);
        if (found == room) return found;
        free = place + search.needleLength;
      } else {
        vain += common;
      }
    }
    at = std::max(next, free);
    if (CostsTooMuch(vain, at - start)) break;
  }
  return found + CollectMatchesPlain(search, at, places + found, room - found);
}

// Where there is room, whole vectors are stored: what is behind their units is written over later.
KEST_FOR_KERNEL inline void CopyReplacing(SReplacing& state, const unsigned short* text,
                                          const unsigned int* places, size_t count) {
  unsigned short padded[kVectorUnits] = {};
  const bool isShort = state.length <= kVectorUnits;
  if (isShort) MoveUnits(padded, state.units, state.length);
  const Vector units = Load(padded);
  for (; count != 0; ++places, --count) {
    const size_t before = static_cast<size_t>(text + *places - state.rest);
    if (before + kVectorUnits <= std::min(state.destRoom, state.restLength)) {
      for (size_t at = 0; at < before; at += kVectorUnits) {
        Store(state.dest + at, Load(state.rest + at));
      }
    } else {
      MoveUnits(state.dest, state.rest, before);
    }
    if (isShort && before + kVectorUnits <= state.destRoom) {
      Store(state.dest + before, units);
    } else {
      MoveUnits(state.dest + before, state.units, state.length);
    }
    Advance(state, before);
  }
}

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_STRING_REPLACE_KERNEL_H
