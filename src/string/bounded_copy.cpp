// Copying and appending within a given room, for wide and for 8-bit text. The result is the length
// that the whole text has, so that a result not below the size tells of truncation.

#include <string.h>

#include <algorithm>

#include "kest/string.h"
#include "string/units.h"

namespace {

unsigned int LengthOf(const unsigned short* s) {
  return static_cast<unsigned int>(KEST::UnitLength(s));
}
unsigned int LengthOf(const char* s) {
  return s != nullptr ? static_cast<unsigned int>(strlen(s)) : 0;
}

void CopyText(unsigned short* dest, const unsigned short* src, unsigned int count) {
  KEST::MoveUnits(dest, src, count);
}

void CopyText(char* dest, const char* src, unsigned int count) {
  if (count != 0) memmove(dest, src, count);
}

// ISO 8859-1: the byte is the unit.
void CopyText(unsigned short* dest, const char* src, unsigned int count) {
  std::transform(src, src + count, dest, [](char ch) { return static_cast<unsigned char>(ch); });
}

template <typename Dest, typename Source>
unsigned int BoundedCopy(Dest* dest, const Source* src, unsigned int size) {
  const unsigned int length = LengthOf(src);
  if (size == 0) return length;
  const unsigned int stored = std::min(length, size - 1);
  CopyText(dest, src, stored);
  dest[stored] = 0;
  return length;
}

// The room left is not checked, on purpose: contents longer than size make it wrap around, and the
// copy is then unbounded.
template <typename Unit>
unsigned int BoundedAppend(Unit* dest, const Unit* src, unsigned int size) {
  const unsigned int length = LengthOf(dest);
  return length + BoundedCopy(dest + length, src, size - length);
}

}  // namespace

namespace KEST {

unsigned int ucslcpy(unsigned short* dest, const unsigned short* src, unsigned int size) {
  return BoundedCopy(dest, src, size);
}

unsigned int ucslcat(unsigned short* dest, const unsigned short* src, unsigned int size) {
  return BoundedAppend(dest, src, size);
}

unsigned int s2ulcpy(unsigned short* dest, const char* src, unsigned int size) {
  return BoundedCopy(dest, src, size);
}

unsigned int strlcpy(char* dest, const char* src, unsigned int size) {
  return BoundedCopy(dest, src, size);
}

unsigned int strlcat(char* dest, const char* src, unsigned int size) {
  return BoundedAppend(dest, src, size);
}

}  // namespace KEST
