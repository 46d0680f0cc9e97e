// ISO 8859-1 in vectors of 32 units.

#include "cpu/intrinsics_avx512.h"
#include "cpu/level.h"
#include "string/convert_levels.h"

namespace KEST {

namespace {

constexpr int kBlock = 32;

// For the last elements, fewer than a block.
KEST_FOR_AVX512 __mmask32 First(int count) {
  return _bzhi_u32(~0u, static_cast<unsigned int>(count));
}

// Units above 255 become '?'.
KEST_FOR_AVX512 __m256i Narrowed(__m512i units) {
  const __mmask32 above = _mm512_cmpgt_epu16_mask(units, _mm512_set1_epi16(kLastOfBytes));
  return _mm256_mask_mov_epi8(_mm512_cvtepi16_epi8(units), above, _mm256_set1_epi8('?'));
}

}  // namespace

KEST_FOR_AVX512 KEST_REALIGN void NarrowAvx512(const unsigned short* src, int count, char* dest) {
  for (; count >= kBlock; count -= kBlock, src += kBlock, dest += kBlock) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(dest), Narrowed(_mm512_loadu_si512(src)));
  }
  const __mmask32 rest = First(count);
  _mm256_mask_storeu_epi8(dest, rest, Narrowed(_mm512_maskz_loadu_epi16(rest, src)));
}

KEST_FOR_AVX512 KEST_REALIGN void WidenAvx512(const char* src, int count, unsigned short* dest) {
  for (; count >= kBlock; count -= kBlock, src += kBlock, dest += kBlock) {
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src));
    _mm512_storeu_si512(dest, _mm512_cvtepu8_epi16(bytes));
  }
  const __mmask32 rest = First(count);
  _mm512_mask_storeu_epi16(dest, rest, _mm512_cvtepu8_epi16(_mm256_maskz_loadu_epi8(rest, src)));
}

}  // namespace KEST
