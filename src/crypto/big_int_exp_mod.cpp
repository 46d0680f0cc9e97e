// Modular exponentiation, from the top bits of the exponent down, a window of bits at a time.
//
// With an odd modulus, numbers are kept as Montgomery's residues, x * 2^(32 * words) mod m, whose
// products are reduced without a division (Montgomery, Modular Multiplication Without Trial
// Division, 1985). With an even one they are kept as they are, and divided.

#include "crypto/big_int_exp_mod.h"

#include <string.h>
#include <algorithm>

#include "crypto/big_int_words.h"

namespace KEST {

namespace {

// Exponents of more words than this are worth a table of powers.
constexpr int kShortExponent = 2;
// Bits in a window; both divide a word.
constexpr int kNarrow = 1;
constexpr int kWide = 4;

// -1 / m mod 2^32, for an odd m. m is its own inverse mod 8, and each step doubles the bits.
Word NegativeInverse(Word m) {
  Word inverse = m;
  for (int bits = 3; bits < kWordBits; bits *= 2) inverse *= 2 - m * inverse;
  return 0 - inverse;
}

// Multiplies modulo m. Its residues are arrays as long as m.
class Modulus {
 public:
  // words is not empty, and its top word not 0. No number that enters is longer than longest,
  // which is length or more.
  Modulus(const Word* words, int length, int longest)
      : m(words),
        count(length),
        inverse(words[0] % 2 != 0 ? NegativeInverse(words[0]) : 0),
        shift(kWordBits - TBigInt::WordBits(words[length - 1])),
        block(2 * static_cast<DoubleWord>(length) + static_cast<DoubleWord>(longest) + 1) {
    if (IsReady()) ShiftWordsLeft(Divisor(), m, count, shift);
  }

  // False when there is no memory.
  bool IsReady() const { return block.Get() != nullptr; }

  // r = the residue of x.
  void Enter(Word* r, const Word* x, int xCount) const {
    const int offset = IsOdd() ? count : 0;
    std::fill_n(Scratch(), offset, 0u);
    std::copy_n(x, xCount, Scratch() + offset);
    Divide(r, offset + xCount);
  }

  // r = a * b. r may be a or b, and a may be b.
  void Multiply(Word* r, const Word* a, const Word* b) const {
    MultiplyWords(Scratch(), a, count, b, count);
    Reduce(r);
  }

  // r = the number whose residue it is.
  void Leave(Word* r) const {
    if (!IsOdd()) return;
    std::copy_n(r, count, Scratch());
    std::fill_n(Scratch() + count, count, 0u);
    Reduce(r);
  }

 private:
  bool IsOdd() const { return inverse != 0; }
  Word* Divisor() const { return block.Get(); }
  // Room for a product or a number that enters, count words below it, and a word above.
  Word* Scratch() const { return block.Get() + count; }

  void Reduce(Word* r) const {
    if (IsOdd()) {
      ReduceWithoutDivision(r);
    } else {
      Divide(r, 2 * count);
    }
  }

  // r = Scratch / 2^(32 * count) mod m: multiples of m clear its lower half word by word.
  void ReduceWithoutDivision(Word* r) const {
    Word* t = Scratch();
    DoubleWord carry = 0;
    for (int i = 0; i < count; ++i) {
      carry += static_cast<DoubleWord>(t[i + count]) + AddProduct(t + i, m, count, t[i] * inverse);
      t[i + count] = static_cast<Word>(carry);
      carry >>= kWordBits;
    }
    t += count;
    if (carry != 0 || CompareWords(t, m, count) >= 0) SubtractWords(t, t, m, count);
    std::copy_n(t, count, r);
  }

  // r = the lowest used words of Scratch mod m.
  void Divide(Word* r, int used) const {
    Word* t = Scratch();
    t[used] = ShiftWordsLeft(t, t, used, shift);
    if (used < count) std::fill(t + used + 1, t + count, 0u);
    if (used >= count) DivideWords(nullptr, t, used + 1, Divisor(), count);
    ShiftWordsRight(r, t, count, shift);
  }

  const Word* m;
  int count;  // of the words of m
  Word inverse;
  int shift;  // brings the top bit of m to the top of its word
  WorkBlock block;
};

// r = base^exp, exp not being 0. powers, which has room for 2^width residues, holds base^1 and
// gets the others; its first place is r.
void Raise(const Modulus& modulus, Word* powers, int count, const Word* exp, int expCount,
           int width) {
  const unsigned int mask = (1u << width) - 1;
  const auto power = [=](unsigned int n) {
    return powers + static_cast<size_t>(n) * static_cast<size_t>(count);
  };
  for (unsigned int n = 2; n <= mask; ++n) modulus.Multiply(power(n), power(n - 1), power(1));

  Word* r = powers;
  bool started = false;  // until then r would be 1
  for (int i = expCount - 1; i >= 0; --i) {
    for (int bit = kWordBits - width; bit >= 0; bit -= width) {
      for (int k = 0; started && k < width; ++k) modulus.Multiply(r, r, r);
      const unsigned int digit = exp[i] >> bit & mask;
      if (digit == 0) continue;
      if (started) modulus.Multiply(r, r, power(digit));
      if (!started) std::copy_n(power(digit), count, r);
      started = true;
    }
  }
}

}  // namespace

bool TryExpMod(TBigInt& r, const TBigInt& base, const TBigInt& exp, const TBigInt& m) {
  const int count = SignificantWords(m.GetWords(), m.GetLength());
  const int expCount = SignificantWords(exp.GetWords(), exp.GetLength());
  const Word one = 1;
  if (expCount == 0 || count == 0) return StoreWords(r, &one, 1);

  const int width = expCount <= kShortExponent ? kNarrow : kWide;
  const Modulus modulus(m.GetWords(), count, std::max(base.GetLength(), count));
  const WorkBlock powers(static_cast<DoubleWord>(count) << width);
  if (!modulus.IsReady() || powers.Get() == nullptr) return false;
  modulus.Enter(powers.Get() + count, base.GetWords(), base.GetLength());
  Raise(modulus, powers.Get(), count, exp.GetWords(), expCount, width);
  modulus.Leave(powers.Get());
  return StoreWords(r, powers.Get(), count);
}

// Without memory r is 0, so that no caller takes an old value for the result.
bool TBigInt::ExpMod(TBigInt& r, const TBigInt& base, const TBigInt& exp, const TBigInt& m) {
  if (!TryExpMod(r, base, exp, m)) r.AdjustBuffer(0, false);
  return true;
}

}  // namespace KEST
