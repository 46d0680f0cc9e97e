// The size of UTF-8, in aligned vectors of 32 units.

#include <stdint.h>

#include "cpu/intrinsics_avx512.h"
#include "cpu/level.h"
#include "string/convert_levels.h"

namespace KEST {

namespace {

constexpr uintptr_t kVectorBytes = 64;

KEST_FOR_AVX512 unsigned int CountAbove(unsigned int last, __mmask32 mask, __m512i units) {
  return static_cast<unsigned int>(_mm_popcnt_u32(
      _mm512_mask_cmpgt_epu16_mask(mask, units, _mm512_set1_epi16(static_cast<short>(last)))));
}

// The bytes of the units in mask.
KEST_FOR_AVX512 unsigned int Bytes(__mmask32 mask, __m512i units) {
  return static_cast<unsigned int>(_mm_popcnt_u32(mask)) + CountAbove(kLastOfOneByte, mask, units) +
         CountAbove(kLastOfTwoBytes, mask, units);
}

}  // namespace

KEST_FOR_AVX512 KEST_REALIGN KEST_READS_PAST_END uint64_t
Utf8LengthAvx512(const unsigned short* s) {
  const uintptr_t before = reinterpret_cast<uintptr_t>(s) % kVectorBytes;
  if (before % 2 != 0) return Utf8LengthPlain(s);
  const auto* vector = reinterpret_cast<const __m512i*>(reinterpret_cast<uintptr_t>(s) - before);
  __mmask32 mask = ~0u << before / 2;
  uint64_t bytes = 0;
  for (;; ++vector) {
    const __m512i units = _mm512_load_si512(vector);
    const __mmask32 end = _mm512_mask_testn_epi16_mask(mask, units, units);
    if (end != 0) return bytes + Bytes(mask & _blsmsk_u32(end) >> 1, units);
    bytes += Bytes(mask, units);
    mask = ~0u;
  }
}

}  // namespace KEST
