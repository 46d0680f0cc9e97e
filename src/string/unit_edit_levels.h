// The versions of changing single units all over a text.

#ifndef KEST_SRC_STRING_UNIT_EDIT_LEVELS_H
#define KEST_SRC_STRING_UNIT_EDIT_LEVELS_H

#include <stddef.h>

namespace KEST {

// Every unit from of the count at text becomes to. Returns how many did.
using ReplaceUnitRoutine = size_t(unsigned short* text, size_t count, unsigned short from,
                                  unsigned short to);
ReplaceUnitRoutine ReplaceUnitPlain, ReplaceUnitSse2, ReplaceUnitAvx2, ReplaceUnitAvx512;

// Moves the count units at text to dest, which is not behind them, without those that are ch.
// Returns the end.
using RemoveUnitRoutine = unsigned short*(unsigned short* dest, const unsigned short* text,
                                          size_t count, unsigned short ch);
RemoveUnitRoutine RemoveUnitPlain, RemoveUnitSse2, RemoveUnitAvx2, RemoveUnitAvx512;

}  // namespace KEST

#endif  // KEST_SRC_STRING_UNIT_EDIT_LEVELS_H
