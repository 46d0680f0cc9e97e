// Searching text for text. A place is worth comparing when the first and the last unit are there:
// both are looked for in whole vectors, and the vectors with the last units also show where the
// text ends. A file includes this after one of vector_LEVEL.h.

#ifndef KEST_SRC_STRING_SEARCH_KERNEL_H
#define KEST_SRC_STRING_SEARCH_KERNEL_H

#include "string/compare_kernel.h"
#include "string/find_units_levels.h"

namespace KEST::KEST_KERNELS {

// Apart, so that the registers are left to the search.
[[gnu::noinline]] KEST_FOR_KERNEL KEST_READS_PAST_END inline size_t Common(const unsigned short* a,
                                                                           const unsigned short* b,
                                                                           size_t limit) {
  return FirstStop<SAsItIs>(a, b, limit);
}

class TSearch {
 public:
  KEST_FOR_KERNEL TSearch(const unsigned short* haystack, const unsigned short* text, size_t length)
      : first(Broadcast(text[0])),
        last(Broadcast(text[length - 1])),
        start(haystack),
        needle(text),
        span(length - 1) {}

  KEST_FOR_KERNEL KEST_READS_PAST_END SFound Run() {
    // What lies before the last unit of a place has no terminator, so that it can be read.
    if (span > 1 && Common(start + 1, start + 1, span - 1) < span - 1) return result;
    const unsigned short* p = start + span;
    if (UnitsToPageEnd(p) >= kVectorUnits) {
      if (Ends(Zeros(Marks(p)), p)) return result;
      p = AlignedDown(p + kVectorUnits);
    }
    for (; BytesInto(sizeof(Vector), p) != 0; ++p) {
      if (EndsAt(p)) return result;
    }
    // Both vectors of a turn are in one page.
    if (BytesInto(2 * sizeof(Vector), p) != 0) {
      if (Ends(Zeros(Marks(p)), p)) return result;
      p += kVectorUnits;
    }
    for (;; p += 2 * kVectorUnits) {
      if (Zeros(Least(Marks(p), Marks(p + kVectorUnits))) == 0) continue;
      if (Ends(Zeros(Marks(p)), p)) return result;
      if (Ends(Zeros(Marks(p + kVectorUnits)), p + kVectorUnits)) return result;
    }
  }

 private:
  // 0 for the terminator, and for units that may be the last ones of a place.
  KEST_FOR_KERNEL KEST_READS_PAST_END Vector Marks(const unsigned short* p) const {
    const Vector v = Load(p);
    return Least(v, Either(Differences(v, last), Differences(Load(p - span), first)));
  }

  // Whether the search ends at p, with the text or with the last unit of a place.
  KEST_FOR_KERNEL KEST_READS_PAST_END bool EndsAt(const unsigned short* p) {
    if (*p == 0) return true;
    const size_t common = Common(p - span, needle, span + 1);
    vain += common;
    if (common > span) result.place = p - span;
    return common > span;
  }

  // Whether it ends at one of the marked units of the vector at p, or because of them.
  KEST_FOR_KERNEL KEST_READS_PAST_END bool Ends(unsigned int bits, const unsigned short* p) {
    for (; bits != 0; bits = WithoutUnit(bits, FirstOf(bits))) {
      if (EndsAt(p + FirstOf(bits))) return true;
    }
    if (!CostsTooMuch(vain, static_cast<size_t>(p - start))) return false;
    result = {p + kVectorUnits - span, true};
    return true;
  }

  const Vector first, last;
  const unsigned short* const start;
  const unsigned short* const needle;
  const size_t span;
  size_t vain = 0;
  SFound result = {nullptr, false};
};

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_STRING_SEARCH_KERNEL_H
