// What the files of this folder share for text of 16-bit units. A call of an exported function goes
// through the linkage table, which is too dear to pay for every unit; so these are inline or
// hidden.

#ifndef KEST_SRC_STRING_UNITS_H
#define KEST_SRC_STRING_UNITS_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace KEST {

// The empty BSTR is null and may stand wherever text is read.
inline const unsigned short* OrEmpty(const unsigned short* s) {
  static constexpr unsigned short kEmpty = 0;
  return s != nullptr ? s : &kEmpty;
}

// A limit for the whole of a text: none is as long as that.
constexpr size_t kWholeText = SIZE_MAX;

// Units before the terminator: ucslen for the library's own calls.
size_t UnitLength(const unsigned short* s);

// The units that both texts start with, terminators not counted, looking at no more than limit of
// them.
size_t CommonUnits(const unsigned short* a, const unsigned short* b, size_t limit);

// Units before the terminator, looking at no more than limit of them.
inline size_t BoundedLength(const unsigned short* s, size_t limit) {
  return CommonUnits(s, s, limit);
}

// The two places may overlap.
inline void MoveUnits(unsigned short* dest, const unsigned short* src, size_t count) {
  if (count != 0) memmove(dest, src, count * sizeof(unsigned short));
}

constexpr unsigned short UpperOf(unsigned short ch) {
  return ch >= 'a' && ch <= 'z' ? static_cast<unsigned short>(ch - 32) : ch;
}

constexpr unsigned short LowerOf(unsigned short ch) {
  return ch >= 'A' && ch <= 'Z' ? static_cast<unsigned short>(ch + 32) : ch;
}

}  // namespace KEST

#endif  // KEST_SRC_STRING_UNITS_H
