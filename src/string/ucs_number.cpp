// Numbers in wide text. No error is reported anywhere: what is out of range comes back as the
// nearest limit, with the sign applied afterwards.

#include <limits.h>
#include <stdint.h>

#include "kest/string.h"
#include "string/units.h"

namespace {

// The word of flags that the caller passes also holds the working state.
enum : unsigned int { kUnsigned = 1, kNegative = 2, kOverflow = 4, kDigitRead = 8 };

constexpr int kMaxBase = 36;

bool HasHexPrefix(const unsigned short* s) { return s[0] == '0' && (s[1] == 'x' || s[1] == 'X'); }

unsigned int BaseOf(const unsigned short* s) {
  if (HasHexPrefix(s)) return 16;
  return *s == '0' ? 8 : 10;
}

// UINT_MAX, which no base reaches, for a unit that is no digit in any base.
unsigned int DigitValue(unsigned short ch) {
  if (ch >= '0' && ch <= '9') return ch - unsigned{'0'};
  const unsigned short letter = KEST::UpperOf(ch);
  return letter >= 'A' && letter <= 'Z' ? letter - unsigned{'A'} + 10 : UINT_MAX;
}

// Adds the digits at s to number and flags; gives the unit that ends them.
const unsigned short* ReadDigits(const unsigned short* s, unsigned int base, unsigned int* number,
                                 unsigned int* flags) {
  for (;; ++s) {
    const unsigned int digit = DigitValue(*s);
    if (digit >= base) return s;
    *flags |= kDigitRead;
    const uint64_t next = uint64_t{*number} * base + digit;
    if (next <= UINT_MAX) {
      *number = static_cast<unsigned int>(next);
    } else {
      *flags |= kOverflow;
    }
  }
}

// The sign is not looked at: the magnitude of the smallest int is out of range, on purpose.
unsigned int Limited(unsigned int number, unsigned int flags) {
  const unsigned int largest = (flags & kUnsigned) != 0 ? UINT_MAX : INT_MAX;
  return (flags & kOverflow) != 0 || number > largest ? largest : number;
}

unsigned int Convert(const unsigned short* s, unsigned short** end, int base, unsigned int flags) {
  if (end != nullptr) *end = const_cast<unsigned short*>(s);
  if (base < 0 || base == 1 || base > kMaxBase) return 0;
  const unsigned short* unit = KEST::OrEmpty(s);
  while (*unit == ' ') ++unit;
  if (*unit == '-') flags |= kNegative;
  if (*unit == '-' || *unit == '+') ++unit;
  const unsigned int radix = base != 0 ? static_cast<unsigned int>(base) : BaseOf(unit);
  if (radix == 16 && HasHexPrefix(unit)) unit += 2;

  unsigned int number = 0;
  unit = ReadDigits(unit, radix, &number, &flags);
  if ((flags & kDigitRead) == 0) return 0;
  if (end != nullptr) *end = const_cast<unsigned short*>(unit);
  number = Limited(number, flags);
  return (flags & kNegative) != 0 ? 0 - number : number;
}

// Decimal digits and nothing before them, so few that they are in range, are read right here.
inline unsigned int ConvertQuickly(const unsigned short* s, unsigned short** end, int base,
                                   unsigned int flags) {
  constexpr int kSafeDigits = 9;
  if (base != 10 || s == nullptr) return Convert(s, end, base, flags);
  unsigned int number = 0;
  int count = 0;
  for (; count <= kSafeDigits; ++count) {
    const unsigned int digit = s[count] - unsigned{'0'};
    if (digit > 9) break;
    number = number * 10 + digit;
  }
  if (count == 0 || count > kSafeDigits) return Convert(s, end, base, flags);
  if (end != nullptr) *end = const_cast<unsigned short*>(s + count);
  return number;
}

}  // namespace

namespace KEST {

int ucstol(const unsigned short* s, unsigned short** end, int base) {
  return static_cast<int>(ConvertQuickly(s, end, base, 0));
}

unsigned int ucstoul(const unsigned short* s, unsigned short** end, int base) {
  return ConvertQuickly(s, end, base, kUnsigned);
}

unsigned int ucstoxl(const unsigned short* s, unsigned short** end, int base, unsigned int flags) {
  return Convert(s, end, base, flags);
}

}  // namespace KEST
