// Searching text for text, the quick way as long as it pays.

#include "string/find_units.h"

#include "cpu/dispatch.h"
#include "string/find_units_levels.h"
#include "string/two_way.h"
#include "string/ucs_compare_levels.h"

namespace KEST {

SFound FindUnitsPlain(const unsigned short* haystack, const unsigned short* needle, size_t length) {
  constexpr SFound kNone = {nullptr, false};
  const size_t span = length - 1;
  if (UcsCommonPlain(haystack, haystack, span) < span) return kNone;
  size_t vain = 0;
  for (const unsigned short* last = haystack + span; *last != 0; ++last) {
    const unsigned short* place = last - span;
    if (*place != needle[0] || *last != needle[span]) continue;
    const size_t common = UcsCommonPlain(place, needle, length);
    if (common == length) return {place, false};
    vain += common;
    if (CostsTooMuch(vain, static_cast<size_t>(place - haystack))) return {place + 1, true};
  }
  return kNone;
}

namespace {

constexpr SVersions<FindUnitsRoutine> kVersions = {FindUnitsPlain, FindUnitsSse2, nullptr,
                                                   FindUnitsAvx2, FindUnitsAvx512};
constexpr TDispatch<kVersions> FindQuickly;

}  // namespace

const unsigned short* FindUnits(const unsigned short* haystack, const unsigned short* needle,
                                size_t length) {
  if (*haystack == 0) return nullptr;
  if (length == 0) return haystack;
  if (length == 1) return FindUnit(haystack, *needle);
  const SFound found = FindQuickly(haystack, needle, length);
  return found.gaveUp ? FindTwoWay(found.place, needle, length) : found.place;
}

}  // namespace KEST
