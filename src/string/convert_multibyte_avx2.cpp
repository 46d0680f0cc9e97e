// ISO 8859-1 in vectors of 32 units.

#include <immintrin.h>

#include "cpu/level.h"
#include "string/convert_levels.h"

namespace KEST {

namespace {

constexpr int kBlock = 32;

KEST_FOR_AVX2 __m256i Load(const void* p) {
  return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}

KEST_FOR_AVX2 void Store(void* p, __m256i vector) {
  _mm256_storeu_si256(static_cast<__m256i*>(p), vector);
}

// Units above 255 become '?'.
KEST_FOR_AVX2 __m256i InBytes(__m256i units) {
  const __m256i fits = _mm256_cmpeq_epi16(_mm256_srli_epi16(units, 8), _mm256_setzero_si256());
  return _mm256_blendv_epi8(_mm256_set1_epi16('?'), units, fits);
}

KEST_FOR_AVX2 __m256i Widened(const char* bytes) {
  return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)));
}

}  // namespace

KEST_FOR_AVX2 KEST_REALIGN void NarrowAvx2(const unsigned short* src, int count, char* dest) {
  for (; count >= kBlock; count -= kBlock, src += kBlock, dest += kBlock) {
    const __m256i packed = _mm256_packus_epi16(InBytes(Load(src)), InBytes(Load(src + kBlock / 2)));
    // Packing works within each half of the vector.
    Store(dest, _mm256_permute4x64_epi64(packed, _MM_SHUFFLE(3, 1, 2, 0)));
  }
  NarrowSse2(src, count, dest);
}

KEST_FOR_AVX2 KEST_REALIGN void WidenAvx2(const char* src, int count, unsigned short* dest) {
  for (; count >= kBlock; count -= kBlock, src += kBlock, dest += kBlock) {
    Store(dest, Widened(src));
    Store(dest + kBlock / 2, Widened(src + kBlock / 2));
  }
  WidenSse2(src, count, dest);
}

}  // namespace KEST
