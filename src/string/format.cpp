// The formatter. Text goes straight to its place; a conversion is read letter by letter, and breaks
// off at the first one that does not continue it.

#include <limits.h>
#include <string.h>

#include <algorithm>

#include "kest/string.h"
#include "string/splice.h"
#include "string/units.h"

namespace {

constexpr int kNoPrecision = -1;
constexpr int kPointerDigits = 8;
constexpr int kMaxDigits = 11;  // 32 bits in octal

bool IsDigit(unsigned short unit) { return unit >= '0' && unit <= '9'; }

// value followed by one more decimal digit, kept at the limits of int.
int AppendDigit(int value, unsigned short digit) {
  const long long longer = value * 10LL + (digit - '0');
  return static_cast<int>(std::clamp<long long>(longer, INT_MIN, INT_MAX));
}

// 1 for 0.
int BitLength(unsigned int value) { return 32 - __builtin_clz(value | 1); }

// The notations of numbers: the bits in a digit, none for decimal, and the digits themselves.
struct SNotation {
  int bits;
  const char* digits;
};

constexpr SNotation kDecimal = {0, "0123456789"};
constexpr SNotation kOctal = {3, "01234567"};
constexpr SNotation kLowerHex = {4, "0123456789abcdef"};
constexpr SNotation kUpperHex = {4, "0123456789ABCDEF"};

constexpr unsigned int kPowersOf10[] = {0,      10,      100,      1000,      10000,
                                        100000, 1000000, 10000000, 100000000, 1000000000};

int DecimalLength(unsigned int value) {
  const int length = BitLength(value) * 1233 >> 12;  // log10(2) is 1233 / 4096
  return length + (value >= kPowersOf10[length] ? 1 : 0);
}

// Digits of value; 0 has one.
int DigitLength(unsigned int value, const SNotation& notation) {
  if (notation.bits == 0) return DecimalLength(value);
  return (BitLength(value) + notation.bits - 1) / notation.bits;
}

// "00" to "99".
struct SDigitPairs {
  unsigned short units[100][2];

  constexpr SDigitPairs() : units() {
    for (int i = 0; i < 100; ++i) {
      units[i][0] = static_cast<unsigned short>('0' + i / 10);
      units[i][1] = static_cast<unsigned short>('0' + i % 10);
    }
  }
};

constexpr SDigitPairs kDigitPairs;

// The digits end where end is.
void WriteDecimal(unsigned short* end, unsigned int value) {
  while (value >= 100) {
    end -= 2;
    memcpy(end, kDigitPairs.units[value % 100], sizeof kDigitPairs.units[0]);
    value /= 100;
  }
  if (value < 10) {
    end[-1] = static_cast<unsigned short>('0' + value);
  } else {
    memcpy(end - 2, kDigitPairs.units[value], sizeof kDigitPairs.units[0]);
  }
}

void WriteDigits(unsigned short* end, unsigned int value, const SNotation& notation) {
  if (notation.bits == 0) return WriteDecimal(end, value);
  const unsigned int mask = (1u << notation.bits) - 1;
  do {
    *--end = static_cast<unsigned char>(notation.digits[value & mask]);
    value >>= notation.bits;
  } while (value != 0);
}

// What one '%' starts anew.
struct SOptions {
  bool plus = false;
  bool space = false;
  bool left = false;
  bool zero = false;
  bool isShort = false;
  int width = 0;
  int precision = kNoPrecision;
};

// The readers below return where the reading ended.

// Digits that follow a '*' go on with its number.
const unsigned short* ReadWidth(const unsigned short* format, SOptions& options, va_list* args) {
  if (*format == '*') {
    const int width = va_arg(*args, int);
    options.left |= width < 0;
    options.width = width < 0 ? -std::max(width, -INT_MAX) : width;
    ++format;
  }
  for (; IsDigit(*format); ++format) options.width = AppendDigit(options.width, *format);
  return format;
}

// Digits start from "none", which is -1, so what they make stays negative and counts as none, on
// purpose: only '*' gives a precision. The dot alone leaves it unset.
const unsigned short* ReadPrecision(const unsigned short* format, SOptions& options,
                                    va_list* args) {
  if (*format == '*') {
    options.precision = std::max(va_arg(*args, int), kNoPrecision);
    ++format;
  }
  for (; IsDigit(*format); ++format) options.precision = AppendDigit(options.precision, *format);
  return format;
}

const unsigned short* ReadOptions(const unsigned short* format, SOptions& options, va_list* args) {
  for (;; ++format) {
    switch (*format) {
      case '+':
        options.plus = true;
        continue;
      case ' ':
        options.space = true;
        continue;
      case '-':
        options.left = true;
        continue;
      case '0':
        options.zero = true;
        continue;
      case '#':
        continue;
      default:
        format = ReadWidth(format, options, args);
        return *format == '.' ? ReadPrecision(format + 1, options, args) : format;
    }
  }
}

// What a conversion writes between its prefix and its padding. Kept from one conversion to the
// next: a type letter that converts nothing writes it again.
struct SText {
  const unsigned short* units = nullptr;  // null for a number
  int length = 0;
  int zeros = 0;  // in front of the digits of a number
  unsigned int number = 0;
  const SNotation* notation = &kDecimal;
};

class TFormatter {
 public:
  TFormatter(const KEST::xFILE& sink, va_list* arguments)
      : out(sink), start(sink.position), args(arguments) {}

  // Returns the count of units produced.
  int Run(const unsigned short* format) {
    for (;;) {
      if (*format == '%') {
        format = Convert(format + 1);
      } else if (*format != 0) {
        format = PutOrdinary(format);
      } else {
        return Count();
      }
    }
  }

  const KEST::xFILE& Sink() const { return out; }

 private:
  const unsigned short* PutOrdinary(const unsigned short* format);
  const unsigned short* Convert(const unsigned short* format);
  const unsigned short* ConvertAny(const unsigned short* format);
  void SetString(const unsigned short* s, int precision);
  void StoreCount(bool isShort);
  void Repeat(const SOptions& options);

  void PutPlain(unsigned int value, const SNotation& notation, bool isNegative);
  void PutSigned(int value, const SOptions& options);
  void PutUnsigned(unsigned int value, const SNotation& notation, const SOptions& options);
  void PutNumber(unsigned int value, const SNotation& notation, const SOptions& options,
                 unsigned short prefix);
  void PutDigits();
  void PutBytes();
  __attribute__((noinline)) void PutCutDigits();
  void PutPadded(const SOptions& options, bool withZeros, unsigned short prefix,
                 void (TFormatter::*put)());
  void Fill(unsigned short unit, int n);
  void Put(const unsigned short* units, int n);
  void Put(unsigned short unit);
  void PutText() { Put(text.units, text.length); }

  // Stops at INT_MAX.
  int Count() const {
    const int stored = static_cast<int>(out.position - start);
    return stored <= INT_MAX - cut ? stored + cut : INT_MAX;
  }

  // Takes up to n units of room, and counts the others as cut: gives their place, and in n how many
  // they are.
  unsigned short* TakeRoom(int& n) {
    const int stored = std::clamp(out.remaining, 0, n);
    const int lost = n - stored;
    cut = cut <= INT_MAX - lost ? cut + lost : INT_MAX;
    unsigned short* place = out.position;
    out.position += stored;
    out.remaining -= stored;
    n = stored;
    return place;
  }

  KEST::xFILE out;
  unsigned short* const start;
  va_list* const args;
  int cut = 0;  // units for which there was no room, up to INT_MAX
  SText text;
  unsigned short character = 0;
};

// Returns where the next '%' or the end is.
inline const unsigned short* TFormatter::PutOrdinary(const unsigned short* format) {
  unsigned short* place = out.position;
  int room = out.remaining;
  for (; *format != 0 && *format != '%' && room > 0; --room) *place++ = *format++;
  out.position = place;
  out.remaining = room;
  for (; *format != 0 && *format != '%'; ++format) Put(*format);
  return format;
}

// From behind the '%'. Returns where ordinary text goes on.
inline const unsigned short* TFormatter::Convert(const unsigned short* format) {
  switch (*format) {
    case 'c':
      character = static_cast<unsigned short>(va_arg(*args, int));
      text = {&character, 1};
      Put(character);
      break;
    case 'd': {
      const int value = va_arg(*args, int);
      const unsigned int bits = static_cast<unsigned int>(value);
      PutPlain(value < 0 ? 0 - bits : bits, kDecimal, value < 0);
      break;
    }
    case 's':
      SetString(va_arg(*args, const unsigned short*), kNoPrecision);
      PutText();
      break;
    case 'u':
      PutPlain(va_arg(*args, unsigned int), kDecimal, false);
      break;
    case 'x':
      PutPlain(va_arg(*args, unsigned int), kLowerHex, false);
      break;
    default:
      return ConvertAny(format);
  }
  return format + 1;
}

const unsigned short* TFormatter::ConvertAny(const unsigned short* format) {
  SOptions options;
  if (*format < 'A') format = ReadOptions(format, options, args);
  for (;; ++format) {
    switch (*format) {
      case 'h':
        options.isShort = true;
        continue;
      case 'F':
      case 'I':
      case 'L':
      case 'N':
      case 'l':
      case 'w':
        continue;
      case 'c':
        character = static_cast<unsigned short>(va_arg(*args, int));
        text = {&character, 1};
        PutPadded(options, options.zero, 0, &TFormatter::PutText);
        break;
      case 's':
        SetString(va_arg(*args, const unsigned short*), options.precision);
        PutPadded(options, options.zero, 0, &TFormatter::PutText);
        break;
      case 'd':
      case 'i':
        PutSigned(va_arg(*args, int), options);
        break;
      case 'u':
        PutUnsigned(va_arg(*args, unsigned int), kDecimal, options);
        break;
      case 'o':
        PutUnsigned(va_arg(*args, unsigned int), kOctal, options);
        break;
      case 'x':
        PutUnsigned(va_arg(*args, unsigned int), kLowerHex, options);
        break;
      case 'p':
        options.precision = kPointerDigits;
        [[fallthrough]];
      case 'X':
        PutUnsigned(va_arg(*args, unsigned int), kUpperHex, options);
        break;
      case 'n':
        StoreCount(options.isShort);
        break;
      case 'B':
      case 'C':
      case 'E':
      case 'G':
      case 'S':
      case 'Z':
      case 'e':
      case 'f':
      case 'g':
        Repeat(options);
        break;
      case 0:
        return format;
      default:
        Put(*format);  // a '%' too
        break;
    }
    return format + 1;
  }
}

inline void TFormatter::SetString(const unsigned short* s, int precision) {
  if (s == nullptr) s = KEST_TEXT("(null)");
  const int length =
      precision < 0
          ? KEST::TextLength(s)
          : static_cast<int>(KEST::BoundedLength(s, static_cast<unsigned int>(precision)));
  text = {s, length};
}

void TFormatter::StoreCount(bool isShort) {
  void* target = va_arg(*args, void*);
  if (target == nullptr) return;
  if (isShort) {
    *static_cast<short*>(target) = static_cast<short>(Count());
  } else {
    *static_cast<int*>(target) = Count();
  }
}

// The last text again; of units the bytes, each with its sign, as many as there were units. Takes
// no argument, on purpose.
void TFormatter::Repeat(const SOptions& options) {
  PutPadded(options, options.zero, 0,
            text.units != nullptr ? &TFormatter::PutBytes : &TFormatter::PutDigits);
}

void TFormatter::PutBytes() {
  const signed char* bytes = reinterpret_cast<const signed char*>(text.units);
  for (int i = 0; i < text.length; ++i) Put(static_cast<unsigned short>(bytes[i]));
}

// A number without any option.
inline void TFormatter::PutPlain(unsigned int value, const SNotation& notation, bool isNegative) {
  text = {nullptr, DigitLength(value, notation), 0, value, &notation};
  if (out.remaining > kMaxDigits) {
    // Without a sign the first digit takes its place.
    *out.position = '-';
    const int length = text.length + (isNegative ? 1 : 0);
    out.position += length;
    out.remaining -= length;
    return WriteDigits(out.position, value, notation);
  }
  if (isNegative) Put('-');
  PutCutDigits();
}

void TFormatter::PutSigned(int value, const SOptions& options) {
  if (options.isShort) value = static_cast<short>(value);
  const unsigned int bits = static_cast<unsigned int>(value);
  if (value < 0) return PutNumber(0 - bits, kDecimal, options, '-');
  PutNumber(bits, kDecimal, options, options.plus ? '+' : options.space ? ' ' : 0);
}

void TFormatter::PutUnsigned(unsigned int value, const SNotation& notation,
                             const SOptions& options) {
  PutNumber(options.isShort ? value & 0xFFFF : value, notation, options, 0);
}

// A precision drops '0'.
void TFormatter::PutNumber(unsigned int value, const SNotation& notation, const SOptions& options,
                           unsigned short prefix) {
  const int precision = options.precision;
  const int length = value == 0 && precision == 0 ? 0 : DigitLength(value, notation);
  text = {nullptr, length, precision > length ? precision - length : 0, value, &notation};
  PutPadded(options, options.zero && precision < 0, prefix, &TFormatter::PutDigits);
}

void TFormatter::PutDigits() {
  Fill('0', text.zeros);
  if (text.length == 0) return;
  if (text.length > out.remaining) return PutCutDigits();
  out.position += text.length;
  out.remaining -= text.length;
  WriteDigits(out.position, text.number, *text.notation);
}

void TFormatter::PutCutDigits() {
  unsigned short digits[kMaxDigits];
  WriteDigits(digits + text.length, text.number, *text.notation);
  Put(digits, text.length);
}

void TFormatter::PutPadded(const SOptions& options, bool withZeros, unsigned short prefix,
                           void (TFormatter::*put)()) {
  const int padding = options.width - text.zeros - text.length - (prefix != 0 ? 1 : 0);
  if (!options.left && !withZeros) Fill(' ', padding);
  if (prefix != 0) Put(prefix);
  if (!options.left && withZeros) Fill('0', padding);
  (this->*put)();
  if (options.left) Fill(' ', padding);
}

void TFormatter::Fill(unsigned short unit, int n) {
  if (n <= 0) return;
  unsigned short* place = TakeRoom(n);
  std::fill_n(place, n, unit);
}

void TFormatter::Put(const unsigned short* units, int n) {
  unsigned short* place = TakeRoom(n);
  KEST::MoveUnits(place, units, static_cast<unsigned int>(n));
}

inline void TFormatter::Put(unsigned short unit) {
  int n = 1;
  unsigned short* place = TakeRoom(n);
  if (n == 1) *place = unit;
}

// The room is a signed number: a size above 0x80000000 makes it negative, and only the terminator
// is stored, on purpose.
int FormatTo(unsigned short* dest, unsigned int size, const unsigned short* format, va_list* args) {
  TFormatter formatter({dest, static_cast<int>(size - 1)}, args);
  const int length = formatter.Run(KEST::OrEmpty(format));
  if (size != 0) *formatter.Sink().position = 0;
  return length;
}

}  // namespace

namespace KEST {

int snuprintf(unsigned short* dest, unsigned int size, const unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  const int length = FormatTo(dest, size, format, &args);
  va_end(args);
  return length;
}

// A va_list parameter may be a pointer in disguise, whose address is no va_list*: hence the copies.
int vsnuprintf(unsigned short* dest, unsigned int size, const unsigned short* format,
               va_list args) {
  va_list cursor;
  va_copy(cursor, args);
  const int length = FormatTo(dest, size, format, &cursor);
  va_end(cursor);
  return length;
}

int unichar_output(xFILE* out, const unsigned short* format, va_list args) {
  va_list cursor;
  va_copy(cursor, args);
  TFormatter formatter(*out, &cursor);
  const int length = formatter.Run(OrEmpty(format));
  *out = formatter.Sink();
  va_end(cursor);
  return length;
}

int get_int_arg(va_list* args) { return va_arg(*args, int); }

}  // namespace KEST
