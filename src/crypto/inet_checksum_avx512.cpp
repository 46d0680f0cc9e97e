// The sum of words, 32 at once. Bytes of the high and of the low halves gather in lanes of 16 bits.

#include <stdint.h>

#include <algorithm>

#include "cpu/intrinsics_avx512.h"
#include "cpu/level.h"
#include "crypto/inet_checksum_levels.h"

#define KEST_APART __attribute__((noinline))

namespace KEST {

namespace {

constexpr unsigned int kAtOnce = 32;
constexpr unsigned int kWorthAligning = 64 * kAtOnce;
// Of bytes, a lane holds as many as leave it positive.
constexpr unsigned int kMostTurns = 0x7fff / 0xff;

struct SHalves {
  __m512i high, low;

  // The first byte is the high one.
  KEST_FOR_AVX512 explicit SHalves(__m512i words)
      : high(_mm512_and_si512(words, _mm512_set1_epi16(0xff))), low(_mm512_srli_epi16(words, 8)) {}
  KEST_FOR_AVX512 void Add(const SHalves& other) {
    high = _mm512_add_epi16(high, other.high);
    low = _mm512_add_epi16(low, other.low);
  }
  // In lanes of 32 bits.
  KEST_FOR_AVX512 __m512i Sums() const {
    return _mm512_add_epi32(_mm512_madd_epi16(high, _mm512_set1_epi16(0x100)),
                            _mm512_madd_epi16(low, _mm512_set1_epi16(1)));
  }
};

KEST_FOR_AVX512 __m512i Load(const unsigned char* data) { return _mm512_loadu_si512(data); }

// Of fewer than 32 words, without constants from memory.
KEST_FOR_AVX512 __m512i SumsOfFew(const unsigned char* data, unsigned int words) {
  const __m512i few = _mm512_maskz_loadu_epi16(_bzhi_u32(~0u, words), data);
  const __m512i high = _mm512_sad_epu8(_mm512_slli_epi16(few, 8), _mm512_setzero_si512());
  const __m512i low = _mm512_sad_epu8(_mm512_srli_epi16(few, 8), _mm512_setzero_si512());
  return _mm512_add_epi32(_mm512_slli_epi32(high, 8), low);
}

KEST_FOR_AVX512 unsigned int Total(__m512i sums) {
  const __m256i eight =
      _mm256_add_epi32(_mm512_castsi512_si256(sums), _mm512_extracti64x4_epi64(sums, 1));
  const __m128i four =
      _mm_add_epi32(_mm256_castsi256_si128(eight), _mm256_extracti128_si256(eight, 1));
  const __m128i two = _mm_add_epi32(four, _mm_shuffle_epi32(four, _MM_SHUFFLE(1, 0, 3, 2)));
  const __m128i one = _mm_add_epi32(two, _mm_shuffle_epi32(two, _MM_SHUFFLE(2, 3, 0, 1)));
  return static_cast<unsigned int>(_mm_cvtsi128_si32(one));
}

// The words until the data lies at the start of a cache line; none when they never do.
unsigned int WordsToLine(const unsigned char* data) {
  const uintptr_t address = reinterpret_cast<uintptr_t>(data);
  return address % 2 == 0 ? static_cast<unsigned int>(-address % 64) / 2 : 0;
}

// Few and many words apart: a routine of its own needs no frame on the stack for few.

KEST_APART KEST_FOR_AVX512 KEST_REALIGN unsigned int SumOfFew(const unsigned char* data,
                                                              unsigned int words) {
  return Total(SumsOfFew(data, words));
}

KEST_APART KEST_FOR_AVX512 KEST_REALIGN unsigned int SumOfMany(const unsigned char* data,
                                                               unsigned int words) {
  const unsigned int first = words >= kWorthAligning ? WordsToLine(data) : 0;
  __m512i total = SumsOfFew(data, first);
  data += 2 * first;
  words -= first;
  while (words >= 2 * kAtOnce) {
    unsigned int turns = std::min(words / (2 * kAtOnce), kMostTurns);
    words -= turns * 2 * kAtOnce;
    SHalves even(_mm512_setzero_si512()), odd = even;
    for (; turns > 0; --turns, data += 4 * kAtOnce) {
      even.Add(SHalves(Load(data)));
      odd.Add(SHalves(Load(data + 2 * kAtOnce)));
    }
    total = _mm512_add_epi32(total, _mm512_add_epi32(even.Sums(), odd.Sums()));
  }
  if (words >= kAtOnce) {
    total = _mm512_add_epi32(total, SHalves(Load(data)).Sums());
    data += 2 * kAtOnce;
    words -= kAtOnce;
  }
  return Total(_mm512_add_epi32(total, SumsOfFew(data, words)));
}

}  // namespace

unsigned int SumOfWordsAvx512(const unsigned char* data, unsigned int words) {
  return words < kAtOnce ? SumOfFew(data, words) : SumOfMany(data, words);
}

}  // namespace KEST
