// Changing the text of a TBstr in place, unit by unit or at one position. Unless said otherwise
// the whole counted text is meant, inner zero units included.

#include <algorithm>

#include "string/splice.h"
#include "string/units.h"

namespace KEST {

void TBstr::MakeUpper() {
  DestroyMultibyteBuffer();
  if (string != nullptr) ucsupr(string);
}

void TBstr::MakeLower() {
  DestroyMultibyteBuffer();
  if (string != nullptr) ucslwr(string);
}

void TBstr::MakeReverse() {
  DestroyMultibyteBuffer();
  if (string != nullptr) ucsrev(string);
}

void TBstr::MakeBigEndian() {
  DestroyMultibyteBuffer();
  std::for_each(string, string + GetLength(), [](unsigned short& unit) {
    unit = static_cast<unsigned short>(unit << 8 | unit >> 8);
  });
}

void TBstr::TrimLeft(unsigned short ch) {
  DestroyMultibyteBuffer();
  if (ch == 0) return;
  const int length = GetLength();
  int run = 0;
  while (run < length && string[run] == ch) ++run;
  if (run > 0) Splice(*this, 0, run, nullptr, 0);
}

void TBstr::TrimRight(unsigned short ch) {
  DestroyMultibyteBuffer();
  if (ch == 0) return;
  int length = GetLength();
  while (length > 0 && string[length - 1] == ch) --length;
  AdjustBuffer(length, true);
}

void TBstr::Normalize() {
  Remove(u' ');
  // By count, where MakeLower would end at the first zero unit.
  std::transform(string, string + GetLength(), string, LowerOf);
}

int TBstr::Replace(unsigned short from, unsigned short to) {
  DestroyMultibyteBuffer();
  int replaced = 0;
  std::for_each(string, string + GetLength(), [&](unsigned short& unit) {
    if (unit != from) return;
    unit = to;
    ++replaced;
  });
  return replaced;
}

int TBstr::Remove(unsigned short ch) {
  DestroyMultibyteBuffer();
  const int length = GetLength();
  const int kept = static_cast<int>(std::remove(string, string + length, ch) - string);
  AdjustBuffer(kept, true);
  return length - kept;
}

int TBstr::Insert(int index, unsigned short ch) {
  const unsigned short text[] = {ch, 0};
  return Insert(index, text);
}

int TBstr::Insert(int index, const unsigned short* s) {
  const int length = GetLength();
  if (index < 0 || s == nullptr || *s == 0) return length;
  DestroyMultibyteBuffer();
  Splice(*this, std::min(index, length), 0, s, TextLength(s));
  return GetLength();
}

int TBstr::Delete(int index, int count) {
  const int length = GetLength();
  if (index < 0 || index >= length || count <= 0) return length;
  DestroyMultibyteBuffer();
  Splice(*this, index, std::min(count, length - index), nullptr, 0);
  return GetLength();
}

}  // namespace KEST
