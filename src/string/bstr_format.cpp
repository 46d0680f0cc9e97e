// TBstr's formatting members.

#include "kest/string.h"

namespace KEST {

namespace {

constexpr unsigned int kLocalUnits = 128;

}  // namespace

void TBstr::Format(const unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  FormatV(format, args);
  va_end(args);
}

// Format and arguments may lie in this object's own text, so the old block goes only when the new
// one is full. Text that is too long for the stack is formatted once more, in its place. A count at
// the limit of int is more than a block can hold; the string is then empty, as after any failed
// growth.
void TBstr::FormatV(const unsigned short* format, va_list args) {
  unsigned short local[kLocalUnits];
  va_list measured;
  va_copy(measured, args);
  const unsigned int length =
      static_cast<unsigned int>(vsnuprintf(local, kLocalUnits, format, measured));
  va_end(measured);

  const bool isComplete = length < kLocalUnits;
  unsigned short* text = KestAllocStringLen(isComplete ? local : nullptr, length);
  if (text != nullptr && !isComplete) vsnuprintf(text, length + 1, format, args);
  DestroyMultibyteBuffer();
  KestFreeString(string);
  string = text;
}

}  // namespace KEST
