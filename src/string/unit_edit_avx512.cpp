#include <immintrin.h>

#include "cpu/level.h"
#include "string/unit_edit_levels.h"

namespace KEST {

namespace {

constexpr size_t kUnits = 32;

KEST_FOR_AVX512 inline __m512i Broadcast(unsigned short unit) {
  return _mm512_set1_epi16(static_cast<short>(unit));
}

KEST_FOR_AVX512 inline size_t CountOf(__mmask32 units) {
  return static_cast<size_t>(_mm_popcnt_u32(units));
}

}  // namespace

KEST_FOR_AVX512 KEST_REALIGN size_t ReplaceUnitAvx512(unsigned short* text, size_t count,
                                                      unsigned short from, unsigned short to) {
  size_t replaced = 0;
  for (; count >= kUnits; count -= kUnits) {
    const __mmask32 found = _mm512_cmpeq_epi16_mask(_mm512_loadu_si512(text), Broadcast(from));
    _mm512_mask_storeu_epi16(text, found, Broadcast(to));
    replaced += CountOf(found);
    text += kUnits;
  }
  return replaced + ReplaceUnitPlain(text, count, from, to);
}

// The whole vector is stored: what lies behind the units that stay was read already.
KEST_FOR_AVX512 KEST_REALIGN unsigned short* RemoveUnitAvx512(unsigned short* dest,
                                                              const unsigned short* text,
                                                              size_t count, unsigned short ch) {
  for (; count >= kUnits; count -= kUnits) {
    const __m512i units = _mm512_loadu_si512(text);
    const __mmask32 kept = _mm512_cmpneq_epi16_mask(units, Broadcast(ch));
    _mm512_storeu_si512(dest, _mm512_maskz_compress_epi16(kept, units));
    dest += CountOf(kept);
    text += kUnits;
  }
  return RemoveUnitPlain(dest, text, count, ch);
}

}  // namespace KEST
