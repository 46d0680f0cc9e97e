// The length of wide C strings.

#include "cpu/dispatch.h"
#include "kest/string.h"
#include "string/ucs_length_levels.h"
#include "string/units.h"

namespace KEST {

size_t UcsLengthPlain(const unsigned short* s) {
  const unsigned short* end = s;
  while (*end != 0) ++end;
  return static_cast<size_t>(end - s);
}

namespace {

constexpr SVersions<size_t(const unsigned short*)> kVersions = {
    UcsLengthPlain, UcsLengthSse2, nullptr, UcsLengthAvx2, UcsLengthAvx512};
constexpr TDispatch<kVersions> BestLength;

}  // namespace

size_t UnitLength(const unsigned short* s) { return s != nullptr ? BestLength(s) : 0; }

unsigned int ucslen(const unsigned short* s) {
  return s != nullptr ? static_cast<unsigned int>(BestLength(s)) : 0;
}

}  // namespace KEST
