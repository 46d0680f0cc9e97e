// 8-bit text both ways, with every way to give length and size.

#include "fuzz/fuzz.h"
#include "kest/string.h"

namespace {

using kest_fuzz::Guarded;

constexpr size_t kLongest = 128;

// What a converter takes of a text of present elements and a terminator.
int Taken(int length, int size, size_t present) {
  if (length == -1) length = static_cast<int>(present) + 1;
  const int taken = length < size ? length : size;
  return taken > 0 ? taken : 0;
}

void Narrow(const unsigned short* text, size_t present, int length, int size) {
  static Guarded<char, kLongest + 1> room;
  const int expected = Taken(length, size, present);
  char* out = room.Take(static_cast<size_t>(expected));
  FUZZ_CHECK(KestUnicodeToMultibyte(text, length, out, size) == expected);
  for (int i = 0; i < expected; ++i) {
    FUZZ_CHECK(out[i] == (text[i] > 255 ? '?' : static_cast<char>(text[i])));
  }
}

void Widen(const char* text, size_t present, int length, int size) {
  static Guarded<unsigned short, kLongest + 1> room;
  const int expected = Taken(length, size, present);
  unsigned short* out = room.Take(static_cast<size_t>(expected));
  FUZZ_CHECK(KestMultibyteToUnicode(text, length, out, size) == expected);
  for (int i = 0; i < expected; ++i) FUZZ_CHECK(out[i] == static_cast<unsigned char>(text[i]));
}

void Convert(const char* text, size_t present, int length) {
  const KEST::TConvertBuffer buffer(text, length);
  const int expected = length == -1 ? static_cast<int>(present) : length > 0 ? length : 0;
  FUZZ_CHECK(buffer.GetLength() == expected);
  FUZZ_CHECK((buffer.GetBuffer() == nullptr) == (expected == 0));
  for (int i = 0; i < expected; ++i) {
    FUZZ_CHECK(buffer.GetBuffer()[i] == static_cast<unsigned char>(text[i]));
  }
  FUZZ_CHECK(expected == 0 || buffer.GetBuffer()[expected] == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kest_fuzz::Input in(data, size);
  const int asked = static_cast<signed char>(in.Byte()), room = static_cast<signed char>(in.Byte());
  static kest_fuzz::GuardedText<kLongest> wide;
  const unsigned short* units = wide.Take(in);
  const size_t present = wide.Length();
  // No length reaches past the terminator.
  const int length = asked > static_cast<int>(present) ? static_cast<int>(present) : asked;
  Narrow(units, present, length, room);

  static Guarded<char, kLongest + 1> narrow;
  char* bytes = narrow.Take(present + 1);
  for (size_t i = 0; i <= present; ++i) bytes[i] = static_cast<char>(units[i]);
  const size_t narrowPresent = strlen(bytes);
  Widen(bytes, narrowPresent, length, room);
  Convert(bytes, narrowPresent, length);
  return 0;
}
