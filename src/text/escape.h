// What escaping and wrapping share: a text put together from pieces, in one block of its length.

#ifndef KEST_SRC_TEXT_ESCAPE_H
#define KEST_SRC_TEXT_ESCAPE_H

#include <limits.h>
#include <stddef.h>
#include <stdint.h>

#include "kest/string.h"
#include "string/units.h"

namespace KEST {

// Where pieces go: to units, or with null nowhere, to be counted.
struct STextSink {
  unsigned short* units;
  uint64_t length;

  void Put(const unsigned short* piece, size_t count) {
    if (units != nullptr) MoveUnits(units + length, piece, count);
    length += count;
  }
  void Put(const unsigned short* piece) { Put(piece, ucslen(piece)); }
};

// Puts the units from text up to end, the markup characters as entities.
void PutEscaped(STextSink& sink, const unsigned short* text, const unsigned short* end);

// A BSTR of that length to be filled; null without memory, and for more than an int counts.
inline unsigned short* AllocateText(uint64_t length) {
  return length <= INT_MAX ? KestAllocStringLen(nullptr, static_cast<unsigned int>(length))
                           : nullptr;
}

// out becomes fresh, which it then owns; null is the empty text.
inline void ReplaceText(TBstr& out, unsigned short* fresh) {
  KestFreeString(out.Detach());
  out.Attach(fresh);
}

// out becomes the text that write(sink) puts, both times that it is called; empty without memory.
// The pieces may lie in out's own text: that is freed last.
template <typename Write>
void BuildText(TBstr& out, Write write) {
  STextSink count = {nullptr, 0};
  write(count);
  unsigned short* fresh = AllocateText(count.length);
  if (fresh != nullptr) {
    STextSink sink = {fresh, 0};
    write(sink);
  }
  ReplaceText(out, fresh);
}

}  // namespace KEST

#endif  // KEST_SRC_TEXT_ESCAPE_H
