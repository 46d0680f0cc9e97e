// Character classes and case mapping: ASCII alone for units, the current locale's tables for bytes.

#include <ctype.h>

#include "kest/string.h"
#include "string/units.h"

namespace {

enum : unsigned short {
  kUpper = 0x01,
  kLower = 0x02,
  kDigit = 0x04,
  kSpace = 0x08,
  kPunctuation = 0x10,
  kControl = 0x20,
  kHexDigit = 0x80,
  // Part of the callers' masks for letters, but set in no entry.
  kAlphabetic = 0x100,
};

// U+0020 is the only space: TAB, LF, VT, FF and CR are controls and nothing else, on purpose.
constexpr unsigned short ClassOf(unsigned int ch) {
  if (ch < 0x20 || ch == 0x7F) return kControl;
  if (ch == ' ') return kSpace;
  if (ch >= '0' && ch <= '9') return kDigit | kHexDigit;
  if (ch >= 'A' && ch <= 'F') return kUpper | kHexDigit;
  if (ch >= 'a' && ch <= 'f') return kLower | kHexDigit;
  if (ch >= 'G' && ch <= 'Z') return kUpper;
  if (ch >= 'g' && ch <= 'z') return kLower;
  return kPunctuation;
}

constexpr unsigned int kTableSize = 128;

struct SClassTable {
  unsigned short classes[kTableSize];

  constexpr SClassTable() : classes() {
    for (unsigned int ch = 0; ch < kTableSize; ++ch) classes[ch] = ClassOf(ch);
  }
};

constexpr SClassTable kTable;

// The C library's tables also answer for bytes that reach them as negative char values.
bool InLocaleTable(int ch) { return ch >= -128 && ch <= 255; }

}  // namespace

extern "C" {

int kest_isalnum(int ch) { return InLocaleTable(ch) ? isalnum(ch) : 0; }
int kest_isdigit(int ch) { return InLocaleTable(ch) ? isdigit(ch) : 0; }
int kest_isspace(int ch) { return InLocaleTable(ch) ? isspace(ch) : 0; }

int kest_isualnum(unsigned short ch) {
  return KEST::isuctype(ch, kAlphabetic | kUpper | kLower | kDigit);
}

int kest_isudigit(unsigned short ch) { return KEST::isuctype(ch, kDigit); }

}  // extern "C"

namespace KEST {

int isuctype(unsigned short ch, unsigned short mask) {
  return ch < kTableSize ? kTable.classes[ch] & mask : 0;
}

unsigned short touupper(unsigned short ch) { return UpperOf(ch); }

unsigned short toulower(unsigned short ch) { return LowerOf(ch); }

}  // namespace KEST
