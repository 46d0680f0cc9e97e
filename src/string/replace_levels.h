// The versions of what replacing text is made of.

#ifndef KEST_SRC_STRING_REPLACE_LEVELS_H
#define KEST_SRC_STRING_REPLACE_LEVELS_H

#include <stddef.h>

namespace KEST {

// What is looked for, none of its units 0, and the text up to its first zero unit.
struct SMatchSearch {
  const unsigned short* text;
  size_t textLength;
  const unsigned short* needle;
  size_t needleLength;
};

// Indexes in the text of matches that do not overlap.
constexpr size_t kMatchesInBatch = 1024;

// Writes the places of the first matches that start at or behind a place, up to room of them, and
// returns how many they are. In linear time.
using CollectMatchesRoutine = size_t(const SMatchSearch& search, size_t start, unsigned int* places,
                                     size_t room);
CollectMatchesRoutine CollectMatchesPlain, CollectMatchesSse2, CollectMatchesAvx2;

// A text that is being copied with other units in the place of matches.
struct SReplacing {
  unsigned short* dest;
  size_t destRoom;
  const unsigned short* rest;  // not copied yet
  size_t restLength;
  const unsigned short* units;  // what takes the place of a match
  size_t length;
  size_t matchLength;
};

// Copies up to the match that starts after the first units of the rest, and what takes its place.
// Moves everything on.
inline void Advance(SReplacing& state, size_t before) {
  state.dest += before + state.length;
  state.destRoom -= before + state.length;
  state.rest += before + state.matchLength;
  state.restLength -= before + state.matchLength;
}

// Copies up to each of the matches, whose places count from the start of the text, and what takes
// their place.
using CopyReplacingRoutine = void(SReplacing& state, const unsigned short* text,
                                  const unsigned int* places, size_t count);
CopyReplacingRoutine CopyReplacingPlain, CopyReplacingSse2, CopyReplacingAvx2;

}  // namespace KEST

#endif  // KEST_SRC_STRING_REPLACE_LEVELS_H
