// Changes of a wide C string in place.

#include <algorithm>

#include "cpu/dispatch.h"
#include "kest/string.h"
#include "string/ucs_change_levels.h"
#include "string/units.h"

namespace KEST {

void UcsChangeCasePlain(unsigned short* s, size_t count, unsigned short first) {
  for (unsigned short* const end = s + count; s != end; ++s) {
    if (*s >= first && *s < first + kLetters) *s ^= u'a' ^ u'A';
  }
}

namespace {

constexpr SVersions<UcsChangeCaseRoutine> kChangeCase = {
    UcsChangeCasePlain, UcsChangeCaseSse2, nullptr, UcsChangeCaseAvx2, UcsChangeCaseAvx512};
constexpr TDispatch<kChangeCase> ChangeCase;

}  // namespace

unsigned short* ucsupr(unsigned short* s) {
  if (s != nullptr) ChangeCase(s, UnitLength(s), u'a');
  return s;
}

unsigned short* ucslwr(unsigned short* s) {
  if (s != nullptr) ChangeCase(s, UnitLength(s), u'A');
  return s;
}

// By unit: the halves of a surrogate pair change places too.
unsigned short* ucsrev(unsigned short* s) {
  std::reverse(s, s + UnitLength(s));
  return s;
}

}  // namespace KEST
