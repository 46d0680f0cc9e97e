// The sum of words, 16 at once. Bytes of the high and of the low halves gather in lanes of 16 bits.

#include <algorithm>

#include <immintrin.h>

#include "cpu/level.h"
#include "crypto/inet_checksum_levels.h"

namespace KEST {

namespace {

constexpr unsigned int kAtOnce = 16;
// Of bytes, a lane holds as many as leave it positive.
constexpr unsigned int kMostTurns = 0x7fff / 0xff;

KEST_FOR_AVX2 __m256i Load(const unsigned char* data) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(data));
}

struct SHalves {
  __m256i high, low;

  KEST_FOR_AVX2 SHalves() : high(_mm256_setzero_si256()), low(high) {}
  KEST_FOR_AVX2 void Add(__m256i words) {
    high = _mm256_add_epi16(high, _mm256_and_si256(words, _mm256_set1_epi16(0xff)));
    low = _mm256_add_epi16(low, _mm256_srli_epi16(words, 8));
  }
  // In lanes of 32 bits.
  KEST_FOR_AVX2 __m256i Sums() const {
    return _mm256_add_epi32(_mm256_madd_epi16(high, _mm256_set1_epi16(0x100)),
                            _mm256_madd_epi16(low, _mm256_set1_epi16(1)));
  }
};

KEST_FOR_AVX2 unsigned int SumOfLanes(__m128i lanes) {
  lanes = _mm_add_epi32(lanes, _mm_shuffle_epi32(lanes, _MM_SHUFFLE(1, 0, 3, 2)));
  lanes = _mm_add_epi32(lanes, _mm_shuffle_epi32(lanes, _MM_SHUFFLE(2, 3, 0, 1)));
  return static_cast<unsigned int>(_mm_cvtsi128_si32(lanes));
}

KEST_FOR_AVX2 unsigned int SumOfLanes(__m256i lanes) {
  return SumOfLanes(
      _mm_add_epi32(_mm256_castsi256_si128(lanes), _mm256_extracti128_si256(lanes, 1)));
}

}  // namespace

KEST_FOR_AVX2 KEST_REALIGN unsigned int SumOfWordsAvx2(const unsigned char* data,
                                                       unsigned int words) {
  __m256i total = _mm256_setzero_si256();
  while (words >= kAtOnce) {
    unsigned int turns = std::min(words / kAtOnce, kMostTurns);
    words -= turns * kAtOnce;
    SHalves halves;
    for (; turns > 0; --turns, data += 2 * kAtOnce) halves.Add(Load(data));
    total = _mm256_add_epi32(total, halves.Sums());
  }
  return SumOfLanes(total) + SumOfWordsSse2(data, words);
}

}  // namespace KEST
