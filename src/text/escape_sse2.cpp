// Escaping, 8 units at a time.

#include <immintrin.h>

#include "cpu/level.h"
#include "text/escape_levels.h"

namespace KEST {

namespace {

constexpr size_t kUnits = 8;

// Each step adds at most 5 to a sum of 16 bits.
constexpr size_t kMaxSteps = 0x7FFF / 5;

KEST_FOR_SSE2 inline __m128i Load(const unsigned short* text) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
}

KEST_FOR_SSE2 inline void Store(unsigned short* dest, __m128i units) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(dest), units);
}

KEST_FOR_SSE2 inline __m128i Is(__m128i units, char character) {
  return _mm_cmpeq_epi16(units, _mm_set1_epi16(character));
}

KEST_FOR_SSE2 inline __m128i IsMarkup(__m128i units) {
  return _mm_or_si128(_mm_or_si128(Is(units, '&'), Is(units, '<')),
                      _mm_or_si128(Is(units, '>'), Is(units, '"')));
}

KEST_FOR_SSE2 inline __m128i AddedUnits(__m128i units) {
  const __m128i brackets = _mm_or_si128(Is(units, '<'), Is(units, '>'));
  return _mm_or_si128(_mm_or_si128(_mm_and_si128(brackets, _mm_set1_epi16(3)),
                                   _mm_and_si128(Is(units, '&'), _mm_set1_epi16(4))),
                      _mm_and_si128(Is(units, '"'), _mm_set1_epi16(5)));
}

KEST_FOR_SSE2 inline uint64_t Sum(__m128i sums) {
  __m128i four = _mm_madd_epi16(sums, _mm_set1_epi16(1));
  four = _mm_add_epi32(four, _mm_shuffle_epi32(four, 0x4E));
  four = _mm_add_epi32(four, _mm_shuffle_epi32(four, 0xB1));
  return static_cast<unsigned int>(_mm_cvtsi128_si32(four));
}

// Writes the first kUnits units of text, which is followed by as many. What is stored beyond the
// result is overwritten by what follows: no unit makes less than one.
KEST_FOR_SSE2 inline unsigned short* WriteEscapedStep(unsigned short* dest,
                                                      const unsigned short* text) {
  const __m128i units = Load(text);
  Store(dest, units);
  unsigned int bytes = static_cast<unsigned int>(_mm_movemask_epi8(IsMarkup(units)));
  const unsigned short* rest = text;  // not written for good yet
  while (bytes != 0) {
    const unsigned short* found = text + __builtin_ctz(bytes) / 2;
    const unsigned int unit = *found;
    const SEntity& entity = kEntityTable.Of(unit);
    dest += found - rest;
    Store(dest, Load(entity.name));
    dest += entity.length;
    rest = found + 1;
    Store(dest, Load(rest));
    bytes &= bytes - 1;
    bytes &= bytes - 1;
  }
  return dest + (text + kUnits - rest);
}

}  // namespace

KEST_FOR_SSE2 KEST_REALIGN uint64_t CountAddedSse2(const unsigned short* text, size_t count) {
  uint64_t added = 0;
  while (count >= kUnits) {
    __m128i sums = _mm_setzero_si128();
    for (size_t steps = 0; steps < kMaxSteps && count >= kUnits; ++steps) {
      sums = _mm_add_epi16(sums, AddedUnits(Load(text)));
      text += kUnits;
      count -= kUnits;
    }
    added += Sum(sums);
  }
  return added + CountAddedPlain(text, count);
}

KEST_FOR_SSE2 KEST_REALIGN unsigned short* WriteEscapedSse2(unsigned short* dest,
                                                            const unsigned short* text,
                                                            size_t count) {
  for (; count >= 2 * kUnits; count -= kUnits) {
    dest = WriteEscapedStep(dest, text);
    text += kUnits;
  }
  return WriteEscapedPlain(dest, text, count);
}

}  // namespace KEST
