// UTF-8 both ways against arithmetic: any bytes decoded, and any units encoded and decoded again.

#include "fuzz/fuzz.h"
#include "kest/string.h"

namespace {

using kest_fuzz::Guarded;
using kest_fuzz::Input;

constexpr size_t kLongest = 256;

size_t DecodeModel(const uint8_t* src, size_t length, unsigned short* dest, size_t size) {
  size_t written = 0;
  for (size_t at = 0; at < length && written < size;) {
    const unsigned int lead = src[at];
    const size_t bytes = lead < 128 ? 1 : lead / 32 % 2 == 0 ? 2 : 3;
    if (length - at < bytes) break;
    unsigned int unit = bytes == 1 ? lead : bytes == 2 ? lead % 32 : lead % 16;
    for (size_t i = 1; i < bytes; ++i) unit = unit * 64 + src[at + i] % 64;
    dest[written++] = static_cast<unsigned short>(unit);
    at += bytes;
  }
  return written;
}

// Up to size, and to the end of the sequence that begins below it.
size_t EncodeModel(const unsigned short* src, size_t length, uint8_t* dest, size_t size) {
  size_t written = 0;
  for (size_t i = 0; i < length && written < size; ++i) {
    const unsigned int unit = src[i];
    const unsigned int sequence[3][3] = {
        {unit},
        {192 + unit / 64, 128 + unit % 64},
        {224 + unit / 4096, 128 + unit / 64 % 64, 128 + unit % 64}};
    const int form = unit < 0x80 ? 0 : unit < 0x800 ? 1 : 2;
    for (int k = 0; k <= form; ++k) dest[written++] = static_cast<uint8_t>(sequence[form][k]);
  }
  return written;
}

void DecodeAny(const uint8_t* data, size_t size, size_t room) {
  static Guarded<unsigned short, kLongest> units;
  unsigned short expected[kLongest];
  const size_t count = DecodeModel(data, size, expected, room);
  unsigned short* decoded = units.Take(count < room ? count : room);
  FUZZ_CHECK(KestUtf8ToString(reinterpret_cast<const char*>(data), static_cast<int>(size), decoded,
                              static_cast<int>(room)) == static_cast<int>(count));
  FUZZ_CHECK(memcmp(decoded, expected, 2 * count) == 0);
}

void EncodeAny(const unsigned short* text, size_t length, size_t room) {
  static Guarded<uint8_t, 3 * kLongest> bytes;
  uint8_t expected[3 * kLongest];
  const size_t count = EncodeModel(text, length, expected, room);
  uint8_t* encoded = bytes.Take(count);
  FUZZ_CHECK(KestStringToUtf8(text, static_cast<int>(length), reinterpret_cast<char*>(encoded),
                              static_cast<int>(room)) == static_cast<int>(count));
  FUZZ_CHECK(memcmp(encoded, expected, count) == 0);
}

void RoundTrip(const unsigned short* text, size_t length) {
  static Guarded<uint8_t, 3 * kLongest> bytes;
  static Guarded<unsigned short, kLongest> units;
  const size_t size = KestStringUtf8ByteLen(text);
  uint8_t* encoded = bytes.Take(size);
  unsigned short* decoded = units.Take(length);
  const int intSize = static_cast<int>(size), intLength = static_cast<int>(length);
  char* chars = reinterpret_cast<char*>(encoded);
  FUZZ_CHECK(KestStringToUtf8(text, intLength, chars, intSize) == intSize);
  FUZZ_CHECK(KestUtf8ToString(chars, intSize, decoded, intLength) == intLength);
  FUZZ_CHECK(memcmp(decoded, text, 2 * length) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kLongest) return 0;
  Input in(data, size);
  const size_t room = in.Byte();
  DecodeAny(in.Rest(), in.Left(), room);
  static kest_fuzz::GuardedText<kLongest> text;
  const unsigned short* units = text.Take(in);
  EncodeAny(units, text.Length(), room);
  RoundTrip(units, text.Length());
  return 0;
}
