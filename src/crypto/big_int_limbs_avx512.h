// Columns of eight limbs of 52 bits, which one instruction multiplies to the lower or upper half of
// a product, and 13 words that they are packed to.

#ifndef KEST_SRC_CRYPTO_BIG_INT_LIMBS_AVX512_H
#define KEST_SRC_CRYPTO_BIG_INT_LIMBS_AVX512_H

#include <algorithm>

#include "cpu/intrinsics_avx512.h"
#include "cpu/level.h"
#include "crypto/big_int_words.h"

namespace KEST {

constexpr int kLimbBits = 52;
constexpr int kColumnLimbs = 8;
constexpr int kColumnWords = kColumnLimbs * kLimbBits / kWordBits;

KEST_FOR_AVX512 inline __m512i LimbMask() { return _mm512_set1_epi64((1LL << kLimbBits) - 1); }

// The lanes moved up by count, with those before them at the bottom.
template <int kCount>
KEST_FOR_AVX512 inline __m512i MoveUp(__m512i lanes, __m512i before) {
  return _mm512_alignr_epi64(lanes, before, kColumnLimbs - kCount);
}

KEST_FOR_AVX512 inline __mmask16 WordMask(int words) {
  return static_cast<__mmask16>((1u << std::min(words, kColumnWords)) - 1);
}

// The limbs of a column whose number goes on for so many words.
KEST_FOR_AVX512 inline __m512i UnpackColumn(const Word* packed, int words) {
  // Limbs begin at every sixth and a half byte.
  const __m512i bytes = _mm512_set_epi8(
      52, 51, 50, 49, 48, 47, 46, 45, 46, 45, 44, 43, 42, 41, 40, 39, 39, 38, 37, 36, 35, 34, 33,
      32, 33, 32, 31, 30, 29, 28, 27, 26, 26, 25, 24, 23, 22, 21, 20, 19, 20, 19, 18, 17, 16, 15,
      14, 13, 13, 12, 11, 10, 9, 8, 7, 6, 7, 6, 5, 4, 3, 2, 1, 0);
  if (words <= 0) return _mm512_setzero_si512();
  const __m512i limbs =
      _mm512_permutexvar_epi8(bytes, _mm512_maskz_loadu_epi32(WordMask(words), packed));
  return _mm512_and_si512(_mm512_srlv_epi64(limbs, _mm512_set_epi64(4, 0, 4, 0, 4, 0, 4, 0)),
                          LimbMask());
}

KEST_FOR_AVX512 inline void PackColumn(Word* packed, int words, __m512i limbs) {
  if (words <= 0) return;
  // Each pair of limbs becomes 13 bytes at the bottom of its 16.
  const __m512i odd = _mm512_permutex_epi64(limbs, 0xB1);
  const __m512i pairs = _mm512_mask_or_epi64(_mm512_srli_epi64(limbs, 64 - kLimbBits), 0x55, limbs,
                                             _mm512_slli_epi64(odd, kLimbBits));
  const __m512i bytes = _mm512_set_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 60, 59, 58, 57, 56, 55,
                                        54, 53, 52, 51, 50, 49, 48, 44, 43, 42, 41, 40, 39, 38, 37,
                                        36, 35, 34, 33, 32, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19,
                                        18, 17, 16, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
  _mm512_mask_storeu_epi32(packed, WordMask(words), _mm512_permutexvar_epi8(bytes, pairs));
}

// What is above a limb's bits goes one lane up, once: a lane may be a little too large still.
template <int kBits>
KEST_FOR_AVX512 inline __m512i Carry(__m512i lanes, __m512i& carried) {
  const __m512i above = _mm512_srli_epi64(lanes, kBits);
  const __m512i kept = _mm512_and_si512(lanes, _mm512_set1_epi64((1LL << kBits) - 1));
  const __m512i r = _mm512_add_epi64(kept, MoveUp<1>(above, carried));
  carried = above;
  return r;
}

// Carries out of what Carry has left, with one into the lowest lane and one out of the highest. A
// carry into a limb of nothing but ones goes on to the next; an addition of bits for the lanes
// finds how far.
template <int kBits>
KEST_FOR_AVX512 inline __m512i Settle(__m512i lanes, unsigned int& carry) {
  const __m512i mask = _mm512_set1_epi64((1LL << kBits) - 1);
  const unsigned int over = _mm512_cmpgt_epu64_mask(lanes, mask);
  const unsigned int ones = _mm512_cmpeq_epu64_mask(lanes, mask);
  const unsigned int sum = ones + 2 * over + carry;
  carry = sum >> kColumnLimbs;
  const __mmask8 into = static_cast<__mmask8>(sum ^ ones);
  return _mm512_and_si512(_mm512_mask_add_epi64(lanes, into, lanes, _mm512_set1_epi64(1)), mask);
}

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_BIG_INT_LIMBS_AVX512_H
