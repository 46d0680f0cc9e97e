// Base64, RFC 4648 section 4, between bytes and 16-bit text.

#include "kest/digest.h"

#include <limits.h>

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned short kPad = '=';
constexpr int kNoIndex = -1;

struct SIndexes {
  signed char of[256];
};

constexpr SIndexes MakeIndexes() {
  SIndexes indexes = {};
  for (signed char& index : indexes.of) index = kNoIndex;
  for (int i = 0; i < 64; ++i) {
    indexes.of[static_cast<unsigned char>(kAlphabet[i])] = static_cast<signed char>(i);
  }
  return indexes;
}

constexpr SIndexes kIndexes = MakeIndexes();

int IndexOf(unsigned short unit) { return unit < 256 ? kIndexes.of[unit] : kNoIndex; }

// The character for the lowest 6 bits.
unsigned short CharacterFor(unsigned int bits) {
  return static_cast<unsigned char>(kAlphabet[bits & 63]);
}

unsigned int Group(unsigned int first, unsigned int second, unsigned int third) {
  return first << 16 | second << 8 | third;
}

// The last group, of one byte or two.
void EncodeRest(const unsigned char* data, int length, unsigned short* text) {
  const unsigned int bits = Group(data[0], length == 2 ? data[1] : 0u, 0);
  text[0] = CharacterFor(bits >> 18);
  text[1] = CharacterFor(bits >> 12);
  text[2] = length == 2 ? CharacterFor(bits >> 6) : kPad;
  text[3] = kPad;
}

// Reads a group of 4 units, and none past the first that does not fit. Returns the bytes that it
// stands for, 1 to 3, which are the lowest of value, or 0. A letter may follow a "=", on purpose.
int DecodeGroup(const unsigned short* text, unsigned int& value) {
  int bytes = 3;
  value = 0;
  for (int count = 0; count < 4; ++count) {
    const int index = IndexOf(text[count]);
    if (index != kNoIndex) {
      value = value << 6 | static_cast<unsigned int>(index);
    } else if (text[count] == kPad && count >= 2) {
      value >>= 2;
      --bytes;
    } else {
      return 0;
    }
  }
  return bytes;
}

}  // namespace

extern "C" {

int KestBinToBase64(const unsigned char* data, int length, unsigned short* text, int size) {
  if (length < 0) return 0;
  const int groups = length / 3 + (length % 3 != 0 ? 1 : 0);
  if (groups > INT_MAX / 4 || size <= groups * 4) return 0;
  for (; length >= 3; data += 3, text += 4, length -= 3) {
    const unsigned int bits = Group(data[0], data[1], data[2]);
    text[0] = CharacterFor(bits >> 18);
    text[1] = CharacterFor(bits >> 12);
    text[2] = CharacterFor(bits >> 6);
    text[3] = CharacterFor(bits);
  }
  if (length > 0) {
    EncodeRest(data, length, text);
    text += 4;
  }
  *text = 0;
  return groups * 4;
}

int KestBase64ToBin(const unsigned short* text, unsigned char* out, int size) {
  if (text == nullptr) return 0;
  int written = 0;
  for (; *text != 0; text += 4) {
    unsigned int value;
    const int bytes = DecodeGroup(text, value);
    if (bytes == 0 || size - written < bytes) return 0;
    if (bytes == 3) out[written++] = static_cast<unsigned char>(value >> 16);
    if (bytes >= 2) out[written++] = static_cast<unsigned char>(value >> 8);
    out[written++] = static_cast<unsigned char>(value);
  }
  return written;
}

}  // extern "C"
