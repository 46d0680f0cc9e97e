// Blocks taken apart by keys of small sizes, against arithmetic one bit at a time. With the
// exponent 1 the block comes out as it went in, so that any padding can be tried; the same keys
// show the block that an encryption makes.

#include <algorithm>
#include <iterator>

#include "fuzz/fuzz.h"
#include "kest/crypto.h"
#include "kest/frame.h"

namespace {

constexpr int kMaxSize = 33;

// A number, big-endian, in the bytes of the modulus.
struct Number {
  uint8_t bytes[kMaxSize] = {};
};

class Modulus {
 public:
  explicit Modulus(int count) : m_count(count) {
    for (int i = 0; i < count; ++i) m_number.bytes[i] = static_cast<uint8_t>(0xC5 + 29 * i);
    m_one.bytes[count - 1] = 1;
  }
  const uint8_t* Bytes() const { return m_number.bytes; }
  int Count() const { return m_count; }

  Number Load(const uint8_t* bytes, int count) const {
    Number number;
    for (int bit = 0; bit < 8 * count; ++bit) {
      Add(number, number);
      if ((bytes[bit / 8] >> (7 - bit % 8) & 1) != 0) Add(number, m_one);
    }
    return number;
  }

  Number Multiply(const Number& a, const Number& b) const {
    Number product;
    for (int bit = 0; bit < 8 * m_count; ++bit) {
      Add(product, product);
      if ((b.bytes[bit / 8] >> (7 - bit % 8) & 1) != 0) Add(product, a);
    }
    return product;
  }

 private:
  // sum += other; both are below the modulus, before and after.
  void Add(Number& sum, const Number& other) const {
    int carry = 0;
    for (int i = m_count - 1; i >= 0; --i) {
      carry += sum.bytes[i] + other.bytes[i];
      sum.bytes[i] = static_cast<uint8_t>(carry);
      carry >>= 8;
    }
    int same = 0;
    while (same < m_count && sum.bytes[same] == m_number.bytes[same]) ++same;
    if (carry == 0 && same < m_count && sum.bytes[same] < m_number.bytes[same]) return;
    int borrow = 0;
    for (int i = m_count - 1; i >= 0; --i) {
      borrow = sum.bytes[i] - m_number.bytes[i] - borrow;
      sum.bytes[i] = static_cast<uint8_t>(borrow);
      borrow = borrow < 0 ? 1 : 0;
    }
  }

  int m_count;
  Number m_number, m_one;
};

// A key of count bytes, with an exponent of one byte.
struct Key {
  Key(int count, uint8_t power)
      : modulus(count),
        exponent(power),
        cipher(KEST::TCipher::kOpDecrypt, modulus.Bytes(), count, &power, 1) {}
  Modulus modulus;
  uint8_t exponent;
  KEST::TRsaPublicCipher cipher;
};

// The place of the message in 00 01, any number of FF, 00, message; the end when there is none.
int FindMessage(const Number& block, int count) {
  int i = 2;
  if (block.bytes[0] != 0 || block.bytes[1] != 1) return count;
  while (i < count && block.bytes[i] == 0xFF) ++i;
  return i < count && block.bytes[i] == 0 ? i + 1 : count;
}

void Decrypt(Key& key, const uint8_t* data, int length) {
  const int count = key.modulus.Count();
  static kest_fuzz::Guarded<uint8_t, kMaxSize> room;
  uint8_t* block = room.Take(static_cast<size_t>(std::max(count, length)));
  memset(block, 0x5A, static_cast<size_t>(count));
  if (length != 0) memcpy(block, data, static_cast<size_t>(length));
  const int result = key.cipher.ProcessData(block, length, true);

  Number plain = key.modulus.Load(data, length);
  if (key.exponent == 3) plain = key.modulus.Multiply(plain, key.modulus.Multiply(plain, plain));
  const int place = FindMessage(plain, count);
  // Only for these sizes the block comes out.
  const bool good = length <= count && count % 4 < 2 && place < count;
  FUZZ_CHECK(result == (good ? count - place : 0));
  if (good) FUZZ_CHECK(memcmp(block, plain.bytes + place, static_cast<size_t>(result)) == 0);
  if (!good) FUZZ_CHECK(memcmp(block, data, static_cast<size_t>(length)) == 0);
}

// 00 02, bytes other than 0, 00, message: seen as it is with the exponent 1.
void Encrypt(Key& key, const uint8_t* data, int length) {
  const int count = key.modulus.Count();
  static kest_fuzz::Guarded<uint8_t, kMaxSize> room;
  uint8_t* block = room.Take(static_cast<size_t>(std::max(count, length)));
  if (length != 0) memcpy(block, data, static_cast<size_t>(length));
  const int result = key.cipher.EncryptData(block, length, true);
  if (length > count - 11 || count % 4 > 1) {
    FUZZ_CHECK(result == 0);
    FUZZ_CHECK(memcmp(block, data, static_cast<size_t>(length)) == 0);
    return;
  }
  FUZZ_CHECK(result <= count && result % 4 == 0);
  if (key.exponent != 1) return;
  FUZZ_CHECK(result == count / 4 * 4);
  const int zero = count - length - 1;
  FUZZ_CHECK(block[0] == 0 && block[1] == 2 && block[zero] == 0);
  for (int i = 2; i < zero; ++i) FUZZ_CHECK(block[i] != 0);
  FUZZ_CHECK(memcmp(block + zero + 1, data, static_cast<size_t>(length)) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool isStarted = KestInitialize(nullptr) == 1;
  static Key keys[] = {{16, 1}, {17, 1}, {12, 1}, {13, 1}, {14, 1},
                       {15, 1}, {33, 1}, {16, 3}, {17, 3}, {33, 3}};
  FUZZ_CHECK(isStarted);
  kest_fuzz::Input in(data, size);
  Key& key = keys[in.Below(std::size(keys))];
  const bool isEncryption = in.Bool();
  const int length = std::min(in.IntLeft(), kMaxSize);
  if (isEncryption) {
    Encrypt(key, in.Rest(), length);
  } else {
    Decrypt(key, in.Rest(), length);
  }
  return 0;
}
