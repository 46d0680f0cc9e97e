// Changing single units: vectors without any are passed over, or moved as they are. A file includes
// this after one of vector_LEVEL.h.

#ifndef KEST_SRC_STRING_UNIT_EDIT_KERNEL_H
#define KEST_SRC_STRING_UNIT_EDIT_KERNEL_H

#include <string.h>

#include "string/place.h"
#include "string/unit_edit_levels.h"

namespace KEST::KEST_KERNELS {

KEST_FOR_KERNEL inline size_t ReplaceUnit(unsigned short* text, size_t count, unsigned short from,
                                          unsigned short to) {
  const Vector wanted = Broadcast(from);
  size_t replaced = 0;
  for (; count >= kVectorUnits; count -= kVectorUnits) {
    unsigned int bits = Zeros(Differences(Load(text), wanted));
    for (; bits != 0; bits = WithoutUnit(bits, FirstOf(bits))) {
      text[FirstOf(bits)] = to;
      ++replaced;
    }
    text += kVectorUnits;
  }
  return replaced + ReplaceUnitPlain(text, count, from, to);
}

KEST_FOR_KERNEL inline unsigned short* RemoveUnit(unsigned short* dest, const unsigned short* text,
                                                  size_t count, unsigned short ch) {
  const Vector unwanted = Broadcast(ch);
  for (; count >= kVectorUnits; count -= kVectorUnits) {
    const Vector units = Load(text);
    if (Zeros(Differences(units, unwanted)) == 0) {
      memcpy(dest, &units, sizeof units);
      dest += kVectorUnits;
    } else {
      dest = RemoveUnitPlain(dest, text, kVectorUnits, ch);
    }
    text += kVectorUnits;
  }
  return RemoveUnitPlain(dest, text, count, ch);
}

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_STRING_UNIT_EDIT_KERNEL_H
