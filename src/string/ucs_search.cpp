// Searching in wide C strings. The results point into text that came in as const, as in C.

#include "kest/string.h"
#include "string/units.h"

namespace {

// Up to here it is cheaper to compare with each unit of a set than to clear a map of all units.
constexpr unsigned int kShortSet = 8;

// One bit for each of the 65536 units.
class TUnitMap {
 public:
  explicit TUnitMap(const unsigned short* set) : bits() {
    for (; *set != 0; ++set) bits[*set / 32] |= 1u << *set % 32;
  }
  bool Has(unsigned short ch) const { return (bits[ch / 32] >> ch % 32 & 1) != 0; }

 private:
  unsigned int bits[0x10000 / 32];
};

class TShortSet {
 public:
  explicit TShortSet(const unsigned short* set) : units(set) {}
  bool Has(unsigned short ch) const {
    const unsigned short* unit = units;
    while (*unit != 0 && *unit != ch) ++unit;
    return *unit != 0;
  }

 private:
  const unsigned short* units;
};

template <typename Set>
const unsigned short* FirstInSet(const unsigned short* s, const Set& set) {
  while (*s != 0 && !set.Has(*s)) ++s;
  return *s != 0 ? s : nullptr;
}

const unsigned short* FirstInLongSet(const unsigned short* s, const unsigned short* set) {
  return FirstInSet(s, TUnitMap(set));
}

bool StartsWith(const unsigned short* s, const unsigned short* start) {
  while (*start != 0 && *s == *start) ++s, ++start;
  return *start == 0;
}

}  // namespace

namespace KEST {

unsigned short* ucschr(const unsigned short* s, unsigned short ch) {
  if (s == nullptr) return nullptr;
  while (*s != ch && *s != 0) ++s;
  return *s == ch ? const_cast<unsigned short*>(s) : nullptr;
}

unsigned short* ucsrchr(const unsigned short* s, unsigned short ch) {
  if (s == nullptr) return nullptr;
  const unsigned short* last = nullptr;
  for (;; ++s) {
    if (*s == ch) last = s;
    if (*s == 0) return const_cast<unsigned short*>(last);
  }
}

unsigned short* ucspbrk(const unsigned short* s, const unsigned short* set) {
  s = OrEmpty(s);
  set = OrEmpty(set);
  const bool isShort = BoundedLength(set, kShortSet + 1) <= kShortSet;
  return const_cast<unsigned short*>(isShort ? FirstInSet(s, TShortSet(set))
                                             : FirstInLongSet(s, set));
}

// Nothing is found in empty text, not even empty text, on purpose.
unsigned short* ucsstr(const unsigned short* haystack, const unsigned short* needle) {
  needle = OrEmpty(needle);
  for (const unsigned short* s = OrEmpty(haystack); *s != 0; ++s) {
    if (StartsWith(s, needle)) return const_cast<unsigned short*>(s);
  }
  return nullptr;
}

}  // namespace KEST
