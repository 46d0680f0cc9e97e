// Changing the text of a TBstr in place, unit by unit or at one position. Unless said otherwise
// the whole counted text is meant, inner zero units included.

#include <algorithm>

#include "cpu/dispatch.h"
#include "string/bstr_block.h"
#include "string/splice.h"
#include "string/unit_edit_levels.h"
#include "string/units.h"

namespace KEST {

namespace {

constexpr SVersions<ReplaceUnitRoutine> kReplaceUnit = {ReplaceUnitPlain, ReplaceUnitSse2, nullptr,
                                                        ReplaceUnitAvx2, ReplaceUnitAvx512};
constexpr TDispatch<kReplaceUnit> ReplaceUnit;

constexpr SVersions<RemoveUnitRoutine> kRemoveUnit = {RemoveUnitPlain, RemoveUnitSse2, nullptr,
                                                      RemoveUnitAvx2, RemoveUnitAvx512};
constexpr TDispatch<kRemoveUnit> RemoveUnit;

}  // namespace

size_t ReplaceUnitPlain(unsigned short* text, size_t count, unsigned short from,
                        unsigned short to) {
  size_t replaced = 0;
  for (; count != 0; ++text, --count) {
    if (*text != from) continue;
    *text = to;
    ++replaced;
  }
  return replaced;
}

unsigned short* RemoveUnitPlain(unsigned short* dest, const unsigned short* text, size_t count,
                                unsigned short ch) {
  for (; count != 0; ++text, --count) {
    const unsigned short unit = *text;
    *dest = unit;
    dest += unit != ch ? 1 : 0;
  }
  return dest;
}

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
  return static_cast<int>(ReplaceUnit(string, BstrLength(string), from, to));
}

int TBstr::Remove(unsigned short ch) {
  Discard(multibyte);
  const int length = Length(string);
  const int kept =
      static_cast<int>(RemoveUnit(string, string, static_cast<size_t>(length), ch) - string);
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
