// kest/string.h at the edges of its arguments.

#include <ctype.h>
#include <stdarg.h>

#include "sweep/argument_sweep.h"
#include "sweep/argument_text.h"

namespace kest_test {

namespace {

using namespace KEST;

// How many of length elements a copy into size ones takes.
int Copied(int length, int size) { return std::max(std::min(length, size), 0); }

int FormatV(unsigned short* dest, unsigned int size, const unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  const int length = vsnuprintf(dest, size, format, args);
  va_end(args);
  return length;
}

int FormatTo(xFILE* out, const unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  const int length = unichar_output(out, format, args);
  va_end(args);
  return length;
}

int FirstArgument(int count, ...) {
  va_list args;
  va_start(args, count);
  const int value = get_int_arg(&args);
  va_end(args);
  return value;
}

// The units that a copy of length units leaves in a destination of size ones, terminator included.
long long Stored(long long length, unsigned int size) {
  return std::min<long long>(length + 1, size);
}

// A bounded copy of "abc", or of null, to size elements. The block has what is written.
template <typename Unit, typename Copy>
void ExpectBoundedCopy(unsigned int size, bool given, Copy copy) {
  const long long length = given ? kLength : 0;
  const GuardedBlock<Unit> dest(Stored(length, size));
  EXPECT_EQ(length, copy(dest.Get(), size));
  std::vector<Unit> expected(kText.begin(), given ? kText.end() : kText.begin());
  expected.push_back(0);
  expected.resize(static_cast<size_t>(Stored(length, size)));
  if (size != 0) expected.back() = 0;
  EXPECT_EQ(expected, dest.Content());
}

// The same behind "abc". A size below the length of the contents is not allowed.
template <typename Unit, typename Append>
void ExpectBoundedAppend(unsigned int size, bool given, Append append) {
  if (size < kLength) return LeaveOut();
  const long long length = kLength + (given ? kLength : 0);
  const GuardedBlock<Unit> dest(std::max<long long>(Stored(length, size), kLength + 1));
  std::copy(kText.begin(), kText.end(), dest.Get());
  EXPECT_EQ(length, append(dest.Get(), size));
  std::vector<Unit> expected(kText.begin(), kText.end());
  for (long long at = kLength; at < Stored(length, size) - 1; ++at) {
    expected.push_back(static_cast<Unit>(kText[static_cast<size_t>(at - kLength)]));
  }
  expected.push_back(0);
  EXPECT_EQ(expected, dest.Content());
}

// "12!" read as a number.
template <typename Read>
void ExpectNumber(int base, bool given, bool wantsEnd, Read read) {
  const Units16 text(std::u16string(u"12!", 4));
  const unsigned short* source = given ? text.Get() : nullptr;
  unsigned short* end = nullptr;
  const auto value = read(source, wantsEnd ? &end : nullptr);
  const bool isBase = base == 0 || (base >= 2 && base <= 36);
  const int digits = !given || !isBase ? 0 : base == 2 ? 1 : 2;
  EXPECT_EQ(digits == 0 ? 0 : digits == 1 ? 1 : base == 0 ? 12 : base + 2, static_cast<int>(value));
  if (wantsEnd) {
    EXPECT_EQ(source != nullptr ? source + digits : nullptr, end);
  }
}

// What "%*.*d" takes: at least precision digits and a sign, in at least width units.
long long FormattedLength(long long width, int precision, int value) {
  const std::string digits = value != 0 ? std::to_string(std::abs(1LL * value)) : "";
  const long long number =
      std::max<long long>(precision < 0 ? 1 : precision, static_cast<long long>(digits.size()));
  return std::min<long long>(std::max(std::abs(width), number + (value < 0)), INT_MAX);
}

// Whether a class of the C library's characters takes ch, which has to be a byte.
template <typename IsClass>
bool InClass(int ch, IsClass isClass) {
  return ch >= -128 && ch <= 255 && isClass(static_cast<unsigned char>(ch)) != 0;
}

void AddStringRows(Table& table) {
  table.Row("KestAllocString", [](bool given) {
    unsigned short* bstr = KestAllocString(Abc(given));
    EXPECT_EQ(given ? kText.size() : 0, KestStringLen(bstr));
    EXPECT_EQ(given, bstr != nullptr);
    KestFreeString(bstr);
  });
  table.Row("KestAllocStringLen", Around(kLength, kLongestBstr),
            [](bool given, unsigned int length) {
              // Above the largest block there is no memory, and nothing is read.
              const Units16 source(Fits(length) ? length : 0);
              unsigned short* bstr = KestAllocStringLen(given ? source.Get() : nullptr, length);
              const bool fits = length != 0 && Fits(length);
              EXPECT_EQ(fits, bstr != nullptr);
              EXPECT_EQ(fits ? length : 0, KestStringLen(bstr));
              if (length != 0 && length <= static_cast<unsigned int>(kLongestBstr))
                ExpectRequested(2ull * length + 6);
              KestFreeString(bstr);
            });
  table.Row("KestFreeString", [] { KestFreeString(nullptr); });
  table.Row("KestStringLen", [] { EXPECT_EQ(0u, KestStringLen(nullptr)); });
  table.Row("KestStringByteLen", [] { EXPECT_EQ(0u, KestStringByteLen(nullptr)); });
  table.Row("KestStringUtf8ByteLen",
            [](bool given) { EXPECT_EQ(given ? 3u : 0u, KestStringUtf8ByteLen(Abc(given))); });
  table.Row("KestStringToUtf8", Around(kLength), [](bool source, bool dest, int length, int size) {
    const int count = source && dest ? Copied(length, size) : 0;
    // The two largest together would only be slow.
    if (count > 1000) return LeaveOut();
    const Units16 units(std::u16string(static_cast<size_t>(count), u'\u1234'));
    // Each unit takes three bytes, and the last sequence is written whole.
    const int sequences = (std::min(count * 3, std::max(size, 0)) + 2) / 3;
    const Bytes8 bytes(sequences * 3);
    EXPECT_EQ(sequences * 3, KestStringToUtf8(source ? units.Get() : nullptr, length,
                                              dest ? bytes.Get() : nullptr, size));
  });
  table.Row("KestUtf8ToString", Around(kLength, 3 * kLength),
            [](bool source, bool dest, int length, int size) {
              const int count = source && dest ? Copied(length / 3, size) : 0;
              if (count > 1000) return LeaveOut();  // as above
              // A last sequence may be cut off by the length.
              std::string sequences;
              for (int i = 0; i <= count; ++i) sequences += "\xE1\x88\xB4";
              sequences.resize(static_cast<size_t>(Copied(length, 3 * count + 3)));
              const Bytes8 bytes(sequences);
              const Units16 units(count);
              EXPECT_EQ(count, KestUtf8ToString(source ? bytes.Get() : nullptr, length,
                                                dest ? units.Get() : nullptr, size));
              EXPECT_EQ(std::vector<unsigned short>(static_cast<size_t>(count), 0x1234),
                        units.Content());
            });
  table.Row(
      "KestUnicodeToMultibyte", Around(kLength), [](bool source, bool dest, int length, int size) {
        const int count = source && dest ? Copied(length == -1 ? kLength + 1 : length, size) : 0;
        if (count > 1000) return LeaveOut();  // as above
        // The whole text is looked at for its terminator.
        const Units16 units(length == -1 ? std::u16string(u"abc", 4)
                                         : std::u16string(static_cast<size_t>(count), u'\u1234'));
        const Bytes8 bytes(count);
        EXPECT_EQ(count, KestUnicodeToMultibyte(source ? units.Get() : nullptr, length,
                                                dest ? bytes.Get() : nullptr, size));
      });
  table.Row(
      "KestMultibyteToUnicode", Around(kLength), [](bool source, bool dest, int length, int size) {
        const int count = source && dest ? Copied(length == -1 ? kLength + 1 : length, size) : 0;
        if (count > 1000) return LeaveOut();  // as above
        const Bytes8 bytes(length == -1 ? std::string("abc", 4)
                                        : std::string(static_cast<size_t>(count), '\xE9'));
        const Units16 units(count);
        EXPECT_EQ(count, KestMultibyteToUnicode(source ? bytes.Get() : nullptr, length,
                                                dest ? units.Get() : nullptr, size));
      });
  table.Row("kest_isalnum", Around(-128, 255),
            [](int ch) { EXPECT_EQ(InClass(ch, isalnum), kest_isalnum(ch) != 0); });
  table.Row("kest_isdigit", Around(-128, 255),
            [](int ch) { EXPECT_EQ(InClass(ch, isdigit), kest_isdigit(ch) != 0); });
  table.Row("kest_isspace", Around(-128, 255),
            [](int ch) { EXPECT_EQ(InClass(ch, isspace), kest_isspace(ch) != 0); });
  table.Row("kest_isualnum", Around(127, 255, 'a'), [](unsigned short ch) {
    EXPECT_EQ(ch < 128 && isalnum(ch) != 0, kest_isualnum(ch) != 0);
  });
  table.Row("kest_isudigit", Around(127, 255, '0'), [](unsigned short ch) {
    EXPECT_EQ(ch < 128 && isdigit(ch) != 0, kest_isudigit(ch) != 0);
  });

  table.Row("KEST::ucslen(unsigned short const*)",
            [](bool given) { EXPECT_EQ(given ? 3u : 0u, ucslen(Abc(given))); });
  table.Row("KEST::ucscpy(unsigned short*, unsigned short const*)", [](bool given) {
    const Units16 dest(given ? 4 : 1);
    EXPECT_EQ(dest.Get(), ucscpy(dest.Get(), Abc(given)));
    EXPECT_EQ(Given(given), TextOf(dest.Get()));
  });
  table.Row("KEST::ucsncpy(unsigned short*, unsigned short const*, unsigned int)", Around(kLength),
            [](bool given, unsigned int n) {
              // It always writes all n units.
              if (n > 1000) return LeaveOut();
              const Units16 dest(n);
              EXPECT_EQ(dest.Get(), ucsncpy(dest.Get(), Abc(given), n));
              std::vector<unsigned short> expected(n);
              if (given) std::copy_n(kText.begin(), std::min<size_t>(n, kLength), expected.begin());
              EXPECT_EQ(expected, dest.Content());
            });
  table.Row("KEST::ucscat(unsigned short*, unsigned short const*)", [](bool given) {
    const Units16 dest(given ? 7 : 4);
    ucscpy(dest.Get(), Abc(true));
    EXPECT_EQ(dest.Get() + kLength, ucscat(dest.Get(), Abc(given)));
    EXPECT_EQ(kText + Given(given), TextOf(dest.Get()));
  });
  table.Row("KEST::ucscmp(unsigned short const*, unsigned short const*)",
            [](bool a, bool b) { EXPECT_EQ(('a' * a) - ('a' * b), ucscmp(Abc(a), Abc(b))); });
  table.Row("KEST::ucsncmp(unsigned short const*, unsigned short const*, unsigned int)",
            Around(kLength), [](bool a, bool b, unsigned int n) {
              EXPECT_EQ(n == 0 ? 0 : ('a' * a) - ('a' * b), ucsncmp(Abc(a), Abc(b), n));
              // No more than n units are looked at.
              const Units16 open(std::u16string(u"abc", std::min(n, 3u)));
              if (n <= 3) {
                EXPECT_EQ(0, ucsncmp(open.Get(), Abc(true), n));
              }
            });
  table.Row("KEST::ucsicmp(unsigned short const*, unsigned short const*)",
            [](bool a, bool b) { EXPECT_EQ(('A' * a) - ('A' * b), ucsicmp(Abc(a), Abc(b))); });
  table.Row("KEST::ucsnicmp(unsigned short const*, unsigned short const*, unsigned int)",
            Around(kLength), [](bool a, bool b, unsigned int n) {
              EXPECT_EQ(n == 0 ? 0 : ('A' * a) - ('A' * b), ucsnicmp(Abc(a), Abc(b), n));
              const Units16 open(std::u16string(u"ABC", std::min(n, 3u)));
              if (n <= 3) {
                EXPECT_EQ(0, ucsnicmp(open.Get(), Abc(true), n));
              }
            });
  table.Row("KEST::ucschr(unsigned short const*, unsigned short)", Around('b'),
            [](bool given, unsigned short ch) {
              const size_t at = std::u16string(u"abc", 4).find(static_cast<char16_t>(ch));
              const bool found = given && at != std::u16string::npos;
              EXPECT_EQ(found ? Abc(true) + at : nullptr, ucschr(Abc(given), ch));
            });
  table.Row("KEST::ucsrchr(unsigned short const*, unsigned short)", Around('b'),
            [](bool given, unsigned short ch) {
              const size_t at = std::u16string(u"abc", 4).find(static_cast<char16_t>(ch));
              const bool found = given && at != std::u16string::npos;
              EXPECT_EQ(found ? Abc(true) + at : nullptr, ucsrchr(Abc(given), ch));
            });
  table.Row("KEST::ucspbrk(unsigned short const*, unsigned short const*)",
            [](bool given, bool set) {
              EXPECT_EQ(given && set ? Abc(true) : nullptr, ucspbrk(Abc(given), Abc(set)));
            });
  table.Row("KEST::ucsstr(unsigned short const*, unsigned short const*)",
            [](bool given, bool needle) {
              EXPECT_EQ(given ? Abc(true) : nullptr, ucsstr(Abc(given), Abc(needle)));
            });
  table.Row("KEST::ucstol(unsigned short const*, unsigned short**, int)", Around(2, 10, 16, 36),
            [](bool given, bool wantsEnd, int base) {
              ExpectNumber(base, given, wantsEnd,
                           [&](const unsigned short* s, unsigned short** end) {
                             return ucstol(s, end, base);
                           });
            });
  table.Row("KEST::ucstoul(unsigned short const*, unsigned short**, int)", Around(2, 10, 16, 36),
            [](bool given, bool wantsEnd, int base) {
              ExpectNumber(base, given, wantsEnd,
                           [&](const unsigned short* s, unsigned short** end) {
                             return ucstoul(s, end, base);
                           });
            });
  table.Row("KEST::ucstoxl(unsigned short const*, unsigned short**, int, unsigned int)",
            Around(2, 10, 16, 36), [](bool given, bool wantsEnd, int base, unsigned int flags) {
              // The other bits are the function's own and start at 0.
              if (flags > 1) return LeaveOut();
              ExpectNumber(base, given, wantsEnd,
                           [&](const unsigned short* s, unsigned short** end) {
                             return ucstoxl(s, end, base, flags);
                           });
            });
  table.Row("KEST::ucsupr(unsigned short*)", [] { EXPECT_EQ(nullptr, ucsupr(nullptr)); });
  table.Row("KEST::ucslwr(unsigned short*)", [] { EXPECT_EQ(nullptr, ucslwr(nullptr)); });
  table.Row("KEST::ucsrev(unsigned short*)", [] { EXPECT_EQ(nullptr, ucsrev(nullptr)); });
  table.Row("KEST::ucslcpy(unsigned short*, unsigned short const*, unsigned int)", Around(kLength),
            [](bool given, unsigned int size) {
              ExpectBoundedCopy<unsigned short>(
                  size, given,
                  [&](unsigned short* d, unsigned int n) { return ucslcpy(d, Abc(given), n); });
              if (size == 0) {
                EXPECT_EQ(given ? 3u : 0u, ucslcpy(nullptr, Abc(given), 0));
              }
            });
  table.Row("KEST::s2ulcpy(unsigned short*, char const*, unsigned int)", Around(kLength),
            [](bool given, unsigned int size) {
              ExpectBoundedCopy<unsigned short>(size, given,
                                                [&](unsigned short* d, unsigned int n) {
                                                  return s2ulcpy(d, AbcBytes(given), n);
                                                });
              if (size == 0) {
                EXPECT_EQ(given ? 3u : 0u, s2ulcpy(nullptr, AbcBytes(given), 0));
              }
            });
  table.Row("KEST::strlcpy(char*, char const*, unsigned int)", Around(kLength),
            [](bool given, unsigned int size) {
              ExpectBoundedCopy<char>(size, given, [&](char* d, unsigned int n) {
                return strlcpy(d, AbcBytes(given), n);
              });
              if (size == 0) {
                EXPECT_EQ(given ? 3u : 0u, strlcpy(nullptr, AbcBytes(given), 0));
              }
            });
  table.Row("KEST::ucslcat(unsigned short*, unsigned short const*, unsigned int)",
            Around(kLength, 2 * kLength), [](bool given, unsigned int size) {
              ExpectBoundedAppend<unsigned short>(
                  size, given,
                  [&](unsigned short* d, unsigned int n) { return ucslcat(d, Abc(given), n); });
            });
  table.Row("KEST::strlcat(char*, char const*, unsigned int)", Around(kLength, 2 * kLength),
            [](bool given, unsigned int size) {
              ExpectBoundedAppend<char>(size, given, [&](char* d, unsigned int n) {
                return strlcat(d, AbcBytes(given), n);
              });
            });
  table.Row("KEST::isuctype(unsigned short, unsigned short)", Around(127, 255, 'a', 0x103),
            [](unsigned short ch, unsigned short mask) {
              const int classes = isuctype(ch, mask);
              EXPECT_EQ(0, classes & ~mask);
              if (ch > 127) {
                EXPECT_EQ(0, classes);
              }
            });
  table.Row("KEST::touupper(unsigned short)", Around(127, 'a', 'z'), [](unsigned short ch) {
    EXPECT_EQ(ch >= 'a' && ch <= 'z' ? ch - 32 : ch, touupper(ch));
  });
  table.Row("KEST::toulower(unsigned short)", Around(127, 'A', 'Z'), [](unsigned short ch) {
    EXPECT_EQ(ch >= 'A' && ch <= 'Z' ? ch + 32 : ch, toulower(ch));
  });

  table.Row("KEST::snuprintf(unsigned short*, unsigned int, unsigned short const*, ...)",
            Around(kLength), [](bool format, unsigned int size) {
              // From 0x80000001 on the terminator alone is stored.
              const long long length = format ? kLength : 0;
              const Units16 dest(size > 0x80000000 ? 1 : Stored(length, size));
              EXPECT_EQ(length, snuprintf(dest.Get(), size, Abc(format)));
              if (size == 0) {
                EXPECT_EQ(length, snuprintf(nullptr, 0, Abc(format)));
              }
            });
  table.Row("KEST::vsnuprintf(unsigned short*, unsigned int, unsigned short const*, char*)",
            Around(4), [](unsigned int size, int width, int precision, int value) {
              const long long length = FormattedLength(width, precision, value);
              const long long stored = size > 0x80000000 ? 1 : Stored(length, size);
              // Two large ones together would only be slow.
              if (stored > 1000) return LeaveOut();
              const Units16 dest(stored);
              EXPECT_EQ(length,
                        FormatV(dest.Get(), size, KEST_TEXT("%*.*d"), width, precision, value));
              if (size != 0) {
                EXPECT_EQ(0, dest.Content().back());
              }
            });
  table.Row("KEST::unichar_output(KEST::xFILE*, unsigned short const*, char*)", Around(4),
            [](bool format, int room, int precision) {
              const Units16 dest(std::clamp(room, 0, 9));
              xFILE out = {dest.Get(), std::min(room, 9)};
              const unsigned short* text = format ? KEST_TEXT("<%.*s>") : nullptr;
              const int length = precision < 0 ? kLength : std::min(precision, kLength);
              EXPECT_EQ(format ? length + 2 : 0, FormatTo(&out, text, precision, Abc(true)));
              EXPECT_GE(out.position, dest.Get());
            });
  table.Row("KEST::write_char(unsigned short, KEST::xFILE*, int*)", Around(kLength),
            [](unsigned short ch, int room, int count) {
              // Counts start at 0 and grow.
              if (count < 0) return LeaveOut();
              const Units16 dest(room > 0 ? 1 : 0);
              xFILE out = {dest.Get(), room};
              const int before = count;
              write_char(ch, &out, &count);
              EXPECT_EQ(before == INT_MAX ? INT_MAX : before + 1, count);
              EXPECT_EQ(dest.Get() + (room > 0 ? 1 : 0), out.position);
              if (room > 0) {
                EXPECT_EQ(ch, dest.Get()[0]);
              }
            });
  table.Row("KEST::write_multi_char(unsigned short, int, KEST::xFILE*, int*)", Around(kLength),
            [](int n, int room, int count) {
              if (count < 0) return LeaveOut();  // as above
              // Two large ones together would only be slow.
              if (Copied(n, room) > 1000) return LeaveOut();
              const Units16 dest(Copied(n, room));
              xFILE out = {dest.Get(), room};
              const long long expected =
                  std::min<long long>(count + std::max<long long>(n, 0), INT_MAX);
              write_multi_char('x', n, &out, &count);
              EXPECT_EQ(expected, count);
              EXPECT_EQ(dest.Get() + Copied(n, room), out.position);
            });
  table.Row("KEST::write_string(unsigned short const*, int, KEST::xFILE*, int*)", Around(kLength),
            [](int n, int room, int count) {
              if (count < 0 || Copied(n, room) > 1000) return LeaveOut();  // as above
              const Units16 source(Copied(n, room)), dest(Copied(n, room));
              xFILE out = {dest.Get(), room};
              const long long expected =
                  std::min<long long>(count + std::max<long long>(n, 0), INT_MAX);
              write_string(source.Get(), n, &out, &count);
              EXPECT_EQ(expected, count);
              EXPECT_EQ(dest.Get() + Copied(n, room), out.position);
            });
  table.Row("KEST::get_int_arg(char**)",
            [](int value) { EXPECT_EQ(value, FirstArgument(1, value)); });
  table.Row("KEST::TConvertBuffer::TConvertBuffer(char const*, int)", Around(kLength),
            [](bool given, int length) {
              const int count = !given ? 0 : length == -1 ? kLength : std::max(length, 0);
              const bool fits = Fits(static_cast<unsigned int>(count));
              // Above the largest block there is no memory, and nothing is read.
              const Bytes8 bytes(length == -1
                                     ? std::string("abc", 4)
                                     : std::string(fits ? static_cast<size_t>(count) : 0, 'a'));
              const TConvertBuffer buffer(given ? bytes.Get() : nullptr, length);
              EXPECT_EQ(fits ? count : 0, buffer.GetLength());
              EXPECT_EQ(fits && count != 0, buffer.GetBuffer() != nullptr);
              if (count != 0 && count < INT_MAX)
                ExpectRequested(2ull * static_cast<unsigned int>(count) + 2);
            });
}

const Table kString(AddStringRows);

TEST(ArgumentSweep, String) { kString.Run(); }

}  // namespace

}  // namespace kest_test
