// UTF-8 to and from 16-bit units, in the patterns of RFC 3629 for up to three bytes. Every unit
// stands for itself: surrogate pairs are not combined, and the decoder checks nothing, on purpose.

#include <limits.h>

#include "string/convert_levels.h"

namespace KEST {

namespace {

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

unsigned int Decode(const char* sequence, int size) {
  const unsigned int lead = static_cast<unsigned char>(sequence[0]);
  if (size == 1) return lead;
  if (size == 2) return (lead << 6 & 0x7C0) | TrailBits(sequence[1]);
  return (lead << 12 & 0xF000) | TrailBits(sequence[1]) << 6 | TrailBits(sequence[2]);
}

// Both loops are inlined in what calls them, for the sake of short text.

[[gnu::always_inline]] inline SConverted EncodeFrom(SConverted done, int end,
                                                    const unsigned short* src, char* dest,
                                                    int size) {
  const unsigned int room = static_cast<unsigned int>(size);
  unsigned int written = static_cast<unsigned int>(done.written);
  int i = done.read;
  // The room is tested before each unit only, so the last one may end up to 2 bytes past it; but
  // not past what the result counts.
  for (; i < end && written < room && EncodedSize(src[i]) <= INT_MAX - written; ++i) {
    written += Encode(src[i], dest + written);
  }
  return {i, static_cast<int>(written)};
}

[[gnu::always_inline]] inline SConverted DecodeFrom(SConverted done, int end, const char* src,
                                                    int length, unsigned short* dest, int size) {
  int i = done.read;
  int written = done.written;
  while (i < end && written < size) {
    const int step = SequenceSize(static_cast<unsigned char>(src[i]));
    if (step > length - i) break;
    dest[written++] = static_cast<unsigned short>(Decode(src + i, step));
    i += step;
  }
  return {i, written};
}

}  // namespace

uint64_t Utf8LengthPlain(const unsigned short* s) {
  uint64_t bytes = 0;
  for (; *s != 0; ++s) bytes += EncodedSize(*s);
  return bytes;
}

int EncodeUtf8Plain(const unsigned short* src, int length, char* dest, int size) {
  return EncodeFrom({0, 0}, length, src, dest, size).written;
}

void EncodeUtf8Until(int end, const unsigned short* src, char* dest, int size, SConverted& done) {
  done = EncodeFrom(done, end, src, dest, size);
}

int DecodeUtf8Plain(const char* src, int length, unsigned short* dest, int size) {
  return DecodeFrom({0, 0}, length, src, length, dest, size).written;
}

void DecodeUtf8Until(int end, const char* src, int length, unsigned short* dest, int size,
                     SConverted& done) {
  done = DecodeFrom(done, end, src, length, dest, size);
}

}  // namespace KEST
