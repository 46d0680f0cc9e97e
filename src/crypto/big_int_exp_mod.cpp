// Modular exponentiation, from the top bits of the exponent down, a window of bits at a time.
//
// With an odd modulus, numbers are kept as Montgomery's residues, x * R mod m for a power R of 2,
// whose products are reduced without a division (Montgomery, Modular Multiplication Without Trial
// Division, 1985): in limbs where the processor has vectors, else in words, R being
// 2^(32 * words). With an even modulus they are kept as they are, and divided.

#include "crypto/big_int_exp_mod.h"

#include <string.h>
#include <algorithm>

#include "crypto/big_int_residues.h"
#include "crypto/big_int_words.h"

namespace KEST {

namespace {

// Exponents of more words than this are worth a table of powers.
constexpr int kShortExponent = 2;
// Bits in a window.
constexpr int kNarrow = 1;
constexpr int kWide = 4;
// Moduli of fewer words are multiplied in words, for limbs would be mostly padding; and so are
// those whose bits can hardly be counted.
constexpr int kFewestWordsInLimbs = 4;
constexpr int kMostWordsInLimbs = 1 << 20;

// Powers that a table holds: the odd ones below 2^width.
int TableSize(int width) { return 1 << (width - 1); }

// -1 / m mod 2^64, for an odd m. m is its own inverse mod 8, and each step doubles the bits.
DoubleWord NegativeInverse(DoubleWord m) {
  DoubleWord inverse = m;
  for (int bits = 3; bits < 2 * kWordBits; bits *= 2) inverse *= 2 - m * inverse;
  return 0 - inverse;
}

// What a number is divided by.
class Modulus {
 public:
  // The words are not empty, and the top one not 0.
  Modulus(const Word* words, int length)
      : m(words), count(length), shift(kWordBits - TBigInt::WordBits(words[length - 1])) {}

  const Word* Words() const { return m; }
  int Count() const { return count; }
  int Bits() const { return count * kWordBits - shift; }
  bool IsOdd() const { return m[0] % 2 != 0; }
  DoubleWord LowestTwo() const {
    return static_cast<DoubleWord>(count > 1 ? m[1] : 0) << kWordBits | m[0];
  }

  // Makes what Divide wants, of as many words.
  void MakeDivisor(Word* divisor) const { ShiftWordsLeft(divisor, m, count, shift); }

  // r = the lowest used words of t, mod m. t has room for a word more, and for those of m.
  void Divide(Word* r, Word* t, int used, const Word* divisor) const {
    t[used] = ShiftWordsLeft(t, t, used, shift);
    if (used < count) std::fill(t + used + 1, t + count, 0u);
    if (used >= count) DivideWords(nullptr, t, used + 1, divisor, count);
    ShiftWordsRight(r, t, count, shift);
  }

 private:
  const Word* m;
  int count;
  int shift;  // brings the top bit to the top of its word
};

// A residue in words, with a table of others.
class WordResidue {
 public:
  // No number that enters is longer than longest, which is the length of m or more.
  WordResidue(const Modulus& modulus, int longest, int tableSize)
      : m(modulus),
        count(modulus.Count()),
        inverse(modulus.IsOdd() ? static_cast<Word>(NegativeInverse(modulus.LowestTwo())) : 0),
        block(2 * static_cast<DoubleWord>(count) + static_cast<DoubleWord>(longest) + 1),
        residues(static_cast<DoubleWord>(count) * static_cast<DoubleWord>(tableSize + 1)) {
    if (IsReady()) m.MakeDivisor(Divisor());
  }

  // False when there is no memory.
  bool IsReady() const { return block.Get() != nullptr && residues.Get() != nullptr; }

  // Becomes the residue of x.
  void Enter(const Word* x, int xCount) {
    const int offset = m.IsOdd() ? count : 0;
    std::fill_n(Scratch(), offset, 0u);
    std::copy_n(x, xCount, Scratch() + offset);
    m.Divide(R(), Scratch(), offset + xCount, Divisor());
  }

  // The number whose residue this is, as long as m.
  const Word* Leave() {
    if (!m.IsOdd()) return R();
    std::copy_n(R(), count, Scratch());
    std::fill_n(Scratch() + count, count, 0u);
    Reduce();
    return R();
  }

  void Keep(int place) { std::copy_n(R(), count, Kept(place)); }
  void Take(int place) { std::copy_n(Kept(place), count, R()); }
  void Square() { MultiplyBy(R()); }
  void MultiplyByKept(int place) { MultiplyBy(Kept(place)); }

 private:
  Word* Divisor() const { return block.Get(); }
  // Room for a product or a number that enters, count words below it, and a word above.
  Word* Scratch() const { return block.Get() + count; }
  Word* R() const { return residues.Get(); }
  Word* Kept(int place) const {
    return R() + static_cast<size_t>(place + 1) * static_cast<size_t>(count);
  }

  void MultiplyBy(const Word* other) {
    MultiplyWords(Scratch(), R(), count, other, count);
    Reduce();
  }

  void Reduce() {
    if (m.IsOdd()) {
      ReduceWithoutDivision();
    } else {
      m.Divide(R(), Scratch(), 2 * count, Divisor());
    }
  }

  // R = Scratch / 2^(32 * count) mod m: multiples of m clear its lower half word by word.
  void ReduceWithoutDivision() {
    Word* t = Scratch();
    DoubleWord carry = 0;
    for (int i = 0; i < count; ++i) {
      carry += static_cast<DoubleWord>(t[i + count]) +
               AddProduct(t + i, m.Words(), count, t[i] * inverse);
      t[i + count] = static_cast<Word>(carry);
      carry >>= kWordBits;
    }
    t += count;
    if (carry != 0 || CompareWords(t, m.Words(), count) >= 0) {
      SubtractWords(t, t, m.Words(), count);
    }
    std::copy_n(t, count, R());
  }

  const Modulus& m;
  int count;  // of the words of m
  Word inverse;
  WorkBlock block;
  WorkBlock residues;
};

// A residue in limbs, with a table of others that are packed; m is odd.
class LimbResidue {
 public:
  // No number that enters is longer than longest, which is the length of m or more.
  LimbResidue(const Modulus& modulus, int longest, int tableSize, const SResidueLevel& residueLevel)
      : m(modulus),
        level(residueLevel),
        r(Shape(modulus.Bits(), residueLevel)),
        block(std::max(ColumnWords(), ScratchWords(longest))),
        kept(static_cast<DoubleWord>(r.words) * static_cast<DoubleWord>(std::max(tableSize, 2))) {
    const size_t misplaced = reinterpret_cast<size_t>(block.Get()) % kResidueAlignment;
    r.columns = reinterpret_cast<unsigned char*>(block.Get()) + (kResidueAlignment - misplaced);
  }

  // False when there is no memory.
  bool IsReady() const { return block.Get() != nullptr && kept.Get() != nullptr; }

  // Becomes the residue of x.
  void Enter(const Word* x, int xCount) {
    const int factor = 2 * level.limbBits * r.steps;  // as a power of 2
    const int words = factor / kWordBits;
    Word* t = Scratch();
    m.MakeDivisor(Divisor());
    std::fill_n(t, words, 0u);
    t[words + xCount] = ShiftWordsLeft(t + words, x, xCount, factor % kWordBits);
    m.Divide(Kept(0), t, words + xCount + 1, Divisor());
    std::fill(Kept(0) + m.Count(), Kept(1), 0u);
    MakeFactor(Kept(1));
    level.setFactor(r, Kept(1), m.Count());
    Take(0);
  }

  // The number whose residue this is, as long as m; the residue is no more.
  const Word* Leave() {
    std::fill_n(Kept(1), r.words, 0u);
    *Kept(1) = 1;
    MultiplyByKept(1);
    Keep(0);
    std::copy_n(Kept(0), r.words, Scratch());
    m.MakeDivisor(Divisor());
    m.Divide(Kept(0), Scratch(), r.words, Divisor());
    block.Free();  // before there is a result
    return Kept(0);
  }

  void Keep(int place) { level.pack(Kept(place), r); }
  void Take(int place) { level.unpack(r, Kept(place)); }
  void Square() { level.multiply(r, nullptr); }
  void MultiplyByKept(int place) { level.multiply(r, Kept(place)); }

 private:
  // What a modulus of so many bits needs.
  static SResidue Shape(int bits, const SResidueLevel& level) {
    const int stepBits = 2 * level.limbBits;
    SResidue shape;
    shape.columns = nullptr;
    shape.steps = (bits + stepBits + 2) / stepBits + 1;
    shape.columnCount = (2 * shape.steps + 1) / level.columnLimbs + 1;
    shape.words = (bits + stepBits) / kWordBits + 1;
    return shape;
  }

  DoubleWord ColumnWords() const {
    const DoubleWord columns = static_cast<DoubleWord>(r.columnCount);
    const DoubleWord spare = 2;  // for the alignment, and what follows the columns
    return (columns * static_cast<DoubleWord>(level.columnBytes) + spare * kResidueAlignment) /
           kWordBytes;
  }

  // For the divisor, and a number that enters or leaves.
  DoubleWord ScratchWords(int longest) const {
    return static_cast<DoubleWord>(m.Count()) + static_cast<DoubleWord>(longest) +
           static_cast<DoubleWord>(2 * level.limbBits * r.steps / kWordBits) + 2;
  }

  // In the block, while there is nothing in the columns.
  Word* Divisor() const { return block.Get(); }
  Word* Scratch() const { return block.Get() + m.Count(); }
  Word* Kept(int place) const {
    return kept.Get() + static_cast<size_t>(place) * static_cast<size_t>(r.words);
  }

  // f = 2^(-2 * limbBits) mod m: twice, a multiple of m clears the lowest limb, which then goes.
  void MakeFactor(Word* f) const {
    const int bits = level.limbBits, count = m.Count();
    const DoubleWord mask = (1ULL << bits) - 1;
    const DoubleWord inverse = NegativeInverse(m.LowestTwo());
    Word* t = Scratch();
    std::fill_n(t, count + 3, 0u);
    t[0] = 1;
    for (int limb = 0; limb < 2; ++limb) {
      const DoubleWord multiple =
          (static_cast<DoubleWord>(t[1]) << kWordBits | t[0]) * inverse & mask;
      DoubleWord carry = 0;
      for (int i = 0; i < 2; ++i) {
        const Word factor = static_cast<Word>(multiple >> (i * kWordBits));
        carry += t[i + count];
        carry += AddProduct(t + i, m.Words(), count, factor);
        t[i + count] = static_cast<Word>(carry);
        carry >>= kWordBits;
      }
      t[count + 2] = static_cast<Word>(carry);
      const int words = bits / kWordBits;
      std::fill(std::copy(t + words, t + count + 3, t), t + count + 3, 0u);
      ShiftWordsRight(t, t, count + 3, bits % kWordBits);
    }
    std::copy_n(t, count, f);
  }

  const Modulus& m;
  const SResidueLevel& level;
  SResidue r;
  WorkBlock block;
  WorkBlock kept;
};

bool IsSet(const Word* exp, int bit) {
  return (exp[bit / kWordBits] >> (bit % kWordBits) & 1) != 0;
}

// r = r^exp, exp not being 0, in windows that begin and end with a set bit.
template <typename Residue>
void Raise(Residue& r, const Word* exp, int expCount, int width) {
  const int last = TableSize(width) - 1;
  r.Keep(0);
  if (last != 0) {
    r.Square();
    r.Keep(last);
    r.Take(0);
  }
  for (int n = 1; n <= last; ++n) {  // the last place holds the square until the end
    r.MultiplyByKept(last);
    r.Keep(n);
  }

  bool started = false;  // until then r would be 1
  for (int bit = expCount * kWordBits - 1; bit >= 0;) {
    if (!IsSet(exp, bit)) {
      if (started) r.Square();
      --bit;
      continue;
    }
    int end = std::max(bit - width + 1, 0);
    while (!IsSet(exp, end)) ++end;
    int digit = 0;
    for (; bit >= end; --bit) {
      if (started) r.Square();
      digit = 2 * digit + (IsSet(exp, bit) ? 1 : 0);
    }
    if (started) r.MultiplyByKept(digit / 2);
    if (!started) r.Take(digit / 2);
    started = true;
  }
}

template <typename Residue>
bool TryRaise(TBigInt& r, Residue&& residue, const TBigInt& base, const Word* exp, int expCount,
              int width, int count) {
  if (!residue.IsReady()) return false;
  residue.Enter(base.GetWords(), base.GetLength());
  Raise(residue, exp, expCount, width);
  return StoreWords(r, residue.Leave(), count);
}

const SResidueLevel* NoResidues() { return nullptr; }

constexpr SVersions<const SResidueLevel*()> kResidueLevel = {NoResidues, ResiduesSse2, nullptr,
                                                             ResiduesAvx2, ResiduesAvx512};
constexpr TDispatch<kResidueLevel> ResidueLevel;

}  // namespace

bool TryExpMod(TBigInt& r, const TBigInt& base, const TBigInt& exp, const TBigInt& m) {
  const int count = SignificantWords(m.GetWords(), m.GetLength());
  const int expCount = SignificantWords(exp.GetWords(), exp.GetLength());
  const Word one = 1;
  if (expCount == 0 || count == 0) return StoreWords(r, &one, 1);

  const Modulus modulus(m.GetWords(), count);
  const int width = expCount <= kShortExponent ? kNarrow : kWide;
  const int longest = std::max(base.GetLength(), count);
  const SResidueLevel* level = ResidueLevel();
  const bool fitsLimbs = count >= kFewestWordsInLimbs && count <= kMostWordsInLimbs;
  if (level == nullptr || !modulus.IsOdd() || !fitsLimbs) {
    return TryRaise(r, WordResidue(modulus, longest, TableSize(width)), base, exp.GetWords(),
                    expCount, width, count);
  }
  return TryRaise(r, LimbResidue(modulus, longest, TableSize(width), *level), base, exp.GetWords(),
                  expCount, width, count);
}

// Without memory r is 0, so that no caller takes an old value for the result.
bool TBigInt::ExpMod(TBigInt& r, const TBigInt& base, const TBigInt& exp, const TBigInt& m) {
  if (!TryExpMod(r, base, exp, m)) r.AdjustBuffer(0, false);
  return true;
}

}  // namespace KEST
