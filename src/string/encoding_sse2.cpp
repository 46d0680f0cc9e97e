// The bits of a text's units, 16 at once.

#include <immintrin.h>

#include "cpu/level.h"
#include "string/encoding_levels.h"

namespace KEST {

namespace {

constexpr int kBlock = 16;

KEST_FOR_SSE2 __m128i Load(const unsigned short* units) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
}

// Whether a unit is above 255.
KEST_FOR_SSE2 bool HasHigh(__m128i bits) {
  const __m128i high = _mm_srli_epi16(bits, 8);
  return _mm_movemask_epi8(_mm_cmpeq_epi16(high, _mm_setzero_si128())) != 0xFFFF;
}

// The bits of all units in one.
KEST_FOR_SSE2 unsigned int Folded(__m128i bits) {
  bits = _mm_or_si128(bits, _mm_srli_si128(bits, 8));
  bits = _mm_or_si128(bits, _mm_srli_si128(bits, 4));
  bits = _mm_or_si128(bits, _mm_srli_si128(bits, 2));
  return static_cast<unsigned short>(_mm_cvtsi128_si32(bits));
}

}  // namespace

KEST_FOR_SSE2 KEST_REALIGN unsigned int BitsOfUnitsSse2(const unsigned short* units, int count) {
  __m128i bits = _mm_setzero_si128();
  for (; count >= kBlock && !HasHigh(bits); count -= kBlock, units += kBlock) {
    bits = _mm_or_si128(bits, _mm_or_si128(Load(units), Load(units + kBlock / 2)));
  }
  return HasHigh(bits) ? Folded(bits) : Folded(bits) | BitsOfUnitsPlain(units, count);
}

}  // namespace KEST
