// The sum of words, 8 at once. Bytes of the high and of the low halves gather in lanes of 16 bits.

#include <algorithm>

#include <immintrin.h>

#include "cpu/level.h"
#include "crypto/inet_checksum_levels.h"

namespace KEST {

namespace {

constexpr unsigned int kAtOnce = 8;
// Of bytes, a lane holds as many as leave it positive.
constexpr unsigned int kMostTurns = 0x7fff / 0xff;

KEST_FOR_SSE2 __m128i Load(const unsigned char* data) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(data));
}

struct SHalves {
  __m128i high, low;

  KEST_FOR_SSE2 SHalves() : high(_mm_setzero_si128()), low(high) {}
  KEST_FOR_SSE2 void Add(__m128i words) {
    high = _mm_add_epi16(high, _mm_and_si128(words, _mm_set1_epi16(0xff)));
    low = _mm_add_epi16(low, _mm_srli_epi16(words, 8));
  }
  // In lanes of 32 bits.
  KEST_FOR_SSE2 __m128i Sums() const {
    return _mm_add_epi32(_mm_madd_epi16(high, _mm_set1_epi16(0x100)),
                         _mm_madd_epi16(low, _mm_set1_epi16(1)));
  }
};

KEST_FOR_SSE2 unsigned int SumOfLanes(__m128i lanes) {
  lanes = _mm_add_epi32(lanes, _mm_shuffle_epi32(lanes, _MM_SHUFFLE(1, 0, 3, 2)));
  lanes = _mm_add_epi32(lanes, _mm_shuffle_epi32(lanes, _MM_SHUFFLE(2, 3, 0, 1)));
  return static_cast<unsigned int>(_mm_cvtsi128_si32(lanes));
}

}  // namespace

KEST_FOR_SSE2 KEST_REALIGN unsigned int SumOfWordsSse2(const unsigned char* data,
                                                       unsigned int words) {
  __m128i total = _mm_setzero_si128();
  while (words >= kAtOnce) {
    unsigned int turns = std::min(words / kAtOnce, kMostTurns);
    words -= turns * kAtOnce;
    SHalves halves;
    for (; turns > 0; --turns, data += 2 * kAtOnce) halves.Add(Load(data));
    total = _mm_add_epi32(total, halves.Sums());
  }
  return SumOfLanes(total) + SumOfWordsPlain(data, words);
}

}  // namespace KEST
