// A second formatter to hold the library's against: the same state machine, written again as
// plainly as possible over std::u16string, and a source of random formats with arguments to match.

#ifndef KEST_TESTS_STRING_FORMAT_MODEL_H
#define KEST_TESTS_STRING_FORMAT_MODEL_H

#include <limits.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "support/wide_text.h"

namespace kest_test {

// Hands the model its arguments; the library's formatter then gets the same ones.
class FormatArguments {
 public:
  virtual ~FormatArguments() = default;
  virtual int NextInt() = 0;
  virtual int NextStar() = 0;
  virtual const char16_t* NextString() = 0;
  virtual void StoreCount(int count, bool isShort) = 0;
};

class FormatModel {
 public:
  static std::u16string Run(const std::u16string& format, FormatArguments& args) {
    FormatModel model(args);
    int state = 0;
    for (char16_t ch : format) {
      state = Next(state, ch);
      model.Enter(state, ch);
    }
    return model.output;
  }

 private:
  explicit FormatModel(FormatArguments& source) : args(source) {}

  static int ClassOf(char16_t ch) {
    static const std::u16string kClasses[] = {
        u"", u"%", u".", u"*", u"0", u"123456789", u" #+-", u"FILNhlw", u"BCEGSXZcdefginopsux"};
    for (int i = 1; i < 9; ++i) {
      if (kClasses[i].find(ch) != std::u16string::npos) return i;
    }
    return 0;
  }

  static int Next(int state, char16_t ch) {
    // One row a class, one column a state.
    static const char* const kTable[] = {"00000000", "10000001", "04440000", "03305000", "02235500",
                                         "03335500", "02200000", "06666660", "07777770"};
    return kTable[ClassOf(ch)][state] - '0';
  }

  void Enter(int state, char16_t ch) {
    if (state == 0) output += ch;
    if (state == 1) {
      plus = space = minus = zero = isShort = wide = silent = false;
      width = 0;
      precision = -1;
      prefix.clear();
    }
    if (state == 2) {
      if (ch == u'+') plus = true;
      if (ch == u' ') space = true;
      if (ch == u'-') minus = true;
      if (ch == u'0') zero = true;
    }
    if (state == 3 && ch != u'*') width = std::min<long long>(width * 10 + (ch - u'0'), INT_MAX);
    if (state == 3 && ch == u'*') {
      width = args.NextStar();
      if (width < 0) {
        minus = true;
        width = -width;
      }
    }
    if (state == 5 && ch == u'*') precision = std::max(args.NextStar(), -1);
    if (state == 5 && ch != u'*') precision = std::max(-1000LL, precision * 10 + (ch - u'0'));
    if (state == 6 && ch == u'h') isShort = true;
    if (state == 7) Convert(ch);
  }

  void Convert(char16_t type) {
    if (type == u'c') {
      SetWide(std::u16string(1, static_cast<char16_t>(args.NextInt())));
    } else if (type == u's') {
      const char16_t* s = args.NextString();
      std::u16string text;
      if (s == nullptr) s = u"(null)";
      while (*s != 0 && (precision < 0 || static_cast<long long>(text.size()) < precision)) {
        text += *s++;
      }
      SetWide(text);
    } else if (type == u'd' || type == u'i') {
      long long value = args.NextInt();
      if (isShort) value = static_cast<short>(value);
      prefix = value < 0 ? u"-" : plus ? u"+" : space ? u" " : u"";
      SetNumber(value < 0 ? -value : value, 10, "0123456789");
    } else if (type == u'u') {
      SetNumber(NextUnsigned(), 10, "0123456789");
    } else if (type == u'o') {
      SetNumber(NextUnsigned(), 8, "0123456789");
    } else if (type == u'x') {
      SetNumber(NextUnsigned(), 16, "0123456789abcdef");
    } else if (type == u'X') {
      SetNumber(NextUnsigned(), 16, "0123456789ABCDEF");
    } else if (type == u'p') {
      precision = 8;
      SetNumber(NextUnsigned(), 16, "0123456789ABCDEF");
    } else if (type == u'n') {
      args.StoreCount(static_cast<int>(output.size()), isShort);
      silent = true;
    }
    if (silent) return;

    std::u16string text;
    for (size_t i = 0; i < length; ++i) {
      if (wide) {
        text += static_cast<char16_t>((bytes[2 * i] & 0xFF) | (bytes[2 * i + 1] & 0xFF) << 8);
      } else {
        text += static_cast<char16_t>(bytes[i]);
      }
    }
    const long long used = static_cast<long long>(text.size() + prefix.size());
    const std::u16string pad(static_cast<size_t>(std::max(0LL, width - used)),
                             zero && !minus ? u'0' : u' ');
    if (minus) {
      output += prefix + text + pad;
    } else {
      output += zero ? prefix + pad + text : pad + prefix + text;
    }
  }

  long long NextUnsigned() {
    const unsigned int value = static_cast<unsigned int>(args.NextInt());
    return isShort ? value % 0x10000 : value;
  }

  void SetWide(const std::u16string& text) {
    wide = true;
    length = text.size();
    bytes.clear();
    for (char16_t ch : text) {
      bytes.push_back(static_cast<signed char>(ch & 0xFF));
      bytes.push_back(static_cast<signed char>(ch >> 8));
    }
  }

  void SetNumber(long long value, int base, const char* digits) {
    if (precision >= 0) zero = false;
    const size_t atLeast = precision < 0 ? 1 : static_cast<size_t>(precision);
    bytes.clear();
    for (; value != 0 || bytes.size() < atLeast; value /= base) {
      bytes.insert(bytes.begin(), static_cast<signed char>(digits[value % base]));
    }
    length = bytes.size();
  }

  FormatArguments& args;
  std::u16string output;
  // Reset at each '%'.
  bool plus = false, space = false, minus = false, zero = false, isShort = false;
  bool wide = false, silent = false;
  long long width = 0, precision = -1;
  std::u16string prefix;
  // Kept from one conversion to the next: a length, and the memory that is read.
  size_t length = 0;
  std::vector<signed char> bytes;
};

// A random format, and arguments that are drawn when the model asks for them and recorded as the
// words of an argument list. 'n' stores to places of which both sides have their own copy.
class RandomFormat : public FormatArguments {
 public:
  static constexpr size_t kMaxWords = 24;
  static constexpr size_t kMaxCounts = 24;

  explicit RandomFormat(std::mt19937& generator) : random(generator) {
    for (size_t pieces = 1 + random() % 5; pieces != 0; --pieces) AddPiece();
    expected = FormatModel::Run(format, *this);
  }

  const std::u16string& Format() const { return format; }
  const std::u16string& Expected() const { return expected; }
  // More arguments were asked for than Call hands over.
  bool IsTooLong() const { return words.size() > kMaxWords; }

  // function(args...) with the arguments that the model had.
  template <typename Function>
  auto Call(Function function) {
    std::vector<uintptr_t> w = words;
    w.resize(kMaxWords);
    return function(w[0], w[1], w[2], w[3], w[4], w[5], w[6], w[7], w[8], w[9], w[10], w[11], w[12],
                    w[13], w[14], w[15], w[16], w[17], w[18], w[19], w[20], w[21], w[22], w[23]);
  }

  bool CountsAgree() const { return memcmp(counts, expectedCounts, sizeof counts) == 0; }

  int NextInt() override {
    static const int kSpecial[] = {0,      1,      -1,      7,       255,     0x7FFF,
                                   0x8000, 0xFFFF, 0x10001, INT_MAX, INT_MIN, INT_MIN + 1};
    const int value = random() % 2 == 0 ? kSpecial[random() % (sizeof kSpecial / sizeof *kSpecial)]
                                        : static_cast<int>(random());
    words.push_back(static_cast<unsigned int>(value));
    return value;
  }

  // Mostly small, sometimes large, but far below the limits, which have tests of their own.
  int NextStar() override {
    const int value = random() % 40 == 0 ? 505 + static_cast<int>(random() % 20)
                                         : static_cast<int>(random() % 24) - 6;
    words.push_back(static_cast<unsigned int>(value));
    return value;
  }

  const char16_t* NextString() override {
    static const char16_t* const kStrings[] = {u"",      u"a",
                                               u"hello", u"\u00E9\u4E2D\u8180\uFFFF",
                                               u"%d%s",  u"a longer text of 28 units..",
                                               nullptr};
    const char16_t* s = kStrings[random() % (sizeof kStrings / sizeof *kStrings)];
    words.push_back(reinterpret_cast<uintptr_t>(s));
    return s;
  }

  void StoreCount(int count, bool isShort) override {
    const size_t place = std::min(countsUsed++, kMaxCounts - 1);
    words.push_back(reinterpret_cast<uintptr_t>(&counts[place]));
    const short low = static_cast<short>(count);
    memcpy(&expectedCounts[place], isShort ? static_cast<const void*>(&low) : &count,
           isShort ? sizeof low : sizeof count);
  }

 private:
  void Add(const std::u16string& choices) { format += choices[random() % choices.size()]; }

  void AddPiece() {
    if (random() % 3 == 0) {
      for (size_t n = random() % 4; n != 0; --n) Add(u"ab %%.*05+-hlcdsxE|\u0125\u0425\u4E00");
    }
    format += u'%';
    while (random() % 3 == 0) Add(u" #+--000");
    if (random() % 2 == 0) AddNumberOrStar();
    if (random() % 3 == 0) {
      format += u'.';
      AddNumberOrStar();
    }
    if (random() % 3 == 0) Add(u"hhhhlLFINw");
    Add(random() % 8 != 0 ? u"cssddiuoxXpn" : u"BCEGSZefg%.0kv");
  }

  void AddNumberOrStar() {
    switch (random() % 4) {
      case 0:
        Add(u"0123456789");
        [[fallthrough]];
      case 1:
        Add(u"0123456789");
        break;
      default:
        format += u'*';
        break;
    }
    if (random() % 16 == 0) Add(u"0123*");
  }

  std::mt19937& random;
  std::u16string format;
  std::u16string expected;
  std::vector<uintptr_t> words;
  size_t countsUsed = 0;
  int counts[kMaxCounts] = {};
  int expectedCounts[kMaxCounts] = {};
};

}  // namespace kest_test

#endif  // KEST_TESTS_STRING_FORMAT_MODEL_H
