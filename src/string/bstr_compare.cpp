// Reading a TBstr: single units, comparisons, the number it starts with. Comparisons end at the
// first zero unit.

#include "string/splice.h"
#include "string/units.h"

namespace KEST {

namespace {

// length without the run of spaces that ends text.
int WithoutTrailingSpaces(const unsigned short* text, int length) {
  while (length > 0 && text[length - 1] == u' ') --length;
  return length;
}

// The next unit of text's normal form; cursor moves past it.
unsigned short NextNormal(const unsigned short*& cursor) {
  while (*cursor == u' ') ++cursor;
  return LowerOf(*cursor++);
}

int CompareNormalText(const unsigned short* a, const unsigned short* b) {
  // What both start with is the same in normal form too.
  const size_t common = CommonUnits(a, b, kWholeText);
  a += common;
  b += common;
  unsigned short unitOfA;
  unsigned short unitOfB;
  do {
    unitOfA = NextNormal(a);
    unitOfB = NextNormal(b);
  } while (unitOfA != 0 && unitOfA == unitOfB);
  return unitOfA - unitOfB;
}

}  // namespace

unsigned short TBstr::GetAt(int index) const {
  return index >= 0 && index < GetLength() ? string[index] : static_cast<unsigned short>(0);
}

void TBstr::SetAt(int index, unsigned short ch) {
  DestroyMultibyteBuffer();
  if (index >= 0 && index < GetLength() && ch != 0) string[index] = ch;
}

int TBstr::Compare(const unsigned short* s) const {
  if (string != nullptr && s != nullptr) return ucscmp(string, s);
  return GetLength() - TextLength(s);
}

int TBstr::CompareNoCase(const unsigned short* s) const {
  if (string != nullptr && s != nullptr) return ucsicmp(string, s);
  return GetLength() - TextLength(s);
}

int TBstr::CompareNormal(const unsigned short* s) const {
  if (string != nullptr && s != nullptr) return CompareNormalText(string, s);
  // With one side missing only lengths count, leading and inner spaces included, on purpose.
  return WithoutTrailingSpaces(string, GetLength()) - WithoutTrailingSpaces(s, TextLength(s));
}

int TBstr::ToLong() const { return string != nullptr ? ucstol(string, nullptr, 10) : 0; }

}  // namespace KEST
