// Base64 both ways: bytes against an encoder that takes them bit by bit and back, and any text
// against a decoder that does the same.

#include "fuzz/fuzz.h"
#include "kest/digest.h"

namespace {

constexpr size_t kLongest = 256;
constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

unsigned int BitAt(const uint8_t* data, size_t size, size_t bit) {
  return bit / 8 < size ? data[bit / 8] >> (7 - bit % 8) & 1u : 0;
}

// The unit at place of the text of data.
unsigned short EncodedUnit(const uint8_t* data, size_t size, size_t place) {
  if (6 * place >= 8 * size) return '=';
  unsigned int index = 0;
  for (size_t i = 0; i < 6; ++i) index = 2 * index + BitAt(data, size, 6 * place + i);
  return static_cast<unsigned char>(kAlphabet[index]);
}

// An index; 64 for a "=", 65 for what is neither.
int IndexOf(unsigned short unit) {
  if (unit == '=') return 64;
  const void* place = unit < 128 ? memchr(kAlphabet, unit, 64) : nullptr;
  return place != nullptr ? static_cast<int>(static_cast<const char*>(place) - kAlphabet) : 65;
}

// The bytes written; good says whether all was taken.
size_t DecodeModel(const unsigned short* text, size_t length, uint8_t* out, size_t size,
                   bool& good) {
  size_t written = 0;
  good = false;
  for (size_t at = 0; at < length; at += 4) {
    if (length - at < 4) return written;
    unsigned int bits = 0;
    size_t bytes = 3;
    for (size_t i = 0; i < 4; ++i) {
      const int index = IndexOf(text[at + i]);
      if (index == 65 || (index == 64 && i < 2)) return written;
      // A "=" takes two bits away where it stands, also in front of a letter.
      bits = index == 64 ? bits / 4 : bits * 64 + static_cast<unsigned int>(index);
      if (index == 64) --bytes;
    }
    if (size - written < bytes) return written;
    for (size_t i = bytes; i-- > 0;) out[written++] = static_cast<uint8_t>(bits >> 8 * i);
  }
  good = true;
  return written;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kLongest) return 0;

  static kest_fuzz::Guarded<unsigned short, 4 * kLongest> textRoom;
  static kest_fuzz::Guarded<uint8_t, kLongest> byteRoom;
  const size_t units = (size + 2) / 3 * 4;
  unsigned short* text = textRoom.Take(units + 1);
  const int intSize = static_cast<int>(size), intUnits = static_cast<int>(units);
  FUZZ_CHECK(KestBinToBase64(data, intSize, text, intUnits) == 0);
  FUZZ_CHECK(KestBinToBase64(data, intSize, text, intUnits + 1) == intUnits);
  for (size_t i = 0; i < units; ++i) FUZZ_CHECK(text[i] == EncodedUnit(data, size, i));
  FUZZ_CHECK(text[units] == 0);
  uint8_t* bytes = byteRoom.Take(size);
  FUZZ_CHECK(KestBase64ToBin(text, bytes, intSize) == intSize);
  FUZZ_CHECK(memcmp(bytes, data, size) == 0);

  kest_fuzz::Input in(data, size);
  const size_t room = in.Byte();
  static kest_fuzz::GuardedText<kLongest> anyText;
  const unsigned short* any = anyText.Take(in);
  uint8_t expected[kLongest];
  bool good;
  const size_t count = DecodeModel(any, anyText.Length(), expected, room, good);
  bytes = byteRoom.Take(room);
  const int decoded = KestBase64ToBin(any, bytes, static_cast<int>(room));
  FUZZ_CHECK(decoded == (good ? static_cast<int>(count) : 0));
  FUZZ_CHECK(memcmp(bytes, expected, count) == 0);
  return 0;
}
