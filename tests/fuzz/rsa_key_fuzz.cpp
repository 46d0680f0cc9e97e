// Keys from BER structures, against a reader that works in offsets: whether there is one, and which
// bytes are its parts. The structure comes as it is, or is written around two parts with a few
// bytes of it changed.

#include "fuzz/fuzz.h"
#include "kest/crypto.h"

namespace {

constexpr size_t kLongest = 320;
constexpr long long kIndefinite = 0x7fffffff;

struct Item {
  long long value, length;
};

// Reads the element at start, of up to remaining bytes and in front of the end of the input.
bool Read(const uint8_t* ber, long long size, long long start, long long remaining, int tag,
          Item& item) {
  if (size - start < remaining) remaining = size - start;
  if (remaining < 2 || ber[start] != tag) return false;
  const int first = ber[start + 1];
  item = {start + 2, first};
  if (first == 0x80) item.length = kIndefinite;
  if (first > 0x80) {
    item.value += first - 0x80;
    if (item.value - start > remaining) return false;
    item.length = 0;
    for (long long i = start + 2; i < item.value; ++i) {
      item.length = (item.length * 256 + ber[i]) % 0x100000000;
    }
  }
  return item.length == kIndefinite || item.value - start + item.length <= remaining;
}

// The element behind previous. The header of that one is not taken from what remains, on purpose.
bool ReadNext(const uint8_t* ber, long long size, const Item& outer, const Item& previous, int tag,
              Item& item) {
  const long long start = previous.value + previous.length;
  return start <= size && Read(ber, size, start, outer.length - previous.length, tag, item);
}

bool Model(const uint8_t* ber, long long size, Item& modulus, Item& exponent) {
  Item info, algorithm, bits, key;
  if (!Read(ber, size, 0, size, 0x30, info)) return false;
  if (!Read(ber, size, info.value, info.length, 0x30, algorithm)) return false;
  if (!ReadNext(ber, size, info, algorithm, 0x03, bits)) return false;
  if (bits.value + 1 > size) return false;
  if (!Read(ber, size, bits.value + 1, bits.length - 1, 0x30, key)) return false;
  if (!Read(ber, size, key.value, key.length, 0x02, modulus) || modulus.length == 0) return false;
  if (!ReadNext(ber, size, key, modulus, 0x02, exponent)) return false;
  if (exponent.value + exponent.length > size) return false;
  // The first byte is not part of it.
  ++modulus.value;
  --modulus.length;
  return true;
}

// A cipher that shows its parts, which are private, by their place in the object.
struct Cipher : KEST::TRsaPublicCipher {
  Cipher() : TRsaPublicCipher(kOpDecrypt) {}
  struct Part {
    const uint8_t* bytes;
    int size;
  };
  Part At(size_t index) const {
    Part part;
    memcpy(&part, reinterpret_cast<const char*>(this) + (2 + 2 * index) * sizeof(void*),
           sizeof part);
    return part;
  }
  bool Holds(size_t index, const uint8_t* bytes, long long size) const {
    const Part part = At(index);
    return part.size == size && memcmp(part.bytes, bytes, static_cast<size_t>(size)) == 0;
  }
};

// Content behind tag and length.
size_t Wrap(uint8_t* content, size_t size, uint8_t tag) {
  const size_t header = size < 128 ? 2 : size < 256 ? 3 : 4;
  memmove(content + header, content, size);
  content[0] = tag;
  content[1] = static_cast<uint8_t>(header == 2 ? size : 0x80 + header - 2);
  if (header == 3) content[2] = static_cast<uint8_t>(size);
  if (header == 4) content[2] = static_cast<uint8_t>(size >> 8);
  if (header == 4) content[3] = static_cast<uint8_t>(size);
  return size + header;
}

// A whole key of two parts, of which up to three bytes are then changed.
size_t Build(kest_fuzz::Input& in, uint8_t* ber) {
  const size_t exponentSize = in.Byte() % 8, changes = in.Byte() % 4;
  uint8_t places[3], values[3];
  for (size_t i = 0; i < changes; ++i) places[i] = in.Byte(), values[i] = in.Byte();
  const size_t modulusSize = in.Left() < 300 ? in.Left() : 300;
  size_t size =
      Wrap(static_cast<uint8_t*>(memcpy(ber + 16, in.Rest(), modulusSize)), modulusSize, 0x02);
  size_t last = 16 + size;
  for (size_t i = 0; i < exponentSize; ++i) ber[last + i] = static_cast<uint8_t>(i);
  size += Wrap(ber + last, exponentSize, 0x02);
  size = Wrap(ber + 16, size, 0x30);
  ber[15] = 0;
  size = Wrap(ber + 15, size + 1, 0x03);
  static const uint8_t kAlgorithm[] = {0x30, 3, 6, 1, 42};
  memcpy(ber + 10, kAlgorithm, sizeof kAlgorithm);
  size = Wrap(ber + 10, size + sizeof kAlgorithm, 0x30);
  memmove(ber, ber + 10, size);
  for (size_t i = 0; i < changes; ++i) ber[places[i] % size] = values[i];
  return size;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kest_fuzz::Input in(data, size);
  uint8_t built[400];
  size_t length;
  if (in.Bool()) {
    length = Build(in, built);
  } else {
    length = in.Left() < kLongest ? in.Left() : kLongest;
    if (length != 0) memcpy(built, in.Rest(), length);
  }
  static kest_fuzz::Guarded<uint8_t, sizeof built> room;
  const uint8_t* ber = room.Copy(built, length);

  Item modulus, exponent;
  const bool good = Model(ber, static_cast<long long>(length), modulus, exponent);
  Cipher cipher;
  const int taken = cipher.BerInit(ber, static_cast<int>(length));
  FUZZ_CHECK(taken == (good ? static_cast<int>(length) : 0));
  FUZZ_CHECK(cipher.GetModulusSize() == (good ? modulus.length : 0));
  if (!good) return 0;
  FUZZ_CHECK(cipher.Holds(0, ber + modulus.value, modulus.length));
  FUZZ_CHECK(cipher.Holds(1, ber + exponent.value, exponent.length));

  // The same parts by hand, in place of this key.
  FUZZ_CHECK(!cipher.Construct(ber, -1, ber, 1) && !cipher.Construct(ber, 1, ber, -1));
  FUZZ_CHECK(cipher.Holds(0, ber + modulus.value, modulus.length));
  FUZZ_CHECK(cipher.Construct(ber + exponent.value, static_cast<int>(exponent.length),
                              ber + modulus.value, static_cast<int>(modulus.length)));
  FUZZ_CHECK(cipher.Holds(1, ber + modulus.value, modulus.length));
  return 0;
}
