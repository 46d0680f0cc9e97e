// Products, quotients and powers of TBigInt against a plain model, at lengths around those where
// routines for vectors change what they do, with operands that make the most carries.

#include <algorithm>

#include "crypto/big_int_checks.h"

namespace {

using namespace kest_test;

using Wide = unsigned long long;

Words Trimmed(Words a) {
  while (!a.empty() && a.back() == 0) a.pop_back();
  return a;
}

// a * b + c, as on paper.
Words Model(const Words& a, const Words& b, const Words& c = {}) {
  Words r(std::max(a.size() + b.size(), c.size()) + 1);
  std::copy(c.begin(), c.end(), r.begin());
  for (size_t i = 0; i < a.size(); ++i) {
    unsigned int* word = &r[i];
    Wide carry = 0;
    for (const unsigned int* p = b.data(); p != b.data() + b.size(); ++p) {
      carry += Wide{a[i]} * *p + *word;
      *word++ = static_cast<unsigned int>(carry);
      carry >>= 32;
    }
    for (; carry != 0; carry >>= 32) {
      carry += *word;
      *word++ = static_cast<unsigned int>(carry);
    }
  }
  return Trimmed(r);
}

// a mod m, bit by bit. m has no zero at the top.
Words ModelRemainder(const Words& a, const Words& m) {
  const size_t count = m.size();
  Words remainder(count + 1);
  unsigned int* const r = remainder.data();
  for (size_t bit = 32 * a.size(); bit-- > 0;) {
    for (size_t i = count; i > 0; --i) r[i] = r[i] << 1 | r[i - 1] >> 31;
    r[0] = r[0] << 1 | (a[bit / 32] >> (bit % 32) & 1);
    size_t top = count;
    while (r[count] == 0 && top > 0 && r[top - 1] == m[top - 1]) --top;
    if (r[count] == 0 && top > 0 && r[top - 1] < m[top - 1]) continue;
    Wide borrow = 0;
    for (size_t i = 0; i < count; ++i) {
      const Wide difference = Wide{r[i]} - m[i] - borrow;
      r[i] = static_cast<unsigned int>(difference);
      borrow = difference >> 63;
    }
    r[count] = 0;
  }
  return Trimmed(remainder);
}

Words ModelPower(const Words& base, Wide exp, const Words& m) {
  Words power = {1};
  for (int bit = 63; bit >= 0; --bit) {
    if (power != Words{1}) power = ModelRemainder(Model(power, power), m);
    if ((exp >> bit & 1) != 0) power = ModelRemainder(Model(power, base), m);
  }
  return power;
}

enum EKind { kOnes, kTopBit, kTopAndBottomBit, kOnesThenZeros, kEdges, kRandom, kKinds };

// count words, the top one not 0.
Words Operand(Random& random, int kind, size_t count) {
  Words words(count);
  for (size_t i = 0; i < count; ++i) {
    if (kind == kOnes || (kind == kOnesThenZeros && i >= count / 2)) words[i] = 0xFFFFFFFF;
    if (kind == kEdges) words[i] = random.Between(0, 1) != 0 ? 0xFFFFFFFF : 0;
    if (kind == kRandom) words[i] = random.Next();
  }
  if (kind == kTopAndBottomBit) words.front() |= 1;
  if (words.back() == 0) words.back() = kind == kRandom ? 1 : 0x80000000;
  return words;
}

// All short lengths, and those around columns of 13 words, blocks of 64 and of 104, around the
// longest divisor that is divided by in vectors, and beyond.
std::vector<size_t> Lengths() {
  std::vector<size_t> lengths;
  for (size_t n = 1; n <= 42; ++n) lengths.push_back(n);
  for (size_t n :
       {51u, 52u, 53u, 64u, 65u, 79u, 80u, 103u, 104u, 105u, 165u, 166u, 167u, 208u, 209u}) {
    lengths.push_back(n);
  }
  return lengths;
}

TEST(BigIntLevels, ProductsAreThoseOfTheModel) {
  Random random;
  SCOPED_TRACE(random.Seed());
  TBigInt r;
  for (const size_t n : Lengths()) {
    for (const size_t more : {size_t{0}, size_t{1}, size_t{12}, size_t{13}, size_t{104}, n}) {
      for (int kind = 0; kind < kKinds; ++kind) {
        const Words a = Operand(random, kind, n);
        const Words b = Operand(random, random.Between(0, kKinds - 1), n + more);
        const Words expected = Model(a, b);
        ASSERT_TRUE(TBigInt::Mul(r, Big(a), Big(b)));
        ASSERT_EQ(expected, WordsOf(r)) << n << '+' << more << ' ' << kind;
        ASSERT_TRUE(TBigInt::Mul(r, Big(b), Big(a)));
        ASSERT_EQ(expected, WordsOf(r)) << n << '+' << more << ' ' << kind;
      }
    }
    const Words a = Operand(random, kOnes, n);
    ASSERT_TRUE(TBigInt::Mul(r, Big(a), Big(a)));
    ASSERT_EQ(Model(a, a), WordsOf(r)) << n;
  }
}

// The dividend is made of the quotient and the remainder that are to come out.
TEST(BigIntLevels, QuotientsAndRemaindersAreWhatTheDividendIsMadeOf) {
  Random random;
  SCOPED_TRACE(random.Seed());
  TBigInt q, rem;
  for (const size_t n : Lengths()) {
    for (const size_t length : {size_t{0}, size_t{1}, size_t{2}, size_t{3}, n, 2 * n + 1}) {
      for (int kind = 0; kind < kKinds; ++kind) {
        Words d = Operand(random, kind, n);
        if (random.Between(0, 2) == 0) d.back() = std::max(d.back() >> random.Between(0, 31), 1u);
        Words quotient;
        if (length != 0) quotient = Operand(random, random.Between(0, kKinds - 1), length);
        Words less = d;
        for (size_t i = 0; less[i]-- == 0;) ++i;
        Words small = Operand(random, kEdges, n);
        small.back() = 0;
        for (const Words& remainder : {Words(), Words{1}, less, small}) {
          if (n == 1 && !remainder.empty() && remainder[0] >= d[0]) continue;
          const Words dividend = Model(d, quotient, remainder);
          ASSERT_TRUE(TBigInt::Div(q, rem, Big(dividend), Big(d)));
          ASSERT_EQ(quotient, WordsOf(q)) << n << '*' << length << ' ' << kind;
          ASSERT_EQ(Trimmed(remainder), WordsOf(rem)) << n << '*' << length << ' ' << kind;
        }
      }
    }
  }
}

TEST(BigIntLevels, QuotientsOfRandomNumbersAreWhole) {
  Random random;
  SCOPED_TRACE(random.Seed());
  TBigInt q, rem;
  for (int i = 0; i < Random::Cases(2000); ++i) {
    const Words d =
        Operand(random, random.Between(0, kKinds - 1), static_cast<size_t>(random.Between(1, 40)));
    const Words a =
        Operand(random, random.Between(0, kKinds - 1), static_cast<size_t>(random.Between(1, 100)));
    ASSERT_TRUE(TBigInt::Div(q, rem, Big(a), Big(d)));
    ASSERT_LT(TBigInt::Cmp(rem, Big(d)), 0);
    ASSERT_EQ(a, Model(WordsOf(q), d, WordsOf(rem))) << a.size() << " / " << d.size();
  }
}

void PowersAreThoseOfTheModel(Words base, Wide exp, const Words& m) {
  TBigInt r;
  const Words exponent = {static_cast<unsigned int>(exp), static_cast<unsigned int>(exp >> 32)};
  ASSERT_TRUE(TBigInt::ExpMod(r, Big(base), Big(exponent), Big(m)));
  ASSERT_EQ(ModelPower(base, exp, m), WordsOf(r))
      << Shown(Big(base)) << '^' << exp << " mod " << Shown(Big(m));
}

TEST(BigIntLevels, PowersAreThoseOfTheModelAtEveryLength) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (size_t n = 1; n <= 80; n += n < 42 ? 1 : 19) {
    for (int kind = 0; kind < kKinds; ++kind) {
      Words m = Operand(random, kind, n);
      if (kind != kTopBit) m.front() |= 1;
      PowersAreThoseOfTheModel(Operand(random, kind, n), 3, m);
      const size_t other = n < 3 || kind % 2 == 0 ? n + 2 : n - 2;
      PowersAreThoseOfTheModel(Operand(random, kOnes, other), 2, m);
      if (n <= 12) PowersAreThoseOfTheModel(Operand(random, kRandom, n), 65537, m);
    }
  }
}

// One bit more at a time: so many limbs, columns and words as a residue needs.
TEST(BigIntLevels, PowersAreThoseOfTheModelForModuliOfEveryWidth) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (size_t bits = 2; bits <= 450; ++bits) {
    Words ones((bits + 31) / 32, 0xFFFFFFFF), sparse(ones.size());
    ones.back() >>= 32 * ones.size() - bits;
    sparse.back() |= 1u << ((bits - 1) % 32);
    sparse.front() |= 1;
    const Words base = Operand(random, kRandom, ones.size());
    PowersAreThoseOfTheModel(base, 5, ones);
    PowersAreThoseOfTheModel(base, 6, sparse);
  }
}

// Every digit of a window, and windows that end at the lowest bit or do not.
TEST(BigIntLevels, PowersAreThoseOfTheModelForExponentsOfEveryKind) {
  Random random;
  SCOPED_TRACE(random.Seed());
  const Words m = {0xFFFFFFFB, 0xFFFFFFFF, 0x12345678, 0xFFFFFFFF, 0x80000001};
  const Words base = Operand(random, kRandom, 5);
  for (Wide exp = 1; exp <= 130; ++exp) PowersAreThoseOfTheModel(base, exp, m);
  // base^(low + high * 2^64) = base^low * (base^(2^64))^high
  Words up = base;
  for (int i = 0; i < 64; ++i) up = ModelRemainder(Model(up, up), m);
  for (int i = 0; i < 150; ++i) {
    Words exp = RandomWords(random, 3);
    exp.resize(3);
    exp.push_back(i % 3 == 0 ? 0 : 1u << random.Between(0, 31));
    const Words low = ModelPower(base, Wide{exp[1]} << 32 | exp[0], m);
    const Words high = ModelPower(up, Wide{exp[3]} << 32 | exp[2], m);
    TBigInt r;
    ASSERT_TRUE(TBigInt::ExpMod(r, Big(base), Big(exp), Big(m)));
    ASSERT_EQ(ModelRemainder(Model(low, high), m), WordsOf(r)) << Shown(Big(exp));
  }
}

// So many limbs that their products have to be carried on the way. The square is checked by a
// division in words, which is how a divisor of that length is divided by.
TEST(BigIntLevels, PowersModuloLongNumbersAreProductsAndRemainders) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (const size_t n : {200u, 1000u, 4700u}) {
    Words odd = Operand(random, kRandom, n);
    odd.front() |= 1;
    const TBigInt m = Big(odd), base = Big(Operand(random, kRandom, n));
    TBigInt power, square;
    ASSERT_TRUE(TBigInt::MulMod(square, base, base, m));
    ASSERT_TRUE(TBigInt::ExpMod(power, base, 2, m));
    ASSERT_EQ(WordsOf(square), WordsOf(power)) << n;
  }
}

// Nothing but ones in the limbs, or in all but some: sums that are nothing but ones in turn, which
// a carry has to pass.
TEST(BigIntLevels, CarriesGoThroughEveryLimb) {
  TBigInt r;
  for (size_t bit = 0; bit < 32 * 40; ++bit) {
    Words ones(40, 0xFFFFFFFF), power(bit / 32 + 1);
    power.back() = 1u << (bit % 32);
    const Words with = Model(ones, {1}, power);  // 2^1280 - 1 + 2^bit
    ASSERT_TRUE(TBigInt::Mul(r, Big(with), Big(ones)));
    ASSERT_EQ(Model(with, ones), WordsOf(r)) << bit;
    ASSERT_TRUE(TBigInt::Mul(r, Big(power), Big(ones)));
    ASSERT_EQ(Model(power, ones), WordsOf(r)) << bit;
  }
}

}  // namespace
