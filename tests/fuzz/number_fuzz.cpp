// Numbers in text against a reader that counts in 64 bits.

#include "fuzz/fuzz.h"
#include "kest/string.h"

namespace {

struct Number {
  unsigned int value;
  size_t end;
};

unsigned int DigitOf(unsigned int unit) {
  if (unit >= '0' && unit <= '9') return unit - '0';
  if (unit >= 'a' && unit <= 'z') return unit - 'a' + 10;
  if (unit >= 'A' && unit <= 'Z') return unit - 'A' + 10;
  return 99;
}

Number Model(const unsigned short* s, int base, bool isUnsigned) {
  if (base < 0 || base == 1 || base > 36) return {0, 0};
  size_t at = 0;
  while (s[at] == ' ') ++at;
  const bool isNegative = s[at] == '-';
  if (s[at] == '-' || s[at] == '+') ++at;
  const bool isHex = s[at] == '0' && (s[at + 1] == 'x' || s[at + 1] == 'X');
  if (base == 0) base = isHex ? 16 : s[at] == '0' ? 8 : 10;
  if (base == 16 && isHex) at += 2;

  const unsigned long long largest = isUnsigned ? 0xffffffff : 0x7fffffff;
  unsigned long long value = 0;
  const size_t begin = at;
  for (; DigitOf(s[at]) < static_cast<unsigned int>(base); ++at) {
    value = value * static_cast<unsigned int>(base) + DigitOf(s[at]);
    if (value > largest) value = largest + 1;
  }
  if (at == begin) return {0, 0};
  if (value > largest) value = largest;
  return {static_cast<unsigned int>(isNegative ? 0 - value : value), at};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kest_fuzz::Input in(data, size);
  const int base = in.Byte() % 41 - 2;
  static kest_fuzz::GuardedText<128> text;
  const unsigned short* s = text.Take(in);

  unsigned short* end = nullptr;
  const Number asUnsigned = Model(s, base, true);
  FUZZ_CHECK(KEST::ucstoul(s, &end, base) == asUnsigned.value);
  FUZZ_CHECK(end == s + asUnsigned.end);
  const Number asSigned = Model(s, base, false);
  FUZZ_CHECK(KEST::ucstol(s, &end, base) == static_cast<int>(asSigned.value));
  FUZZ_CHECK(end == s + asSigned.end);
  FUZZ_CHECK(KEST::ucstol(s, nullptr, base) == static_cast<int>(asSigned.value));
  return 0;
}
