// Searching in wide C strings. The results point into text that came in as const, as in C.

#include "cpu/dispatch.h"
#include "kest/string.h"
#include "string/find_units.h"
#include "string/ucs_search_levels.h"
#include "string/units.h"

namespace KEST {

namespace {

// One bit for each of the 65536 units. Clearing it is dearer than comparing with each unit of a
// short set.
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

// Or the terminator.
template <typename Set>
const unsigned short* FirstInSet(const unsigned short* s, const Set& set) {
  while (*s != 0 && !set.Has(*s)) ++s;
  return s;
}

bool IsShort(const unsigned short* set) {
  size_t count = 0;
  while (count <= kMostInShortSet && set[count] != 0) ++count;
  return count <= kMostInShortSet;
}

// Apart, for its room on the stack.
[[gnu::noinline]] const unsigned short* FirstInLongSet(const unsigned short* s,
                                                       const unsigned short* set) {
  return FirstInSet(s, TUnitMap(set));
}

}  // namespace

const unsigned short* UcsFindPlain(const unsigned short* s, unsigned short ch) {
  while (*s != ch && *s != 0) ++s;
  return *s == ch ? s : nullptr;
}

const unsigned short* UcsFindLastPlain(const unsigned short* s, size_t count, unsigned short ch) {
  for (const unsigned short* unit = s + count; unit > s;) {
    if (*--unit == ch) return unit;
  }
  return nullptr;
}

const unsigned short* UcsFindOneOfPlain(const unsigned short* s, const unsigned short* set) {
  return FirstInSet(s, TShortSet(set));
}

namespace {

constexpr SVersions<UcsFindRoutine> kFindVersions = {UcsFindPlain, UcsFindSse2, nullptr,
                                                     UcsFindAvx2, UcsFindAvx512};
constexpr TDispatch<kFindVersions> FindFirstUnit;

constexpr SVersions<UcsFindLastRoutine> kFindLastVersions = {
    UcsFindLastPlain, UcsFindLastSse2, nullptr, UcsFindLastAvx2, UcsFindLastAvx512};
constexpr TDispatch<kFindLastVersions> FindLastUnit;

constexpr SVersions<UcsFindOneOfRoutine> kFindOneOfVersions = {
    UcsFindOneOfPlain, UcsFindOneOfSse2, nullptr, UcsFindOneOfAvx2, UcsFindOneOfAvx512};
constexpr TDispatch<kFindOneOfVersions> FindOneOfShortSetOrEnd;

}  // namespace

const unsigned short* FindUnit(const unsigned short* s, unsigned short ch) {
  return FindFirstUnit(s, ch);
}

unsigned short* ucschr(const unsigned short* s, unsigned short ch) {
  return s != nullptr ? const_cast<unsigned short*>(FindFirstUnit(s, ch)) : nullptr;
}

unsigned short* ucsrchr(const unsigned short* s, unsigned short ch) {
  if (s == nullptr) return nullptr;
  return const_cast<unsigned short*>(FindLastUnit(s, UnitLength(s) + 1, ch));
}

unsigned short* ucspbrk(const unsigned short* s, const unsigned short* set) {
  s = OrEmpty(s);
  set = OrEmpty(set);
  const unsigned short* found =
      IsShort(set) ? FindOneOfShortSetOrEnd(s, set) : FirstInLongSet(s, set);
  return *found != 0 ? const_cast<unsigned short*>(found) : nullptr;
}

// Nothing is found in empty text, not even empty text, on purpose.
unsigned short* ucsstr(const unsigned short* haystack, const unsigned short* needle) {
  needle = OrEmpty(needle);
  return const_cast<unsigned short*>(FindUnits(OrEmpty(haystack), needle, UnitLength(needle)));
}

}  // namespace KEST
