#include "string/splice.h"

#include "string/units.h"

namespace KEST {

bool Splice(TBstr& text, int index, int removed, const unsigned short* src, int count) {
  unsigned short*& string = *text.GetRawBstrPtr();
  const int kept = text.GetLength() - removed;
  if (count > INT_MAX - kept) {
    text.AdjustBuffer(0, false);
    return false;
  }
  unsigned short* fresh = KestAllocStringLen(nullptr, static_cast<unsigned int>(kept + count));
  if (fresh != nullptr) {
    MoveUnits(fresh, string, static_cast<size_t>(index));
    MoveUnits(fresh + index, src, static_cast<size_t>(count));
    MoveUnits(fresh + index + count, string + index + removed, static_cast<size_t>(kept - index));
  }
  KestFreeString(string);
  string = fresh;
  return fresh != nullptr || kept + count == 0;
}

}  // namespace KEST
