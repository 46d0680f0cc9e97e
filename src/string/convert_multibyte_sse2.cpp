// ISO 8859-1 in vectors of 16 units.

#include <immintrin.h>

#include "cpu/level.h"
#include "string/convert_levels.h"

namespace KEST {

namespace {

constexpr int kBlock = 16;

KEST_FOR_SSE2 __m128i Load(const void* p) {
  return _mm_loadu_si128(static_cast<const __m128i*>(p));
}

KEST_FOR_SSE2 void Store(void* p, __m128i vector) {
  _mm_storeu_si128(static_cast<__m128i*>(p), vector);
}

// Units above 255 become '?'.
KEST_FOR_SSE2 __m128i InBytes(__m128i units) {
  const __m128i fits = _mm_cmpeq_epi16(_mm_srli_epi16(units, 8), _mm_setzero_si128());
  return _mm_or_si128(_mm_and_si128(fits, units), _mm_andnot_si128(fits, _mm_set1_epi16('?')));
}

}  // namespace

KEST_FOR_SSE2 KEST_REALIGN void NarrowSse2(const unsigned short* src, int count, char* dest) {
  for (; count >= kBlock; count -= kBlock, src += kBlock, dest += kBlock) {
    Store(dest, _mm_packus_epi16(InBytes(Load(src)), InBytes(Load(src + kBlock / 2))));
  }
  NarrowPlain(src, count, dest);
}

KEST_FOR_SSE2 KEST_REALIGN void WidenSse2(const char* src, int count, unsigned short* dest) {
  const __m128i zero = _mm_setzero_si128();
  for (; count >= kBlock; count -= kBlock, src += kBlock, dest += kBlock) {
    const __m128i bytes = Load(src);
    Store(dest, _mm_unpacklo_epi8(bytes, zero));
    Store(dest + kBlock / 2, _mm_unpackhi_epi8(bytes, zero));
  }
  WidenPlain(src, count, dest);
}

}  // namespace KEST
