// Comparing two texts. A file includes this after one of vector_LEVEL.h.

#ifndef KEST_SRC_STRING_COMPARE_KERNEL_H
#define KEST_SRC_STRING_COMPARE_KERNEL_H

#include <algorithm>

#include "string/place.h"
#include "string/units.h"

namespace KEST::KEST_KERNELS {

struct SAsItIs {
  static unsigned short Of(unsigned short unit) { return unit; }
  KEST_FOR_KERNEL static Vector Of(Vector v) { return v; }
};

struct SUpper {
  static unsigned short Of(unsigned short unit) { return UpperOf(unit); }
  KEST_FOR_KERNEL static Vector Of(Vector v) { return WithOtherCase(v, u'a'); }
};

// 0 where the texts stop: where they differ, or end.
template <typename Fold>
KEST_FOR_KERNEL KEST_READS_PAST_END inline Vector Going(const unsigned short* a,
                                                        const unsigned short* b) {
  return Common(Fold::Of(Load(a)), Fold::Of(Load(b)));
}

template <typename Fold>
KEST_FOR_KERNEL KEST_READS_PAST_END inline bool StopsInTurn(const unsigned short* a,
                                                            const unsigned short* b) {
  const Vector first = Going<Fold>(a, b);
  const Vector second = Going<Fold>(a + kVectorUnits, b + kVectorUnits);
  const Vector third = Going<Fold>(a + 2 * kVectorUnits, b + 2 * kVectorUnits);
  const Vector fourth = Going<Fold>(a + 3 * kVectorUnits, b + 3 * kVectorUnits);
  return HasZero(first, second, third, fourth);
}

// Whether the units in front of a and b, and those behind index, can be read.
inline bool CanReadBefore(const unsigned short* a, const unsigned short* b, size_t at,
                          size_t units) {
  return at >= units || std::min(BytesInto(kPageBytes, a + at), BytesInto(kPageBytes, b + at)) >=
                            units * sizeof(unsigned short);
}

// The whole units at index and behind it that are in one page, in both texts.
inline size_t UnitsInPages(const unsigned short* a, const unsigned short* b, size_t at) {
  return std::min(UnitsToPageEnd(a + at), UnitsToPageEnd(b + at));
}

constexpr size_t kTurnUnits = 4 * kVectorUnits;

// at, moved over the turns before end in which the texts do not stop.
template <typename Fold>
KEST_FOR_KERNEL KEST_READS_PAST_END inline size_t BehindTurns(const unsigned short* a,
                                                              const unsigned short* b, size_t at,
                                                              size_t end) {
  if (end - at < kTurnUnits) return at;
  // From here on the vectors of a are aligned; a few units are compared again.
  at -= BytesInto(sizeof(Vector), a + at) / sizeof(unsigned short);
  for (; end - at >= kTurnUnits && !StopsInTurn<Fold>(a + at, b + at); at += kTurnUnits) {
  }
  return at;
}

// The index of the unit at which the texts stop, limit when that comes first. Nothing is read but
// what shares a page with units up to there.
template <typename Fold>
KEST_FOR_KERNEL KEST_READS_PAST_END inline size_t FirstStop(const unsigned short* a,
                                                            const unsigned short* b, size_t limit) {
  for (size_t at = 0; at < limit;) {
    const size_t end = at + std::min(UnitsInPages(a, b, at), limit - at);
    // Most texts stop in the first vector; the turns go on to one that has a stop.
    for (bool first = true; end - at >= kVectorUnits; first = false) {
      const unsigned int bits = Zeros(Going<Fold>(a + at, b + at));
      if (bits != 0) return at + FirstOf(bits);
      at += kVectorUnits;
      if (first) at = BehindTurns<Fold>(a, b, at, end);
    }
    const size_t rest = end - at;
    const size_t back = kVectorUnits - rest;
    if (rest > 0 && UnitsInPages(a, b, at) >= kVectorUnits) {
      const unsigned int bits = OnlyFirst(Zeros(Going<Fold>(a + at, b + at)), rest);
      return bits != 0 ? at + FirstOf(bits) : limit;
    }
    if (rest > 0 && CanReadBefore(a, b, at, back)) {
      const unsigned int all = Zeros(Going<Fold>(a + at - back, b + at - back));
      const unsigned int bits = WithoutFirst(all, back);
      if (bits != 0) return at - back + FirstOf(bits);
      at = end;
    } else if (at < limit) {
      // Too near to the ends of both pages for any vector, or a unit in two pages.
      if (Fold::Of(a[at]) != Fold::Of(b[at]) || a[at] == 0) return at;
      ++at;
    }
  }
  return limit;
}

// The difference of the units at which the texts stop before limit.
template <typename Fold>
KEST_FOR_KERNEL KEST_READS_PAST_END inline int Difference(const unsigned short* a,
                                                          const unsigned short* b, size_t limit) {
  const size_t stop = FirstStop<Fold>(a, b, limit);
  return stop < limit ? Fold::Of(a[stop]) - Fold::Of(b[stop]) : 0;
}

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_STRING_COMPARE_KERNEL_H
