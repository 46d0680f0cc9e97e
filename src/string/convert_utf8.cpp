// UTF-8 to and from 16-bit units, in the patterns of RFC 3629 for up to three bytes. Every unit
// stands for itself: surrogate pairs are not combined, and the decoder checks nothing, on purpose.

#include <limits.h>
#include <stdint.h>

#include "kest/string.h"

namespace {

constexpr unsigned int kLastOfOneByte = 0x7F;
constexpr unsigned int kLastOfTwoBytes = 0x7FF;

unsigned int EncodedSize(unsigned int unit) {
  return unit <= kLastOfOneByte ? 1 : unit <= kLastOfTwoBytes ? 2 : 3;
}

char Trail(unsigned int bits) { return static_cast<char>(0x80 | (bits & 0x3F)); }

unsigned int TrailBits(char byte) { return static_cast<unsigned int>(byte) & 0x3F; }

// Writes the unit's sequence and returns its size.
unsigned int Encode(unsigned int unit, char* dest) {
  const unsigned int size = EncodedSize(unit);
  if (size == 1) {
    dest[0] = static_cast<char>(unit);
  } else if (size == 2) {
    dest[0] = static_cast<char>(0xC0 | unit >> 6);
    dest[1] = Trail(unit);
  } else {
    dest[0] = static_cast<char>(0xE0 | unit >> 12);
    dest[1] = Trail(unit >> 6);
    dest[2] = Trail(unit);
  }
  return size;
}

// By the lead byte alone: any other byte counts as a continuation.
int SequenceSize(unsigned char lead) { return lead < 0x80 ? 1 : (lead & 0x20) == 0 ? 2 : 3; }

unsigned int Decode(const char* sequence, int size) {
  const unsigned int lead = static_cast<unsigned char>(sequence[0]);
  if (size == 1) return lead;
  if (size == 2) return (lead << 6 & 0x7C0) | TrailBits(sequence[1]);
  return (lead << 12 & 0xF000) | TrailBits(sequence[1]) << 6 | TrailBits(sequence[2]);
}

}  // namespace

extern "C" {

unsigned int KestStringUtf8ByteLen(const unsigned short* s) {
  if (s == nullptr) return 0;
  uint64_t bytes = 0;
  for (; *s != 0; ++s) bytes += EncodedSize(*s);
  return bytes <= UINT_MAX ? static_cast<unsigned int>(bytes) : 0;
}

int KestStringToUtf8(const unsigned short* src, int length, char* dest, int size) {
  if (src == nullptr || dest == nullptr || size <= 0) return 0;
  const unsigned int room = static_cast<unsigned int>(size);
  unsigned int written = 0;
  // The room is tested before each unit only, so the last one may end up to 2 bytes past it; but
  // not past what the result counts.
  for (int i = 0; i < length && written < room && EncodedSize(src[i]) <= INT_MAX - written; ++i) {
    written += Encode(src[i], dest + written);
  }
  return static_cast<int>(written);
}

int KestUtf8ToString(const char* src, int length, unsigned short* dest, int size) {
  if (src == nullptr || dest == nullptr) return 0;
  int written = 0;
  for (int i = 0; i < length && written < size;) {
    const int step = SequenceSize(static_cast<unsigned char>(src[i]));
    if (step > length - i) break;
    dest[written++] = static_cast<unsigned short>(Decode(src + i, step));
    i += step;
  }
  return written;
}

}  // extern "C"
