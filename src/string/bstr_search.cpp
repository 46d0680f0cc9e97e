// Finding units and text in a TBstr, and taking parts of it. A search ends at the first zero unit
// after its start; parts are counted.

#include <algorithm>

#include "kest/string.h"
#include "string/find_units.h"
#include "string/units.h"

namespace KEST {

namespace {

int IndexOf(const unsigned short* found, const unsigned short* text) {
  return found != nullptr ? static_cast<int>(found - text) : -1;
}

}  // namespace

int TBstr::Find(unsigned short ch, int start) const {
  if (start < 0 || start >= GetLength()) return -1;
  return IndexOf(FindUnit(string + start, ch), string);
}

int TBstr::Find(const unsigned short* s, int start) const {
  if (s == nullptr || start < 0 || start >= GetLength()) return -1;
  if (*s == 0) return start;
  return IndexOf(FindUnits(string + start, s, UnitLength(s)), string);
}

int TBstr::ReverseFind(unsigned short ch) const {
  return string != nullptr ? IndexOf(ucsrchr(string, ch), string) : -1;
}

int TBstr::FindOneOf(const unsigned short* set) const {
  if (string == nullptr || set == nullptr) return -1;
  return IndexOf(ucspbrk(string, set), string);
}

TBstr TBstr::Mid(int first, int count) const {
  const int length = GetLength();
  first = std::clamp(first, 0, length);
  count = std::min(count, length - first);
  return count > 0 ? TBstr(string + first, count) : TBstr();
}

TBstr TBstr::Mid(int first) const { return Mid(first, GetLength()); }

TBstr TBstr::Left(int n) const { return Mid(0, n); }

TBstr TBstr::Right(int n) const {
  const int length = GetLength();
  n = std::clamp(n, 0, length);
  return Mid(length - n, n);
}

}  // namespace KEST
