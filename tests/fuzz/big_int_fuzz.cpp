// TBigInt against schoolbook arithmetic on words, a bit or a word at a time. Results are operands
// too as often as not: there are four numbers for all.

#include <ctype.h>
#include <string.h>

#include "fuzz/steps.h"
#include "kest/crypto.h"
#include "support/text.h"

namespace {

using KEST::TBigInt;
using kest_fuzz::Bytes;
using kest_fuzz::Memory;
using kest_fuzz::StepInput;
using Words = std::vector<unsigned int>;  // least significant first, the top one not 0

constexpr int kMostBits = 4096;

int Count(const Words& words) { return static_cast<int>(words.size()); }

Words Trimmed(Words words) {
  while (!words.empty() && words.back() == 0) words.pop_back();
  return words;
}

unsigned int WordAt(const Words& words, size_t i) { return i < words.size() ? words[i] : 0; }

int Compare(const Words& a, const Words& b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  for (size_t i = a.size(); i-- > 0;) {
    if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
  }
  return 0;
}

Words Sum(const Words& a, const Words& b) {
  Words sum(std::max(a.size(), b.size()) + 1);
  uint64_t carry = 0;
  for (size_t i = 0; i < sum.size(); ++i, carry >>= 32) {
    carry += static_cast<uint64_t>(WordAt(a, i)) + WordAt(b, i);
    sum[i] = static_cast<unsigned int>(carry);
  }
  return Trimmed(sum);
}

// With a below b, the difference wraps at the longer length, and its top word is one less.
Words Difference(const Words& a, const Words& b) {
  Words difference(std::max(a.size(), b.size()));
  int64_t carry = 0;
  for (size_t i = 0; i < difference.size(); ++i, carry >>= 32) {
    carry += static_cast<int64_t>(WordAt(a, i)) - WordAt(b, i);
    difference[i] = static_cast<unsigned int>(carry);
  }
  if (carry < 0) --difference.back();
  return Trimmed(difference);
}

Words Product(const Words& a, const Words& b) {
  Words product(a.size() + b.size());
  for (size_t i = 0; i < a.size(); ++i) {
    uint64_t carry = 0;
    for (size_t j = 0; j < b.size() || carry != 0; ++j, carry >>= 32) {
      carry += static_cast<uint64_t>(a[i]) * WordAt(b, j) + product[i + j];
      product[i + j] = static_cast<unsigned int>(carry);
    }
  }
  return Trimmed(product);
}

Words ShiftedLeft(const Words& a, int bits) {
  Words result(a.size() + static_cast<size_t>(bits / 32) + 1);
  for (size_t i = 0; i < a.size(); ++i) {
    const uint64_t word = static_cast<uint64_t>(a[i]) << (bits % 32);
    result[i + static_cast<size_t>(bits / 32)] |= static_cast<unsigned int>(word);
    result[i + static_cast<size_t>(bits / 32) + 1] = static_cast<unsigned int>(word >> 32);
  }
  return Trimmed(result);
}

Words ShiftedRight(const Words& a, int bits) {
  Words result;
  for (size_t i = static_cast<size_t>(bits / 32); i < a.size(); ++i) {
    const uint64_t both = static_cast<uint64_t>(WordAt(a, i + 1)) << 32 | a[i];
    result.push_back(static_cast<unsigned int>(both >> (bits % 32)));
  }
  return Trimmed(result);
}

// a mod d, a bit at a time.
Words Remainder(const Words& a, const Words& d) {
  Words rest;
  for (size_t bit = 32 * a.size(); bit-- > 0;) {
    unsigned int carry = a[bit / 32] >> bit % 32 & 1;
    for (unsigned int& word : rest) {
      const unsigned int top = word >> 31;
      word = word << 1 | carry;
      carry = top;
    }
    if (carry != 0) rest.push_back(carry);
    if (Compare(rest, d) >= 0) rest = Difference(rest, d);
  }
  return rest;
}

// 1 for an exponent or a modulus of 0.
Words Power(const Words& base, const Words& exponent, const Words& m) {
  Words power = {1};
  if (m.empty()) return power;
  for (size_t bit = 32 * exponent.size(); bit-- > 0;) {
    power = Remainder(Product(power, power), m);
    if ((exponent[bit / 32] >> bit % 32 & 1) != 0) power = Remainder(Product(power, base), m);
  }
  return power;
}

std::u16string Hexadecimal(const Words& words) {
  std::u16string text;
  for (size_t digit = 8 * words.size(); digit-- > 0;) {
    const unsigned int value = words[digit / 8] >> digit % 8 * 4 & 15;
    if (value != 0 || !text.empty()) text += u"0123456789ABCDEF"[value];
  }
  return text.empty() ? u"0" : text;
}

Bytes BigEndian(const Words& words) {
  Bytes bytes;
  for (size_t i = words.size(); i-- > 0;) {
    for (int shift = 24; shift >= 0; shift -= 8) {
      bytes.push_back(static_cast<unsigned char>(words[i] >> shift));
    }
  }
  return bytes;
}

class Numbers {
 public:
  Numbers(StepInput&, Memory& all) : memory(all) {}

  void Step(int step, StepInput& in) {
    const int operands = in.Byte();
    r = operands & 3, a = operands >> 2 & 3, b = operands >> 4 & 3, m = operands >> 6 & 3;
    const int capacity = numbers[r].GetCapacity();
    Change(step % 17, in);
    for (int i = 0; i < 4; ++i) IsAsItsModel(i);
    FUZZ_CHECK(numbers[r].GetCapacity() >= capacity);
  }

 private:
  static Words WordsOf(const TBigInt& number) {
    return Words(number.GetWords(), number.GetWords() + number.GetLength());
  }
  // Normal, in room for a multiple of 8 words.
  void IsAsItsModel(int i) const {
    FUZZ_CHECK(WordsOf(numbers[i]) == models[i]);
    FUZZ_CHECK(models[i].empty() || models[i].back() != 0);
    FUZZ_CHECK(numbers[i].GetCapacity() % 8 == 0);
    FUZZ_CHECK(numbers[i].GetCapacity() >= Count(models[i]));
  }

  // The result of an operation is as expected, or any value without memory.
  void Became(bool done, const Words& expected) {
    FUZZ_CHECK(done == !memory.Refused());
    models[r] = done ? expected : WordsOf(numbers[r]);
  }
  // A constructor without memory gives 0, and an assignment then changes nothing.
  void Assign(const TBigInt& made, const Words& expected) {
    numbers[r] = made;
    const Words now = WordsOf(numbers[r]);
    FUZZ_CHECK(memory.Refused() ? now.empty() || now == models[r] : now == expected);
    models[r] = now;
  }
  int BitsOf(int i) const { return 32 * Count(models[i]); }

  void Change(int kind, StepInput& in) {
    const Words &x = models[a], &y = models[b], &modulus = models[m];
    switch (kind) {
      case 0: {
        const unsigned int value = in.Word();
        return Assign(TBigInt(static_cast<int>(value)), Trimmed({value}));
      }
      case 1:
        return AssignBytes(in);
      case 2:
        return AssignText(in);
      case 3:
        return AssignNumber(in.Bool());
      case 4:
        return AssignPattern(in);
      case 5: {
        if (BitsOf(a) > kMostBits || BitsOf(b) > kMostBits) return;
        const Words sum = Sum(x, y);
        return Became(TBigInt::Add(numbers[r], numbers[a], numbers[b]), sum);
      }
      case 6: {
        const Words difference = Difference(x, y);
        return Became(TBigInt::Sub(numbers[r], numbers[a], numbers[b]), difference);
      }
      case 7: {
        if (BitsOf(a) + BitsOf(b) > kMostBits) return;
        const Words product = Product(x, y);
        return Became(TBigInt::Mul(numbers[r], numbers[a], numbers[b]), product);
      }
      case 8:
        return Divide(Words(x), Words(y));
      case 9: {
        if (!TakeWork(BitsOf(a) + BitsOf(b), modulus)) return;
        const bool possible = !modulus.empty();
        const Words rest = possible ? Remainder(Product(x, y), modulus) : models[r];
        const bool done = TBigInt::MulMod(numbers[r], numbers[a], numbers[b], numbers[m]);
        if (possible) return Became(done, rest);
        FUZZ_CHECK(!done);
        break;
      }
      case 10: {
        if (!TakeWork(BitsOf(b) * 3 * BitsOf(m) + BitsOf(a), modulus)) return;
        const Words power = Power(x, y, modulus);
        FUZZ_CHECK(TBigInt::ExpMod(numbers[r], numbers[a], numbers[b], numbers[m]));
        models[r] = memory.Refused() ? Words() : power;
        break;
      }
      case 11:
        return ShiftLeft(in.Number(100));
      case 12: {
        const int bits = in.Number(100);
        const Words shifted = ShiftedRight(x, std::max(bits, 0));
        const bool done = TBigInt::Shr(numbers[r], numbers[a], bits);
        if (bits >= 0) return Became(done, shifted);
        FUZZ_CHECK(!done);
        break;
      }
      case 13:
        return AdjustBuffer(in.Number(40), in.Bool());
      case 14: {
        const KEST::TBstr shown = numbers[a].ToString();
        FUZZ_CHECK(kest_test::TextOf(shown) == (memory.Refused() ? u"" : Hexadecimal(x)));
        FUZZ_CHECK(numbers[a].ToInt() == static_cast<int>(WordAt(x, 0)));
        const int order = TBigInt::Cmp(numbers[a], numbers[b]);
        FUZZ_CHECK((order > 0) - (order < 0) == Compare(x, y));
        break;
      }
      case 15:
        return Dump(in.Number(40));
      default:
        WordCalls(in);
    }
  }

  // The model divides bit by bit: an input gets so much of that, and the rest is left out.
  bool TakeWork(int bits, const Words& modulus) {
    const long long steps = static_cast<long long>(bits) * (Count(modulus) + 2);
    if (steps > workLeft) return false;
    workLeft -= steps;
    return true;
  }

  // The number itself, which may be the one that it is assigned to, or a copy.
  void AssignNumber(bool copied) {
    if (copied) return Assign(TBigInt(numbers[a]), Words(models[a]));
    Assign(numbers[a], Words(models[a]));
  }

  void AssignBytes(StepInput& in) {
    static kest_fuzz::Guarded<unsigned char, 64> room;
    const Bytes bytes = in.SomeBytes(64);
    Words words((bytes.size() + 3) / 4);
    for (size_t i = 0; i < bytes.size(); ++i) {
      const size_t place = bytes.size() - 1 - i;
      words[place / 4] |= static_cast<unsigned int>(bytes[i]) << 8 * (place % 4);
    }
    const unsigned char* there = room.Copy(bytes.data(), bytes.size());
    Assign(TBigInt(there, static_cast<int>(bytes.size())), Trimmed(words));
  }

  // Units that are no digits are skipped.
  void AssignText(StepInput& in) {
    static kest_fuzz::Guarded<unsigned short, 41> room;
    std::u16string text(static_cast<size_t>(in.Below(41)), u'0');
    Words words;
    for (char16_t& unit : text) {
      unit = u"0123456789ABCDEFabcdefxgG@`/: -\uFF11"[in.Below(32)];
      const int digit = unit <= u'9'   ? unit - u'0'
                        : unit <= u'F' ? unit - u'A' + 10
                                       : unit - u'a' + 10;
      const bool isDigit = unit < 0x80 && isxdigit(unit);
      if (isDigit) words = Sum(ShiftedLeft(words, 4), Trimmed({static_cast<unsigned int>(digit)}));
    }
    Assign(TBigInt(room.Copy(text.c_str(), text.size() + 1)), words);
  }

  // A long number of few bytes of input, such as carries and quotient digits go wrong with.
  void AssignPattern(StepInput& in) {
    static constexpr unsigned int kWords[] = {0,          1,          0x7FFFFFFF, 0x80000000,
                                              0x80000001, 0xFFFFFFFE, 0xFFFFFFFF, 0x12345678};
    Words words(static_cast<size_t>(in.Below(40)));
    const int kinds = in.Byte();
    for (size_t i = 0; i < words.size(); ++i) {
      words[i] = kWords[i % 4 == 3 ? in.Below(8) : kinds >> i % 4 * 2 & 7];
    }
    const Bytes bytes = BigEndian(words);
    Assign(TBigInt(bytes.data(), static_cast<int>(bytes.size())), Trimmed(words));
  }

  // Quotient and remainder are what makes up the dividend again; one object for both is the
  // remainder.
  void Divide(const Words& dividend, const Words& divisor) {
    const int q = r, rest = m;
    const Words old[2] = {models[q], models[rest]};
    const bool done = TBigInt::Div(numbers[q], numbers[rest], numbers[a], numbers[b]);
    models[q] = WordsOf(numbers[q]);
    models[rest] = WordsOf(numbers[rest]);
    FUZZ_CHECK(done == (!divisor.empty() && !memory.Refused()));
    if (divisor.empty()) FUZZ_CHECK(models[q] == old[0] && models[rest] == old[1]);
    if (!done) return;
    FUZZ_CHECK(Compare(models[rest], divisor) < 0);
    if (q != rest) {
      FUZZ_CHECK(Sum(Product(models[q], divisor), models[rest]) == dividend);
    } else if (TakeWork(32 * Count(dividend), divisor)) {
      FUZZ_CHECK(models[rest] == Remainder(dividend, divisor));
    }
  }

  void ShiftLeft(int bits) {
    if (BitsOf(a) > kMostBits) return;
    const bool shortEnough = bits >= 0 && bits < kMostBits;
    const Words shifted = shortEnough ? ShiftedLeft(models[a], bits) : Words();
    const bool done = TBigInt::Shl(numbers[r], numbers[a], bits);
    if (bits >= 0) return Became(done, shifted);
    FUZZ_CHECK(!done);
  }

  void AdjustBuffer(int words, bool keep) {
    const bool grows = words > numbers[r].GetCapacity();
    const bool done = numbers[r].AdjustBuffer(words, keep);
    if (!done) {
      FUZZ_CHECK(words < 0 || words > kMostBits || memory.Refused());
      return;
    }
    FUZZ_CHECK(words >= 0 && !memory.Refused() && numbers[r].GetLength() == words);
    const Words now = WordsOf(numbers[r]);
    Words expected = keep ? models[r] : Words();
    // Words that the number did not use may hold anything.
    if (keep && !grows && words > Count(expected)) {
      FUZZ_CHECK(std::equal(expected.begin(), expected.end(), now.begin()));
      expected = now;
    }
    expected.resize(static_cast<size_t>(words));
    FUZZ_CHECK(now == expected);
    numbers[r].FixLength();
    models[r] = Trimmed(expected);
  }

  // Right with up to 3 bytes to spare. For every four of them a word is missing at the top, and as
  // many bytes are not written at the end.
  void Dump(int size) {
    static kest_fuzz::Guarded<unsigned char, 64> room;
    if (size > 64) return;
    const Bytes value = BigEndian(models[a]);
    const size_t there = static_cast<size_t>(std::max(size, 0));
    const bool fits = size >= 0 && value.size() <= there;
    Bytes expected(there, 0xEE);
    if (fits) {
      const size_t spare = there - value.size(), missing = std::min(spare / 4 * 4, value.size());
      std::fill_n(expected.data(), spare, static_cast<unsigned char>(0));
      std::copy_n(value.data() + missing, value.size() - missing, expected.data() + spare);
    }
    unsigned char* buffer = room.Take(there);
    memset(buffer, 0xEE, there);
    FUZZ_CHECK(numbers[a].Dump(buffer, size) == (fits ? static_cast<int>(value.size()) : 0));
    FUZZ_CHECK(std::equal(expected.begin(), expected.end(), buffer));
  }

  static void WordCalls(StepInput& in) {
    const unsigned int x = in.Word(), y = in.Word(), d = in.Word();
    unsigned int high = 0;
    const unsigned int low = TBigInt::WordMul(high, x, y);
    FUZZ_CHECK((static_cast<uint64_t>(high) << 32 | low) == static_cast<uint64_t>(x) * y);
    const uint64_t both = static_cast<uint64_t>(y) << 32 | x;
    FUZZ_CHECK(TBigInt::WordDiv(x, y, d) == (d != 0 ? static_cast<unsigned int>(both / d) : 0));
    const int bits = TBigInt::WordBits(x);
    FUZZ_CHECK(bits >= 0 && bits <= 32 && static_cast<uint64_t>(x) >> bits == 0);
    FUZZ_CHECK(x == 0 ? bits == 0 : x >> (bits - 1) == 1);
  }

  Memory& memory;
  TBigInt numbers[4];
  Words models[4];
  int r = 0, a = 0, b = 0, m = 0;  // the result and the operands of a step
  long long workLeft = 20000;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return kest_fuzz::RunSteps<Numbers>(data, size, 24);
}
