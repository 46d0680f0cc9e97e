// Division, in digits of 48 bits. The four bits less than a multiplication takes leave room for
// digits that are a little too small, so that none has to be put right before the next: the
// remainder stays below four times the divisor.

#include <limits.h>
#include <string.h>
#include <algorithm>

#include "crypto/big_int_limbs_avx512.h"
#include "crypto/big_int_words_levels.h"
#include "crypto/wipe.h"

namespace KEST {

namespace {

using Digit = unsigned long long;

constexpr int kDigitBits = 48;
constexpr int kDigitBytes = kDigitBits / 8;
constexpr int kColumnBytes = kColumnLimbs * kDigitBytes;
constexpr __mmask64 kColumnByteMask = (1ULL << kColumnBytes) - 1;
// Longer divisors, and shorter, are divided by in words.
constexpr int kMostColumns = 14;
constexpr int kMostWords = (kMostColumns * kColumnLimbs - 1) * kDigitBits / kWordBits;
constexpr int kFewestWords = 6;
constexpr int kMostDividendWords = INT_MAX / 8;  // whose bytes and half words can be counted
constexpr int kTowardsZero = _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC;

// Divisor and remainder are moved up so that the highest digit of the divisor is in the last lane
// but one. The last holds what the remainder has above that.
struct SColumn {
  Digit remainder[kColumnLimbs];
  // 2^48k - divisor, of as many digits, times 16; and that a lane up. A product with a digit then
  // splits where its upper half belongs one lane up.
  Digit negative[kColumnLimbs];
  Digit negativeUp[kColumnLimbs];
};

struct SDivision {
  alignas(64) SColumn columns[kMostColumns];
  unsigned char bytes[kMostColumns * kColumnBytes];
  Word negative[kMostWords];
};

KEST_FOR_AVX512 inline __m512i Load(const Digit* lanes) { return _mm512_load_si512(lanes); }

KEST_FOR_AVX512 inline __m512i LoadDigits(const unsigned char* bytes) {
  const __m512i each = _mm512_set_epi8(
      63, 63, 47, 46, 45, 44, 43, 42, 63, 63, 41, 40, 39, 38, 37, 36, 63, 63, 35, 34, 33, 32, 31,
      30, 63, 63, 29, 28, 27, 26, 25, 24, 63, 63, 23, 22, 21, 20, 19, 18, 63, 63, 17, 16, 15, 14,
      13, 12, 63, 63, 11, 10, 9, 8, 7, 6, 63, 63, 5, 4, 3, 2, 1, 0);
  return _mm512_permutexvar_epi8(each, _mm512_maskz_loadu_epi8(kColumnByteMask, bytes));
}

KEST_FOR_AVX512 inline void StoreDigits(unsigned char* bytes, __m512i digits) {
  const __m512i each = _mm512_set_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 61, 60, 59,
                                       58, 57, 56, 53, 52, 51, 50, 49, 48, 45, 44, 43, 42, 41, 40,
                                       37, 36, 35, 34, 33, 32, 29, 28, 27, 26, 25, 24, 21, 20, 19,
                                       18, 17, 16, 13, 12, 11, 10, 9, 8, 5, 4, 3, 2, 1, 0);
  _mm512_mask_storeu_epi8(bytes, kColumnByteMask, _mm512_permutexvar_epi8(each, digits));
}

template <int kLane>
KEST_FOR_AVX512 inline __m512d BroadcastLane(__m512d v) {
  return _mm512_permutexvar_pd(_mm512_set1_epi64(kLane), v);
}

KEST_FOR_AVX512 inline __m512d ToDouble(__m512i lanes) {
  return _mm512_cvt_roundepi64_pd(lanes, kTowardsZero);
}

// Weights of the last three lanes in a quotient, of which the divisor's own last column is given.
// What is rounded makes quotients smaller, whatever the host rounds to.
struct SWeights {
  __m512d last, second, third;
};

KEST_FOR_AVX512 inline SWeights WeightsFor(__m512i divisor) {
  constexpr int kUp = _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC;
  const __m512d digits = ToDouble(divisor), unit = _mm512_set1_pd(0x1p48);
  const __m512d third = _mm512_add_round_pd(BroadcastLane<5>(digits), _mm512_set1_pd(1), kUp);
  const __m512d whole = _mm512_fmadd_round_pd(BroadcastLane<6>(digits), unit, third, kUp);
  const __m512d one = _mm512_div_round_pd(_mm512_set1_pd(1), whole, kTowardsZero);
  return {_mm512_mul_pd(_mm512_mul_pd(one, unit), unit), _mm512_mul_pd(one, unit), one};
}

// The quotient of the remainder by the divisor, or up to three less, in every lane.
KEST_FOR_AVX512 inline __m512i Estimate(__m512i lastColumn, const SWeights& weights) {
  const __m512d lanes = ToDouble(lastColumn);
  __m512d sum = _mm512_mul_round_pd(BroadcastLane<5>(lanes), weights.third, kTowardsZero);
  sum = _mm512_fmadd_round_pd(BroadcastLane<6>(lanes), weights.second, sum, kTowardsZero);
  sum = _mm512_fmadd_round_pd(BroadcastLane<7>(lanes), weights.last, sum, kTowardsZero);
  return _mm512_cvtt_roundpd_epi64(sum, _MM_FROUND_NO_EXC);
}

// sum += the column's lanes of digit * negative.
KEST_FOR_AVX512 inline __m512i AddMultiple(__m512i sum, const SColumn& column, __m512i digit) {
  const __m512i zero = _mm512_setzero_si512();
  const __m512i low = _mm512_madd52lo_epu64(zero, digit, Load(column.negative));
  const __m512i high = _mm512_madd52hi_epu64(_mm512_srli_epi64(low, kLimbBits - kDigitBits), digit,
                                             Load(column.negativeUp));
  return _mm512_add_epi64(sum, high);
}

// Takes in the next digit of the dividend and returns one of the quotient. last is the remainder in
// the last column.
KEST_FOR_AVX512 inline Digit Step(SColumn* columns, int count, __m512i& last,
                                  const SWeights& weights, Digit next) {
  const __mmask8 kLastLane = 0x80;
  __m512i before = _mm512_set1_epi64(static_cast<long long>(next));
  const __m512i below = count > 1 ? Load(columns[count - 2].remainder) : before;
  const __m512i leaving = _mm512_maskz_slli_epi64(kLastLane, last, kDigitBits);
  last = _mm512_add_epi64(MoveUp<1>(last, below), leaving);
  const __m512i digit = Estimate(last, weights);
  last = _mm512_mask_sub_epi64(last, kLastLane, last, digit);
  last = AddMultiple(last, columns[count - 1], digit);
  for (int j = 0; j < count - 1; ++j) {
    const __m512i lanes = Load(columns[j].remainder);
    _mm512_store_si512(columns[j].remainder,
                       AddMultiple(MoveUp<1>(lanes, before), columns[j], digit));
    before = lanes;
  }
  Digit value;
  _mm_storel_epi64(reinterpret_cast<__m128i*>(&value), _mm512_castsi512_si128(digit));
  return value;
}

Digit HalfWordAt(const Word* words, int count, int half) {
  if (half < 0 || half >= 2 * count) return 0;
  return words[half / 2] >> (half % 2 * 16) & 0xFFFF;
}

// The digit that begins at a half word; there are zeros below the words and above.
Digit DigitAt(const Word* words, int count, int half) {
  return HalfWordAt(words, count, half) | HalfWordAt(words, count, half + 1) << 16 |
         HalfWordAt(words, count, half + 2) << 32;
}

// q += digit at a half word. Digits overlap, for they have up to 50 bits.
void AddDigit(Word* q, Digit digit, int half) {
  if (digit == 0) return;
  const int shift = half % 2 * 16;
  Word* word = q + half / 2;
  Digit sum = static_cast<Digit>(*word) + static_cast<Word>(digit << shift);
  *word = static_cast<Word>(sum);
  for (Digit carry = (sum >> kWordBits) + (digit >> (kWordBits - shift)); carry != 0;
       carry = sum >> kWordBits) {
    sum = carry + *++word;
    *word = static_cast<Word>(sum);
  }
}

// 2^(32 * count) - v.
void Negate(Word* r, const Word* v, int count) {
  Word carry = 1;
  for (int i = 0; i < count; ++i) {
    r[i] = ~v[i] + carry;
    carry = carry != 0 && r[i] == 0 ? 1 : 0;
  }
}

// Fills the columns and returns the weights. offset is that of the lowest byte of the divisor.
KEST_FOR_AVX512 SWeights SetDivisor(SDivision& division, int count, const Word* v, int vCount,
                                    int offset) {
  const size_t size = static_cast<size_t>(count) * kColumnBytes;
  memset(division.bytes, 0, size);
  memcpy(division.bytes + offset, v, static_cast<size_t>(vCount) * kWordBytes);
  const SWeights weights = WeightsFor(LoadDigits(division.bytes + size - kColumnBytes));
  Negate(division.negative, v, vCount);
  memcpy(division.bytes + offset, division.negative, static_cast<size_t>(vCount) * kWordBytes);
  __m512i before = _mm512_setzero_si512();
  for (int j = 0; j < count; ++j) {
    const __m512i digits =
        _mm512_slli_epi64(LoadDigits(division.bytes + j * kColumnBytes), kLimbBits - kDigitBits);
    _mm512_store_si512(division.columns[j].negative, digits);
    _mm512_store_si512(division.columns[j].negativeUp, MoveUp<1>(digits, before));
    before = digits;
  }
  return weights;
}

// The bytes become those of the remainder.
KEST_FOR_AVX512 void PackRemainder(SDivision& division, int count) {
  __m512i carried = _mm512_setzero_si512();
  unsigned int carry = 0;
  for (int j = 0; j < count; ++j) {
    const __m512i lanes = Carry<kDigitBits>(Load(division.columns[j].remainder), carried);
    StoreDigits(division.bytes + j * kColumnBytes, Settle<kDigitBits>(lanes, carry));
  }
}

KEST_FOR_AVX512 void Divide(SDivision& division, Word* q, Word* u, int uCount, const Word* v,
                            int vCount) {
  const int vBytes = vCount * kWordBytes, uBytes = uCount * kWordBytes;
  const int digits = (vBytes + kDigitBytes - 1) / kDigitBytes;
  const int count = digits / kColumnLimbs + 1;
  const int lanes = count * kColumnLimbs;
  // Both numbers are moved up to here, which leaves the quotient as it is.
  const int offset = (lanes - 1) * kDigitBytes - vBytes;
  const SWeights weights = SetDivisor(division, count, v, vCount, offset);

  // All but two lanes are filled to begin with; a step fills one more.
  const int steps = (offset + uBytes + kDigitBytes - 1) / kDigitBytes - (lanes - 2);
  const int skipped = steps * kDigitBytes - offset;  // bytes of u that are not in the lanes yet
  const int from = std::max(skipped, 0);
  memset(division.bytes, 0, static_cast<size_t>(count) * kColumnBytes);
  memcpy(division.bytes + (from - skipped), reinterpret_cast<const unsigned char*>(u) + from,
         static_cast<size_t>(uBytes - from));
  for (int j = 0; j < count; ++j) {
    _mm512_store_si512(division.columns[j].remainder,
                       LoadDigits(division.bytes + j * kColumnBytes));
  }

  if (q != nullptr) std::fill_n(q, uCount - vCount, 0u);
  Digit* const lastLanes = division.columns[count - 1].remainder;
  __m512i last = Load(lastLanes);
  for (int step = steps - 1; step >= 0; --step) {
    const Digit next = DigitAt(u, uCount, 3 * step - offset / 2);
    const Digit digit = Step(division.columns, count, last, weights, next);
    if (q != nullptr) AddDigit(q, digit, 3 * step);
  }
  _mm512_store_si512(lastLanes, last);
  PackRemainder(division, count);
  std::fill_n(u, uCount, 0u);
  memcpy(u, division.bytes + offset, static_cast<size_t>(vBytes + kWordBytes));
}

}  // namespace

KEST_FOR_AVX512 KEST_REALIGN void DivideWordsAvx512(Word* q, Word* u, int uCount, const Word* v,
                                                    int vCount) {
  const bool fits = vCount >= kFewestWords && vCount <= kMostWords && uCount <= kMostDividendWords;
  if (!fits || uCount == vCount) {
    return DivideWordsPlain(q, u, uCount, v, vCount);
  }
  SDivision division;
  Divide(division, q, u, uCount, v, vCount);
  Wipe(&division, sizeof division);
  while (u[vCount] != 0 || CompareWords(u, v, vCount) >= 0) {
    u[vCount] -= SubtractWords(u, u, v, vCount);
    if (q != nullptr) AddDigit(q, 1, 0);
  }
}

}  // namespace KEST
