// Changes of a wide C string in place.

#include <algorithm>

#include "kest/string.h"
#include "string/units.h"

namespace KEST {

unsigned short* ucsupr(unsigned short* s) {
  if (s == nullptr) return nullptr;
  for (unsigned short* unit = s; *unit != 0; ++unit) *unit = UpperOf(*unit);
  return s;
}

unsigned short* ucslwr(unsigned short* s) {
  if (s == nullptr) return nullptr;
  for (unsigned short* unit = s; *unit != 0; ++unit) *unit = LowerOf(*unit);
  return s;
}

// By unit: the halves of a surrogate pair change places too.
unsigned short* ucsrev(unsigned short* s) {
  std::reverse(s, s + ucslen(s));
  return s;
}

}  // namespace KEST
