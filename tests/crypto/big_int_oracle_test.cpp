// TBigInt against GMP, numbers of up to 4,096 bits.

#include <gmp.h>

#include "crypto/big_int_checks.h"

namespace {

using namespace kest_test;

constexpr int kMostWords = 128;

// A GMP number that frees itself.
class Number {
 public:
  Number() { mpz_init(value); }
  explicit Number(const TBigInt& other) : Number() {
    mpz_import(value, static_cast<size_t>(other.GetLength()), -1, sizeof(unsigned int), 0, 0,
               other.GetWords());
  }
  ~Number() { mpz_clear(value); }
  Number(const Number&) = delete;
  Number& operator=(const Number&) = delete;

  operator mpz_ptr() { return value; }
  bool IsZero() const { return mpz_sgn(value) == 0; }
  std::string Shown() const {
    std::string text(mpz_sizeinbase(value, 16) + 2, '\0');
    mpz_get_str(text.data(), -16, value);  // upper case
    return text.c_str();
  }

 private:
  mpz_t value;
};

TBigInt RandomBig(Random& random, int most) {
  const int length = random.Between(0, 3) == 0 ? most : random.Between(1, 20);
  return Big(RandomWords(random, length));
}

TEST(BigIntOracle, SumsDifferencesAndProductsAreThoseOfGmp) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int i = 0; i < Random::Cases(); ++i) {
    const TBigInt a = RandomBig(random, kMostWords), b = RandomBig(random, kMostWords);
    Number gmpA(a), gmpB(b), expected;
    TBigInt r;
    mpz_add(expected, gmpA, gmpB);
    ASSERT_TRUE(TBigInt::Add(r, a, b));
    ASSERT_EQ(expected.Shown(), Shown(r)) << Shown(a) << " + " << Shown(b);
    mpz_mul(expected, gmpA, gmpB);
    ASSERT_TRUE(TBigInt::Mul(r, a, b));
    ASSERT_EQ(expected.Shown(), Shown(r)) << Shown(a) << " * " << Shown(b);
    const int order = mpz_cmp(gmpA, gmpB), ours = TBigInt::Cmp(a, b);
    ASSERT_EQ(order > 0, ours > 0);
    ASSERT_EQ(order < 0, ours < 0);
    mpz_sub(expected, order < 0 ? gmpB : gmpA, order < 0 ? gmpA : gmpB);
    ASSERT_TRUE(TBigInt::Sub(r, order < 0 ? b : a, order < 0 ? a : b));
    ASSERT_EQ(expected.Shown(), Shown(r)) << Shown(a) << " - " << Shown(b);
  }
}

TEST(BigIntOracle, QuotientsAndRemaindersAreThoseOfGmp) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int i = 0; i < Random::Cases(); ++i) {
    const TBigInt a = RandomBig(random, kMostWords), b = RandomBig(random, kMostWords / 2);
    const TBigInt d = RandomBig(random, kMostWords / 2);
    Number gmpA(a), gmpB(b), gmpD(d), quotient, remainder;
    TBigInt q, rem;
    ASSERT_EQ(!gmpD.IsZero(), TBigInt::Div(q, rem, a, d));
    if (gmpD.IsZero()) continue;
    mpz_fdiv_qr(quotient, remainder, gmpA, gmpD);
    ASSERT_EQ(quotient.Shown(), Shown(q)) << Shown(a) << " / " << Shown(d);
    ASSERT_EQ(remainder.Shown(), Shown(rem)) << Shown(a) << " / " << Shown(d);
    mpz_mul(quotient, gmpA, gmpB);
    mpz_mod(remainder, quotient, gmpD);
    ASSERT_TRUE(TBigInt::MulMod(rem, a, b, d));
    ASSERT_EQ(remainder.Shown(), Shown(rem)) << Shown(a) << " * " << Shown(b) << " % " << Shown(d);
  }
}

TEST(BigIntOracle, ShiftsAreThoseOfGmp) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int i = 0; i < Random::Cases(); ++i) {
    const TBigInt a = RandomBig(random, kMostWords);
    const int bits = random.Between(0, 4200);
    Number gmpA(a), expected;
    TBigInt r;
    mpz_mul_2exp(expected, gmpA, static_cast<mp_bitcnt_t>(bits));
    ASSERT_TRUE(TBigInt::Shl(r, a, bits));
    ASSERT_EQ(expected.Shown(), Shown(r)) << Shown(a) << " << " << bits;
    mpz_fdiv_q_2exp(expected, gmpA, static_cast<mp_bitcnt_t>(bits));
    ASSERT_TRUE(TBigInt::Shr(r, a, bits));
    ASSERT_EQ(expected.Shown(), Shown(r)) << Shown(a) << " >> " << bits;
  }
}

TEST(BigIntOracle, TextAndBytesAreThoseOfGmp) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int i = 0; i < Random::Cases(); ++i) {
    const std::vector<unsigned char> bytes = random.Bytes(random.Between(0, 4 * kMostWords));
    const TBigInt value(bytes.data(), static_cast<int>(bytes.size()));
    Number expected;
    mpz_import(expected, bytes.size(), 1, 1, 0, 0, bytes.data());
    const std::string text = expected.Shown();
    ASSERT_EQ(std::u16string(text.begin(), text.end()), TextOf(value.ToString()));
    ASSERT_EQ(0, TBigInt::Cmp(value, Big(text)));
    std::vector<unsigned char> dumped(4 * static_cast<size_t>(value.GetLength()));
    ASSERT_EQ(static_cast<int>(dumped.size()),
              value.Dump(dumped.data(), static_cast<int>(dumped.size())));
    ASSERT_EQ(0, TBigInt::Cmp(value, TBigInt(dumped.data(), static_cast<int>(dumped.size()))));
  }
}

void PowersAreThoseOfGmp(int cases, int most) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int i = 0; i < cases; ++i) {
    const TBigInt base = Big(RandomWords(random, most)), exp = Big(RandomWords(random, most));
    const TBigInt m = Big(RandomWords(random, most));
    Number gmpBase(base), gmpExp(exp), gmpM(m), expected;
    if (gmpM.IsZero()) continue;
    TBigInt r;
    ASSERT_TRUE(TBigInt::ExpMod(r, base, exp, m));
    mpz_powm(expected, gmpBase, gmpExp, gmpM);
    if (gmpExp.IsZero()) mpz_set_ui(expected, 1);  // not reduced, even modulo 1
    ASSERT_EQ(expected.Shown(), Shown(r))
        << Shown(base) << "^" << Shown(exp) << " mod " << Shown(m);
  }
}

// Odd and even moduli alike.
TEST(BigIntOracle, PowersAreThoseOfGmp) { PowersAreThoseOfGmp(Random::Cases(), 6); }

// Fewer: the time of one grows with the cube of the length.
TEST(BigIntOracle, LongPowersAreThoseOfGmp) { PowersAreThoseOfGmp(Random::Cases(400), 32); }

TEST(BigIntOracle, PowersOf4096BitsAreThoseOfGmp) { PowersAreThoseOfGmp(8, kMostWords); }

}  // namespace
