// The Two-Way algorithm of Crochemore and Perrin, "Two-way string-matching", Journal of the ACM 38,
// 1991. The needle is cut where its right part, compared first and from left to right, tells how
// far a mismatch lets the search move on: behind the units that were equal.

#include "string/two_way.h"

#include <algorithm>

#include "string/find_units.h"
#include "string/units.h"

namespace KEST {

namespace {

// The units of the right part that are searched for. A search for more might come back here.
constexpr size_t kRightStart = 2;

// A suffix of the needle, and its period.
struct SSuffix {
  size_t start;
  size_t period;
};

// The largest suffix in the order of units, or in the reverse of it.
template <bool reversed>
SSuffix LargestSuffix(const unsigned short* needle, size_t length) {
  SSuffix best = {0, 1};
  size_t other = 1;   // a suffix that is compared with the best one
  size_t common = 0;  // the units that both start with, less whole periods
  while (other + common < length) {
    const unsigned short unit = needle[other + common];
    const unsigned short bestUnit = needle[best.start + common];
    if (unit == bestUnit) {
      if (++common < best.period) continue;
      other += best.period;
    } else if ((unit < bestUnit) != reversed) {
      other += common + 1;
      best.period = other - best.start;
    } else {
      best = {other, 1};
      ++other;
    }
    common = 0;
  }
  return best;
}

// Where the needle is cut: the period of the right part is then that of any repetition around the
// cut.
SSuffix CriticalCut(const unsigned short* needle, size_t length) {
  const SSuffix up = LargestSuffix<false>(needle, length);
  const SSuffix down = LargestSuffix<true>(needle, length);
  return up.start > down.start ? up : down;
}

}  // namespace

const unsigned short* FindTwoWay(const unsigned short* haystack, const unsigned short* needle,
                                 size_t length) {
  const SSuffix right = CriticalCut(needle, length);
  const size_t cut = right.start;
  const bool repeats = CommonUnits(needle, needle + right.period, cut) == cut;
  // A left part that does not repeat keeps places further apart.
  const size_t step = repeats ? right.period : std::max(cut, length - cut) + 1;
  const size_t unseen = step + cut - std::min(step + cut, length);

  size_t known = 0;  // units that are equal still after a step
  for (;;) {
    const size_t from = std::max(cut, known);
    const size_t common = from + CommonUnits(haystack + from, needle + from, length - from);
    if (common < length) {
      if (haystack[common] == 0) return nullptr;
      // The right part starts behind the unit that differs; after an early one, rather not at once.
      const unsigned short* start = haystack + common + 1;
      if (common < cut + kRightStart) {
        start = FindUnits(start, needle + cut, std::min(length - cut, kRightStart));
        if (start == nullptr) return nullptr;
      }
      haystack = start - cut;
      known = 0;
    } else {
      const size_t left = cut - std::min(cut, known);
      if (CommonUnits(haystack + known, needle + known, left) == left) return haystack;
      // The units in front of the next right part must be there.
      if (BoundedLength(haystack + length, unseen) < unseen) return nullptr;
      haystack += step;
      known = repeats ? length - step : 0;
    }
  }
}

}  // namespace KEST
