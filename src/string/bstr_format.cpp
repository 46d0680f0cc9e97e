// TBstr's formatting members.

#include "kest/string.h"

namespace KEST {

void TBstr::Format(const unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  FormatV(format, args);
  va_end(args);
}

// The formatter itself measures, into a sink without room. Format and arguments may lie in this
// object's own text, so the old block goes only when the new one is full. A count at the limit of
// int is more than a block can hold; the string is then empty, as after any failed growth.
void TBstr::FormatV(const unsigned short* format, va_list args) {
  va_list measured;
  va_copy(measured, args);
  xFILE nowhere = {nullptr, 0};
  const unsigned int length = static_cast<unsigned int>(unichar_output(&nowhere, format, measured));
  va_end(measured);

  unsigned short* text = KestAllocStringLen(nullptr, length);
  if (text != nullptr) vsnuprintf(text, length + 1, format, args);
  DestroyMultibyteBuffer();
  KestFreeString(string);
  string = text;
}

}  // namespace KEST
