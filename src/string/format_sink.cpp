// The sink of the formatter: it stores what has room and counts everything.

#include <limits.h>

#include <algorithm>

#include "frame/layout.h"
#include "kest/string.h"
#include "string/units.h"

namespace {

KEST_SIZE_IS(KEST::xFILE, 8, 16);
KEST_FIELD_AT(KEST::xFILE, position, 0, 0);
KEST_FIELD_AT(KEST::xFILE, remaining, 4, 8);

// The count stays at INT_MAX once it is there.
void AddToCount(int* count, int n) { *count = *count <= INT_MAX - n ? *count + n : INT_MAX; }

// Takes up to n units of room: gives their place, and in n how many they are.
unsigned short* TakeRoom(KEST::xFILE* out, int* n) {
  *n = std::clamp(out->remaining, 0, *n);
  unsigned short* place = out->position;
  if (*n > 0) out->position += *n;
  out->remaining -= *n;
  return place;
}

}  // namespace

namespace KEST {

void write_char(unsigned short ch, xFILE* out, int* count) {
  if (out->remaining > 0) {
    *out->position++ = ch;
    --out->remaining;
  }
  AddToCount(count, 1);
}

void write_multi_char(unsigned short ch, int n, xFILE* out, int* count) {
  if (n <= 0) return;
  AddToCount(count, n);
  unsigned short* place = TakeRoom(out, &n);
  std::fill_n(place, n, ch);
}

void write_string(const unsigned short* s, int n, xFILE* out, int* count) {
  if (n <= 0) return;
  AddToCount(count, n);
  unsigned short* place = TakeRoom(out, &n);
  MoveUnits(place, s, static_cast<unsigned int>(n));
}

}  // namespace KEST
