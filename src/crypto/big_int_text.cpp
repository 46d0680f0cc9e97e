// Hexadecimal text of TBigInt, in both directions. Eight digits are one word, so both take time in
// proportion to the length of the text.

#include <limits.h>
#include <stddef.h>

#include "crypto/big_int_words.h"
#include "kest/crypto.h"

namespace KEST {

namespace {

constexpr int kWordDigits = 8;
constexpr int kDigitBits = 4;
constexpr int kNoDigit = -1;

int DigitValue(unsigned int unit) {
  if (unit >= '0' && unit <= '9') return static_cast<int>(unit - '0');
  if (unit >= 'A' && unit <= 'F') return static_cast<int>(unit - 'A') + 10;
  if (unit >= 'a' && unit <= 'f') return static_cast<int>(unit - 'a') + 10;
  return kNoDigit;
}

size_t CountDigits(const unsigned short* text) {
  size_t count = 0;
  for (; *text != 0; ++text) count += DigitValue(*text) != kNoDigit ? 1 : 0;
  return count;
}

unsigned int DigitOf(const Word* words, int index) {
  return words[index / kWordDigits] >> (kDigitBits * (index % kWordDigits)) & 15;
}

}  // namespace

// What is no digit is skipped, on purpose: spaces, and the x of 0x.
TBigInt::TBigInt(const unsigned short* text) : TBigInt() {
  if (text == nullptr) return;
  size_t digits = CountDigits(text);
  const size_t count = digits / kWordDigits + (digits % kWordDigits != 0 ? 1 : 0);
  if (count > INT_MAX || !AdjustBuffer(static_cast<int>(count), false)) return;
  for (; *text != 0; ++text) {
    const int value = DigitValue(*text);
    if (value == kNoDigit) continue;
    --digits;
    words[digits / kWordDigits] |= static_cast<Word>(value)
                                   << (kDigitBits * (digits % kWordDigits));
  }
  FixLength();
}

TBstr TBigInt::ToString() const {
  const int count = SignificantWords(words, length);
  if (count == 0) return TBstr(u'0', 1);
  if (count > INT_MAX / kWordDigits) return TBstr();
  const int topDigits = (WordBits(words[count - 1]) + kDigitBits - 1) / kDigitBits;
  const int digits = (count - 1) * kWordDigits + topDigits;
  TBstr text;
  unsigned short* unit = KestAllocStringLen(nullptr, static_cast<unsigned int>(digits));
  if (unit == nullptr) return text;
  text.Attach(unit);
  for (int i = digits - 1; i >= 0; --i) {
    *unit++ = static_cast<unsigned char>("0123456789ABCDEF"[DigitOf(words, i)]);
  }
  return text;
}

}  // namespace KEST
