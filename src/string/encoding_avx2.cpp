// The bits of a text's units, 32 at once.

#include <immintrin.h>

#include "cpu/level.h"
#include "string/encoding_levels.h"

namespace KEST {

namespace {

constexpr int kBlock = 32;

KEST_FOR_AVX2 __m256i Load(const unsigned short* units) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(units));
}

// Whether a unit is above 255.
KEST_FOR_AVX2 bool HasHigh(__m256i bits) {
  return _mm256_testz_si256(bits, _mm256_set1_epi16(static_cast<short>(0xFF00))) == 0;
}

// The bits of all units in one.
KEST_FOR_AVX2 unsigned int Folded(__m256i units) {
  __m128i bits = _mm_or_si128(_mm256_castsi256_si128(units), _mm256_extracti128_si256(units, 1));
  bits = _mm_or_si128(bits, _mm_srli_si128(bits, 8));
  bits = _mm_or_si128(bits, _mm_srli_si128(bits, 4));
  bits = _mm_or_si128(bits, _mm_srli_si128(bits, 2));
  return static_cast<unsigned short>(_mm_cvtsi128_si32(bits));
}

}  // namespace

KEST_FOR_AVX2 KEST_REALIGN unsigned int BitsOfUnitsAvx2(const unsigned short* units, int count) {
  __m256i bits = _mm256_setzero_si256();
  for (; count >= kBlock && !HasHigh(bits); count -= kBlock, units += kBlock) {
    bits = _mm256_or_si256(bits, _mm256_or_si256(Load(units), Load(units + kBlock / 2)));
  }
  return HasHigh(bits) ? Folded(bits) : Folded(bits) | BitsOfUnitsSse2(units, count);
}

}  // namespace KEST
