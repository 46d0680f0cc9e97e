// Copying of wide C strings. Lengths are measured before anything moves, so the places
// may overlap.

#include <algorithm>

#include "kest/string.h"
#include "string/units.h"

namespace KEST {

unsigned short* ucscpy(unsigned short* dest, const unsigned short* src) {
  src = OrEmpty(src);
  MoveUnits(dest, src, UnitLength(src) + 1);
  return dest;
}

unsigned short* ucsncpy(unsigned short* dest, const unsigned short* src, unsigned int n) {
  src = OrEmpty(src);
  const size_t length = BoundedLength(src, n);
  MoveUnits(dest, src, length);
  std::fill_n(dest + length, n - length, static_cast<unsigned short>(0));
  return dest;
}

// Gives the place of the first appended unit, not the start, on purpose.
unsigned short* ucscat(unsigned short* dest, const unsigned short* src) {
  return ucscpy(dest + UnitLength(dest), src);
}

}  // namespace KEST
