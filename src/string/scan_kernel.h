// Walking through text to the first unit of some kind. A mark makes 0 of the units of that kind, of
// the terminator always, and of no other. A file includes this after one of vector_LEVEL.h.

#ifndef KEST_SRC_STRING_SCAN_KERNEL_H
#define KEST_SRC_STRING_SCAN_KERNEL_H

#include "string/place.h"
#include "string/ucs_search_levels.h"

namespace KEST::KEST_KERNELS {

struct STerminator {
  KEST_FOR_KERNEL Vector operator()(Vector v) const { return v; }
};

struct SUnit {
  Vector unit;

  KEST_FOR_KERNEL explicit SUnit(unsigned short ch) : unit(Broadcast(ch)) {}
  KEST_FOR_KERNEL Vector operator()(Vector v) const { return AlsoZero(v, v, unit); }
};

struct SUnitOfSet {
  Vector units[kMostInShortSet];
  size_t count = 0;

  KEST_FOR_KERNEL explicit SUnitOfSet(const unsigned short* set) {
    for (; *set != 0; ++set) units[count++] = Broadcast(*set);
  }
  KEST_FOR_KERNEL Vector operator()(Vector v) const {
    Vector marked = v;
    for (size_t at = 0; at < count; ++at) marked = AlsoZero(marked, v, units[at]);
    return marked;
  }
};

// The bits of the marked units of the aligned vector at p.
template <typename Mark>
KEST_FOR_KERNEL KEST_READS_PAST_END unsigned int Marked(const unsigned short* p, Mark mark) {
  return Zeros(mark(LoadAligned(p)));
}

// The first marked unit of text whose units lie across the lanes of aligned vectors.
template <typename Mark>
KEST_FOR_KERNEL KEST_READS_PAST_END inline const unsigned short* FirstMarkedAtOdd(
    const unsigned short* s, Mark mark) {
  for (;; s += kVectorUnits) {
    const size_t here = UnitsToPageEnd(s);
    if (here > 0 && here < kVectorUnits) {
      const unsigned short* last = s + here - kVectorUnits;
      const unsigned int bits = WithoutFirst(Zeros(mark(Load(last))), kVectorUnits - here);
      if (bits != 0) return last + FirstOf(bits);
      // A unit in both pages: the next one is there too.
      s += here;
    }
    const unsigned int bits = Zeros(mark(Load(s)));
    if (bits != 0) return s + FirstOf(bits);
  }
}

template <typename Mark>
KEST_FOR_KERNEL KEST_READS_PAST_END inline const unsigned short* FirstMarkedInLong(
    const unsigned short* s, Mark mark) {
  constexpr size_t kTurnBytes = 4 * sizeof(Vector);
  const unsigned short* p = AlignedDown(s);
  unsigned int bits = WithoutFirst(Marked(p, mark), static_cast<size_t>(s - p));
  while (bits == 0) {
    p += kVectorUnits;
    // All vectors of a turn are in one page.
    if (BytesInto(kTurnBytes, p) == 0) break;
    bits = Marked(p, mark);
  }
  if (bits != 0) return p + FirstOf(bits);
  for (;; p += 4 * kVectorUnits) {
    const Vector a = mark(LoadAligned(p));
    const Vector b = mark(LoadAligned(p + kVectorUnits));
    const Vector c = mark(LoadAligned(p + 2 * kVectorUnits));
    const Vector d = mark(LoadAligned(p + 3 * kVectorUnits));
    if (HasZero(a, b, c, d)) break;
  }
  while ((bits = Marked(p, mark)) == 0) p += kVectorUnits;
  return p + FirstOf(bits);
}

// Inline, all of it: a routine without calls needs no frame, and short text takes one vector.
template <typename Mark>
KEST_FOR_KERNEL KEST_READS_PAST_END inline const unsigned short* FirstMarked(
    const unsigned short* s, Mark mark) {
  if (UnitsToPageEnd(s) >= kVectorUnits) {
    const unsigned int bits = Zeros(mark(Load(s)));
    if (bits != 0) return s + FirstOf(bits);
  }
  return IsOdd(s) ? FirstMarkedAtOdd(s, mark) : FirstMarkedInLong(s, mark);
}

KEST_FOR_KERNEL inline const unsigned short* FirstUnit(const unsigned short* s, unsigned short ch) {
  const unsigned short* found = FirstMarked(s, SUnit(ch));
  return *found == ch ? found : nullptr;
}

// The last of count units at s, at least one, that is ch; null when none is.
KEST_FOR_KERNEL KEST_READS_PAST_END inline const unsigned short* LastUnit(const unsigned short* s,
                                                                          size_t count,
                                                                          unsigned short ch) {
  const Vector unit = Broadcast(ch);
  for (; count >= kVectorUnits; count -= kVectorUnits) {
    const unsigned short* p = s + count - kVectorUnits;
    const unsigned int bits = Zeros(Differences(Load(p), unit));
    if (bits != 0) return p + LastOf(bits);
  }
  if (count == 0) return nullptr;
  // A vector that starts with what is left, or one that ends with it.
  const bool fits = UnitsToPageEnd(s) >= kVectorUnits;
  const unsigned short* p = fits ? s : s + count - kVectorUnits;
  const unsigned int all = Zeros(Differences(Load(p), unit));
  const unsigned int bits = fits ? OnlyFirst(all, count) : WithoutFirst(all, kVectorUnits - count);
  return bits != 0 ? p + LastOf(bits) : nullptr;
}

KEST_FOR_KERNEL inline size_t Length(const unsigned short* s) {
  return static_cast<size_t>(FirstMarked(s, STerminator()) - s);
}

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_STRING_SCAN_KERNEL_H
