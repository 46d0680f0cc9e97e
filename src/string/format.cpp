// The formatter: a state machine over the units of the format, driven by a table.

#include <limits.h>

#include <algorithm>

#include "kest/string.h"
#include "string/units.h"

namespace {

enum EUnitClass : unsigned char {
  kOtherUnit,
  kPercentUnit,
  kDotUnit,
  kStarUnit,
  kZeroUnit,
  kDigitUnit,
  kFlagUnit,
  kSizeUnit,
  kTypeUnit,
  kUnitClassCount
};

enum EState : unsigned char {
  kNormal,
  kPercent,
  kFlag,
  kWidth,
  kDot,
  kPrecision,
  kSize,
  kType,
  kStateCount
};

constexpr unsigned int kClassTableSize = 'x' + 1;

struct SUnitClasses {
  EUnitClass classes[kClassTableSize];

  constexpr SUnitClasses() : classes() {
    Set("%", kPercentUnit);
    Set(".", kDotUnit);
    Set("*", kStarUnit);
    Set("0", kZeroUnit);
    Set("123456789", kDigitUnit);
    Set(" #+-", kFlagUnit);
    Set("FILNhlw", kSizeUnit);
    Set("BCEGSXZcdefginopsux", kTypeUnit);
  }
  constexpr void Set(const char* units, EUnitClass unitClass) {
    for (; *units != 0; ++units) classes[static_cast<unsigned char>(*units)] = unitClass;
  }
};

constexpr SUnitClasses kUnitClasses;

constexpr EState kNextState[kUnitClassCount][kStateCount] = {
    // from normal, percent, flag, width, dot, precision, size, type
    {kNormal, kNormal, kNormal, kNormal, kNormal, kNormal, kNormal, kNormal},     // other
    {kPercent, kNormal, kNormal, kNormal, kNormal, kNormal, kNormal, kPercent},   // '%'
    {kNormal, kDot, kDot, kDot, kNormal, kNormal, kNormal, kNormal},              // '.'
    {kNormal, kWidth, kWidth, kNormal, kPrecision, kNormal, kNormal, kNormal},    // '*'
    {kNormal, kFlag, kFlag, kWidth, kPrecision, kPrecision, kNormal, kNormal},    // '0'
    {kNormal, kWidth, kWidth, kWidth, kPrecision, kPrecision, kNormal, kNormal},  // digit
    {kNormal, kFlag, kFlag, kNormal, kNormal, kNormal, kNormal, kNormal},         // flag
    {kNormal, kSize, kSize, kSize, kSize, kSize, kSize, kNormal},                 // size
    {kNormal, kType, kType, kType, kType, kType, kType, kNormal},                 // type
};

EState NextState(EState state, unsigned short unit) {
  const EUnitClass unitClass = unit < kClassTableSize ? kUnitClasses.classes[unit] : kOtherUnit;
  return kNextState[unitClass][state];
}

// value followed by one more decimal digit, kept at the limits of int.
int AppendDigit(int value, unsigned short digit) {
  const long long longer = value * 10LL + (digit - '0');
  return static_cast<int>(std::clamp<long long>(longer, INT_MIN, INT_MAX));
}

constexpr int kNoPrecision = -1;
constexpr int kPointerDigits = 8;
constexpr int kMaxDigits = 11;  // 32 bits in octal

// What one '%' starts anew.
struct SConversion {
  bool plus = false;
  bool space = false;
  bool left = false;
  bool zero = false;
  bool isShort = false;
  bool isWide = false;
  bool noOutput = false;
  unsigned short prefix = 0;  // the sign, 0 for none
  int width = 0;
  int precision = kNoPrecision;
};

// What a conversion writes between its prefix and its padding. Kept from one conversion to the
// next: a type letter that converts nothing writes it again.
struct SText {
  int zeros = 0;  // written before the rest
  int length = 0;
  const void* start = nullptr;
};

class TFormatter {
 public:
  TFormatter(KEST::xFILE* sink, va_list* arguments) : out(sink), args(arguments) {}

  int Run(const unsigned short* format) {
    EState state = kNormal;
    for (; *format != 0; ++format) {
      state = NextState(state, *format);
      Enter(state, *format);
    }
    return count;
  }

 private:
  void Enter(EState state, unsigned short unit);
  void SetFlag(unsigned short unit);
  void SetWidth(unsigned short unit);
  void SetPrecision(unsigned short unit);
  void Convert(unsigned short type);
  void ConvertUnit();
  void ConvertString();
  void ConvertSigned();
  void ConvertUnsigned(unsigned int base, const char* digitSet);
  void SetDigits(unsigned int value, unsigned int base, const char* digitSet);
  void StoreCount();
  void WriteConversion();
  void WriteText();

  KEST::xFILE* const out;
  va_list* const args;
  int count = 0;
  SConversion conversion;
  SText text;
  unsigned short character = 0;
  char digits[kMaxDigits];
};

void TFormatter::Enter(EState state, unsigned short unit) {
  switch (state) {
    case kNormal:
      return KEST::write_char(unit, out, &count);
    case kPercent:
      conversion = SConversion();
      return;
    case kFlag:
      return SetFlag(unit);
    case kWidth:
      return SetWidth(unit);
    case kPrecision:
      return SetPrecision(unit);
    case kSize:
      conversion.isShort |= unit == 'h';
      return;
    case kType:
      Convert(unit);
      return WriteConversion();
    default:
      return;  // the dot alone leaves the precision unset, on purpose
  }
}

void TFormatter::SetFlag(unsigned short unit) {
  conversion.plus |= unit == '+';
  conversion.space |= unit == ' ';
  conversion.left |= unit == '-';
  conversion.zero |= unit == '0';
}

void TFormatter::SetWidth(unsigned short unit) {
  if (unit != '*') {
    conversion.width = AppendDigit(conversion.width, unit);
    return;
  }
  const int width = KEST::get_int_arg(args);
  conversion.left |= width < 0;
  conversion.width = width < 0 ? -std::max(width, -INT_MAX) : width;
}

// Digits start from "none", which is -1, so what they make stays negative and counts as none, on
// purpose: only '*' gives a precision.
void TFormatter::SetPrecision(unsigned short unit) {
  if (unit != '*') {
    conversion.precision = AppendDigit(conversion.precision, unit);
    return;
  }
  conversion.precision = std::max(KEST::get_int_arg(args), kNoPrecision);
}

void TFormatter::Convert(unsigned short type) {
  constexpr char kLowerDigits[] = "0123456789abcdef";
  constexpr char kUpperDigits[] = "0123456789ABCDEF";
  switch (type) {
    case 'c':
      return ConvertUnit();
    case 's':
      return ConvertString();
    case 'd':
    case 'i':
      return ConvertSigned();
    case 'u':
      return ConvertUnsigned(10, kLowerDigits);
    case 'o':
      return ConvertUnsigned(8, kLowerDigits);
    case 'x':
      return ConvertUnsigned(16, kLowerDigits);
    case 'X':
      return ConvertUnsigned(16, kUpperDigits);
    case 'p':
      conversion.precision = kPointerDigits;
      return ConvertUnsigned(16, kUpperDigits);
    case 'n':
      return StoreCount();
    default:
      return;  // takes no argument and leaves the text of the last conversion, on purpose
  }
}

void TFormatter::ConvertUnit() {
  character = static_cast<unsigned short>(KEST::get_int_arg(args));
  conversion.isWide = true;
  text = {0, 1, &character};
}

void TFormatter::ConvertString() {
  const unsigned short* s = va_arg(*args, const unsigned short*);
  if (s == nullptr) s = KEST_TEXT("(null)");
  const int limit = conversion.precision < 0 ? INT_MAX : conversion.precision;
  conversion.isWide = true;
  text = {0, static_cast<int>(KEST::BoundedLength(s, static_cast<unsigned int>(limit))), s};
}

void TFormatter::ConvertSigned() {
  const int argument = KEST::get_int_arg(args);
  const int value = conversion.isShort ? static_cast<short>(argument) : argument;
  const unsigned int bits = static_cast<unsigned int>(value);
  if (value < 0) {
    conversion.prefix = '-';
  } else if (conversion.plus) {
    conversion.prefix = '+';
  } else if (conversion.space) {
    conversion.prefix = ' ';
  }
  SetDigits(value < 0 ? 0 - bits : bits, 10, "0123456789");
}

void TFormatter::ConvertUnsigned(unsigned int base, const char* digitSet) {
  const unsigned int value = static_cast<unsigned int>(KEST::get_int_arg(args));
  SetDigits(conversion.isShort ? value & 0xFFFF : value, base, digitSet);
}

void TFormatter::SetDigits(unsigned int value, unsigned int base, const char* digitSet) {
  if (conversion.precision >= 0) conversion.zero = false;
  char* const end = digits + kMaxDigits;
  char* first = end;
  for (; value != 0; value /= base) *--first = digitSet[value % base];
  const int length = static_cast<int>(end - first);
  const int wanted = conversion.precision < 0 ? 1 : conversion.precision;
  text = {std::max(wanted - length, 0), length, first};
}

void TFormatter::StoreCount() {
  void* target = va_arg(*args, void*);
  conversion.noOutput = true;
  if (target == nullptr) return;
  if (conversion.isShort) {
    *static_cast<short*>(target) = static_cast<short>(count);
  } else {
    *static_cast<int*>(target) = count;
  }
}

void TFormatter::WriteConversion() {
  if (conversion.noOutput) return;
  const int signLength = conversion.prefix != 0 ? 1 : 0;
  const int padding = conversion.width - text.zeros - text.length - signLength;
  const bool fillWithZeros = conversion.zero && !conversion.left;
  if (!conversion.left && !fillWithZeros) KEST::write_multi_char(' ', padding, out, &count);
  KEST::write_multi_char(conversion.prefix, signLength, out, &count);
  if (fillWithZeros) KEST::write_multi_char('0', padding, out, &count);
  WriteText();
  if (conversion.left) KEST::write_multi_char(' ', padding, out, &count);
}

void TFormatter::WriteText() {
  KEST::write_multi_char('0', text.zeros, out, &count);
  if (conversion.isWide) {
    return KEST::write_string(static_cast<const unsigned short*>(text.start), text.length, out,
                              &count);
  }
  const signed char* bytes = static_cast<const signed char*>(text.start);
  for (int i = 0; i < text.length; ++i) {
    KEST::write_char(static_cast<unsigned short>(bytes[i]), out, &count);
  }
}

}  // namespace

namespace KEST {

int snuprintf(unsigned short* dest, unsigned int size, const unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  const int length = vsnuprintf(dest, size, format, args);
  va_end(args);
  return length;
}

// The room is a signed number: a size above 0x80000000 makes it negative, and only the terminator
// is stored, on purpose.
int vsnuprintf(unsigned short* dest, unsigned int size, const unsigned short* format,
               va_list args) {
  xFILE out = {dest, static_cast<int>(size - 1)};
  const int length = unichar_output(&out, format, args);
  if (size != 0) *out.position = 0;
  return length;
}

// A va_list parameter may be a pointer in disguise, whose address is no va_list*: hence the copy.
int unichar_output(xFILE* out, const unsigned short* format, va_list args) {
  va_list cursor;
  va_copy(cursor, args);
  const int length = TFormatter(out, &cursor).Run(OrEmpty(format));
  va_end(cursor);
  return length;
}

int get_int_arg(va_list* args) { return va_arg(*args, int); }

}  // namespace KEST
