// Escaping, 16 units at a time.

#include <immintrin.h>

#include "cpu/level.h"
#include "text/escape_levels.h"

namespace KEST {

namespace {

constexpr size_t kUnits = 16;

// Each step adds at most 5 to a sum of 16 bits.
constexpr size_t kMaxSteps = 0x7FFF / 5;

struct SMarkup {
  __m256i place;     // the low four bits of each unit
  __m256i isMarkup;  // all bits, or none
};

KEST_FOR_AVX2 inline __m256i Repeat(__m128i table) { return _mm256_broadcastsi128_si256(table); }

KEST_FOR_AVX2 inline __m256i Load(const unsigned short* text) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
}

KEST_FOR_AVX2 inline void Store(unsigned short* dest, __m256i units) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(dest), units);
}

// A unit 0 counts as markup, whose name is itself.
KEST_FOR_AVX2 inline SMarkup FindMarkup(__m256i units) {
  const __m256i characters =
      Repeat(_mm_setr_epi8(0, 0, '"', 0, 0, 0, '&', 0, 0, 0, 0, 0, '<', 0, '>', 0));
  const __m256i place = _mm256_and_si256(units, _mm256_set1_epi16(15));
  return {place, _mm256_cmpeq_epi16(units, _mm256_shuffle_epi8(characters, place))};
}

KEST_FOR_AVX2 inline uint64_t Sum(__m256i sums) {
  const __m256i pairs = _mm256_madd_epi16(sums, _mm256_set1_epi16(1));
  __m128i four = _mm_add_epi32(_mm256_castsi256_si128(pairs), _mm256_extracti128_si256(pairs, 1));
  four = _mm_add_epi32(four, _mm_shuffle_epi32(four, 0x4E));
  four = _mm_add_epi32(four, _mm_shuffle_epi32(four, 0xB1));
  return static_cast<unsigned int>(_mm_cvtsi128_si32(four));
}

KEST_FOR_AVX2 inline __m256i AddedUnits(__m256i units) {
  const __m256i added = Repeat(_mm_setr_epi8(0, 0, 5, 0, 0, 0, 4, 0, 0, 0, 0, 0, 3, 0, 3, 0));
  const SMarkup markup = FindMarkup(units);
  return _mm256_and_si256(_mm256_shuffle_epi8(added, markup.place), markup.isMarkup);
}

// Writes the first kUnits units of text, which is followed by as many. What is stored beyond the
// result is overwritten by what follows: no unit makes less than one.
KEST_FOR_AVX2 inline unsigned short* WriteEscapedStep(unsigned short* dest,
                                                      const unsigned short* text) {
  const __m256i units = Load(text);
  const __m256i isMarkup = FindMarkup(units).isMarkup;
  Store(dest, units);
  unsigned int bytes = static_cast<unsigned int>(_mm256_movemask_epi8(isMarkup));
  const unsigned short* rest = text;  // not written for good yet
  for (; bytes != 0; bytes = _blsr_u32(_blsr_u32(bytes))) {
    const unsigned short* found = text + _tzcnt_u32(bytes) / 2;
    const unsigned int unit = *found;
    const SEntity& entity = kEntityTable.Of(unit);
    dest += found - rest;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dest),
                     _mm_loadu_si128(reinterpret_cast<const __m128i*>(&entity)));
    dest += entity.length;
    rest = found + 1;
    Store(dest, Load(rest));
  }
  return dest + (text + kUnits - rest);
}

}  // namespace

KEST_FOR_AVX2 KEST_REALIGN uint64_t CountAddedAvx2(const unsigned short* text, size_t count) {
  uint64_t added = 0;
  while (count >= kUnits) {
    __m256i sums = _mm256_setzero_si256();
    for (size_t steps = 0; steps < kMaxSteps && count >= kUnits; ++steps) {
      sums = _mm256_add_epi16(sums, AddedUnits(Load(text)));
      text += kUnits;
      count -= kUnits;
    }
    added += Sum(sums);
  }
  return added + CountAddedPlain(text, count);
}

KEST_FOR_AVX2 KEST_REALIGN unsigned short* WriteEscapedAvx2(unsigned short* dest,
                                                            const unsigned short* text,
                                                            size_t count) {
  for (; count >= 2 * kUnits; count -= kUnits) {
    dest = WriteEscapedStep(dest, text);
    text += kUnits;
  }
  return WriteEscapedPlain(dest, text, count);
}

}  // namespace KEST
