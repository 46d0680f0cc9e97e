// Eight units a step: h * 33^8 + u0 * 33^7 + ... + u7. The factors are split into halves, because
// units are multiplied as 16 bits.

#include <immintrin.h>
#include <stddef.h>
#include <stdint.h>

#include "collections/text_hash.h"
#include "cpu/level.h"

namespace KEST {

namespace {

constexpr size_t kUnits = 8;

constexpr unsigned int Power(size_t exponent) {
  return exponent == 0 ? 1 : Power(exponent - 1) * kHashFactor;
}

// The factors of eight units, and behind them eight that are 0: read from place 8 - n, those of the
// last n units of a text, and what lies behind them counts nothing.
struct SFactors {
  unsigned short low[2 * kUnits] = {};
  unsigned short high[2 * kUnits] = {};
  unsigned int power[kUnits + 1] = {};

  constexpr SFactors() {
    for (size_t i = 0; i < kUnits; ++i) {
      const unsigned int factor = Power(kUnits - 1 - i);
      low[i] = static_cast<unsigned short>(factor);
      high[i] = static_cast<unsigned short>(factor >> 16);
    }
    for (size_t i = 0; i <= kUnits; ++i) power[i] = Power(i);
  }
};
constexpr SFactors kFactors;

KEST_FOR_SSE2 KEST_READS_PAST_END inline __m128i Load(const unsigned short* from) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

// What the first count of the units, which are the text's last, add to the hash.
KEST_FOR_SSE2 inline unsigned int SumOf(__m128i units, size_t count) {
  const __m128i low = Load(kFactors.low + kUnits - count);
  const __m128i high = Load(kFactors.high + kUnits - count);
  const __m128i sumLow = _mm_mullo_epi16(units, low);
  const __m128i sumHigh = _mm_add_epi16(_mm_mulhi_epu16(units, low), _mm_mullo_epi16(units, high));
  __m128i sum =
      _mm_add_epi32(_mm_unpacklo_epi16(sumLow, sumHigh), _mm_unpackhi_epi16(sumLow, sumHigh));
  sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, 0x4E));
  sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, 0xB1));
  return static_cast<unsigned int>(_mm_cvtsi128_si32(sum));
}

bool CrossesPage(const unsigned short* from) {
  constexpr uintptr_t kPage = 4096;
  return (reinterpret_cast<uintptr_t>(from) & (kPage - 1)) > kPage - sizeof(__m128i);
}

}  // namespace

KEST_FOR_SSE2 KEST_REALIGN KEST_READS_PAST_END TextHash HashTextSse2(const unsigned short* text) {
  unsigned int hash = 0;
  for (const unsigned short* at = text;;) {
    if (CrossesPage(at)) {
      // The text may end before the next page, and that may be out of reach.
      for (const unsigned short* end = at + kUnits; at != end; ++at) {
        if (*at == 0) return PackTextHash(static_cast<size_t>(at - text), hash);
        hash = hash * kHashFactor + *at;
      }
      continue;
    }
    const __m128i units = Load(at);
    const int zeros = _mm_movemask_epi8(_mm_cmpeq_epi16(units, _mm_setzero_si128()));
    if (zeros != 0) {
      const size_t left =
          static_cast<unsigned int>(__builtin_ctz(static_cast<unsigned int>(zeros))) / 2;
      hash = hash * kFactors.power[left] + SumOf(units, left);
      return PackTextHash(static_cast<size_t>(at + left - text), hash);
    }
    hash = hash * kFactors.power[kUnits] + SumOf(units, kUnits);
    at += kUnits;
  }
}

}  // namespace KEST
