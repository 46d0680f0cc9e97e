// Replacing text in a TBstr. The search ends at the first zero unit; what follows it is kept.

#include <stdint.h>

#include "string/splice.h"
#include "string/units.h"

namespace KEST {

namespace {

struct SText {
  const unsigned short* units;
  int length;
};

int CountMatches(const unsigned short* text, const SText& from) {
  int count = 0;
  while ((text = ucsstr(text, from.units)) != nullptr) {
    ++count;
    text += from.length;
  }
  return count;
}

// from and to may lie in text: both then end where the search does, so that only the last match
// can touch them.
void ReplaceInPlace(unsigned short* text, const SText& from, const SText& to) {
  for (unsigned short* match = text; (match = ucsstr(match, from.units)) != nullptr;) {
    MoveUnits(match, to.units, static_cast<size_t>(to.length));
    match += to.length;
  }
}

// Returns the end of what it wrote.
unsigned short* Append(unsigned short* dest, const unsigned short* src, ptrdiff_t count) {
  MoveUnits(dest, src, static_cast<size_t>(count));
  return dest + count;
}

// Writes text to dest with every match replaced.
void CopyReplacing(unsigned short* dest, const SText& text, const SText& from, const SText& to) {
  const unsigned short* rest = text.units;
  while (const unsigned short* match = ucsstr(rest, from.units)) {
    dest = Append(dest, rest, match - rest);
    dest = Append(dest, to.units, to.length);
    rest = match + from.length;
  }
  Append(dest, rest, text.units + text.length - rest);
}

}  // namespace

int TBstr::Replace(const unsigned short* from, const unsigned short* to) {
  DestroyMultibyteBuffer();
  const SText text = {string, GetLength()};
  const SText what = {from, TextLength(from)};
  const SText with = {to, TextLength(to)};
  if (what.length < 1 || what.length > text.length) return 0;
  const int count = CountMatches(text.units, what);
  if (count == 0) return 0;
  if (with.length == what.length) {
    ReplaceInPlace(string, what, with);
    return count;
  }
  const int64_t length = text.length + static_cast<int64_t>(count) * (with.length - what.length);
  unsigned short* fresh =
      length <= INT_MAX ? KestAllocStringLen(nullptr, static_cast<unsigned int>(length)) : nullptr;
  if (fresh != nullptr) CopyReplacing(fresh, text, what, with);
  KestFreeString(string);
  string = fresh;
  return fresh != nullptr || length == 0 ? count : 0;
}

}  // namespace KEST
