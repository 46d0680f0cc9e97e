// Changing the text of a TBstr in place, unit by unit or at one position. Unless said otherwise
// the whole counted text is meant, inner zero units included.

#include <algorithm>

#include "string/bstr_block.h"
#include "string/splice.h"
#include "string/units.h"

namespace KEST {

void TBstr::MakeUpper() {
  Discard(multibyte);
  if (string != nullptr) ucsupr(string);
}

void TBstr::MakeLower() {
  Discard(multibyte);
  if (string != nullptr) ucslwr(string);
}

void TBstr::MakeReverse() {
  Discard(multibyte);
  if (string != nullptr) ucsrev(string);
}

void TBstr::MakeBigEndian() {
  Discard(multibyte);
  std::for_each(string, string + Length(string), [](unsigned short& unit) {
    unit = static_cast<unsigned short>(unit << 8 | unit >> 8);
  });
}

void TBstr::TrimLeft(unsigned short ch) {
  Discard(multibyte);
  if (ch == 0) return;
  const int length = Length(string);
  int run = 0;
  while (run < length && string[run] == ch) ++run;
  if (run > 0) Splice(string, 0, run, nullptr, 0);
}

void TBstr::TrimRight(unsigned short ch) {
  Discard(multibyte);
  if (ch == 0) return;
  int length = Length(string);
  while (length > 0 && string[length - 1] == ch) --length;
  AdjustBuffer(length, true);
}

void TBstr::Normalize() {
  Remove(u' ');
  // By count, where MakeLower would end at the first zero unit.
  std::transform(string, string + Length(string), string, LowerOf);
}

int TBstr::Replace(unsigned short from, unsigned short to) {
  Discard(multibyte);
  int replaced = 0;
  std::for_each(string, string + Length(string), [&](unsigned short& unit) {
    if (unit != from) return;
    unit = to;
    ++replaced;
  });
  return replaced;
}

int TBstr::Remove(unsigned short ch) {
  Discard(multibyte);
  const int length = Length(string);
  const int kept = static_cast<int>(std::remove(string, string + length, ch) - string);
  AdjustBuffer(kept, true);
  return length - kept;
}

int TBstr::Insert(int index, unsigned short ch) {
  const unsigned short text[] = {ch, 0};
  return Insert(index, text);
}

int TBstr::Insert(int index, const unsigned short* s) {
  const int length = Length(string);
  if (index < 0 || s == nullptr || *s == 0) return length;
  Discard(multibyte);
  Splice(string, std::min(index, length), 0, s, TextLength(s));
  return Length(string);
}

int TBstr::Delete(int index, int count) {
  const int length = Length(string);
  if (index < 0 || index >= length || count <= 0) return length;
  Discard(multibyte);
  Splice(string, index, std::min(count, length - index), nullptr, 0);
  return Length(string);
}

}  // namespace KEST
